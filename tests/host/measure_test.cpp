// The instrument measured from outside, by a host that only knows its parameters: pitch, level, times, rates, timing
// and cost of the sound that comes out of the module.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>

#include "tests/host/instrument.h"

using namespace testhost;

namespace {

constexpr int hypersaw = 1;

struct PitchCase {
    int key;
    int parameter = -1;
    double value = 0.0;
    double ratio = 1.0;
};

double pitchOf(Instrument& instrument, int key, double expected) {
    instrument.noteOn(key);
    const Sound sound = instrument.render(2.0);
    instrument.silence();
    return frequencyOf({sound.left.begin() + static_cast<std::ptrdiff_t>(0.05 * instrument.rate), sound.left.end()}, expected,
                       instrument.rate);
}

}  // namespace

TEST(Measured, PitchIsThatOfTheKeyTableWithinATenthOfACent) {
    constexpr double fine = 0.118926, base = 0.940537;
    const PitchCase cases[] = {
        {24, par::Oct1, 1.0, 16.0},
        {48},
        {60},
        {69},
        {84},
        {96, par::Oct1, 0.9, 16.0},
        {127},
        {60, par::Oct1, 0.0, 0.0625},
        {60, par::Oct1, 0.78, 8.0},
        {60, par::Interv1, 0.15, 1.2},
        {60, par::Interv1, 0.30, 1.25},
        {60, par::Interv1, 0.45, 1.3333334},
        {60, par::Interv1, 0.60, 1.5},
        {60, par::Interv1, 0.75, 1.6666666},
        {60, par::Interv1, 1.0, 1.75},
        {60, par::Semi1, 3.5 / 12.99, 1.1892000},
        {60, par::Semi1, 7.5 / 12.99, 1.4983000},
        {60, par::Semi1, 1.0, 2.0},
        {60, par::Detune1, 0.0, base},
        {60, par::Detune1, 0.25, 0.25 * fine + base},
        {60, par::Detune1, 1.0, fine + base},
    };
    double worst = 0.0;
    for (const float rate : {44100.0f, 48000.0f, 96000.0f}) {
        Instrument instrument(rate);
        for (const PitchCase& c : cases) {
            const double before = c.parameter < 0 ? 0.0 : static_cast<double>(instrument.host().parameter(c.parameter));
            if (c.parameter >= 0) instrument.set(c.parameter, c.value);
            const double detune = c.parameter == par::Detune1 ? 1.0 : 0.5 * fine + base;
            const double wanted = heldPitch(keyFrequency(c.key) * c.ratio * detune, instrument.internalRate());
            const double deviation = std::fabs(centsBetween(pitchOf(instrument, c.key, wanted), wanted));
            EXPECT_LT(deviation, 0.1) << "key " << c.key << " parameter " << c.parameter << " = " << c.value << " at " << rate;
            worst = std::max(worst, deviation);
            if (c.parameter >= 0) instrument.set(c.parameter, before);
        }
    }
    RecordProperty("worst_cents", std::to_string(worst));
    std::printf("  largest deviation %.5f cent\n", worst);
}

TEST(Measured, TheWheelBendsByTheSemitonesOfItsRange) {
    Instrument instrument;
    constexpr double semitones[] = {0, 1, 2, 3, 4, 7, 12, 24};
    for (int row = 0; row < 8; ++row)
        for (const int msb : {0, 96, 127}) {
            instrument.list(par::PitchWhl, row);
            instrument.host().midi(0xe0, 0, msb);
            const double w = msb == 127 ? 1.0 : msb * 0.0078125;
            const double factor = std::exp(semitones[row] * (0.1155245 * w - 0.05776225));
            const double wanted = heldPitch(keyFrequency(72) * factor * (0.5 * 0.118926 + 0.940537), instrument.internalRate());
            EXPECT_NEAR(centsBetween(pitchOf(instrument, 72, wanted), wanted), 0.0, 0.1) << semitones[row] << " at " << msb;
        }
}

