#include "voice/matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "base/numbers.h"

namespace vantoric {
namespace {

namespace par = parameter;

// List indices of the sources and destinations that the tests use.
enum SourceIndex {
    lfo1 = 2,
    stepLfoIndex = 5,
    stepLfoBipolar = 6,
    volumeEnv = 7,
    staticOne = 12,
    flipFlopIndex = 14,
    noise = 15,
    key = 17,
    velocityIndex = 18,
    modwheel = 19,
    pitchWheel = 20,
    keySat = 22,
    hold = 31,
    numKeys = 34,
    impulseIndex = 36,
    decay8ms = 37,
    decay16s = 48,
    lfo1Unipolar = 50,
    sine1Hz = 60,
};
enum DestinationIndex {
    off = 0,
    volumeTo = 2,
    separatorTo = 31,
    cutoff1 = 32,
    cutoff2 = 33,
    matrix1 = 49,
    matrix2 = 50,
    matrix10 = 58
};

class Matrix : public testing::Test {
protected:
    Matrix() {
        layer.fill(0.25f);
        smoothed.fill(0.25f);
        std::fill_n(layer.begin() + par::MatSrc1, 32, 0.0f);
        std::fill_n(layer.begin() + par::MatVal1, 16, 0.5f);
    }

    // slot counts from 1.
    void setSlot(int slot, int source, int destination, float amount) {
        layer[static_cast<std::size_t>(par::MatSrc1 + slot - 1)] = listValue(source);
        layer[static_cast<std::size_t>(par::MatDst1 + slot - 1)] = listValue(destination);
        layer[static_cast<std::size_t>(par::MatVal1 + slot - 1)] = amount;
    }

    void tick() {
        slots.compile(layer.data(), engine);
        base.prepare(layer.data(), smoothed.data());
        run(base, mod, seen);
    }
    void run(const ModBase& from, std::array<float, layerParameterEnd>& to, std::uint64_t& toSeen) {
        auto readStep = [this] {
            ++stepReads;
            return stepValue;
        };
        const MatrixInputs inputs{lfo,      readStep, envelopes, decays,      impulse, randomValue,
                                  flipFlop, note,     velocity,  voiceNumber, limit,   random};
        runMatrix(slots, from, inputs, to.data(), toSeen);
    }

    // The value of a source, read through slot 1.
    float read(int source) {
        setSlot(1, source, cutoff1, 1.0f);
        tick();
        return mod[par::Cutoff1] - smoothed[par::Cutoff1];
    }

