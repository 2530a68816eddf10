// Every layer that opens over the window, as pictures for a person to look at; a picture without its panel fails.
#include <fcntl.h>
#include <sys/stat.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "editor/box_view.h"
#include "editor/browser_view.h"
#include "editor/credits_view.h"
#include "editor/file_chooser.h"
#include "editor/notes_box.h"
#include "editor/value_box.h"
#include "layer_picture.h"
#include "platform/scratch_folder.h"
#include "small_library.h"
#include "tests/window/compare_pictures.h"

namespace vantoric {
namespace {

namespace fs = std::filesystem;

struct WindowSize {
    const char* name;
    double width, height, zoom;
};
constexpr WindowSize sizes[] = {{"normal", 1200, 660, 1.5},
                                {"small", 1200, 660, 1},
                                {"half", 1200, 660, 0.75},
                                {"low", 1200, 128, 1.5},
                                {"lowest", 802, 128, 1}};

VSTGUI::CRect areaOf(const WindowSize& size) { return {0, 0, size.width, size.height}; }

template <class Make>
void keepInAllSizes(const std::string& name, const Make& make) {
    const WithGui gui;
    for (const WindowSize& size : sizes) {
        const int drawn = keepPicture(name + "_" + size.name, make(areaOf(size)), size.width, size.height, size.zoom);
        EXPECT_GT(drawn, 3000) << name << " " << size.name;
    }
}

// The picture that was just kept, beside a small stored one: a line of text that is missing or stands elsewhere fails.
// `part`: all that is compared, in pixels. VANTORIC_UPDATE_REFERENCES=1 stores what is seen.
void compare(const std::string& name, int width = 300, const std::optional<VSTGUI::CRect>& part = {}) {
    testhost::Picture seen = testhost::loadPng(std::string(VANTORIC_PICTURES) + "/" + name + ".png");
    if (part)
        seen = seen.part(static_cast<int>(part->left), static_cast<int>(part->top), static_cast<int>(part->getWidth()),
                         static_cast<int>(part->getHeight()));
    const std::string path = std::string(REFERENCES) + "/" + name + ".png";
    if (std::getenv("VANTORIC_UPDATE_REFERENCES") != nullptr) {
        ASSERT_TRUE(testhost::savePng(testhost::reduced(seen, width), path));
        return;
    }
    const testhost::Difference d = testhost::difference(seen, testhost::loadPng(path));
    EXPECT_LE(d.largest, testhost::tolerance) << name << " differs from its reference at " << d.x << ", " << d.y;
}

TEST(Pictures, Boxes) {
    keepInAllSizes("box_error", [](const VSTGUI::CRect& area) {
        return new BoxView(area, {"Error", "There are no free matrix slots available.", {"OK"}}, {});
    });
    keepInAllSizes("box_question", [](const VSTGUI::CRect& area) {
        return new BoxView(area, {"Warning", "Are you sure that you want to delete the file 'Glass Harbour'?", {"No", "Yes"}},
                           {});
    });
    keepInAllSizes("box_choice", [](const VSTGUI::CRect& area) {
        return new BoxView(area, {"Autotune", "Autotune the sample?", {"Cancel", "No", "Yes"}, {}, 1}, {});
    });
    keepInAllSizes("box_times", [](const VSTGUI::CRect& area) {
        auto* box = new BoxView(area, {"Info", "You must load a sample before you can edit it.", {"OK"}}, {});
        box->setTimes(12);
        return box;
    });
    compare("box_choice_normal");
    compare("box_question_normal");
    compare("box_error_lowest");
    keepInAllSizes("box_long", [](const VSTGUI::CRect& area) {
        std::string text = "/home/somebody/Music/Vantoric/" + std::string(90, 'w') + ".wav can't be read.\n\n";
        for (int line = 0; line < 50; ++line) text += "It is the file number " + std::to_string(line) + " of this kind.\n";
        return new BoxView(area, {"Hint", text, {"OK"}}, {});
    });
    compare("box_times_normal");
    compare("box_long_normal");
    compare("box_long_lowest");
}

TEST(Pictures, Work) {
    keepInAllSizes("work", [](const VSTGUI::CRect& area) {
        auto* box = new BoxView(area, {"Importing", "Concert Grand Close Microphones.sfz", {"Cancel"}, [] { return 0.42; }}, {});
        box->follow();
        return box;
    });
    compare("work_normal");
}

TEST(Pictures, Notes) {
    const BrowserPatch patch{"Keys", "Glass Harbour"};
    keepInAllSizes("notes", [&](const VSTGUI::CRect& area) {
        return new NotesBox(area, patch, {"bright, bell, slow", "", "Hold a chord and turn the wheel."}, {});
    });
    compare("notes_normal");
}

TEST(Pictures, ValueBoxes) {
    keepInAllSizes("value", [](const VSTGUI::CRect& area) {
        return new ValueBox(area, {500, 60, 560, 100}, {"Cutoff 1", "783 Hz", "20 Hz to 20 kHz", ""}, {}, {});
    });
    compare("value_normal");
    keepInAllSizes("value_error", [](const VSTGUI::CRect& area) {
        auto* box = new ValueBox(area, {}, {"Semitones", "twelve", "-24 to 24", "semitones"},
                                 [](const std::string&) { return "This is no number that fits here."; }, {});
        press(*box, VSTGUI::VirtualKey::Return);
        return box;
    });
    compare("value_error_normal");
    compare("value_lowest");
}

void fill(const fs::path& folder) {
    for (const char* name : {"Drums", "Loops 2019", "Field recordings", "Voices"}) fs::create_directories(folder / name);
    for (int number = 1; number < 40; ++number)
        std::ofstream(folder / ("Kick " + std::to_string(number) + ".wav"))
            << std::string(static_cast<std::size_t>(number * number) * 997, 'x');
    std::ofstream(folder / "Ноктюрн.wav") << "x";
    std::ofstream(folder / "夜の港.wav") << "x";
    std::ofstream(folder / ("Long " + std::string(200, 'o') + ".wav")) << "x";
    std::ofstream(folder / "Voice \xff\xfe broken.wav") << "x";
    std::ofstream(folder / "notes.txt") << "x";
    // A summer's noon, wherever this runs.
    std::tm noon{};
    noon.tm_year = 124;
    noon.tm_mon = 5;
    noon.tm_mday = 21;
    noon.tm_hour = 12;
    noon.tm_isdst = -1;
    const timespec moment{std::mktime(&noon), 0}, times[]{moment, moment};
    for (const auto& entry : fs::directory_iterator(folder)) ASSERT_EQ(utimensat(AT_FDCWD, entry.path().c_str(), times, 0), 0);
}

TEST(Pictures, FileChooser) {
    const platform::ScratchFolder scratch;
    fill(scratch.path());
    // All of the panel below the path, which is another one each time.
    const VSTGUI::CRect belowThePath(390, 240, 1410, 834);
    const std::string folder = fs::path(scratch.path()).string();
    const std::vector<FileChooser::Place> places{
        {"Home", "/root"}, {"My patches", folder},  {"All patches", "/tmp"},           {"Wavetables", "/opt"},
        {"Computer", "/"}, {"Drums", "/usr", true}, {"Field recordings", "/var", true}};
    const auto open = [&](const VSTGUI::CRect& area, bool isSave) {
        auto* chooser = new FileChooser(area, platform::fileRequest(platform::FileKind::Wave, isSave, folder), places, {});
        chooser->finishReading();
        return chooser;
    };
    keepInAllSizes("chooser_load", [&](const VSTGUI::CRect& area) {
        auto* chooser = open(area, false);
        for (int row = 0; row < 6; ++row) press(*chooser, VSTGUI::VirtualKey::Down);
        return chooser;
    });
    keepInAllSizes("chooser_save", [&](const VSTGUI::CRect& area) {
        auto* chooser = open(area, true);
        type(*chooser, "Kick 41");
        return chooser;
    });
    keepInAllSizes("chooser_path", [&](const VSTGUI::CRect& area) {
        auto* chooser = open(area, false);
        press(*chooser, VSTGUI::VirtualKey::End);
        type(*chooser, "/usr/sha");
        chooser->finishReading();
        return chooser;
    });
    keepInAllSizes("chooser_folder", [&](const VSTGUI::CRect& area) {
        auto* chooser = open(area, false);
        auto makes = typedKey(U'n');
        makes.modifiers.add(VSTGUI::ModifierKey::Control);
        chooser->onKey(makes);
        return chooser;
    });
    compare("chooser_load_normal", 450, belowThePath);
    compare("chooser_save_normal", 450, belowThePath);
    keepInAllSizes("chooser_empty", [&](const VSTGUI::CRect& area) {
        auto* chooser =
            new FileChooser(area, platform::fileRequest(platform::FileKind::Patch, false, folder + "/Drums"), places, {});
        chooser->finishReading();
        return chooser;
    });
}

TEST(Pictures, Credits) {
    keepInAllSizes("credits", [](const VSTGUI::CRect& area) { return new CreditsView(area, "Version 3.3.0", {}); });
    compare("credits_normal");
}

// ---- the browser, in the sizes that have it

void keepBrowser(const std::string& name, SmallLibrary library, const std::function<void(BrowserView&)>& work = {}) {
    const WithGui gui;
    for (const WindowSize& size : {sizes[0], sizes[1], sizes[2]}) {
        auto* view = new BrowserView({0, 128, size.width, size.height}, library, {});
        if (work) work(*view);
        EXPECT_GT(keepPicture("browser_" + name + "_" + size.name, view, size.width, size.height, size.zoom), 3000);
    }
}

TEST(Pictures, Browser) {
    const SmallLibrary library = shippedLibrary();
    keepBrowser("open", library, [](BrowserView& view) { movePointer(view, view.rowRect(30).getCenter()); });
    keepBrowser("stars", library, [](BrowserView& view) { movePointer(view, view.starRect(30, 4).getCenter()); });
    keepBrowser("keys", library, [](BrowserView& view) { press(view, VSTGUI::VirtualKey::Down); });
    keepBrowser("search", library, [](BrowserView& view) { type(view, "Glass"); });
    compare("browser_open_normal", 450);
    compare("browser_search_normal", 450);
    keepBrowser("nothing", library, [](BrowserView& view) { type(view, "Glas Hrbr"); });
    keepBrowser("filter", library, [](BrowserView& view) { click(view, view.chipRect(1).getCenter()); });
    SmallLibrary large = library;
    large.shownHint = {"Load a patch to synthesizer layer 2", true};
    std::vector<std::string> names;
    for (int number = 1; number <= 1200; ++number)
        names.push_back("Patch " + std::to_string(number) + (number % 9 == 0 ? std::string(60, 'w') : ""));
    for (int number = 0; number < 30; ++number) large.add("Folder " + std::to_string(number), names);
    large.listed = 40;
    keepBrowser("large", large, [](BrowserView& view) { press(view, VSTGUI::VirtualKey::End); });
    SmallLibrary empty;
    empty.listed = -1;
    empty.shownHint = {"Soundset"};
    keepBrowser("empty", empty);
    for (const char* state : {"stars", "keys", "nothing", "filter", "large", "empty"})
        compare(std::string("browser_") + state + "_normal", 450);
    compare("browser_open_small", 450);
}

}  // namespace
}  // namespace vantoric
