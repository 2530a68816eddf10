#include "faces/common/host_news.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <string>
#include <vector>

namespace vantoric {
namespace {

struct GesturesTest : testing::Test {
    std::string taken() {
        std::string told;
        gestures.take([&](int i, bool isBegin) { told += (isBegin ? "[" : "]") + std::to_string(i); },
                      [&](int i) { told += "=" + std::to_string(i); });
        return told;
    }
    Gestures gestures;
};

TEST_F(GesturesTest, BeginAndEndAreToldInTurn) {
    EXPECT_FALSE(gestures.any());
    gestures.begin(3);
    EXPECT_TRUE(gestures.any());
    EXPECT_EQ(taken(), "[3=3");
    EXPECT_EQ(taken(), "");
    gestures.end(3);
    EXPECT_EQ(taken(), "=3]3");
}

TEST_F(GesturesTest, AGestureBetweenTwoLooksIsToldWhole) {
    gestures.begin(7);
    gestures.end(7);
    gestures.begin(7);
    gestures.end(7);
    EXPECT_EQ(taken(), "[7=7]7");
}

TEST_F(GesturesTest, OneThatEndsAndBeginsAgainGoesOn) {
    gestures.begin(7);
    EXPECT_EQ(taken(), "[7=7");
    gestures.end(7);
    gestures.begin(7);
    EXPECT_EQ(taken(), "=7");
    gestures.end(7);
    EXPECT_EQ(taken(), "=7]7");
}

// At each of the calls of a look in turn: every begin, value and end is heard, begins and ends once.
TEST_F(GesturesTest, WhatAHostThrowsAtComesWithTheNextLook) {
    for (const bool isOver : {false, true})
        for (int thrown = 0; thrown < (isOver ? 6 : 4); ++thrown) {
            Gestures some;
            for (const int index : {3, 9}) {
                some.begin(index);
                if (isOver) some.end(index);
            }
            std::string told;
            int calls = 0;
            const auto hear = [&](const std::string& what) {
                if (calls++ == thrown) throw std::bad_alloc();
                told += what;
            };
            const auto look = [&] {
                some.take([&](int i, bool isBegin) { hear((isBegin ? "[" : "]") + std::to_string(i)); },
                          [&](int i) { hear("=" + std::to_string(i)); });
            };
            EXPECT_THROW(look(), std::bad_alloc);
            EXPECT_TRUE(some.any());
            look();
            for (const char* one : {"[3", "=3", "[9", "=9"}) EXPECT_NE(told.find(one), std::string::npos) << told;
            EXPECT_EQ(std::count(told.begin(), told.end(), '['), 2) << told;
            EXPECT_EQ(std::count(told.begin(), told.end(), ']'), isOver ? 2 : 0) << told;
            calls = thrown + 1;
            look();
            EXPECT_FALSE(some.any());
        }
}

TEST_F(GesturesTest, IndicesOutsideAreIgnored) {
    gestures.begin(-1);
    gestures.end(parameterCount);
    EXPECT_FALSE(gestures.any());
}

struct ToldValuesTest : testing::Test {
    std::vector<int> taken(bool hears = true, ToldValues::Patches patches = ToldValues::Patches::told) {
        std::vector<int> indices;
        told.take(patches, [&](int i, float) {
            indices.push_back(i);
            return hears;
        });
        return indices;
    }
    ParameterModel parameters;
    ToldValues told{parameters};
};

TEST_F(ToldValuesTest, WhatTheHostSetItselfIsNoNews) {
    parameters.setParameter(5, 0.25f);
    told.accept(5);
    parameters.setParameter(6, 0.5f, ChangeSource::midi);
    EXPECT_EQ(taken(), std::vector<int>{6});
    EXPECT_EQ(taken(), std::vector<int>{});
}

TEST_F(ToldValuesTest, WhatAHostThrowsAtIsToldWithTheNextLook) {
    parameters.setParameter(5, 0.25f, ChangeSource::window);
    parameters.setParameter(6, 0.5f, ChangeSource::window);
    EXPECT_THROW(told.take(ToldValues::Patches::told, [](int i, float) { return i == 5 ? true : throw std::bad_alloc(); }),
                 std::bad_alloc);
    EXPECT_EQ(taken(), std::vector<int>{6});
    EXPECT_EQ(taken(), std::vector<int>{});
}

TEST_F(ToldValuesTest, AValueThatCameBackIsNone) {
    parameters.setParameter(5, 0.25f, ChangeSource::window);
    parameters.setParameter(5, 0.0f, ChangeSource::window);
    EXPECT_EQ(taken(), std::vector<int>{});
}

TEST_F(ToldValuesTest, APatchIsToldByTheValuesThatDiffer) {
    parameters.setParameterQuiet(100, 0.75f);
    parameters.setParameterQuiet(200, 0.75f);
    EXPECT_EQ(taken(), std::vector<int>{});
    parameters.changes().noteAll(ChangeSource::patch);
    EXPECT_EQ(taken(), (std::vector<int>{100, 200}));
}

TEST_F(ToldValuesTest, APatchThatTheHostReadsByItselfIsNotTold) {
    parameters.setParameterQuiet(100, 0.75f);
    parameters.changes().noteAll(ChangeSource::patch);
    EXPECT_EQ(taken(true, ToldValues::Patches::known), std::vector<int>{});
    parameters.setParameter(100, 0.5f, ChangeSource::midi);
    EXPECT_EQ(taken(true, ToldValues::Patches::known), std::vector<int>{100});
}

TEST_F(ToldValuesTest, WhatTheHostDidNotTakeIsToldAgain) {
    parameters.setParameter(5, 0.25f, ChangeSource::window);
    EXPECT_EQ(taken(false), std::vector<int>{5});
    EXPECT_EQ(taken(), std::vector<int>{5});
    EXPECT_EQ(taken(), std::vector<int>{});
}

}  // namespace
}  // namespace vantoric
