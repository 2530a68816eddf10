// Hosts call from more threads than one: blocks on theirs, states, values and the window's rounds on another.
#include <atomic>
#include <chrono>
#include <thread>

#include "tests/formats/formats_fixture.h"

namespace testhost {
namespace {

// VANTORIC_THREAD_SECONDS says how long; 2 by default.
double secondsOfThreads() {
    const char* const text = std::getenv("VANTORIC_THREAD_SECONDS");
    return text != nullptr ? std::atof(text) : 2.0;
}

TEST_P(Formats, BlocksAndStatesMeet) {
    const auto host = make();
    const Bytes first = host->save(1u << 20);
    host->render(block, {Event::set(0, par::EqLow, 0.125)});
    const Bytes second = host->save(1u << 20);
    std::atomic<bool> isOver{false};
    std::atomic<int> blocks{0}, broken{0};
    std::thread audio([&] {
        for (int i = 0; !isOver; ++i) {
            std::vector<Event> events;
            if (i % 4 == 0) events = {Event::note(3, 40 + i % 40), Event::note(90, 40 + (i + 20) % 40, false)};
            if (i % 5 == 0) events.push_back(Event::set(17, par::EqMid, i % 11 / 10.0));
            if (i % 70 == 69) host->reset();
            if (!host->render(64 + i % 64, events).finite()) ++broken;
            ++blocks;
            std::this_thread::yield();
        }
    });
    using namespace std::chrono;
    const auto end = steady_clock::now() + duration<double>(secondsOfThreads());
    int loads = 0;
    for (; steady_clock::now() < end || loads < 6; ++loads) {
        EXPECT_TRUE(host->load(loads % 2 == 0 ? first : second, 4096));
        EXPECT_FALSE(host->save(4096).empty());
        host->parameter(par::EqMid);
        host->facts(loads % vantoric::parameterCount);
        host->loop();
        host->takeTold();
    }
    isOver = true;
    audio.join();
    EXPECT_GT(blocks, 10);
    EXPECT_EQ(broken, 0);
    EXPECT_TRUE(host->load(first, 4096));
    EXPECT_GT(play(*host, 8).peak(), 0.001f);
}

INSTANTIATE_TEST_SUITE_P(All, Formats, testing::ValuesIn(formats()), [](const auto& format) { return format.param.name; });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Formats);

}  // namespace
}  // namespace testhost
