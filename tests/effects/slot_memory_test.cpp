// The memory of a slot: mapped by whoever asks for it beforehand, not by the thread that plays.
#include <sys/resource.h>

#include <memory>
#include <thread>

#include "effects/multieffect.h"
#include "tests/effects/effect_run.h"

namespace vantoric {
namespace {

using namespace testing_effects;

// Pages that the system had to map for this thread so far.
long mappedPages() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_minflt;
}

void touchElsewhere(Multieffect& slot, int type) {
    std::thread([&] { slot.touchMemory(type); }).join();
}

// Pages mapped while a type plays long enough to go once round its lines, before and after a change of type. `touched`: its
// memory is touched before each time that it is set.
long pagesWhilePlaying(Multieffect& slot, int type, bool touched) {
    constexpr int block = 88, round = 270000;
    std::array<float, block> left, right;
    const auto play = [&](int count) {
        for (int done = 0; done < count; done += block) {
            left.fill(0.25f);
            right.fill(-0.25f);
            slot.process(left.data(), right.data(), block);
        }
    };
    play(block);
    long pages = 0;
    for (int time = 0; time < 2; ++time) {
        if (touched) touchElsewhere(slot, type);
        const long before = mappedPages();
        slot.setType(0);
        slot.setType(type);
        play(round);
        pages += mappedPages() - before;
    }
    return pages;
}

TEST(SlotMemory, TouchedBeforehandMapsNothingWhileATypePlays) {
    if (sanitized) GTEST_SKIP() << "the sanitizer maps memory of its own";
    for (int type = 0; type < effectTypeCount; ++type) {
        RandomSources random;
        const auto slot = std::make_unique<Multieffect>(random);
        slot->setSampleRate(88200.0f);
        slot->setParameter(3, 1.0f);
        slot->setParameter(4, 1.0f);
        EXPECT_LE(pagesWhilePlaying(*slot, type, true), 2) << effectType(type).name;
    }
}

TEST(SlotMemory, UntouchedLinesAreMappedAsTheyAreUsed) {
    if (sanitized) GTEST_SKIP() << "the sanitizer maps memory of its own";
    constexpr int delay = 6;
    RandomSources random;
    const auto slot = std::make_unique<Multieffect>(random);
    slot->setSampleRate(88200.0f);
    EXPECT_GT(pagesWhilePlaying(*slot, delay, false), 500);
}

// An instance that was opened and closed leaves nothing that the next one has to clear.
TEST(SlotMemory, ASlotCostsNoMemoryBeforeItPlaysHoweverManyWereThereBefore) {
    if (sanitized) GTEST_SKIP() << "the sanitizer maps memory of its own";
    constexpr int multitap = 9;
    for (int round = 0; round < 3; ++round) {
        RandomSources random;
        const long before = mappedPages();
        const auto slot = std::make_unique<Multieffect>(random);
        EXPECT_LT(mappedPages() - before, 100) << round;
        pagesWhilePlaying(*slot, multitap, false);
    }
}

// The buffers that stand by for a clear take no memory before there is something to clear.
TEST(SlotMemory, ATypeTakesTheOtherHalfOfItsMemoryOnlyOnceItHasPlayed) {
    if (sanitized) GTEST_SKIP() << "the sanitizer maps memory of its own";
    constexpr int delay = 6;
    RandomSources random;
    const auto slot = std::make_unique<Multieffect>(random);
    slot->setSampleRate(88200.0f);
    const auto pagesOfATouch = [&] {
        const long before = mappedPages();
        slot->touchMemory(delay);
        return mappedPages() - before;
    };
    const long first = pagesOfATouch();
    EXPECT_GT(first, 200);
    EXPECT_LE(pagesOfATouch(), 2);
    slot->setType(delay);
    run(*slot, noise(8800));
    EXPECT_NEAR(pagesOfATouch(), first, 10);
    EXPECT_LE(pagesOfATouch(), 2);
}

// A slot that stays off costs no memory to speak of.
TEST(SlotMemory, TypesWithoutLinesTouchNothing) {
    if (sanitized) GTEST_SKIP() << "the sanitizer maps memory of its own";
    constexpr int off = 0, separator = 5, phaser = 13, tremolo = 37, compressor = 18, tubeAmp = 19, laserPunch = 69;
    RandomSources random;
    const auto slot = std::make_unique<Multieffect>(random);
    const long before = mappedPages();
    for (const int type : {off, separator, phaser, tremolo, compressor, tubeAmp, laserPunch, -1, 77}) slot->touchMemory(type);
    EXPECT_LE(mappedPages() - before, 2);
}

// By then the worker is late, but nobody hears it.
TEST(SlotMemory, MayBeTouchedWhileItPlays) {
    RandomSources random, same;
    const auto slot = std::make_unique<Multieffect>(random), alone = std::make_unique<Multieffect>(same);
    const Sound in = noise(sanitized ? 4000 : 200000);
    for (const int type : {2, 9, 24, 45, 15}) {
        slot->setType(type);
        alone->setType(type);
        std::thread worker([&] { slot->touchMemory(type); });
        const Sound out = run(*slot, in);
        worker.join();
        EXPECT_EQ(out, run(*alone, in)) << type;
    }
}

}  // namespace
}  // namespace vantoric
