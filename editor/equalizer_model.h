#pragma once

// ZEqualizerModel: what the equalizer page shows of the effect's equalizer, taken once
// per tick under the effect's lock (the bands and the response of the filters as they
// run) and the two cuts as host parameters. Band edits go straight to the effect.

#include "reverb/halvern_audio_effect_plugin.h"
#include "ui/parameter_binding.h"

#include <memory>

namespace halvern {

class ZEqualizerModel {
public:
    enum class Field { Frequency, Gain, Q };
    enum class Cut { Low, High };

    static constexpr double kLowestHertz = 20.0;
    static constexpr double kHighestHertz = 20000.0;
    static constexpr double kGainRangeDb = 24.0; // bands boost or cut up to this
    static constexpr double kLowestQ = 0.1;
    static constexpr double kHighestQ = 10.0;

    ZEqualizerModel(HalvernAudioEffectPlugin& effect, std::shared_ptr<ZParameterBinding> lowCut,
                    std::shared_ptr<ZParameterBinding> highCut);

    // Takes the effect's bands and response again; true when either changed.
    bool Poll();

    HalvernAudioEffectPlugin& effect() const { return effect_; }
    const ZEqualizerBand& band(int index) const { return bands_[static_cast<size_t>(index)]; }
    void SetBand(int index, const ZEqualizerBand& band);
    const ZEqualizerResponse& response() const { return response_; }

    ZParameterBinding& cut(Cut which) const { return which == Cut::Low ? *lowCut_ : *highCut_; }
    double CutHertz(Cut which) const { return HertzAt(cut(which).Value()); }

    // The normalised position of a frequency between 20 Hz and 20 kHz on a log scale, and back.
    static double HertzAt(double normalized);
    static double NormalizedAt(double hertz);

    static const char* BandName(int index);
    // A knob's binding to one value of a band (named after the value or nameless), or
    // the band's enable switch.
    static std::shared_ptr<ZParameterBinding> BandBinding(const std::shared_ptr<ZEqualizerModel>& model, int index,
                                                          Field field, bool named = true);
    static std::shared_ptr<ZParameterBinding> EnableBinding(const std::shared_ptr<ZEqualizerModel>& model, int index);

private:
    HalvernAudioEffectPlugin& effect_;
    std::shared_ptr<ZParameterBinding> lowCut_;
    std::shared_ptr<ZParameterBinding> highCut_;
    ZEqualizerProcessorPlugin::Bands bands_;
    ZEqualizerResponse response_;
};

} // namespace halvern
