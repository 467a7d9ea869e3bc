#pragma once

// The VST 2.4 binary interface as the plug-in sees it. This is the only file that
// includes the clean-room ABI header of the fst-dev package; everything else includes
// this one.
//
// That header needs three corrections, all made here and nowhere else:
//  - Under GCC and clang it prints #warning notes (which GCC cannot silence by pragma)
//    and marks its guessed names deprecated. Both hang on __GNUC__/__clang__, so those
//    two macros are hidden for the length of the include.
//  - Several opcodes and constants carry placeholders (100000 + a source line, or 0),
//    a few length constants differ from the ABI, and some names are missing. Each
//    placeholder name is renamed out of the way while the header is read and defined
//    again below, once, with its value in the VST 2.4 ABI; the missing names are
//    defined beside them. The values the header has right are checked at compile time.
//  - Its MIDI event record has the wrong field sizes after the first four words; the
//    record is defined below with the ABI's layout, and VstParameterProperties, which
//    the header lacks, with it.
//
// Still placeholders, and not to be used: the single speaker positions (kSpeakerC and
// the others beyond kSpeakerM/L/R), the SMPTE frame rates (kVstSmpte*) and
// kVstLangEnglish. The time-information record's fields after timeSigDenominator are
// named differently from the ABI (smpteOffset/smpteFrameRate sit where the header says
// currentBar/magic); samplesToNextClock and flags stand at their ABI offsets.

#include <cstddef>

