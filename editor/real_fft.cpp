#include "editor/real_fft.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace halvern {

ZRealFFT::ZRealFFT(size_t size) : size_(size), work_(size / 2), twiddles_(size / 2), reversed_(size / 2)
{
    for (size_t k = 0; k < twiddles_.size(); ++k)
        twiddles_[k] = std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(size));
    const size_t half = size / 2;
    int bits = 0;
    while ((size_t{1} << bits) < half)
        ++bits;
    for (size_t i = 0; i < half; ++i) {
        size_t r = 0;
        for (int b = 0; b < bits; ++b)
            r |= ((i >> b) & 1u) << (bits - 1 - b);
        reversed_[i] = r;
    }
}

// Butterflies over the packed half-length signal, in place after the bit-reversed order.
// A span of length L uses every (size / L)-th full-length twiddle.
void ZRealFFT::transformHalf()
{
    const size_t half = work_.size();
    for (size_t i = 0; i < half; ++i)
        if (i < reversed_[i])
            std::swap(work_[i], work_[reversed_[i]]);
    for (size_t span = 2; span <= half; span *= 2) {
        const size_t stride = size_ / span;
        for (size_t start = 0; start < half; start += span)
            for (size_t k = 0; k < span / 2; ++k) {
                const std::complex<double> odd = twiddles_[k * stride] * work_[start + k + span / 2];
                const std::complex<double> even = work_[start + k];
                work_[start + k] = even + odd;
                work_[start + k + span / 2] = even - odd;
            }
    }
}

void ZRealFFT::forward(const double* input, std::vector<std::complex<double>>& bins)
{
    const size_t half = work_.size();
    for (size_t i = 0; i < half; ++i)
        work_[i] = {input[2 * i], input[2 * i + 1]};
    transformHalf();
    // Z = E + iO, with E and O the transforms of the even and odd samples:
    // E[k] = (Z[k] + conj Z[half-k]) / 2, O[k] = (Z[k] - conj Z[half-k]) / 2i,
    // and X[k] = E[k] + W^k O[k].
    bins.resize(half + 1);
    const std::complex<double> minusHalfI{0.0, -0.5};
    for (size_t k = 0; k <= half; ++k) {
        const std::complex<double> z = work_[k % half];
        const std::complex<double> mirror = std::conj(work_[(half - k) % half]);
        const std::complex<double> even = 0.5 * (z + mirror);
        const std::complex<double> odd = minusHalfI * (z - mirror);
        const std::complex<double> twiddle = k < half ? twiddles_[k] : std::complex<double>{-1.0, 0.0};
        bins[k] = even + twiddle * odd;
    }
}

} // namespace halvern
