#include "host/vst2/vst2_audio_effect.h"

#include "core/exception_frame.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace halvern {

namespace {

// Hosts read at most this many bytes of the record.
#if defined(__LP64__)
constexpr size_t kAbiRecordSize = 192;
#endif

// Lets a hook write into a zeroed scratch buffer, then copies the result to the host's
// buffer, cut to maxChars and terminated. Without a host buffer the hook is not called.
template <typename Hook>
VstIntPtr copyOut(void* destination, size_t maxChars, Hook&& hook)
{
    if (!destination)
        return 0;
    char buffer[ZVST2AudioEffect::kTextBufferSize] = {};
    VstIntPtr result = hook(buffer);
    buffer[sizeof(buffer) - 1] = '\0';
    ZVST2AudioEffect::copyText(static_cast<char*>(destination), buffer, maxChars);
    return result;
}

template <size_t N>
void terminateField(char (&field)[N])
{
    field[N - 1] = '\0';
}

// Hosts pass key modifiers as a float; anything that is not a small whole number is none.
VstInt32 toModifiers(float value)
{
    return std::isfinite(value) && value >= 0.0f && value < 65536.0f ? static_cast<VstInt32>(value) : 0;
}

bool isSampleRate(float rate)
{
    return std::isfinite(rate) && rate > 0.0f;
}

} // namespace

ZVST2AudioEffect::ZVST2AudioEffect(audioMasterCallback hostCallback, VstInt32 programCount, VstInt32 parameterCount)
    : hostCallback_(hostCallback)
{
#if defined(__LP64__)
    static_assert(sizeof(Record) == kAbiRecordSize);
#endif
    AEffect& effect = record_.effect;
    effect.magic = kEffectMagic;
    effect.dispatcher = &ZVST2AudioEffect::dispatchEntry;
    effect.process = &ZVST2AudioEffect::processEntry;
    effect.setParameter = &ZVST2AudioEffect::setParameterEntry;
    effect.getParameter = &ZVST2AudioEffect::getParameterEntry;
    effect.processReplacing = &ZVST2AudioEffect::processReplacingEntry;
    effect.processDoubleReplacing = nullptr;
    effect.numPrograms = std::max<VstInt32>(programCount, 0);
    effect.numParams = std::max<VstInt32>(parameterCount, 0);
    effect.numInputs = 2;
    effect.numOutputs = 2;
    effect.float1 = 1.0f;  // ratio of output to input samples
    effect.object = this;
    effect.uniqueID = 0;
    effect.version = 1;
}

ZVST2AudioEffect::~ZVST2AudioEffect() = default;

// ---- the record ----

VstInt32 ZVST2AudioEffect::getFlags() const
{
    // The ABI's flags are the first 32 bits of the pointer-sized word the header declares.
    uint32_t flags = 0;
    std::memcpy(&flags, &record_.effect.flags, sizeof(flags));
    return static_cast<VstInt32>(flags);
}

void ZVST2AudioEffect::setFlag(VstInt32 flag, bool state)
{
    uint32_t flags = static_cast<uint32_t>(getFlags());
    flags = state ? (flags | static_cast<uint32_t>(flag)) : (flags & ~static_cast<uint32_t>(flag));
    record_.effect.flags = 0;  // the padding after the 32-bit word stays zero
    std::memcpy(&record_.effect.flags, &flags, sizeof(flags));
}

void ZVST2AudioEffect::setUniqueID(VstInt32 id)
{
    record_.effect.uniqueID = id;
}

void ZVST2AudioEffect::setVersion(VstInt32 version)
{
    record_.effect.version = version;
}

void ZVST2AudioEffect::setNumInputs(VstInt32 count)
{
    record_.effect.numInputs = std::max<VstInt32>(count, 0);
}

void ZVST2AudioEffect::setNumOutputs(VstInt32 count)
{
    record_.effect.numOutputs = std::max<VstInt32>(count, 0);
}

void ZVST2AudioEffect::setInitialDelay(VstInt32 samples)
{
    record_.effect.initialDelay = std::max<VstInt32>(samples, 0);
}

void ZVST2AudioEffect::canProcessReplacing(bool state)
{
    setFlag(effFlagsCanReplacing, state);
}

void ZVST2AudioEffect::programsAreChunks(bool state)
{
    setFlag(effFlagsProgramChunks, state);
}

void ZVST2AudioEffect::isSynth(bool state)
{
    setFlag(effFlagsIsSynth, state);
}

void ZVST2AudioEffect::hasEditor(bool state)
{
    setFlag(effFlagsHasEditor, state);
}