// ---- placeholder names moved aside while the header is read ----
// effect opcodes
#define effEditDraw fstPlaceholder_effEditDraw
#define effEditMouse fstPlaceholder_effEditMouse
#define effEditTop fstPlaceholder_effEditTop
#define effEditSleep fstPlaceholder_effEditSleep
#define effConnectInput fstPlaceholder_effConnectInput
#define effConnectOutput fstPlaceholder_effConnectOutput
#define effSetBypass fstPlaceholder_effSetBypass
#define effGetTailSize fstPlaceholder_effGetTailSize
#define effIdle fstPlaceholder_effIdle
#define effKeysRequired fstPlaceholder_effKeysRequired
#define effBeginSetProgram fstPlaceholder_effBeginSetProgram
#define effEndSetProgram fstPlaceholder_effEndSetProgram
#define effGetNumMidiInputChannels fstPlaceholder_effGetNumMidiInputChannels
#define effGetNumMidiOutputChannels fstPlaceholder_effGetNumMidiOutputChannels
// host opcodes
#define audioMasterIdle fstPlaceholder_audioMasterIdle
#define audioMasterPinConnected fstPlaceholder_audioMasterPinConnected
#define audioMasterSetTime fstPlaceholder_audioMasterSetTime
#define audioMasterGetNumAutomatableParameters fstPlaceholder_audioMasterGetNumAutomatableParameters
#define audioMasterGetParameterQuantization fstPlaceholder_audioMasterGetParameterQuantization
#define audioMasterIOChanged fstPlaceholder_audioMasterIOChanged
#define audioMasterNeedIdle fstPlaceholder_audioMasterNeedIdle
#define audioMasterGetInputLatency fstPlaceholder_audioMasterGetInputLatency
#define audioMasterGetOutputLatency fstPlaceholder_audioMasterGetOutputLatency
#define audioMasterGetPreviousPlug fstPlaceholder_audioMasterGetPreviousPlug
#define audioMasterGetNextPlug fstPlaceholder_audioMasterGetNextPlug
#define audioMasterWillReplaceOrAccumulate fstPlaceholder_audioMasterWillReplaceOrAccumulate
#define audioMasterGetAutomationState fstPlaceholder_audioMasterGetAutomationState
#define audioMasterOfflineStart fstPlaceholder_audioMasterOfflineStart
#define audioMasterOfflineRead fstPlaceholder_audioMasterOfflineRead
#define audioMasterOfflineWrite fstPlaceholder_audioMasterOfflineWrite
#define audioMasterOfflineGetCurrentPass fstPlaceholder_audioMasterOfflineGetCurrentPass
#define audioMasterOfflineGetCurrentMetaPass fstPlaceholder_audioMasterOfflineGetCurrentMetaPass
#define audioMasterSetOutputSampleRate fstPlaceholder_audioMasterSetOutputSampleRate
#define audioMasterGetOutputSpeakerArrangement fstPlaceholder_audioMasterGetOutputSpeakerArrangement
#define audioMasterVendorSpecific fstPlaceholder_audioMasterVendorSpecific
#define audioMasterSetIcon fstPlaceholder_audioMasterSetIcon
#define audioMasterGetLanguage fstPlaceholder_audioMasterGetLanguage
#define audioMasterOpenWindow fstPlaceholder_audioMasterOpenWindow
#define audioMasterCloseWindow fstPlaceholder_audioMasterCloseWindow
#define audioMasterGetDirectory fstPlaceholder_audioMasterGetDirectory
#define audioMasterUpdateDisplay fstPlaceholder_audioMasterUpdateDisplay
#define audioMasterOpenFileSelector fstPlaceholder_audioMasterOpenFileSelector
#define audioMasterCloseFileSelector fstPlaceholder_audioMasterCloseFileSelector
#define audioMasterEditFile fstPlaceholder_audioMasterEditFile
#define audioMasterGetChunkFile fstPlaceholder_audioMasterGetChunkFile
#define audioMasterGetInputSpeakerArrangement fstPlaceholder_audioMasterGetInputSpeakerArrangement
// constants and flags
#define kVstMaxProgNameLen fstPlaceholder_kVstMaxProgNameLen
#define kVstMaxVendorStrLen fstPlaceholder_kVstMaxVendorStrLen
#define kVstMaxProductStrLen fstPlaceholder_kVstMaxProductStrLen
#define kVstPinIsActive fstPlaceholder_kVstPinIsActive
#define kVstPinUseSpeaker fstPlaceholder_kVstPinUseSpeaker
#define kVstPinIsStereo fstPlaceholder_kVstPinIsStereo
#define kVstAutomationReading fstPlaceholder_kVstAutomationReading
#define kVstAutomationWriting fstPlaceholder_kVstAutomationWriting
#define kVstProcessLevelUser fstPlaceholder_kVstProcessLevelUser
// speaker arrangement types
#define kSpeakerArrStereoSurround fstPlaceholder_kSpeakerArrStereoSurround
#define kSpeakerArrStereoCenter fstPlaceholder_kSpeakerArrStereoCenter
#define kSpeakerArrStereoSide fstPlaceholder_kSpeakerArrStereoSide
#define kSpeakerArrStereoCLfe fstPlaceholder_kSpeakerArrStereoCLfe
#define kSpeakerArr30Cine fstPlaceholder_kSpeakerArr30Cine
#define kSpeakerArr30Music fstPlaceholder_kSpeakerArr30Music
#define kSpeakerArr31Cine fstPlaceholder_kSpeakerArr31Cine
#define kSpeakerArr31Music fstPlaceholder_kSpeakerArr31Music
#define kSpeakerArr40Cine fstPlaceholder_kSpeakerArr40Cine
#define kSpeakerArr40Music fstPlaceholder_kSpeakerArr40Music
#define kSpeakerArr41Cine fstPlaceholder_kSpeakerArr41Cine
#define kSpeakerArr41Music fstPlaceholder_kSpeakerArr41Music
#define kSpeakerArr50 fstPlaceholder_kSpeakerArr50
#define kSpeakerArr51 fstPlaceholder_kSpeakerArr51
#define kSpeakerArr60Cine fstPlaceholder_kSpeakerArr60Cine
#define kSpeakerArr60Music fstPlaceholder_kSpeakerArr60Music
#define kSpeakerArr61Cine fstPlaceholder_kSpeakerArr61Cine
#define kSpeakerArr61Music fstPlaceholder_kSpeakerArr61Music
#define kSpeakerArr70Cine fstPlaceholder_kSpeakerArr70Cine
#define kSpeakerArr70Music fstPlaceholder_kSpeakerArr70Music
#define kSpeakerArr71Cine fstPlaceholder_kSpeakerArr71Cine
#define kSpeakerArr71Music fstPlaceholder_kSpeakerArr71Music
#define kSpeakerArr80Cine fstPlaceholder_kSpeakerArr80Cine
#define kSpeakerArr80Music fstPlaceholder_kSpeakerArr80Music
#define kSpeakerArr81Cine fstPlaceholder_kSpeakerArr81Cine
#define kSpeakerArr81Music fstPlaceholder_kSpeakerArr81Music
// records
#define VstMidiEvent fstPlaceholder_VstMidiEvent

