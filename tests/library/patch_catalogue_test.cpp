#include "library/patch_catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/library/large_library.h"

namespace vantoric {
namespace {

CataloguedPatch patch(const std::string& name, const std::string& category = "Pad") {
    CataloguedPatch made;
    made.name = name;
    made.category = category;
    return made;
}

struct Catalogue {
    explicit Catalogue(std::vector<CataloguedPatch> patches) : all(std::move(patches)) {}
    Catalogue(std::initializer_list<const char*> names) : all(named(names)) {}

    static std::vector<CataloguedPatch> named(std::initializer_list<const char*> names) {
        std::vector<CataloguedPatch> patches;
        for (const char* name : names) patches.push_back(patch(name));
        return patches;
    }
    std::vector<std::string> find(const std::string& query, const PatchFilter& filter = {},
                                  const std::vector<std::uint32_t>& recent = {}) const {
        std::vector<std::string> names;
        for (const std::uint32_t i : all.search(query, filter, recent)) names.push_back(all.patches()[i].name);
        return names;
    }
    PatchCatalogue all;
};
using Names = std::vector<std::string>;

TEST(Search, NamesThatAreTheQueryComeFirstThenBeginningsWordsPartsAndSlips) {
    const Catalogue all{"Glam", "My Glass", "Hourglass", "Glasswork", "Glass", "Class", "Gloss", "Brass"};
    EXPECT_EQ(all.find("glass"), (Names{"Glass", "Glasswork", "My Glass", "Hourglass", "Class", "Gloss"}));
    EXPECT_EQ(all.find("GLASS"), all.find("glass"));
}

TEST(Search, EveryWordMustBeFoundInAnyOrder) {
    const Catalogue all{"Glass Harbour", "Glass", "Harbour Glass Bell", "Harbour"};
    EXPECT_EQ(all.find("harb gla"), (Names{"Glass Harbour", "Harbour Glass Bell"}));
    EXPECT_EQ(all.find("glass harbour"), (Names{"Glass Harbour", "Harbour Glass Bell"}));
    EXPECT_EQ(all.find("glass-harbour!"), (Names{"Glass Harbour", "Harbour Glass Bell"}));
    EXPECT_TRUE(all.find("glass piano").empty());
}

TEST(Search, OneSlipOfALetterIsForgiven) {
    const Catalogue all{"Harbour"};
    for (const char* query : {"harbur", "harbouur", "harbaur", "hrabour", "jarbour", "harbuor", "haarb", "hrab", "harbours"})
        EXPECT_EQ(all.find(query), Names{"Harbour"}) << query;
    for (const char* query : {"hxb", "harr", "hrbr", "hyrbxur", "bour harbx"}) EXPECT_TRUE(all.find(query).empty()) << query;
    EXPECT_EQ(Catalogue{"Soft Multilayer"}.find("mutlilayer"), Names{"Soft Multilayer"});
    EXPECT_EQ(Catalogue{"Soft Multilayer"}.find("ltlayer"), Names{"Soft Multilayer"}) << "also within a word";
}

TEST(Search, WordsWithinWordsAreWords) {
    const Catalogue all{"ArpMultiLayer2", "Solayer", "Layer"};
    EXPECT_EQ(all.find("lay"), (Names{"Layer", "ArpMultiLayer2", "Solayer"}));
    EXPECT_EQ(all.find("2"), Names{"ArpMultiLayer2"});
    EXPECT_EQ(all.find("m"), Names{"ArpMultiLayer2"});
    EXPECT_TRUE(all.find("y").empty()) << "a single letter begins a word";
}

TEST(Search, CategoriesTagsAndAuthorsAreFoundAfterNames) {
    std::vector<CataloguedPatch> patches{patch("Deep", "Bass"), patch("Bassoon", "Brass"), patch("Air", "Pad"),
                                         patch("Sub", "Lead")};
    patches[2].tags = {"warm", "bass heavy"};
    patches[3].author = "Bassam";
    const Catalogue all(patches);
    EXPECT_EQ(all.find("bass"), (Names{"Bassoon", "Air", "Deep", "Sub"})) << "a name first, then words elsewhere";
    EXPECT_EQ(all.find("warm"), Names{"Air"});
    EXPECT_EQ(all.find("deep bass"), Names{"Deep"});
}

TEST(Search, LettersBeyondAsciiAreFolded) {
    const Catalogue all{
        "\xc3\x9c"
        "berfl\xc3\xbcgel",
        "Fac\xcc\xa7"
        "ade",
        "\xd0\x9c\xd0\xbe\xd1\x80\xd0\xb5",
        "\xe6\xb5\xb7\xe3\x81\xae\xe9\x9f\xb3",
        "\xce\x9a\xcf\x8d\xce\xbc\xce\xb1",
        "\xef\xbc\xa1\xef\xbd\x82\xef\xbd\x83",
        "Stra\xc3\x9f"
        "e"};
    EXPECT_EQ(all.find("uberflugel").size(), 1u) << "without the dots";
    EXPECT_EQ(all.find("\xc3\xbc"
                       "ber")
                  .size(),
              1u);
    EXPECT_EQ(all.find("fa\xc3\xa7"
                       "ade")
                  .size(),
              1u)
        << "composed or not";
    EXPECT_EQ(all.find("\xd0\xbc\xd0\x9e\xd0\xa0").size(), 1u) << "Cyrillic capitals";
    EXPECT_EQ(all.find("\xd0\xbc\xd0\xbe\xd0\xbf\xd0\xb5").size(), 1u) << "with a slip";
    EXPECT_EQ(all.find("\xe9\x9f\xb3").size(), 1u) << "a part of a Japanese name";
    EXPECT_EQ(all.find("\xce\xba\xcf\x8d\xce\xbc").size(), 1u);
    EXPECT_EQ(all.find("abc").size(), 1u) << "full width";
    EXPECT_EQ(all.find("strasse").size(), 1u);
}

TEST(Search, AnyBytesAreSafe) {
    const Catalogue all{"\xff\xfe",
                        "a\x80"
                        "b",
                        "\xc3",
                        "\xed\xa0\x80",
                        "",
                        "   ",
                        "\xf0\x9f\x8e\xb9 keys"};
    EXPECT_EQ(all.find("keys").size(), 1u);
    EXPECT_EQ(all.find("").size(), 7u);
    LinearCongruence random{3};
    for (int i = 0; i < 3000; ++i) {
        std::string query;
        for (std::uint32_t n = random.next() >> 28; n > 0; --n) query += static_cast<char>(random.next() >> 24);
        all.find(query);
        all.all.complete(query);
    }
}

TEST(Search, FiltersLeaveOut) {
    std::vector<CataloguedPatch> patches{patch("a"), patch("b", "User"), patch("c", "Bass")};
    patches[0].stars = 5;
    patches[1].isOwn = true;
    patches[2].isFavourite = true;
    const Catalogue all(patches);
    PatchFilter filter;
    filter.fewestStars = 4;
    EXPECT_EQ(all.find("", filter), Names{"a"});
    filter = {};
    filter.own = true;
    EXPECT_EQ(all.find("", filter), Names{"b"});
    filter = {};
    filter.favourites = true;
    EXPECT_EQ(all.find("", filter), Names{"c"});
    filter = {};
    filter.category = "Bass";
    EXPECT_EQ(all.find("", filter), Names{"c"});
    EXPECT_TRUE(all.find("a", filter).empty());
    filter = {};
    filter.recent = true;
    EXPECT_EQ(all.find("", filter, {2, 0, 99}), (Names{"c", "a"})) << "the newest first";
    EXPECT_EQ(all.find("pad", filter, {2, 0}), Names{"a"});
}

TEST(Search, TheLikeliestNameIsCompleted) {
    std::vector<CataloguedPatch> patches{patch("Glass"), patch("Glass Harbour"), patch("Glider"), patch("Brass", "Horns")};
    patches[1].stars = 5;
    patches[3].tags = {"velvet"};
    const Catalogue all(patches);
    EXPECT_EQ(all.all.complete("gl"), "Glass") << "what is found first";
    PatchFilter good;
    good.fewestStars = 4;
    EXPECT_EQ(all.all.complete("gl", good), "Glass Harbour") << "among what passes";
    EXPECT_EQ(all.all.complete("gli"), "Glider");
    EXPECT_EQ(all.all.complete("glass h"), "Glass Harbour");
    EXPECT_EQ(all.all.complete("brass velv"), "brass velvet");
    EXPECT_EQ(all.all.complete("hor"), "horns");
    EXPECT_EQ(all.all.complete("xyz"), "");
    EXPECT_EQ(all.all.complete(""), "");
}

// What a keystroke takes there is measured (bench/library_bench).
TEST(Search, EachLetterInALargeLibraryFindsSome) {
    const PatchCatalogue all(test::largeLibrary(20000));
    const std::string typed = "soft glass harbour";
    for (std::size_t letters = 1; letters <= typed.size(); ++letters) {
        const std::size_t found = all.search(typed.substr(0, letters), {}).size();
        EXPECT_GT(found, 0u) << letters;
        EXPECT_LT(found, 20000u) << letters;
    }
}

}  // namespace
}  // namespace vantoric
