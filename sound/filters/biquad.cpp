// The second-order designs, and the setups of the types that are built from them.
#include "sound/filters/biquad.h"

#include <cmath>

#include "base/math.h"
#include "sound/filters/filter_loops.h"

namespace vantoric::filters {

namespace {

// Divides by a0 and turns the sign of the feedback terms.
BiquadDesign normalised(std::array<double, 3> b, std::array<double, 3> a) {
    const double scale = 1.0 / a[0];
    return {b[0] * scale, b[1] * scale, b[2] * scale, -a[1] * scale, -a[2] * scale};
}

// A resonant numerator over a resonant denominator, both of the bilinear form with width terms u and v.
BiquadDesign peak(double k, double u, double v) {
    const double kk = k * k, middle = 2.0 * (kk - 1.0);
    return normalised({1.0 + u + kk, middle, 1.0 - u + kk}, {1.0 + v + kk, middle, 1.0 - v + kk});
}

BiquadDesign lowPassDesign(double fd, double r) {
    const double k = math::tan((3.45575 - 0.471239 * r) * fd), kk = k * k;
    const double kq = k * (1.33333 / fastExp(5.0 * r * r));
    return normalised({kk, 2.0 * kk, kk}, {1.0 + kq + kk, 2.0 * (kk - 1.0), 1.0 - kq + kk});
}

BiquadDesign highPassDesign(double k, double r) {
    const double kd = k / (6.0 * r * r + 0.4), kk = k * k;
    return normalised({1.0 + kd, -2.0, 1.0 - kd}, {1.0 + kd + kk, 2.0 * (kk - 1.0), 1.0 - kd + kk});
}

BiquadDesign bandPassDesign(double fd, double r) {
    const double w = 2.0 * math::pi * fd;
    const double b = math::sin(w) * fastExp(22.0 * fd * fd * fd);
    const double a = b * math::sinh((4.35517 - 4.13741 * r) * fd / b);
    return normalised({b * 0.5, 0.0, -b * 0.5}, {1.0 + a, -2.0 * math::cos(w), 1.0 - a});
}

// `direction` +1 for the low shelf, -1 for the high one.
BiquadDesign shelfDesign(double fd, double r, double direction) {
    const double w = 2.0 * math::pi * fd, cosine = direction * math::cos(w);
    const double a = math::pow(2.0f, static_cast<float>(r));
    const double s = std::sqrt(2.0 * a) * math::sin(w);
    const double up = a + 1.0, down = a - 1.0;
    return normalised({a * (up - down * cosine + s), direction * 2.0 * a * (down - up * cosine), a * (up - down * cosine - s)},
                      {up + down * cosine + s, direction * -2.0 * (down + up * cosine), up + down * cosine - s});
}

BiquadDesign allPassDesign(double fd, double r) {
    const double w = 2.0 * math::pi * fd, sine = math::sin(w), cosine = math::cos(w);
    const double a = sine * math::sinh((2.17759 - 2.17541 * std::sqrt(r)) * fd / sine);
    return normalised({1.0 - a, -2.0 * cosine, 1.0 + a}, {1.0 + a, -2.0 * cosine, 1.0 - a});
}

// Sets one or both sections and the gain.
void setSame(BiquadTwo<float>& filter, const BiquadDesign& design, double gain) {
    filter.section1.set(design);
    filter.section2.set(design);
    filter.gain = static_cast<float>(gain);
}
void setBoth(BiquadTwo<float>& filter, const BiquadDesign& first, const BiquadDesign& second, double gain) {
    filter.section1.set(first);
    filter.section2.set(second);
    filter.gain = static_cast<float>(gain);
}

// The two formants, which move against each other as the cutoff turns.
struct Formants {
    double f1, f2;
    explicit Formants(const FilterInputs& in) {
        const double i = 1.0 - in.c;
        f1 = 0.66 - 0.17 * i + 0.14 * in.r - 0.02;
        f2 = 0.3 - 0.62 * i * i + 0.62 * i + 0.14 * in.r - 0.02;
    }
};

}  // namespace

BiquadDesign designBiquad(int kind, double c, double r, double sampleRate) {
    r = clampUnit(r);
    const double fn = fastExp((1.0 - c) * -6.0) * 0.45 / sampleRate;
    const double fd = clampTo(fn * 44100.0, 0.0001, 0.45);
    const auto k = [fd] { return math::tan(math::pi * fd); };
    switch (kind) {
        case biquadHighPass: return highPassDesign(k(), r);
        case biquadBandPass: return bandPassDesign(fd, r);
        case biquadPeakNine: {
            const double width = k() / fastExp(3.0 * r);
            return peak(k(), 9.0 * width, width);
        }
        case biquadPeakEighteen: {
            const double width = k() / fastExp(3.0 * r);
            return peak(k(), 18.0 * width, width);
        }
        case biquadNotch: {
            const double width = k() / fastExp((1.0 - r) * 4.0);
            return peak(k(), width, 18.0 * width);
        }
        case biquadLowShelf: return shelfDesign(fd, r, 1.0);
        case biquadHighShelf: return shelfDesign(fd, r, -1.0);
        case biquadPeakRatio: return peak(k(), k() * fastExp(3.0 * r) * 0.25, k() * 0.25);
        case biquadPeakNarrow: return peak(k(), k() * fastExp(3.0 * r) * 0.1, k() * 0.1);
        case biquadAllPass: return allPassDesign(fd, r);
        case biquadPeakWide: return peak(k(), k() * fastExp(5.0 * r * r), k());
        default: return lowPassDesign(fd, r);
    }
}

void setupHpDigital(const FilterInputs& in, BiquadOne<float>& filter) {
    filter.section1.set(designBiquad(biquadHighPass, in.c, in.r, in.sampleRate));
    filter.gain = 1.0f;
}

void setupNotch(const FilterInputs& in, BiquadOne<float>& filter) {
    filter.section1.set(designBiquad(biquadNotch, in.c, in.r, in.sampleRate));
    filter.gain = 1.3f;
}

void setupLpDigital(const FilterInputs& in, BiquadTwo<float>& filter) {
    setSame(filter, designBiquad(biquadLowPass, in.c, 0.8 * in.r, in.sampleRate), fastExp(-2.56 * in.r * in.r));
}

void setupBpDigital(const FilterInputs& in, BiquadTwo<float>& filter) {
    const double gain = fastExp(-4.0 * in.r * in.r) * (2.0 * in.r + 2.0);
    setSame(filter, designBiquad(biquadBandPass, in.c, in.r, in.sampleRate), gain);
}

void setupWide(const FilterInputs& in, BiquadTwo<float>& filter) {
    const double e = fastExp(-5.0 * in.r * in.r);
    setSame(filter, designBiquad(biquadPeakWide, in.c, in.r, in.sampleRate), (in.r + 1.0) * (in.r + 1.0) * e * e);
}

void setupPeak(const FilterInputs& in, BiquadTwo<float>& filter) {
    setSame(filter, designBiquad(biquadPeakRatio, in.c, 0.7 * in.r, in.sampleRate), fastExp(-1.47 * in.r * in.r));
}

void setupLowShelf(const FilterInputs& in, BiquadTwo<float>& filter) {
    setSame(filter, designBiquad(biquadLowShelf, in.c, in.r, in.sampleRate), math::pow(2.0f, static_cast<float>(in.r)));
}

void setupHighShelf(const FilterInputs& in, BiquadTwo<float>& filter) {
    setSame(filter, designBiquad(biquadHighShelf, in.c, in.r, in.sampleRate), math::pow(2.0f, static_cast<float>(in.r)));
}

void setupMShape(const FilterInputs& in, BiquadTwo<float>& filter) {
    setBoth(filter, designBiquad(biquadHighPass, in.c - in.r * 0.5, 0.7, in.sampleRate),
            designBiquad(biquadLowPass, in.c + in.r * 0.5, 0.5, in.sampleRate), 0.7);
}

void setupBoobs(const FilterInputs& in, BiquadTwo<float>& filter) {
    setBoth(filter, designBiquad(biquadBandPass, in.c - in.r * 0.5, 0.8, in.sampleRate),
            designBiquad(biquadBandPass, in.c + in.r * 0.5, 0.8, in.sampleRate), 1.0);
}

void setupElliptic(const FilterInputs& in, BiquadTwo<float>& filter) {
    setBoth(filter, designBiquad(biquadLowPass, in.c, 0.2 * in.r + 0.15, in.sampleRate),
            designBiquad(biquadLowPass, in.c + 0.114 * in.r + 0.114, 0.3 * in.r + 0.6, in.sampleRate), 1.0 - 0.25 * in.r);
}

void setupVocals(const FilterInputs& in, BiquadTwo<float>& filter) {
    const Formants formants(in);
    setBoth(filter, designBiquad(biquadPeakNarrow, formants.f1, 0.7, in.sampleRate),
            designBiquad(biquadPeakNarrow, formants.f2, 0.7, in.sampleRate), 0.6);
}

void setupVocals2(const FilterInputs& in, BiquadTwo<float>& filter) {
    const Formants formants(in);
    setBoth(filter, designBiquad(biquadBandPass, formants.f1, 0.9, in.sampleRate),
            designBiquad(biquadLowPass, formants.f2, 0.7, in.sampleRate), 0.6);
}

AmLaw amLaw(double fn, double r) {
    const double w = 1.0 - (1.0 - r) * (1.0 - r), w2 = w * w, v = fn;
    const double m = (110691.0 - 7056.0 * w2) * v;
    AmLaw law{m, 0.8 * w, 1.0};
    if (m > 0.25) {
        law.depth = (2.0 - (442764.0 - 28224.0 * w2) * v) * 0.8 * w;
        law.scale = ((((2.4504996e10 - 1.5620716e9 * w2) * v - 14112.0 * w2 * m) * v + 1.125 - m) * 0.4 * w - 0.4 * w) + 1.0;
    }
    if (m > 0.5) law.depth = 0.0;
    return law;
}

void setupAm(const FilterInputs& in, BiquadAm<float>& filter) {
    const AmLaw law = amLaw(in.fn(), in.r);
    const double w = 1.0 - (1.0 - in.r) * (1.0 - in.r), w2 = w * w;
    const double apart = 0.06 - 0.036 * w;
    filter.section1.set(designBiquad(biquadLowPass, in.c - apart, 0.8 * w, in.sampleRate));
    filter.section2.set(designBiquad(biquadLowPass, in.c + apart, 0.8 * w, in.sampleRate));
    filter.rate = stepOfPhase(law.rate);
    filter.depth = static_cast<float>(law.depth);
    filter.gain = static_cast<float>((1.0 - 0.6272 * w2) * law.scale);
}

template struct TypesOf<BiquadOne>;
template struct TypesOf<BiquadTwo>;
template struct TypesOf<BiquadAm>;

}  // namespace vantoric::filters