// FST2VST names the effect record "struct AEffect", so that it can be declared ahead.
#ifndef FST2VST
#define FST2VST 1
#endif
#pragma push_macro("__GNUC__")
#pragma push_macro("__clang__")
#undef __GNUC__
#undef __clang__
#include <pluginterfaces/fst/fst.h>
#pragma pop_macro("__clang__")
#pragma pop_macro("__GNUC__")

#undef effEditDraw
#undef effEditMouse
#undef effEditTop
#undef effEditSleep
#undef effConnectInput
#undef effConnectOutput
#undef effSetBypass
#undef effGetTailSize
#undef effIdle
#undef effKeysRequired
#undef effBeginSetProgram
#undef effEndSetProgram
#undef effGetNumMidiInputChannels
#undef effGetNumMidiOutputChannels
#undef audioMasterIdle
#undef audioMasterPinConnected
#undef audioMasterSetTime
#undef audioMasterGetNumAutomatableParameters
#undef audioMasterGetParameterQuantization
#undef audioMasterIOChanged
#undef audioMasterNeedIdle
#undef audioMasterGetInputLatency
#undef audioMasterGetOutputLatency
#undef audioMasterGetPreviousPlug
#undef audioMasterGetNextPlug
#undef audioMasterWillReplaceOrAccumulate
#undef audioMasterGetAutomationState
#undef audioMasterOfflineStart
#undef audioMasterOfflineRead
#undef audioMasterOfflineWrite
#undef audioMasterOfflineGetCurrentPass
#undef audioMasterOfflineGetCurrentMetaPass
#undef audioMasterSetOutputSampleRate
#undef audioMasterGetOutputSpeakerArrangement
#undef audioMasterVendorSpecific
#undef audioMasterSetIcon
#undef audioMasterGetLanguage
#undef audioMasterOpenWindow
#undef audioMasterCloseWindow
#undef audioMasterGetDirectory
#undef audioMasterUpdateDisplay
#undef audioMasterOpenFileSelector
#undef audioMasterCloseFileSelector
#undef audioMasterEditFile
#undef audioMasterGetChunkFile
#undef audioMasterGetInputSpeakerArrangement
#undef kVstMaxProgNameLen
#undef kVstMaxVendorStrLen
#undef kVstMaxProductStrLen
#undef kVstPinIsActive
#undef kVstPinUseSpeaker
#undef kVstPinIsStereo
#undef kVstAutomationReading
#undef kVstAutomationWriting
#undef kVstProcessLevelUser
#undef kSpeakerArrStereoSurround
#undef kSpeakerArrStereoCenter
#undef kSpeakerArrStereoSide
#undef kSpeakerArrStereoCLfe
#undef kSpeakerArr30Cine
#undef kSpeakerArr30Music
#undef kSpeakerArr31Cine
#undef kSpeakerArr31Music
#undef kSpeakerArr40Cine
#undef kSpeakerArr40Music
#undef kSpeakerArr41Cine
#undef kSpeakerArr41Music
#undef kSpeakerArr50
#undef kSpeakerArr51
#undef kSpeakerArr60Cine
#undef kSpeakerArr60Music
#undef kSpeakerArr61Cine
#undef kSpeakerArr61Music
#undef kSpeakerArr70Cine
#undef kSpeakerArr70Music
#undef kSpeakerArr71Cine
#undef kSpeakerArr71Music
#undef kSpeakerArr80Cine
#undef kSpeakerArr80Music
#undef kSpeakerArr81Cine
#undef kSpeakerArr81Music
#undef VstMidiEvent

