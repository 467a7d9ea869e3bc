#pragma once

// The plug-in side of a VST 2.4 effect: owns the AEffect record a host holds, turns
// each dispatcher opcode into a virtual method with a neutral default, and wraps the
// host callback in small helpers. A host adapter derives from it and overrides what it
// supports.
//
// The record's function pointers are static trampolines that find the object through
// the record's object pointer. Nothing thrown reaches the host: the dispatcher and the
// process, setParameter and getParameter entries each end a stray exception with a
// neutral result (0, silence, 0.0f) and report it to the trace sink. Derived classes
// keep their own exception frames inside their overrides; this is the last resort.
//
// Lifetime: the host ends an instance with effClose, which calls close() and then
// deletes the object, so an instance handed to a host must be created with new.
//
// Text returned to the host. The text hooks (getParameterName, getEffectName …) write
// a terminated string into a zero-filled buffer of kTextBufferSize bytes; the
// dispatcher then copies it to the host's buffer, cut to the opcode's limit below and
// always terminated, and never in the middle of a UTF-8 sequence. Limits count
// characters; the terminator comes on top. They are the ABI's lengths except for the
// parameter name and display: the ABI's 8 characters are too few for names such as
// "MultiParameter 1", and 24 characters is what hosts have long accepted there (they
// commonly reserve 64 or 256 bytes). The label (a unit) keeps the ABI's 8.
//
// Null pointers from the host never reach a hook that expects a buffer or a record:
// such an opcode answers 0. Parameter opcodes with an index outside the parameter
// count answer 0 (or 0.0f, or are ignored) without calling the hook.

#include "host/vst2/vst2_abi.h"

#include <cstddef>
#include <string_view>

namespace halvern {

class ZVST2AudioEffect {
public:
    static constexpr size_t kTextBufferSize = 256;
    static constexpr size_t kParameterNameChars = 24;                // effGetParamName
    static constexpr size_t kParameterDisplayChars = 24;             // effGetParamDisplay
    static constexpr size_t kParameterLabelChars = kVstMaxParamStrLen;  // effGetParamLabel: 8
    static constexpr size_t kProgramNameChars = kVstMaxProgNameLen;     // 24, both directions
    static constexpr size_t kEffectNameChars = kVstMaxEffectNameLen;    // 32
    static constexpr size_t kVendorStringChars = kVstMaxVendorStrLen;   // 64
    static constexpr size_t kProductStringChars = kVstMaxProductStrLen; // 64
    // Fixed-size text fields inside host records (pin and parameter properties) are cut
    // to their size less one.

    // Before the host says otherwise (effSetSampleRate, effSetBlockSize).
    static constexpr float kDefaultSampleRate = 44100.0f;
    static constexpr VstInt32 kDefaultBlockSize = 1024;

    // Announces programCount programs and parameterCount parameters (negative counts
    // count as 0), two inputs and two outputs, no flags, unique ID 0 and version 1.
    ZVST2AudioEffect(audioMasterCallback hostCallback, VstInt32 programCount, VstInt32 parameterCount);
    virtual ~ZVST2AudioEffect();
    ZVST2AudioEffect(const ZVST2AudioEffect&) = delete;
    ZVST2AudioEffect& operator=(const ZVST2AudioEffect&) = delete;

    AEffect* getAeffect() { return &record_.effect; }
    audioMasterCallback getHostCallback() const { return hostCallback_; }
    VstInt32 getFlags() const;
    VstInt32 getNumPrograms() const { return record_.effect.numPrograms; }
    VstInt32 getNumParams() const { return record_.effect.numParams; }
    VstInt32 getNumInputs() const { return record_.effect.numInputs; }
    VstInt32 getNumOutputs() const { return record_.effect.numOutputs; }
    // The last rate and block size the host gave (or reported through getSampleRate
    // and getBlockSize), the defaults until then.
    float sampleRate() const { return sampleRate_; }
    VstInt32 blockSize() const { return blockSize_; }

    // Copies at most maxChars characters of text (up to an embedded terminator) and a
    // terminator to destination; a cut never splits a UTF-8 sequence. Null does nothing.
    static void copyText(char* destination, std::string_view text, size_t maxChars);

    // ---- what the record announces ----
    void setUniqueID(VstInt32 id);
    void setVersion(VstInt32 version);
    void setNumInputs(VstInt32 count);
    void setNumOutputs(VstInt32 count);
    void setInitialDelay(VstInt32 samples);
    void canProcessReplacing(bool state = true);  // effFlagsCanReplacing 0x10
    void programsAreChunks(bool state = true);    // effFlagsProgramChunks 0x20
    void isSynth(bool state = true);              // effFlagsIsSynth 0x100
    void hasEditor(bool state = true);            // effFlagsHasEditor 0x1
    void noTail(bool state = true);               // effFlagsNoSoundInStop 0x200

