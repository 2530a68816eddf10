#include "base/messages.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace vantoric {
namespace {

TEST(PostedMessages, ComeOutOnceAndInOrder) {
    Messages messages;
    EXPECT_TRUE(messages.take().empty());
    messages.post("Error", "first");
    messages.post("Warning", "second");
    const std::vector<Message> taken = messages.take();
    ASSERT_EQ(taken.size(), 2u);
    EXPECT_EQ(taken[0].title, "Error");
    EXPECT_EQ(taken[0].text, "first");
    EXPECT_EQ(taken[1].text, "second");
    EXPECT_TRUE(messages.take().empty());
}

TEST(PostedMessages, AnOutcomeIsToldIfItHasAText) {
    Messages messages;
    EXPECT_TRUE(messages.post(Outcome::success()));
    EXPECT_FALSE(messages.post(Outcome::silentFailure()));
    EXPECT_TRUE(messages.take().empty());
    EXPECT_FALSE(messages.post(Outcome::failure("path", "no")));
    EXPECT_EQ(messages.take()[0].title, "path");
}

TEST(PostedMessages, WhereNobodyTakesThemDoNotGrowForEver) {
    Messages messages;
    for (std::size_t i = 0; i < 3 * Messages::mostKept; ++i) messages.post("Error", std::to_string(i));
    const std::vector<Message> taken = messages.take();
    ASSERT_EQ(taken.size(), Messages::mostKept);
    EXPECT_EQ(taken[0].text, "0");
}

TEST(PostedMessages, ComeFromManyThreads) {
    Messages messages;
    std::array<std::thread, 3> threads;
    for (std::thread& thread : threads)
        thread = std::thread([&] {
            for (int i = 0; i < 30; ++i) messages.post("Error", "text");
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(messages.take().size(), 90u);
}

}  // namespace
}  // namespace vantoric