// ---- effect opcodes (host → plug-in dispatcher) the header lacks or has as placeholders ----
inline constexpr VstInt32 effGetVu = 9;                       // deprecated
inline constexpr VstInt32 effEditDraw = 16;                   // deprecated
inline constexpr VstInt32 effEditMouse = 17;                  // deprecated
inline constexpr VstInt32 effEditKey = 18;                    // deprecated
inline constexpr VstInt32 effEditTop = 20;                    // deprecated
inline constexpr VstInt32 effEditSleep = 21;                  // deprecated
inline constexpr VstInt32 effGetNumProgramCategories = 28;
inline constexpr VstInt32 effCopyProgram = 30;
inline constexpr VstInt32 effConnectInput = 31;               // deprecated
inline constexpr VstInt32 effConnectOutput = 32;              // deprecated
inline constexpr VstInt32 effGetCurrentPosition = 36;         // deprecated
inline constexpr VstInt32 effGetDestinationBuffer = 37;       // deprecated
inline constexpr VstInt32 effOfflineNotify = 38;
inline constexpr VstInt32 effOfflinePrepare = 39;
inline constexpr VstInt32 effOfflineRun = 40;
inline constexpr VstInt32 effProcessVarIo = 41;
inline constexpr VstInt32 effSetBlockSizeAndSampleRate = 43;  // deprecated
inline constexpr VstInt32 effSetBypass = 44;
inline constexpr VstInt32 effGetErrorText = 46;               // deprecated
inline constexpr VstInt32 effGetTailSize = 52;
inline constexpr VstInt32 effIdle = 53;                       // deprecated
inline constexpr VstInt32 effGetIcon = 54;                    // deprecated
inline constexpr VstInt32 effSetViewPosition = 55;            // deprecated
inline constexpr VstInt32 effGetParameterProperties = 56;
inline constexpr VstInt32 effKeysRequired = 57;               // deprecated
inline constexpr VstInt32 effEditKeyDown = 59;
inline constexpr VstInt32 effEditKeyUp = 60;
inline constexpr VstInt32 effSetEditKnobMode = 61;
inline constexpr VstInt32 effGetMidiProgramName = 62;
inline constexpr VstInt32 effGetMidiProgramCategory = 64;
inline constexpr VstInt32 effHasMidiProgramsChanged = 65;
inline constexpr VstInt32 effGetMidiKeyName = 66;
inline constexpr VstInt32 effBeginSetProgram = 67;
inline constexpr VstInt32 effEndSetProgram = 68;
inline constexpr VstInt32 effSetPanLaw = 74;
inline constexpr VstInt32 effBeginLoadBank = 75;
inline constexpr VstInt32 effBeginLoadProgram = 76;
inline constexpr VstInt32 effGetNumMidiInputChannels = 78;
inline constexpr VstInt32 effGetNumMidiOutputChannels = 79;

// ---- host opcodes (plug-in → host callback) the header has as placeholders ----
inline constexpr VstInt32 audioMasterIdle = 3;
inline constexpr VstInt32 audioMasterPinConnected = 4;                  // deprecated
inline constexpr VstInt32 audioMasterSetTime = 9;                       // deprecated
inline constexpr VstInt32 audioMasterGetNumAutomatableParameters = 11;  // deprecated
inline constexpr VstInt32 audioMasterGetParameterQuantization = 12;     // deprecated
inline constexpr VstInt32 audioMasterIOChanged = 13;
inline constexpr VstInt32 audioMasterNeedIdle = 14;                     // deprecated
inline constexpr VstInt32 audioMasterGetInputLatency = 18;
inline constexpr VstInt32 audioMasterGetOutputLatency = 19;
inline constexpr VstInt32 audioMasterGetPreviousPlug = 20;              // deprecated
inline constexpr VstInt32 audioMasterGetNextPlug = 21;                  // deprecated
inline constexpr VstInt32 audioMasterWillReplaceOrAccumulate = 22;      // deprecated
inline constexpr VstInt32 audioMasterGetAutomationState = 24;
inline constexpr VstInt32 audioMasterOfflineStart = 25;
inline constexpr VstInt32 audioMasterOfflineRead = 26;
inline constexpr VstInt32 audioMasterOfflineWrite = 27;
inline constexpr VstInt32 audioMasterOfflineGetCurrentPass = 28;
inline constexpr VstInt32 audioMasterOfflineGetCurrentMetaPass = 29;
inline constexpr VstInt32 audioMasterSetOutputSampleRate = 30;          // deprecated
inline constexpr VstInt32 audioMasterGetOutputSpeakerArrangement = 31;  // deprecated
inline constexpr VstInt32 audioMasterVendorSpecific = 35;
inline constexpr VstInt32 audioMasterSetIcon = 36;                      // deprecated
inline constexpr VstInt32 audioMasterGetLanguage = 38;
inline constexpr VstInt32 audioMasterOpenWindow = 39;                   // deprecated
inline constexpr VstInt32 audioMasterCloseWindow = 40;                  // deprecated
inline constexpr VstInt32 audioMasterGetDirectory = 41;
inline constexpr VstInt32 audioMasterUpdateDisplay = 42;
inline constexpr VstInt32 audioMasterOpenFileSelector = 45;
inline constexpr VstInt32 audioMasterCloseFileSelector = 46;
inline constexpr VstInt32 audioMasterEditFile = 47;                     // deprecated
inline constexpr VstInt32 audioMasterGetChunkFile = 48;                 // deprecated
inline constexpr VstInt32 audioMasterGetInputSpeakerArrangement = 49;   // deprecated

