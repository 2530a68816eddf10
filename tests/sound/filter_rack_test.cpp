#include "sound/filter_rack.h"

#include <limits>

#include "filters_fixture.h"
#include "sound/filters/wide_loops.h"

namespace vantoric {
namespace {

constexpr int tick = 96;

class FilterRackTest : public Filters {
protected:
    ~FilterRackTest() override { filters::useWideLoops(true); }
};

// Eight filter places, in a rack or one after the other.
struct Places {
    RandomSources random;
    std::vector<std::unique_ptr<FilterBank>> banks;
    std::vector<std::vector<float>> buffers;
    std::vector<FilterPlace> places;

    Places() : buffers(FilterRack::maxPlaces, std::vector<float>(maxTickSamples * voiceCount)) {
        for (std::vector<float>& buffer : buffers) {
            banks.push_back(std::make_unique<FilterBank>(random));
            places.push_back({banks.back().get(), buffer.data(), 0});
        }
    }
};

// Both ways side by side; every bit must agree.
class Comparison {
public:
    explicit Comparison(bool wide) { filters::useWideLoops(wide); }

    void setup(int place, int voice, const FilterSettings& settings) {
        for (Places* places : {&rack_, &apart_}) places->banks[static_cast<std::size_t>(place)]->setup(voice, settings);
    }
    void fill(int place, LaneMask mask) {
        const auto k = static_cast<std::size_t>(place);
        for (float& x : rack_.buffers[k]) x = 0.8f * source_.next(Signal::noise);
        apart_.buffers[k] = rack_.buffers[k];
        rack_.places[k].mask = apart_.places[k].mask = mask;
    }
    void putIn(int place, int voice, int sample, float x) {
        for (Places* places : {&rack_, &apart_})
            places->buffers[static_cast<std::size_t>(place)][static_cast<std::size_t>(sample * voiceCount + voice)] = x;
    }
    void run(const std::string& what) {
        runner_.run(rack_.places, tick);
        for (const FilterPlace& place : apart_.places) place.bank->run(place.buffer, tick, place.mask);
        for (std::size_t k = 0; k < rack_.places.size(); ++k)
            for (int i = 0; i < tick * voiceCount; ++i) {
                const int voice = i % voiceCount;
                if ((rack_.places[k].mask >> voice & 1) == 0) continue;
                ASSERT_EQ(rack_.places[k].buffer[i], apart_.places[k].buffer[i])
                    << what << ", place " << k << " voice " << voice << " sample " << i / voiceCount;
            }
        ASSERT_EQ(rack_.random.congruence.state, apart_.random.congruence.state) << what;
        ASSERT_EQ(rack_.random.hash.counter, apart_.random.hash.counter) << what;
    }
    float sample(int place, int voice, int at) const {
        return rack_.buffers[static_cast<std::size_t>(place)][static_cast<std::size_t>(at * voiceCount + voice)];
    }

private:
    Places rack_, apart_;
    FilterRack runner_;
    SignalSource source_{11};
};

FilterSettings settingsAt(int type, int place, int voice, int turn) {
    const auto wave = [=](float speed) { return 0.5f + 0.5f * std::sin(speed * (3.0f * voice + place) + 0.1f * turn); };
    return {.sampleRate = 96000.0f,
            .tickSamples = tick,
            .type = type,
            .cutoff = wave(0.7f),
            .resonance = wave(0.3f),
            .analog = voice % 3 == 0 ? 0.0f : 0.7f * wave(0.2f)};
}

// Which voices of a place sound in a turn: one, some or all, in any group.
LaneMask maskAt(int place, int turn) {
    constexpr LaneMask masks[] = {0x8000, 0x8000, 0xc000, 0x0800, 0xffff, 0x0000, 0x0010, 0xf00f, 0x0ff0, 0x8421, 0xff00, 0x0001};
    const int playing[] = {8, 5, 6};  // places with a single voice each
    if (turn < 3) return place < playing[turn] ? 0x8000 : 0x0000;
    return masks[(place * 5 + turn * 7 + turn / 3) % 12];
}

template <class TypeOf>
void expectSameBits(TypeOf&& typeOf, int turns, const std::string& what) {
    for (const bool wide : {false, true}) {
        Comparison both(wide);
        for (int turn = 0; turn < turns; ++turn) {
            for (int place = 0; place < FilterRack::maxPlaces; ++place) {
                for (int v = 0; v < voiceCount; ++v) both.setup(place, v, settingsAt(typeOf(place, v), place, v, turn));
                both.fill(place, maskAt(place, turn));
            }
            ASSERT_NO_FATAL_FAILURE(both.run(what));
        }
    }
}

TEST_F(FilterRackTest, GivesTheBitsOfOnePlaceAfterTheOtherForEveryType) {
    for (const int type : filterIndices()) expectSameBits([type](int, int) { return type; }, 24, labelOf(type));
}

TEST_F(FilterRackTest, GivesTheBitsOfOnePlaceAfterTheOtherWherePlacesOrVoicesDiffer) {
    const std::vector<int> types = filterIndices();
    const auto typeAt = [&](int k) { return types[static_cast<std::size_t>(k) % types.size()]; };
    for (int shift = 0; shift < 51; shift += 3)
        expectSameBits([&](int place, int) { return typeAt(shift + place / 3); }, 8, "places differ");
    expectSameBits([&](int place, int voice) { return voice % 5 == 0 ? 0 : typeAt(place * 7 + voice / 2); }, 24, "voices differ");
    expectSameBits([&](int place, int) { return place % 2 == 0 ? 0 : indexOfFilter("LP Orvix"); }, 8, "half of them off");
}

// One, two or four voices in each place, so that registers are shared in every way.
TEST_F(FilterRackTest, AVoiceThatIsNoLongerFiniteIsClearedAndSilentWhereverItRan) {
    for (const LaneMask few : {0x8000, 0xc000, 0xc0c0})
        for (const bool wide : {false, true})
            for (int bad = 0; bad < FilterRack::maxPlaces; ++bad) {
                Comparison both(wide);
                for (int turn = 0; turn < 2; ++turn) {
                    for (int place = 0; place < FilterRack::maxPlaces; ++place) {
                        for (int v = 0; v < voiceCount; ++v)
                            both.setup(place, v, {.type = indexOfFilter("LP 24dB"), .cutoff = 0.6f, .resonance = 0.5f});
                        both.fill(place, few);
                    }
                    if (turn == 0) both.putIn(bad, 15, 20, std::numeric_limits<float>::infinity());
                    ASSERT_NO_FATAL_FAILURE(both.run("place " + std::to_string(bad)));
                    for (int place = 0; place < FilterRack::maxPlaces; ++place)
                        for (int voice = 0; voice < voiceCount; ++voice)
                            if ((few >> voice & 1) != 0) {
                                const bool isSilent = both.sample(place, voice, tick - 1) == 0.0f;
                                EXPECT_EQ(isSilent, turn == 0 && place == bad && voice == 15);
                            }
                }
            }
}

}  // namespace
}  // namespace vantoric
