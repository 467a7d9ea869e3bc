#pragma once

// Block routines used by the audio code. Each returns kStatusOk, or kStatusNullPointer
// when a buffer pointer is null; a count of 0 or less does nothing. Written as plain
// loops that the compiler vectorises for the target.

namespace halvern::kernels {

constexpr int kStatusOk = 0;
constexpr int kStatusNullPointer = -8;

int AddConstant(float* buffer, float constant, int count);
int Copy(const float* source, float* destination, int count);
int Add(const float* source, float* destination, int count);
int Zero(float* buffer, int count);
int Multiply(float* buffer, float factor, int count);
// Largest absolute sample value (0 for an empty block).
int Peak(const float* buffer, int count, float& peak);

} // namespace halvern::kernels
