#include "core/vector_kernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

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
    // Four samples at a time; maxps gives its second operand when the first is NaN, so
    // NaN samples are passed over, as fmax passes them over.
    int i = 0;
    float highest = 0.0f;
#ifdef __SSE2__
    const __m128 magnitude = _mm_castsi128_ps(_mm_set1_epi32(0x7FFFFFFF));
    __m128 lanes = _mm_setzero_ps();
    for (; i + 4 <= count; i += 4)
        lanes = _mm_max_ps(_mm_and_ps(_mm_loadu_ps(buffer + i), magnitude), lanes);
    alignas(16) float four[4];
    _mm_store_ps(four, lanes);
    highest = std::max(std::max(four[0], four[1]), std::max(four[2], four[3]));
#endif
    for (; i < count; ++i)
        highest = std::max(highest, std::fabs(buffer[i]));
    peak = highest;
    return kStatusOk;
}

} // namespace halvern::kernels
