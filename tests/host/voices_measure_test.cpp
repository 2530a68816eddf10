// What the voices make, measured from outside: the tuning of filters, stacks, noises and modulators, and what the
// distortions do to a spectrum.
#include <gtest/gtest.h>

#include <cstdio>

#include "tests/host/instrument.h"

using namespace testhost;

namespace {

constexpr int hypersaw = 1, noiseAndFractal = 2;
constexpr double detuneSpan = 0.118926, detuneBase = 0.940537;
constexpr double middleDetune = 0.5 * detuneSpan + detuneBase;

enum Filter {
    lowPass12 = 2,
    lowPass24 = 4,
    bandPassDigital = 15,
    notch = 21,
    combPlus = 24,
    combMinus = 25,
    ringmod = 28,
    physString = 47,
    physFlute = 48
};

// Cutoff in Hz: 0.45 of 44100 with the knob open, six nepers below that closed.
double cutoffHertz(double cutoff) { return law(-6.0 * (1.0 - cutoff)) * 0.45 * 44100.0; }

void useFilter(Instrument& instrument, int type, double cutoff, double resonance, double analog = 0.0) {
    instrument.list(par::FilType1, type);
    instrument.set(par::FilKey1, 0.5);
    instrument.set(par::FilEnv1, 0.5);
    instrument.set(par::Cutoff1, cutoff);
    instrument.set(par::Reso1, resonance);
    instrument.set(par::FilAnalo, analog);
    instrument.settle();
}

// The level of the oscillator's sine at a frequency.
double levelAt(Instrument& instrument, double hertz, double seconds = 0.3) {
    const int key = static_cast<int>(std::lround(12.0 * std::log2(hertz / keyFrequency(0))));
    instrument.set(par::Detune1, (hertz / keyFrequency(key) - detuneBase) / detuneSpan);
    instrument.noteOn(key);
    const Sound sound = instrument.render(seconds);
    instrument.noteOff(key);
    instrument.render(0.02);
    const auto from = static_cast<std::size_t>(0.5 * seconds * instrument.rate);
    return std::abs(component(sound.left.data() + from, sound.left.size() - from, hertz, instrument.rate));
}

// Where the answer of a filter has its extreme near `guess`: a parabola through three levels in decibels, a twelfth of an
// octave apart, over the same without the filter.
double extremeNear(Instrument& instrument, int type, double cutoff, double resonance, double guess, double step = 1.0 / 12.0) {
    std::array<double, 3> decibels{};
    for (const bool filtered : {false, true}) {
        useFilter(instrument, filtered ? type : 0, cutoff, resonance);
        for (int k = 0; k < 3; ++k)
            decibels[k] += (filtered ? 20.0 : -20.0) * std::log10(levelAt(instrument, guess * std::exp2((k - 1) * step)));
    }
    const double curve = decibels[0] - 2.0 * decibels[1] + decibels[2];
    return guess * std::exp2(step * 0.5 * (decibels[0] - decibels[2]) / curve);
}

// A burst of noise of one tick into the filter, and what rings on.
Sound pluck(Instrument& instrument, double seconds) {
    constexpr int impulse = 36, oscillatorVolume1 = 28, white = 0;
    instrument.list(par::SynType1, noiseAndFractal);
    instrument.list(par::NoiWave1, white);
    instrument.set(par::Vol1, 0.0);
    instrument.slot(0, impulse, oscillatorVolume1, 1.0);
    instrument.settle();
    instrument.noteOn(60);
    Sound sound = instrument.render(seconds);
    instrument.silence();
    return sound;
}

double ringingNear(const Sound& sound, double guess, double rate) {
    return frequencyOf({sound.left.begin() + static_cast<std::ptrdiff_t>(0.02 * rate), sound.left.end()}, guess, rate);
}

// Mean power in a narrow band of a noise.
double powerAround(const std::vector<float>& x, double hertz, double rate) {
    constexpr std::size_t window = 4096;
    double sum = 0.0;
    int count = 0;
    for (std::size_t at = 0; at + window <= x.size(); at += window / 2)
        for (int k = -4; k <= 4; ++k, ++count) sum += std::norm(component(x.data() + at, window, hertz * (1.0 + 0.02 * k), rate));
    return sum / count;
}

}  // namespace

