#include "patch/patch_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "platform/files.h"
#include "platform/module_folder.h"
#include "tests/base/failing_allocation.h"
#include "tests/patch/patch_bench.h"

namespace vantoric {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

// An installation of its own for each test.
struct PatchFile : ::testing::Test, PatchBench {
    PatchFile() : root(::testing::TempDir() + "patch_file_" + ::testing::UnitTest::GetInstance()->current_test_info()->name()) {
        fs::remove_all(root);
        for (const char* folder : {"User", "Favourites", "Bass"}) fs::create_directories(root + "/Vantoric_sounds/" + folder);
        platform::setDataFolder(root);
        program.setProgramName("My patch");
    }
    ~PatchFile() override {
        platform::setDataFolder("");
        fs::remove_all(root);
    }
    std::string at(const std::string& name) const { return root + "/" + name; }
    std::string put(const std::string& name, const Bytes& bytes) const {
        EXPECT_TRUE(platform::writeFile(at(name), bytes.data(), bytes.size()));
        return at(name);
    }
    static Bytes file(const Bytes& patch) {
        const PatchHeader header = makePatchHeader("Stored name", static_cast<std::int32_t>(patch.size()));
        Bytes bytes(header.size() + patch.size());
        std::copy(patch.begin(), patch.end(), std::copy(header.begin(), header.end(), bytes.begin()));
        return bytes;
    }
    static Bytes readBack(const std::string& path) {
        Bytes bytes;
        EXPECT_TRUE(platform::readFile(path, bytes)) << path;
        return bytes;
    }
    std::string root;
};

TEST_F(PatchFile, HeaderIsFilledAsOtherReadersExpect) {
    const PatchHeader header = makePatchHeader("Name", 55169);
    const std::string text(header.begin(), header.end());
    EXPECT_EQ(text.substr(0, 4), "CcnK");
    EXPECT_EQ(text.substr(4, 4), std::string(4, '\0'));
    EXPECT_EQ(text.substr(8, 4), "FPCh");
    EXPECT_EQ(chunk::readBigLong(&header[12]), 1u);
    EXPECT_EQ(text.substr(16, 4), "Q7DI");
    EXPECT_EQ(chunk::readBigLong(&header[20]), 1u);
    EXPECT_EQ(chunk::readBigLong(&header[24]), 1224u);
    EXPECT_EQ(text.substr(28, 5), std::string("Name\0", 5));
    EXPECT_EQ(chunk::readBigLong(&header[56]), 55169u);
}

TEST_F(PatchFile, HeaderHolds26BytesOfTheName) {
    const PatchHeader header = makePatchHeader("abcdefghijklmnopqrstuvwxyz1", 0);
    EXPECT_EQ(header[53], 'z');
    EXPECT_EQ(header[54], 0);
}

TEST_F(PatchFile, SavedAndLoadedIsTheSamePatch) {
    parameters.setParameter(parameter::Cutoff1, 0.3f);
    ASSERT_TRUE(files->savePatchFile(at("one.fxp")));
    EXPECT_EQ(readBack(at("one.fxp")).size(), 60u + 55169);
    parameters.setParameter(parameter::Cutoff1, 0.8f);
    EXPECT_TRUE(files->loadPatchFile(at("one.fxp")));
    EXPECT_EQ(parameters.getParameter(parameter::Cutoff1), 0.3f);
    EXPECT_TRUE(told.boxes().empty());
    EXPECT_FALSE(busy);
}

TEST_F(PatchFile, HeaderSplitsNoCharacter) {
    const PatchHeader header = makePatchHeader(lettersAnd(24, "\xe2\x82\xac"), 1);
    EXPECT_EQ(header[28 + 23], 'n');
    for (int k = 24; k < 28; ++k) EXPECT_EQ(header[static_cast<std::size_t>(28 + k)], 0);
}

TEST_F(PatchFile, NameOfTheFileIsTheNameOfThePatch) {
    files->loadPatchFile(put("x.fxp", file(HandMadeChunk().name("Inside").bytes)));
    EXPECT_EQ(program.getProgramName(), "x");
}

TEST_F(PatchFile, LastFourCharactersGoWhateverTheyAre) {
    EXPECT_EQ(patchNameOfPath("/a/b/Big Bass.fxp"), "Big Bass");
    EXPECT_EQ(patchNameOfPath("C:\\a\\Big Bass.fxp"), "Big Bass");
    EXPECT_EQ(patchNameOfPath("noextension"), "noexten");
    EXPECT_EQ(patchNameOfPath("/folder/abc"), "");
    EXPECT_EQ(patchNameOfPath("/folder/caf\xc3\xa9.fxp"), "caf\xc3\xa9");
    EXPECT_EQ(patchNameOfPath("/folder/caf\xc3\xa9 wi"), "caf") << "its last four bytes begin within a letter";
    EXPECT_EQ(patchNameOfPath("/folder/"), "");
    EXPECT_EQ(patchNameOfPath(""), "");
    files->loadPatchFile(put("noextension", file(HandMadeChunk().bytes)));
    EXPECT_EQ(program.getProgramName(), "noexten");
    files->loadPatchFile(put("abc", file(HandMadeChunk().bytes)));
    EXPECT_EQ(program.getProgramName(), "Noname");
}

TEST_F(PatchFile, OfAnotherProductIsRefused) {
    Bytes bytes = file(HandMadeChunk().name("Inside").bytes);
    bytes[19] = 'X';
    const std::string path = put("other.fxp", bytes);
    EXPECT_FALSE(files->loadPatchFile(path));
    ASSERT_EQ(told.boxes().size(), 1u);
    EXPECT_EQ(told.boxes()[0].title, path);
    EXPECT_EQ(told.boxes()[0].text, "This file is not compatible with this product.");
    EXPECT_EQ(program.getProgramName(), "My patch");
    EXPECT_TRUE(busy);
    EXPECT_TRUE(calls.empty());
}

TEST_F(PatchFile, FieldsThatNobodyReadsMayHoldAnything) {
    Bytes bytes = file(HandMadeChunk().bytes);
    for (int k = 2; k < 56; ++k) {
        if (k < 16 || k >= 20) bytes[k] = 0xaa;
    }
    EXPECT_TRUE(files->loadPatchFile(put("odd.fxp", bytes)));
    EXPECT_TRUE(told.boxes().empty());
    EXPECT_EQ(program.getProgramName(), "odd");
}

TEST_F(PatchFile, WithAWrongSizeFieldLoads) {
    Bytes bytes = file(HandMadeChunk().parameter(parameter::Cutoff1, 0.7f).bytes);
    bytes[4] = 0x12;
    bytes[7] = 0x78;
    EXPECT_TRUE(files->loadPatchFile(put("size.fxp", bytes)));
    EXPECT_EQ(parameters.getParameter(parameter::Cutoff1), 0.7f);
}

TEST_F(PatchFile, ThatIsNotThereIsPassedOverInSilence) {
    EXPECT_FALSE(files->loadPatchFile(at("missing.fxp")));
    EXPECT_FALSE(files->loadPatchFile(root));
    EXPECT_TRUE(told.boxes().empty());
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(program.getProgramName(), "My patch");
}

TEST_F(PatchFile, CutAnywhereNeverReadsBeyondItsEnd) {
    const Bytes whole = file(HandMadeChunk().header(0, {20, 0, 20, 44100}).data(20, 3).bytes);
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{19}, std::size_t{20}, std::size_t{59}, std::size_t{60},
          std::size_t{61}, std::size_t{5000}, std::size_t{60 + 55168}, std::size_t{60 + 55169}, whole.size() - 1}) {
        PatchBench bench;
        const bool isLoaded =
            bench.files->loadPatchFile(put("cut.fxp", {whole.begin(), whole.begin() + static_cast<long>(size)}));
        EXPECT_FALSE(isLoaded) << size;
        EXPECT_TRUE(bench.calls.empty()) << size;
    }
}

