// Pictures of every page, size and overlay: kept in the build tree for a person to look at, and some compared with stored ones.
// VANTORIC_UPDATE_REFERENCES=1 stores what is seen as the reference.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>

#include "base/parameters.h"
#include "editor/model/menu_rows.h"
#include "editor/model/pages.h"
#include "editor/model/window_size.h"
#include "tests/window/compare_pictures.h"
#include "tests/window/window_rig.h"
#include "tests/window/x_server.h"

using namespace testhost;
namespace fs = std::filesystem;
namespace page = vantoric::page;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;
using vantoric::WindowPart;

namespace {

constexpr int referenceWidth = 450;

// Parts of the window, in units of the layout.
constexpr vantoric::LayoutRect band{0, 0, 1200, 128}, firstOscillator{14, 132, 586, 98}, filters{600, 132, 400, 290},
    menuRoom{100, 0, 500, 500}, zoomMenuRoom{900, 0, 300, 420}, submenuRoom{640, 200, 420, 460}, edge{1000, 0, 200, 660},
    middle{480, 262, 240, 136};

// No patches but one category without any: what the window shows depends on nothing that may be added to the content.
void withoutPatches(const Installation& installation) {
    fs::remove_all(installation.folder() / "Vantoric_sounds");
    fs::create_directories(installation.folder() / "Vantoric_sounds" / "Pads");
    fs::create_directories(installation.folder() / "Vantoric_sounds" / "User");
}

// A patch with something to see in every section.
void showSomething(WindowRig& rig) {
    PluginHost& plugin = rig.plugin();
    std::string name = "Glass Harbour";
    plugin.call(wire::opSetProgramName, 0, 0, name.data());
    for (int layer = 0; layer < 4; ++layer) {
        const auto set = [&](int number, float value) { plugin.setParameter(vantoric::hostIndex(number, layer), value); };
        const auto list = [&](int number, int row) { set(number, static_cast<float>(row) / 128); };
        for (int i = 0; i < vantoric::controlCount(); ++i)
            if (const auto& entry = vantoric::controlEntry(i); vantoric::parameterOfTag(entry.tag) >= 0)
                plugin.setParameter(vantoric::hostIndexOfTag(entry.tag, layer), entry.defaultValue);
        for (int i = 0; i < 3; ++i) {
            set(parameter::On1 + i, i < 2 ? 1.0f : 0.0f);
            set(parameter::Vol1 + i, 0.8f);
            list(parameter::SynType1 + i, 1);
            list(parameter::LfoWave1 + i, 2 + i);
        }
        for (int i = 0; i < 16; ++i) set(parameter::Step1 + i, static_cast<float>((i * 5) % 16) / 15);
        list(111, 3);
        set(parameter::Cutoff1, 0.6f);
        set(parameter::Reso1, 0.5f);
        for (int i = 0; i < 3; ++i) {
            constexpr int sources[] = {50, 8, 19}, destinations[] = {20, 23, 40};
            list(parameter::MatSrc1 + i, sources[i]);
            list(parameter::MatDst1 + i, destinations[i]);
            set(parameter::MatVal1 + i, 0.6f + 0.1f * static_cast<float>(i));
        }
    }
    for (int layer = 0; layer < 4; ++layer) plugin.setParameter(parameter::Layer1On + layer, layer < 2 ? 1.0f : 0.0f);
    plugin.setParameter(parameter::FxMaType, 6.0f / 128);
    plugin.render(512);
}

class Pictures : public testing::Test {
protected:
    static void SetUpTestSuite() {
        dropSharedRig();
        fs::create_directories(PICTURES);
    }
    static void TearDownTestSuite() { rig_.reset(); }

    WindowRig& rig() {
        if (!rig_) {
            rig_ = std::make_unique<WindowRig>(3, HostAnswers{}, withoutPatches);
            showSomething(*rig_);
            rig_->host().idle(2000);  // the waves come in
        }
        return *rig_;
    }

    static void pointAway(WindowRig& rig) {
        rig.host().move(rig.host().size().width + 30, 3);
        rig.host().idle(120);
    }

