// Files that come into the window and go out of it: drops, the browser, the chooser, rows of the menus.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <set>

#include "base/parameters.h"
#include "editor/model/menu_rows.h"
#include "editor/model/window_layout.h"
#include "tests/window/compare_pictures.h"
#include "tests/window/saved_patch.h"
#include "tests/window/window_rig.h"

using namespace testhost;
namespace fs = std::filesystem;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;

namespace {

std::string bytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A tone of so many frames, 16 bits, 44.1 kHz.
void writeTone(const fs::path& path, std::uint32_t frames = 22050) {
    constexpr std::uint32_t rate = 44100;
    std::string bytes;
    const auto number = [&](std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i) & 255);
    };
    bytes += "RIFF";
    number(36 + 2 * frames, 4);
    bytes += "WAVEfmt ";
    number(16, 4), number(1, 2), number(1, 2), number(rate, 4), number(2 * rate, 4), number(2, 2), number(16, 2);
    bytes += "data";
    number(2 * frames, 4);
    for (std::uint32_t i = 0; i < frames; ++i) number(static_cast<std::uint16_t>(std::lround(2e4 * std::sin(0.0314 * i))), 2);
    std::ofstream(path, std::ios::binary) << bytes;
}

class Files : public testing::Test {
protected:
    Files() : sounds(rig.installation().folder() / "Vantoric_sounds") {}
    void SetUp() override { rig.reset(); }
    void TearDown() override {
        for (int i = 0; i < 3; ++i) host.key("Escape");  // the browser leaves the band in sight
        rig.closeMenus();
        fs::remove_all(sounds / "Zoo");
        fs::remove(favourite);
        for (const char* beside : {"Zoo.rnk", "Zoo.tags"}) fs::remove(sounds / beside);
    }

    std::string patchName() { return rig.plugin().text(wire::opProgramName); }
    bool isCalled(const std::string& name) {
        return host.until([&] { return patchName() == name; }, 10);
    }
    bool asks() {
        return host.until([&] { return rig.isCovered(); }, 10);
    }
    Picture glanceAt(vantoric::WindowPart part) {
        const vantoric::LayoutRect& r = vantoric::windowPart(part).rect;
        const Point corner = rig.at(r.x, r.y), size = rig.at(r.width, r.height);
        return host.glance().part(static_cast<int>(corner.x), static_cast<int>(corner.y), static_cast<int>(size.x),
                                  static_cast<int>(size.y));
    }
    // What is drawn anew may differ by a step of a colour.
    static bool areAlike(const Picture& a, const Picture& b) { return difference(a, b).largest <= tolerance; }
    // Any patch of the installation under another name.
    void putPatch(const fs::path& path) {
        fs::create_directories(path.parent_path());
        for (const auto& entry : fs::directory_iterator(sounds / "Bass"))
            if (entry.path().extension() == ".fxp") return static_cast<void>(fs::copy_file(entry.path(), path));
        FAIL() << "no patch to copy";
    }
    // Where the browser shows.
    Picture middle() { return host.glance().part(300, 300, 600, 300); }
    void openBrowser() {
        const Picture closed = middle();
        rig.click(controlWithTag(tag::browser));
        ASSERT_TRUE(host.until([&] { return middle() != closed; }, 10));
        host.idle(400);  // the library is read
    }

    void playFoundAfterOpening(const std::string& name) {
        openBrowser();
        playFound(name, name);
        host.key("Escape");
        host.idle(100);
    }
    // Searches in the open browser, and loads what is found first.
    void playFound(const std::string& query, const std::string& name) {
        host.type(query);
        EXPECT_TRUE(host.until([&] { return host.key("Return"), patchName() == name; }, 10)) << query;
        host.key("Escape");  // the search is cleared
        host.idle(60);
    }

    WindowRig& rig = sharedRig();
    WindowHost& host = rig.host();
    const fs::path sounds, favourite = sounds / "Favourites/Favzebra.fxp";  // the copy of Zoo/zebra.fxp
    const vantoric::platform::ScratchFolder scratch;
};

// ---- drops