TEST(Measured, AFilterIsTunedToTheHertzOfItsCutoffAtEveryRate) {
    double worst = 0.0;
    for (const float rate : {44100.0f, 48000.0f, 96000.0f}) {
        Instrument instrument(rate);
        for (const int type : {bandPassDigital, notch})
            for (const double cutoff : {0.3, 0.5, 0.7, 0.85}) {
                const double wanted = cutoffHertz(cutoff);
                const double found = extremeNear(instrument, type, cutoff, type == notch ? 0.6 : 0.8, wanted);
                worst = std::max(worst, std::fabs(centsBetween(found, wanted)));
                EXPECT_NEAR(centsBetween(found, wanted), 0.0, 8.0) << type << " at " << cutoff << " and " << rate;
            }
    }
    std::printf("  largest deviation %.2f cent\n", worst);
}

TEST(Measured, ASelfOscillatingFilterSoundsAtItsCutoff) {
    for (const float rate : {44100.0f, 96000.0f}) {
        Instrument instrument(rate);
        for (const int type : {lowPass12, lowPass24})
            for (const double cutoff : {0.4, 0.6, 0.8}) {
                useFilter(instrument, type, cutoff, 1.0);
                const double wanted = cutoffHertz(cutoff);
                const double found = ringingNear(pluck(instrument, 1.5), wanted, rate);
                EXPECT_NEAR(centsBetween(found, wanted), 0.0, type == lowPass12 ? 5.0 : 20.0)
                    << type << " at " << cutoff << " and " << rate;
            }
    }
}

TEST(Measured, ARingmodMovesATonePartialBySidebandsAtItsRate) {
    for (const float rate : {44100.0f, 96000.0f}) {
        Instrument instrument(rate);
        for (const double cutoff : {0.5, 0.8}) {
            useFilter(instrument, ringmod, cutoff, 1.0);
            const double modulator = std::exp(-6.0 * (1.0 - cutoff)) * 0.45 * 22050.0;
            const double tone = heldPitch(keyFrequency(96) * middleDetune, instrument.internalRate());
            instrument.noteOn(96);
            const Sound sound = instrument.render(2.0);
            instrument.silence();
            for (const double wanted : {tone + modulator, std::fabs(tone - modulator)})
                EXPECT_NEAR(centsBetween(frequencyOf(sound.left, wanted, rate), wanted), 0.0, 0.1) << cutoff << " at " << rate;
            EXPECT_LT(std::abs(component(sound.left.data(), sound.left.size(), tone, rate)),
                      0.001 * std::abs(component(sound.left.data(), sound.left.size(), tone + modulator, rate)));
        }
    }
}

// The length of the line, a sample in its reading and half a sample in the low-pass of its feedback.
TEST(Measured, ACombPeaksAtTheMultiplesOfItsLength) {
    for (const float rate : {44100.0f, 96000.0f}) {
        Instrument instrument(rate);
        for (const int type : {combPlus, combMinus}) {
            constexpr double cutoff = 0.4;
            const double seconds = ((1.0 - cutoff) * (1.0 - cutoff) + 0.002) * 0.006666667 + 1.5 / instrument.internalRate();
            for (const int partial : {1, 3}) {
                const double found = extremeNear(instrument, type, cutoff, 0.5, partial / seconds, 0.02);
                EXPECT_NEAR(centsBetween(found, partial / seconds), 0.0, 3.0) << type << " partial " << partial << " at " << rate;
            }
        }
    }
}

TEST(Measured, StringAndFluteSoundTheSameNote) {
    for (const float rate : {44100.0f, 96000.0f}) {
        Instrument instrument(rate);
        for (const double cutoff : {0.5, 0.7, 0.9}) {
            const double wanted = std::exp((cutoff - 1.0) * 5.9424) * 0.45 / (12.396 * 1.1337868e-05);
            for (const int type : {physString, physFlute}) {
                useFilter(instrument, type, cutoff, 1.0);
                const double found = ringingNear(pluck(instrument, 1.0), wanted, rate);
                EXPECT_NEAR(centsBetween(found, wanted), 0.0, 2.0) << type << " at " << cutoff << " and " << rate;
            }
        }
    }
}

