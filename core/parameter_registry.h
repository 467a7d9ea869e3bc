#pragma once

// The host-visible parameters of a plug-in instance. Each record is backed by a value
// object (or by none, for a panel that only groups parameters). Records are added while
// the plug-in is built and never removed, so an index stays valid for the instance's
// whole life.
//
// Threads: a host may set a parameter from any thread. A change that arrives while the
// audio thread is processing is parked in the record and taken over at the start of the
// next block, where continuous parameters glide to their new value across the block
// (see beginBlock); stepped parameters jump. Changes made on the audio thread (by the
// modulators) are flagged and sent to the host later from another thread.

#include "core/z_value.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace halvern {

enum class ZParameterType : int { Float = 0, Integer = 1, Enumeration = 2, Switch = 3, Panel = 4 };

struct ZParameterInfo {
    std::string id;      // stable identifier (storage name)
    std::string name;    // display name
    std::string units;   // unit label shown beside the value
    ZParameterType type = ZParameterType::Float;
    std::string help;
    bool automatable = true;
    // Written into the plug-in state by storage name; false for values that their owner
    // stores in its own form.
    bool stored = true;
    // Opens a panel: the editor groups the records after it under this one's title. A
    // panel record with a value (a switch) is the panel's own switch.
    bool opensPanel = false;
};

class ZParameterRegistry {
public:
    ZParameterRegistry();
    ~ZParameterRegistry();

    // Adds a record; value may be null for a panel without a value. The value's current
    // normalised position becomes the record's default. Returns the new index.
    int add(ZParameterInfo info, ZValue* value);

    int count() const { return static_cast<int>(records_.size()); }
    bool isValidIndex(int index) const { return index >= 0 && index < count(); }
    const ZParameterInfo& info(int index) const;
    ZValue* value(int index) const;
    double defaultNormalized(int index) const;

    // Normalised value as the host sees it: a parked change counts as already made.
    double normalized(int index) const;
    // Writes a normalised value now. Caller must exclude the audio thread.
    bool setNow(int index, double normalized);
    // Parks a normalised value for the audio thread to take over: gliding there, or at
    // once at the start of the next block when jump is set.
    void park(int index, double normalized, bool jump = false);

    // Writes every parked change now, so that the values hold what the host last set
    // (before the state is stored or replaced). Caller must exclude the audio thread.
    void takeParked();

    // Audio thread, at the start of a block of n samples: takes over parked changes.
    // Stepped parameters (and every parameter when gliding is off) are written at once;
    // continuous ones glide. Returns true when a glide is running in this block.
    bool beginBlock(int n, bool glide);
    // Audio thread: moves the running glides on by `samples` of the block.
    void advanceGlides(int samples);
    // Audio thread: writes every glide's final value and ends the glides.
    void finishGlides();

    // Audio thread: a change that the host has to be told about (modulators, slots).
    void markForHost(int index);
    // Whether a flagged change waits to be sent.
    bool hasMarked() const { return anyMarked_.load(std::memory_order_acquire); }
    // Any thread but the audio thread: hands each flagged parameter to send(index, value).
    void sendMarked(const std::function<void(int, double)>& send);

private:
    struct Record;
    bool write(Record& record, double normalized);

    std::vector<std::unique_ptr<Record>> records_;
    std::vector<Record*> gliding_;   // sized at add(), so beginBlock never allocates
    std::atomic<bool> anyParked_{false};
    std::atomic<bool> anyMarked_{false};
    int blockLength_ = 0;
    int blockDone_ = 0;
};

} // namespace halvern
