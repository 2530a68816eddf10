// Fourier transform of real signals.
#pragma once

#include <vector>

namespace vantoric {

// Radix-2 transform of `size` real points, a power of two from 2 to 65536. Tables and work space are
// allocated at construction; the transforms allocate nothing. Not shared between threads.
class RealFft {
public:
    explicit RealFft(int size);

    int size() const { return size_; }

    // Forward transform of `signal` (size points) into bins 0 to size / 2: real and imaginary parts,
    // each size / 2 + 1 long. X[k] = sum x[n] exp(-2 pi i k n / size), without a factor.
    void forward(const double* signal, double* real, double* imaginary);
    // Inverse, with the factor 1 / size: forward and inverse give back the signal.
    void inverse(const double* real, const double* imaginary, double* signal);

private:
    void transform();  // in place on re_, im_

    int size_;
    std::vector<double> cosine_, sine_, re_, im_;
    std::vector<int> reversed_;
};

}  // namespace vantoric
