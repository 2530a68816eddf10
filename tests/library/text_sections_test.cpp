#include "library/text_sections.h"

#include <gtest/gtest.h>

#include "base/random.h"
#include "platform/scratch_folder.h"

namespace vantoric {
namespace {

TEST(TextSections, AFileIsReadAsAPersonWritesIt) {
    const auto sections =
        readSections("a = 1\n# what I like\n\n[Glass Harbour]\n  tags=bright, bell \r\nauthor = \xc3\x9cli\nrubbish\n[X]\n");
    ASSERT_EQ(sections.size(), 3u);
    EXPECT_EQ(sections[0].valueOf("a"), "1");
    EXPECT_EQ(sections[1].name, "Glass Harbour");
    EXPECT_EQ(sections[1].valueOf("tags"), "bright, bell");
    EXPECT_EQ(sections[1].valueOf("author"), "\xc3\x9cli");
    EXPECT_EQ(sections[1].valueOf("about"), "");
}

TEST(TextSections, AnyNameAndTextComesBack) {
    for (const std::string name : {"[x]", "a]b", "back\\slash", "two\nlines", "\xff\xfe", "# no remark", "=", " blank ", "\t"}) {
        TextSection section{name, {}};
        section.set("about", "line one\nline two = \\n ] [");
        const auto back = readSections(writeSections({section}));
        ASSERT_EQ(back.size(), 1u) << name;
        EXPECT_EQ(back[0].name, name);
        EXPECT_EQ(back[0].fields, section.fields);
    }
}

TEST(TextSections, AnEmptyValueTakesAFieldOut) {
    TextSection section{"x", {}};
    section.set("a", "1");
    section.set("a", "2");
    EXPECT_EQ(section.fields.size(), 1u);
    section.set("a", "");
    EXPECT_TRUE(section.fields.empty());
    EXPECT_EQ(writeSections({section}), "") << "nothing to tell";
}

TEST(TextSections, AnyBytesAreRead) {
    LinearCongruence random{1};
    for (int round = 0; round < 300; ++round) {
        std::string text;
        for (int i = 0; i < 500; ++i) text += "[]=\\\n\r \tab#\xff\0"[(random.next() >> 16) % 13];
        const TextSections once = readSections(text);
        EXPECT_EQ(writeSections(readSections(writeSections(once))), writeSections(once));
    }
}

TEST(TextSections, AMissingFileHasNone) {
    const platform::ScratchFolder folder;
    EXPECT_TRUE(loadSections(folder / "none").empty());
    EXPECT_TRUE(saveSections(folder / "some", {{"x", {{"a", "b"}}}}));
    EXPECT_EQ(loadSections(folder / "some").at(0).valueOf("a"), "b");
    EXPECT_TRUE(loadSections(folder / "some", 3).empty()) << "too large";
}

}  // namespace
}  // namespace vantoric