TEST_F(Files, ADroppedPatchIsLoadedWhateverItsName) {
    for (const char* name : {"otter", "two words", "\xd0\x92\xd1\x8b\xd0\xb4\xd1\x80\xd0\xb0"}) {
        const std::string path = scratch / (std::string(name) + ".fxp");
        putPatch(path);
        ASSERT_TRUE(host.drop({path}, 600, 500)) << name;
        EXPECT_TRUE(isCalled(name)) << name;
    }
}

TEST_F(Files, ADroppedWaveGoesIntoTheOscillatorOfItsRow) {
    const std::string path = scratch / "tone.wav";
    writeTone(path);
    const Point row = rig.at(300, 136 + 94 + 44);
    const int type = vantoric::hostIndex(parameter::SynType1 + 1, 0);
    ASSERT_TRUE(host.drop({path}, row.x, row.y));
    ASSERT_TRUE(asks()) << "whether it is to be tuned";
    host.key("Return");
    EXPECT_TRUE(host.until([&] { return std::lround(rig.plugin().parameter(type) * 128) == 3; }, 10)) << "it plays the sample";
}

TEST_F(Files, EscapeCallsADroppedWaveOff) {
    const std::string path = scratch / "tone.wav";
    writeTone(path);
    const auto before = rig.plugin().chunk();
    const Point row = rig.at(300, 180);
    ASSERT_TRUE(host.drop({path}, row.x, row.y));
    ASSERT_TRUE(asks());
    host.key("Escape");
    ASSERT_TRUE(host.until([&] { return !rig.isCovered(); }, 5));
    host.idle(200);
    EXPECT_EQ(rig.plugin().chunk(), before);
}

TEST_F(Files, ClosingTheWindowOverTheQuestionCallsAWaveOff) {
    const std::string path = scratch / "tone.wav";
    writeTone(path);
    const auto before = rig.plugin().chunk();
    const Point row = rig.at(300, 180);
    ASSERT_TRUE(host.drop({path}, row.x, row.y));
    ASSERT_TRUE(asks());
    host.close();
    EXPECT_EQ(rig.plugin().chunk(), before);
    ASSERT_TRUE(host.open());
}

TEST_F(Files, ADroppedInstrumentIsImported) {
    writeTone(scratch / "tone.wav");
    const std::string path = scratch / "grand.sfz";
    std::ofstream(path) << "<region> sample=tone.wav key=60\n";
    const std::size_t before = rig.plugin().chunk().size();
    ASSERT_TRUE(host.drop({path}, 600, 500));
    EXPECT_TRUE(host.until([&] { return rig.plugin().chunk().size() > before + 8192; }, 10));
}

TEST_F(Files, OtherFilesAreNotTaken) {
    const std::string path = scratch / "letter.txt";
    std::ofstream(path) << "x";
    const auto before = rig.plugin().chunk();
    host.drop({path}, 600, 500);
    host.idle(200);
    EXPECT_FALSE(rig.isCovered());
    EXPECT_EQ(rig.plugin().chunk(), before);
}

TEST_F(Files, WorkThatTakesLongShowsABoxAndIsCancelled) {
    const std::string path = scratch / "long.sfz";
    constexpr std::uint32_t frames = 4900000;
    std::ofstream instrument(path);
    for (int i = 0; i < 12; ++i) {
        const std::string wave = "long" + std::to_string(i) + ".wav";
        i == 0 ? writeTone(scratch / wave, frames) : fs::create_hard_link(scratch / "long0.wav", scratch / wave);
        instrument << "<region> sample=" << wave << " key=" << 40 + i << "\n";
    }
    instrument.close();
    const auto before = rig.plugin().chunk();
    ASSERT_TRUE(host.drop({path}, 600, 500));
    ASSERT_TRUE(asks());
    host.key("Return");  // was meant for something else: it cancels nothing
    host.idle(60);
    EXPECT_TRUE(rig.isCovered());
    host.key("Escape");
    EXPECT_TRUE(host.until([&] { return !rig.isCovered(); }, 5)) << "and asks nothing";
    EXPECT_EQ(rig.plugin().chunk(), before);
}

// ---- the browser

