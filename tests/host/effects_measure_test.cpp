// The effects measured from outside: every type in every slot, and the times, depths, rates and levels that come out of
// the module.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/random.h"
#include "effects/multieffect.h"
#include "engine/denormals.h"
#include "tests/host/audio_watch.h"
#include "tests/host/instrument.h"

using namespace testhost;
using namespace vantoric;

namespace {

using Values = std::array<float, 5>;  // mix, parameters 1 to 4

constexpr double straight = 1.3;  // what the last stage makes of a level
constexpr int sawWave = 0;

enum Type {
    reverbBig = 25,
    delay = 6,
    delayBand = 7,
    multitap = 9,
    chorus = 11,
    ensemble = 12,
    compressor = 18,
    equalizer = 20,
    surroundEncode = 21,
    vocoderLinear = 22,
    vibrato = 35,
    tremolo = 37,
    delayWide = 43,
    delayDual = 46,
    tapeDelay = 47,
    echo = 48,
    resonator = 49,
    hardClip = 54,
    degrader = 63,
    noise = 64,
    chorusStandard = 65,
    stereoWidth = 68,
    laserPunch = 69,
    haas = 76,
};

// A slot's numbers of its type and its mix, which the four parameters follow.
struct Place {
    std::string name;
    int type, mix;
};
const Place master{"Master", par::FxMaType, par::FxMaMix};
const Place firstInsert{"FirstInsert", par::FxInType, par::FxInMix};
const Place secondInsert{"SecondInsert", par::FxIn2Type, par::FxIn2Mix};

void choose(Instrument& instrument, const Place& place, int type, const Values& values, int layer = 0) {
    const int first = layer * layerParameterStride;
    instrument.list(place.type + first, type);
    for (int k = 0; k < 5; ++k) instrument.set(place.mix + first + k, static_cast<double>(values[static_cast<std::size_t>(k)]));
}

// A note from a fresh start, and what follows it.
Sound strike(Instrument& instrument, double held, double after = 0.0, int key = 60, int block = 128) {
    instrument.restart();
    instrument.noteOn(key);
    Sound sound = instrument.render(held, block);
    instrument.noteOff(key);
    if (after > 0.0) sound.append(instrument.render(after, block));
    return sound;
}

// The same with a master effect.
Sound struck(Instrument& instrument, int type, const Values& values, double held, double after = 0.0, int key = 60) {
    choose(instrument, master, type, values);
    return strike(instrument, held, after, key);
}

// A note of some milliseconds.
void makeShort(Instrument& instrument) {
    instrument.set(par::DecVol, 0.2);
    instrument.set(par::SusVol, 0.0);
}

double peakOf(const std::vector<float>& x) {
    double most = 0.0;
    for (const float v : x) most = std::max(most, static_cast<double>(std::fabs(v)));
    return most;
}

// Seconds until a sound first comes near its peak.
double onset(const std::vector<float>& x, double rate) {
    const double level = 0.3 * peakOf(x);
    const auto at = std::find_if(x.begin(), x.end(), [&](float v) { return static_cast<double>(std::fabs(v)) > level; });
    return static_cast<double>(at - x.begin()) / rate;
}

// Level of a steady tone in a stretch (seconds).
double toneLevel(const std::vector<float>& x, double frequency, double rate, double from, double to) {
    return std::abs(component(x.data() + static_cast<std::size_t>(from * rate), static_cast<std::size_t>((to - from) * rate),
                              frequency, rate));
}

double noteFrequency(const Sound& dry, double guess, double rate) {
    return frequencyOf({dry.left.begin() + static_cast<std::ptrdiff_t>(0.1 * rate), dry.left.end()}, guess, rate);
}

// Pitch of a tone against `frequency` in cents, looked at every `step` seconds.
std::vector<double> pitchCourse(const std::vector<float>& x, double frequency, double rate, double from, double step) {
    const auto window = static_cast<std::size_t>(step * rate);
    std::vector<double> cents;
    std::complex<double> last = 0.0;
    for (auto at = static_cast<std::size_t>(from * rate); at + window <= x.size(); at += window) {
        const auto now = component(x.data() + at, window, frequency, rate, static_cast<double>(at) / rate);
        if (last != 0.0) cents.push_back(centsBetween(frequency + std::arg(now / last) / (2.0 * pi * step), frequency));
        last = now;
    }
    return cents;
}

double highest(std::vector<double> x) { return *std::max_element(x.begin(), x.end()); }
double lowest(std::vector<double> x) { return *std::min_element(x.begin(), x.end()); }

class EverySlot : public ::testing::TestWithParam<Place> {};
INSTANTIATE_TEST_SUITE_P(Measured, EverySlot, ::testing::Values(master, firstInsert, secondInsert),
                         [](const auto& made) { return made.param.name; });

// What a slot alone makes of a sound, fed as the engine does: a master block by block, an insert tick by tick and from
// the first tick on.
Sound alone(int type, const Values& values, const Sound& dry, bool insert, int rate, int block) {
    const DenormalsOff denormalsOff;
    RandomSources random;
    Multieffect slot(random);
    slot.setSampleRate(static_cast<float>(rate));
    slot.setType(type);
    for (int k = 0; k < 5; ++k) slot.setParameter(k, values[static_cast<std::size_t>(k)]);
    Sound sound = dry;
    for (std::vector<float>* side : {&sound.left, &sound.right})
        for (float& x : *side) x = static_cast<float>(static_cast<double>(x) / straight);
    const int tick = rate / 1000, count = static_cast<int>(dry.left.size());
    for (int at = insert ? tick : 0, end; at < count; at = end) {
        end = std::min(count, (at / block + 1) * block);
        if (insert) end = std::min(end, (at / tick + 1) * tick);
        slot.process(sound.left.data() + at, sound.right.data() + at, end - at);
    }
    for (std::vector<float>* side : {&sound.left, &sound.right})
        for (float& x : *side) x = static_cast<float>(static_cast<double>(x) * straight);
    return sound;
}

// Share of samples from `first` on that lie further apart than `tolerance` of the peak.
double shareApart(const Sound& a, const Sound& b, int first, double tolerance) {
    const double allowed = tolerance * std::max(peakOf(b.left), peakOf(b.right));
    const auto apart = [&](float x, float y) { return std::fabs(static_cast<double>(x - y)) > allowed; };
    int found = 0;
    for (auto i = static_cast<std::size_t>(first); i < a.left.size(); ++i)
        found += apart(a.left[i], b.left[i]) || apart(a.right[i], b.right[i]) ? 1 : 0;
    return static_cast<double>(found) / static_cast<double>(a.left.size());
}

}  // namespace

