#include "reverb/reverb_parameters.h"

#include "core/value_displays.h"
#include "core/z_format.h"
#include "reverb/equalizer_processor.h"
#include "reverb/reverb_help_texts.h"
#include "reverb/room_model.h"

#include <string>

namespace halvern {
ZReverbParameters::ZReverbParameters(ZEqualizerProcessorPlugin& equalizer)
{
    using namespace reverb_help;
    ZReverbSettings& s = settings_;
    const std::string widening = std::string(kSharedWidening) + std::string(kWideningNote);

    addPanel("Globals", kGlobals);
    addNumber("ReverbDepth", "Dry/wet", &s.dryWet, 0.0, 1.0, 0.01, kReverbDepth, Display::Percent);
    addNumber("Reverbation", "Early/late", &s.earlyLate, 0.0, 1.0, 0.01, kReverbation, Display::Percent);
    addNumber("Widening", "Widening", &s.widening, -1.0, 2.0, 0.01, widening, Display::Widening);
    addNumber("Predelay", "Predelay", &s.predelay, 0.0, kAutomaticPredelay, 0.001, kPredelay, Display::Predelay);
    addPanel("Room", kRoom);
    addNumber("Size", "Size", &s.size, 0.00333, 0.15, 0.001, kSize, Display::Metres);
    addNumber("Width", "Width", &s.width, 0.0, 1.0, 0.01, kWidth, Display::Percent);
    addNumber("Diffusion", "Diffusion", &s.diffusion, 0.0, 1.0, 0.01, kDiffusion, Display::Percent);
    addNumber("ReverbTime", "Reverb time", &s.reverbTime, 0.1, 30.0, 0.01, kReverbTime, Display::Time);
    addNumber("ReverbDiffusion", "Reverb diffusion", &s.reverbDiffusion, 0.0, 1.0, 0.01, kReverbDiffusion, Display::Percent);
    addValue("ReverbMode", "Reverb mode", ZParameterType::Enumeration, kReverbMode,
             std::make_unique<ZValueEnum<ZReverbMode>>(&s.reverbMode, ZReverbMode::Mode1));
    addPanel("Color", kColor);
    addNumber("LowDamp", "Low dampening", &s.lowDamp, 0.0, 12.0, 0.1, kLowDamp, Display::Decibels);
    addNumber("LowFreq", "Low frequency", &s.lowFreq, std::log10(20.0), std::log10(20000.0), 0.01, kLowFreq, Display::Frequency);
    addNumber("HighDamp", "High dampening", &s.highDamp, 0.0, 12.0, 0.1, kHighDamp, Display::Decibels);
    addNumber("HighFreq", "High frequency", &s.highFreq, std::log10(20.0), std::log10(20000.0), 0.01, kHighFreq, Display::Frequency);
    addNumber("Modulation", "Modulation", &s.modulation, 0.0, 1.0, 0.01, kModulation, Display::Percent);
    addNumber("ModulationFrequency", "Modulation freq", &s.modulationFrequency, -1.0, 0.0, 0.01, kModulationFrequency,
              Display::Frequency);
    auto gate = std::make_unique<ZValueInt>(&s.gateEnabled, 0, 1, 0, 1);
    gate->setFormatter(FormatOnOff);
    addValue("Gate", "Gate", ZParameterType::Switch, kGate, std::move(gate));
    records_.back().info.opensPanel = true;
    addNumber("threshold1", "Threshold", &s.threshold, -80.0, 0.0, 0.1, kThreshold1, Display::Decibels);
    addNumber("gatesize", "Size", &s.gateSize, 0.0, 24.0, 0.1, kGatesize, Display::Decibels);
    addNumber("attack", "Attack", &s.attack, 0.0, 0.1, 0.0001, kAttack, Display::Time);
    addNumber("release", "Release", &s.release, 0.0, 10.0, 0.001, kRelease, Display::Time);
    addPanel("Equalizer", kEqualizer);
    records_.push_back({{"LowCut", "Low cut", "", ZParameterType::Float, equalizer.lowCutHelp(), true}, &equalizer.lowCutValue()});
    records_.push_back({{"HighCut", "High cut", "", ZParameterType::Float, equalizer.highCutHelp(), true}, &equalizer.highCutValue()});
    addNumber("saturation", "Saturation", &s.saturation, 0.0, 1.0, 0.01, kSaturation, Display::Percent);
    addValue("saturationmode", "Mode", ZParameterType::Enumeration, kSaturationmode,
             std::make_unique<ZValueEnum<ZSaturationMode>>(&s.saturationMode, ZSaturationMode::Soft1));
}

ZReverbParameters::~ZReverbParameters() = default;

void ZReverbParameters::addPanel(const char* key, std::string_view help)
{
    records_.push_back({{key, key, "", ZParameterType::Panel, std::string(help), false, true, true}, nullptr});
}

void ZReverbParameters::addValue(const char* key, const char* name, ZParameterType type, std::string_view help,
                                 std::unique_ptr<ZValue> value)
{
    records_.push_back({{key, name, "", type, std::string(help), true}, value.get()});
    owned_.push_back(std::move(value));
}

void ZReverbParameters::addNumber(const char* key, const char* name, double* variable, double minimum, double maximum,
                                  double increment, std::string_view help, Display display)
{
    auto value = std::make_unique<ZValueDouble>(variable, minimum, maximum, *variable, increment);
    applyDisplay(*value, display);
    addValue(key, name, ZParameterType::Float, help, std::move(value));
}

void ZReverbParameters::applyDisplay(ZValueDouble& value, Display display)
{
    switch (display) {
    case Display::Percent:
        value.setFormatter(FormatPercent);
        value.setParser(ParsePercent);
        break;
    case Display::Widening:
        // The stereo width: 0 shows 100 %, -1 shows 0 % (mono), 2 shows 300 %.
        value.setFormatter([](double w) { return FormatPercent(w + 1.0); });
        value.setParser([](std::string_view text, double& w) {
            double width = 0.0;
            if (!ParsePercent(text, width))
                return false;
            w = width - 1.0;
            return true;
        });
        break;
    case Display::Predelay:
        value.setFormatter([](double seconds) { return IsAutomaticPredelay(seconds) ? std::string("Automatic") : FormatTime(seconds); });
        value.setParser([](std::string_view text, double& seconds) {
            if (text == "Automatic") {
                seconds = kAutomaticPredelay;
                return true;
            }
            return ParseTime(text, seconds);
        });
        break;
    case Display::Metres:
        value.setFormatter([](double seconds) { return ZFormat("{0;.1} m").arg(seconds * kMetresPerSecond).text(); });
        value.setParser([](std::string_view text, double& seconds) {
            double metres = 0.0;
            if (!ZParseNumber(text, metres))
                return false;
            seconds = metres / kMetresPerSecond;
            return true;
        });
        break;
    case Display::Time:
        value.setFormatter(FormatTime);
        value.setParser(ParseTime);
        break;
    case Display::Decibels:
        value.setFormat("{+0.2} dB");
        break;
    case Display::Frequency:
        value.setFormatter(FormatLogFrequency);
        value.setParser(ParseLogFrequency);
        break;
    }
}

void ZReverbParameters::registerWith(ZParameterRegistry& registry)
{
    for (const Record& record : records_)
        registry.add(record.info, record.value);
}

bool ZReverbParameters::takeChanges()
{
    bool changed = false;
    for (const Record& record : records_)
        if (record.value != nullptr && record.value->isChanged()) {
            record.value->clearChanged();
            changed = true;
        }
    return changed;
}

} // namespace halvern