    // ---- host callback helpers; without a host callback each answers as noted ----
    // Any host opcode; 0 without a host.
    VstIntPtr callHost(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr, float opt = 0.0f);
    // audioMasterVersion (1): the host's VST version, e.g. 2400; an answer of 0 and a
    // missing host count as 1.
    VstInt32 getMasterVersion();
    // audioMasterIOChanged (13): the host should re-read channel counts and initial
    // delay. True when the host answered non-zero (it took the change).
    bool ioChanged();
    // audioMasterWantMidi (6, deprecated but still read by hosts): the plug-in wants
    // MIDI events through effProcessEvents; filter 1 means all of them.
    bool wantEvents(VstInt32 filter = 1);
    // audioMasterProcessEvents (8): hands events to the host during processing. Many
    // hosts answer 0 even when they take them; false also for null events.
    bool sendVstEventsToHost(VstEvents* events);
    // audioMasterGetTime (7): the host's time information for the current block, with
    // at least the fields asked for by filter (kVst*Valid flags) valid when the host
    // has them; null when the host has none.
    VstTimeInfo* getTimeInfo(VstInt32 filter);
    // audioMasterGetSampleRate (16) and audioMasterGetBlockSize (17). A host may answer
    // 0 (a plug-in scanner does): then the last known value stays and is returned.
    float getSampleRate();
    VstInt32 getBlockSize();
    // Sets the parameter through setParameter, then tells the host (audioMasterAutomate,
    // 0) so it can record the change. Out-of-range indices are ignored.
    void setParameterAutomated(VstInt32 index, float value);
    // audioMasterBeginEdit/EndEdit (43/44) around a gesture on a parameter.
    bool beginEdit(VstInt32 index);
    bool endEdit(VstInt32 index);
    // audioMasterUpdateDisplay (42): names or texts changed; the host re-reads them.
    bool updateDisplay();
    // audioMasterSizeWindow (15): the editor asks for a new size.
    bool sizeWindow(VstInt32 width, VstInt32 height);
    // audioMasterCanDo (37): 1 the host can, -1 it cannot, 0 unknown (also without a host).
    VstInt32 canHostDo(const char* text);

    // ---- the dispatcher ----
    // Routes one opcode to its hook. Answers 0 for opcodes it does not know. Derived
    // classes may override to see opcodes first and pass the rest on; after passing on
    // effClose the object no longer exists.
    virtual VstIntPtr dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt);

