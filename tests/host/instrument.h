// The instrument as its user meets it, for measurements: one oscillator sounding straight through, and the tools that
// look at the sound that comes out of the module.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "base/parameters.h"
#include "tests/host/plugin_host.h"

namespace testhost {

namespace par = vantoric::parameter;

inline constexpr double pi = 3.14159265358979323846;
inline constexpr int sineWave = 12;

inline std::string pluginPath() {
    const char* const path = std::getenv("VANTORIC_TEST_PLUGIN");
    return path ? path : DEFAULT_PLUGIN;
}

// The exponential of the instrument's time and rate laws, as its users know it.
inline double law(double x) {
    const double y = 1.4407999515533447 * x, n = std::floor(y), f = y - n;
    return std::ldexp(1.0 + 0.75 * f + 0.25 * f * f, static_cast<int>(n));
}

// Pitch in Hz of a key with the instrument at rest: key 69 is 220 Hz.
inline double keyFrequency(int key) { return 523.2511306 * std::pow(1.059463094359, key) * 0.0078125; }

// What the 24-bit increment makes of a frequency: its fraction is dropped.
inline double heldPitch(double frequency, double internalRate) {
    return std::floor(frequency / internalRate * 16777216.0) / 16777216.0 * internalRate;
}

inline double centsBetween(double a, double b) { return 1200.0 * std::log2(a / b); }

// One instance with one oscillator of layer 1 sounding straight through, everything else at rest.
class Instrument {
public:
    explicit Instrument(float hostRate = 48000.0f) : rate(hostRate), host_(std::make_unique<PluginHost>(pluginPath())) {
        host_->answers().knowsTime = false;
        host_->answers().rate = hostRate;
        host_->start();
        host_->setRate(hostRate);
        for (int i = 0; i < vantoric::parameterCount; ++i) set(i, 0.0f);
        for (const int n : {par::Volume, par::EqLow, par::EqMid, par::EqHigh}) set(n, 0.5f);
        list(par::SoundMod, 8);  // straight through
        list(par::Quality, 1);
        set(par::Layer1On, 1.0f);
        for (int i = 0; i < 3; ++i) {
            for (const int n : {par::Oct1, par::Detune1, par::Timbre1}) set(n + i, 0.5f);
            set(par::KeyFol1 + i, 1.0f);
            list(par::KeyEnd1 + i, 127);
            list(par::WTWave1 + i, sineWave);
        }
        set(par::On1, 1.0f);
        set(par::Vol1, 1.0f);
        set(par::FilVol1, 1.0f);
        set(par::FilPan1, 0.5f);
        set(par::LayerVol, 0.25f);
        set(par::SusVol, 1.0f);
        list(par::PlayMode, 8);
        for (int i = 0; i < 16; ++i) set(par::MatVal1 + i, 0.5f);
        settle();
    }

    void set(int n, double value) { host_->setParameter(n, static_cast<float>(value)); }
    void list(int n, int row) { set(n, row / 128.0); }
    void slot(int i, int source, int destination, double amount) {
        list(par::MatSrc1 + i, source);
        list(par::MatDst1 + i, destination);
        set(par::MatVal1 + i, amount);
    }
    // Lets the slewed parameters arrive and old notes end.
    void settle() { render(0.5); }
    void noteOn(int key, int velocity = 100, int offset = 0) { host_->midi(0x90, key, velocity, offset); }
    void noteOff(int key, int offset = 0) { host_->midi(0x80, key, 0, offset); }
    // Switched off and on: nothing sounds, and every clock and memory is where it was at first.
    void restart() {
        host_->off();
        host_->on();
    }
    void silence() {
        restart();
        settle();
    }
    Sound render(double seconds, int block = 512) { return host_->renderLong(static_cast<int>(seconds * rate), block); }
    PluginHost& host() { return *host_; }

    double internalRate() const { return rate > 48000.0f ? rate : 2.0 * rate; }
    double tick() const { return std::floor(internalRate() * 0.001) / internalRate(); }

    const float rate;

private:
    std::unique_ptr<PluginHost> host_;
};

inline std::complex<double> component(const float* x, std::size_t count, double frequency, double rate, double startTime = 0.0) {
    std::complex<double> sum = 0.0;
    double weight = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        const double w = 0.5 - 0.5 * std::cos(2.0 * pi * (static_cast<double>(i) + 0.5) / static_cast<double>(count));
        sum +=
            w * static_cast<double>(x[i]) * std::polar(1.0, -2.0 * pi * frequency * (startTime + static_cast<double>(i) / rate));
        weight += w;
    }
    return 2.0 * sum / weight;
}

// Frequency near `guess`: the phase of the component is followed over longer and longer stretches.
// `seconds`: the least length of the looks taken, which parts it from its neighbours.
inline double frequencyOf(const std::vector<float>& x, double guess, double rate, double seconds = 0.05) {
    const auto window = static_cast<std::size_t>(std::max(seconds, 12.0 / guess) * rate);
    double f = guess;
    for (double stretch = 0.02;; stretch *= 4.0) {
        const auto far = std::min(static_cast<std::size_t>(stretch * rate), x.size() - window);
        const auto a = component(x.data(), window, f, rate);
        const auto b = component(x.data() + far, window, f, rate, static_cast<double>(far) / rate);
        f += std::arg(b / a) / (2.0 * pi) * rate / static_cast<double>(far);
        if (far == x.size() - window) return f;
    }
}

inline double rms(const std::vector<float>& x, std::size_t from, std::size_t to) {
    double sum = 0.0;
    for (std::size_t i = from; i < to; ++i) sum += static_cast<double>(x[i]) * static_cast<double>(x[i]);
    return std::sqrt(sum / static_cast<double>(to - from));
}

// Seconds until the level of a steady tone first reaches (or falls to) `level`, looked at in stretches of 2 ms.
inline double timeOfLevel(const std::vector<float>& x, double rate, double level, bool rising, double from = 0.0) {
    const auto window = static_cast<std::size_t>(0.002 * rate);
    for (auto i = static_cast<std::size_t>(from * rate); i + window <= x.size(); i += window / 8) {
        const double now = rms(x, i, i + window);
        if (rising ? now >= level : now <= level) return (static_cast<double>(i) + static_cast<double>(window) / 2.0) / rate;
    }
    return -1.0;
}

}  // namespace testhost
