#include "editor/decay_display.h"

#include "audio_import/audio_file_reader.h"
#include "core/z_lock.h"
#include "editor/decay_charts.h"
#include "editor/decay_worker.h"
#include "state/serialization_context.h"
#include "state/zml_writer.h"
#include "ui/controls/button.h"
#include "ui/dialog.h"
#include "ui/file_chooser.h"
#include "ui/panel.h"
#include "ui/ui_root.h"

#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <vector>

namespace halvern {
namespace {

constexpr double kLevelShare = 0.55; // of the width, for the level chart
constexpr double kButtonHeight = ZPanel::kTitleHeight - 8;
constexpr double kDefaultRate = 48000.0;
constexpr double kLowestRate = 8000.0;
constexpr double kHighestRate = 384000.0;
// Longer than any impulse response; the longest is measured on the editor's thread in under two seconds.
constexpr double kLongestReferenceSeconds = 120.0;

// The rate the reverb runs at now, which the measurement follows; 48 kHz before a host
// has set a usable one.
double measuringRate(ZQuessaneAudioEffectPlugin& core)
{
    const double rate = core.sampleRate();
    return rate >= kLowestRate && rate <= kHighestRate ? rate : kDefaultRate;
}

} // namespace

ZDecayDisplay::ZDecayDisplay(ZQuessaneAudioEffectPlugin& core) : core_(core), worker_(std::make_unique<ZDecayWorker>())
{
    SetName("DecayDisplay");
    SetHelpText("<name>Decay</name> <p>How the reverb with the current settings dies away: its level over time, and "
                "the time it takes to fall by 60 dB in each octave band and over the whole band (T30 measures it "
                "from -5 to -35 dB, T20 from -5 to -25 dB when the response's range is too small).</p>");
    load_ = AddChild(std::make_unique<ZButton>("Load reference\u2026", [this] { ChooseReference(); }));
    load_->SetName("LoadReference");
    load_->SetHelpText("<name>Load reference</name> <p>Lays the impulse response in a sound file over the charts, to "
                       "compare the reverb's decay with a room's or another reverb's.</p>");
    clear_ = AddChild(std::make_unique<ZButton>("Clear reference", [this] { ClearReference(); }));
    clear_->SetName("ClearReference");
    clear_->SetHelpText("<name>Clear reference</name> <p>Removes the reference from the charts.</p>");
    clear_->SetEnabled(false);
}

ZDecayDisplay::~ZDecayDisplay() = default;

std::string ZDecayDisplay::LoadReference(const std::string& path)
{
    try {
        ZDecayMeasurement measured = MeasureDecay(ReadAudioFile(path, {.maxSeconds = kLongestReferenceSeconds}));
        if (measured.envelope.levelsDb.empty())
            return "\u201C" + std::filesystem::path(path).filename().string() + "\u201D is silent";
        reference_ = std::move(measured);
    } catch (const std::exception& error) {
        return error.what();
    }
    referenceName_ = std::filesystem::path(path).filename().string();
    referenceFolder_ = std::filesystem::path(path).parent_path().string();
    clear_->SetEnabled(true);
    Invalidate();
    return {};
}

void ZDecayDisplay::ChooseReference()
{
    ZUIRoot* owner = root();
    if (owner == nullptr)
        return;
    ZFileChooserOptions options;
    options.title = "Load reference impulse response";
    options.folder = referenceFolder_;
    options.extensions = AudioFileExtensionList();
    ZDialog::Show(*owner, std::make_unique<ZFileChooser>(std::move(options), [this, owner](const std::string& path) {
        if (const std::string error = LoadReference(path); !error.empty())
            ShowMessage(*owner, "Load reference", error);
    }));
}

void ZDecayDisplay::ClearReference()
{
    reference_.reset();
    referenceName_.clear();
    clear_->SetEnabled(false);
    Invalidate();
}

std::string ZDecayDisplay::Text() const
{
    if (computing_)
        return "Computing\u2026";
    return error_;
}

// ---- measuring ----

void ZDecayDisplay::Refresh()
{
    ++ticks_;
    takeResult();
    if (ticks_ % kPollTicks == 1)
        pollSettings();
    startWhenSettled();
    if (computing_ != worker_->busy()) {
        computing_ = !computing_;
        Invalidate();
    }
}

void ZDecayDisplay::takeResult()
{
    std::optional<ZDecayWorker::Result> result = worker_->TakeResult();
    if (!result)
        return;
    error_ = result->error;
    if (result->measurement)
        measurement_ = std::move(result->measurement);
    Invalidate();
}

// Stores the settings as the host would, and notes when they last changed.
void ZDecayDisplay::pollSettings()
{
    auto state = std::make_unique<ZMLElement>("settings");
    {
        ZLockHolder hold(core_.processingLock(), -1);
        core_.Serialize(ZSerializationContext(*state, true));
    }
    char rate[32];
    std::snprintf(rate, sizeof rate, "@%.0f", measuringRate(core_));
    std::string text = ZMLDocumentText(*state, ZMLLayout::Compact) + rate;
    if (text == seenText_)
        return;
    seenText_ = std::move(text);
    seenState_ = std::move(state);
    changedAt_ = ticks_;
}

// The first settings are measured at once, later ones once they have rested or waited
// long enough.
void ZDecayDisplay::startWhenSettled()
{
    if (seenState_ == nullptr || seenText_ == submittedText_)
        return;
    const bool rested = ticks_ - changedAt_ >= kSettleTicks;
    const bool overdue = ticks_ - submittedAt_ >= kLongestWaitTicks;
    if (!submittedText_.empty() && !rested && !overdue)
        return;
    worker_->Submit(std::move(seenState_), {measuringRate(core_), ZImpulseSettings{}.blockSize});
    submittedText_ = seenText_;
    submittedAt_ = ticks_;
}

// ---- layout and drawing ----

ZRect ZDecayDisplay::levelPanel() const
{
    const ZRect& b = bounds();
    return {b.x, b.y, std::round((b.width - 8) * kLevelShare), b.height};
}

ZRect ZDecayDisplay::barsPanel() const
{
    const ZRect level = levelPanel();
    const ZRect& b = bounds();
    return {level.right() + 8, b.y, b.right() - level.right() - 8, b.height};
}

void ZDecayDisplay::Layout()
{
    const ZRect panel = barsPanel();
    const double clearWidth = clear_->PreferredSize().x, loadWidth = load_->PreferredSize().x;
    clear_->SetBounds({panel.right() - 6 - clearWidth, panel.y + 4, clearWidth, kButtonHeight});
    load_->SetBounds({clear_->bounds().x - 6 - loadWidth, panel.y + 4, loadWidth, kButtonHeight});
}

void ZDecayDisplay::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    const ZRect level = levelPanel(), bars = barsPanel();
    ZPanel::PaintFace(canvas, theme, level, "Level over time", level.x + 160);
    ZPanel::PaintFace(canvas, theme, bars, "Decay time per band", load_->bounds().x - 6);
    paintLegend(canvas, {level.x + 160, level.y, level.width - 160 - theme.padding, ZPanel::kTitleHeight});

