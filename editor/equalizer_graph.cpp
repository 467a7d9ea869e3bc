#include "editor/equalizer_graph.h"

#include "core/value_displays.h"
#include "core/z_format.h"
#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>

namespace halvern {
namespace {

constexpr double kGrabRadius = 10.0;
constexpr double kBandRadius = 7.5;
constexpr double kCutRadius = 5.5;
constexpr double kAxisLeft = 34.0;   // room for the gain labels
constexpr double kAxisRight = 34.0;  // room for the spectrum's labels
constexpr double kAxisBottom = 20.0; // room for the frequency labels
constexpr double kInset = 10.0;
constexpr double kCurveStep = 2.0;   // the curves are sampled every this many units
constexpr double kQPerNotch = 1.12;  // one wheel notch multiplies Q by this (Shift: a tenth of the step)
constexpr double kGainLines[] = {24.0, 12.0, 0.0, -12.0, -24.0};
constexpr double kLabelledHertz[] = {20, 50, 100, 200, 500, 1000, 2000, 5000, 10000, 20000};
constexpr double kQuietestPeakDb = -90.0; // a quieter spectrum shows no peak readout

constexpr const char* kGraphHelp =
    "<name>Equalizer</name> shapes the reverberation. The line is its response; the grey area behind it is the "
    "spectrum of the reverberation as it leaves the equalizer. Drag the points to move the cuts and the bands.";
constexpr const char* kBandHelp =
    " Drag it to set its frequency and gain, turn the wheel over it for its Q, double-click it to switch it on or off.";
constexpr const char* kCutHelp = " Drag it sideways; double-click it to switch the cut off.";

const char* bandLetter(int band)
{
    constexpr const char* kLetters[] = {"L", "P", "H"};
    return kLetters[band];
}

std::string hertzText(double hertz) { return FormatLogFrequency(std::log10(hertz)); }

std::string frequencyLabel(double hertz)
{
    return hertz >= 1000.0 ? ZFormat("{0;.0}k").arg(hertz / 1000.0).text() : ZFormat("{0;.0}").arg(hertz).text();
}

} // namespace

ZEqualizerGraph::ZEqualizerGraph(std::shared_ptr<ZEqualizerModel> model)
    : model_(std::move(model)), incoming_(analyser_.size())
{
    SetName("EqualizerGraph");
    // Whatever an earlier analyser left unread is stale.
    model_->effect().ReadWetSamples(incoming_.data(), incoming_.size());
    model_->effect().SetWetAnalysis(true);
}

ZEqualizerGraph::~ZEqualizerGraph() { model_->effect().SetWetAnalysis(false); }

// ---- geometry ----

ZRect ZEqualizerGraph::PlotRect() const
{
    const ZRect& b = bounds();
    return {b.x + kAxisLeft, b.y + kInset, b.width - kAxisLeft - kAxisRight, b.height - kInset - kAxisBottom};
}

double ZEqualizerGraph::XOf(double hertz) const
{
    const ZRect plot = PlotRect();
    return plot.x + ZEqualizerModel::NormalizedAt(hertz) * plot.width;
}

double ZEqualizerGraph::HertzAt(double x) const
{
    const ZRect plot = PlotRect();
    return ZEqualizerModel::HertzAt((x - plot.x) / std::max(plot.width, 1.0));
}

double ZEqualizerGraph::YOfGain(double db) const
{
    const ZRect plot = PlotRect();
    return plot.y + (0.5 - 0.5 * db / ZEqualizerModel::kGainRangeDb) * plot.height;
}

double ZEqualizerGraph::GainAt(double y) const
{
    const ZRect plot = PlotRect();
    const double db = (0.5 - (y - plot.y) / std::max(plot.height, 1.0)) * 2.0 * ZEqualizerModel::kGainRangeDb;
    return std::clamp(db, -ZEqualizerModel::kGainRangeDb, ZEqualizerModel::kGainRangeDb);
}

double ZEqualizerGraph::spectrumY(double db) const
{
    const ZRect plot = PlotRect();
    const double t = (kSpectrumTopDb - db) / (kSpectrumTopDb - kSpectrumBottomDb);
    return plot.y + std::clamp(t, 0.0, 1.0) * plot.height;
}

ZPoint ZEqualizerGraph::BandHandle(int band) const
{
    const ZEqualizerBand& b = model_->band(band);
    return {XOf(b.frequency), YOfGain(b.gainDb)};
}

// A cut's handle sits on the response where it cuts, inside the plot.
ZPoint ZEqualizerGraph::CutHandle(ZEqualizerModel::Cut cut) const
{
    const double hertz = model_->CutHertz(cut);
    const ZRect plot = PlotRect();
    return {XOf(hertz), std::clamp(YOfGain(model_->response().gainDb(hertz)), plot.y, plot.bottom())};
}

ZEqualizerModel::Cut ZEqualizerGraph::cutOf(const Handle& handle)
{
    return handle.index == 0 ? ZEqualizerModel::Cut::Low : ZEqualizerModel::Cut::High;
}

ZPoint ZEqualizerGraph::position(const Handle& handle) const
{
    return handle.kind == Kind::Band ? BandHandle(handle.index) : CutHandle(cutOf(handle));
}

// The nearest handle within reach; bands before cuts when both are as near.
ZEqualizerGraph::Handle ZEqualizerGraph::hitTest(ZPoint point) const
{
    Handle best;
    double nearest = kGrabRadius;
    const auto consider = [&](Handle handle) {
        const ZPoint at = position(handle);
        const double distance = std::hypot(point.x - at.x, point.y - at.y);
        if (distance <= nearest) {
            nearest = distance;
            best = handle;
        }
    };
    for (int cut = 0; cut < 2; ++cut)
        consider({Kind::Cut, cut});
    for (int band = ZEqualizerProcessorPlugin::kBandCount - 1; band >= 0; --band)
        consider({Kind::Band, band});
    return best;
}

// ---- input ----

bool ZEqualizerGraph::OnMouseDown(const ZMouseEvent& event)
{
    if (event.button != ZMouseButton::Left)
        return false;
    const Handle hit = hitTest(event.position);
    if (event.clickCount == 2) {
        doubleClick(hit);
        return false;
    }
    if (hit.kind == Kind::None)
        return false;
    drag_ = hit;
    const ZPoint at = position(hit);
    grabOffset_ = {at.x - event.position.x, at.y - event.position.y};
    pressedAt_ = event.position;
    moved_ = false;
    if (hit.kind == Kind::Cut)
        model_->cut(cutOf(hit)).BeginEdit();
    Invalidate();
    return true;
}

void ZEqualizerGraph::OnMouseDrag(const ZMouseEvent& event) { moveTo(event.position); }

void ZEqualizerGraph::OnMouseUp(const ZMouseEvent& event)
{
    moveTo(event.position);
    endDrag();
}

void ZEqualizerGraph::OnCaptureLost() { endDrag(); }

void ZEqualizerGraph::moveTo(ZPoint pointer)
{
    moved_ = moved_ || pointer.x != pressedAt_.x || pointer.y != pressedAt_.y;
    if (drag_.kind == Kind::None || !moved_)
        return;
    const ZPoint at{pointer.x + grabOffset_.x, pointer.y + grabOffset_.y};
    const double hertz = std::clamp(HertzAt(at.x), ZEqualizerModel::kLowestHertz, ZEqualizerModel::kHighestHertz);
    if (drag_.kind == Kind::Cut) {
        model_->cut(cutOf(drag_)).SetValue(ZEqualizerModel::NormalizedAt(hertz));
    } else {
        ZEqualizerBand band = model_->band(drag_.index);
        band.frequency = hertz;
        band.gainDb = GainAt(at.y);
        model_->SetBand(drag_.index, band);
    }
    Invalidate();
}

void ZEqualizerGraph::endDrag()
{
    if (drag_.kind == Kind::Cut)
        model_->cut(cutOf(drag_)).EndEdit();
    drag_ = {};
    Invalidate();
}

void ZEqualizerGraph::doubleClick(const Handle& handle)
{
    if (handle.kind == Kind::Band) {
        ZEqualizerBand band = model_->band(handle.index);
        band.enabled = !band.enabled;
        model_->SetBand(handle.index, band);
    } else if (handle.kind == Kind::Cut) {
        ZParameterBinding& cut = model_->cut(cutOf(handle));
        SetValueAsGesture(cut, cut.DefaultValue());
    }
    Invalidate();
}

bool ZEqualizerGraph::OnWheel(const ZWheelEvent& event)
{
    const Handle hit = hitTest(event.position);
    if (hit.kind != Kind::Band)
        return false;
    const double step = (event.modifiers & kModifierShift) != 0 ? 1.0 + (kQPerNotch - 1.0) * 0.1 : kQPerNotch;
    ZEqualizerBand band = model_->band(hit.index);
    band.q *= std::pow(step, event.steps);
    model_->SetBand(hit.index, band);
    Invalidate();
    return true;
}

void ZEqualizerGraph::OnMouseMove(const ZMouseEvent& event)
{
    const Handle hit = hitTest(event.position);
    if (!(hit == hover_)) {
        hover_ = hit;
        Invalidate();
    }
}

void ZEqualizerGraph::OnMouseLeave()
{
    hover_ = {};
    Invalidate();
}

ZCursor ZEqualizerGraph::Cursor() const
{
    const Handle& active = drag_.kind != Kind::None ? drag_ : hover_;
    return active.kind == Kind::None ? ZCursor::Arrow : ZCursor::Move;
}

std::string ZEqualizerGraph::HelpText() const
{
    switch (hover_.kind) {
    case Kind::Band:
        return std::string("<name>") + ZEqualizerModel::BandName(hover_.index) + "</name>" + kBandHelp;
    case Kind::Cut:
        return std::string(hover_.index == 0 ? ZEqualizerProcessorPlugin::lowCutHelp()
                                             : ZEqualizerProcessorPlugin::highCutHelp()) +
               kCutHelp;
    case Kind::None:
        break;
    }
    return kGraphHelp;
}

// ---- polling ----

void ZEqualizerGraph::Refresh()
{
    HalvernAudioEffectPlugin& effect = model_->effect();
    const size_t count = effect.ReadWetSamples(incoming_.data(), incoming_.size());
    if (count > 0) {
        analyser_.push(incoming_.data(), count);
        analyser_.analyse(effect.sampleRate());
        Invalidate();
    }
    for (int cut = 0; cut < 2; ++cut) {
        const double value = model_->cut(cutOf({Kind::Cut, cut})).Value();
        if (value != shownCuts_[cut]) {
            shownCuts_[cut] = value;
            Invalidate();
        }
    }
}

// ---- drawing ----

void ZEqualizerGraph::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    canvas.FillRoundedRect(bounds(), theme.radius, theme.background);
    const ZRect plot = PlotRect();
    paintGrid(canvas, plot);
    canvas.Save();
    canvas.ClipTo(plot);
    paintSpectrum(canvas, plot);
    paintResponse(canvas, plot);
    canvas.Restore();
    paintHandles(canvas);
    paintReadout(canvas, plot);
}

