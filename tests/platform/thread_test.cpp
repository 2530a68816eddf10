#include "platform/thread.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "base/flag.h"

namespace vantoric::platform {
namespace {

int niceness() { return getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid))); }

TEST(Thread, SleepingTakesItsTimeAndIsASleepFunction) {
    const SleepFunction sleep = sleepMilliseconds;
    const auto start = std::chrono::steady_clock::now();
    sleep(5);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(5));
    sleep(0);
    sleep(-1000000);  // returns at once
}

TEST(Thread, LowestPriorityIsTheThreadsOwnAndGivesWay) {
    const int before = niceness();
    int inside = 0;
    std::thread([&] {
        setLowPriority();
        inside = niceness();
    }).join();
    EXPECT_EQ(inside, std::max(before, 10));
    EXPECT_EQ(niceness(), before);
}

}  // namespace
}  // namespace vantoric::platform
