// What holds for the plug-in of every format, and for a host of each that knows no manners.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

#include "base/parameters.h"
#include "tests/formats/formats_fixture.h"

namespace testhost {

namespace {

TEST_P(Formats, SoundsToTheBitAsTheVst2Plugin) {
    for (const double hostRate : {48000.0, 44100.0, 96000.0}) {
        Reference reference(hostRate);
        const auto host = make(false);
        host->start(hostRate, block);
        const Sound expected = reference.play(40), sound = play(*host, 40);
        ASSERT_GT(expected.peak(), 0.01f);
        EXPECT_TRUE(sound.finite());
        EXPECT_TRUE(sound == expected) << hostRate;
    }
}

// Where the plug-in tells a moved value its host needs memory for it: what is thrown there leaves the block silent.
TEST_P(Formats, ShortMemoryEndsNoCallOfTheHost) {
    for (const bool isWide : {false, true}) {
        const auto host = make(false);
        if (isWide && !host->useDoubles()) continue;
        host->start(rate, block);
        ASSERT_GT(play(*host, 8).peak(), 0.01f);
        host->takeTold();
        host->setAllocationsLeft(0);
        const Sound moved = host->render(block, {Event::controller(0, 1, 80)});
        host->reset();
        host->loop();
        host->setBesideBlocks(par::EqLow, 0.125);
        host->stop();
        host->start(rate, block);
        host->setAllocationsLeft(-1);
        EXPECT_TRUE(host->takeTold().empty());
        EXPECT_TRUE(moved.finite());
        if (GetParam().name != "lv2") {  // which is not told
            EXPECT_EQ(moved.peak(), 0.0f);
        }
        host->render(block);
        const std::vector<Told> told = host->takeTold();
        if (GetParam().name != "lv2") {
            EXPECT_TRUE(std::any_of(told.begin(), told.end(), [](const Told& t) { return t.index == par::Modwheel; }));
        }
        EXPECT_GT(play(*host, 8).peak(), 0.01f);
    }
}

// Calls with ever more allocations that succeed, until one does; returns how often it failed.
template <class Call>
int failuresUntilDone(FormatHost& host, Call call) {
    int failures = 0;
    for (long rest = 0; rest < 1000000; rest += 1 + rest / 16) {
        host.setAllocationsLeft(rest);
        const bool isDone = call();
        host.setAllocationsLeft(-1);
        if (isDone) return failures;
        ++failures;
    }
    ADD_FAILURE() << "it is never done";
    return failures;
}

TEST_P(Formats, AnInstanceThatThereIsNoMemoryForIsNone) {
    const auto host = make();
    if (!host->makesAnother()) GTEST_FAIL() << "with memory neither";
    EXPECT_GT(failuresUntilDone(*host, [&] { return host->makesAnother(); }), 5);
    EXPECT_GT(play(*host, 8).peak(), 0.01f);
}

TEST_P(Formats, AStateThatThereIsNoMemoryForIsNeitherSavedNorLoaded) {
    const auto host = make();
    const Bytes before = host->save(4096);
    host->render(block, {Event::set(0, par::EqLow, 0.125)});
    const Bytes state = host->save(4096);
    ASSERT_NE(state, before);
    EXPECT_GT(failuresUntilDone(*host, [&] { return !host->save(4096).empty(); }), 0);
    EXPECT_EQ(host->save(4096), state);
    const int failures = failuresUntilDone(*host, [&] {
        const bool isLoaded = host->load(before, 4096);
        EXPECT_TRUE(host->render(64, {Event::note(3, 60)}).finite());
        return isLoaded;
    });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(host->save(4096), before);
    EXPECT_GT(play(*host, 8).peak(), 0.01f);
}

TEST_P(Formats, SamplesOf64BitsAreTheSameSound) {
    const auto host = make(), wide = make(false);
    if (!wide->useDoubles()) GTEST_SKIP() << "the format has none";
    wide->start(rate, block);
    const Sound expected = play(*host, 40), sound = play(*wide, 40);
    ASSERT_GT(expected.peak(), 0.01f);
    EXPECT_TRUE(sound == expected);
    for (const auto outputs : {FormatHost::left, FormatHost::none, FormatHost::both})
        for (const int frames : {0, 1, block}) {
            const std::vector<Event> events = {Event::note(0, 60 + frames % 5), Event::set(frames / 2, par::EqLow, 0.25)};
            const Sound a = host->render(frames, events, outputs), b = wide->render(frames, events, outputs);
            if (outputs != FormatHost::none) {
                EXPECT_EQ(a.left, b.left);
            }
            if (outputs == FormatHost::both) {
                EXPECT_EQ(a.right, b.right);
            }
        }
}

TEST_P(Formats, AValueIsHeardAtItsFrame) {
    if (!GetParam().hasFramesOfParameters) GTEST_SKIP() << "the format has no frames for values";
    const auto still = make(), moved = make();
    play(*still, 3);
    play(*moved, 3);
    const Sound a = still->render(block), b = moved->render(block, {Event::set(200, par::Volume, 0.0)});
    EXPECT_TRUE(std::equal(a.left.begin(), a.left.begin() + 200, b.left.begin()));
    for (std::size_t i = 202; i < static_cast<std::size_t>(block); ++i)
        if (std::fabs(a.left[i]) > 1e-3f) {
            EXPECT_NE(a.left[i], b.left[i]) << i;
        }
}

TEST_P(Formats, AValueOfTheHostIsTheInstruments) {
    const auto host = make();
    host->render(block, {Event::set(0, par::EqLow, 0.25), Event::set(0, par::Layer2On, 1.0)});
    Reference reference;
    ASSERT_TRUE(reference.host.setChunk(host->save(1000)));
    EXPECT_EQ(reference.host.parameter(par::EqLow), 0.25f);
    EXPECT_EQ(reference.host.parameter(par::Layer2On), 1.0f);
    if (host->parameter(par::EqLow) >= 0) {
        EXPECT_EQ(host->parameter(par::EqLow), 0.25);
    }
}

TEST_P(Formats, TheStateIsThePatchOfEveryFormat) {
    const auto host = make();
    Reference reference;
    EXPECT_EQ(host->save(1u << 20), reference.host.chunk());
    host->render(block, {Event::set(0, par::EqLow, 0.25)});
    reference.host.setParameter(par::EqLow, 0.25f);
    EXPECT_EQ(host->save(4096), reference.host.chunk());
    ASSERT_TRUE(host->load(reference.host.chunk(), 4096));
    EXPECT_EQ(host->save(4096), reference.host.chunk());
}

TEST_P(Formats, AHostThatSendsBackWhatItHasReadChangesNothing) {
    const auto host = make();
    if (host->parameter(0) < 0) GTEST_SKIP() << "the format does not tell values";
    const Bytes state = host->save(1u << 20);
    std::vector<Event> all;
    for (int i = 0; i < vantoric::parameterCount; ++i) all.push_back(Event::set(i % block, i, host->parameter(i)));
    host->render(block, all);
    EXPECT_EQ(host->save(1u << 20), state);
}

TEST_P(Formats, StatesComeInPiecesOfOneByte) {
    const auto first = make(), second = make(false);
    first->render(block, {Event::set(0, par::EqLow, 0.125)});
    const Bytes state = first->save(1);
    ASSERT_FALSE(state.empty());
    EXPECT_EQ(state, first->save(1u << 20));
    EXPECT_TRUE(second->load(state, 1));
    EXPECT_EQ(second->save(7), state);
}

TEST_P(Formats, AStateOfAnotherSizeChangesNothing) {
    const auto host = make();
    host->render(block, {Event::set(0, par::EqLow, 0.125)});
    const Bytes state = host->save(4096);
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{100}, state.size() / 2, state.size() - 1}) {
        EXPECT_FALSE(host->load(Bytes(state.begin(), state.begin() + static_cast<std::ptrdiff_t>(size)), 4096)) << size;
        EXPECT_EQ(host->save(4096), state);
    }
    Bytes newer = state;
    newer[0] = 255;
    EXPECT_FALSE(host->load(newer, 4096));
    EXPECT_GT(play(*host, 8).peak(), 0.001f);
    Bytes longer = state;
    longer.resize(state.size() + 12345);
    EXPECT_TRUE(host->load(longer, 4096));
    EXPECT_EQ(host->save(4096), state);
}

