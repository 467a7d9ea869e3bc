#include "ui/controls/gesture.h"

#include <algorithm>
#include <cmath>

namespace halvern {

void ZGesture::Begin()
{
    if (open_)
        return;
    open_ = true;
    binding_.BeginEdit();
}

void ZGesture::Set(double normalized)
{
    Begin();
    binding_.SetValue(Quantize(normalized, binding_.StepCount()));
}

void ZGesture::End()
{
    if (!open_)
        return;
    open_ = false;
    binding_.EndEdit();
}

void ZGesture::SetOnce(ZParameterBinding& binding, double normalized)
{
    ZGesture gesture(binding);
    gesture.Set(normalized);
}

double ZGesture::Quantize(double normalized, int stepCount)
{
    const double clamped = std::clamp(normalized, 0.0, 1.0);
    return stepCount > 0 ? std::round(clamped * stepCount) / stepCount : clamped;
}

} // namespace halvern