    void keep(const std::string& name, WindowRig& rig) {
        seen_ = rig.host().picture();
        ASSERT_FALSE(seen_.isEmpty()) << name;
        EXPECT_TRUE(savePng(seen_, std::string(PICTURES) + "/" + name + ".png"));
    }
    // A part of the window, in units of the layout, where the rest is as in another picture. `width` is that of the whole in
    // the reference.
    void keepAndCompare(const std::string& name, WindowRig& rig, const std::optional<vantoric::LayoutRect>& part = {},
                        int width = referenceWidth) {
        keep(name, rig);
        const int whole = seen_.width;
        const auto cutOut = [&](const Picture& picture) {
            const double u = rig.unit();
            return part ? picture.part(static_cast<int>(part->x * u), static_cast<int>(part->y * u),
                                       static_cast<int>(part->width * u), static_cast<int>(part->height * u))
                        : picture;
        };
        seen_ = cutOut(seen_);
        const std::string path = std::string(REFERENCES) + "/" + name + ".png";
        if (std::getenv("VANTORIC_UPDATE_REFERENCES") != nullptr) {
            fs::create_directories(REFERENCES);
            ASSERT_TRUE(savePng(reduced(seen_, width * seen_.width / whole), path));
            return;
        }
        const Picture reference = loadPng(path);
        Difference d = difference(seen_, reference);
        for (int looks = 0; d.largest > tolerance && looks < 12; ++looks) {  // a caret blinks
            rig.host().idle(100);
            d = difference(cutOut(rig.host().glance()), reference);
        }
        EXPECT_LE(d.largest, tolerance) << name << " differs from its reference at " << d.x << ", " << d.y;
        std::printf("%s: %.1f at %d, %d\n", name.c_str(), d.largest, d.x, d.y);
    }

    Picture seen_;
    static std::unique_ptr<WindowRig> rig_;
};
std::unique_ptr<WindowRig> Pictures::rig_;

// ---- the comparison itself

class Comparison : public Pictures {
protected:
    Picture plain() {
        pointAway(rig());
        return rig().host().picture();
    }
};

void fill(Picture& picture, int left, int top, int right, int bottom) {
    const unsigned ground = picture.at(left, top);
    for (int y = std::max(top, 0); y < std::min(bottom, picture.height); ++y)
        for (int x = std::max(left, 0); x < std::min(right, picture.width); ++x) {
            std::uint8_t* p = picture.rgb.data() + 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                                                        static_cast<std::size_t>(x));
            for (int channel = 0; channel < 3; ++channel)
                p[channel] = static_cast<std::uint8_t>(ground >> (16 - 8 * channel) & 255);
        }
}

TEST_F(Comparison, SeesEveryCaptionThatIsMissing) {
    const Picture whole = plain(), reference = reduced(whole, referenceWidth);
    int looked = 0;
    double least = 255;
    std::string missed;
    for (int i = 0; i < vantoric::controlCount(); ++i) {
        const auto& entry = vantoric::controlEntry(i);
        const bool isShown =
            entry.page <= page::layer || entry.page == page::envelope1 || entry.page == page::lfo1 || entry.page == page::insert1;
        if (!isKnob(entry) || !isShown || vantoric::captionStandsBeside(entry)) continue;
        const double line = entry.kind == vantoric::WidgetKind::Knob ? 25.5 : 36, half = 21, u = rig().unit();
        Picture doctored = whole;
        fill(doctored, static_cast<int>((entry.x - half) * u), static_cast<int>((entry.y + line - 8) * u),
             static_cast<int>((entry.x + half) * u), static_cast<int>((entry.y + line + 3) * u));
        const double seen = difference(doctored, reference).largest;
        ++looked;
        least = std::min(least, seen);
        if (seen <= tolerance) missed += std::string(entry.name) + " " + std::to_string(seen) + "; ";
    }
    EXPECT_GT(looked, 40);
    EXPECT_EQ(missed, "");
    std::printf("the least missing caption: %.1f\n", least);
}

