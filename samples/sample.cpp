#include "samples/sample.h"

#include <cstddef>
#include <new>

namespace vantoric {

bool Sample::allocate(std::int32_t newLength) {
    for (auto& level : levels) level.reset();
    const std::size_t words = static_cast<std::size_t>(newLength > 0 ? newLength : 0) + sampleGuard;
    for (auto& level : levels) {
        level.reset(new (std::nothrow) std::int16_t[words]());
        if (!level) {
            for (auto& other : levels) other.reset();
            return false;
        }
    }
    return true;
}

void Sample::clearHeader() {
    length = loopStart = loopEnd = 0;
    sampleRate = 44100;
}

}  // namespace vantoric
