#include "golden_runner/golden.h"

#include <gtest/gtest.h>

namespace golden {
namespace {

using Keys = std::vector<std::string>;

json watched(const char* text) {
    json value = json::parse(text);
    watch(value);
    return value;
}

TEST(WatchedJson, KnowsTheKeysThatNobodyAskedFor) {
    const json value = watched(R"({"a": 1, "b": {"c": 2, "d": 3}, "rows": [{"e": 4}, {"e": 5, "f": 6}]})");
    EXPECT_EQ(unreadKeys(value), Keys({"a", "b", "rows"}));
    EXPECT_EQ(value.at("b")["c"], 2);
    EXPECT_EQ(unreadKeys(value), Keys({"a", "b.d", "rows"}));
    for (const json& row : value["rows"]) EXPECT_GT(row["e"], 3);
    EXPECT_EQ(unreadKeys(value), Keys({"a", "b.d", "rows[1].f"}));
    EXPECT_EQ(value.value("a", 0), 1);
    EXPECT_TRUE(value["b"].contains("d"));
    EXPECT_EQ(value["rows"][1].count("f"), 1u);
}

TEST(WatchedJson, WhoWalksThroughAnObjectHasReadIt) {
    const json value = watched(R"({"a": 1, "b": {"c": 2}})");
    int count = 0;
    for (const auto& [key, inner] : value.items()) count += static_cast<int>(key.size());
    EXPECT_EQ(count, 2);
    EXPECT_EQ(unreadKeys(value), Keys({"b.c"}));
}

TEST(WatchedJson, ACopyReadsForItsOriginalAndItsEndReadsNothing) {
    const json value = watched(R"({"a": 1, "b": {"c": 2, "d": 3}, "e": [1, 2]})");
    {
        json copy = value;
    }
    EXPECT_EQ(unreadKeys(value), Keys({"a", "b", "e"}));
    {
        json copy = value;
        EXPECT_EQ(copy["b"]["c"], 2);
        copy.erase("e");
    }
    EXPECT_EQ(unreadKeys(value), Keys({"a", "b.d", "e"}));
}

Case caseOf(const char* text) {
    Case c;
    c.area = "oscillators";
    c.whole = json::parse(text);
    c.input = c.whole.value("input", json::object());
    c.expected = c.whole.value("expected", json::object());
    c.tolerance = c.whole.value("tolerance", json::object());
    for (json* part : {&c.input, &c.expected, &c.tolerance}) watch(*part);
    return c;
}

std::string complaint(const Case& c) {
    Outcome outcome;
    requireAllRead(c, outcome);
    return outcome.passed ? "" : outcome.message;
}

TEST(Cases, ThatSayMoreThanTheirBindingAskedForFail) {
    const Case c = caseOf(R"({"case": "k", "input": {"x": 1}, "expected": {"y": 2}, "tolerance": {"abs": 0, "y_abs": 1}})");
    EXPECT_EQ(complaint(c), "input.x is not read");
    EXPECT_EQ(c.input["x"], 1);
    EXPECT_EQ(complaint(c), "expected.y is not read");
    EXPECT_TRUE(compare(c.expected, {{"y", 2}}, c.tolerance).passed);
    EXPECT_EQ(complaint(c), "tolerance.y_abs is not read");
    EXPECT_EQ(c.tolerance["y_abs"], 1);
    EXPECT_EQ(complaint(c), "");
    EXPECT_EQ(complaint(caseOf(R"({"case": "k", "hint": 1})")), "hint is not known");
}

TEST(Cases, MayHoldCommentary) {
    EXPECT_EQ(complaint(caseOf(R"({"case": "k", "about": "", "reading": "", "input": {"note": "", "formula": "2 x"},
                                   "expected": {"kind": "rare"}, "tolerance": {"abs": 1, "rel": 0}})")),
              "");
    EXPECT_EQ(complaint(caseOf(R"({"input": {"uses_fastExp": true}})")), "input.uses_fastExp is not read")
        << "what is commentary in one area is none in another";
}

TEST(Cases, CompareEveryNumberWithinItsTolerance) {
    const json expected = {{"a", {1.0, 2.0}}, {"b", "text"}};
    EXPECT_TRUE(compare(expected, {{"a", {1.05, 2.0}}, {"b", "text"}, {"more", 1}}, {{"abs", 0.1}}).passed);
    EXPECT_FALSE(compare(expected, {{"a", {1.05, 2.0}}, {"b", "text"}}, {{"abs", 0.01}}).passed);
    EXPECT_FALSE(compare(expected, {{"a", {1.0}}, {"b", "text"}}, {{"abs", 0.1}}).passed);
    EXPECT_FALSE(compare(expected, {{"a", {1.0, 2.0}}, {"b", "texts"}}, {{"abs", 0.1}}).passed);
    EXPECT_FALSE(compare(expected, {{"a", {1.0, 2.0}}}, {{"abs", 0.1}}).passed);
    EXPECT_TRUE(compare(expected, {{"a", {1.05, 2.0}}, {"b", "text"}}, {{"a", {{"rel", 0.1}}}}).passed);
}

}  // namespace
}  // namespace golden