// The short form of a fuzzer on the state's reader. VANTORIC_STATE_ROUNDS says how many states; 60 by default.
TEST_P(Formats, NoStateBreaksIt) {
    const char* const rounds = std::getenv("VANTORIC_STATE_ROUNDS");
    const auto host = make();
    const Bytes state = host->save(4096);
    std::mt19937 random(42);
    for (int round = 0; round < (rounds != nullptr ? std::atoi(rounds) : 60); ++round) {
        Bytes bad = state;
        const std::size_t head = bad.size() - 12 * 32, changes = 1 + random() % 50;
        for (std::size_t i = 0; i < changes; ++i)
            bad[random() % 3 == 0 ? head + random() % (bad.size() - head) : random() % bad.size()] =
                static_cast<std::uint8_t>(random());
        if (random() % 4 == 0) bad.resize(random() % (2 * bad.size()));
        host->load(bad, 1 + random() % 9999);
        EXPECT_TRUE(host->render(64, {Event::note(3, 60)}).finite());
    }
    EXPECT_TRUE(host->load(state, 4096));
    EXPECT_EQ(host->save(4096), state);
}

TEST_P(Formats, OddOrdersAreBorne) {
    const auto host = make(false);
    host->render(64, {Event::note(0, 60)});  // before it is switched on
    host->save(100);
    host->start(44100, 64);
    host->start(96000, 64);
    host->render(0);
    host->render(0, {Event::note(0, 60), Event::set(0, par::EqLow, 0.3)});
    host->render(1);
    host->render(4 * block);  // more than was said
    host->stop();
    host->stop();
    host->render(64);
    host->start(8000, 1);
    host->start(400, 1);                     // too low for any sound
    host->render(64, {Event::note(0, 60)});  // the end of what was heard before
    EXPECT_LT(host->render(64).peak(), 1e-4f);
    host->start(rate, block);
    EXPECT_GT(play(*host, 8).peak(), 0.001f);
}