void ZVST2AudioEffect::noTail(bool state)
{
    setFlag(effFlagsNoSoundInStop, state);
}

bool ZVST2AudioEffect::isParameterIndex(VstInt32 index) const
{
    return index >= 0 && index < record_.effect.numParams;
}

void ZVST2AudioEffect::copyText(char* destination, std::string_view text, size_t maxChars)
{
    if (!destination)
        return;
    size_t length = std::min({text.size(), maxChars, text.find('\0')});
    if (length < text.size()) {
        // Cut before the lead byte of a sequence whose continuation would be lost.
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
            --length;
    }
    std::memcpy(destination, text.data(), length);
    destination[length] = '\0';
}

// ---- host callback helpers ----

VstIntPtr ZVST2AudioEffect::callHost(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt)
{
    if (!hostCallback_)
        return 0;
    return hostCallback_(&record_.effect, opcode, index, value, ptr, opt);
}

VstInt32 ZVST2AudioEffect::getMasterVersion()
{
    VstIntPtr version = callHost(audioMasterVersion);
    return version != 0 ? static_cast<VstInt32>(version) : 1;
}

bool ZVST2AudioEffect::ioChanged()
{
    return callHost(audioMasterIOChanged) != 0;
}

bool ZVST2AudioEffect::wantEvents(VstInt32 filter)
{
    return callHost(audioMasterWantMidi, 0, filter) != 0;
}

bool ZVST2AudioEffect::sendVstEventsToHost(VstEvents* events)
{
    if (!events)
        return false;
    return callHost(audioMasterProcessEvents, 0, 0, events) != 0;
}

VstTimeInfo* ZVST2AudioEffect::getTimeInfo(VstInt32 filter)
{
    return reinterpret_cast<VstTimeInfo*>(callHost(audioMasterGetTime, 0, filter));
}

float ZVST2AudioEffect::getSampleRate()
{
    // Hosts answer whole hertz; an answer beyond any audio rate is not one.
    VstIntPtr rate = callHost(audioMasterGetSampleRate);
    if (rate > 0 && rate <= 10'000'000)
        sampleRate_ = static_cast<float>(rate);
    return sampleRate_;
}

VstInt32 ZVST2AudioEffect::getBlockSize()
{
    VstIntPtr size = callHost(audioMasterGetBlockSize);
    if (size > 0 && size <= std::numeric_limits<VstInt32>::max())
        blockSize_ = static_cast<VstInt32>(size);
    return blockSize_;
}

void ZVST2AudioEffect::setParameterAutomated(VstInt32 index, float value)
{
    if (!isParameterIndex(index))
        return;
    setParameter(index, value);
    callHost(audioMasterAutomate, index, 0, nullptr, value);
}

bool ZVST2AudioEffect::beginEdit(VstInt32 index)
{
    return callHost(audioMasterBeginEdit, index) != 0;
}

bool ZVST2AudioEffect::endEdit(VstInt32 index)
{
    return callHost(audioMasterEndEdit, index) != 0;
}

bool ZVST2AudioEffect::updateDisplay()
{
    return callHost(audioMasterUpdateDisplay) != 0;
}

bool ZVST2AudioEffect::sizeWindow(VstInt32 width, VstInt32 height)
{
    return callHost(audioMasterSizeWindow, width, height) != 0;
}

VstInt32 ZVST2AudioEffect::canHostDo(const char* text)
{
    if (!text)
        return 0;
    return static_cast<VstInt32>(callHost(audioMasterCanDo, 0, 0, const_cast<char*>(text)));
}

// ---- entries from the host ----

VstIntPtr ZVST2AudioEffect::dispatchEntry(AEffect* effect, int opcode, int index, VstIntPtr value, void* ptr, float opt)
{
    auto* self = effect ? static_cast<ZVST2AudioEffect*>(effect->object) : nullptr;
    if (!self)
        return 0;
    return Guarded<VstIntPtr>("ZVST2AudioEffect::dispatcher", 0, [&] {
        return self->dispatcher(opcode, index, value, ptr, opt);
    });
}

void ZVST2AudioEffect::processEntry(AEffect* effect, float** inputs, float** outputs, int sampleFrames)
{
    auto* self = effect ? static_cast<ZVST2AudioEffect*>(effect->object) : nullptr;
    if (!self)
        return;
    GuardedVoid("ZVST2AudioEffect::process", [&] { self->process(inputs, outputs, sampleFrames); });
}

