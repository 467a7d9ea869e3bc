// Loads fuzzed state blocks into one prepared plug-in instance. The first byte picks
// the form: odd, the rest is taken as a markup document and compressed first, so that
// the fuzzer explores documents; even, the rest is handed over as a raw block, so that
// it explores the inflater. Whatever loads must save, reload and save again to the same
// bytes, and the instance must then process a block into finite samples.

#include "core/z_exception.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/plugin_state_block.h"
#include "state/quessane_audio_effect_plugin.h"

#include <zlib.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using halvern::ZAudioEffectPluginToAudioPluginAdapter;

constexpr int kBlock = 256;

ZAudioEffectPluginToAudioPluginAdapter& Instance()
{
    static auto core = [] {
        auto made = std::make_unique<halvern::ZQuessaneAudioEffectPlugin>(
            std::make_unique<halvern::HalvernAudioEffectPlugin>());
        made->SetSampleRate(48000.0);
        made->SetMaxBlockSize(kBlock);
        made->InitProcessing();
        return made;
    }();
    return *core;
}

std::vector<uint8_t> Compress(const uint8_t* data, size_t size)
{
    uLongf length = compressBound(static_cast<uLong>(size));
    std::vector<uint8_t> block(length);
    if (compress2(block.data(), &length, data, static_cast<uLong>(size), 9) != Z_OK)
        std::abort();
    block.resize(length);
    return block;
}

std::vector<uint8_t> Bytes(const halvern::ZMemoryStream& stream)
{
    return {stream.data(), stream.data() + stream.size()};
}

void ProcessOneBlock(ZAudioEffectPluginToAudioPluginAdapter& core)
{
    static std::vector<float> left(kBlock), right(kBlock), outLeft(kBlock), outRight(kBlock);
    for (int i = 0; i < kBlock; ++i) {
        left[static_cast<size_t>(i)] = static_cast<float>((i * 7919 % 200) - 100) / 100.0f;
        right[static_cast<size_t>(i)] = -left[static_cast<size_t>(i)];
    }
    float* inputs[] = {left.data(), right.data()};
    float* outputs[] = {outLeft.data(), outRight.data()};
    core.ProcessBlock(inputs, outputs, kBlock, true);
    for (int i = 0; i < kBlock; ++i)
        if (!std::isfinite(outLeft[static_cast<size_t>(i)]) || !std::isfinite(outRight[static_cast<size_t>(i)]))
            std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1 || size > (1u << 20))
        return 0;
    const std::vector<uint8_t> block =
        (data[0] & 1) != 0 ? Compress(data + 1, size - 1) : std::vector<uint8_t>(data + 1, data + size);
    auto& core = Instance();
    try {
        halvern::LoadPluginState(core, block.data(), static_cast<int32_t>(block.size()));
    } catch (const halvern::ZException&) {
        return 0;
    }
    const std::vector<uint8_t> first = Bytes(halvern::SavePluginState(core));
    halvern::LoadPluginState(core, first.data(), static_cast<int32_t>(first.size()));
    if (Bytes(halvern::SavePluginState(core)) != first)
        std::abort();
    ProcessOneBlock(core);
    return 0;
}