// ---- text lengths (characters; the terminator comes on top) ----
inline constexpr VstInt32 kVstMaxProgNameLen = 24;
inline constexpr VstInt32 kVstMaxEffectNameLen = 32;
inline constexpr VstInt32 kVstMaxVendorStrLen = 64;
inline constexpr VstInt32 kVstMaxProductStrLen = 64;
inline constexpr VstInt32 kVstMaxNameLen = 64;
inline constexpr VstInt32 kVstMaxCategLabelLen = 24;
inline constexpr VstInt32 kVstExtMaxParamStrLen = 32;

// ---- flags and levels ----
// VstPinProperties::flags
inline constexpr VstInt32 kVstPinIsActive = 1 << 0;
inline constexpr VstInt32 kVstPinIsStereo = 1 << 1;
inline constexpr VstInt32 kVstPinUseSpeaker = 1 << 2;
// VstTimeInfo::flags
inline constexpr VstInt32 kVstAutomationWriting = 1 << 6;
inline constexpr VstInt32 kVstAutomationReading = 1 << 7;
// VstMidiEvent::flags
inline constexpr VstInt32 kVstMidiEventIsRealtime = 1 << 0;
// answers to audioMasterGetCurrentProcessLevel
inline constexpr VstInt32 kVstProcessLevelUser = 1;
inline constexpr VstInt32 kVstProcessLevelPrefetch = 3;
// VstParameterProperties::flags
inline constexpr VstInt32 kVstParameterIsSwitch = 1 << 0;
inline constexpr VstInt32 kVstParameterUsesIntegerMinMax = 1 << 1;
inline constexpr VstInt32 kVstParameterUsesFloatStep = 1 << 2;
inline constexpr VstInt32 kVstParameterUsesIntStep = 1 << 3;
inline constexpr VstInt32 kVstParameterSupportsDisplayIndex = 1 << 4;
inline constexpr VstInt32 kVstParameterSupportsDisplayCategory = 1 << 5;
inline constexpr VstInt32 kVstParameterCanRamp = 1 << 6;

// ---- speaker arrangement types (VstSpeakerArrangement::type, VstPinProperties::arrangementType) ----
inline constexpr VstInt32 kSpeakerArrStereoSurround = 2;
inline constexpr VstInt32 kSpeakerArrStereoCenter = 3;
inline constexpr VstInt32 kSpeakerArrStereoSide = 4;
inline constexpr VstInt32 kSpeakerArrStereoCLfe = 5;
inline constexpr VstInt32 kSpeakerArr30Cine = 6;
inline constexpr VstInt32 kSpeakerArr30Music = 7;
inline constexpr VstInt32 kSpeakerArr31Cine = 8;
inline constexpr VstInt32 kSpeakerArr31Music = 9;
inline constexpr VstInt32 kSpeakerArr40Cine = 10;
inline constexpr VstInt32 kSpeakerArr40Music = 11;
inline constexpr VstInt32 kSpeakerArr41Cine = 12;
inline constexpr VstInt32 kSpeakerArr41Music = 13;
inline constexpr VstInt32 kSpeakerArr50 = 14;
inline constexpr VstInt32 kSpeakerArr51 = 15;
inline constexpr VstInt32 kSpeakerArr60Cine = 16;
inline constexpr VstInt32 kSpeakerArr60Music = 17;
inline constexpr VstInt32 kSpeakerArr61Cine = 18;
inline constexpr VstInt32 kSpeakerArr61Music = 19;
inline constexpr VstInt32 kSpeakerArr70Cine = 20;
inline constexpr VstInt32 kSpeakerArr70Music = 21;
inline constexpr VstInt32 kSpeakerArr71Cine = 22;
inline constexpr VstInt32 kSpeakerArr71Music = 23;
inline constexpr VstInt32 kSpeakerArr80Cine = 24;
inline constexpr VstInt32 kSpeakerArr80Music = 25;
inline constexpr VstInt32 kSpeakerArr81Cine = 26;
inline constexpr VstInt32 kSpeakerArr81Music = 27;