// At 96 kHz nothing is decimated: what leaves the slot leaves the module.
TEST_P(EverySlot, PlaysEveryTypeAsTheSlotDoesAlone) {
    constexpr int rate = 96000, block = 128;
    const Place& place = GetParam();
    const bool isMaster = place.type == par::FxMaType;
    Instrument instrument(rate);
    instrument.list(par::WTWave1, sawWave);
    instrument.set(par::FilPan1, 0.3);
    const Sound dry = strike(instrument, 0.15, 0.05);
    ASSERT_GT(peakOf(dry.left), 0.01);
    ASSERT_EQ(strike(instrument, 0.15, 0.05), dry);
    for (int type = 0; type < effectTypeCount; ++type) {
        Values values = effectType(type).defaults;
        if (type == tapeDelay) values[3] = 0.0f;  // no hiss
        choose(instrument, place, type, values);
        const Sound wet = strike(instrument, 0.15, 0.05);
        ASSERT_TRUE(wet.finite()) << type;
        if (type == chorus || type == ensemble || type == noise) {
            EXPECT_NE(wet, dry) << type;  // drawn by chance
            EXPECT_LT(peakOf(wet.left), 3.0 * peakOf(dry.left)) << type;
        } else if (isMaster && type == trancegateType) {
            EXPECT_EQ(wet, dry);
        } else {
            // The narrow bands of the vocoders magnify the rounding of their input.
            const double tolerance = effectType(type).family == EffectFamily::vocoder ? 5e-3 : 1e-4;
            const Sound wanted = alone(type, values, dry, !isMaster, rate, block);
            EXPECT_LT(shareApart(wet, wanted, isMaster ? 0 : rate / 1000, tolerance), 1e-3) << type;
        }
    }
}