// Letters and edges half a pixel aside, or softer, or heavier: another version of the libraries.
TEST_F(Comparison, LetsAnotherRenderersEdgesPass) {
    const Picture whole = plain(), reference = reduced(whole, referenceWidth);
    EXPECT_EQ(difference(whole, reference).largest, 0);
    const auto mixed = [&whole](int dx, int dy, double share) {
        Picture result = whole;
        for (int y = 1; y + 1 < whole.height; ++y)
            for (int x = 1; x + 1 < whole.width; ++x)
                for (int channel = 0; channel < 3; ++channel) {
                    const auto value = [&](int px, int py) {
                        return whole.rgb[static_cast<std::size_t>((py * whole.width + px) * 3 + channel)];
                    };
                    result.rgb[static_cast<std::size_t>((y * whole.width + x) * 3 + channel)] =
                        static_cast<std::uint8_t>(std::lround((1 - share) * value(x, y) + share * value(x + dx, y + dy)));
                }
        return result;
    };
    EXPECT_LE(difference(mixed(1, 0, 0.5), reference).largest, tolerance) << "half a pixel to the left";
    EXPECT_LE(difference(mixed(0, 1, 0.5), reference).largest, tolerance) << "half a pixel up";
    EXPECT_LE(difference(mixed(-1, -1, 0.4), reference).largest, tolerance);
    Picture lighter = whole;  // other half tones: what is between dark and bright comes out a tenth brighter
    for (std::uint8_t& channel : lighter.rgb) {
        const double v = channel / 255.0;
        channel = static_cast<std::uint8_t>(std::lround(255 * (v + 0.4 * v * v * (1 - v) * 0.5)));
    }
    EXPECT_LE(difference(lighter, reference).largest, tolerance);
}

// ---- pages

TEST_F(Pictures, OfEveryPage) {
    for (int i = 0; i < 4; ++i) {
        for (const int selector : {tag::envelopePage1 + i, tag::lfoPage1 + i, tag::insertPage1 + i % 2,
                                   i == 2 ? tag::matrixPage3 : tag::matrixPage1 + i % 2})
            rig().click(controlWithTag(selector));
        pointAway(rig());
        keepAndCompare("pages-" + std::to_string(i + 1), rig());
    }
    for (const int selector : {tag::envelopePage1 + 0, tag::lfoPage1 + 0, tag::insertPage1 + 0, tag::matrixPage1 + 0})
        rig().click(controlWithTag(selector));
}

TEST_F(Pictures, OfEveryTypeOfSynthesis) {
    const char* const names[] = {"wavetable", "hypersaw", "noise", "sample", "custom", "analog"};
    for (int type = 0; type < 6; ++type) {
        for (int i = 0; i < 3; ++i) rig().plugin().setParameter(parameter::SynType1 + i, static_cast<float>(type) / 128);
        pointAway(rig());
        const std::string name = std::string("type-") + names[type];
        constexpr int noise = 2;  // its display is never the same
        type == noise ? keep(name, rig()) : keepAndCompare(name, rig(), firstOscillator);
    }
    for (int i = 0; i < 3; ++i) rig().plugin().setParameter(parameter::SynType1 + i, 1.0f / 128);
    rig().host().idle(120);
}

TEST_F(Pictures, OfTheOtherLayers) {
    for (int layer = 1; layer < 4; ++layer) {
        rig().showLayer(layer);
        pointAway(rig());
        keepAndCompare("layer-" + std::to_string(layer + 1), rig(), band);
    }
    rig().showLayer(0);
}

// ---- overlays

