// The setups of the state-variable filters.
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

Svf12Form setupLp12(const FilterInputs& in, Svf12<float>& filter) {
    return setupTwoPoles(in, filter, in.a, 2.0) == 2 ? Svf12Form::lowPassTwice : Svf12Form::lowPass;
}

Svf12Form setupHp12(const FilterInputs& in, Svf12<float>& filter) {
    return setupTwoPoles(in, filter, in.a, 2.0) == 2 ? Svf12Form::highPassTwice : Svf12Form::highPass;
}

Svf12Form setupBp12(const FilterInputs& in, Svf12<float>& filter) {
    return setupTwoPoles(in, filter, in.a, 2.0) == 2 ? Svf12Form::bandPassTwice : Svf12Form::bandPass;
}

void setupSvf18(const FilterInputs& in, Svf18<float>& filter) { setupManyPoles(in, filter, in.a, 1.2); }

void setupSvf24(const FilterInputs& in, Svf24<float>& filter) { setupManyPoles(in, filter, in.a * in.a, 0.93); }

SvfShapedForm setupSvfShaped(const FilterInputs& in, SvfShaped<float>& filter) {
    return setupTwoPoles(in, filter, 1.0, 1.0) == 2 ? SvfShapedForm::twice : SvfShapedForm::once;
}

template struct TypesOf<Svf12>;
template struct TypesOf<Svf18>;
template struct TypesOf<Svf24>;
template struct TypesOf<SvfShaped>;

}  // namespace vantoric::filters
