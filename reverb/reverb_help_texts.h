#pragma once

// The help texts of the reverb's parameters, by parameter key, as the editor shows them
// (their markup tags kept).

#include <string_view>

namespace halvern::reverb_help {

inline constexpr std::string_view kGlobals =
    "<name>Globals panel</name> contains general sound properties.";
inline constexpr std::string_view kReverbDepth =
    "<name>Dry/wet</name> defines amount of ambience added to the sound. Note that the plugin also affect spectrum and panorama depending on source position and room.";
inline constexpr std::string_view kReverbation =
    "<name>Early/late</name> defines ratio between early and late reflections. Generally early reflections characterize space and position of the source object and reverberation describes the room properties.";
// The framework's shared widening text (key "PWidening"), then the reverb's own note.
inline constexpr std::string_view kSharedWidening =
    "<name>Widening</name> changes the stereo width of the signal: 0 % makes it mono, 100 % leaves "
    "the image as it is and higher values spread it wider than the speakers.";
inline constexpr std::string_view kWideningNote = "<p>Note that this algorithm is appliead on the reverberation signal only.";
inline constexpr std::string_view kPredelay =
    "<name>Predelay</name> is normally adjusted automatically as one of the parameters affecting sound source position. However if you are not comfortable with the automatic settings, you can control it manually. In that case note that the automatic positioning will no longer work correctly. Predelay defines initial delay before the actual response, which simulates the space between the sound source and the listener. The longer the predelay is, the further the source seems.";
inline constexpr std::string_view kRoom =
    "<name>Room panel</name> contains room sizes and general properties.";
inline constexpr std::string_view kSize =
    "<name>Size</name> defines size of the room in meters.";
inline constexpr std::string_view kWidth =
    "<name>Width</name> defines ratio of room width to length. Smaller width usually creates smaller stereo field too.";
inline constexpr std::string_view kDiffusion =
    "<name>Diffusion</name> defines fullness of the early reflections. If the value is small, you can hear separate echoes. This is often useful for leads and vocals to keep their brightness, but for percussive instruments it is usually better to use high diffusion, which provides more natural sound and avoids the echoes from becoming individual rhythmic section.";
inline constexpr std::string_view kReverbTime =
    "<name>Reverb time</name> defines time it takes for the reverberation to decay. With higher values you should always enable dampening. Otherwise there may not enough energy loss and the sound may get muddy.";
inline constexpr std::string_view kReverbDiffusion =
    "<name>Reverb diffusion</name> defines fullness of the reverberation reflections. You can apply similar approach as to <reference>Diffusion</reference>, but here you should more judge using your ears.";
inline constexpr std::string_view kReverbMode =
    "<name>Reverb mode</name> specified reverberation diffusion algorithm. Each sounds a little different.";
inline constexpr std::string_view kColor =
    "<name>Color panel</name> defines sound color, mostly spectral properties of the room.";
inline constexpr std::string_view kLowDamp =
    "<name>Low dampening</name> defines absorption of the low frequencies caused by air and room walls. You should keep this above zero, otherwise the energy is not decreasing enough and the sound may become very muddy.";
inline constexpr std::string_view kLowFreq =
    "<name>Low frequency</name> defines low dampening maximal frequency.";
inline constexpr std::string_view kHighDamp =
    "<name>High dampening</name> defines absorption of the high frequencies caused by air and room walls. You should keep this above zero, otherwise the energy is not decreasing enough and the sound may become too bright.";
inline constexpr std::string_view kHighFreq =
    "<name>High frequency</name> defines high dampening minimal frequency.";
inline constexpr std::string_view kModulation =
    "<name>Modulation</name> defines amount of time varying properties that make the sound change during the time. It may help avoiding sound artifacts caused by interaction of reflection and makes the reverb sound alive.";
inline constexpr std::string_view kModulationFrequency =
    "<name>Modulation freq</name> defines speed of the modulation. Lower values typically provide more natural results.";
inline constexpr std::string_view kGate =
    "<name>Gate panel</name> contains gate settings applied on the reverb only. It leaves the dry signal untouched.";
inline constexpr std::string_view kThreshold1 =
    "<name>Threshold</name> determines minimal signal power, when the effect is applied.";
inline constexpr std::string_view kGatesize =
    "<name>Size</name> defines size of the interval between the gate threshold and point when the output signal power reaches zero.";
inline constexpr std::string_view kAttack =
    "<name>Attack</name> defines time required for compressor to adapt to input signal power exceeding threshold. Smaller value causes the power to increase faster.";
inline constexpr std::string_view kRelease =
    "<name>Release</name> defines time required for compressor to adapt to input signal power falling below threshold. Smaller value causes the power to decrease faster.";
inline constexpr std::string_view kEqualizer =
    "<name>Equalizer panel</name> contains equalizer settings applied on the reverb only. It leaves the dry signal untouched.";
inline constexpr std::string_view kSaturation =
    "<name>Saturation</name> defines ratio between dry and saturated signal applied on the reverbation after the equalizer.";
inline constexpr std::string_view kSaturationmode =
    "<name>Mode</name> defines saturation shape. Generally last modes are more \"crunchy\".";

} // namespace halvern::reverb_help