TEST_F(PatchFile, ChunkIsNoLongerThanTheHeaderSays) {
    Bytes bytes = file(HandMadeChunk().bytes);
    bytes.insert(bytes.end(), 1000, 0x55);
    EXPECT_EQ(chunkOfFile(bytes).size(), 55169u);
    chunk::writeBigLong(&bytes[56], 100);
    EXPECT_EQ(chunkOfFile(bytes).size(), 100u);
    chunk::writeBigLong(&bytes[56], 0x7fffffff);
    EXPECT_EQ(chunkOfFile(bytes).size(), 56169u);
    chunk::writeBigLong(&bytes[56], 0x80000000);
    EXPECT_TRUE(chunkOfFile(bytes).empty());
}

TEST_F(PatchFile, ThatCannotBeWrittenGivesABox) {
    const std::string path = at("no folder/x.fxp");
    EXPECT_FALSE(files->savePatchFile(path));
    ASSERT_EQ(told.boxes().size(), 1u);
    EXPECT_EQ(told.boxes()[0].title, path);
    EXPECT_EQ(told.boxes()[0].text,
              "File write error. File is write protected, opened by another application or the path does not exist.");
}

TEST_F(PatchFile, SaveAsNamesThePatchAfterItsFile) {
    EXPECT_TRUE(files->savePatchAs(at("Vantoric_sounds/Bass/growl.fxp")));
    EXPECT_EQ(program.getProgramName(), "growl");
    EXPECT_EQ(readBack(at("Vantoric_sounds/Bass/growl.fxp"))[28], 'g');
}