void ZVST2AudioEffect::processReplacingEntry(AEffect* effect, float** inputs, float** outputs, int sampleFrames)
{
    auto* self = effect ? static_cast<ZVST2AudioEffect*>(effect->object) : nullptr;
    if (!self)
        return;
    GuardedVoid("ZVST2AudioEffect::processReplacing", [&] { self->processReplacing(inputs, outputs, sampleFrames); });
}

void ZVST2AudioEffect::setParameterEntry(AEffect* effect, int index, float value)
{
    auto* self = effect ? static_cast<ZVST2AudioEffect*>(effect->object) : nullptr;
    if (!self || !self->isParameterIndex(index))
        return;
    GuardedVoid("ZVST2AudioEffect::setParameter", [&] { self->setParameter(index, value); });
}

float ZVST2AudioEffect::getParameterEntry(AEffect* effect, int index)
{
    auto* self = effect ? static_cast<ZVST2AudioEffect*>(effect->object) : nullptr;
    if (!self || !self->isParameterIndex(index))
        return 0.0f;
    return Guarded<float>("ZVST2AudioEffect::getParameter", 0.0f, [&] { return self->getParameter(index); });
}

VstIntPtr ZVST2AudioEffect::closeAndDelete()
{
    GuardedVoid("ZVST2AudioEffect::close", [this] { close(); });
    delete this;
    return 1;
}