TEST(MeasuredEffects, NoTypeTakesMemoryOrALockOrMakesASystemCall) {
    constexpr int frames = 256;
    Instrument instrument;
    wire::Effect* const effect = instrument.host().effect();
    std::vector<float> left(frames), right(frames);
    float* outputs[] = {left.data(), right.data()};
    AudioWatch::clearCounts();
    for (int type = 0; type < effectTypeCount; ++type) {
        for (const Place* place : {&master, &firstInsert, &secondInsert})
            choose(instrument, *place, type, effectType(type).defaults);
        for (int block = 0; block < 3; ++block) {
            const AudioWatch watch;
            effect->render(effect, nullptr, outputs, frames);
        }
        EXPECT_EQ(AudioWatch::allocations() + AudioWatch::releases() + AudioWatch::locks() + AudioWatch::systemCalls(), 0)
            << type;
    }
}

// A minute with VANTORIC_LONG_TESTS set.
TEST(MeasuredEffects, NineSlotsBearAnotherTypeOnEveryBlock) {
    constexpr int blocksInSecond = 375;
    const int seconds = std::getenv("VANTORIC_LONG_TESTS") != nullptr ? 60 : 1;
    Instrument instrument;
    for (int layer = 1; layer < 4; ++layer) {
        instrument.set(par::Layer1On + layer, 1.0);
        for (int n = globalParameterCount; n < layerParameterEnd; ++n)
            instrument.set(n + layer * layerParameterStride, static_cast<double>(instrument.host().parameter(n)));
    }
    // What follows a restart, without what the inserts and the decimator give before their first tick.
    const auto afresh = [&] {
        const Sound sound = strike(instrument, 0.1);
        return std::vector<float>(sound.left.begin() + 100, sound.left.end());
    };
    instrument.settle();  // the other layers wake up
    const std::vector<float> before = afresh();
    LinearCongruence generator{7};
    const auto draw = [&] { return generator.unit(); };
    const auto drawSlot = [&](const Place& place, int layer) {
        choose(instrument, place, static_cast<int>(draw() * 76.99f), {draw(), draw(), draw(), draw(), draw()}, layer);
    };
    for (int i = 0; i < seconds * blocksInSecond; ++i) {
        drawSlot(master, 0);
        for (int layer = 0; layer < 4; ++layer) {
            drawSlot(firstInsert, layer);
            drawSlot(secondInsert, layer);
        }
        const Sound sound = instrument.host().render(128);
        ASSERT_TRUE(sound.finite() && sound.intact);
        ASSERT_LT(sound.peak(), 1e4f);
    }
    choose(instrument, master, 0, {});
    for (int layer = 0; layer < 4; ++layer) {
        choose(instrument, firstInsert, 0, {}, layer);
        choose(instrument, secondInsert, 0, {}, layer);
    }
    EXPECT_EQ(afresh(), before);
}

TEST(MeasuredEffects, DelaysComeInTimeWithTheSong) {
    constexpr double beats[] = {0.125, 0.1875, 0.25, 1.0 / 3, 0.375, 0.5, 2.0 / 3, 0.75, 1.0, 4.0 / 3, 1.5, 2.0};
    Instrument instrument;
    HostAnswers& answers = instrument.host().answers();
    answers.knowsTime = answers.timeAdvances = true;
    makeShort(instrument);
    const double start = onset(struck(instrument, 0, {}, 0.1, 0.0, 84).left, 48000.0);
    for (const double tempo : {97.0, 140.0}) {
        answers.time.tempo = tempo;
        for (int i = 0; i < 12; ++i) {
            const double seconds = beats[i] * 60.0 / tempo;
            const float note = (static_cast<float>(i) + 0.5f) / 12.0f;
            for (const int type : {delay, delayBand, delayWide, delayDual, tapeDelay}) {
                if (type != delay && i % 3 != 1) continue;
                const Sound sound = struck(instrument, type, {1.0f, note, note, 0.0f, 0.5f}, seconds + 0.02, 0.0, 84);
                EXPECT_NEAR(onset(sound.right, 48000.0) - start, seconds, type == tapeDelay ? 0.005 : 0.002)
                    << type << " " << i << " at " << tempo;
            }
        }
        // The third of eight steps stands at a quarter of the line.
        const Sound taps = struck(instrument, multitap, {1.0f, 0.3f, 0.0f, 0.36f, 0.0f}, 0.75 * 60.0 / tempo + 0.05, 0.0, 84);
        EXPECT_NEAR(onset(taps.right, 48000.0) - start, 0.75 * 60.0 / tempo * 0.5, 0.002) << tempo;
    }
    // Free times, in milliseconds, and the sides apart.
    const Sound free = struck(instrument, echo, {1.0f, 0.5f, 0.3f, 0.0f, 0.5f}, 0.4, 0.0, 84);
    EXPECT_NEAR(onset(free.left, 48000.0) - start, 0.25, 0.002);
    EXPECT_NEAR(onset(free.right, 48000.0) - start, 0.09, 0.002);
    const Sound late = struck(instrument, haas, {1.0f, 0.5f, 0.0f, 0.5f, 0.5f}, 0.1, 0.0, 84);
    EXPECT_NEAR(onset(late.left, 48000.0) - onset(late.right, 48000.0), 0.02, 0.0005);
}

