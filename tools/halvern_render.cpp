// halvern-render: runs audio through the plug-in core offline, block by block as a host
// would, and writes the result. Until the reverb is part of the core, the effect inside is
// a straight wire, so the run shows what the processing frame itself does to a signal:
// the latency it reports, the latency measured by cross-correlation, and the level error
// of its oversampling filters.
//
// Usage: halvern-render [--in FILE] [--out FILE] [--rate HZ] [--block N]
//                       [--oversampling N] [--channel-mode NAME]

#include "core/audio_plugin.h"
#include "core/vector_kernels.h"
#include "tools/audio_file.h"
#include "tools/test_signal.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

using namespace halvern;

class WireCore : public ZAudioPlugin {
public:
    void ProcessSubBlock(float* const* in, float* const* out, int32_t n) override
    {
        for (int c = 0; c < 2; ++c)
            kernels::Copy(in[c], out[c], n);
    }
};

struct Options {
    std::string in;
    std::string out = "halvern-render.wav";
    double rate = 48000.0;
    int block = 512;
    int oversampling = 2;
    std::string channelMode = "Stereo";
};

Options parse(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string flag = argv[i];
        if (i + 1 >= argc)
            throw std::runtime_error("missing value after " + flag);
        const std::string value = argv[++i];
        if (flag == "--in")
            options.in = value;
        else if (flag == "--out")
            options.out = value;
        else if (flag == "--rate")
            options.rate = std::stod(value);
        else if (flag == "--block")
            options.block = std::stoi(value);
        else if (flag == "--oversampling")
            options.oversampling = std::stoi(value);
        else if (flag == "--channel-mode")
            options.channelMode = value;
        else
            throw std::runtime_error("unknown option " + flag);
    }
    if (options.block < 1 || options.rate <= 0.0)
        throw std::runtime_error("block size and sample rate must be positive");
    return options;
}

// Mono input feeds both channels; further channels are ignored.
void makeStereo(tools::AudioData& audio)
{
    if (audio.channels.empty())
        throw std::runtime_error("the input has no channels");
    if (audio.channels.size() == 1)
        audio.channels.push_back(audio.channels.front());
    audio.channels.resize(2);
}

int measuredDelay(const std::vector<float>& dry, const std::vector<float>& wet, int maxLag)
{
    int best = 0;
    double bestScore = -1.0;
    for (int lag = 0; lag <= maxLag; ++lag) {
        double score = 0.0;
        for (size_t i = static_cast<size_t>(lag); i < wet.size(); ++i)
            score += static_cast<double>(wet[i]) * dry[i - static_cast<size_t>(lag)];
        if (score > bestScore) {
            bestScore = score;
            best = lag;
        }
    }
    return best;
}

double energy(const std::vector<float>& x, size_t from, size_t to)
{
    double sum = 0.0;
    for (size_t i = from; i < to && i < x.size(); ++i)
        sum += static_cast<double>(x[i]) * x[i];
    return sum;
}

int run(const Options& options)
{
    tools::AudioData input = options.in.empty() ? tools::MakeTestSignal(options.rate, 2.0) : tools::ReadAudioFile(options.in);
    makeStereo(input);

    WireCore core;
    core.SetSampleRate(input.sampleRate);
    core.SetMaxBlockSize(options.block);
    core.SetOversampling(options.oversampling);
    core.SetChannelMode(ChannelModeFromName(options.channelMode));
    core.InitProcessing();
    const int latency = core.GetLatency();

    // The input is followed by silence as long as the latency, so nothing is cut off.
    const size_t frames = input.frames() + static_cast<size_t>(latency);
    tools::AudioData output;
    output.sampleRate = input.sampleRate;
    output.channels.assign(2, std::vector<float>(frames, 0.0f));
    std::vector<std::vector<float>> source = input.channels;
    for (auto& channel : source)
        channel.resize(frames, 0.0f);

    const auto started = std::chrono::steady_clock::now();
    for (size_t at = 0; at < frames; at += static_cast<size_t>(options.block)) {
        const int n = static_cast<int>(std::min<size_t>(static_cast<size_t>(options.block), frames - at));
        float* in[2] = {source[0].data() + at, source[1].data() + at};
        float* out[2] = {output.channels[0].data() + at, output.channels[1].data() + at};
        core.ProcessBlock(in, out, n, true);
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    tools::WriteAudioFile(options.out, output);

    const int measured = measuredDelay(input.channels[0], output.channels[0], latency + 64);
    const double gain = energy(output.channels[0], static_cast<size_t>(measured), frames) /
                        energy(input.channels[0], 0, input.frames());
    std::printf("rendered      %s (%zu frames, %.0f Hz, blocks of %d)\n", options.out.c_str(), frames,
                input.sampleRate, options.block);
    std::printf("frame         oversampling x%d, channel mode \"%s\"\n", core.oversampling(),
                std::string(ChannelModeName(core.channelMode())).c_str());
    std::printf("latency       reported %d samples, measured %d samples\n", latency, measured);
    std::printf("level error   %+.4f dB (energy, left channel)\n", 10.0 * std::log10(gain));
    std::printf("speed         %.1f x real time\n", static_cast<double>(frames) / input.sampleRate / seconds);
    return latency == measured ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(parse(argc, argv));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "halvern-render: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
