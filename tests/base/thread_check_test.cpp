#include "base/thread_check.h"

#include <gtest/gtest.h>

#include <thread>

#include "base/doorbell.h"
#include "base/messages.h"

namespace vantoric {
namespace {

#ifndef NDEBUG
TEST(ThreadCheckDeathTest, WhatMayWaitIsCaughtInsideABlockWhateverItsInstrument) {
    AudioThreadCheck check;
    Messages messages;
    Doorbell bell;
    const char* const caught = "not from within a block";
    EXPECT_DEATH(
        {
            const AudioThreadCheck::Scope inside(check);
            messages.post("Warning", "text");
        },
        caught);
    EXPECT_DEATH(
        {
            const AudioThreadCheck::Scope inside(check);
            bell.ring();
        },
        caught);
}
#endif

TEST(ThreadCheck, TheBlockOfAnotherThreadHindersNobody) {
    AudioThreadCheck check;
    const AudioThreadCheck::Scope inside(check);
    Messages messages;
    std::thread([&messages] { messages.post("Warning", "text"); }).join();
    EXPECT_FALSE(messages.lostSome());
}

}  // namespace
}  // namespace vantoric
