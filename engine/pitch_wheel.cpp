#include "engine/pitch_wheel.h"

#include <iterator>

#include "base/math.h"
#include "base/numbers.h"

namespace vantoric {

namespace {
constexpr float rangeSemitones[] = {0, 1, 2, 3, 4, 7, 12, 24};
}

float pitchWheelPosition(int lsb, int msb) {
    const float position = static_cast<float>(lsb) * 0.000061035156f + static_cast<float>(msb) / 128.0f;
    if (position > 0.99f) return 1.0f;
    if (position < 0.01f) return 0.0f;
    if (position > 0.49f && position < 0.51f) return 0.5f;
    return position;
}

float pitchBendFactorOf(float position, float range) {
    const int row = listIndex(range);
    const float semitones = row < static_cast<int>(std::size(rangeSemitones)) ? rangeSemitones[row] : 0.0f;
    return math::exp(semitones * (position * 0.1155245f - 0.05776225f));
}

}  // namespace vantoric