    // ---- processing (audio thread) ----
    // Accumulating process (deprecated): adds to the outputs. The default does nothing.
    virtual void process(float** inputs, float** outputs, VstInt32 sampleFrames);
    // Replacing process: writes the outputs. The default writes silence.
    virtual void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames);
    virtual void setParameter(VstInt32 index, float value);
    virtual float getParameter(VstInt32 index);

    // ---- hooks, one per opcode ----
    virtual void open();   // effOpen: the host has the record and starts using it
    virtual void close();  // effClose: the last call; the object is deleted after it

    // effSetProgram (only for 0 ≤ program < the program count), effGetProgram. The
    // defaults keep and report the number.
    virtual void setProgram(VstInt32 program);
    virtual VstInt32 getProgram();
    // effSetProgramName: the name, cut to kProgramNameChars. Default: ignored.
    virtual void setProgramName(char* name);
    // effGetProgramName: the current program's name. Default: empty.
    virtual void getProgramName(char* name);
    // effGetProgramNameIndexed: the name of any program; true when it exists. Default false.
    virtual bool getProgramNameIndexed(VstInt32 category, VstInt32 index, char* text);

    // effGetParamLabel (unit, "dB"), effGetParamDisplay (value text), effGetParamName.
    virtual void getParameterLabel(VstInt32 index, char* label);
    virtual void getParameterDisplay(VstInt32 index, char* text);
    virtual void getParameterName(VstInt32 index, char* text);
    // effCanBeAutomated: 1 when the parameter may be automated. Default true.
    virtual bool canParameterBeAutomated(VstInt32 index);
    // effString2Parameter: sets the parameter from text; true when taken. A null text
    // asks only whether the parameter takes text at all. Default false.
    virtual bool string2parameter(VstInt32 index, char* text);
    // effGetParameterProperties: fills a zeroed record; true when filled. Default false.
    virtual bool getParameterProperties(VstInt32 index, VstParameterProperties* properties);

    // effSetSampleRate, effSetBlockSize (also effSetBlockSizeAndSampleRate). The value
    // is already stored (when positive) when the hook runs.
    virtual void setSampleRate(float rate);
    virtual void setBlockSize(VstInt32 size);
    // effMainsChanged: value 0 → suspend, otherwise resume (processing starts).
    virtual void suspend();
    virtual void resume();

    // Editor (effEditGetRect/Open/Close/Idle/KeyDown/KeyUp). The defaults describe a
    // plug-in without an editor. editorGetRect sets *rect (null on entry) to the editor's
    // rectangle and answers true; editorOpen gets the host's parent window (an X11
    // window id on Linux) and answers true when the editor opened. Key hooks answer true
    // when they used the key, so the host does not act on it as well.
    virtual bool editorGetRect(ERect** rect);
    virtual bool editorOpen(void* parentWindow);
    virtual void editorClose();
    virtual void editorIdle();
    virtual bool editorKeyDown(VstInt32 character, VstInt32 virtualKey, VstInt32 modifiers);
    virtual bool editorKeyUp(VstInt32 character, VstInt32 virtualKey, VstInt32 modifiers);

    // effGetChunk: isPreset is true for one program, false for the whole bank. Stores a
    // pointer to the state in *data (which stays valid until the next call) and answers
    // its size in bytes; 0 = no chunk. Default 0.
    virtual VstInt32 getChunk(void** data, bool isPreset);
    // effSetChunk: restores state from size bytes at data; answers 1 when taken. Default 0.
    virtual VstInt32 setChunk(void* data, VstInt32 size, bool isPreset);

    // effProcessEvents (audio thread, before the block they belong to): answers 1 when
    // the events were taken. Default 0.
    virtual VstInt32 processEvents(VstEvents* events);

    // effGetInputProperties/effGetOutputProperties: fills a zeroed record for one
    // channel; true when the channel exists. Default false.
    virtual bool getInputProperties(VstInt32 index, VstPinProperties* properties);
    virtual bool getOutputProperties(VstInt32 index, VstPinProperties* properties);
    // effSetSpeakerArrangement: the host proposes channel layouts (either may be null);
    // true when accepted. Default false. effGetSpeakerArrangement: sets both pointers
    // (null on entry) to the current layouts; true when it did. Default false.
    virtual bool setSpeakerArrangement(VstSpeakerArrangement* input, VstSpeakerArrangement* output);
    virtual bool getSpeakerArrangement(VstSpeakerArrangement** input, VstSpeakerArrangement** output);
    // effGetPlugCategory. Default: kPlugCategSynth for a synth, otherwise kPlugCategUnknown.
    virtual VstPlugCategory getPlugCategory();

    // effSetBypass (the host's soft bypass): true when the plug-in takes it. Default false.
    virtual bool setBypass(bool onOff);
    // effGetEffectName, effGetVendorString, effGetProductString: true when given.
    // Defaults false and empty.
    virtual bool getEffectName(char* name);
    virtual bool getVendorString(char* text);
    virtual bool getProductString(char* text);
    // effGetVendorVersion. Default 0.
    virtual VstInt32 getVendorVersion();
    // effVendorSpecific: private host extensions. Default 0.
    virtual VstIntPtr vendorSpecific(VstInt32 index, VstIntPtr value, void* ptr, float opt);
    // effCanDo: 1 yes, -1 no, 0 don't know (the default).
    virtual VstInt32 canDo(const char* text);
    // effGetTailSize: samples of sound after the input stops; 0 = not reported (the
    // host assumes its default), 1 = no tail. Default 0.
    virtual VstInt32 getTailSize();
    // effGetVstVersion: kVstVersion (2400).
    virtual VstInt32 getVstVersion();
    // effStartProcess/effStopProcess: the host starts and stops calling process. Default 0.
    virtual VstInt32 startProcess();
    virtual VstInt32 stopProcess();
    // effSetProcessPrecision: kVstProcessPrecision32/64; true when taken. Default false.
    virtual bool setProcessPrecision(VstInt32 precision);
    // effGetNumMidiInputChannels/OutputChannels: 0 (the default) or 1 … 16.
    virtual VstInt32 getNumMidiInputChannels();
    virtual VstInt32 getNumMidiOutputChannels();

private:
    // The record the host holds, followed by the 56 reserved bytes the ABI gives it and
    // the header leaves out; the host may read the full 192 bytes.
    struct Record {
        AEffect effect;
        char future[56];
    };

    static VstIntPtr dispatchEntry(AEffect* effect, int opcode, int index, VstIntPtr value, void* ptr, float opt);
    static void processEntry(AEffect* effect, float** inputs, float** outputs, int sampleFrames);
    static void processReplacingEntry(AEffect* effect, float** inputs, float** outputs, int sampleFrames);
    static void setParameterEntry(AEffect* effect, int index, float value);
    static float getParameterEntry(AEffect* effect, int index);

    bool isParameterIndex(VstInt32 index) const;
    void setFlag(VstInt32 flag, bool state);
    VstIntPtr closeAndDelete();

    Record record_{};
    audioMasterCallback hostCallback_ = nullptr;
    float sampleRate_ = kDefaultSampleRate;
    VstInt32 blockSize_ = kDefaultBlockSize;
    VstInt32 currentProgram_ = 0;
};

} // namespace halvern