TEST_F(Files, TheBrowserFindsRatesAndTags) {
    putPatch(sounds / "Zoo/zebra.fxp");
    putPatch(sounds / "Zoo/yak.fxp");
    openBrowser();
    playFound("zebra", "zebra");
    host.idle(60);
    host.keyDown("Shift_L");
    host.key("equal");  // plus
    host.keyUp("Shift_L");
    EXPECT_TRUE(host.until([&] { return bytesOf(sounds / "Zoo.rnk").find("zebra\n4") != std::string::npos; }, 10));
    host.key("F2");
    host.idle(100);
    host.type("stripes");
    host.key("Return");
    EXPECT_TRUE(host.until([&] { return bytesOf(sounds / "Zoo.tags").find("stripes") != std::string::npos; }, 10));
    host.idle(300);
    playFound("yak", "yak");
    playFound("stripes", "zebra");
}

TEST_F(Files, TheBrowserSteps) {
    putPatch(sounds / "Zoo/zebra.fxp");
    putPatch(sounds / "Zoo/yak.fxp");
    openBrowser();
    playFound("yak", "yak");
    host.key("bracketright");
    EXPECT_TRUE(isCalled("zebra"));
    host.key("Up");
    EXPECT_TRUE(isCalled("yak"));
}

TEST_F(Files, ArrowsTryPatchesInTheLayerThatWaits) {
    putPatch(sounds / "Zoo/yak.fxp");
    putPatch(sounds / "Zoo/zebra.fxp");
    openBrowser();
    playFound("yak", "yak");
    host.key("Escape");
    rig.plugin().setParameter(parameter::Layer2On, 0);
    const float first = rig.plugin().parameter(vantoric::hostIndex(parameter::Reso1, 0));
    ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::fileMenu), vantoric::file_row::loadToLayer1 + 1));
    host.idle(400);
    host.key("Down");
    EXPECT_TRUE(host.until([&] { return rig.plugin().parameter(parameter::Layer2On) == 1.0f; }, 10));
    rig.plugin().setParameter(parameter::Layer2On, 0);
    host.key("Up");
    EXPECT_TRUE(host.until([&] { return rig.plugin().parameter(parameter::Layer2On) == 1.0f; }, 10)) << "it waits on";
    EXPECT_EQ(rig.plugin().parameter(vantoric::hostIndex(parameter::Reso1, 0)), first) << "the first layer stays";
}

// The browser closes by its button, and the load waits on.
TEST_F(Files, EscapeCallsALoadThatWaitsOff) {
    putPatch(sounds / "Zoo/yak.fxp");
    putPatch(sounds / "Zoo/zebra.fxp");
    playFoundAfterOpening("yak");
    constexpr int second = 1;
    const auto wait = [&] {
        rig.plugin().setParameter(parameter::Layer1On + second, 0);
        host.idle(300);
        const Picture closed = middle();
        ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::fileMenu), vantoric::file_row::loadToLayer1 + second));
        ASSERT_TRUE(host.until([&] { return !areAlike(middle(), closed); }, 5));
        rig.click(controlWithTag(tag::browser));
        ASSERT_TRUE(host.until([&] { return areAlike(middle(), closed); }, 5));
        host.move(3, 400);
        host.idle(150);
    };
    wait();
    rig.click(controlWithTag(tag::nextPatch));
    EXPECT_TRUE(host.until([&] { return rig.plugin().parameter(parameter::Layer1On + second) == 1.0f; }, 10))
        << "the next patch goes to the layer";
    wait();
    host.key("Escape");
    host.idle(150);
    const float mark = 0.123f;
    rig.plugin().setParameter(vantoric::hostIndex(parameter::Reso1, 0), mark);
    rig.click(controlWithTag(tag::previousPatch));
    EXPECT_TRUE(host.until([&] { return rig.plugin().parameter(vantoric::hostIndex(parameter::Reso1, 0)) != mark; }, 10))
        << "it replaces the whole patch";
}

