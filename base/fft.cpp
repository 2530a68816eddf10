#include "base/fft.h"

#include <utility>

#include "base/math.h"

namespace vantoric {

RealFft::RealFft(int size) : size_(size), cosine_(size / 2), sine_(size / 2), re_(size), im_(size), reversed_(size) {
    for (int k = 0; k < size / 2; ++k) {
        cosine_[k] = math::cos(2.0 * math::pi * k / size);
        sine_[k] = math::sin(2.0 * math::pi * k / size);
    }
    for (int i = 1, j = 0; i < size; ++i) {
        int bit = size >> 1;
        for (; j & bit; bit >>= 1) j ^= bit;
        j ^= bit;
        reversed_[i] = j;
    }
}

void RealFft::transform() {
    for (int i = 0; i < size_; ++i)
        if (i < reversed_[i]) {
            std::swap(re_[i], re_[reversed_[i]]);
            std::swap(im_[i], im_[reversed_[i]]);
        }
    for (int half = 1; half < size_; half *= 2) {
        const int stride = size_ / (2 * half);
        for (int start = 0; start < size_; start += 2 * half)
            for (int k = 0; k < half; ++k) {
                const double c = cosine_[k * stride], s = -sine_[k * stride];
                const int a = start + k, b = a + half;
                const double re = re_[b] * c - im_[b] * s, im = re_[b] * s + im_[b] * c;
                re_[b] = re_[a] - re;
                im_[b] = im_[a] - im;
                re_[a] += re;
                im_[a] += im;
            }
    }
}

void RealFft::forward(const double* signal, double* real, double* imaginary) {
    for (int i = 0; i < size_; ++i) {
        re_[i] = signal[i];
        im_[i] = 0.0;
    }
    transform();
    for (int k = 0; k <= size_ / 2; ++k) {
        real[k] = re_[k];
        imaginary[k] = im_[k];
    }
}

void RealFft::inverse(const double* real, const double* imaginary, double* signal) {
    // The inverse is the conjugate of the forward transform of the conjugate; the result is real.
    for (int k = 0; k <= size_ / 2; ++k) {
        re_[k] = real[k];
        im_[k] = -imaginary[k];
    }
    for (int k = size_ / 2 + 1; k < size_; ++k) {
        re_[k] = real[size_ - k];
        im_[k] = imaginary[size_ - k];
    }
    transform();
    for (int i = 0; i < size_; ++i) signal[i] = re_[i] / size_;
}

}  // namespace vantoric
