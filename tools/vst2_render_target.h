#pragma once

// A VST 2.4 plug-in library opened the way a Linux host opens one: dlopen, the entry
// point "VSTPluginMain" (or "main" for older libraries), then the AEffect record's
// dispatcher and processReplacing. The renderer acts as an offline host at 120 BPM with
// a running transport.

#include "host/vst2/vst2_abi.h"
#include "tools/render_target.h"

#include <memory>
#include <string>
#include <vector>

namespace halvern::tools {

class Vst2RenderTarget final : public RenderTarget {
public:
    // Throws std::runtime_error naming the library when it does not load, has no entry
    // point, or gives no effect that processes two channels in replacing mode.
    explicit Vst2RenderTarget(const std::string& libraryPath);
    ~Vst2RenderTarget() override;
    Vst2RenderTarget(const Vst2RenderTarget&) = delete;
    Vst2RenderTarget& operator=(const Vst2RenderTarget&) = delete;

    int parameterCount() override;
    std::string parameterKey(int index) override;
    bool setFromText(int index, const std::string& text) override;
    void setNormalized(int index, double normalized) override;
    void setup(double sampleRate, int maxBlock) override;
    void start() override;
    void process(float* const* inputs, float* const* outputs, int n) override;
    int tailLength() override;

private:
    static VstIntPtr HostCallback(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt);
    VstIntPtr answer(VstInt32 opcode);
    VstIntPtr dispatch(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr, float opt = 0.0f);

    struct Library {
        void* handle = nullptr;
        ~Library();
    };

    Library library_;
    AEffect* effect_ = nullptr;
    bool started_ = false;
    int maxBlock_ = 512;
    VstTimeInfo time_{};
    // The plug-in's channels beyond the two the renderer feeds read silence and write
    // into scratch; all sized in setup.
    std::vector<float> silence_, scratch_;
    std::vector<float*> inputs_, outputs_;
};

} // namespace halvern::tools