TEST_F(Files, EscapeTakesBackWhatWasTriedInALayer) {
    for (const char* name : {"yak", "zebra", "zorilla"}) putPatch(sounds / "Zoo" / (name + std::string(".fxp")));
    openBrowser();
    playFound("yak", "yak");
    host.key("Escape");
    const int reso = vantoric::hostIndex(parameter::Reso1, 1);
    rig.plugin().setParameter(parameter::Layer2On, 0);
    rig.plugin().setParameter(reso, 0.123f);
    const auto before = rig.parameters();
    for (const bool isKept : {false, true}) {
        ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::fileMenu), vantoric::file_row::loadToLayer1 + 1));
        host.idle(400);
        host.key("Down");
        EXPECT_TRUE(host.until([&] { return rig.plugin().parameter(reso) != 0.123f; }, 10)) << "it sounds";
        host.key("Down");
        EXPECT_TRUE(isCalled("zorilla"));
        host.key(isKept ? "Return" : "Escape");
        host.idle(100);
        if (isKept) {
            EXPECT_NE(rig.plugin().parameter(reso), 0.123f);
            host.key("Escape");  // nothing waits any more
            host.idle(200);
            EXPECT_TRUE(isCalled("zorilla"));
            EXPECT_EQ(rig.plugin().parameter(parameter::Layer2On), 1.0f);
        } else {
            EXPECT_TRUE(isCalled("yak"));
            EXPECT_EQ(rig.parameters(), before);
        }
    }
}

// The row of the menu of pasting means the layer on show.
TEST_F(Files, APatchGoesToTheLayerOnShowAndTheNextOneReplacesAllLayers) {
    putPatch(sounds / "Zoo/yak.fxp");
    putPatch(sounds / "Zoo/zebra.fxp");
    openBrowser();
    playFound("zebra", "zebra");
    host.key("Escape");
    constexpr int third = 2;
    const auto reso = [&](int layer) { return rig.plugin().parameter(vantoric::hostIndex(parameter::Reso1, layer)); };
    rig.plugin().setParameter(vantoric::hostIndex(parameter::Reso1, 0), 0.123f);
    rig.plugin().setParameter(parameter::Layer1On + third, 0);
    rig.showLayer(third);
    ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::pasteMenu), vantoric::paste_row::loadToLayer));
    host.idle(400);  // the browser opens
    playFound("yak", "yak");
    EXPECT_EQ(rig.plugin().parameter(parameter::Layer1On + third), 1.0f) << "the layer sounds";
    EXPECT_EQ(reso(0), 0.123f) << "the first one is as it was";
    playFound("zebra", "zebra");
    EXPECT_NE(reso(0), 0.123f);
}

// ---- the favourite star

TEST_F(Files, TheStarPutsACopyAmongTheFavouritesAndTakesItBack) {
    putPatch(sounds / "Zoo/zebra.fxp");
    const auto pressStar = [&] {
        rig.click(rig.middle(vantoric::WindowPart::Favourite));
        host.move(3, 400);
        host.idle(200);
    };
    const auto star = [&] { return glanceAt(vantoric::WindowPart::Favourite); };
    const auto showsOnlyFavourites = [&] {
        openBrowser();
        host.click(rig.at(570, 158).x, rig.at(570, 158).y);
        host.idle(200);
    };
    openBrowser();
    playFound("zebra", "zebra");
    host.key("Escape");
    host.move(3, 400);
    host.idle(300);
    const Picture dark = star();

    pressStar();
    ASSERT_TRUE(host.until([&] { return fs::exists(favourite); }, 5));
    EXPECT_TRUE(host.until([&] { return !areAlike(star(), dark); }, 5)) << "it shines";
    showsOnlyFavourites();
    EXPECT_TRUE(host.until([&] { return host.key("Down"), patchName() == favourite.stem().string(); }, 10))
        << "the filter finds it";
    for (int i = 0; i < 2; ++i) host.key("Escape");
    host.idle(100);

    pressStar();
    ASSERT_TRUE(asks()) << "whether the copy is to go";
    host.key("Return");  // No
    host.idle(200);
    EXPECT_TRUE(fs::exists(favourite));
    EXPECT_FALSE(areAlike(star(), dark)) << "the star stays with its file";
    pressStar();
    ASSERT_TRUE(asks());
    host.key("Tab");
    host.key("Return");  // Yes
    EXPECT_TRUE(host.until([&] { return !fs::exists(favourite); }, 5));
    EXPECT_TRUE(host.until([&] { return areAlike(star(), dark); }, 5));
    EXPECT_TRUE(fs::exists(sounds / "Zoo/zebra.fxp")) << "the patch itself stays";

    playFoundAfterOpening("zebra");
    showsOnlyFavourites();
    host.key("Down");
    host.idle(200);
    EXPECT_EQ(patchName(), "zebra") << "the filter finds none";
}