void ZEqualizerGraph::paintGrid(ZCanvas& canvas, const ZRect& plot) const
{
    const ZTheme& theme = root()->theme();
    const ZColor minor = theme.panelBorder.withAlpha(0.45);
    const ZColor major = theme.panelBorder;
    for (double decade = 10.0; decade <= 10000.0; decade *= 10.0)
        for (int multiple = 2; multiple <= 9; ++multiple) {
            const double hertz = decade * multiple;
            if (hertz > ZEqualizerModel::kLowestHertz && hertz < ZEqualizerModel::kHighestHertz)
                canvas.Line({XOf(hertz), plot.y}, {XOf(hertz), plot.bottom()}, minor, 1);
        }
    const ZTextStyle label = theme.Label();
    ZTextStyle faint = label;
    faint.color = theme.textDim.withAlpha(0.6);
    for (double hertz : kLabelledHertz) {
        const double x = XOf(hertz);
        canvas.Line({x, plot.y}, {x, plot.bottom()}, major, 1);
        const ZTextAlign align = hertz == kLabelledHertz[0]                             ? ZTextAlign::Left
                                 : hertz == kLabelledHertz[std::size(kLabelledHertz) - 1] ? ZTextAlign::Right
                                                                                         : ZTextAlign::Center;
        const double left = align == ZTextAlign::Left ? x : align == ZTextAlign::Right ? x - 40 : x - 20;
        canvas.DrawTextInRect(frequencyLabel(hertz), {left, plot.bottom() + 2, 40, kAxisBottom - 2}, label, align);
    }
    for (size_t i = 0; i < std::size(kGainLines); ++i) {
        const double db = kGainLines[i];
        const double y = YOfGain(db);
        canvas.Line({plot.x, y}, {plot.right(), y}, db == 0.0 ? theme.track : major, 1);
        const ZRect row{plot.x - kAxisLeft, y - 8, kAxisLeft - 6, 16};
        canvas.DrawTextInRect(ZFormat("{0;+.0}").arg(db).text(), row, label, ZTextAlign::Right);
        // The spectrum's scale on the same lines, at the right.
        const double spectrumDb = kSpectrumTopDb + (kSpectrumBottomDb - kSpectrumTopDb) * static_cast<double>(i) /
                                                       static_cast<double>(std::size(kGainLines) - 1);
        canvas.DrawTextInRect(ZFormat("{0;.0}").arg(spectrumDb).text(), {plot.right() + 6, y - 8, kAxisRight - 6, 16},
                              faint, ZTextAlign::Left);
    }
    canvas.StrokeRect(plot, theme.track, theme.lineWidth);
}

