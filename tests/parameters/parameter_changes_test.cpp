#include "parameters/parameter_changes.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>

namespace vantoric {
namespace {

TEST(ParameterChanges, AReaderHearsOfWhatChangedSinceItLastLooked) {
    ParameterChanges changes;
    ParameterChanges::Reader reader(changes);
    EXPECT_FALSE(reader.take().any());
    changes.note(7, ChangeSource::midi);
    changes.note(1223, ChangeSource::host);
    const auto news = reader.take();
    EXPECT_EQ(news.changed.count(), 2u);
    EXPECT_TRUE(news.changed.test(7) && news.changed.test(1223));
    EXPECT_TRUE(news.from(ChangeSource::midi) && news.from(ChangeSource::host));
    EXPECT_FALSE(news.from(ChangeSource::patch) || news.from(ChangeSource::window));
    EXPECT_FALSE(reader.take().any());
}

TEST(ParameterChanges, EveryReaderKeepsItsOwnPace) {
    ParameterChanges changes;
    ParameterChanges::Reader often(changes), seldom(changes);
    changes.note(1, ChangeSource::host);
    EXPECT_TRUE(often.take().changed.test(1));
    changes.note(2, ChangeSource::host);
    EXPECT_EQ(often.take().changed.count(), 1u);
    EXPECT_EQ(seldom.take().changed.count(), 2u);
    ParameterChanges::Reader late(changes);
    EXPECT_FALSE(late.take().any()) << "a new reader begins with what comes";
}

TEST(ParameterChanges, APatchChangesAll) {
    ParameterChanges changes;
    ParameterChanges::Reader reader(changes);
    changes.noteAll(ChangeSource::patch);
    const auto news = reader.take();
    EXPECT_TRUE(news.all && news.has(0) && news.has(1223));
    EXPECT_TRUE(news.changed.none()) << "none by itself";
    EXPECT_TRUE(news.from(ChangeSource::patch));
    EXPECT_FALSE(news.from(ChangeSource::host));
}

TEST(ParameterChanges, WhatIsNoParameterChangesNothing) {
    ParameterChanges changes;
    ParameterChanges::Reader reader(changes);
    for (const int index : {-1, 1224, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        changes.note(index, ChangeSource::host);
    EXPECT_EQ(changes.count(), 0u);
    EXPECT_FALSE(reader.take().any());
}

TEST(ParameterChanges, NoChangeIsLostWhileSeveralThreadsWriteAndOneReads) {
    ParameterChanges changes;
    ParameterChanges::Reader reader(changes);
    std::bitset<parameterCount> told;
    std::thread writers[2];
    for (int w = 0; w < 2; ++w)
        writers[w] = std::thread([&changes, w] {
            for (int i = w; i < parameterCount; i += 2) changes.note(i, static_cast<ChangeSource>(w));
        });
    for (int i = 0; i < 100; ++i) told |= reader.take().changed;
    for (std::thread& writer : writers) writer.join();
    told |= reader.take().changed;
    EXPECT_TRUE(told.all());
}

}  // namespace
}  // namespace vantoric