TEST(Typing, NamesOfEveryAlphabetAreFound) {
    dropSharedRig();
    const SpareKey key(U'\u0416');
    const std::string name = "\xd0\x96\xd1\x83\xd0\xba";
    WindowRig rig(3, {}, [&](const Installation& installation) {
        const fs::path sounds = installation.folder() / "Vantoric_sounds";
        fs::create_directories(sounds / "Zoo");
        for (const auto& entry : fs::directory_iterator(sounds / "Bass"))
            if (entry.path().extension() == ".fxp")
                return static_cast<void>(fs::copy_file(entry.path(), sounds / "Zoo" / (name + ".fxp")));
    });
    rig.click(controlWithTag(tag::browser));
    rig.host().idle(400);
    rig.host().key("slash");
    rig.host().keyCode(key.code());
    EXPECT_TRUE(rig.host().until(
        [&] {
            rig.host().key("Return");
            return rig.plugin().text(wire::opProgramName) == name;
        },
        10));
}

// ---- the chooser

TEST_F(Files, SavingAsksBeforeItOverwrites) {
    const fs::path file = sounds / "User/walrus.fxp";
    const auto save = [&] {
        ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::fileMenu), vantoric::file_row::saveAs));
        ASSERT_TRUE(asks());
        host.idle(200);
        host.control("a");
        host.type("walrus");
        host.key("Return");
        host.idle(200);
    };
    const auto turn = [&](float value) { rig.set(controlNamed("FIL1 RESO"), value); };
    turn(0.2f);
    save();
    ASSERT_TRUE(host.until([&] { return fs::exists(file); }, 5));
    EXPECT_TRUE(isCalled("walrus"));
    const std::string saved = bytesOf(file);
    rig.closeMenus();
    turn(0.7f);
    save();
    ASSERT_TRUE(asks());
    host.key("Return");  // No
    host.idle(200);
    EXPECT_EQ(bytesOf(file), saved);
    ASSERT_TRUE(rig.isCovered()) << "another name may be chosen";
    host.key("End");
    host.type("2");
    host.key("Return");
    const fs::path other = sounds / "User/walrus2.fxp";
    EXPECT_TRUE(host.until([&] { return fs::exists(other); }, 5)) << "from the name that was typed on";
    fs::remove(other);
    rig.closeMenus();
    save();
    ASSERT_TRUE(asks());
    host.key("Tab");
    host.key("Return");  // Yes
    EXPECT_TRUE(host.until([&] { return bytesOf(file) != saved; }, 5));
    fs::remove(file);
}

TEST_F(Files, APatchIsLoadedFromTheChooserByItsPathAndByAClick) {
    // Small letters only, as it is typed without Shift.
    const fs::path den = fs::temp_directory_path() / ("vantoric-den-" + std::to_string(getpid()));
    for (const char* name : {"otter", "walrus"}) putPatch(den / (std::string(name) + ".fxp"));
    const auto load = [&] { return rig.chooseFrom(controlWithTag(tag::fileMenu), vantoric::file_row::load); };
    rig.showLayer(2);
    rig.set(controlNamed("FIL1 RESO"), 0.3f);
    const auto namePlate = [&] { return glanceAt(vantoric::WindowPart::PatchList); };
    const Picture before = namePlate();
    ASSERT_TRUE(load());
    ASSERT_TRUE(rig.typePath((den / "otter.fxp").string()));
    EXPECT_TRUE(isCalled("otter"));
    host.move(3, 400);
    EXPECT_TRUE(host.until([&] { return !areAlike(namePlate(), before); }, 5)) << "its name is shown";
    const Picture otter = namePlate();
    const auto parameters = rig.parameters();
    rig.drag(controlNamed("FIL1 RESO"), 0, rig.plugin().parameter(parameter::Reso1) < 0.5f ? 30 : -30);
    EXPECT_EQ(rig.changedSince(parameters), std::vector<int>{parameter::Reso1}) << "the first layer is on show";

    ASSERT_TRUE(load());
    ASSERT_TRUE(asks());
    host.idle(400);  // the folder of the last time is read
    constexpr double listLeft = 410, listTop = 183, rowHeight = 18;
    const Point second = rig.at(listLeft + 40, listTop + 1.5 * rowHeight);
    host.click(second.x, second.y);
    host.idle(100);
    EXPECT_TRUE(rig.isCovered()) << "a click chooses";
    host.key("Return");
    EXPECT_TRUE(isCalled("walrus"));
    host.move(3, 400);
    EXPECT_TRUE(host.until([&] { return !areAlike(namePlate(), otter); }, 5));

    ASSERT_TRUE(load());
    ASSERT_TRUE(asks());
    host.idle(400);
    host.doubleClick(second.x, second.y - rowHeight * rig.unit());
    EXPECT_TRUE(isCalled("otter")) << "a double click loads";
    fs::remove_all(den);
}

