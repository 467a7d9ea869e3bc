#pragma once

// ZGesture: one edit gesture on a binding, kept balanced. Begin and End may be called
// any number of times; the binding sees exactly one BeginEdit and one EndEdit per
// gesture, and a gesture still open when this object dies is ended then. Every value
// set is kept inside 0..1 and snapped to the binding's steps.

#include "ui/parameter_binding.h"

namespace halvern {

class ZGesture {
public:
    explicit ZGesture(ZParameterBinding& binding) : binding_(binding) {}
    ~ZGesture() { End(); }
    ZGesture(const ZGesture&) = delete;
    ZGesture& operator=(const ZGesture&) = delete;

    void Begin();
    // Sets a value, beginning the gesture first when none is open.
    void Set(double normalized);
    void End();
    bool open() const { return open_; }

    // Sets a value as one whole gesture.
    static void SetOnce(ZParameterBinding& binding, double normalized);
    // A normalised value inside 0..1 and on the nearest of stepCount steps (0: continuous).
    static double Quantize(double normalized, int stepCount);

private:
    ZParameterBinding& binding_;
    bool open_ = false;
};

} // namespace halvern
