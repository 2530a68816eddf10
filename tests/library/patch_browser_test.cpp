#include "library/patch_browser.h"

#include "base/random.h"
#include "tests/library/library_on_disk.h"

namespace vantoric {
namespace {

using Names = std::vector<std::string>;

TEST(RankFile, ATextOfAnyBytesGivesOneToFiveStars) {
    const Names names{"a", "b", "\xff"};
    LinearCongruence noise{5};
    for (int round = 0; round < 300; ++round) {
        std::string text;
        for (int i = 0; i < 200; ++i) text.push_back("a\nb \r\t0159-+\xff%"[(noise.next() >> 20) % 15]);
        for (const int stars : readRatings(text, names)) EXPECT_TRUE(stars >= 1 && stars <= 5);
    }
}

TEST(RankFile, NumbersAreHeldAndRepeatedNamesKeepTheLast) {
    EXPECT_EQ(readRatings("a\n-7\nb\n99999999999999\na\n2\n", {"a", "b"}), (Ratings{2, 5}));
    EXPECT_EQ(readRatings("a\r\n4\r\nb\r\n1\r\n", {"a", "b"}), (Ratings{4, 1})) << "lines of another system";
    EXPECT_EQ(readRatings("", {"a"}), Ratings{3});
}

TEST(RankFile, ANameWithALineBreakIsLeftOut) {
    EXPECT_EQ(writeRatings({"a\nb", " c"}, {1, 2}), " c\n2\n");
    EXPECT_EQ(readRatings(" c\n2\n", {" c"}), Ratings{2});
}

struct Browser : ::testing::Test, test::LibraryOnDisk {
    Browser() {
        put("Bass", {"Deep", "acid", "Round"});
        put("Lead", {"One"});
        library.scanCategories();
        library.select({0, 0});
        browser.open();
    }
    std::string ranks(const std::string& category) {
        std::vector<std::uint8_t> bytes;
        platform::readFile(rankFilePath(category), bytes);
        return {bytes.begin(), bytes.end()};
    }
    OnShow onShow;
    PatchBrowser browser{library, onShow};
};

TEST_F(Browser, RowsThatAreNoneAreIgnored) {
    for (const int row : {-1, 3, 100000}) {
        browser.clickPatch(row);
        browser.clickCategory(row);
        browser.clickStar(row, 5);
    }
    EXPECT_TRUE(loads.empty());
    EXPECT_FALSE(platform::exists(rankFilePath("Bass")));
    browser.clickStar(0, 77);
    EXPECT_EQ(browser.ratings(), (Ratings{5, 3, 3}));
}

TEST_F(Browser, StarsStayWithTheirPatchesWhenOneComesOrGoes) {
    browser.clickStar(1, 5);
    put("Bass", {"aaa"});
    library.scanPatches(-1);
    EXPECT_EQ(library.patchNames(), (Names{"aaa", "acid", "Deep", "Round"}));
    EXPECT_EQ(browser.ratings(), (Ratings{3, 3, 5, 3}));
    browser.clickStar(0, 1);
    EXPECT_EQ(ranks("Bass"), "aaa\n1\nacid\n3\nDeep\n5\nRound\n3\n");
}

TEST_F(Browser, AVanishedCategoryIsAnEmptyOne) {
    vanish("Lead");
    browser.clickCategory(1);
    EXPECT_TRUE(loads.empty());
    EXPECT_TRUE(browser.ratings().empty());
    browser.clickStar(0, 4);
    EXPECT_FALSE(platform::exists(rankFilePath("Lead")));
}

TEST_F(Browser, StarsThatCannotBeKeptAreShownAllTheSame) {
    platform::makeFolder(rankFilePath("Bass"));  // a folder stands in the file's place
    browser.clickStar(2, 1);
    EXPECT_EQ(browser.ratings(), (Ratings{3, 3, 1}));
}

TEST_F(Browser, StarsOfALargeCategorySurvive) {
    constexpr int many = 5000;
    std::string text;
    for (int i = 0; i < many; ++i) text += std::to_string(100000 + i) + std::string(249, 'x') + "\n5\n";
    text += "Deep\n1\n";
    ASSERT_GT(text.size(), std::size_t{1} << 20);
    ASSERT_TRUE(platform::writeFile(rankFilePath("Bass"), text.data(), text.size()));
    browser.open();
    EXPECT_EQ(browser.ratings(), (Ratings{3, 1, 3}));
    browser.clickStar(0, 4);
    EXPECT_EQ(ranks("Bass"), "acid\n4\nDeep\n1\nRound\n3\n");
}

TEST_F(Browser, AFileThatCannotBeReadIsNotOverwritten) {
    const std::string large(std::size_t{65} << 20, '\n');
    ASSERT_TRUE(platform::writeFile(rankFilePath("Bass"), large.data(), large.size()));
    browser.open();
    EXPECT_EQ(browser.ratings(), (Ratings{3, 3, 3}));
    browser.clickStar(0, 4);
    EXPECT_EQ(browser.ratings(), (Ratings{4, 3, 3}));
    EXPECT_FALSE(ratePatch("Bass", "Deep", 2));
    EXPECT_EQ(ranks("Bass").size(), large.size());
    // By another hand it can be read again, after the list was rated without it.
    const std::string small = "Deep\n1\n";
    ASSERT_TRUE(platform::writeFile(rankFilePath("Bass"), small.data(), small.size()));
    browser.clickStar(2, 5);
    EXPECT_EQ(ranks("Bass"), "acid\n3\nDeep\n1\nRound\n5\n");
}

TEST_F(Browser, TheHintTellsTheLayerThatIsLoadedNext) {
    EXPECT_EQ(browser.hint().kind, HintKind::knownCategory);
    onShow.loadTarget = 3;
    EXPECT_EQ(browser.hint().text, "Load a patch to synthesizer layer 3");
    EXPECT_EQ(browser.hint().kind, HintKind::loadToLayer);
    EXPECT_EQ(categoryHint("ArpMultilayer", 0).text, categoryHint("ArpMultiLayer", 0).text);
    EXPECT_EQ(categoryHint("Bass", 5).kind, HintKind::knownCategory) << "there are four layers";
}

TEST_F(Browser, ACategoryLoadsItsFirstPatchToTheLayerThatWaitsToo) {
    onShow.loadTarget = 2;
    browser.clickCategory(1);
    EXPECT_EQ(loads, Names{"Lead/One"});
    browser.clickCategory(0);
    EXPECT_EQ(loads, (Names{"Lead/One", "Bass/acid"}));
}

TEST_F(Browser, ClickingThePresentPatchLoadsItAgain) {
    browser.clickPatch(1);
    browser.clickPatch(1);
    EXPECT_EQ(loads, (Names{"Bass/Deep", "Bass/Deep"}));
}

}  // namespace
}  // namespace vantoric
