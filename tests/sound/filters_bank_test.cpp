#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

#include "filters_fixture.h"
#include "sound/filter_rack.h"
#include "sound/filters/wide_loops.h"

namespace vantoric {
namespace {

class FilterBankTest : public Filters {
protected:
    ~FilterBankTest() override { filters::useWideLoops(true); }
};

// Tells of both widths that loops come in; where the processor has but one, twice of that.
template <class Claim>
void forBothWidths(Claim&& claim) {
    for (const bool wide : {false, true}) {
        filters::useWideLoops(wide);
        SCOPED_TRACE(filters::wideLoopsInUse() ? "eight lanes" : "four lanes");
        claim();
    }
}

constexpr int tick = 88;

// Sixteen single filters that share one pair of random sources and run one after the other.
struct Voices {
    RandomSources random;
    std::vector<std::unique_ptr<VoiceFilter>> filters;

    Voices() {
        for (int v = 0; v < voiceCount; ++v) filters.push_back(std::make_unique<VoiceFilter>(random));
    }
    void run(float* buffer, int count, LaneMask mask) {
        for (int v = 0; v < voiceCount; ++v) {
            if ((mask >> v & 1) == 0) continue;
            std::vector<float> x;
            for (int i = 0; i < count; ++i) x.push_back(buffer[i * voiceCount + v]);
            filters[v]->run(x.data(), count);
            for (int i = 0; i < count; ++i) buffer[i * voiceCount + v] = x[i];
        }
    }
};

// Settings that differ from voice to voice and move from tick to tick.
FilterSettings settingsAt(int type, int voice, int turn) {
    FilterSettings settings{.sampleRate = 88200.0f, .tickSamples = tick, .type = type};
    settings.cutoff = 0.5f + 0.55f * std::sin(0.7f * voice + 0.13f * turn);
    settings.resonance = 0.5f + 0.52f * std::sin(1.1f * voice + 0.07f * turn);
    settings.analog = voice % 3 == 0 ? 0.0f : 0.06f * voice;
    return settings;
}

// Renders both ways with the types that `typeOf` gives a voice at a turn; every bit must agree.
template <class TypeOf>
void expectSameBits(TypeOf&& typeOf, int turns) {
    RandomSources random;
    FilterBank bank(random);
    Voices voices;
    SignalSource source(3);
    static LaneBuffer lanes, alone;
    constexpr LaneMask masks[] = {0xffff, 0x8000, 0xc000, 0xff00, 0x0a50, 0xfff0, 0x0001, 0x7ffe};
    for (int turn = 0; turn < turns; ++turn) {
        const LaneMask mask = masks[turn / 2 % 8];
        const auto signal = static_cast<Signal>(turn / 16 % 3);
        for (int v = 0; v < voiceCount; ++v) {
            if ((mask >> v & 1) == 0) continue;
            const FilterSettings settings = settingsAt(typeOf(v, turn), v, turn);
            bank.setup(v, settings);
            voices.filters[v]->setup(settings);
            if (turn % 11 == 10 && v % 2 == 0) {
                bank.reset(v);
                voices.filters[v]->reset();
            }
        }
        const int count = turn % 5 == 4 ? 37 : tick;
        for (int i = 0; i < count * voiceCount; ++i) lanes[i] = alone[i] = 0.8f * source.next(signal);
        bank.run(lanes, count, mask);
        voices.run(alone, count, mask);
        for (int v = 0; v < voiceCount; ++v)
            for (int i = 0; i < count && (mask >> v & 1) != 0; ++i)
                ASSERT_EQ(lanes[i * voiceCount + v], alone[i * voiceCount + v])
                    << "type " << typeOf(v, turn) << " turn " << turn << " voice " << v << " sample " << i;
        ASSERT_EQ(random.congruence.state, voices.random.congruence.state);
        ASSERT_EQ(random.hash.counter, voices.random.hash.counter);
    }
}

TEST_F(FilterBankTest, RunsInTheRegistersThatAreAskedFor) {
    filters::useWideLoops(false);
    EXPECT_FALSE(filters::wideLoopsInUse()) << "also where the processor has wide ones";
}

TEST_F(FilterBankTest, GivesTheBitsOfSingleFiltersForEveryType) {
    forBothWidths([] {
        for (const int type : filterIndices()) expectSameBits([type](int, int) { return type; }, 48);
    });
}

TEST_F(FilterBankTest, GivesTheBitsOfSingleFiltersWhenVoicesDifferInType) {
    const std::vector<int> types = filterIndices();
    const int count = static_cast<int>(types.size());
    forBothWidths([&] {
        expectSameBits([&](int voice, int turn) { return types[(voice * 7 + turn / 9) % count]; }, 120);
        // With bypassed voices between voices of two noisy types.
        expectSameBits(
            [&](int voice, int) { return voice % 4 == 0 ? 0 : indexOfFilter(voice % 2 == 0 ? "LP Orvix" : "LP MS-20"); }, 32);
    });
}

void runTogether(FilterBank& first, float* firstBuffer, FilterBank& second, float* secondBuffer, LaneMask mask) {
    FilterRack rack;
    const std::array places{FilterPlace{&first, firstBuffer, mask}, FilterPlace{&second, secondBuffer, mask}};
    rack.run(places, tick);
}

// Two places of a layer with the same type, as one run and as two.
void expectTogetherAsAlone() {
    static LaneBuffer a, b, c, d;
    for (const int type : filterIndices()) {
        RandomSources random, randomAlone;
        FilterBank first(random), second(random), firstAlone(randomAlone), secondAlone(randomAlone);
        SignalSource source(5);
        for (const LaneMask mask : {0xffff, 0x8000, 0xe001, 0x0ff0, 0x8421}) {
            for (int v = 0; v < voiceCount; ++v) {
                FilterSettings one = settingsAt(type, 3, mask & 15), other = settingsAt(type, 3, mask & 15);
                one.analog = 0.02f * v;
                other.analog = 0.4f - 0.02f * v;
                for (FilterBank* bank : {&first, &firstAlone}) bank->setup(v, one);
                for (FilterBank* bank : {&second, &secondAlone}) bank->setup(v, other);
            }
            for (int i = 0; i < tick * voiceCount; ++i) {
                a[i] = c[i] = 0.8f * source.next(Signal::noise);
                b[i] = d[i] = 0.8f * source.next(Signal::noise);
            }
            runTogether(first, a, second, b, mask);
            firstAlone.run(c, tick, mask);
            secondAlone.run(d, tick, mask);
            for (int v = 0; v < voiceCount; ++v)
                for (int i = v; i < tick * voiceCount && (mask >> v & 1) != 0; i += voiceCount) {
                    ASSERT_EQ(a[i], c[i]) << "type " << type << " voice " << v;
                    ASSERT_EQ(b[i], d[i]) << "type " << type << " voice " << v;
                }
        }
    }
}

TEST_F(FilterBankTest, TwoPlacesAtOnceGiveTheBitsOfOneAfterTheOther) { forBothWidths(expectTogetherAsAlone); }

TEST_F(FilterBankTest, ASilentVoiceKeepsItsMemories) {
    RandomSources random;
    FilterBank bank(random);
    FilterUnderTest one("LP 24dB", 0.6f, 0.8f, 0.3f);
    for (int v = 0; v < voiceCount; ++v) bank.setup(v, one.settings);
    const std::vector<float> x = noise(2 * tick);
    const std::vector<float> expected = one.run(x);
    static LaneBuffer buffer;
    for (int part = 0; part < 2; ++part) {
        for (int i = 0; i < tick * voiceCount; ++i) buffer[i] = x[part * tick + i / voiceCount];
        bank.run(buffer, tick, 0x0020);
        for (int i = 0; i < tick; ++i) ASSERT_EQ(buffer[i * voiceCount + 5], expected[part * tick + i]);
        // The voices around it sound in between.
        for (float& sample : buffer) sample = 1.0f;
        bank.run(buffer, tick, 0x00d0);
    }
}

TEST_F(FilterBankTest, VoicesOfOtherTypesAndBypassedOnesAreLeftAlone) {
    RandomSources random;
    FilterBank bank(random);
    for (int v = 0; v < voiceCount; ++v) bank.setup(v, {.type = v == 6 ? 4 : v == 7 ? 1 : 0});
    static LaneBuffer buffer;
    for (float& sample : buffer) sample = 0.25f;
    bank.run(buffer, tick, 0xffff);
    for (int i = 0; i < tick; ++i)
        for (int v = 0; v < voiceCount; ++v)
            if (v != 6) {
                ASSERT_EQ(buffer[i * voiceCount + v], 0.25f);
            }
    EXPECT_NE(buffer[6], 0.25f);
}

TEST_F(FilterBankTest, AFilterThatIsNoLongerFiniteIsClearedAndSilentForOneRun) {
    for (const int type : filterIndices()) {
        if (labelOf(type) == "Ringmod" || labelOf(type) == "Aliaser") continue;  // no feedback: they forget it by themselves
        RandomSources random;
        FilterBank bank(random);
        FilterUnderTest fresh(labelOf(type), 0.6f, 0.5f, 0.2f);
        for (int v = 0; v < voiceCount; ++v) bank.setup(v, fresh.settings);
        static LaneBuffer buffer;
        for (float& sample : buffer) sample = 0.25f;
        bank.run(buffer, tick, 0xffff);
        for (float& sample : buffer) sample = 0.25f;
        buffer[20 * voiceCount + 9] = std::numeric_limits<float>::infinity();
        bank.run(buffer, tick, 0xffff);
        for (int i = 0; i < tick; ++i) {
            ASSERT_EQ(buffer[i * voiceCount + 9], 0.0f) << type;
            for (int v = 0; v < voiceCount; ++v) ASSERT_TRUE(std::isfinite(buffer[i * voiceCount + v])) << type;
        }
        EXPECT_NE(buffer[(tick - 1) * voiceCount + 8], 0.0f) << type;
        for (float& sample : buffer) sample = 0.25f;
        bank.run(buffer, tick, 0xffff);
        float loudest = 0.0f;
        for (int i = 0; i < tick; ++i) loudest = std::max(loudest, std::fabs(buffer[i * voiceCount + 9]));
        EXPECT_TRUE(std::isfinite(loudest) && loudest > 0.0f) << type;
    }
}

TEST_F(FilterBankTest, OfTwoPlacesAtOnceTheOneThatIsNoLongerFiniteIsSilentForTheRun) {
    forBothWidths([] {
        RandomSources random;
        FilterBank first(random), second(random);
        FilterUnderTest fresh("LP 24dB", 0.6f, 0.5f, 0.2f);
        for (int v = 0; v < voiceCount; ++v)
            for (FilterBank* bank : {&first, &second}) bank->setup(v, fresh.settings);
        static LaneBuffer a, b;
        std::fill_n(a, tick * voiceCount, 0.25f);
        std::fill_n(b, tick * voiceCount, 0.25f);
        b[20 * voiceCount + 9] = std::numeric_limits<float>::quiet_NaN();
        runTogether(first, a, second, b, 0xffff);
        const std::vector<float> expected = fresh.run(std::vector<float>(tick, 0.25f));
        for (int i = 0; i < tick; ++i)
            for (int v = 0; v < voiceCount; ++v) {
                ASSERT_EQ(a[i * voiceCount + v], expected[i]);
                ASSERT_EQ(b[i * voiceCount + v], v == 9 ? 0.0f : expected[i]);
            }
        std::fill_n(b, tick * voiceCount, 0.25f);
        second.run(b, tick, 0x0200);
        for (int i = 0; i < tick; ++i) ASSERT_EQ(b[i * voiceCount + 9], expected[i]);
    });
}

TEST_F(FilterBankTest, AClearedVoicePassesAudioAndStartsAfresh) {
    RandomSources random;
    FilterBank bank(random);
    FilterUnderTest comb("Comb+", 0.9f, 0.8f);
    static LaneBuffer buffer;
    for (int round = 0; round < 2; ++round) {
        bank.clear(2);
        for (float& sample : buffer) sample = 0.5f;
        bank.run(buffer, tick, 0x0004);
        for (int i = 0; i < tick; ++i) ASSERT_EQ(buffer[i * voiceCount + 2], 0.5f);
        FilterUnderTest fresh("Comb+", 0.9f, 0.8f);
        bank.setup(2, fresh.settings);
        bank.run(buffer, tick, 0x0004);
        const std::vector<float> expected = fresh.run(std::vector<float>(tick, 0.5f));
        for (int i = 0; i < tick; ++i) ASSERT_EQ(buffer[i * voiceCount + 2], expected[i]);
    }
}

// Sixteen corners of cutoff, resonance and analog at once, and what sweeps away from them.
enum class Sweep { nothing, cutoff, all };

FilterSettings cornerAt(int voice, int turn, Sweep sweep, float rate, int type) {
    const auto sweptFrom = [turn](float corner, float cycle) {
        return std::fabs(0.5f - 0.5f * std::cos(6.2832f * static_cast<float>(turn) / cycle) - corner);
    };
    const float cutoff = static_cast<float>(voice & 3) / 3.0f;
    const float resonance = (voice & 4) != 0 ? 1.0f : 0.0f, analog = (voice & 8) != 0 ? 1.0f : 0.0f;
    return {.sampleRate = rate,
            .tickSamples = static_cast<int>(rate) / 1000,
            .type = type,
            .cutoff = sweep == Sweep::nothing ? cutoff : sweptFrom(cutoff, 100.0f),
            .resonance = sweep == Sweep::all ? sweptFrom(resonance, 71.0f) : resonance,
            .analog = sweep == Sweep::all ? sweptFrom(analog, 43.0f) : analog};
}

// The loudest sample of a type at its corners over `turns` ticks of a signal; infinite if one is not finite.
float loudestAtCorners(FilterBank& bank, int type, float rate, Signal signal, Sweep sweep, int turns) {
    static LaneBuffer buffer;
    SignalSource source(77);
    const int samples = static_cast<int>(rate) / 1000;
    float loudest = 0.0f;
    for (int turn = 0; turn < turns; ++turn) {
        for (int v = 0; v < voiceCount; ++v) bank.setup(v, cornerAt(v, turn, sweep, rate, type));
        for (int i = 0; i < samples; ++i) std::fill_n(buffer + i * voiceCount, voiceCount, source.next(signal));
        bank.run(buffer, samples, 0xffff);
        for (int i = 0; i < samples * voiceCount; ++i) {
            if (!std::isfinite(buffer[i])) return std::numeric_limits<float>::infinity();
            loudest = std::max(loudest, std::fabs(buffer[i]));
        }
    }
    return loudest;
}

// Far below the usual rates some types are tuned past their stability. What comes out before they are cleared
// leaves room for every gain behind them.
TEST_F(FilterBankTest, WhatRunsAwayIsClearedBeforeAnythingOverflows) {
    for (const float rate : {8000.0f, 16000.0f, 22050.0f, 32000.0f, 44100.0f, 48001.0f, 64000.0f})
        for (const int type : filterIndices()) {
            RandomSources random;
            FilterBank bank(random);
            for (const Sweep sweep : {Sweep::nothing, Sweep::cutoff, Sweep::all})
                EXPECT_LT(loudestAtCorners(bank, type, rate, Signal::noise, sweep, 120), 1e24f) << type << " at " << rate;
        }
}

// Whether one of these loops sounds for a type.
template <template <class> class... Topologies>
bool soundsBy(int type) {
    const auto holds = [type](const auto& rows) {
        return std::ranges::any_of(rows, [type](const auto& row) { return row.index == type; });
    };
    return (holds(filters::filterRows<Topologies>) || ...);
}

// Through noise, a square of full scale and silence, a minute each with VANTORIC_LONG_TESTS set.
TEST_F(FilterBankTest, EveryTypeStaysFiniteAndBoundedAtItsExtremes) {
    const int turns = std::getenv("VANTORIC_LONG_TESTS") != nullptr ? 20000 : 100;
    for (const float rate : {88200.0f, 96000.0f, 192000.0f})
        for (const int type : filterIndices()) {
            // Sharp linear sections ring up while they are swept, and stand out when their resonance falls; what
            // saturates stays near full scale.
            const bool linear = soundsBy<filters::BiquadOne, filters::BiquadTwo, filters::BiquadAm, filters::VocalAm>(type);
            RandomSources random;
            FilterBank bank(random);
            for (const Sweep sweep : {Sweep::nothing, Sweep::cutoff, Sweep::all}) {
                float loudest = 0.0f;
                for (const Signal signal : {Signal::noise, Signal::square, Signal::silence})
                    loudest = std::max(loudest, loudestAtCorners(bank, type, rate, signal, sweep, turns));
                EXPECT_LT(loudest, (linear ? 5000.0f : 20.0f) * (sweep == Sweep::all ? 2000.0f : 1.0f)) << type << " at " << rate;
                EXPECT_GT(loudest, 0.01f) << type << " at " << rate;
            }
        }
}

// Cutoff, resonance and analog far past their ends, and all types in turn, each at its own pace for each voice.
FilterSettings anySettings(int voice, int turn, float rate, const std::vector<int>& types) {
    const auto swept = [=](float cycle) {
        return 0.5f - 0.5f * std::cos(6.2832f * static_cast<float>(turn + 29 * voice) / cycle);
    };
    return {.sampleRate = rate,
            .tickSamples = static_cast<int>(rate) / 1000,
            .type = types[static_cast<std::size_t>(turn / 9 + 5 * voice) % types.size()],
            .cutoff = 1.2f * swept(31.0f) - 0.1f,
            .resonance = 1.2f * swept(23.0f) - 0.1f,
            .analog = 8.0f * swept(17.0f) - 4.0f};
}

// The tests above sweep what a patch and its matrix reach; this one whatever a setup takes, through every type.
TEST_F(FilterBankTest, SweptThroughAllTypesAndFarBeyondTheAnalogRangeEverythingStaysFinite) {
    const int turns = std::getenv("VANTORIC_LONG_TESTS") != nullptr ? 200000 : 1000;
    static LaneBuffer buffer;
    const std::vector<int> types = filterIndices();
    for (const float rate : {44100.0f, 96000.0f, 192000.0f}) {
        RandomSources random;
        FilterBank bank(random);
        SignalSource source(13);
        const int samples = static_cast<int>(rate) / 1000;
        float loudest = 0.0f;
        for (int turn = 0; turn < turns; ++turn) {
            const auto signal = static_cast<Signal>(turn / 50 % 3);
            for (int v = 0; v < voiceCount; ++v) bank.setup(v, anySettings(v, turn, rate, types));
            for (int i = 0; i < samples; ++i) std::fill_n(buffer + i * voiceCount, voiceCount, source.next(signal));
            bank.run(buffer, samples, 0xffff);
            for (int i = 0; i < samples * voiceCount; ++i) {
                ASSERT_TRUE(std::isfinite(buffer[i]))
                    << labelOf(anySettings(i % voiceCount, turn, rate, types).type) << " at " << rate << ", turn " << turn;
                loudest = std::max(loudest, std::fabs(buffer[i]));
            }
        }
        EXPECT_LT(loudest, 1e24f) << rate;
        EXPECT_GT(loudest, 0.1f) << rate;
    }
}

}  // namespace
}  // namespace vantoric