// Seconds to fall by 60 dB, from the -5 to -25 dB stretch of the backward energy integral (Schroeder 1965).
double decayTime(const std::vector<float>& x, double from, double rate) {
    const auto first = static_cast<std::size_t>(from * rate);
    std::vector<double> left(x.size() + 1, 0.0);
    for (std::size_t i = x.size(); i-- > first;) left[i] = left[i + 1] + static_cast<double>(x[i]) * static_cast<double>(x[i]);
    const auto below = [&](double decibels) {
        const double level = left[first] * std::pow(10.0, decibels / 10.0);
        return std::find_if(left.begin() + static_cast<std::ptrdiff_t>(first), left.end(), [&](double e) { return e < level; });
    };
    return 3.0 * static_cast<double>(below(-25.0) - below(-5.0)) / rate;
}

TEST(MeasuredEffects, AReverbDecaysByItsLoopGainAndItsSize) {
    Instrument instrument;
    makeShort(instrument);
    const auto measured = [&](float size, float decay, double seconds) {
        return decayTime(struck(instrument, reverbBig, {1.0f, size, 0.0f, 0.0f, decay}, seconds, 0.0, 84).left, 0.05, 48000.0);
    };
    // The loop of all six lines loses the gain of the feedback twice.
    const auto expected = [](double size, double decay) {
        const double unit = (size * size * 0.8 + 0.2) * 0.0021088435;
        return 478.0 * unit * 3.0 / -std::log10(decay * 0.99 + 0.01);
    };
    const double middle = measured(0.3f, 0.6f, 6.0), longer = measured(0.3f, 0.75f, 9.0), larger = measured(0.6f, 0.6f, 9.0);
    EXPECT_NEAR(middle / expected(0.3, 0.6), 1.3, 0.4);
    EXPECT_NEAR(longer / middle, expected(0.3, 0.75) / expected(0.3, 0.6), 0.25);
    EXPECT_NEAR(larger / middle, expected(0.6, 0.6) / expected(0.3, 0.6), 0.3);
    std::printf("  60 dB in %.2f s, with more decay %.2f s, with more size %.2f s\n", middle, longer, larger);
}