// ---- rows of menus that make files, or take them

class FileRows : public Files {
protected:
    void TearDown() override {
        for (const fs::path& file : {tone, saved}) fs::remove(file);
        Files::TearDown();
    }
    bool choose(int menu, int row) { return rig.chooseFrom(controlWithTag(menu), row); }
    // Small letters only, as they are typed without Shift.
    const fs::path tone = fs::temp_directory_path() / ("vantoric-row-" + std::to_string(getpid()) + ".wav"),
                   saved = fs::temp_directory_path() / ("vantoric-saved-" + std::to_string(getpid()) + ".wav");
};

TEST_F(FileRows, QuickSaveAndDeleteMeanThePatchOnShow) {
    const fs::path file = sounds / "Zoo/zebra.fxp";
    putPatch(file);
    openBrowser();
    playFound("zebra", "zebra");
    host.key("Escape");
    const std::string before = bytesOf(file);
    const auto& knob = controlNamed("FIL1 RESO");
    rig.drag(knob, 0, rig.value(knob) < 0.5f ? 40 : -40);
    ASSERT_TRUE(choose(tag::fileMenu, vantoric::file_row::quickSave));
    EXPECT_TRUE(host.until([&] { return bytesOf(file) != before; }, 5));
    ASSERT_TRUE(choose(tag::fileMenu, vantoric::file_row::deletePatch));
    ASSERT_TRUE(asks());
    host.key("Return");  // No
    host.idle(100);
    EXPECT_TRUE(fs::exists(file));
    ASSERT_TRUE(choose(tag::fileMenu, vantoric::file_row::deletePatch));
    ASSERT_TRUE(asks());
    host.key("Tab");
    host.key("Return");
    EXPECT_TRUE(host.until([&] { return !fs::exists(file); }, 5));
    EXPECT_EQ(patchName(), "zebra") << "what plays goes on";
}

TEST_F(FileRows, ALayerIsSavedAsAPatch) {
    for (const int layer : {0, 3}) {
        const std::string name = "otter" + std::to_string(layer);
        ASSERT_TRUE(choose(tag::fileMenu, vantoric::file_row::saveLayer1 + layer));
        ASSERT_TRUE(rig.typePath(name));
        EXPECT_TRUE(host.until([&] { return fs::exists(sounds / "User" / (name + ".fxp")); }, 5)) << layer;
        rig.closeMenus();
        fs::remove(sounds / "User" / (name + ".fxp"));
    }
}

TEST_F(FileRows, AWaveIsLoadedAndSaved) {
    writeTone(tone, 3000);
    rig.plugin().setParameter(vantoric::hostIndex(parameter::SynType1, 0), 4.0f / 128);  // custom wave
    host.idle(150);
    const auto chooseWave = [&](int row) {
        const auto menu = rig.openMenu(controlWithTag(tag::waveMenu1));
        ASSERT_TRUE(menu);
        rig.click(rig.rowPlace(*menu, {"Load Wave", "Save Wave"}, row));
    };
    const auto before = rig.plugin().chunk();
    chooseWave(0);
    ASSERT_TRUE(rig.typePath(tone.string()));
    EXPECT_TRUE(host.until([&] { return rig.plugin().chunk() != before; }, 5));
    chooseWave(1);
    ASSERT_TRUE(rig.typePath(saved.string()));
    constexpr std::size_t cycleFile = 4140;
    EXPECT_TRUE(host.until([&] { return bytesOf(saved).size() == cycleFile; }, 5));
}

