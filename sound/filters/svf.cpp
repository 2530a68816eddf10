#include "sound/filters/svf.h"

#include "sound/filters/filter_loops.h"

namespace vantoric::filters {

namespace {

// Takes the resonance back towards the open filter.
double limiter(double c) { return c <= 0.875 ? 1.0 : 4.5 - 4.0 * c; }

double fourthPower(double x) { return (x * x) * (x * x); }

// What the two-pole filters share: tuning, number of steps, resonance, gain. Returns the number of steps.
template <class Filter>
int setupTwoPoles(const FilterInputs& in, Filter& filter, double amount, double driveScale) {
    double t = in.fn() * 44100.0;
    int steps = 1;
    if ((static_cast<float>(t) > 0.032f || static_cast<float>(in.memory.drive) > 0.05f) && static_cast<float>(in.r) > 0.05f) {
        steps = 2;
        t = in.fn() * 22050.0;
    }
    double f = 6.2831 * t - 10.0 * fourthPower(t);
    double drive = 0.0;
    if (f > 1.0)
        f = 1.0;
    else
        drive = fadedDrive(f, amount) * driveScale;
    in.memory.drive = drive;
    filter.f = static_cast<float>(f);
    filter.drive = static_cast<float>(drive);
    filter.q = static_cast<float>((2.0 * in.r - in.r * in.r) * limiter(in.c) * 1.2 - 0.2);
    filter.gain = static_cast<float>(1.0 - in.r * 0.5);
    return steps;
}

// What three and four poles share, up to the ceiling of the tuning.
template <class Filter>
void setupManyPoles(const FilterInputs& in, Filter& filter, double amount, double ceiling) {
    const double t = in.fn();
    double f = t * 22050.0 * 6.2831 - fourthPower(t) * 2.3639286e18;
    double drive = 0.0;
    if (f > ceiling)
        f = ceiling;
    else
        drive = fadedDrive(f, amount) * 1.5;
    in.memory.drive = drive;
    filter.f = static_cast<float>(f);
    filter.drive = static_cast<float>(drive);
    filter.q = static_cast<float>((2.0 * in.r - in.r * in.r) * limiter(in.c));
    filter.gain = static_cast<float>(1.0 - in.r * 0.5);
}

}  // namespace

double fadedDrive(double f, double amount) {
    if (f <= 0.375) return amount;
    return f <= 0.625 ? (2.5 - 4.0 * f) * amount : 0.0;
}

int setupSvf12(const FilterInputs& in, Svf12<float>& filter, FilterOutput output) {
    const int steps = setupTwoPoles(in, filter, in.a, 2.0);
    return output + 3 * (steps - 1);
}

int setupSvf18(const FilterInputs& in, Svf18<float>& filter, FilterOutput output) {
    setupManyPoles(in, filter, in.a, 1.2);
    return output;
}

int setupSvf24(const FilterInputs& in, Svf24<float>& filter, FilterOutput output) {
    setupManyPoles(in, filter, in.a * in.a, 0.93);
    return output;
}

int setupSvfShaped(const FilterInputs& in, SvfShaped<float>& filter) { return setupTwoPoles(in, filter, 1.0, 1.0) - 1; }

template <int Voices>
std::span<const FilterType<Voices>> svfTypes() {
    static constexpr FilterType<Voices> types[] = {
        filterType<Voices, Svf12, [](const FilterInputs& in, auto& f) { return setupSvf12(in, f, lowPass); }>(2, 120),
        filterType<Voices, Svf12, [](const FilterInputs& in, auto& f) { return setupSvf12(in, f, highPass); }>(7, 121),
        filterType<Voices, Svf12, [](const FilterInputs& in, auto& f) { return setupSvf12(in, f, bandPass); }>(12, 122),
        filterType<Voices, Svf18, [](const FilterInputs& in, auto& f) { return setupSvf18(in, f, lowPass); }>(3, 130),
        filterType<Voices, Svf18, [](const FilterInputs& in, auto& f) { return setupSvf18(in, f, highPass); }>(8, 131),
        filterType<Voices, Svf18, [](const FilterInputs& in, auto& f) { return setupSvf18(in, f, bandPass); }>(13, 132),
        filterType<Voices, Svf24, [](const FilterInputs& in, auto& f) { return setupSvf24(in, f, lowPass); }>(4, 140),
        filterType<Voices, Svf24, [](const FilterInputs& in, auto& f) { return setupSvf24(in, f, highPass); }>(9, 141),
        filterType<Voices, Svf24, [](const FilterInputs& in, auto& f) { return setupSvf24(in, f, bandPass); }>(14, 142),
        filterType<Voices, SvfShaped, setupSvfShaped>(32, 158),
    };
    return types;
}

template std::span<const FilterType<1>> svfTypes<1>();
template std::span<const FilterType<voiceCount>> svfTypes<voiceCount>();

}  // namespace vantoric::filters