TEST(Measured, EveryVoiceOfAStackStandsAtItsOffset) {
    struct Stack {
        int row;
        std::vector<double> offsets;  // at full width
        double lowering;
        bool exponents;
    };
    constexpr double v = 65534.0 * 65534.0;
    const Stack stacks[] = {
        {3, {1.1641532e-11}, 6.776264e-23, false},
        {4, {5.820766e-12, 1.1641532e-11}, 5.6468869e-23, false},
        {5, {3.8766304e-12, 7.753261e-12, 1.16298915e-11}, 5.25989144e-23, false},
        {6, {2.910383e-12, 5.820766e-12, 8.7311495e-12, 1.1641532e-11}, 5.0821980e-23, false},
        {7, {2.910383e-12, 5.820766e-12, 8.7311495e-12, 1.1641532e-11}, 5.0821980e-23, false},
        {9, {4.5907657e-12, -4.590784e-12, 1.404236e-11, -1.512249e-11, 2.3763942e-11, -2.7139528e-11}, 0.0, true},
        {10, {4.5907657e-12, -4.590784e-12, 1.404236e-11, -1.512249e-11, 2.3763942e-11, -2.7139528e-11}, 0.0, true},
    };
    struct Case {
        float rate;
        double width;
    };
    for (const auto& [rate, width] : {Case{24000.0f, 0.8}, Case{48000.0f, 1.0}}) {
        Instrument instrument(rate);
        instrument.list(par::SynType1, hypersaw);
        instrument.set(par::Pw1, width);
        const double p = width * width * v;
        for (const Stack& stack : stacks) {
            instrument.list(par::SSWave1, stack.row);
            instrument.settle();
            instrument.noteOn(96);
            const Sound sound = instrument.render(1.6);
            instrument.silence();
            const double centre = keyFrequency(96) * middleDetune * (1.0 - p * p * stack.lowering);
            std::vector<double> wanted{centre};
            for (const double offset : stack.offsets) {
                wanted.push_back(centre * (stack.exponents ? std::exp(p * offset) : 1.0 + p * offset));
                if (!stack.exponents) wanted.push_back(centre * (1.0 - p * offset));
            }
            const std::vector<float> tail(sound.left.begin() + static_cast<std::ptrdiff_t>(0.1 * rate), sound.left.end());
            for (const double hertz : wanted) {
                EXPECT_NEAR(centsBetween(frequencyOf(tail, hertz, rate, 0.5), hertz), 0.0, 0.1)
                    << "row " << stack.row << " width " << width << " at " << rate;
                EXPECT_GT(std::abs(component(tail.data(), tail.size(), hertz, rate)), 0.002) << stack.row;
            }
        }
    }
}

TEST(Measured, WhiteIsFlatAndPinkFallsByThreeDecibelsAnOctave) {
    constexpr int white = 0, pink = 12;
    Instrument instrument;
    instrument.list(par::SynType1, noiseAndFractal);
    for (const int wave : {white, pink}) {
        instrument.list(par::NoiWave1, wave);
        instrument.noteOn(60);
        const Sound sound = instrument.render(2.0);
        instrument.silence();
        const double five = powerAround(sound.left, 8000.0, 48000.0) / powerAround(sound.left, 250.0, 48000.0);
        EXPECT_NEAR(10.0 * std::log10(five) / 5.0, wave == white ? 0.0 : -3.01, 0.4) << wave;
    }
}

// Two steps of an eighth of the pitch a sample: the pattern lasts four cycles.
TEST(Measured, SyncedNoiseRepeatsAtAQuarterOfThePitch) {
    constexpr int synced = 7;
    Instrument instrument;
    instrument.list(par::SynType1, noiseAndFractal);
    instrument.list(par::NoiWave1, synced);
    instrument.set(par::Pw1, 0.3);
    instrument.settle();
    instrument.noteOn(96);
    const Sound sound = instrument.render(1.5);
    const double line = keyFrequency(96) * middleDetune / 4.0;
    double lines = 0.0, between = 0.0;
    for (int k = 1; k <= 20; ++k) {
        lines += std::abs(component(sound.left.data() + 4800, 48000, k * line, 48000.0));
        between += std::abs(component(sound.left.data() + 4800, 48000, (k + 0.5) * line, 48000.0));
    }
    EXPECT_GT(lines, 30.0 * between);
}