TEST(Measured, LevelFollowsVolumeLayerVolumeAndPan) {
    Instrument instrument;
    const auto level = [&](bool right = false) {
        instrument.settle();
        instrument.noteOn(60);
        const Sound sound = instrument.render(0.6);
        instrument.silence();
        return std::abs(component((right ? sound.right : sound.left).data() + 4800, 24000,
                                  frequencyOf({sound.left.begin() + 4800, sound.left.end()}, keyFrequency(60), 48000.0),
                                  48000.0));
    };
    const double reference = level();
    // The bank's sine stands at 0.36 RMS of full scale. It is read at half of that, weighed with 32767 of 2097152000 and
    // goes at 0.9975 to a side.
    const double read = 0.36 * std::sqrt(2.0) * 32767.0 / 2.0 * 32767.0 / 2097152000.0;
    EXPECT_NEAR(reference / (read * 0.9975 * 1e-8 * 0.0625 * 2097152000.0 * 1.3), 1.0, 0.002);
    instrument.set(par::Volume, 0.25);
    EXPECT_NEAR(level() / reference, 0.25, 0.002);
    instrument.set(par::Volume, 0.75);
    EXPECT_NEAR(level() / reference, 2.25, 0.01);
    instrument.set(par::Volume, 0.5);
    instrument.set(par::LayerVol, 0.5);
    EXPECT_NEAR(level() / reference, 4.0, 0.02);
    instrument.set(par::LayerVol, 0.25);
    instrument.set(par::Vol1, 0.5);
    EXPECT_NEAR(level() / reference, 0.5, 0.005);
    instrument.set(par::Vol1, 1.0);
    for (const double pan : {0.0, 0.25, 0.75, 1.0}) {
        instrument.set(par::FilPan1, pan);
        const auto c = [](double x) { return 2.66 * x - 1.33 * x * x; };
        EXPECT_NEAR(level() / reference, c(1.0 - pan) / 0.9975, 0.003) << pan;
        EXPECT_NEAR(level(true) / reference, c(pan) / 0.9975, 0.003) << pan;
    }
}

TEST(Measured, EnvelopeStagesLastOneMillisecondOverTheLaw) {
    for (const float rate : {44100.0f, 48000.0f, 96000.0f}) {
        Instrument instrument(rate);
        instrument.set(par::RelVol, 0.05);
        instrument.noteOn(84);
        const Sound steady = instrument.render(0.3);
        const double full = rms(steady.left, static_cast<std::size_t>(0.1 * rate), static_cast<std::size_t>(0.3 * rate));
        instrument.silence();
        for (const double v : {0.4, 0.5, 0.6}) {
            const double whole = instrument.tick() / law(-10.0 * v);
            instrument.set(par::AttVol, v);
            instrument.noteOn(84);
            const Sound attack = instrument.render(1.5 * whole + 0.1);
            const double half = timeOfLevel(attack.left, rate, 0.5 * full, true);
            EXPECT_NEAR(half, 0.5 * whole, 0.004) << "attack " << v;
            instrument.silence();
            instrument.set(par::AttVol, 0.0);

            instrument.set(par::DecVol, v);
            instrument.set(par::SusVol, 0.25);
            instrument.noteOn(84);
            const Sound decay = instrument.render(1.5 * whole + 0.1);
            EXPECT_NEAR(timeOfLevel(decay.left, rate, 0.625 * full, false, 0.006), 0.5 * whole, 0.006) << "decay " << v;
            EXPECT_NEAR(rms(decay.left, static_cast<std::size_t>((1.1 * whole + 0.02) * rate), decay.left.size()), 0.25 * full,
                        0.01 * full);
            instrument.silence();
            instrument.set(par::DecVol, 0.0);
            instrument.set(par::SusVol, 1.0);

            instrument.set(par::RelVol, v);
            instrument.noteOn(84);
            instrument.render(0.1);
            instrument.noteOff(84);
            const Sound release = instrument.render(1.5 * whole + 0.1);
            EXPECT_NEAR(timeOfLevel(release.left, rate, 0.5 * full, false), 0.5 * whole, 0.004) << "release " << v;
            EXPECT_LT(rms(release.left, static_cast<std::size_t>((1.1 * whole + 0.02) * rate), release.left.size()), 1e-5);
            instrument.silence();
            instrument.set(par::RelVol, 0.05);
        }
    }
}