TEST_F(Pictures, OfMenusAndLists) {
    ASSERT_TRUE(rig().openMenu(controlNamed("FILTER1 TYPE")));
    keepAndCompare("list-long", rig());
    rig().closeMenus();
    ASSERT_TRUE(rig().openMenu(controlNamed("ARP STEP 16 NOTE")));
    keepAndCompare("list-at-the-edge", rig(), edge);
    rig().closeMenus();
    const int menus[] = {tag::fileMenu,   tag::copyMenu, tag::pasteMenu, tag::initMenu,
                         tag::editorMenu, tag::helpMenu, tag::zoomMenu};
    for (const int menu : menus) {
        ASSERT_TRUE(rig().openMenu(controlWithTag(menu)));
        keepAndCompare("menu-" + std::to_string(menu), rig(), menu == tag::zoomMenu ? zoomMenuRoom : menuRoom);
        rig().closeMenus();
    }
    const auto& knob = controlNamed("FIL1 CUTOFF");
    const std::vector<std::string> rows{"", "", "-", "", "-", "", "", "", "", "", ""};
    for (int submenu = 0; submenu < 5; ++submenu) {
        const auto menu = rig().openMenu(knob, 3);
        ASSERT_TRUE(menu);
        const Point head = rig().rowPlace(*menu, rows, 5 + submenu);
        rig().host().move(head.x, head.y);
        ASSERT_TRUE(rig().host().until([&] { return menuBox(rig().host().glance(), menu).has_value(); }, 5));
        submenu == 0 ? keepAndCompare("knob-menu", rig())
                     : keepAndCompare("knob-menu-" + std::to_string(submenu + 1), rig(), submenuRoom);
        rig().closeMenus();
    }
}

TEST_F(Pictures, OfDrags) {
    WindowHost& host = rig().host();
    const auto& knob = controlNamed("FIL1 CUTOFF");
    const Point p = rig().middle(knob), lfo = rig().middle(WindowPart::DragLfo), reso = rig().middle(controlNamed("FIL1 RESO"));
    host.move(p.x, p.y);
    host.press();
    host.move(p.x, p.y - 10);
    keepAndCompare("drag-knob", rig());
    host.move(p.x, p.y);
    host.release();
    host.idle(1500);
    host.move(lfo.x, lfo.y);
    host.press();
    host.move((lfo.x + reso.x) / 2, (lfo.y + reso.y) / 2);
    host.move(reso.x, reso.y);
    keepAndCompare("drag-lfo", rig());
    host.key("Escape");
    host.release();
}

TEST_F(Pictures, OfMultilayerEditingAndLearning) {
    const auto& copy = controlWithTag(tag::copyMenu);
    ASSERT_TRUE(rig().chooseFrom(copy, vantoric::copy_row::multilayer));
    pointAway(rig());
    keepAndCompare("multilayer", rig());
    ASSERT_TRUE(rig().chooseFrom(copy, vantoric::copy_row::multilayer));
    const auto menu = rig().openMenu(controlNamed("FIL1 RESO"), 3);
    ASSERT_TRUE(menu && rig().choose(*menu, {"", "", "-", "", "-", "", "", "", "", "", ""}, 3));
    keep("learning", rig());  // its ring glows and fades
    rig().plugin().midi(0xB0, 30, 60);
    rig().plugin().render(512);
    rig().host().idle(150);
    keepAndCompare("learnt", rig(), filters);
}

TEST_F(Pictures, OfBoxesAndBrowser) {
    for (int i = 0; i < 15; ++i) {
        rig().plugin().setParameter(parameter::MatSrc1 + i, 20.0f / 128);
        rig().plugin().setParameter(parameter::MatDst1 + i, static_cast<float>(40 + i) / 128);
    }
    rig().host().idle(120);
    rig().drop(WindowPart::DragEnvelope, controlNamed("OSC1 OCTAVE"));
    ASSERT_TRUE(rig().host().until([&] { return rig().isCovered(); }, 5));
    pointAway(rig());
    keepAndCompare("box-error", rig());
    rig().closeMenus();
    showSomething(rig());
    const auto& help = controlWithTag(tag::helpMenu);
    for (const auto& [row, name] :
         {std::pair(int(vantoric::help_row::credits), "credits"), std::pair(int(vantoric::help_row::version), "box-version")}) {
        ASSERT_TRUE(rig().chooseFrom(help, row));
        ASSERT_TRUE(rig().host().until([&] { return rig().isCovered(); }, 5)) << name;
        keep(name, rig());
        rig().closeMenus();
    }
    ASSERT_TRUE(rig().chooseFrom(controlWithTag(tag::fileMenu), vantoric::file_row::load));
    rig().host().idle(300);
    keep("chooser", rig());
    rig().closeMenus();
    rig().click(controlWithTag(tag::browser));
    rig().host().idle(500);
    keepAndCompare("browser", rig());
    rig().host().key("Escape");
}