TEST(MeasuredEffects, VibratoAndChorusBendByTheirCents) {
    Instrument instrument;
    constexpr double rate = 48000.0;
    const double tone = noteFrequency(struck(instrument, 0, {}, 1.0, 0.0, 84), keyFrequency(84), rate);
    const auto course = [&](int type, const Values& values, bool right = false) {
        const Sound sound = struck(instrument, type, values, 3.0, 0.0, 84);
        return pitchCourse(right ? sound.right : sound.left, tone, rate, 0.3, 0.02);
    };
    // The bump of the vibrato turns fastest through its middle, by 24 thousandths at full depth, at any speed.
    for (const float depth : {0.25f, 0.5f, 1.0f})
        for (const float speed : {0.0f, 0.1f}) {
            const auto cents = course(vibrato, {1.0f, speed, depth, 0.0f, 0.0f});
            const double most = 0.024 * static_cast<double>(depth);
            EXPECT_NEAR(highest(cents) / centsBetween(1.0 + most, 1.0), 1.0, 0.08) << depth << " " << speed;
            EXPECT_NEAR(lowest(cents) / centsBetween(1.0 - most, 1.0), 1.0, 0.08) << depth << " " << speed;
        }
    // A triangle: one pitch up, one down, the right side against the left.
    for (const float depth : {0.3f, 1.0f}) {
        const Values values{1.0f, 0.5f, depth, 0.0f, 0.0f};  // one turn a second
        const auto left = course(chorusStandard, values), right = course(chorusStandard, values, true);
        const double most = 0.02 * static_cast<double>(depth);
        EXPECT_NEAR(highest(left) / centsBetween(1.0 + most, 1.0), 1.0, 0.05) << depth;
        EXPECT_NEAR(lowest(left) / centsBetween(1.0 - most, 1.0), 1.0, 0.05) << depth;
        for (std::size_t i = 0; i < left.size(); i += 7) EXPECT_NEAR(left[i] + right[i], 0.0, 2.0) << i;
    }
    // The wandering chorus: the speed of each stretch lies between 0.8 and 1.25 of the plain one, whatever its rate.
    for (const float speed : {0.2f, 1.0f}) {
        const auto cents = course(chorus, {1.0f, speed, 0.5f, 0.0f, 0.0f});
        const double plain = centsBetween(1.0 + 0.5 * 5512.5 * 0.0000015625 + 2756.25 * 0.0000015625, 1.0);
        EXPECT_GT(highest(cents), 0.75 * plain) << speed;
        EXPECT_LT(highest(cents), 1.3 * plain) << speed;
    }
}

TEST(MeasuredEffects, TheGateStepsWithThePositionOfTheSong) {
    const std::string trance = "##__##__######__##__##__######__";
    constexpr double tempo = 120.0;
    Instrument instrument;
    HostAnswers& answers = instrument.host().answers();
    answers.knowsTime = answers.timeAdvances = true;
    answers.time.tempo = tempo;
    const double open = rms(strike(instrument, 0.5, 0.0, 84).left, 10000, 20000);
    constexpr double speeds[] = {0.25, 0.375, 0.5, 0.75, 1.0};
    for (int speed = 0; speed < 5; speed += 2)
        for (const int offset : {0, 1, 3}) {
            choose(instrument, firstInsert, trancegateType,
                   {1.0f, 1.5f / 21.999f, (static_cast<float>(speed) + 0.5f) / 5.0f, 0.0f,
                    (static_cast<float>(offset) + 0.5f) / 4.0f});
            instrument.restart();
            const double stepLength = 60.0 / tempo / 32.0 / speeds[speed];  // seconds
            // The song stands five steps and a half before the end of a pattern as the note starts.
            const double quarters = 8.0 - 5.5 / 32.0 / speeds[speed];
            answers.time.quarters = quarters - instrument.host().position() / 48000.0 * tempo / 60.0;
            instrument.noteOn(84);
            const Sound sound = instrument.render(40.0 * stepLength, 64);
            for (int step = 1; step < 38; ++step) {
                const double middle = (static_cast<double>(step) + 0.0) * stepLength;  // half a step before the song's own
                const auto from = static_cast<std::size_t>((middle - 0.2 * stepLength) * 48000.0);
                const auto to = static_cast<std::size_t>((middle + 0.2 * stepLength) * 48000.0);
                const char sign = trance[static_cast<std::size_t>(32 - 6 + step + 4 * offset) % 32];
                EXPECT_NEAR(rms(sound.left, from, to) / open, sign == '#' ? 1.0 : 0.0, 0.05)
                    << "step " << step << " offset " << offset << " speed " << speed;
            }
        }
}