void ZEqualizerGraph::paintSpectrum(ZCanvas& canvas, const ZRect& plot) const
{
    if (analyser_.sampleRate() <= 0.0)
        return;
    const ZTheme& theme = root()->theme();
    std::vector<ZPoint> outline;
    for (double x = plot.x; x <= plot.right() + kCurveStep; x += kCurveStep) {
        const double db = analyser_.levelDb(HertzAt(x - kCurveStep / 2), HertzAt(x + kCurveStep / 2));
        outline.push_back({x, spectrumY(db)});
    }
    canvas.StrokePolyline(outline, theme.textDim.withAlpha(0.45), 1.0);
    outline.push_back({plot.right() + kCurveStep, plot.bottom()});
    outline.push_back({plot.x, plot.bottom()});
    canvas.FillPolygon(outline, theme.textDim.withAlpha(0.16));
}

void ZEqualizerGraph::paintResponse(ZCanvas& canvas, const ZRect& plot) const
{
    const ZTheme& theme = root()->theme();
    const ZEqualizerResponse& response = model_->response();
    std::vector<ZPoint> curve;
    for (double x = plot.x; x <= plot.right() + kCurveStep; x += kCurveStep)
        curve.push_back({x, std::clamp(YOfGain(response.gainDb(HertzAt(x))), plot.y - 2, plot.bottom() + 2)});
    std::vector<ZPoint> area = curve;
    area.push_back({curve.back().x, YOfGain(0.0)});
    area.push_back({curve.front().x, YOfGain(0.0)});
    canvas.FillPolygon(area, theme.accent.withAlpha(0.12));
    canvas.StrokePolyline(curve, theme.accent, 2.0);
}

