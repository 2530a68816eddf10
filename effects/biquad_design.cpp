#include "effects/biquad_design.h"

#include <cmath>

#include "base/math.h"

namespace vantoric {

BiquadCoefficients highShelf(double a, double angle) {
    const double s = math::sin(static_cast<float>(angle));
    const double c = math::cos(static_cast<float>(angle));
    const double b = std::sqrt(2.0 * a) * s;
    const double e = (a + 1.0) - c * (a - 1.0);
    const double f = (a + 1.0) + c * (a - 1.0);
    const double d = b + e;
    return {(f + b) * a / d, ((a + c * (a + 1.0)) - 1.0) * a * -2.0 / d, (f - b) * a / d, 2.0 * (c * (a + 1.0) - (a - 1.0)) / d,
            (b - e) / d};
}

BiquadCoefficients peak(double k, double r, double e) {
    const double d = 1.0 + r * k + k * k;
    const double width = e * k * r;
    return {(1.0 + width + k * k) / d, (2.0 * k * k - 2.0) / d, (1.0 - width + k * k) / d, (2.0 - 2.0 * k * k) / d,
            -(1.0 - k * r + k * k) / d};
}

}  // namespace vantoric