// A tone in the middle of a band, left, opens the band for a carrier a fifth of the frequency higher, right.
TEST(MeasuredEffects, TheVocoderGivesEachBandItsGain) {
    constexpr double centres[] = {167,  224,  404,  520,  635,  775,  945,  1154, 1407,  1717,
                                  2095, 2553, 3113, 3794, 4626, 5639, 6874, 8380, 10214, 12452};
    constexpr double widths[] = {1, 1.3, 2, 2.5, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3};
    constexpr double gains[] = {0.8,  0.7,  0.8,  0.95, 1.0,  1.0,  1.0, 1.0, 1.0, 1.0,
                                1.02, 1.04, 1.08, 1.12, 1.12, 1.12, 1.1, 1.1, 1.1, 0.99};
    constexpr double rate = 48000.0, internal = 96000.0;
    Instrument instrument;
    instrument.set(par::FilPan1, 0.0);
    instrument.set(par::On1 + 1, 1.0);
    instrument.set(par::Vol1 + 1, 1.0);
    instrument.set(par::Interv1 + 1, 0.15);  // 6 : 5
    instrument.set(par::FiltMix1 + 1, 1.0);
    instrument.set(par::FilVol1 + 1, 1.0);
    instrument.set(par::FilPan1 + 1, 1.0);
    instrument.settle();
    // Four band-pass sections at a frequency.
    const auto passed = [&](int band, double centre, double frequency) {
        const double n = centre / internal, t = std::tan(pi * frequency / internal) / std::tan(pi * n);
        const double width = (1.0 - n * 1.57) * widths[band] * (t - 1.0 / t);
        return std::pow(1.0 + width * width, -2.0);
    };
    for (int band = 2; band < 20; band += 1) {
        const int key = static_cast<int>(std::lround(69.0 + 12.0 * std::log2(centres[band] / 220.0)));
        if (key > 124) continue;  // the carrier would leave the keys
        const Sound dry = struck(instrument, 0, {}, 0.5, 0.0, key);
        const double f = frequencyOf({dry.left.begin() + 4800, dry.left.end()}, keyFrequency(key), rate);
        const double speech = toneLevel(dry.left, f, rate, 0.2, 0.5) / straight;
        const double carrier = toneLevel(dry.right, 1.2 * f, rate, 0.2, 0.5) / straight;
        const Sound wet = struck(instrument, vocoderLinear, {1.0f, 0.5f, 1.0f, 0.0f, 0.0f}, 0.8, 0.0, key);
        const double got = toneLevel(band % 2 == 0 ? wet.right : wet.left, 1.2 * f, rate, 0.5, 0.8) / straight;
        const double level = 2.0 / pi * speech * passed(band, centres[band], f) * gains[band];
        const double wanted = carrier * level * passed(band, 1.2 * centres[band], 1.2 * f) * gains[band] * 128.0 * 0.75;
        EXPECT_NEAR(got / wanted, 1.0, 0.05) << "band " << band << " key " << key;
    }
}

