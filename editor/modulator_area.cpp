#include "editor/modulator_area.h"

#include "editor/modulator_strips.h"
#include "modulation/range_mapping.h"
#include "ui/ui_root.h"

#include <algorithm>

namespace halvern {
namespace {

constexpr double kMultiParametersWidth = 380.0;
constexpr int kRangeSamples = 16; // modulator outputs sampled across -1..1 to find a target's range

} // namespace

ZModulatorArea::ZModulatorArea(ZModulatorEditorContext& context, PageBuilder buildPage, MenuOpener openMenu,
                               PresetsOpener openPresets,
                               std::function<std::unique_ptr<ZView>(int32_t, const std::string&)> control)
    : context_(context), buildPage_(std::move(buildPage)), openMenu_(std::move(openMenu)),
      openPresets_(std::move(openPresets))
{
    SetName("ModulatorArea");
    buildOverview(control);
    back_ = AddChild(std::make_unique<ZButton>("Back", [this] { Select({}); }));
    back_->SetName("Back");
    menu_ = AddChild(std::make_unique<ZButton>("Menu", [this] {
        if (openMenu_)
            openMenu_(selection_, menu_->bounds());
    }));
    menu_->SetName("ModulatorMenu");
    presets_ = AddChild(std::make_unique<ZButton>("Presets", [this] {
        if (openPresets_)
            openPresets_(selection_);
    }));
    presets_->SetName("ModulatorPresets");
    presets_->SetHelpText("Opens this modulator's presets: load, save, rename, sort into folders, export and import.");
    Select({});
}

void ZModulatorArea::buildOverview(const std::function<std::unique_ptr<ZView>(int32_t, const std::string&)>& control)
{
    auto overview = std::make_unique<ZView>();
    overview->SetName("ModulatorOverview");
    ZQuessaneAudioEffectPlugin& core = context_.core;
    const auto menuFor = [this](ZModulatorSelection which) {
        return [this, which](ZRect anchor) {
            if (openMenu_)
                openMenu_(which, anchor);
        };
    };

    multiParameters_ = overview->AddChild(std::make_unique<ZPanel>("MultiParameters", 2));
    for (int i = 0; i < ZAudioEffectPluginToAudioPluginAdapter::kMultiParameterCount; ++i) {
        const ZModulatorSelection which{ZModulatorSelection::Kind::MultiParameter, i};
        multiParameters_->Add(std::make_unique<ZMultiParameterStrip>(
            context_, i, control(core.multiParameterIndex(i), "Value"), [this, which] { Select(which); }, menuFor(which)));
    }
    lfos_ = overview->AddChild(std::make_unique<ZPanel>("LFOs", 4));
    for (int i = 0; i < ZAudioEffectPluginToAudioPluginAdapter::kLFOCount; ++i) {
        const int32_t first = core.lfoParameterIndex(i);
        const ZModulatorSelection which{ZModulatorSelection::Kind::LFO, i};
        lfos_->Add(std::make_unique<ZLFOStrip>(context_, i, control(first, ""), control(first + 1, "Frequency"),
                                               control(first + 2, "Amount"), [this, which] { Select(which); },
                                               menuFor(which)));
    }
    overview_ = AddChild(std::move(overview));
}

std::string ZModulatorArea::titleOf(ZModulatorSelection selection) const
{
    switch (selection.kind) {
    case ZModulatorSelection::Kind::LFO:
        return "LFO " + std::to_string(selection.index + 1);
    case ZModulatorSelection::Kind::MultiParameter:
        return context_.core.multiParameter(selection.index).displayName();
    case ZModulatorSelection::Kind::MIDI:
        return "MIDI settings";
    case ZModulatorSelection::Kind::Morph:
        return "ABCD morphing";
    case ZModulatorSelection::Kind::Equalizer:
        return "Equalizer";
    case ZModulatorSelection::Kind::Decay:
        return "Decay";
    case ZModulatorSelection::Kind::None:
        break;
    }
    return {};
}

void ZModulatorArea::Select(ZModulatorSelection selection)
{
    if (ZUIRoot* owner = root())
        owner->CancelInteraction(); // a drag on the page that goes ends first
    std::unique_ptr<ZView> page = selection.kind != ZModulatorSelection::Kind::None && buildPage_
                                      ? buildPage_(selection)
                                      : nullptr;
    if (page_ != nullptr) {
        // The page may be handling the event that closes it: it goes when the event is over.
        std::unique_ptr<ZView> old = TakeChild(page_);
        page_ = nullptr;
        if (ZUIRoot* owner = root())
            owner->Dispose(std::move(old));
    }
    selection_ = page ? selection : ZModulatorSelection{};
    title_ = titleOf(selection_);
    if (page)
        page_ = AddChild(std::move(page));
    const bool open = page_ != nullptr;
    overview_->SetVisible(!open);
    back_->SetVisible(open);
    const bool modulator = selection_.kind == ZModulatorSelection::Kind::LFO ||
                           selection_.kind == ZModulatorSelection::Kind::MultiParameter;
    menu_->SetVisible(open && modulator);
    presets_->SetVisible(open && modulator);
    for (size_t i = 0; i < multiParameters_->body().children().size(); ++i)
        static_cast<ZMultiParameterStrip*>(multiParameters_->body().children()[i].get())
            ->SetSelected(selection_ == ZModulatorSelection{ZModulatorSelection::Kind::MultiParameter, static_cast<int>(i)});
    for (size_t i = 0; i < lfos_->body().children().size(); ++i)
        static_cast<ZLFOStrip*>(lfos_->body().children()[i].get())
            ->SetSelected(selection_ == ZModulatorSelection{ZModulatorSelection::Kind::LFO, static_cast<int>(i)});
    Layout();
    if (ZUIRoot* owner = root())
        owner->InvalidateAll(); // the ranges on the main editor's controls change too
}

const ZModulatorTargetList* ZModulatorArea::selectedTargets() const
{
    switch (selection_.kind) {
    case ZModulatorSelection::Kind::LFO:
        return &context_.core.lfo(selection_.index).targets();
    case ZModulatorSelection::Kind::MultiParameter:
        return &context_.core.multiParameter(selection_.index).targets();
    default:
        return nullptr;
    }
}

std::optional<std::pair<double, double>> ZModulatorArea::RangeOn(int32_t index) const
{
    const ZModulatorTargetList* list = selectedTargets();
    if (list == nullptr)
        return std::nullopt;
    const std::vector<ZModulatorTarget>& targets = list->targets();
    std::optional<std::pair<double, double>> range;
    for (const ZModulatorTarget& target : targets) {
        if (target.parameter != index || !target.enabled)
            continue;
        for (int i = 0; i <= kRangeSamples; ++i) {
            const double value = TargetValueFor(target, targets.front(), -1.0 + 2.0 * i / kRangeSamples);
            range = range ? std::pair{std::min(range->first, value), std::max(range->second, value)}
                          : std::pair{value, value};
        }
    }
    return range;
}

void ZModulatorArea::Layout()
{
    const ZRect& b = bounds();
    overview_->SetBounds(b);
    multiParameters_->SetBounds({b.x, b.y, kMultiParametersWidth, b.height});
    lfos_->SetBounds({b.x + kMultiParametersWidth + 8, b.y, b.width - kMultiParametersWidth - 8, b.height});
    const double buttonWidth = 64.0, buttonHeight = kTitleHeight - 8;
    back_->SetBounds({b.right() - buttonWidth - 6, b.y + 4, buttonWidth, buttonHeight});
    menu_->SetBounds({b.right() - 2 * buttonWidth - 12, b.y + 4, buttonWidth, buttonHeight});
    presets_->SetBounds({b.right() - 3 * buttonWidth - 18, b.y + 4, buttonWidth, buttonHeight});
    if (page_ != nullptr)
        page_->SetBounds({b.x, b.y + kTitleHeight, b.width, b.height - kTitleHeight});
}

void ZModulatorArea::Refresh()
{
    if (page_ != nullptr && titleOf(selection_) != title_) {
        title_ = titleOf(selection_);
        Invalidate();
    }
}

void ZModulatorArea::PaintSelf(ZCanvas& canvas)
{
    if (page_ == nullptr)
        return;
    const ZRect& b = bounds();
    ZPanel::PaintFace(canvas, root()->theme(), b, title_, b.x + b.width / 2, kTitleHeight);
}

} // namespace halvern
