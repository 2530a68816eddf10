#include "patch/patch_chunk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "base/numbers.h"
#include "tests/base/failing_allocation.h"
#include "tests/patch/patch_bench.h"

namespace vantoric {
namespace {

using test::allocatedAtMost;
using test::failingAllocation;
using Texts = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

struct Patch : ::testing::Test, PatchBench {
    Patch() {
        failingAllocation = 0;
        allocatedAtMost = 0;
    }
    ~Patch() override { failingAllocation = 0; }

    float value(int number, int layer = 0) const { return parameters.getParameter(hostIndex(number, layer)); }
    void sampleMode(int index) { parameters.writeRaw(hostIndex(parameter::SynType1 + index % 3, index / 3), listValue(3)); }
    // A patch in force that a failing load must leave alone.
    void holdPatchNamedBefore() {
        program.setProgramName("Before");
        parameters.setParameter(parameter::Cutoff1, 0.3f);
        play(0x90, 60, 100);
        calls.clear();
    }
    void expectHeldAndSilent() const {
        EXPECT_EQ(program.getProgramName(), "Before");
        EXPECT_EQ(value(parameter::Cutoff1), 0.3f);
        EXPECT_TRUE(sounding.empty());
        EXPECT_EQ(heldNotes(), 0);
    }
    void expectNoSamples(int from = 0) const {
        for (int k = from; k < chunk::waveCount; ++k) EXPECT_EQ(samples[k].length, 0) << k;
    }
    EngineFlags& flags() { return state.flags; }
};

// Writing.

TEST_F(Patch, WithoutSamplesHasItsFixedSize) { EXPECT_EQ(save().size(), 55169u); }

TEST_F(Patch, HeadHoldsVersionNameAndZeros) {
    program.setProgramName("A name");
    const Bytes bytes = save();
    EXPECT_EQ(bytes[0], 7);
    EXPECT_EQ(std::string(&bytes[1], &bytes[7]), "A name");
    for (int k = 7; k < 737; ++k) EXPECT_EQ(bytes[k], 0) << k;
}

TEST_F(Patch, StoresTwentySixBytesOfItsName) {
    program.setProgramName("abcdefghijklmnopqrstuvwxyz1");
    const Bytes bytes = save();
    EXPECT_EQ(bytes[26], 'z');
    EXPECT_EQ(bytes[27], 0);
}

TEST_F(Patch, ACharacterThatPassesTheNamesFieldIsLeftOut) {
    // 25 letters and one of two bytes: 27, of which 26 have room.
    program.setProgramName(lettersAnd(25, "\xc3\xa9"));
    const Bytes bytes = save();
    EXPECT_EQ(std::string(&bytes[1], &bytes[26]), std::string(25, 'n'));
    EXPECT_EQ(bytes[26], 0);
    program.setProgramName(lettersAnd(24, "\xc3\xa9"));
    EXPECT_EQ(save()[26], 0xa9) << "and one that fits is whole";
}

TEST_F(Patch, WithoutANameIsNoname) {
    program.setProgramName("");
    const Bytes bytes = save();
    EXPECT_EQ(std::string(&bytes[1], &bytes[7]), "Noname");
    EXPECT_EQ(bytes[7], 0);
}

TEST_F(Patch, ParametersStandMostSignificantByteFirst) {
    parameters.setParameter(0, 0.5f);
    const Bytes bytes = save();
    EXPECT_EQ(Bytes(&bytes[737], &bytes[741]), (Bytes{0x3f, 0, 0, 0}));
}

TEST_F(Patch, WritesSamplesOfSampleOscillatorsOnly) {
    sampleMode(1);
    putSample(1, 301, 10, 290, 22050, 5);
    putSample(4, 50, 0, 50, 44100, 6);
    const Bytes bytes = save();
    ASSERT_EQ(bytes.size(), 55169u + 602);
    const auto first = chunk::readSampleHeader(bytes.data(), 1);
    EXPECT_EQ(first.length, 301);
    EXPECT_EQ(first.loopStart, 10);
    EXPECT_EQ(first.loopEnd, 290);
    EXPECT_EQ(first.sampleRate, 22050u);
    const auto other = chunk::readSampleHeader(bytes.data(), 4);
    EXPECT_EQ(other.length, 0);
    EXPECT_EQ(other.sampleRate, 44100u);
    EXPECT_EQ(static_cast<std::int16_t>(chunk::readWord(&bytes[55169 + 600])), samples[1].levels[0][300]);
}

TEST_F(Patch, InvalidSamplesAreEmptiedWithABox) {
    const struct {
        std::int32_t length, loopStart, loopEnd;
        std::uint32_t rate;
    } rows[] = {{-1, 0, 0, 44100},  {16777217, 0, 0, 44100}, {10, 11, 0, 44100}, {10, -1, 0, 44100},
                {10, 0, 11, 44100}, {10, 0, -1, 44100},      {10, 0, 0, 384001}};
    for (const auto& row : rows) {
        told.clear();
        putSample(0, 10, row.loopStart, row.loopEnd, row.rate, 1);
        samples[0].length = row.length;
        EXPECT_EQ(save().size(), 55169u);
        EXPECT_EQ(boxTexts(), (Texts{"Invalid sample parametres."}));
        EXPECT_EQ(samples[0].length, 0);
        EXPECT_EQ(samples[0].loopStart, 0);
        EXPECT_EQ(samples[0].loopEnd, 0);
        EXPECT_EQ(samples[0].sampleRate, 44100u);
    }
}

TEST_F(Patch, ARateOfZeroIsAccepted) {
    sampleMode(0);
    putSample(0, 4, 0, 4, 0, 1);
    EXPECT_EQ(save().size(), 55169u + 8);
    EXPECT_TRUE(told.boxes().empty());
}

TEST_F(Patch, ShortMemoryOnSavingGivesABox) {
    failingAllocation = 50000;
    const ChunkBytes bytes = chunk->getChunk();
    EXPECT_EQ(bytes.data, nullptr);
    EXPECT_EQ(bytes.size, 0);
    EXPECT_EQ(boxTexts(), (Texts{"Memory allocation error on saving"}));
    EXPECT_EQ(told.boxes()[0].title, "Error");
}

TEST_F(Patch, SavingWaitsForALoadTenSecondsAtMost) {
    flags().engineLocked.set();
    EXPECT_EQ(save().size(), 55169u);
    EXPECT_EQ(sleptMilliseconds(), 10000);
    EXPECT_TRUE(flags().engineLocked.isSet());
}

// Reading.

TEST_F(Patch, OfExactlyTheFixedSizeLoads) {
    holdPatchNamedBefore();
    EXPECT_EQ(load(HandMadeChunk().name("After").bytes), 1);
    EXPECT_TRUE(told.boxes().empty());
    EXPECT_EQ(program.getProgramName(), "After");
    EXPECT_EQ(value(parameter::Cutoff1), 0.5f);
    EXPECT_FALSE(flags().engineLocked.isSet());
    EXPECT_TRUE(flags().rebuildRequested.isSet());
    EXPECT_FALSE(flags().rebuildCancel.isSet());
}

TEST_F(Patch, StopsTheNotesFirstAndTellsTheWindowLast) {
    load(HandMadeChunk().bytes);
    std::vector<std::string> order;
    for (const auto& call : calls) order.push_back(call.what);
    EXPECT_EQ(order, (Texts{"allNotesOff", "resetEngine", "resetEngine", "refreshAll", "lookUpPatchName", "allNotesOff",
                            "resetEngine"}));
    EXPECT_FALSE(lockedAtRefresh);
    EXPECT_FALSE(flags().engineLocked.isSet());
}

TEST_F(Patch, NotesEndAndTheEngineIsResetWhileTheBlockIsSilent) {
    load(HandMadeChunk().bytes);
    EXPECT_EQ(callsWhileLocked, 5) << "two before the patch, one within it, two behind it";
    EXPECT_EQ(callsWhileUnlocked, 0);
}

TEST_F(Patch, OneByteShortLoadsNothingAndStaysSilent) {
    holdPatchNamedBefore();
    Bytes bytes = HandMadeChunk().bytes;
    bytes.pop_back();
    EXPECT_EQ(load(bytes), 1);
    EXPECT_TRUE(told.boxes().empty());
    EXPECT_TRUE(flags().engineLocked.isSet());
    expectHeldAndSilent();
}

TEST_F(Patch, OfNoSizeAtAllIsLikeAShortOne) {
    holdPatchNamedBefore();
    const std::uint8_t byte = 0;
    for (const std::int32_t size : {0, -1, std::numeric_limits<std::int32_t>::min(), 1})
        EXPECT_EQ(chunk->setChunk(&byte, size), 1);
    EXPECT_EQ(chunk->setChunk(nullptr, 55169), 1);
    expectHeldAndSilent();
}

TEST_F(Patch, TheNextLoadEndsTheSilenceByForce) {
    flags().engineLocked.set();
    EXPECT_EQ(load(HandMadeChunk().name("Next").bytes), 1);
    EXPECT_GE(sleptMilliseconds(), 1000);
    EXPECT_FALSE(flags().engineLocked.isSet());
    EXPECT_EQ(program.getProgramName(), "Next");
}

TEST_F(Patch, ABlockThatNeverEndsIsWaitedForASecond) {
    flags().audioRunning.set();
    load(HandMadeChunk().bytes);
    EXPECT_EQ(sleptMilliseconds(), 1000);
    EXPECT_FALSE(flags().audioRunning.isSet());
}

TEST_F(Patch, ARebuildThatNeverEndsIsWaitedForASecond) {
    flags().rebuildRunning.set();
    load(HandMadeChunk().bytes);
    EXPECT_EQ(sleptMilliseconds(), 1000);
    EXPECT_FALSE(flags().rebuildRunning.isSet());
}

TEST_F(Patch, OfANewerVersionIsRefused) {
    for (const int version : {8, 255}) {
        holdPatchNamedBefore();
        told.clear();
        EXPECT_EQ(load(HandMadeChunk(version).name("New").bytes), 0);
        EXPECT_EQ(boxTexts(), (Texts{"The preset can not be loaded. The version number of the file format is not supported. You "
                                     "must update Vantori."}));
        EXPECT_EQ(told.boxes()[0].title, "Error");
        EXPECT_FALSE(flags().engineLocked.isSet());
        expectHeldAndSilent();
    }
}

TEST_F(Patch, ARefusedVersionHasAlreadyEndedTheRebuildAndAShortChunkHasNot) {
    flags().rebuildRequested.set();
    load(std::vector<std::uint8_t>(100));
    EXPECT_TRUE(flags().rebuildRequested.isSet());
    EXPECT_FALSE(flags().rebuildCancel.isSet());
    load(HandMadeChunk(8).bytes);
    EXPECT_FALSE(flags().rebuildRequested.isSet());
    EXPECT_TRUE(flags().rebuildCancel.isSet());
    EXPECT_TRUE(flags().rebuildOwed.isSet()) << "the patch in force is still to be built";
}

TEST_F(Patch, TakesUpTo27BytesOfAName) {
    load(HandMadeChunk().name(std::string(27, 'n')).bytes);
    EXPECT_EQ(program.getProgramName(), std::string(27, 'n'));
    load(HandMadeChunk().name(std::string(28, 'n')).bytes);
    EXPECT_EQ(program.getProgramName(), "ThisNameIsTooLong");
    EXPECT_EQ(told.boxes().size(), 1u);
    load(HandMadeChunk().bytes);
    EXPECT_EQ(program.getProgramName(), "Noname");
}

TEST_F(Patch, ParametersOutOfRangeAreClamped) {
    const float infinity = std::numeric_limits<float>::infinity();
    load(HandMadeChunk()
             .parameter(parameter::Cutoff1, 1.5f)
             .parameter(parameter::Cutoff1 + 1, -0.5f)
             .parameter(parameter::Reso1, infinity)
             .parameter(parameter::Reso1 + 1, -infinity)
             .parameter(parameter::Drive1, std::numeric_limits<float>::quiet_NaN())
             .bytes);
    EXPECT_EQ(value(parameter::Cutoff1), 1.0f);
    EXPECT_EQ(value(parameter::Cutoff1 + 1), 0.0f);
    EXPECT_EQ(value(parameter::Reso1), 1.0f);
    EXPECT_EQ(value(parameter::Reso1 + 1), 0.0f);
    EXPECT_EQ(value(parameter::Drive1), 0.0f);
}

TEST_F(Patch, AnIndexBeyondAGuardedListLoadsAsZero) {
    load(HandMadeChunk().parameter(parameter::Quality, listValue(127)).parameter(parameter::FilType1, listValue(127)).bytes);
    EXPECT_EQ(value(parameter::Quality), 0.0f);
    EXPECT_EQ(value(parameter::FilType1), listValue(127));
}

TEST_F(Patch, TheAttackRuleIsForVersionOneOnly) {
    for (int version = 0; version <= 7; ++version) {
        load(HandMadeChunk(version).parameter(parameter::AttVol, 0.01f).bytes);
        EXPECT_EQ(value(parameter::AttVol), version == 1 ? 0.02f : 0.01f) << version;
        load(HandMadeChunk(version).parameter(hostIndex(parameter::AttVol, 3), 0.03f).bytes);
        EXPECT_EQ(value(parameter::AttVol, 3), 0.03f) << version;
    }
}

TEST_F(Patch, OlderVersionsGetWhatTheyDidNotHave) {
    for (int version = 0; version <= 7; ++version) {
        HandMadeChunk made(version);
        for (int i = 0; i < parameterCount; ++i) made.parameter(i, listValue(2));
        load(made.bytes);
        for (int layer = 0; layer < 4; ++layer) {
            const float kept = listValue(2);
            for (int k = 0; k < 3; ++k) EXPECT_EQ(value(parameter::AnaWave1 + k, layer), version <= 3 ? 0.0f : kept) << version;
            EXPECT_EQ(value(269, layer), version <= 6 ? 0.0f : kept) << version;
            for (int n = 270; n <= 274; ++n) EXPECT_EQ(value(n, layer), version <= 6 ? 0.5f : kept) << version;
            for (int row = 10; row < 15; ++row) {
                EXPECT_EQ(value(parameter::MatSrc1 + row, layer), version <= 6 ? 0.0f : kept) << version;
                EXPECT_EQ(value(parameter::MatDst1 + row, layer), version <= 6 ? 0.0f : kept) << version;
                EXPECT_EQ(value(parameter::MatVal1 + row, layer), version <= 6 ? 0.5f : kept) << version;
            }
            EXPECT_EQ(value(parameter::MatSrc1 + 9, layer), kept) << version;
            EXPECT_EQ(value(parameter::MatSrc1 + 15, layer), kept) << version;
        }
    }
}

TEST_F(Patch, AHalfMatrixRowIsCleared) {
    HandMadeChunk made;
    made.parameter(parameter::MatSrc1, listValue(5)).parameter(parameter::MatDst1, 0.0f).parameter(parameter::MatVal1, 0.9f);
    made.parameter(parameter::MatSrc1 + 15, 0.0f).parameter(parameter::MatDst1 + 15, listValue(5));
    made.parameter(hostIndex(parameter::MatSrc1, 3) + 1, listValue(5));
    made.parameter(hostIndex(parameter::MatDst1, 3) + 1, listValue(6));
    made.parameter(hostIndex(parameter::MatVal1, 3) + 1, 0.9f);
    load(made.bytes);
    EXPECT_EQ(value(parameter::MatSrc1), 0.0f);
    EXPECT_EQ(value(parameter::MatDst1), 0.0f);
    EXPECT_EQ(value(parameter::MatVal1), 0.5f);
    EXPECT_EQ(value(parameter::MatDst1 + 15), 0.0f);
    EXPECT_EQ(value(parameter::MatSrc1 + 1, 3), listValue(5));
    EXPECT_EQ(value(parameter::MatDst1 + 1, 3), listValue(6));
    EXPECT_EQ(value(parameter::MatVal1 + 1, 3), 0.9f);
}

TEST_F(Patch, CustomWavesComeBack) {
    for (int k = 0; k < chunk::waveCount; ++k) {
        for (int i = 0; i < chunk::waveSamples; ++i) customWaves[k][i] = static_cast<std::int16_t>(i * 31 - k * 1000);
    }
    const Bytes bytes = save();
    PatchBench other;
    other.load(bytes);
    for (int k = 0; k < chunk::waveCount; ++k) EXPECT_EQ(other.customWaves[k], customWaves[k]) << k;
}

TEST_F(Patch, WavesAreNotStoredBeforeTheWorkerIsThere) {
    Bytes bytes = HandMadeChunk().header(2, {3, 0, 3, 1000}).data(3, 1).bytes;
    std::fill(&bytes[chunk::customWaveOffset], &bytes[chunk::sampleHeaderOffset], std::uint8_t{0x11});
    flags().bootPending.set();
    EXPECT_EQ(load(bytes), 1);
    EXPECT_EQ(customWaves[0][0], 0);
    EXPECT_EQ(samples[2].length, 3);
}

TEST_F(Patch, SamplesComeBackInAllFiveBuffersWhateverTheType) {
    const Bytes bytes = HandMadeChunk().header(1, {40, 3, 39, 32000}).header(11, {2, 0, 0, 0}).data(42, 31).bytes;
    EXPECT_EQ(load(bytes), 1);
    EXPECT_EQ(samples[1].length, 40);
    EXPECT_EQ(samples[1].loopStart, 3);
    EXPECT_EQ(samples[1].loopEnd, 39);
    EXPECT_EQ(samples[1].sampleRate, 32000u);
    EXPECT_EQ(samples[11].length, 2);
    for (int level = 0; level < sampleLevels; ++level) {
        for (int i = 0; i < 40; ++i) {
            EXPECT_EQ(samples[1].levels[level][i], static_cast<std::int16_t>(chunk::readWord(&bytes[55169 + 2 * i])));
        }
        EXPECT_EQ(samples[1].levels[level][40 + sampleGuard - 1], 0);
    }
    EXPECT_TRUE(told.boxes().empty());
}

TEST_F(Patch, InSampleModeIsTheSameAfterARoundTrip) {
    sampleMode(5);
    putSample(5, 1000, 100, 900, 48000, 9);
    program.setProgramName("Round trip");
    chunk->cleanMatrix();
    const Bytes bytes = save();
    PatchBench other;
    EXPECT_EQ(other.load(bytes), 1);
    EXPECT_EQ(other.save(), bytes);
}

TEST_F(Patch, OfAnotherTypeLosesItsSampleOnSaving) {
    putSample(5, 1000, 100, 900, 48000, 9);
    const Bytes bytes = save();
    EXPECT_EQ(samples[5].length, 1000);
    load(bytes);
    EXPECT_EQ(samples[5].length, 0);
}

TEST_F(Patch, BadSampleHeadersAreRefusedBeforeAnyDataAreRead) {
    const std::int32_t most = std::numeric_limits<std::int32_t>::max(), least = std::numeric_limits<std::int32_t>::min();
    const chunk::SampleHeader headers[] = {{27585, 0, 0, 44100},  {most, 0, 0, 44100}, {least, 0, 0, 44100},  {-1, 0, 0, 44100},
                                           {0x40000000, 0, 0, 1}, {10, 11, 0, 44100},  {10, 0, 11, 44100},    {10, -1, 0, 44100},
                                           {10, 0, -1, 44100},    {10, 0, 0, 384001},  {10, 0, 0, 0xffffffff}};
    for (const auto& header : headers) {
        for (const int index : {0, 7, 11}) {
            PatchBench bench;
            bench.putSample(index, 20, 0, 20, 22050, 1);
            allocatedAtMost = 0;
            EXPECT_EQ(bench.load(HandMadeChunk().name("Bad").header(index, header).bytes), 0);
            EXPECT_EQ(bench.boxTexts(), (Texts{"Invalid sample header"}));
            EXPECT_EQ(bench.told.boxes()[0].title, "Error");
            EXPECT_EQ(bench.samples[index].length, 0);
            EXPECT_EQ(bench.samples[index].sampleRate, 44100u);
            EXPECT_TRUE(bench.state.flags.engineLocked.isSet());
            EXPECT_EQ(bench.program.getProgramName(), "Bad");
            EXPECT_LT(allocatedAtMost, 100000u);
        }
    }
}

TEST_F(Patch, MissingSampleDataAreRefused) {
    Bytes bytes = HandMadeChunk().header(0, {100, 0, 100, 44100}).header(3, {50, 1, 2, 96000}).data(150, 9).bytes;
    EXPECT_EQ(load(bytes), 1);
    for (const int missing : {1, 2, 99, 100}) {
        PatchBench bench;
        EXPECT_EQ(bench.load({bytes.begin(), bytes.end() - missing}), 0) << missing;
        EXPECT_EQ(bench.boxTexts(), (Texts{"Invalid sample chunk size."}));
        EXPECT_EQ(bench.told.boxes()[0].title, "Error");
        EXPECT_EQ(bench.samples[0].length, 100);
        EXPECT_EQ(bench.samples[3].length, 0);
        EXPECT_TRUE(bench.state.flags.engineLocked.isSet());
        EXPECT_FALSE(bench.state.flags.rebuildRequested.isSet());
    }
}

TEST_F(Patch, NobodyWaitsForTheLockOfALoadThatFailed) {
    EXPECT_EQ(load(HandMadeChunk().name("Bad").header(0, {-1, 0, 0, 44100}).bytes), 0);
    EXPECT_TRUE(flags().engineLocked.isSet());
    sleptMilliseconds() = 0;
    EXPECT_EQ(save().size(), 55169u);
    EXPECT_EQ(load(HandMadeChunk().name("Good").bytes), 1);
    EXPECT_EQ(sleptMilliseconds(), 0);
    EXPECT_FALSE(flags().engineLocked.isSet());
    EXPECT_EQ(program.getProgramName(), "Good");
}

TEST_F(Patch, HeadersThatClaimTooMuchTogetherTakeNoMemory) {
    HandMadeChunk made;
    for (int k = 0; k < chunk::waveCount; ++k) made.header(k, {27584, 0, 0, 44100});
    allocatedAtMost = 0;
    EXPECT_EQ(load(made.bytes), 0);
    EXPECT_EQ(boxTexts(), (Texts{"Invalid sample chunk size."}));
    expectNoSamples();
    EXPECT_LT(allocatedAtMost, 50000u);
}

TEST_F(Patch, BytesBehindTheDataAreIgnored) {
    EXPECT_EQ(load(HandMadeChunk().header(0, {3, 0, 3, 44100}).data(50, 9).bytes), 1);
    EXPECT_EQ(samples[0].length, 3);
}

TEST_F(Patch, ShortMemoryOnLoadingGivesABox) {
    const Bytes bytes = HandMadeChunk().header(0, {5, 0, 5, 1}).header(1, {50000, 0, 0, 1}).data(50005, 3).bytes;
    failingAllocation = 90000;
    EXPECT_EQ(load(bytes), 0);
    EXPECT_EQ(boxTexts(), (Texts{"Not enought memory."}));
    EXPECT_EQ(told.boxes()[0].title, "Error SetCh1");
    EXPECT_EQ(samples[0].length, 5);
    expectNoSamples(1);
    EXPECT_TRUE(flags().engineLocked.isSet());
}

TEST_F(Patch, ReplacesTheSamplesOfThePatchBefore) {
    for (int k = 0; k < chunk::waveCount; ++k) putSample(k, 100 + k, 0, 50, 22050, 1);
    EXPECT_EQ(load(HandMadeChunk().bytes), 1);
    expectNoSamples();
    for (const Sample& sample : samples) EXPECT_EQ(sample.loopEnd, 0);
}

TEST_F(Patch, ABlockOrAWorkerThatNeverEndsReadsOnFromWhatItHad) {
    for (Passes* reader : {&flags().blockPasses, &flags().workerPasses}) {
        putSample(0, 100, 0, 50, 22050, 1);
        const std::int16_t* const read = samples[0].levels[0].get();
        const std::int16_t last = read[99];
        {
            const Passes::Scope reading(*reader);
            flags().audioRunning.set();
            flags().rebuildRunning.set();
            EXPECT_EQ(load(HandMadeChunk().bytes), 1);
            EXPECT_EQ(sleptMilliseconds(), 2000) << "both were forced";
            EXPECT_EQ(samples[0].length, 0);
            EXPECT_GE(access.retired(), static_cast<std::size_t>(sampleLevels));
            EXPECT_EQ(read[99], last);
        }
        chunk->cleanMatrix();
        EXPECT_EQ(access.retired(), 0u);
        sleptMilliseconds() = 0;
    }
}

TEST_F(Patch, LoadLeavesTheControllerMapAndTheQueue) {
    ccMap.set(7, 97);
    receive(0x90, 60, 100, 500);
    load(HandMadeChunk().bytes);
    EXPECT_EQ(ccMap.get(7), 97);
    EXPECT_EQ(intake.queued(0).data1, 60);
}

}  // namespace
}  // namespace vantoric