void ZEqualizerGraph::paintHandles(ZCanvas& canvas) const
{
    const ZTheme& theme = root()->theme();
    const auto active = [&](const Handle& handle) { return handle == drag_ || handle == hover_; };
    for (int cut = 0; cut < 2; ++cut) {
        const Handle handle{Kind::Cut, cut};
        const ZPoint at = position(handle);
        canvas.FillCircle(at, kCutRadius, theme.text);
        canvas.StrokeCircle(at, kCutRadius, theme.background, 1.5);
        if (active(handle))
            canvas.StrokeCircle(at, kCutRadius + 4, theme.text.withAlpha(0.6), 1.2);
    }
    ZTextStyle letter = theme.Text(theme.smallFontSize);
    letter.weight = ZFontWeight::SemiBold;
    for (int band = 0; band < ZEqualizerProcessorPlugin::kBandCount; ++band) {
        const Handle handle{Kind::Band, band};
        const ZPoint at = position(handle);
        const bool on = model_->band(band).enabled;
        if (on) {
            canvas.FillCircle(at, kBandRadius, theme.accent);
            letter.color = theme.accentText;
        } else {
            canvas.FillCircle(at, kBandRadius, theme.background);
            canvas.StrokeCircle(at, kBandRadius - 0.75, theme.textDim, 1.5);
            letter.color = theme.textDim;
        }
        canvas.DrawTextInRect(bandLetter(band), {at.x - kBandRadius, at.y - kBandRadius, 2 * kBandRadius, 2 * kBandRadius},
                              letter, ZTextAlign::Center);
        if (active(handle))
            canvas.StrokeCircle(at, kBandRadius + 4, (on ? theme.accent : theme.textDim).withAlpha(0.6), 1.2);
    }
}

std::string ZEqualizerGraph::describe(const Handle& handle) const
{
    if (handle.kind == Kind::Cut) {
        const ZEqualizerModel::Cut cut = cutOf(handle);
        return std::string(cut == ZEqualizerModel::Cut::Low ? "Low cut " : "High cut ") +
               model_->cut(cut).DisplayText(model_->cut(cut).Value());
    }
    const ZEqualizerBand& band = model_->band(handle.index);
    return ZFormat("{0}  {1}  {2;+.1} dB  Q {3;.2}{4}")
        .arg(ZEqualizerModel::BandName(handle.index))
        .arg(hertzText(band.frequency))
        .arg(band.gainDb)
        .arg(band.q)
        .arg(band.enabled ? "" : "  (off)")
        .text();
}

// What the pointer is on, at the top left; the spectrum's loudest frequency at the top right.
void ZEqualizerGraph::paintReadout(ZCanvas& canvas, const ZRect& plot) const
{
    const ZTheme& theme = root()->theme();
    const ZRect line{plot.x + 8, plot.y + 4, plot.width - 16, theme.labelHeight};
    const Handle& shown = drag_.kind != Kind::None ? drag_ : hover_;
    if (shown.kind != Kind::None)
        canvas.DrawTextInRect(describe(shown), line, theme.Value());
    const ZSpectrumAnalyser::Peak peak = analyser_.peak();
    if (peak.levelDb > kQuietestPeakDb && analyser_.sampleRate() > 0.0)
        canvas.DrawTextInRect(ZFormat("Spectrum peak {0}  {1;.1} dB").arg(hertzText(peak.frequency)).arg(peak.levelDb).text(),
                              line, theme.Label(), ZTextAlign::Right);
}

} // namespace halvern