// ---- records ----

// One MIDI event: 32 bytes, the first four words shared with every VstEvent.
struct VstMidiEvent {
    VstInt32 type;          // kVstMidiType
    VstInt32 byteSize;      // sizeof(VstMidiEvent)
    VstInt32 deltaFrames;   // sample offset in the current block
    VstInt32 flags;         // kVstMidiEventIsRealtime
    VstInt32 noteLength;    // in samples, 0 when unknown
    VstInt32 noteOffset;    // in samples into the note, 0 when unknown
    char midiData[4];       // status and up to two data bytes, the fourth is 0
    char detune;            // -64 … +63 cents
    char noteOffVelocity;
    char reserved1;
    char reserved2;
};

// What the host may ask about one parameter (effGetParameterProperties).
struct VstParameterProperties {
    float stepFloat;
    float smallStepFloat;
    float largeStepFloat;
    char label[kVstMaxLabelLen];
    VstInt32 flags;  // kVstParameter*
    VstInt32 minInteger;
    VstInt32 maxInteger;
    VstInt32 stepInteger;
    VstInt32 largeStepInteger;
    char shortLabel[kVstMaxShortLabelLen];
    short displayIndex;
    short category;  // 1-based, 0 = none
    short numParametersInCategory;
    short reserved;
    char categoryLabel[kVstMaxCategLabelLen];
    char future[16];
};

// ---- the values the plug-in relies on that the header supplies ----
static_assert(kEffectMagic == 0x56737450, "'VstP'");
static_assert(kVstVersion == 2400);
static_assert(effOpen == 0 && effClose == 1 && effSetProgram == 2 && effGetProgram == 3);
static_assert(effSetProgramName == 4 && effGetProgramName == 5);
static_assert(effGetParamLabel == 6 && effGetParamDisplay == 7 && effGetParamName == 8);
static_assert(effSetSampleRate == 10 && effSetBlockSize == 11 && effMainsChanged == 12);
static_assert(effEditGetRect == 13 && effEditOpen == 14 && effEditClose == 15 && effEditIdle == 19);
static_assert(effIdentify == 22 && effGetChunk == 23 && effSetChunk == 24 && effProcessEvents == 25);
static_assert(effCanBeAutomated == 26 && effString2Parameter == 27 && effGetProgramNameIndexed == 29);
static_assert(effGetInputProperties == 33 && effGetOutputProperties == 34 && effGetPlugCategory == 35);
static_assert(effSetSpeakerArrangement == 42 && effGetEffectName == 45);
static_assert(effGetVendorString == 47 && effGetProductString == 48 && effGetVendorVersion == 49);
static_assert(effVendorSpecific == 50 && effCanDo == 51 && effGetVstVersion == 58);
static_assert(effGetCurrentMidiProgram == 63 && effGetSpeakerArrangement == 69 && effShellGetNextPlugin == 70);
static_assert(effStartProcess == 71 && effStopProcess == 72 && effSetTotalSampleToProcess == 73);
static_assert(effSetProcessPrecision == 77);
static_assert(audioMasterAutomate == 0 && audioMasterVersion == 1 && audioMasterCurrentId == 2);
static_assert(audioMasterWantMidi == 6 && audioMasterGetTime == 7 && audioMasterProcessEvents == 8);
static_assert(audioMasterTempoAt == 10 && audioMasterSizeWindow == 15);
static_assert(audioMasterGetSampleRate == 16 && audioMasterGetBlockSize == 17);
static_assert(audioMasterGetCurrentProcessLevel == 23);
static_assert(audioMasterGetVendorString == 32 && audioMasterGetProductString == 33);
static_assert(audioMasterGetVendorVersion == 34 && audioMasterCanDo == 37);
static_assert(audioMasterBeginEdit == 43 && audioMasterEndEdit == 44);
static_assert(effFlagsHasEditor == 0x1 && effFlagsCanReplacing == 0x10 && effFlagsProgramChunks == 0x20);
static_assert(effFlagsIsSynth == 0x100 && effFlagsNoSoundInStop == 0x200 && effFlagsCanDoubleReplacing == 0x1000);
static_assert(kVstMaxParamStrLen == 8 && kVstMaxLabelLen == 64 && kVstMaxShortLabelLen == 8);
static_assert(kPlugCategUnknown == 0 && kPlugCategEffect == 1 && kPlugCategSynth == 2 && kPlugCategRoomFx == 6);
static_assert(kSpeakerArrUserDefined == -2 && kSpeakerArrEmpty == -1);
static_assert(kSpeakerArrMono == 0 && kSpeakerArrStereo == 1 && kSpeakerArr102 == 28);
static_assert(kVstProcessPrecision32 == 0 && kVstProcessPrecision64 == 1);
static_assert(kVstMidiType == 1 && kVstSysExType == 6);
static_assert(kVstProcessLevelUnknown == 0 && kVstProcessLevelRealtime == 2 && kVstProcessLevelOffline == 4);