VstIntPtr ZVST2AudioEffect::dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt)
{
    const bool parameter = isParameterIndex(index);
    switch (opcode) {
    case effOpen:
        open();
        return 0;
    case effClose:
        return closeAndDelete();

    // ---- programs ----
    case effSetProgram:
        if (value >= 0 && value < record_.effect.numPrograms)
            setProgram(static_cast<VstInt32>(value));
        return 0;
    case effGetProgram:
        return getProgram();
    case effSetProgramName: {
        if (!ptr)
            return 0;
        // The host's text is read only up to the length a program name may have.
        char name[kProgramNameChars + 1];
        const char* text = static_cast<const char*>(ptr);
        copyText(name, std::string_view(text, strnlen(text, kProgramNameChars + 1)), kProgramNameChars);
        setProgramName(name);
        return 0;
    }
    case effGetProgramName:
        return copyOut(ptr, kProgramNameChars, [&](char* text) {
            getProgramName(text);
            return 0;
        });
    case effGetProgramNameIndexed:
        return copyOut(ptr, kProgramNameChars, [&](char* text) {
            return getProgramNameIndexed(static_cast<VstInt32>(value), index, text) ? 1 : 0;
        });

    // ---- parameters ----
    case effGetParamLabel:
        if (!parameter)
            return copyOut(ptr, 0, [](char*) { return 0; });
        return copyOut(ptr, kParameterLabelChars, [&](char* text) {
            getParameterLabel(index, text);
            return 0;
        });
    case effGetParamDisplay:
        if (!parameter)
            return copyOut(ptr, 0, [](char*) { return 0; });
        return copyOut(ptr, kParameterDisplayChars, [&](char* text) {
            getParameterDisplay(index, text);
            return 0;
        });
    case effGetParamName:
        if (!parameter)
            return copyOut(ptr, 0, [](char*) { return 0; });
        return copyOut(ptr, kParameterNameChars, [&](char* text) {
            getParameterName(index, text);
            return 0;
        });
    case effCanBeAutomated:
        return parameter && canParameterBeAutomated(index) ? 1 : 0;
    case effString2Parameter:
        return parameter && string2parameter(index, static_cast<char*>(ptr)) ? 1 : 0;
    case effGetParameterProperties: {
        if (!parameter || !ptr)
            return 0;
        auto* properties = static_cast<VstParameterProperties*>(ptr);
        std::memset(properties, 0, sizeof(*properties));
        const bool filled = getParameterProperties(index, properties);
        terminateField(properties->label);
        terminateField(properties->shortLabel);
        terminateField(properties->categoryLabel);
        return filled ? 1 : 0;
    }

    // ---- set-up ----
    case effSetSampleRate:
        if (isSampleRate(opt))
            sampleRate_ = opt;
        setSampleRate(opt);
        return 0;
    case effSetBlockSize:
    case effSetBlockSizeAndSampleRate: {
        const VstInt32 size = static_cast<VstInt32>(std::clamp<VstIntPtr>(value, 0, std::numeric_limits<VstInt32>::max()));
        if (size > 0)
            blockSize_ = size;
        setBlockSize(size);
        if (opcode == effSetBlockSizeAndSampleRate) {
            if (isSampleRate(opt))
                sampleRate_ = opt;
            setSampleRate(opt);
        }
        return 0;
    }
    case effMainsChanged:
        if (value != 0)
            resume();
        else
            suspend();
        return 0;

    // ---- editor ----
    case effEditGetRect: {
        if (!ptr)
            return 0;
        auto** rect = static_cast<ERect**>(ptr);
        *rect = nullptr;
        if (!editorGetRect(rect) || !*rect) {
            *rect = nullptr;
            return 0;
        }
        return 1;
    }
    case effEditOpen:
        return editorOpen(ptr) ? 1 : 0;
    case effEditClose:
        editorClose();
        return 0;
    case effEditIdle:
        editorIdle();
        return 0;
    case effEditKeyDown:
        return editorKeyDown(index, static_cast<VstInt32>(value), toModifiers(opt)) ? 1 : 0;
    case effEditKeyUp:
        return editorKeyUp(index, static_cast<VstInt32>(value), toModifiers(opt)) ? 1 : 0;

    // ---- state ----
    case effGetChunk: {
        if (!ptr)
            return 0;
        auto** data = static_cast<void**>(ptr);
        *data = nullptr;
        const VstInt32 size = getChunk(data, index != 0);
        if (size <= 0 || !*data) {
            *data = nullptr;
            return 0;
        }
        return size;
    }
    case effSetChunk:
        if (!ptr || value <= 0 || value > std::numeric_limits<VstInt32>::max())
            return 0;
        return setChunk(ptr, static_cast<VstInt32>(value), index != 0);

    // ---- events and channels ----
    case effProcessEvents:
        return ptr ? processEvents(static_cast<VstEvents*>(ptr)) : 0;
    case effGetInputProperties:
    case effGetOutputProperties: {
        if (!ptr)
            return 0;
        auto* pin = static_cast<VstPinProperties*>(ptr);
        std::memset(pin, 0, sizeof(*pin));
        const bool filled = opcode == effGetInputProperties ? getInputProperties(index, pin)
                                                            : getOutputProperties(index, pin);
        terminateField(pin->label);
        terminateField(pin->shortLabel);
        return filled ? 1 : 0;
    }
    case effSetSpeakerArrangement:
        // The input arrangement comes in the value word, the output in the pointer.
        return setSpeakerArrangement(reinterpret_cast<VstSpeakerArrangement*>(value),
                                     static_cast<VstSpeakerArrangement*>(ptr)) ? 1 : 0;
    case effGetSpeakerArrangement: {
        auto** input = reinterpret_cast<VstSpeakerArrangement**>(value);
        auto** output = static_cast<VstSpeakerArrangement**>(ptr);
        if (!input || !output)
            return 0;
        *input = nullptr;
        *output = nullptr;
        return getSpeakerArrangement(input, output) ? 1 : 0;
    }
    case effGetPlugCategory:
        return getPlugCategory();
    case effSetBypass:
        return setBypass(value != 0) ? 1 : 0;

    // ---- identity ----
    case effGetEffectName:
        return copyOut(ptr, kEffectNameChars, [&](char* text) { return getEffectName(text) ? 1 : 0; });
    case effGetVendorString:
        return copyOut(ptr, kVendorStringChars, [&](char* text) { return getVendorString(text) ? 1 : 0; });
    case effGetProductString:
        return copyOut(ptr, kProductStringChars, [&](char* text) { return getProductString(text) ? 1 : 0; });
    case effGetVendorVersion:
        return getVendorVersion();
    case effVendorSpecific:
        return vendorSpecific(index, value, ptr, opt);
    case effCanDo:
        return ptr ? canDo(static_cast<const char*>(ptr)) : 0;
    case effGetTailSize:
        return getTailSize();
    case effGetVstVersion:
        return getVstVersion();
    case effIdentify:
        return ('N' << 24) | ('v' << 16) | ('E' << 8) | 'f';  // 'NvEf', the answer every 2.x plug-in gives

    // ---- processing ----
    case effStartProcess:
        return startProcess();
    case effStopProcess:
        return stopProcess();
    case effSetProcessPrecision:
        return setProcessPrecision(static_cast<VstInt32>(value)) ? 1 : 0;
    case effSetTotalSampleToProcess:
        return value;  // every sample the host offers is processed
    case effGetNumMidiInputChannels:
        return getNumMidiInputChannels();
    case effGetNumMidiOutputChannels:
        return getNumMidiOutputChannels();
    case effGetCurrentMidiProgram:
        return -1;  // no MIDI programs
    default:
        return 0;
    }
}

// ---- neutral defaults ----

void ZVST2AudioEffect::process(float**, float**, VstInt32) {}

