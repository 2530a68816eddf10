#include "editor/browser_view.h"
#include "editor/browser.h"
#include "editor/notes_box.h"
#include "layer_picture.h"
#include "open_layers.h"
#include "small_library.h"

#include <gtest/gtest.h>

#include <utility>

namespace vantoric {
namespace {

using VSTGUI::VirtualKey;

struct Browsing {
    WithGui gui;
    SmallLibrary library = shippedLibrary();
    int closed = 0;
    VSTGUI::SharedPointer<BrowserView> view;

    Browsing() { open(); }
    void open() {
        view = VSTGUI::makeOwned<BrowserView>(VSTGUI::CRect(0, 128, 1200, 660), library, [this] { ++closed; });
        library.done.clear();
    }
    const std::string& last() const { return library.done.back(); }
};

TEST(Browser, OpensAtThePatchInForce) {
    const Browsing browsing;
    EXPECT_EQ(browsing.library.opened, 1);
    EXPECT_EQ(browsing.view->selected(), 13);
    EXPECT_EQ(browsing.view->rows().size(), 52u);
}

TEST(Browser, AClickOnAPatchPlaysItAndLeavesTheBrowserOpen) {
    Browsing browsing;
    click(*browsing.view, browsing.view->rowRect(30).getTopLeft() + VSTGUI::CPoint(40, 8));
    EXPECT_EQ(browsing.last(), "play Night Ferry");
    EXPECT_EQ(browsing.closed, 0);
    EXPECT_EQ(browsing.view->selected(), 30);
}

TEST(Browser, AClickOnAStarRatesWithoutPlaying) {
    Browsing browsing;
    click(*browsing.view, browsing.view->starRect(2, 4).getCenter());
    EXPECT_EQ(browsing.library.done, std::vector<std::string>{"rate Barefoot 4"});
    EXPECT_EQ(browsing.view->rows()[2].stars, 4);
}

TEST(Browser, AClickOnACategoryListsItAndPlaysItsFirstPatch) {
    Browsing browsing;
    click(*browsing.view, browsing.view->categoryRect(6).getCenter());
    EXPECT_EQ(browsing.library.done, (std::vector<std::string>{"category Bass", "play Amber Tines"}));
    EXPECT_EQ(browsing.view->rows().size(), 3u);
    EXPECT_EQ(browsing.view->selected(), 0);
}

TEST(Browser, ArrowsPlayEachPatchThatTheyComeTo) {
    Browsing browsing;
    press(*browsing.view, VirtualKey::Down);
    EXPECT_EQ(browsing.last(), "play Glass Harbour Dark");
    press(*browsing.view, VirtualKey::Right);
    press(*browsing.view, VirtualKey::Home);
    EXPECT_EQ(browsing.last(), "play Amber Tines");
    browsing.library.done.clear();
    press(*browsing.view, VirtualKey::Up);
    EXPECT_TRUE(browsing.library.done.empty()) << "the first patch sounds already";
    press(*browsing.view, VirtualKey::Return);
    EXPECT_EQ(browsing.last(), "play Amber Tines") << "Enter loads it again";
}

TEST(Browser, PlusAndMinusRateAndDigitsSearch) {
    Browsing browsing;
    const auto stars = [&] { return browsing.view->rows()[static_cast<std::size_t>(browsing.view->selected())].stars; };
    const int before = stars();
    ASSERT_LT(before, 5);
    type(*browsing.view, "+");
    EXPECT_EQ(stars(), before + 1);
    type(*browsing.view, "-");
    EXPECT_EQ(stars(), before);
    const std::size_t rated = browsing.library.done.size();
    type(*browsing.view, "303");
    EXPECT_EQ(browsing.view->query(), "303") << "the name of a machine is no number of stars";
    EXPECT_EQ(browsing.library.done.size(), rated);
}

TEST(Browser, TypingFindsPatchesOfAllCategories) {
    Browsing browsing;
    type(*browsing.view, "Glass");
    EXPECT_EQ(browsing.view->rows().size(), 14u + 3 + 12);
    press(*browsing.view, VirtualKey::Tab);
    EXPECT_EQ(browsing.view->query(), "Glass Harbour");
    EXPECT_EQ(browsing.view->rows().size(), 2u);
    EXPECT_TRUE(browsing.library.done.empty()) << "nothing sounds while one types";
    press(*browsing.view, VirtualKey::Down);
    EXPECT_EQ(browsing.last(), "play Glass Harbour");
    press(*browsing.view, VirtualKey::Down);
    EXPECT_EQ(browsing.last(), "play Glass Harbour Dark");
}

TEST(Browser, EnterBeforeAnythingIsFoundPlaysWhatTheNextEnterFinds) {
    Browsing browsing;
    const auto all = std::exchange(browsing.library.all, {});  // not read yet
    type(*browsing.view, "Glass");
    press(*browsing.view, VirtualKey::Return);
    EXPECT_TRUE(browsing.library.done.empty());
    browsing.library.all = all;
    ++browsing.library.changes;
    browsing.view->follow();
    press(*browsing.view, VirtualKey::Return);
    EXPECT_EQ(browsing.last(), "play " + browsing.view->rows().front().name);
}

TEST(Browser, EscapeClearsTheSearchAndThenCloses) {
    Browsing browsing;
    type(*browsing.view, "Glass");
    press(*browsing.view, VirtualKey::Escape);
    EXPECT_EQ(browsing.view->query(), "");
    EXPECT_EQ(browsing.view->rows().size(), 52u);
    EXPECT_EQ(browsing.closed, 0);
    press(*browsing.view, VirtualKey::Escape);
    EXPECT_EQ(browsing.closed, 1);
}

TEST(Browser, AFilterShowsWhatFitsUntilItIsOffAgain) {
    Browsing browsing;
    click(*browsing.view, browsing.view->chipRect(1).getCenter());
    ASSERT_FALSE(browsing.view->rows().empty());
    for (const BrowserPatch& patch : browsing.view->rows()) EXPECT_GE(patch.stars, 4);
    click(*browsing.view, browsing.view->chipRect(1).getCenter());
    EXPECT_EQ(browsing.view->rows().size(), 52u);
}

TEST(Browser, StepsWithItsArrowsAndBrackets) {
    Browsing browsing;
    click(*browsing.view, browsing.view->nextRect().getCenter());
    click(*browsing.view, browsing.view->previousRect().getCenter());
    type(*browsing.view, "]");
    EXPECT_EQ(browsing.library.done, (std::vector<std::string>{"next", "previous", "next"}));
}

TEST(Browser, LeavesTheSpaceBarToTheHostButNotWhileOneTypes) {
    Browsing browsing;
    auto space = virtualKey(VirtualKey::Space);
    browsing.view->onKey(space);
    EXPECT_FALSE(space.consumed);
    type(*browsing.view, "Glass Harbour");
    EXPECT_EQ(browsing.view->query(), "Glass Harbour");
}

TEST(Browser, CategoriesAreReachedByKeys) {
    Browsing browsing;
    press(*browsing.view, VirtualKey::Home);
    press(*browsing.view, VirtualKey::Left);
    press(*browsing.view, VirtualKey::Down);
    EXPECT_EQ(browsing.library.listed, 15);
    press(*browsing.view, VirtualKey::Right);
    press(*browsing.view, VirtualKey::Down);
    EXPECT_EQ(browsing.last(), "play Glass Ladder");
}

TEST(Browser, FollowsChangesOfTheLibrary) {
    Browsing browsing;
    browsing.library.all[14].patches.pop_back();
    browsing.view->follow();
    EXPECT_EQ(browsing.view->rows().size(), 52u) << "nobody has told it";
    ++browsing.library.changes;
    browsing.view->follow();
    EXPECT_EQ(browsing.view->rows().size(), 51u);
}

TEST(Browser, FiveThousandPatchesScrollByWheelAndKeys) {
    Browsing browsing;
    std::vector<std::string> names;
    for (int number = 0; number < 5000; ++number) names.push_back("Patch " + std::to_string(number));
    browsing.library.add("Large", names);
    browsing.library.listed = static_cast<int>(browsing.library.all.size()) - 1;
    browsing.open();
    const double before = browsing.view->rowRect(0).left;
    turnWheel(*browsing.view, browsing.view->rowRect(20).getCenter(), -1);
    EXPECT_LT(browsing.view->rowRect(0).left, before);
    press(*browsing.view, VirtualKey::End);
    EXPECT_EQ(browsing.last(), "play Patch 4999");
    EXPECT_LT(browsing.view->rowRect(4999).right, 1200);
}

TEST(Browser, AnEmptyLibraryTakesEveryKeyAndClick) {
    const WithGui gui;
    SmallLibrary library;
    library.listed = -1;
    const auto view = VSTGUI::makeOwned<BrowserView>(VSTGUI::CRect(0, 128, 1200, 660), library, nullptr);
    for (const VirtualKey key : {VirtualKey::Up, VirtualKey::Down, VirtualKey::Left, VirtualKey::Right, VirtualKey::Home,
                                 VirtualKey::End, VirtualKey::PageDown, VirtualKey::Return, VirtualKey::Tab, VirtualKey::Escape})
        press(*view, key);
    type(*view, "3[]x");
    for (int x = 0; x < 1200; x += 30)
        for (int y = 128; y < 660; y += 20) {
            click(*view, VSTGUI::CPoint(x, y));
            turnWheel(*view, VSTGUI::CPoint(x, y), -1);
        }
    EXPECT_TRUE(view->rows().empty());
}

TEST(Browser, StaysClosedWithoutALibraryAndInLowWindows) {
    const WithGui gui;
    SmallLibrary library = shippedLibrary();
    OpenLayers window(1200, 660), low(1200, 128);
    const auto browser = VSTGUI::makeOwned<MYBrowser>(nullptr);
    EXPECT_EQ(browser->getTag(), 1281);
    EXPECT_FALSE(browser->open(window, nullptr));
    EXPECT_FALSE(browser->open(low, &library));
    EXPECT_TRUE(browser->open(window, &library));
    EXPECT_EQ(window.count(), 1);
    EXPECT_EQ(browser->getValue(), 1.0f);
    EXPECT_EQ(browser->view()->getViewSize().top, 128) << "the band stays in reach";
    press(*browser->view(), VirtualKey::Escape);
    EXPECT_FALSE(browser->isOpen());
    EXPECT_EQ(window.count(), 0);
    EXPECT_EQ(browser->getValue(), 0.0f);
    EXPECT_EQ(library.done, std::vector<std::string>{"close"});
}

TEST(Browser, ThePlaceOfPatchesOfNoCategorySaysWhereTheOneInForceIs) {
    Browsing browsing;
    click(*browsing.view, browsing.view->categoryRect(static_cast<int>(browsing.library.all.size()) - 1).getCenter());
    EXPECT_EQ(browsing.view->emptyWords(), "This stands for patches in no category. The one in force is in \u201cKeys\u201d.");
    browsing.library.inForce = {};
    browsing.open();
    EXPECT_EQ(browsing.view->emptyWords(), "The patch in force is in no category. Choose one at the left.");
}

TEST(Browser, TagsAreWrittenForTheSelectedPatchByKeyButtonAndRightClick) {
    Browsing browsing;
    std::vector<std::string> wanted;
    browsing.view->setNotesWanted([&](const BrowserPatch& patch) { wanted.push_back(patch.name); });
    press(*browsing.view, VirtualKey::F2);
    press(*browsing.view, VirtualKey::Down);
    click(*browsing.view, browsing.view->tagsRect().getCenter());
    const VSTGUI::CPoint other = browsing.view->rowRect(2).getTopLeft() + VSTGUI::CPoint(40, 8);
    VSTGUI::MouseDownEvent event(other, VSTGUI::MouseButton::Right);
    browsing.view->onMouseDownEvent(event);
    EXPECT_EQ(wanted, (std::vector<std::string>{"Glass Harbour", "Glass Harbour Dark", "Barefoot"}));
    EXPECT_EQ(browsing.library.done, std::vector<std::string>{"play Glass Harbour Dark"}) << "none of them plays";
}

TEST(Browser, ArrowsTryPatchesInALayerThatWaitsUntilEnterKeepsOne) {
    Browsing browsing;
    browsing.library.shownHint = {"Load a patch to synthesizer layer 2", true};
    browsing.open();
    press(*browsing.view, VirtualKey::Down);
    const auto name = [&] { return browsing.view->rows()[static_cast<std::size_t>(browsing.view->selected())].name; };
    EXPECT_EQ(browsing.last(), "try " + name());
    press(*browsing.view, VirtualKey::Down);
    EXPECT_EQ(browsing.last(), "try " + name());
    press(*browsing.view, VirtualKey::Return);
    EXPECT_EQ(browsing.last(), "call off") << "what sounds is kept, and nothing waits any more";
    press(*browsing.view, VirtualKey::Return);
    EXPECT_EQ(browsing.last(), "play " + name());
}

TEST(Browser, EscapeTakesBackWhatWasTriedInALayerThatWaits) {
    Browsing browsing;
    browsing.library.shownHint = {"Load a patch to synthesizer layer 2", true};
    browsing.open();
    press(*browsing.view, VirtualKey::Down);
    press(*browsing.view, VirtualKey::Escape);
    EXPECT_EQ(browsing.last(), "take back");
    EXPECT_EQ(browsing.closed, 1);
}

struct Noting {
    WithGui gui;
    SmallLibrary library = shippedLibrary();
    OpenLayers window{1200, 660};
    BrowserPatch patch{"Keys", "Glass Harbour"};
    const BrowserNotes& written() { return library.written["Keys/Glass Harbour"]; }
    NotesBox& open() {
        openNotes(window, library, patch);
        return static_cast<NotesBox&>(window.top());
    }
};

TEST(NotesBox, WritesWhatWasTypedIntoItsLines) {
    Noting noting;
    NotesBox& box = noting.open();
    type(box, "bright, bell");
    press(box, VirtualKey::Tab);
    type(box, "Somebody");
    press(box, VirtualKey::Down);
    type(box, "For slow songs");
    press(box, VirtualKey::Return);
    EXPECT_EQ(noting.written(), (BrowserNotes{"bright, bell", "Somebody", "For slow songs"}));
    EXPECT_EQ(noting.window.count(), 0);
    noting.open();
    EXPECT_EQ(noting.window.count(), 1);
}

TEST(NotesBox, LeavesAllAsItWasWhenTheUserGoesBack) {
    Noting noting;
    noting.library.written["Keys/Glass Harbour"] = {"old", "", ""};
    NotesBox* box = &noting.open();
    type(*box, " and new");
    press(*box, VirtualKey::Escape);
    EXPECT_EQ(noting.written().tags, "old");
    box = &noting.open();
    type(*box, " and new");
    click(*box, box->spotRect(NotesBox::cancel).getCenter());
    EXPECT_EQ(noting.written().tags, "old");
    box = &noting.open();
    type(*box, " and new");
    click(*box, box->spotRect(NotesBox::save).getCenter());
    EXPECT_EQ(noting.written().tags, "old and new");
    EXPECT_EQ(noting.window.count(), 0);
}

}  // namespace
}  // namespace vantoric
