#include "faces/standalone/keys_view.h"

#include <algorithm>
#include <cmath>

namespace vantoric::standalone {
namespace {

using style::Face;
using VSTGUI::CPoint;
using VSTGUI::CRect;

constexpr int pianoLowest = 21, pianoHighest = 108;      // A0 to C8
constexpr double whiteWidth = 22.6;                      // at least, in window units
constexpr double blackWidth = 0.58, blackHeight = 0.62;  // of a white key

constexpr bool isBlack(int key) {
    constexpr bool black[12] = {false, true, false, true, false, false, true, false, true, false, true, false};
    return black[key % 12];
}

// How many white keys lie below a key, from C of octave -1 on.
constexpr int whitesBelow(int key) {
    constexpr int below[12] = {0, 1, 1, 2, 2, 3, 4, 4, 5, 5, 6, 6};
    return key / 12 * 7 + below[key % 12];
}

constexpr Color ivory = hexColor(0xC8CED1), ivoryFoot = hexColor(0xA9B2B7), ebony = hexColor(0x1B2024),
                ebonyFoot = hexColor(0x0C0E10), ink = hexColor(0x59636A);
constexpr Color lit = style::oscillators;

// The highest white key such that so many lie from the lowest on.
int highestOf(int lowest, int whites) {
    int key = lowest;
    while (key < 127 && whitesBelow(key + 1) - whitesBelow(lowest) < whites) ++key;
    return isBlack(key) ? key - 1 : key;
}

}  // namespace

KeysView::KeysView(const CRect& area, Hands& hands, const Player& player, Sign sign)
    : CView(area), hands_(hands), player_(player), sign_(std::move(sign)) {
    const int whites = static_cast<int>(area.getWidth() / whiteWidth);
    const bool isPiano = whites >= whitesBelow(pianoHighest) - whitesBelow(pianoLowest) + 1;
    constexpr int fromC2 = 36;
    lowest_ = isPiano ? pianoLowest : fromC2;
    highest_ = isPiano ? pianoHighest : highestOf(lowest_, whites);
}

void KeysView::follow() {
    std::bitset<128> now;
    for (int key = 0; key < 128; ++key) now[static_cast<std::size_t>(key)] = player_.isKeyDown(key);
    if (now == lit_ && octaveShown_ == hands_.octave()) return;
    lit_ = now;
    octaveShown_ = hands_.octave();
    invalid();
}

// ---- places

CRect KeysView::placeOf(int key) const {
    const CRect& area = getViewSize();
    const double width = area.getWidth() / (whitesBelow(highest_) - whitesBelow(lowest_) + 1);
    const double left = area.left + (whitesBelow(key) - whitesBelow(lowest_)) * width;
    if (!isBlack(key)) return {left, area.top, left + width, area.bottom};
    const double half = 0.5 * blackWidth * width;
    return {left - half, area.top, left + half, area.top + blackHeight * area.getHeight()};
}

int KeysView::keyAt(CPoint where) const {
    int found = -1;
    for (int key = lowest_; key <= highest_; ++key)
        if (placeOf(key).pointInside(where) && (found < 0 || isBlack(key))) found = key;
    return found;
}

int KeysView::velocityAt(CPoint where) const {
    const int key = keyAt(where);
    if (key < 0) return 0;
    const CRect place = placeOf(key);
    const double depth = std::clamp((where.y - place.top) / place.getHeight(), 0.0, 1.0);
    return static_cast<int>(std::lround(20 + 107 * depth));
}

// ---- the hand

void KeysView::hit(int key, int velocity) {
    if (key == held_) return;
    if (held_ >= 0) hands_.release(held_);
    held_ = key;
    if (held_ >= 0) hands_.press(held_, velocity);
}

void KeysView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    if (!event.buttonState.isLeft()) return event.ignoreFollowUpMoveAndUpEvents(true);
    isHolding_ = true;
    hit(keyAt(event.mousePosition), velocityAt(event.mousePosition));
}

void KeysView::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    if (!isHolding_) return;
    event.consumed = true;
    hit(keyAt(event.mousePosition), velocityAt(event.mousePosition));
}

void KeysView::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    event.consumed = true;
    isHolding_ = false;
    hit(-1, 0);
}

void KeysView::onMouseCancelEvent(VSTGUI::MouseCancelEvent&) {
    isHolding_ = false;
    hit(-1, 0);
}

// ---- drawing

std::string KeysView::signOf(int key) const {
    const unsigned code = hands_.codeOf(key);
    return code != 0 ? sign_(code) : "";
}

void KeysView::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    const CRect& area = getViewSize();
    pen.rect(area.left, area.top, area.getWidth(), area.getHeight(), style::black);
    for (int key = lowest_; key <= highest_; ++key)
        if (!isBlack(key)) drawWhite(pen, key);
    for (int key = lowest_; key <= highest_; ++key)
        if (isBlack(key)) drawBlack(pen, key);
    pen.verticalGradient(area.left, area.top, area.getWidth(), 5, 0, fade(style::black, 0.55), fade(style::black, 0));
    setDirty(false);
}

void KeysView::drawWhite(Pen& pen, int key) const {
    const CRect r = placeOf(key);
    const bool isLit = lit_[static_cast<std::size_t>(key)];
    const Corners feet(0, 0, 2.5, 2.5);
    const double x = r.left + 0.5, width = r.getWidth() - 1;
    pen.round(x, r.top, width, r.getHeight(), feet, isLit ? mix(lit, style::black, 0.25) : ivoryFoot);
    pen.verticalGradient(x, r.top, width, r.getHeight() - (isLit ? 0.5 : 2.5), feet,
                         isLit ? mix(ivory, lit, 0.75) : mix(ivory, ivoryFoot, 0.4), isLit ? lit : ivory);
    const double middle = r.getCenter().x;
    if (const std::string sign = signOf(key); !sign.empty())
        pen.text(middle, r.bottom - 17, sign, Face::semibold, 8.5, isLit ? style::black : hexColor(0x2B3338), Align::centre);
    if (key % 12 == 0)
        pen.text(middle, r.bottom - 6.5, std::string("C").append(std::to_string(key / 12 - 1)), Face::medium, 7.5,
                 isLit ? style::black : ink, Align::centre);
}

void KeysView::drawBlack(Pen& pen, int key) const {
    const CRect r = placeOf(key);
    const bool isLit = lit_[static_cast<std::size_t>(key)];
    const Corners feet(0, 0, 2, 2);
    pen.round(r.left - 0.7, r.top, r.getWidth() + 1.4, r.getHeight() + 1.2, feet, fade(style::black, 0.45));
    pen.round(r.left, r.top, r.getWidth(), r.getHeight(), feet, isLit ? mix(lit, style::black, 0.45) : ebonyFoot);
    pen.verticalGradient(r.left + 1.2, r.top, r.getWidth() - 2.4, r.getHeight() - (isLit ? 1.5 : 5), feet,
                         isLit ? mix(lit, style::black, 0.3) : mix(ebony, style::black, 0.3),
                         isLit ? lit : mix(ebony, style::white, 0.1));
    if (const std::string sign = signOf(key); !sign.empty())
        pen.text(r.getCenter().x, r.bottom - 9.5, sign, Face::semibold, 8, isLit ? style::black : style::text2, Align::centre);
}

}  // namespace vantoric::standalone
