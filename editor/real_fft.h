#pragma once

// ZRealFFT: the discrete Fourier transform of a real signal whose length is a power of
// two. The samples are packed in pairs into a complex signal of half the length, which
// an iterative radix-2 transform takes; the two halves are then pulled apart into the
// spectrum of the real signal. Tables are made once, in the constructor.

#include <complex>
#include <cstddef>
#include <vector>

namespace halvern {

class ZRealFFT {
public:
    // size: a power of two, 4 or more.
    explicit ZRealFFT(size_t size);

    size_t size() const { return size_; }
    // The bins 0 (DC) to size/2 (Nyquist) of the size samples at input, unnormalised.
    void forward(const double* input, std::vector<std::complex<double>>& bins);

private:
    void transformHalf();

    size_t size_;
    std::vector<std::complex<double>> work_;     // the packed signal, transformed in place
    std::vector<std::complex<double>> twiddles_; // e^(-2 pi i k / size) for k < size/2
    std::vector<size_t> reversed_;               // bit-reversed index of each packed sample
};

} // namespace halvern