// What is told and asked about sizes.
TEST_F(Pictures, OfTheWordsAboutSizes) {
    rig_.reset();
    const OtherScreen screen(1280, 800);
    HostAnswers answers;
    answers.product = "Orion";  // which says most
    WindowRig small(0, answers, withoutPatches);
    ASSERT_TRUE(small.chooseFrom(controlWithTag(tag::editorMenu), 8));
    const auto compareBox = [&](const std::string& name, int width) {
        ASSERT_TRUE(small.host().until([&] { return small.isCovered(); }, 5)) << name;
        keepAndCompare(name, small, middle, width);
    };
    constexpr int widthByUnits = 1200;  // a pixel of the reference is a unit of the layout: letters can be read
    compareBox("size-words", widthByUnits);
    small.host().key("Return");
    small.host().idle(200);
    compareBox("size-question", widthByUnits);
    small.host().key("Tab");
    small.host().key("Return");  // Yes
    small.host().idle(500);
    small.setUnit(3);  // within the host's window, which stays as it was
    compareBox("size-forbidden", widthByUnits * 2 / 3);
    small.host().key("Return");
}

TEST_F(Pictures, OfATooltip) {
    rig_.reset();
    WindowRig told(3, HostAnswers{}, [](const Installation& installation) {
        withoutPatches(installation);
        installation.setTooltips(true);
    });
    showSomething(told);
    told.host().idle(1000);
    const Point p = told.middle(controlNamed("FIL1 RESO"));
    told.host().move(p.x, p.y);
    told.host().idle(1500);  // it comes after a while
    keepAndCompare("tooltip", told, filters);
}

TEST_F(Pictures, OfTypingAValue) {
    rig().host().keyDown("Alt_L");
    rig().click(controlNamed("FIL1 RESO"));
    rig().host().keyUp("Alt_L");
    rig().host().idle(150);
    rig().host().type("62");
    pointAway(rig());
    keepAndCompare("typing", rig(), filters);
    rig().host().key("Escape");
    rig().host().idle(100);
}

TEST_F(Pictures, OfTheFocusAndHovering) {
    for (int i = 0; i < 30; ++i) rig().host().hostKey(0, 2);
    pointAway(rig());
    keepAndCompare("focus", rig());
    rig().host().hostKey(0, 6);
    const Point p = rig().middle(controlNamed("FIL1 RESO"));
    rig().host().move(p.x, p.y);
    keepAndCompare("hover", rig());
}

TEST_F(Pictures, OfNotesSounding) {
    for (const int key : {48, 55, 60, 64, 67}) rig().plugin().midi(0x90, key, 110);
    for (int i = 0; i < 60; ++i) {
        rig().plugin().render(512);
        rig().host().idle(10, 5);
    }
    keep("playing", rig());
    for (const int key : {48, 55, 60, 64, 67}) rig().plugin().midi(0x80, key, 0);
    rig().plugin().renderLong(48000, 512);
}

// ---- sizes

class PicturesOfSizes : public Pictures, public testing::WithParamInterface<int> {};

TEST_P(PicturesOfSizes, AreKept) {
    rig_.reset();
    WindowRig sized(GetParam(), HostAnswers{}, withoutPatches);
    showSomething(sized);
    constexpr int compared[] = {0, 1, 2, 4, 5, 8, 13, 14, 16};
    const bool isCompared = std::find(std::begin(compared), std::end(compared), GetParam()) != std::end(compared);
    sized.host().idle(isCompared ? 1500 : 200);  // the waves come in
    pointAway(sized);
    const std::string name = "size-" + std::to_string(GetParam());
    isCompared ? keepAndCompare(name, sized) : keep(name, sized);
}

INSTANTIATE_TEST_SUITE_P(Window, PicturesOfSizes, testing::Range(0, 18));

// ---- what is kept from one redraw to the next

// All of it is drawn twice more: what did not change is then shown from kept pictures.
Picture ofKept(WindowRig& rig) {
    for (int i = 0; i < 2; ++i) {
        rig.host().expose();
        rig.host().idle(80);
    }
    return rig.host().picture();
}