TEST(MeasuredEffects, LevelsAreThoseOfTheirLaws) {
    Instrument instrument;
    constexpr double rate = 48000.0;
    instrument.set(par::LayerVol, 0.6);
    const Sound dry = struck(instrument, 0, {}, 1.0, 0.0, 84);
    const double tone = noteFrequency(dry, keyFrequency(84), rate);
    const auto level = [&](const Sound& sound, bool right = false) {
        return toneLevel(right ? sound.right : sound.left, tone, rate, 0.6, 0.95);
    };
    const double plain = level(dry);

    // Settled, the compressor holds the mean of the rectified tone to its threshold, a half of the square.
    for (const float threshold : {0.2f, 0.3f}) {
        const double held = 0.5 * static_cast<double>(threshold * threshold);
        ASSERT_GT(plain / straight * 2.0 / pi, held);
        EXPECT_NEAR(level(struck(instrument, compressor, {1.0f, threshold, 0.5f, 0.5f, 1.0f}, 1.0, 0.0, 84)),
                    held * pi / 2.0 * straight, 0.03 * held);
    }
    // The left side of a mono sound to be placed left: twice its level, and nothing on the other side.
    const Sound placed = struck(instrument, surroundEncode, {1.0f, 0.25f, 0.5f, 0.5f, 0.5f}, 1.0, 0.0, 84);
    EXPECT_NEAR(level(placed) / plain, 2.0, 1e-3);
    EXPECT_LT(rms(placed.right, 480, 48000), 2e-5);
    // The side signal of a mono sound is silence.
    EXPECT_LT(rms(struck(instrument, stereoWidth, {1.0f, 1.0f, 0.5f, 0.5f, 0.5f}, 0.2, 0.0, 84).left, 480, 9600), 2e-5);
    // Allpasses change no level.
    EXPECT_NEAR(level(struck(instrument, laserPunch, {1.0f, 1.0f, 0.3f, 0.5f, 0.5f}, 1.0, 0.0, 84)) / plain, 1.0, 0.005);
    // The low shelf at its top gives a gain of 4 far below its corner.
    const Sound low = struck(instrument, 0, {}, 1.0, 0.0, 36);
    const double bass = noteFrequency(low, keyFrequency(36), rate);
    const Sound boosted = struck(instrument, equalizer, {1.0f, 1.0f, 0.5f, 0.5f, 0.5f}, 1.0, 0.0, 36);
    EXPECT_NEAR(toneLevel(boosted.left, bass, rate, 0.4, 0.95) / toneLevel(low.left, bass, rate, 0.4, 0.95), 4.0, 0.15);
    // A clipped sine is a square: its third harmonic stands at a third of it.
    const Sound clipped = struck(instrument, hardClip, {1.0f, 1.0f, 0.5f, 0.5f, 0.5f}, 1.0, 0.0, 84);
    EXPECT_NEAR(toneLevel(clipped.left, 3.0 * tone, rate, 0.6, 0.95) / level(clipped), 1.0 / 3.0, 0.03);
    // White noise of a quarter of the square, uniformly distributed; the decimator takes half of its power.
    choose(instrument, master, noise, {1.0f, 0.8f, 0.0f, 0.0f, 0.0f});
    instrument.restart();
    const Sound hiss = instrument.render(0.5);
    EXPECT_NEAR(rms(hiss.left, 2400, 24000), 0.64 * 0.25 / std::sqrt(3.0) * straight * std::sqrt(0.5), 0.004);
}

TEST(MeasuredEffects, RatesAndPitchesAreThoseOfTheirLaws) {
    Instrument instrument(96000.0f);
    constexpr double rate = 96000.0;
    // Dips of the tremolo.
    for (const float speed : {0.3f, 0.6f}) {
        const double hertz = static_cast<double>(speed * speed) * 23.0 + 0.25;
        const Sound sound = struck(instrument, tremolo, {1.0f, speed, 0.5f, 0.5f, 0.5f}, 6.0 / hertz, 0.0, 96);
        const double full = peakOf(sound.left) / std::sqrt(2.0);
        const double first = timeOfLevel(sound.left, rate, 0.5 * full, false, 0.3 / hertz);
        const double fifth = timeOfLevel(sound.left, rate, 0.5 * full, false, 4.3 / hertz);
        EXPECT_NEAR(4.0 / (fifth - first) / hertz, 1.0, 0.01) << speed;
    }
    // The degrader holds each mean for the same number of samples.
    const Sound held = struck(instrument, degrader, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, 0.3, 0.0, 60);
    const auto hold = static_cast<std::size_t>(rate / (law(2.5) * 100.0));
    int steps = 0;
    for (std::size_t i = 9600; i < held.left.size(); ++i) {
        if (held.left[i] == held.left[i - 1]) continue;
        EXPECT_EQ((i + 1) % hold, 0u);
        ++steps;
    }
    EXPECT_NEAR(steps, static_cast<double>(held.left.size() - 9600) / static_cast<double>(hold), 2.0);
    // A resonator of negative feedback rings at its length, one of positive at half its pitch.
    makeShort(instrument);
    const double length = 0.1 * 0.1 + 2.0 / rate;
    for (const auto& [feedback, pitch] : {std::pair{0.02f, 1.0 / length}, {0.98f, 0.5 / length}}) {
        const Sound ring = struck(instrument, resonator, {1.0f, 0.1f, feedback, 0.3f, 0.0f}, 0.8, 0.0, 60);
        double best = 0.0, most = 0.0;
        for (double f = 30.0; f < 120.0; f += 0.5) {
            const double now = toneLevel(ring.left, f, rate, 0.2, 0.7);
            if (now > most) most = now, best = f;
        }
        EXPECT_NEAR(best / pitch, 1.0, 0.02) << feedback;
    }
}