    std::vector<ZDecaySeries> series;
    if (measurement_)
        series.push_back({&*measurement_, theme.accent});
    if (reference_)
        series.push_back({&*reference_, theme.source});
    const double top = ZPanel::kTitleHeight + 6;
    const ZRect levelArea{level.x + theme.padding, level.y + top, level.width - 2 * theme.padding, level.height - top - theme.padding};
    const ZRect barsArea{bars.x + theme.padding, bars.y + top, bars.width - 2 * theme.padding, bars.height - top - theme.padding};
    PaintLevelChart(canvas, theme, levelArea, series);
    PaintDecayBars(canvas, theme, barsArea, series);
    if (!measurement_ && !Text().empty())
        canvas.DrawTextInRect(Text(), levelArea, theme.Text(), ZTextAlign::Center);
}

// Right-aligned in the level panel's title strip: the status, then a line of colour
// for each series with its name.
void ZDecayDisplay::paintLegend(ZCanvas& canvas, const ZRect& strip) const
{
    const ZTheme& theme = root()->theme();
    const ZTextStyle label = theme.Label();
    std::vector<std::pair<std::string, ZColor>> entries{{"Halvern", theme.accent}};
    if (reference_)
        entries.push_back({referenceName_, theme.source});
    double right = strip.right();
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        const std::string name = canvas.Elide(entry->first, 180, label);
        const double width = canvas.TextWidth(name, label);
        canvas.DrawTextInRect(name, {right - width, strip.y, width, strip.height}, label);
        right -= width + 6;
        canvas.Line({right - 14, strip.center().y}, {right, strip.center().y}, entry->second, 2.5);
        right -= 14 + 16;
    }
    if (const std::string status = Text(); !status.empty()) {
        const bool failed = !computing_ && !error_.empty();
        const ZTextStyle style{theme.smallFontSize, ZFontWeight::Regular, failed ? theme.error : theme.textDim, !failed};
        canvas.DrawTextInRect(status, {strip.x, strip.y, right - strip.x, strip.height}, style, ZTextAlign::Right);
    }
}

} // namespace halvern