TEST(Measured, VelocityActsOnlyThroughTheMatrix) {
    Instrument instrument;
    const auto level = [&](int velocity) {
        instrument.noteOn(72, velocity);
        const Sound sound = instrument.render(0.4);
        instrument.silence();
        return rms(sound.left, 4800, 19200);
    };
    const double reference = level(127);
    EXPECT_NEAR(level(1) / reference, 1.0, 1e-3);
    constexpr int velocitySource = 18, filterVolume1 = 38;
    instrument.set(par::FilVol1, 0.0);
    instrument.slot(0, velocitySource, filterVolume1, 1.0);
    instrument.settle();
    for (const int velocity : {1, 32, 64, 127}) EXPECT_NEAR(level(velocity) / reference, velocity / 128.0, 0.002) << velocity;
}

TEST(Measured, AnLfoRunsAtTheRateOfItsSpeed) {
    constexpr int lfoUnipolar = 50, filterVolume1 = 38, square = 6, trigger = 3;
    for (const float rate : {44100.0f, 96000.0f}) {
        Instrument instrument(rate);
        instrument.set(par::FilVol1, 0.0);
        instrument.slot(0, lfoUnipolar, filterVolume1, 1.0);
        instrument.list(par::LfoWave1, square);
        instrument.list(par::LfoMode1, trigger);
        for (const double speed : {0.25, 0.5, 0.6}) {
            const double hertz = law(8.85936 * speed) / 16.0;
            instrument.set(par::LfoSpd1, speed);
            instrument.noteOn(96);
            const Sound sound = instrument.render(6.6 / hertz);
            // From high to low, five cycles apart.
            const double high =
                rms(sound.left, static_cast<std::size_t>(0.1 / hertz * rate), static_cast<std::size_t>(0.4 / hertz * rate));
            const double first = timeOfLevel(sound.left, rate, 0.4 * high, false, 0.25 / hertz);
            const double sixth = timeOfLevel(sound.left, rate, 0.4 * high, false, 5.25 / hertz);
            EXPECT_NEAR(5.0 / (sixth - first) / hertz, 1.0, 0.003 + 0.002 * hertz / 5.0) << speed;
            instrument.silence();
        }
    }
}

TEST(Measured, ArpeggiatorStepsFollowTheTempoOfTheHost) {
    for (const double tempo : {97.0, 140.0}) {
        Instrument instrument;
        HostAnswers& answers = instrument.host().answers();
        answers.knowsTime = answers.timeAdvances = true;
        answers.time.tempo = tempo;
        constexpr int up = 2, fullVelocity = 9;
        instrument.list(par::ArpType, up);
        instrument.list(par::ArpSpeed, 4);
        instrument.list(par::ArpRetri, 1);
        for (int i = 0; i < 16; ++i) instrument.list(par::ArpVol1 + i, fullVelocity);
        instrument.set(par::DecVol, 0.3);
        instrument.set(par::SusVol, 0.0);
        instrument.settle();
        instrument.noteOn(84);
        const Sound sound = instrument.render(2.0, 128);
        double from = 0.0, first = -1.0, last = 0.0;
        int steps = 0;
        for (;;) {
            const double onset = timeOfLevel(sound.left, 48000.0, 0.02, true, from);
            if (onset < 0.0) break;
            if (first < 0.0) first = onset;
            last = onset;
            ++steps;
            from = timeOfLevel(sound.left, 48000.0, 0.002, false, onset);
            if (from < 0.0) break;
        }
        const double wanted = 15.0 / tempo;
        ASSERT_GE(steps, 10);
        EXPECT_NEAR((last - first) / (steps - 1), wanted, 0.0012 / (steps - 1) + 1e-4) << tempo;
    }
}