// What two windows may show in two ways: the line of news, and with some filters and waves their measured curves.
std::vector<Box> passing(WindowRig& rig) {
    const double u = rig.unit();
    std::vector<Box> places{
        {static_cast<int>(8 * u), static_cast<int>(104 * u), static_cast<int>(510 * u), static_cast<int>(124 * u)}};
    for (const int shown : {+tag::waveView1, tag::waveView1 + 1, tag::waveView1 + 2, +tag::filterView1, tag::filterView1 + 1})
        places.push_back(rig.box(controlWithTag(shown)));
    return places;
}

// Laid over the ground, a kept picture rounds once more than what is drawn there at once.
void expectAlike(const Picture& kept, const Picture& fresh, const std::vector<Box>& besides, const std::string& when) {
    constexpr int roundings = 4;
    ASSERT_EQ(kept.rgb.size(), fresh.rgb.size()) << when;
    int worst = 0, atX = 0, atY = 0;
    for (int y = 0; y < kept.height; ++y)
        for (int x = 0; x < kept.width; ++x) {
            const unsigned a = kept.at(x, y), b = fresh.at(x, y);
            const auto isIn = [&](const Box& box) { return x >= box.left && x < box.right && y >= box.top && y < box.bottom; };
            if (a == b || std::any_of(besides.begin(), besides.end(), isIn)) continue;
            for (const int shift : {0, 8, 16}) {
                const int difference = std::abs(static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255));
                if (difference <= worst) continue;
                worst = difference;
                atX = x;
                atY = y;
            }
        }
    EXPECT_LE(worst, roundings) << when << ", at " << atX << ", " << atY;
}

class KeptPictures : public Pictures, public testing::WithParamInterface<int> {};

// Every parameter moves with the pictures of before kept; then a new window of the same plug-in draws all of it at once.
TEST_P(KeptPictures, ShowWhatIs) {
    rig_.reset();
    WindowRig sized(GetParam(), HostAnswers{}, withoutPatches);
    showSomething(sized);
    sized.host().idle(1500);
    std::mt19937 numbers(7);
    for (int round = 0; round < 2; ++round) {
        const Point knob = sized.middle(controlNamed("FIL1 RESO"));
        sized.host().move(knob.x, knob.y);  // brightens, and fades once the pointer is away
        ofKept(sized);
        pointAway(sized);
        for (int i = 0; round > 0 && i < vantoric::controlCount(); ++i)
            if (const auto& entry = vantoric::controlEntry(i); vantoric::parameterOfTag(entry.tag) >= 0)
                sized.plugin().setParameter(vantoric::hostIndexOfTag(entry.tag, 0), static_cast<float>(numbers() % 101) / 100);
        sized.plugin().render(512);
        sized.host().idle(800);
        const Picture kept = ofKept(sized);
        sized.host().close();
        ASSERT_TRUE(sized.host().open());
        pointAway(sized);
        sized.host().idle(800);
        expectAlike(kept, sized.host().picture(), passing(sized), "round " + std::to_string(round));
    }
}

INSTANTIATE_TEST_SUITE_P(Window, KeptPictures, testing::Values(0, 3));

// At three times the size an edge is one pixel wide: drawn from vectors, not enlarged.
TEST_F(Pictures, AreCrispAtThreeTimesTheSize) {
    rig_.reset();
    WindowRig sized(13, HostAnswers{}, withoutPatches);
    showSomething(sized);
    sized.host().idle(500);
    pointAway(sized);
    const Picture picture = sized.host().picture();
    // Across the left edge of a list: from the panel to the list within one pixel between.
    const Box list = sized.box(controlNamed("PLAY MODE"));
    const int y = (list.top + list.bottom) / 2;
    const unsigned outside = picture.at(list.left - 6, y), inside = picture.at(list.left + 6, y);
    ASSERT_NE(outside, inside);
    int between = 0;
    for (int x = list.left - 6; x <= list.left + 6; ++x)
        between += picture.at(x, y) != outside && picture.at(x, y) != inside ? 1 : 0;
    EXPECT_LE(between, 1);
}

}  // namespace