void ZVST2AudioEffect::processReplacing(float**, float** outputs, VstInt32 sampleFrames)
{
    if (!outputs || sampleFrames <= 0)
        return;
    for (VstInt32 channel = 0; channel < record_.effect.numOutputs; ++channel)
        if (outputs[channel])
            std::fill(outputs[channel], outputs[channel] + sampleFrames, 0.0f);
}

void ZVST2AudioEffect::setParameter(VstInt32, float) {}
float ZVST2AudioEffect::getParameter(VstInt32) { return 0.0f; }

void ZVST2AudioEffect::open() {}
void ZVST2AudioEffect::close() {}

void ZVST2AudioEffect::setProgram(VstInt32 program) { currentProgram_ = program; }
VstInt32 ZVST2AudioEffect::getProgram() { return currentProgram_; }
void ZVST2AudioEffect::setProgramName(char*) {}
void ZVST2AudioEffect::getProgramName(char* name) { name[0] = '\0'; }
bool ZVST2AudioEffect::getProgramNameIndexed(VstInt32, VstInt32, char*) { return false; }

void ZVST2AudioEffect::getParameterLabel(VstInt32, char* label) { label[0] = '\0'; }
void ZVST2AudioEffect::getParameterDisplay(VstInt32, char* text) { text[0] = '\0'; }
void ZVST2AudioEffect::getParameterName(VstInt32, char* text) { text[0] = '\0'; }
bool ZVST2AudioEffect::canParameterBeAutomated(VstInt32) { return true; }
bool ZVST2AudioEffect::string2parameter(VstInt32, char*) { return false; }
bool ZVST2AudioEffect::getParameterProperties(VstInt32, VstParameterProperties*) { return false; }

void ZVST2AudioEffect::setSampleRate(float) {}
void ZVST2AudioEffect::setBlockSize(VstInt32) {}
void ZVST2AudioEffect::suspend() {}
void ZVST2AudioEffect::resume() {}

bool ZVST2AudioEffect::editorGetRect(ERect**) { return false; }
bool ZVST2AudioEffect::editorOpen(void*) { return false; }
void ZVST2AudioEffect::editorClose() {}
void ZVST2AudioEffect::editorIdle() {}
bool ZVST2AudioEffect::editorKeyDown(VstInt32, VstInt32, VstInt32) { return false; }
bool ZVST2AudioEffect::editorKeyUp(VstInt32, VstInt32, VstInt32) { return false; }

VstInt32 ZVST2AudioEffect::getChunk(void**, bool) { return 0; }
VstInt32 ZVST2AudioEffect::setChunk(void*, VstInt32, bool) { return 0; }
VstInt32 ZVST2AudioEffect::processEvents(VstEvents*) { return 0; }

bool ZVST2AudioEffect::getInputProperties(VstInt32, VstPinProperties*) { return false; }
bool ZVST2AudioEffect::getOutputProperties(VstInt32, VstPinProperties*) { return false; }
bool ZVST2AudioEffect::setSpeakerArrangement(VstSpeakerArrangement*, VstSpeakerArrangement*) { return false; }
bool ZVST2AudioEffect::getSpeakerArrangement(VstSpeakerArrangement**, VstSpeakerArrangement**) { return false; }

VstPlugCategory ZVST2AudioEffect::getPlugCategory()
{
    return (getFlags() & effFlagsIsSynth) ? kPlugCategSynth : kPlugCategUnknown;
}

bool ZVST2AudioEffect::setBypass(bool) { return false; }
bool ZVST2AudioEffect::getEffectName(char*) { return false; }
bool ZVST2AudioEffect::getVendorString(char*) { return false; }
bool ZVST2AudioEffect::getProductString(char*) { return false; }
VstInt32 ZVST2AudioEffect::getVendorVersion() { return 0; }
VstIntPtr ZVST2AudioEffect::vendorSpecific(VstInt32, VstIntPtr, void*, float) { return 0; }
VstInt32 ZVST2AudioEffect::canDo(const char*) { return 0; }
VstInt32 ZVST2AudioEffect::getTailSize() { return 0; }
VstInt32 ZVST2AudioEffect::getVstVersion() { return kVstVersion; }
VstInt32 ZVST2AudioEffect::startProcess() { return 0; }
VstInt32 ZVST2AudioEffect::stopProcess() { return 0; }
bool ZVST2AudioEffect::setProcessPrecision(VstInt32) { return false; }
VstInt32 ZVST2AudioEffect::getNumMidiInputChannels() { return 0; }
VstInt32 ZVST2AudioEffect::getNumMidiOutputChannels() { return 0; }

} // namespace halvern