TEST_F(FileRows, QuickImportMakesAPatchOfAWave) {
    writeTone(tone);
    const std::size_t before = rig.plugin().chunk().size();
    ASSERT_TRUE(choose(tag::fileMenu, vantoric::file_row::quickSample));
    ASSERT_TRUE(rig.typePath(tone.string()));
    EXPECT_TRUE(host.until([&] { return rig.plugin().chunk().size() > before + 8192; }, 10));
    EXPECT_EQ(patchName(), tone.stem().string());
}

TEST_F(FileRows, TheVocoderTakesAWaveAsItsVoice) {
    writeTone(tone);
    ASSERT_TRUE(choose(tag::fileMenu, vantoric::file_row::quickVocoder));
    ASSERT_TRUE(asks()) << "what to select";
    host.key("Return");
    ASSERT_TRUE(rig.typePath(tone.string()));
    EXPECT_TRUE(isCalled(tone.stem().string()));
    constexpr std::size_t frames = 22050;  // of the tone
    EXPECT_EQ(SavedPatch(rig.plugin().chunk()).sample(0).samples.size(), frames);
    EXPECT_EQ(rig.plugin().text(wire::opParameterDisplay, parameter::FxInType).substr(0, 7), "Vocoder");
}

TEST_F(FileRows, TheVocoderThatIsCalledOffLeavesThePatch) {
    const auto before = rig.plugin().chunk();
    ASSERT_TRUE(choose(tag::fileMenu, vantoric::file_row::quickVocoder));
    ASSERT_TRUE(asks());
    host.key("Return");
    host.idle(300);
    ASSERT_TRUE(asks()) << "the chooser";
    host.key("Escape");
    EXPECT_TRUE(host.until([&] { return !rig.isCovered(); }, 5));
    EXPECT_EQ(rig.plugin().chunk(), before);
}

TEST_F(FileRows, AnInstrumentIsImportedThroughTheChooser) {
    writeTone(tone);
    const fs::path instrument = fs::path(tone).replace_extension(".sfz");
    std::ofstream(instrument) << "<region> sample=" << tone.filename().string() << " lokey=0 hikey=60 pitch_keycenter=48\n"
                              << "<region> sample=" << tone.filename().string() << " lokey=61 hikey=127 pitch_keycenter=72\n";
    ASSERT_TRUE(choose(tag::fileMenu, vantoric::file_row::importSfz));
    ASSERT_TRUE(rig.typePath(instrument.string()));
    EXPECT_TRUE(isCalled(instrument.stem().string()));
    fs::remove(instrument);
    const SavedPatch patch(rig.plugin().chunk());
    std::multiset<std::size_t> lengths;
    for (int oscillator = 0; oscillator < 3; ++oscillator) lengths.insert(patch.sample(oscillator).samples.size());
    constexpr std::size_t frames = 22050;
    EXPECT_EQ(lengths, (std::multiset<std::size_t>{0, frames, frames})) << "a region is an oscillator";
    for (int oscillator = 0; oscillator < 3; ++oscillator)
        EXPECT_EQ(rig.plugin().parameter(parameter::On1 + oscillator), oscillator < 2 ? 1.0f : 0.0f);
}

TEST_F(FileRows, TooltipsAreTurnedOnAndOff) {
    const fs::path file = rig.installation().tooltipsFile();
    const bool wasThere = fs::exists(file);
    for (const bool isThere : {!wasThere, wasThere}) {
        ASSERT_TRUE(choose(tag::helpMenu, vantoric::help_row::tooltips));
        ASSERT_TRUE(asks()) << "what it takes to see it";
        EXPECT_EQ(fs::exists(file), isThere);
        rig.closeMenus();
    }
}

}  // namespace
