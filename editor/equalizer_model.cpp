#include "editor/equalizer_model.h"

#include "core/value_displays.h"
#include "core/z_format.h"
#include "editor/function_binding.h"

#include <algorithm>
#include <cmath>

namespace halvern {
namespace {

double logPosition(double value, double lowest, double highest)
{
    return std::clamp(std::log(value / lowest) / std::log(highest / lowest), 0.0, 1.0);
}

double logValue(double normalized, double lowest, double highest)
{
    return lowest * std::pow(highest / lowest, std::clamp(normalized, 0.0, 1.0));
}

std::optional<double> parseNumber(const std::string& text)
{
    double value = 0.0;
    if (!ZParseNumber(text, value))
        return std::nullopt;
    return value;
}

constexpr const char* kFrequencyHelp =
    "<name>Frequency</name> of the band: the middle of the peak, where a shelf is halfway.";
constexpr const char* kGainHelp = "<name>Gain</name> of the band: its boost (above 0 dB) or cut (below).";
constexpr const char* kQHelp =
    "<name>Q</name> of the band: higher values make the peak narrower and the shelf's slope steeper.";
constexpr const char* kEnableHelp = "Switches the band on; a band that is off leaves the sound as it is.";

struct FieldText {
    const char* name;
    const char* help;
};

FieldText fieldText(ZEqualizerModel::Field field)
{
    switch (field) {
    case ZEqualizerModel::Field::Frequency:
        return {"Frequency", kFrequencyHelp};
    case ZEqualizerModel::Field::Gain:
        return {"Gain", kGainHelp};
    case ZEqualizerModel::Field::Q:
        break;
    }
    return {"Q", kQHelp};
}

double gainAt(double normalized) { return (2.0 * std::clamp(normalized, 0.0, 1.0) - 1.0) * ZEqualizerModel::kGainRangeDb; }
double gainPosition(double db) { return std::clamp(0.5 + 0.5 * db / ZEqualizerModel::kGainRangeDb, 0.0, 1.0); }
double qAt(double normalized) { return logValue(normalized, ZEqualizerModel::kLowestQ, ZEqualizerModel::kHighestQ); }
double qPosition(double q) { return logPosition(q, ZEqualizerModel::kLowestQ, ZEqualizerModel::kHighestQ); }

// The band's value of a field as a normalised position, and the band with it set.
double fieldPosition(const ZEqualizerBand& band, ZEqualizerModel::Field field)
{
    switch (field) {
    case ZEqualizerModel::Field::Frequency:
        return ZEqualizerModel::NormalizedAt(band.frequency);
    case ZEqualizerModel::Field::Gain:
        return gainPosition(band.gainDb);
    case ZEqualizerModel::Field::Q:
        break;
    }
    return qPosition(band.q);
}

ZEqualizerBand withField(ZEqualizerBand band, ZEqualizerModel::Field field, double normalized)
{
    switch (field) {
    case ZEqualizerModel::Field::Frequency:
        band.frequency = ZEqualizerModel::HertzAt(normalized);
        break;
    case ZEqualizerModel::Field::Gain:
        band.gainDb = gainAt(normalized);
        break;
    case ZEqualizerModel::Field::Q:
        band.q = qAt(normalized);
        break;
    }
    return band;
}

// Texts in the field's own units: hertz like every other frequency, dB with a sign, Q bare.
void setFieldTexts(ZFunctionBinding& binding, ZEqualizerModel::Field field)
{
    switch (field) {
    case ZEqualizerModel::Field::Frequency:
        binding.SetTexts([](double n) { return FormatLogFrequency(std::log10(ZEqualizerModel::HertzAt(n))); },
                         [](const std::string& text) -> std::optional<double> {
                             double logHertz = 0.0;
                             if (!ParseLogFrequency(text, logHertz))
                                 return std::nullopt;
                             return ZEqualizerModel::NormalizedAt(std::pow(10.0, logHertz));
                         });
        break;
    case ZEqualizerModel::Field::Gain:
        binding.SetTexts([](double n) { return ZFormat("{0;+.1} dB").arg(gainAt(n)).text(); },
                         [](const std::string& text) -> std::optional<double> {
                             const auto db = parseNumber(text);
                             return db ? std::optional<double>(gainPosition(*db)) : std::nullopt;
                         });
        break;
    case ZEqualizerModel::Field::Q:
        binding.SetTexts([](double n) { return ZFormat("{0;.2}").arg(qAt(n)).text(); },
                         [](const std::string& text) -> std::optional<double> {
                             const auto q = parseNumber(text);
                             return q && *q > 0.0 ? std::optional<double>(qPosition(*q)) : std::nullopt;
                         });
        break;
    }
}

} // namespace

ZEqualizerModel::ZEqualizerModel(HalvernAudioEffectPlugin& effect, std::shared_ptr<ZParameterBinding> lowCut,
                                 std::shared_ptr<ZParameterBinding> highCut)
    : effect_(effect), lowCut_(std::move(lowCut)), highCut_(std::move(highCut)), bands_(effect.EqualizerBands()),
      response_(effect.EqualizerResponse())
{
}

bool ZEqualizerModel::Poll()
{
    const ZEqualizerProcessorPlugin::Bands bands = effect_.EqualizerBands();
    const ZEqualizerResponse response = effect_.EqualizerResponse();
    if (bands == bands_ && response == response_)
        return false;
    bands_ = bands;
    response_ = response;
    return true;
}

void ZEqualizerModel::SetBand(int index, const ZEqualizerBand& band)
{
    effect_.SetEqualizerBand(index, band);
    Poll();
}

double ZEqualizerModel::HertzAt(double normalized) { return logValue(normalized, kLowestHertz, kHighestHertz); }

double ZEqualizerModel::NormalizedAt(double hertz) { return logPosition(hertz, kLowestHertz, kHighestHertz); }

const char* ZEqualizerModel::BandName(int index)
{
    constexpr const char* kNames[] = {"Low shelf", "Peak", "High shelf"};
    return kNames[index];
}

std::shared_ptr<ZParameterBinding> ZEqualizerModel::BandBinding(const std::shared_ptr<ZEqualizerModel>& model,
                                                                int index, Field field, bool named)
{
    const FieldText text = fieldText(field);
    auto binding = std::make_shared<ZFunctionBinding>(
        named ? text.name : "", text.help, [model, index, field] { return fieldPosition(model->band(index), field); },
        [model, index, field](double normalized) {
            model->SetBand(index, withField(model->band(index), field, normalized));
        });
    setFieldTexts(*binding, field);
    const ZEqualizerBand defaults = ZEqualizerProcessorPlugin::DefaultBands()[static_cast<size_t>(index)];
    binding->SetDefault(fieldPosition(defaults, field));
    return binding;
}

std::shared_ptr<ZParameterBinding> ZEqualizerModel::EnableBinding(const std::shared_ptr<ZEqualizerModel>& model,
                                                                  int index)
{
    return ZFunctionBinding::Switch(
        BandName(index), kEnableHelp, [model, index] { return model->band(index).enabled; },
        [model, index](bool on) {
            ZEqualizerBand band = model->band(index);
            band.enabled = on;
            model->SetBand(index, band);
        });
}

} // namespace halvern
