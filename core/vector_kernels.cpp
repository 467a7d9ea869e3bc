#include "core/vector_kernels.h"

#include <cmath>
#include <cstring>

namespace halvern::kernels {

int AddConstant(float* buffer, float constant, int count)
{
    if (buffer == nullptr)
        return kStatusNullPointer;
    for (int i = 0; i < count; ++i)
        buffer[i] += constant;
    return kStatusOk;
}

int Copy(const float* source, float* destination, int count)
{
    if (source == nullptr || destination == nullptr)
        return kStatusNullPointer;
    if (count > 0 && source != destination)
        std::memmove(destination, source, sizeof(float) * static_cast<size_t>(count));
    return kStatusOk;
}

int Add(const float* source, float* destination, int count)
{
    if (source == nullptr || destination == nullptr)
        return kStatusNullPointer;
    for (int i = 0; i < count; ++i)
        destination[i] += source[i];
    return kStatusOk;
}

int Zero(float* buffer, int count)
{
    if (buffer == nullptr)
        return kStatusNullPointer;
    if (count > 0)
        std::memset(buffer, 0, sizeof(float) * static_cast<size_t>(count));
    return kStatusOk;
}

int Multiply(float* buffer, float factor, int count)
{
    if (buffer == nullptr)
        return kStatusNullPointer;
    for (int i = 0; i < count; ++i)
        buffer[i] *= factor;
    return kStatusOk;
}

int Peak(const float* buffer, int count, float& peak)
{
    peak = 0.0f;
    if (buffer == nullptr)
        return kStatusNullPointer;
    for (int i = 0; i < count; ++i)
        peak = std::fmax(peak, std::fabs(buffer[i]));
    return kStatusOk;
}

} // namespace halvern::kernels
