#include "patch/patch_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "platform/files.h"
#include "platform/module_folder.h"
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
    EXPECT_TRUE(dialogs.boxes().empty());
    EXPECT_FALSE(busy);
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
    ASSERT_EQ(dialogs.boxes().size(), 1u);
    EXPECT_EQ(dialogs.boxes()[0].title, path);
    EXPECT_EQ(dialogs.boxes()[0].text, "This file is not compatible with this product.");
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
    EXPECT_TRUE(dialogs.boxes().empty());
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
    EXPECT_TRUE(dialogs.boxes().empty());
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(program.getProgramName(), "My patch");
}

TEST_F(PatchFile, CutAnywhereNeverReadsBeyondItsEnd) {
    const Bytes whole = file(HandMadeChunk().header(0, {20, 0, 20, 44100}).data(20, 3).bytes);
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{19}, std::size_t{20}, std::size_t{59}, std::size_t{60},
          std::size_t{61}, std::size_t{5000}, std::size_t{60 + 55168}, std::size_t{60 + 55169}, whole.size() - 1}) {
        PatchBench bench;
        const bool handedOn =
            bench.files->loadPatchFile(put("cut.fxp", {whole.begin(), whole.begin() + static_cast<long>(size)}));
        EXPECT_EQ(handedOn, size >= 20) << size;
        EXPECT_EQ(bench.state.flags.engineLocked.isSet(), handedOn) << size;
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
    ASSERT_EQ(dialogs.boxes().size(), 1u);
    EXPECT_EQ(dialogs.boxes()[0].title, path);
    EXPECT_EQ(dialogs.boxes()[0].text,
              "File write error. File is write protected, opened by another application or the path does not exist.");
}

TEST_F(PatchFile, LoadCommandStartsInTheSoundsFolderOnce) {
    const std::string path = put("Vantoric_sounds/Bass/deep.fxp", file(HandMadeChunk().bytes));
    EXPECT_FALSE(files->loadPatch());
    dialogs.choosePathNext(path);
    EXPECT_TRUE(files->loadPatch());
    EXPECT_EQ(program.getProgramName(), "deep");
    EXPECT_FALSE(files->loadPatch());
    const auto requests = dialogs.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[0].startFolder, platform::soundsFolder());
    EXPECT_EQ(requests[1].startFolder, platform::soundsFolder());
    EXPECT_EQ(requests[2].startFolder, "");
    EXPECT_EQ(requests[0].title, "Load a fxp program (.fxp file)");
}

TEST_F(PatchFile, SaveAsNamesThePatchAndRemembersTheFolder) {
    dialogs.choosePathNext(at("Vantoric_sounds/Bass/growl"));
    EXPECT_TRUE(files->savePatchAs());
    EXPECT_EQ(program.getProgramName(), "growl");
    EXPECT_EQ(readBack(at("Vantoric_sounds/Bass/growl.fxp"))[28], 'g');
    EXPECT_FALSE(files->savePatchAs());
    const auto requests = dialogs.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].startFolder, platform::userFolder());
    EXPECT_EQ(requests[1].startFolder, at("Vantoric_sounds/Bass/"));
    EXPECT_TRUE(requests[0].isSave);
}

TEST_F(PatchFile, QuickSaveReplacesWithoutAQuestion) {
    put("Vantoric_sounds/Bass/deep.fxp", {1, 2, 3});
    EXPECT_TRUE(files->quickSavePatch("Bass", "deep"));
    EXPECT_EQ(readBack(at("Vantoric_sounds/Bass/deep.fxp")).size(), 60u + 55169);
    EXPECT_TRUE(dialogs.boxes().empty());
}

TEST_F(PatchFile, QuickSaveOfANamelessPatchIsRefused) {
    EXPECT_FALSE(files->quickSavePatch("Custom", "deep"));
    EXPECT_EQ(boxTexts(), (Texts{"Your patch still has no name. Use 'Save patch as...' to store it."}));
    EXPECT_EQ(dialogs.boxes()[0].title, "Error");
}

TEST_F(PatchFile, DeleteAsksFirst) {
    const std::string path = put("Vantoric_sounds/Bass/deep.fxp", {1});
    EXPECT_FALSE(files->deletePatch("Bass", "deep"));
    EXPECT_TRUE(fs::exists(path));
    dialogs.answerNext(true);
    EXPECT_TRUE(files->deletePatch("Bass", "deep"));
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(boxTexts()[0], "Are you sure that you want to delete the file '" + path + "'?");
    dialogs.clear();
    dialogs.answerNext(true);
    EXPECT_FALSE(files->deletePatch("Bass", "deep"));
    EXPECT_EQ(boxTexts()[1], "Could not delete this file. Please check if it is write protected.");
}

TEST_F(PatchFile, FavouritesAreCopiesWithAPrefix) {
    EXPECT_TRUE(files->addToFavourites());
    EXPECT_TRUE(fs::exists(at("Vantoric_sounds/Favourites/FavMy patch.fxp")));
    EXPECT_EQ(program.getProgramName(), "My patch");
}

TEST_F(PatchFile, WelcomePatchHasItsPlace) { EXPECT_EQ(welcomePatchPath(), at("Vantoric_sounds/ArpMultilayer/0Welcome.fxp")); }

}  // namespace
}  // namespace vantoric
