// Waveguides: a plucked string, a tube with a reed; and a bar by its modes.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/math.h"
#include "factory/samples/recipes.h"

namespace vantoric::made {

Wave pluck(const PluckedString& string, double length) {
    // The loop of K. Karplus and A. Strong (1983) with the extensions of D. A. Jaffe and J. O. Smith: a burst of noise that is
    // combed by the place of the finger goes round through a two-point mean, which damps high partials, and an all-pass,
    // which tunes. Steel lets the mean lean to one side.
    const double lean = 0.5 * (1.0 - 0.92 * (1.0 - string.loss));
    const double period = rate / string.hertz - lean;
    const auto whole = static_cast<std::size_t>(period - 0.3);
    const double rest = period - static_cast<double>(whole), allpass = (1.0 - rest) / (1.0 + rest);
    const double round = math::exp(-math::log(1000.0) / (string.seconds * string.hertz));

    std::vector<double> line(whole);
    Noise noise(string.seed);
    OnePole finger(600.0 + 9000.0 * string.brightness * string.brightness), finger2(1500.0 + 12000.0 * string.brightness);
    for (double& sample : line) sample = finger2.low(finger.low(noise.next()));
    const std::vector<double> burst = line;
    const auto comb = std::max<std::size_t>(1, static_cast<std::size_t>(string.place * static_cast<double>(whole)));
    for (std::size_t i = 0; i < whole; ++i) line[i] = burst[i] - burst[(i + whole - comb) % whole];
    double mean = 0.0;
    for (const double sample : line) mean += sample / static_cast<double>(whole);
    for (double& sample : line) sample -= mean;

    Wave wave(framesOf(length));
    double before = 0.0, in = 0.0, out = 0.0;
    std::size_t at = 0;
    for (double& sample : wave) {
        const double now = line[at];
        const double damped = round * ((1.0 - lean) * now + lean * before);
        before = now;
        out = allpass * (damped - out) + in;
        in = damped;
        line[at] = out;
        at = (at + 1) % whole;
        sample = now;
    }
    // The box: air, top and back.
    Formant air, top, back;
    air.tune(104.0, 22.0), top.tune(212.0, 30.0), back.tune(405.0, 55.0);
    for (double& sample : wave)
        sample += string.body * (0.10 * air.run(sample) + 0.10 * top.run(sample) + 0.14 * back.run(sample));
    for (std::size_t i = 0; i < framesOf(0.0006); ++i) wave[i] *= static_cast<double>(i) / (0.0006 * rate);
    finish(wave, 0.98, 0.15);
    return wave;
}

Wave bar(double mallet) {
    // Rosewood, hollowed below so that the second mode is two octaves up (Fletcher and Rossing, 19.4), over a tube for the first.
    Wave wave(framesOf(1.6));
    const std::array modes = {Mode{home, 1.0, 1.5},
                              Mode{home * 3.932, 0.22 + 0.25 * mallet, 0.5},
                              Mode{home * 9.538, 0.03 + 0.22 * mallet, 0.18},
                              Mode{home * 16.69, 0.12 * mallet, 0.08},
                              Mode{home * 24.6, 0.08 * mallet, 0.045},
                              Mode{home * 0.997, 0.35, 2.2}};
    strike(wave, modes);
    Noise noise(71);
    OnePole soft(700.0 + 5000.0 * mallet);
    for (std::size_t i = 0; i < framesOf(0.03); ++i)
        wave[i] += 0.5 * soft.low(noise.next()) * math::exp(-static_cast<double>(i) / (0.004 * rate));
    finish(wave, 0.98, 0.1);
    return wave;
}

Sample tube(double pressure, double length) {
    // A reed on a cylinder: half a wavelength long, open at the far end, where a pole turns the wave back upside down; the
    // reed gives way by a straight line until it is shut (M. E. McIntyre, R. T. Schumacher and J. Woodhouse, 1983).
    constexpr double opening = 3200.0;                                                 // Hz: what is higher leaves the tube
    const double delay = rate / home / 2.0 - 0.5 - rate / (2.0 * math::pi * opening);  // what the opening takes
    const auto whole = static_cast<std::size_t>(delay);
    const double rest = delay - static_cast<double>(whole);
    std::vector<double> line(whole + 2);
    Noise noise(81);
    Wave wave(framesOf(length));
    OnePole breath(2500.0), bell(1500.0), end(opening);
    std::size_t at = 0;
    for (std::size_t i = 0; i < wave.size(); ++i) {
        // The tongue lets go with a push of air.
        const double start = static_cast<double>(i) / rate, rough = 0.03 + 0.4 * math::exp(-start / 0.03);
        const double push = std::min(1.0, start / 0.02) * (1.0 + 0.3 * math::exp(-start / 0.05));
        const double blow = pressure * push * (1.0 + rough * breath.low(noise.next()));
        const auto place = [&](std::size_t ago) { return line[(at + line.size() - ago) % line.size()]; };
        const double arrived = (1.0 - rest) * place(whole) + rest * place(whole + 1);
        const double back = -0.96 * end.low(arrived);
        const double difference = back - blow;
        const double reed = std::clamp(0.7 - 0.34 * difference, -1.0, 1.0);
        at = (at + 1) % line.size();
        line[at] = blow + difference * reed;
        wave[i] = arrived + 8.0 * (pressure - 0.5) * bell.high(arrived);
    }
    OnePole constant(20.0);
    for (double& sample : wave) sample = constant.high(sample);
    const std::size_t loop = closeLoop(wave, wave.size() - framesOf(0.7), framesOf(0.2));
    finish(wave, 0.9, 0.0);
    return {wave, loop};
}

}  // namespace vantoric::made