    std::array<float, layerParameterEnd> layer{}, smoothed{}, mod{};
    ModBase base;
    std::uint64_t seen = 0;
    EngineState engine;
    std::array<Envelope, 4> envelopes;
    DecayGenerators decays;
    RandomSources random;
    std::array<double, 3> lfo = {0.5, 0.5, 0.5};
    float stepValue = 0.5f, impulse = 0, randomValue = 0.5f, flipFlop = 0, voiceNumber = 0;
    int note = 60, velocity = 100, limit = 16;
    int stepReads = 0;
    MatrixSlots slots;
};

TEST_F(Matrix, WithoutSlotsAVoiceSeesTheSlewedParametersAndRestingInputs) {
    for (int n = globalParameterCount; n < layerParameterEnd; ++n) {
        layer[static_cast<std::size_t>(n)] = static_cast<float>(n);
        smoothed[static_cast<std::size_t>(n)] = -static_cast<float>(n);
    }
    std::fill_n(layer.begin() + par::MatSrc1, 32, 0.0f);
    tick();
    for (int n = globalParameterCount; n < par::MatSrc1; ++n) {
        const bool slewed = std::find(slewedParameters.begin(), slewedParameters.end(), n) != slewedParameters.end();
        const bool input = std::find(modulationInputs.begin(), modulationInputs.end(), n) != modulationInputs.end();
        const float expected = input ? 0.5f : slewed ? -static_cast<float>(n) : static_cast<float>(n);
        EXPECT_EQ(mod[static_cast<std::size_t>(n)], expected) << n;
    }
}

TEST_F(Matrix, AnAmountInTheMiddleMakesASlotInert) {
    setSlot(1, staticOne, cutoff1, 0.5f);
    tick();
    EXPECT_EQ(mod[par::Cutoff1], 0.25f);
}

TEST_F(Matrix, StaticShiftsAParameterByAConstant) {
    setSlot(1, staticOne, cutoff1, 1.0f);
    setSlot(15, staticOne, cutoff2, 0.0f);
    tick();
    EXPECT_EQ(mod[par::Cutoff1], 1.25f);
    EXPECT_EQ(mod[par::Cutoff1 + 1], -0.75f);
}

TEST_F(Matrix, ASlotThatMovesAnAmountActsOnTheSameTick) {
    setSlot(1, modwheel, matrix2, 1.0f);
    setSlot(2, staticOne, cutoff1, 0.5f);
    engine.modwheelSmoothed = 0.25f;
    tick();
    EXPECT_EQ(mod[par::MatVal1 + 1], 0.75f);
    EXPECT_EQ(mod[par::Cutoff1], 0.25f + 0.5f);
}

TEST_F(Matrix, SlotsThatMoveEachOthersAmountsActInOrderAndDoNotRunAway) {
    setSlot(1, staticOne, matrix2, 0.75f);
    setSlot(2, staticOne, matrix1, 0.75f);
    for (int i = 0; i < 1000; ++i) tick();
    EXPECT_EQ(mod[par::MatVal1 + 1], 1.25f);  // 0.75 + 0.5
    EXPECT_EQ(mod[par::MatVal1], 2.25f);      // 0.75 + 1.5: slot 2 acts with its moved amount
}

TEST_F(Matrix, TheLastAmountThatASlotCanMoveIsTheTenth) {
    setSlot(1, staticOne, matrix10, 1.0f);
    tick();
    EXPECT_EQ(mod[par::MatVal1 + 9], 1.5f);
    EXPECT_EQ(destinationNumber(matrix10), par::MatVal1 + 9);
    for (int index = 0; index < 128; ++index) {
        EXPECT_LT(destinationNumber(index), par::MatVal1 + 10);
    }
}

TEST_F(Matrix, ContributionsToOneDestinationAddUpWithoutAClamp) {
    for (int slot = 1; slot <= 3; ++slot) setSlot(slot, staticOne, volumeTo, 1.0f);
    tick();
    EXPECT_EQ(mod[par::LayerVol], 3.25f);
}

TEST_F(Matrix, TwoNoiseSlotsReadTwoRandomNumbersOnOneTick) {
    setSlot(1, noise, cutoff1, 1.0f);
    setSlot(2, noise, cutoff2, 1.0f);
    tick();
    LinearCongruence twin;
    EXPECT_EQ(mod[par::Cutoff1], 0.25f + (2.0f * twin.unit() - 1.0f));
    EXPECT_EQ(mod[par::Cutoff1 + 1], 0.25f + (2.0f * twin.unit() - 1.0f));
    EXPECT_NE(mod[par::Cutoff1], mod[par::Cutoff1 + 1]);
}

TEST_F(Matrix, TheAmountPassDrawsItsNoiseFirst) {
    setSlot(1, noise, cutoff1, 1.0f);
    setSlot(2, noise, matrix10, 1.0f);
    tick();
    LinearCongruence twin;
    EXPECT_EQ(mod[par::MatVal1 + 9], 0.5f + (2.0f * twin.unit() - 1.0f));
    EXPECT_EQ(mod[par::Cutoff1], 0.25f + (2.0f * twin.unit() - 1.0f));
}

TEST_F(Matrix, NoiseAimedAtNothingStillDraws) {
    setSlot(1, noise, off, 1.0f);
    setSlot(2, noise, separatorTo, 1.0f);
    setSlot(3, noise, 127, 1.0f);
    tick();
    LinearCongruence twin;
    for (int i = 0; i < 3; ++i) twin.next();
    EXPECT_EQ(random.congruence.state, twin.state);
}

TEST_F(Matrix, TheStepLfoIsAskedOncePerSlotThatReadsIt) {
    tick();
    EXPECT_EQ(stepReads, 0);
    setSlot(1, stepLfoIndex, cutoff1, 1.0f);
    setSlot(2, stepLfoBipolar, cutoff2, 1.0f);
    setSlot(3, stepLfoIndex, off, 1.0f);
    stepValue = 0.75f;
    tick();
    EXPECT_EQ(stepReads, 3);
    EXPECT_EQ(mod[par::Cutoff1], 1.0f);
    EXPECT_EQ(mod[par::Cutoff1 + 1], 0.75f);
}

TEST_F(Matrix, ImpulseActsForTheOneTickOnWhichItIsSet) {
    setSlot(1, impulseIndex, cutoff1, 1.0f);
    impulse = 1.0f;
    tick();
    EXPECT_EQ(mod[par::Cutoff1], 1.25f);
    impulse = 0.0f;
    tick();
    EXPECT_EQ(mod[par::Cutoff1], 0.25f);
}

TEST_F(Matrix, TheHardestVelocityStaysJustBelowOne) {
    smoothed[par::Cutoff1] = 0.0f;
    velocity = 127;
    EXPECT_EQ(read(velocityIndex), 0.9921875f);
    velocity = 0;
    EXPECT_EQ(read(velocityIndex), 0.0f);
}

TEST_F(Matrix, KeyReadsZeroAtNote64) {
    note = 64;
    EXPECT_EQ(read(key), 0.0f);
    EXPECT_EQ(read(keySat), 0.0f);
}

TEST_F(Matrix, TheSaturatingKeyRisesWithTheNoteBetweenMinusOneAndOne) {
    float last = -1.0f;
    for (note = 0; note < 128; ++note) {
        const float value = read(keySat);
        EXPECT_GT(value, last);
        EXPECT_LT(value, 1.0f);
        last = value;
    }
}

TEST_F(Matrix, TheSixteenthTripleHasNoEffect) {
    for (const float amount : {0.0f, 0.5f, 1.0f}) {
        setSlot(16, staticOne, cutoff1, amount);
        tick();
        EXPECT_EQ(mod[par::Cutoff1], 0.25f);
        EXPECT_FALSE(slots.targets(par::Cutoff1));
    }
}

TEST_F(Matrix, AnEnvelopeLevelThatIsReadIsClampedInPlace) {
    envelopes[0].level = 1.7f;
    envelopes[1].level = -0.4f;
    setSlot(1, volumeEnv, off, 1.0f);
    tick();
    EXPECT_EQ(envelopes[0].level, 1.0f);
    EXPECT_EQ(envelopes[1].level, -0.4f);
    EXPECT_EQ(read(volumeEnv), 1.0f);
    envelopes[0].level = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(read(volumeEnv), 0.0f);
}

TEST_F(Matrix, AnLfoIsClampedBeforeItIsMadeBipolar) {
    lfo = {1.5, 0.5, 0.5};
    EXPECT_EQ(read(lfo1), 1.0f);
    EXPECT_EQ(read(lfo1Unipolar), 1.0f);
    lfo[0] = -0.5;
    EXPECT_EQ(read(lfo1), -1.0f);
    EXPECT_EQ(read(lfo1Unipolar), 0.0f);
}

TEST_F(Matrix, DecaysAndSinesReadZeroWhereTheyMoveAnAmount) {
    decays.restart();
    engine.songPosition = 0.5;
    engine.tempoBpm = 120.0;
    setSlot(1, decay8ms, matrix1 + 4, 1.0f);
    setSlot(2, sine1Hz, matrix1 + 5, 1.0f);
    tick();
    EXPECT_EQ(mod[par::MatVal1 + 4], 0.5f);
    EXPECT_EQ(mod[par::MatVal1 + 5], 0.5f);
    EXPECT_TRUE(slots.targets(par::MatVal1 + 4));
    EXPECT_EQ(read(decay8ms), 1.0f);
}

TEST_F(Matrix, TheDecaySourcesFallMoreSlowlyDownTheList) {
    decays.restart();
    for (int i = 0; i < 20; ++i) decays.step();
    float last = 0.0f;
    for (int index = decay8ms; index <= decay16s; ++index) {
        const float value = read(index);
        EXPECT_GT(value, last) << index;
        EXPECT_LT(value, 1.0f);
        last = value;
    }
}

TEST_F(Matrix, ASongLockedSineFollowsThePositionAndStandsWithIt) {
    engine.tempoBpm = 60.0;
    engine.songPosition = 0.25;  // a quarter of a second
    EXPECT_NEAR(read(sine1Hz), 1.0f, 1e-6f);
    EXPECT_NEAR(read(sine1Hz), 1.0f, 1e-6f);
    engine.songPosition = 0.75;
    EXPECT_NEAR(read(sine1Hz), -1.0f, 1e-6f);
    engine.songPosition = 0.0;
    EXPECT_EQ(read(sine1Hz), 0.0f);
}

TEST_F(Matrix, NumKeysCountsTheKeysHeldNow) {
    limit = 8;
    engine.heldNote[0] = engine.heldNote[64] = engine.heldNote[127] = 1;
    EXPECT_EQ(read(numKeys), 0.375f);
    engine.heldNote[64] = 0;
    EXPECT_EQ(read(numKeys), 0.25f);
}

TEST_F(Matrix, WheelsAndControllersReadTheEnginesValues) {
    engine.pitchWheelSmoothed = 0.75f;
    engine.modwheelSmoothed = 0.125f;
    engine.ccValue[64] = 0.9921875f;
    flipFlop = 1.0f;
    EXPECT_EQ(read(pitchWheel), 0.5f);
    EXPECT_EQ(read(modwheel), 0.125f);
    EXPECT_EQ(read(hold), 0.9921875f);
    EXPECT_EQ(read(flipFlopIndex), 1.0f);
}

TEST_F(Matrix, SourcesBeyondTheListAndSeparatorsReadAsNone) {
    for (const int source : {0, 1, 11, 16, 32, 35, 49, 53, 71, 100, 127}) EXPECT_EQ(read(source), 0.0f) << source;
}

TEST_F(Matrix, DestinationsBeyondTheListAndSeparatorsMoveNothing) {
    for (const int destination : {0, 1, 4, 31, 44, 48, 59, 76, 79, 87, 93, 97, 127}) {
        setSlot(1, staticOne, destination, 1.0f);
        tick();
        EXPECT_EQ(destinationNumber(destination), 0);
        EXPECT_TRUE(mod == base.values()) << destination;
    }
    EXPECT_EQ(destinationNumber(-1), 0);
}

// Whatever changes between two ticks, few parameters or many, slots that come, go and aim elsewhere, ticks that a voice
// sleeps through: its copy is what one made from scratch is.
TEST_F(Matrix, ACopyThatTakesWhatChangedIsLikeANewOne) {
    std::mt19937 chance(3);
    const auto below = [&](int end) { return std::uniform_int_distribution<int>(0, end - 1)(chance); };
    constexpr int sources[] = {0, staticOne, flipFlopIndex, 18, 37},
                  destinations[] = {0, cutoff1, cutoff2, matrix2, matrix10, 2, 60};
    for (int t = 0; t < 2000; ++t) {
        switch (below(8)) {
            case 0:
                setSlot(1 + below(15), sources[below(5)], destinations[below(7)], 0.1f * static_cast<float>(below(11)));
                break;
            case 1: layer[globalParameterCount + below(100)] = 0.01f * static_cast<float>(below(100)); break;
            case 2: smoothed[slewedParameters[below(26)]] = 0.01f * static_cast<float>(below(100)); break;
            case 3: std::fill_n(layer.begin() + par::Step1, below(60), 0.01f * static_cast<float>(below(100))); break;
            case 4: layer[par::Oct1] = std::nanf(""); break;
            case 5: base.prepare(layer.data(), smoothed.data()); break;
            default: break;
        }
        velocity = below(128);
        tick();
        ModBase newBase;
        newBase.prepare(layer.data(), smoothed.data());
        std::array<float, layerParameterEnd> made;
        made.fill(-1.0f);
        std::uint64_t never = 0;
        run(newBase, made, never);
        ASSERT_EQ(std::memcmp(mod.data(), made.data(), sizeof mod), 0) << t;
    }
}

TEST_F(Matrix, ATargetCountsWhateverItsSourceIs) {
    setSlot(9, off, cutoff1, 0.5f);
    tick();
    EXPECT_TRUE(slots.targets(par::Cutoff1));
    EXPECT_FALSE(slots.targets(par::Cutoff1 + 1));
    setSlot(9, off, cutoff2, 0.5f);
    tick();
    EXPECT_FALSE(slots.targets(par::Cutoff1));
    EXPECT_TRUE(slots.targets(par::Cutoff1 + 1));
}

TEST_F(Matrix, NothingStaysInAVoiceFromOneTickToTheNext) {
    setSlot(1, staticOne, cutoff1, 1.0f);
    tick();
    setSlot(1, off, off, 0.5f);
    tick();
    EXPECT_EQ(mod[par::Cutoff1], 0.25f);
}

TEST_F(Matrix, AnUnconnectedSlotHasNoTarget) {
    setSlot(1, staticOne, off, 1.0f);
    tick();
    for (int number = 0; number < layerParameterEnd; ++number) EXPECT_FALSE(slots.targets(number)) << number;
}

}  // namespace
}  // namespace vantoric