TEST(Measured, AHypersawSpreadsItsVoicesByFivePercent) {
    Instrument instrument;
    instrument.list(par::SynType1, hypersaw);
    instrument.list(par::SSWave1, 3);
    instrument.set(par::Pw1, 1.0);
    instrument.settle();
    instrument.noteOn(72);
    const Sound sound = instrument.render(2.0);
    const double centre = keyFrequency(72) * (0.5 * 0.118926 + 0.940537);
    const double p = 65534.0 * 65534.0, lowered = centre * (1.0 - p * p * 6.776264e-23);
    for (const double offset : {-1.1641532e-11, 0.0, 1.1641532e-11}) {
        const double wanted = lowered * (1.0 + p * offset);
        const std::vector<float> tail(sound.left.begin() + 9600, sound.left.end());
        EXPECT_NEAR(centsBetween(frequencyOf(tail, wanted, 48000.0, 0.4), wanted), 0.0, 0.5);
        EXPECT_GT(std::abs(component(tail.data(), 48000, wanted, 48000.0)), 0.01);
    }
}

// Below the fundamental of a band-limited saw there is nothing but aliases and rounding.
TEST(Measured, AnInterpolatedWavetableHasItsFloorBelowSixteenBits) {
    for (const float rate : {44100.0f, 48000.0f, 96000.0f}) {
        Instrument instrument(rate);
        instrument.noteOn(79);
        const Sound sound = instrument.render(1.5);
        const auto* x = sound.left.data() + static_cast<std::size_t>(0.3 * rate);
        const auto count = static_cast<std::size_t>(rate);
        const double f = frequencyOf({x, x + count}, keyFrequency(79), rate);
        const double tone = std::abs(component(x, count, f, rate));
        double floor = 0.0;
        for (double at = 1.37; at < 0.45 * rate / f; at += 0.5)
            floor = std::max(floor, std::abs(component(x, count, at * f, rate)) / tone);
        EXPECT_LT(20.0 * std::log10(floor), -96.0) << rate;
        std::printf("  %g Hz: highest spur %.1f dB\n", static_cast<double>(rate), 20.0 * std::log10(floor));
    }
}

TEST(Measured, ANoteStartsWithinATickOfItsFrame) {
    for (const float rate : {44100.0f, 48000.0f, 96000.0f})
        for (const int offset : {0, 1, 47, 100, 255, 511}) {
            Instrument instrument(rate);
            instrument.noteOn(96, 100, offset);
            const Sound sound = instrument.render(0.1);
            const auto start = std::find_if(sound.left.begin(), sound.left.end(), [](float x) { return std::fabs(x) > 1e-3f; });
            const auto at = static_cast<double>(start - sound.left.begin()) / static_cast<double>(rate);
            // The decimator hears a sample up to fifteen internal samples early, and the tone needs a few to rise.
            EXPECT_GE(at, offset / static_cast<double>(rate) - instrument.tick() - 16 / static_cast<double>(rate));
            EXPECT_LE(at, offset / static_cast<double>(rate) + instrument.tick() + 24 / static_cast<double>(rate))
                << rate << " " << offset;
        }
}

TEST(Measured, ASilentTailCostsNoMoreThanASoundingNote) {
    constexpr int hallReverb = 2, lowPass = 2;
    Instrument instrument;
    for (int i = 0; i < 2; ++i) instrument.list(par::FilType1 + i, lowPass);
    for (int i = 0; i < 2; ++i) instrument.set(par::Cutoff1 + i, 0.6);
    instrument.list(par::FxMaType, hallReverb);
    instrument.set(par::FxMaMix, 0.5);
    for (const int n : {par::EqLow, par::EqMid, par::EqHigh}) instrument.set(n, 0.7);
    instrument.set(par::RelVol, 0.75);
    instrument.settle();
    const auto cost = [&](double seconds) {
        std::vector<double> times;
        for (double done = 0.0; done < seconds; done += 0.1) {
            const auto start = std::chrono::steady_clock::now();
            instrument.render(0.1);
            times.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        }
        return *std::min_element(times.begin(), times.end());
    };
    instrument.noteOn(60);
    const double sounding = cost(1.0);
    instrument.noteOff(60);
    const double release = cost(2.0);
    instrument.render(8.0);
    const double silent = cost(1.0);
    EXPECT_LT(release, 1.5 * sounding);
    EXPECT_LT(silent, 1.2 * sounding);
    std::printf("  of real time: sounding %.2f %%, release %.2f %%, silent %.2f %%\n", 1000 * sounding, 1000 * release,
                1000 * silent);
}
