#include "base/text.h"

#include <gtest/gtest.h>

#include <string>

namespace vantoric {
namespace {

TEST(CutText, ATextWithinItsLimitIsWhole) {
    EXPECT_EQ(cutText("", 0), "");
    EXPECT_EQ(cutText("abc", 3), "abc");
    EXPECT_EQ(cutText("abc", 100), "abc");
    EXPECT_EQ(cutText("\xc3\xa9", 2), "\xc3\xa9");
}

TEST(CutText, ALetterOfOneByteIsCutAtTheLimit) {
    EXPECT_EQ(cutText("abcdef", 4), "abcd");
    EXPECT_EQ(cutText("abc", 0), "");
}

TEST(CutText, ACharacterIsNeverSplit) {
    // One of each length: e with acute, the euro sign, a clef.
    for (const std::string character : {"\xc3\xa9", "\xe2\x82\xac", "\xf0\x9d\x84\x9e"}) {
        const std::string text = "ab" + character + "cd";
        for (std::size_t limit = 0; limit <= text.size(); ++limit) {
            const bool isInside = limit > 2 && limit < 2 + character.size();
            EXPECT_EQ(cutText(text, limit), text.substr(0, isInside ? 2 : limit)) << text << " " << limit;
        }
    }
}

TEST(CutText, ACharacterThatIsAllThereIsGivesNothing) {
    EXPECT_EQ(cutText("\xf0\x9d\x84\x9e", 3), "");
    EXPECT_EQ(cutText("\xf0\x9d\x84\x9e", 1), "");
}

TEST(CutText, BytesThatAreNoCharacterStandAlone) {
    const std::string texts[] = {
        "\xe9t\xe9 en Provence",                         // of an older encoding
        "\xa9\xa9\xa9\xa9\xa9\xa9",                      // only what goes on
        "\xc3\xc3\xc3\xc3\xc3\xc3",                      // only what begins
        "\xc0\xaf\xc1\xbf\xe0\x80\xaf\xf0\x80\x80\xaf",  // overlong
        "\xed\xa0\x80\xed\xb0\x80",                      // surrogates
        "\xf4\x90\x80\x80\xf5\x80\x80\x80\xff\xfe",      // beyond the last
        "ab\xe2\x82",                                    // broken off
    };
    for (const std::string& text : texts)
        for (std::size_t limit = 0; limit <= text.size(); ++limit) EXPECT_EQ(cutText(text, limit), text.substr(0, limit));
}

TEST(CutText, TheFirstAndLastCharactersOfEachLengthAreKnown) {
    for (const std::string_view character : {"\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xee\x80\x80",
                                             "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"})
        EXPECT_EQ(characterBytes(character), character.size());
    EXPECT_EQ(characterBytes(""), 0u);
    EXPECT_EQ(characterBytes("a"), 1u);
    EXPECT_EQ(characterBytes(std::string_view("\0a", 2)), 1u);
}

}  // namespace
}  // namespace vantoric