TEST_F(PatchFile, ThatIsBadAnywhereLeavesThePatchThatPlays) {
    const Bytes older = file(HandMadeChunk().header(3, {10, 0, 10, 44100}).data(10, 3).bytes);
    ASSERT_TRUE(files->loadPatchFile(put("mine.fxp", older)));
    parameters.setParameter(parameter::Cutoff1, 0.3f);
    const Bytes before = save();
    calls.clear();
    const std::string kind = "This file is not compatible with this product.";
    Bytes cut = file(HandMadeChunk().header(0, {20, 0, 20, 44100}).data(20, 3).bytes);
    cut.pop_back();
    const std::pair<Bytes, std::string> rows[] = {
        {file(HandMadeChunk(8).bytes), chunk::newerVersionText},
        {file(HandMadeChunk().header(5, {-1, 0, 0, 44100}).bytes), chunk::badHeaderText},
        {cut, chunk::missingDataText},
        {file(Bytes(chunk::fixedSize - 1)), kind},
        {Bytes(older.begin(), older.begin() + 40), kind}};
    for (const auto& [bytes, text] : rows) {
        told.clear();
        EXPECT_FALSE(files->loadPatchFile(put("bad.fxp", bytes))) << text;
        EXPECT_EQ(boxTexts(), Texts{text});
        EXPECT_EQ(program.getProgramName(), "mine");
        EXPECT_FALSE(state.flags.engineLocked.isSet());
        EXPECT_EQ(samples[3].length, 10);
        EXPECT_EQ(busy, text == kind);
    }
    EXPECT_TRUE(calls.empty()) << "no note ends, nothing is reset";
    EXPECT_EQ(save(), before);
}

TEST_F(PatchFile, ForWhichMemoryIsShortLeavesThePatchThatPlays) {
    ASSERT_TRUE(files->loadPatchFile(put("mine.fxp", file(HandMadeChunk().header(3, {10, 0, 10, 44100}).data(10, 3).bytes))));
    const Bytes before = save();
    calls.clear();
    const Bytes large =
        file(HandMadeChunk().header(3, {5, 0, 5, 44100}).header(4, {50000, 0, 50000, 44100}).data(50005, 7).bytes);
    test::failingAllocation = 90000;
    const bool isLoaded = files->loadPatchFile(put("large.fxp", large));
    test::failingAllocation = 0;
    EXPECT_FALSE(isLoaded);
    EXPECT_EQ(boxTexts(), Texts{"Not enought memory."});
    EXPECT_TRUE(calls.empty()) << "no note ends, nothing is reset";
    EXPECT_EQ(program.getProgramName(), "mine");
    EXPECT_FALSE(state.flags.engineLocked.isSet());
    EXPECT_FALSE(busy);
    EXPECT_EQ(save(), before);
}

TEST_F(PatchFile, QuickSaveReplacesWithoutAQuestion) {
    put("Vantoric_sounds/Bass/deep.fxp", {1, 2, 3});
    EXPECT_TRUE(files->quickSavePatch("Bass", "deep"));
    EXPECT_EQ(readBack(at("Vantoric_sounds/Bass/deep.fxp")).size(), 60u + 55169);
    EXPECT_TRUE(told.boxes().empty());
}

TEST_F(PatchFile, QuickSaveOfANamelessPatchIsRefused) {
    EXPECT_FALSE(files->quickSavePatch("Custom", "deep"));
    EXPECT_EQ(boxTexts(), (Texts{"Your patch still has no name. Use 'Save patch as...' to store it."}));
    EXPECT_EQ(told.boxes()[0].title, "Error");
}

TEST_F(PatchFile, DeleteRemovesTheFileAndTellsIfItStays) {
    const std::string path = put("Vantoric_sounds/Bass/deep.fxp", {1});
    EXPECT_TRUE(files->deletePatch("Bass", "deep"));
    EXPECT_FALSE(fs::exists(path));
    EXPECT_FALSE(files->deletePatch("Bass", "deep"));
    EXPECT_EQ(boxTexts(), Texts{"Could not delete this file. Please check if it is write protected."});
}

TEST_F(PatchFile, FavouritesAreCopiesWithAPrefix) {
    EXPECT_TRUE(files->addToFavourites());
    EXPECT_TRUE(fs::exists(at("Vantoric_sounds/Favourites/FavMy patch.fxp")));
    EXPECT_EQ(program.getProgramName(), "My patch");
}

TEST_F(PatchFile, WelcomePatchHasItsPlace) { EXPECT_EQ(welcomePatchPath(), at("Vantoric_sounds/ArpMultilayer/0Welcome.fxp")); }

}  // namespace
}  // namespace vantoric
