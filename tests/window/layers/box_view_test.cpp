#include "editor/box_view.h"
#include "editor/value_box.h"
#include "layer_picture.h"

#include <gtest/gtest.h>

namespace vantoric {
namespace {

using VSTGUI::VirtualKey;

const VSTGUI::CRect window(0, 0, 1200, 660), lowWindow(0, 0, 802, 128);

struct Asked {
    int answers = 0, button = -1;
    VSTGUI::SharedPointer<BoxView> view;

    explicit Asked(const std::string& text = "Are you sure?", const VSTGUI::CRect& area = window) {
        view = VSTGUI::makeOwned<BoxView>(area, Box{"Warning", text, {"No", "Yes"}}, [this](int chosen) {
            ++answers;
            button = chosen;
        });
    }
};

std::string longText() {
    std::string text;
    for (int line = 0; line < 60; ++line) text += "Line " + std::to_string(line) + " of a text that says much.\n";
    return text;
}

TEST(BoxView, GivesTheSafeAnswerForEscapeEnterAndSpaceAtFirst) {
    const WithGui gui;
    for (const VirtualKey key : {VirtualKey::Escape, VirtualKey::Return, VirtualKey::Space}) {
        Asked asked;
        press(*asked.view, key);
        EXPECT_EQ(asked.answers, 1);
        EXPECT_EQ(asked.button, 0);
    }
}

TEST(BoxView, TabAndArrowsGoToTheOtherButton) {
    const WithGui gui;
    for (const VirtualKey key : {VirtualKey::Tab, VirtualKey::Right}) {
        Asked asked;
        press(*asked.view, key);
        press(*asked.view, VirtualKey::Return);
        EXPECT_EQ(asked.button, 1);
    }
    Asked back;
    press(*back.view, VirtualKey::Tab, true);
    EXPECT_EQ(back.view->focused(), 1);
    press(*back.view, VirtualKey::Left);
    EXPECT_EQ(back.view->focused(), 0);
}

TEST(BoxView, AClickOnAButtonAnswersOnceAndElsewhereNotAtAll) {
    const WithGui gui;
    Asked asked;
    click(*asked.view, {3, 3});
    EXPECT_EQ(asked.answers, 0);
    click(*asked.view, asked.view->buttonRect(1).getCenter());
    click(*asked.view, asked.view->buttonRect(0).getCenter());
    EXPECT_EQ(asked.answers, 1);
    EXPECT_EQ(asked.button, 1);
}

TEST(BoxView, IsAtMost232UnitsWideAndStaysInsideOfEveryWindow) {
    const WithGui gui;
    for (const auto& area : {window, lowWindow})
        for (const std::string& text : {std::string("Short."), longText(), std::string(4000, 'x')}) {
            const Asked asked(text, area);
            EXPECT_LE(asked.view->panel().getWidth(), 232);
            EXPECT_GE(asked.view->panel().top, area.top);
            EXPECT_LE(asked.view->panel().bottom, area.bottom);
            EXPECT_TRUE(asked.view->panel().rectInside(asked.view->buttonRect(0)));
        }
}

TEST(BoxView, LongTextsScrollByKeysAndWheel) {
    const WithGui gui;
    const Asked asked(longText(), lowWindow);
    press(*asked.view, VirtualKey::PageDown);
    const double paged = asked.view->scrolled();
    EXPECT_GT(paged, 0);
    turnWheel(*asked.view, asked.view->panel().getCenter(), -1);
    EXPECT_GT(asked.view->scrolled(), paged);
    turnWheel(*asked.view, asked.view->panel().getCenter(), 1000);
    EXPECT_EQ(asked.view->scrolled(), 0);
}

// ---- the value box

struct Typing {
    std::string taken;
    int closed = 0;
    VSTGUI::SharedPointer<ValueBox> view;

    Typing() {
        const auto then = [this](const std::string& text) -> std::optional<std::string> {
            if (text == "loud") return "That is no number.";
            taken = text;
            return std::nullopt;
        };
        view =
            VSTGUI::makeOwned<ValueBox>(window, VSTGUI::CRect(1180, 640, 1198, 658),
                                        ValueBox::Asked{"Cutoff 1", "783 Hz", "20 Hz to 20 kHz", ""}, then, [this] { ++closed; });
    }
};

TEST(ValueBox, TakesWhatReplacesTheSelectedValue) {
    const WithGui gui;
    Typing typing;
    type(*typing.view, "1.2 kHz");
    press(*typing.view, VirtualKey::Return);
    EXPECT_EQ(typing.taken, "1.2 kHz");
    EXPECT_EQ(typing.closed, 1);
}

TEST(ValueBox, TellsWhatItDoesNotUnderstandAndStaysOpen) {
    const WithGui gui;
    Typing typing;
    type(*typing.view, "loud");
    press(*typing.view, VirtualKey::Return);
    EXPECT_EQ(typing.view->error(), "That is no number.");
    EXPECT_EQ(typing.closed, 0);
    type(*typing.view, "er");
    EXPECT_EQ(typing.view->error(), "");
}

TEST(ValueBox, EscapeAndAClickOutsideLeaveTheValue) {
    const WithGui gui;
    Typing byKey, byClick;
    press(*byKey.view, VirtualKey::Escape);
    click(*byClick.view, {3, 3});
    for (const Typing* typing : {&byKey, &byClick}) {
        EXPECT_EQ(typing->closed, 1);
        EXPECT_EQ(typing->taken, "");
    }
}

TEST(ValueBox, StaysInsideTheWindowBesideAControlInTheCorner) {
    const WithGui gui;
    const Typing typing;
    EXPECT_TRUE(VSTGUI::CRect(window).rectInside(typing.view->panel()));
    EXPECT_LT(typing.view->panel().bottom, 640);
}

}  // namespace
}  // namespace vantoric
