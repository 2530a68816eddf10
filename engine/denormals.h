// Denormal numbers off for the length of a block.
#pragma once

#include <xmmintrin.h>

namespace vantoric {

// Sets flush-to-zero and denormals-are-zero, and puts the host's control word back at every exit.
class DenormalsOff {
public:
    DenormalsOff() : saved_(_mm_getcsr()) { _mm_setcsr(saved_ | 0x8040u); }
    ~DenormalsOff() { _mm_setcsr(saved_); }
    DenormalsOff(const DenormalsOff&) = delete;
    DenormalsOff& operator=(const DenormalsOff&) = delete;

private:
    unsigned saved_;
};

}  // namespace vantoric
