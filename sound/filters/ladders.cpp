// The setups of the ladders.
#include "sound/filters/ladders.h"

#include <algorithm>
#include <cmath>

#include "base/math.h"
#include "sound/filters/filter_loops.h"
#include "sound/filters/svf.h"

namespace vantoric::filters {

namespace {

// Pole and feedback of "LP Ladder" for each twentieth of the sample rate.
constexpr double ladderPoles[] = {-0.997, -0.683, -0.375, -0.082, 0.182, 0.422, 0.625, 0.79, 0.908, 0.976, 1.0};
constexpr double ladderFeedback[] = {480, 355, 280, 225, 187, 162, 144, 130, 124, 120, 94};

}  // namespace

void setupLadder(const FilterInputs& in, Ladder<float>& filter) {
    const double t = std::min(in.fn() * 44100.0, 0.499);
    const int i = static_cast<int>(20.0 * t);
    const double z = 20.0 * t - i;
    const double p = ladderPoles[i] + (ladderPoles[i + 1] - ladderPoles[i]) * z;
    const double k = ladderFeedback[i] + (ladderFeedback[i + 1] - ladderFeedback[i]) * z;
    const double a3 = 8.0 * in.a * in.a * in.a;
    double asym = 0.0;
    if (p * 0.5 <= -0.3)
        asym = a3;
    else if (p * 0.5 <= -0.1)
        asym = (-0.5 - 2.5 * p) * a3;
    filter.pole = static_cast<float>(p);
    filter.in = static_cast<float>(p * 0.5 + 0.5);
    filter.fb = static_cast<float>(k * in.r * 0.008);
    filter.asym = static_cast<float>(asym);
    filter.mix = static_cast<float>(in.a);
    filter.gain = static_cast<float>((0.3 - (2.0 * in.r - 1.0) * (0.6 * in.r - 0.3) + 1.0) * ((0.5 - p * 0.5) * in.r + 1.0));
}

OrvixForm setupOrvix(const FilterInputs& in, Orvix<float>& filter) {
    const double root = std::sqrt(in.r);
    double f = 2.0 * math::sin(static_cast<float>(in.fn() * 69272.06));
    double drive = 0.0;
    if (f > 0.93)
        f = 0.93;
    else
        drive = fadedDrive(f, in.a * in.a) * 1.5;
    in.memory.drive = drive;
    const double q = 1.045 * root;
    filter.f = static_cast<float>(f);
    filter.q = static_cast<float>(q);
    filter.drive = static_cast<float>(drive);
    filter.gain = static_cast<float>(1.0 - 0.25 * root);
    filter.A = static_cast<float>(1.4784 * f + 0.8 * q - 2.8);
    filter.B = static_cast<float>(2.0504 * f + 0.4 * q - 3.4);
    filter.C = static_cast<float>(0.2 * f);
    filter.D = static_cast<float>(-0.6 * f);
    return filter.drive < 0.01f && filter.q < 0.6f ? OrvixForm::linear : OrvixForm::clipped;
}

ButterForm setupButter(const FilterInputs& in, Butter<float>& filter) {
    const double w = 2.0 * in.r - in.r * in.r;
    const double t = std::min(in.fn() * 44100.0, 0.5);
    const double g = std::min(5.8433576 * t - 6.096 * t * t, 1.0 - 0.2 * w);
    const double v = std::max(w - g * 0.25, 0.0);
    filter.g = static_cast<float>(g);
    filter.m = static_cast<float>(0.875 * v);
    filter.gain = static_cast<float>(0.25 * v + 0.0625);
    filter.noise = static_cast<float>(8.0 * in.a * in.a);
    if (filter.m <= 0.02f) return ButterForm::open;
    return filter.m <= 0.2f ? ButterForm::linear : ButterForm::clipped;
}

Ms20Form setupMs20(const FilterInputs& in, Ms20<double>& filter) {
    const double t = std::min(in.fn() * 44100.0 * 1.015, 0.33);
    filter.h = math::tan(math::pi * t);
    filter.D = (clampTo(4.0 * t * t * t + 6.0 * t * t, 0.0, 6.0) + in.r) * 4.0;
    filter.gain = 1.0 - in.r * 0.5;
    filter.analog = in.a;
    return in.a == 0.0 ? Ms20Form::still : Ms20Form::noisy;
}

template struct TypesOf<Ladder>;
template struct TypesOf<Orvix>;
template struct TypesOf<Butter>;
template struct TypesOf<Ms20>;

}  // namespace vantoric::filters