// Record layouts of the 64-bit Linux ABI.
#if defined(__LP64__)
// The effect record: 192 bytes in the ABI; the header stops before the final 56
// reserved bytes, which the plug-in supplies (see ZVST2AudioEffect). flags is a 32-bit
// word followed by 4 bytes of padding; the header declares the two together as one
// pointer-sized word.
static_assert(offsetof(AEffect, magic) == 0);
static_assert(offsetof(AEffect, dispatcher) == 8);
static_assert(offsetof(AEffect, process) == 16);
static_assert(offsetof(AEffect, setParameter) == 24);
static_assert(offsetof(AEffect, getParameter) == 32);
static_assert(offsetof(AEffect, numPrograms) == 40);
static_assert(offsetof(AEffect, numParams) == 44);
static_assert(offsetof(AEffect, numInputs) == 48);
static_assert(offsetof(AEffect, numOutputs) == 52);
static_assert(offsetof(AEffect, flags) == 56 && sizeof(AEffect::flags) == 8);
static_assert(offsetof(AEffect, initialDelay) == 80);
static_assert(offsetof(AEffect, float1) == 92);  // ioRatio
static_assert(offsetof(AEffect, object) == 96);
static_assert(offsetof(AEffect, user) == 104);
static_assert(offsetof(AEffect, uniqueID) == 112);
static_assert(offsetof(AEffect, version) == 116);
static_assert(offsetof(AEffect, processReplacing) == 120);
static_assert(offsetof(AEffect, processDoubleReplacing) == 128);
static_assert(sizeof(AEffect) == 136);

static_assert(offsetof(VstEvents, numEvents) == 0 && offsetof(VstEvents, events) == 16);
static_assert(sizeof(VstMidiEvent) == 32 && offsetof(VstMidiEvent, midiData) == 24);
static_assert(offsetof(VstMidiEvent, deltaFrames) == offsetof(VstEvent, deltaFrames));
static_assert(offsetof(VstMidiEvent, midiData) == offsetof(t_fstMidiEvent, midiData));
static_assert(offsetof(VstTimeInfo, ppqPos) == 24 && offsetof(VstTimeInfo, tempo) == 32);
static_assert(offsetof(VstTimeInfo, barStartPos) == 40 && offsetof(VstTimeInfo, timeSigNumerator) == 64);
static_assert(offsetof(VstTimeInfo, timeSigDenominator) == 68 && offsetof(VstTimeInfo, flags) == 84);
static_assert(offsetof(VstPinProperties, flags) == 64 && offsetof(VstPinProperties, arrangementType) == 68);
static_assert(offsetof(VstPinProperties, shortLabel) == 72);
static_assert(sizeof(VstSpeakerProperties) == 112 && offsetof(VstSpeakerArrangement, speakers) == 8);
static_assert(sizeof(VstParameterProperties) == 152 && offsetof(VstParameterProperties, categoryLabel) == 112);
static_assert(sizeof(ERect) == 8);
#endif