TEST(Measured, SyncedLfosAndStepsKeepTheTempoOfTheHost) {
    constexpr int lfoUnipolar = 50, stepLfo = 5, filterVolume1 = 38, square = 6, triggerBpm = 2, triggerLoop = 1;
    constexpr double wholeBeats = 6.5 / 13.99, twoThirds = 7.5 / 13.99;  // speeds of one and one and a half cycles a beat
    for (const double tempo : {97.0, 140.0})
        for (const bool steps : {false, true}) {
            Instrument instrument;
            HostAnswers& answers = instrument.host().answers();
            answers.knowsTime = answers.timeAdvances = true;
            answers.time.tempo = tempo;
            instrument.set(par::FilVol1, 0.0);
            instrument.slot(0, steps ? stepLfo : lfoUnipolar, filterVolume1, 1.0);
            instrument.list(par::LfoWave1, square);
            instrument.list(par::LfoMode1, triggerBpm);
            instrument.set(par::LfoSpd1, twoThirds);
            instrument.list(par::StepMode, triggerLoop);
            instrument.set(par::StepSped, wholeBeats);
            instrument.set(par::Steps, 0.0);  // two steps: one loud, one not
            instrument.set(par::Step1, 1.0);
            instrument.settle();
            instrument.noteOn(96);
            const double cycle = 60.0 / tempo / (steps ? 2.0 : 1.5);
            const Sound sound = instrument.render(6.8 * cycle);
            const double high =
                rms(sound.left, static_cast<std::size_t>(0.1 * cycle * 48000), static_cast<std::size_t>(0.4 * cycle * 48000));
            const double first = timeOfLevel(sound.left, 48000.0, 0.4 * high, false, 0.25 * cycle);
            const double sixth = timeOfLevel(sound.left, 48000.0, 0.4 * high, false, 5.25 * cycle);
            EXPECT_NEAR((sixth - first) / 5.0, cycle, 0.0005) << tempo << (steps ? " steps" : " LFO");
        }
}

TEST(Measured, SelfsyncSoundsAnOctaveLower) {
    constexpr int selfsync = 17;
    Instrument instrument;
    instrument.list(par::DisType1, selfsync);
    instrument.set(par::Drive1, 1.0);
    instrument.settle();
    instrument.noteOn(84);
    const Sound sound = instrument.render(1.5);
    const double tone = heldPitch(keyFrequency(84) * middleDetune, 96000.0);
    const std::vector<float> tail(sound.left.begin() + 4800, sound.left.end());
    EXPECT_NEAR(centsBetween(frequencyOf(tail, tone / 2.0, 48000.0), tone / 2.0), 0.0, 0.5);
    EXPECT_GT(std::abs(component(tail.data(), tail.size(), tone / 2.0, 48000.0)),
              1.5 * std::abs(component(tail.data(), tail.size(), tone * 1.5, 48000.0)));
    EXPECT_LT(std::abs(component(tail.data(), tail.size(), tone, 48000.0)),
              0.01 * std::abs(component(tail.data(), tail.size(), tone / 2.0, 48000.0)));
}

TEST(Measured, TheTubeAddsEvenHarmonicsAndTheSoftDriveOddOnes) {
    constexpr int tube = 2, soft = 3;
    Instrument instrument;
    instrument.set(par::Drive1, 0.4);
    instrument.settle();
    const double tone = heldPitch(keyFrequency(84) * middleDetune, 96000.0);
    const auto harmonics = [&](int type) {
        instrument.list(par::DisType1, type);
        instrument.noteOn(84);
        const Sound sound = instrument.render(1.2);
        instrument.silence();
        std::array<double, 4> level{};
        for (int k = 1; k < 4; ++k) level[k] = std::abs(component(sound.left.data() + 4800, 48000, k * tone, 48000.0));
        return level;
    };
    const auto even = harmonics(tube), odd = harmonics(soft);
    EXPECT_GT(even[2], 0.1 * even[1]);
    EXPECT_LT(odd[2], 0.001 * odd[1]);
    EXPECT_GT(odd[3], 0.05 * odd[1]);
}

// At the rates of hosts that run it oversampled the images of a tone stand around the multiples of the held rate.
TEST(Measured, DegradeHoldsItsSamplesForTheTimeOfItsDrive) {
    constexpr int degrade = 18;
    for (const float rate : {44100.0f, 96000.0f}) {
        Instrument instrument(rate);
        instrument.list(par::DisType1, degrade);
        instrument.set(par::Drive1, 0.5);
        instrument.settle();
        instrument.noteOn(84);
        const Sound sound = instrument.render(1.2);
        const double internal = instrument.internalRate();
        const double held = internal / std::floor(law(1.5) * internal * 3.3333334e-5);
        const double tone = heldPitch(keyFrequency(84) * middleDetune, internal);
        const auto from = static_cast<std::size_t>(0.1 * rate);
        const auto level = [&](double hertz) {
            return std::abs(component(sound.left.data() + from, static_cast<std::size_t>(rate), hertz, rate));
        };
        for (const double image : {held - tone, held + tone})
            EXPECT_NEAR(level(image) / level(tone), tone / image, 0.1 * tone / image) << image << " at " << rate;
        EXPECT_LT(level(held - 1.5 * tone), 0.001 * level(tone));
    }
}