TEST_P(Formats, ARateThatIsNoneIsRefused) {
    const auto host = make(false);
    for (const double none : {0.0, -1.0, -48000.0, 1e300, std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
        EXPECT_FALSE(host->takesRate(none)) << none;
    for (const double some : {8000.0, 44100.0, 768000.0}) EXPECT_TRUE(host->takesRate(some)) << some;
    host->start(rate, block);
    EXPECT_GT(play(*host, 8).peak(), 0.001f);
}

TEST_P(Formats, EventsWithoutOrderOrBeyondTheBlockAreHeard) {
    const auto host = make();
    host->render(block, {Event::note(400, 67), Event::note(3, 60), Event::note(1 << 30, 72), Event::set(500, par::EqLow, 0.3),
                         Event::set(2, par::EqLow, 0.2), Event::set(9, 5000, 0.2), Event::set(9, par::EqMid, NAN)});
    EXPECT_GT(play(*host, 8).peak(), 0.001f);
    EXPECT_TRUE(host->render(block).finite());
    std::vector<Event> flood;
    for (int i = 0; i < 3000; ++i) flood.push_back(Event::note(i % block, 30 + i % 60, i % 2 == 0));
    EXPECT_TRUE(host->render(block, flood).finite());
}

TEST_P(Formats, OutputsMayBeUnconnected) {
    const auto host = make(), whole = make();
    const std::vector<Event> notes = {Event::note(0, 60)};
    host->render(block, notes, FormatHost::none);
    host->render(5 * block, {}, FormatHost::none);
    EXPECT_GT(host->render(block, notes, FormatHost::left).left.size(), 0u);
    Sound one;
    for (int i = 0; i < 8; ++i) one.append(host->render(block, {Event::note(0, 60 + i)}, FormatHost::left));
    EXPECT_GT(*std::max_element(one.left.begin(), one.left.end()), 0.001f);
}

TEST_P(Formats, WhatControllersMoveIsTold) {
    if (!GetParam().hasFramesOfParameters) GTEST_SKIP() << "the format tells nothing but through its window";
    const auto host = make();
    host->render(block, {Event::set(0, par::EqLow, 0.25)});
    host->takeTold();
    for (int i = 0; i < 3; ++i)
        host->render(block, i == 0 ? std::vector<Event>{Event::controller(5, 1, 64)} : std::vector<Event>{});
    const auto told = host->takeTold();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].index, par::Modwheel);
    EXPECT_EQ(told[0].plain, 0.5);
}

INSTANTIATE_TEST_SUITE_P(All, Formats, testing::ValuesIn(formats()), [](const auto& format) { return format.param.name; });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Formats);

}  // namespace
}  // namespace testhost
