#include "effects/drive_shapes.h"

namespace vantoric {

namespace {

constexpr double roundPi = 3.14159;

}  // namespace

const ShaperTaps& halfBand() {
    static const ShaperTaps taps = shaperFilter(1.570795, 0.6366203);
    return taps;
}

const ShaperTaps& quarterBand() {
    static const ShaperTaps taps = shaperFilter(0.7853975, 1.2732406);
    return taps;
}

const ShaperTaps& rampTable() {
    static const ShaperTaps table = [] {
        ShaperTaps ramp;
        for (int i = 0; i < shaperTaps; ++i)
            ramp[i] = static_cast<float>((1.0 - math::cos(2.0 * roundPi * i / shaperTaps)) / shaperTaps);
        return ramp;
    }();
    return table;
}

}  // namespace vantoric
