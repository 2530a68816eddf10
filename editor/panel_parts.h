// What boxes, choosers and the browser are made of: panels over the veiled window, buttons, chips, icons and scroll bars.
#pragma once

#include <string>

#include "editor/pen.h"

namespace vantoric {

// Takes the light off everything below a panel.
void drawVeil(Pen& pen, const VSTGUI::CRect& area);
// A panel with its shadow and edge.
void drawPanel(Pen& pen, const VSTGUI::CRect& panel, double radius, const Color& fill = style::menu);

// Whether anything of an area is being drawn now: what is not costs nothing then.
bool isDrawn(Pen& pen, const VSTGUI::CRect& area);

struct ButtonLook {
    bool isMain = false;  // filled: what Enter does, the safe answer of a question
    bool isHovered = false, isPressed = false, isFocused = false, isOff = false;
};
void drawButton(Pen& pen, const VSTGUI::CRect& area, const std::string& label, const ButtonLook& look);

// A pill that is on or off.
void drawChip(Pen& pen, const VSTGUI::CRect& area, const std::string& label, bool isOn, bool isHovered, bool isFocused);
double chipWidth(const std::string& label);

// The place of a typed line, with a bright edge while it is typed into.
void drawTypingPlace(Pen& pen, const VSTGUI::CRect& area, bool isActive);

void drawCross(Pen& pen, VSTGUI::CPoint middle, const Color& color);
void drawLens(Pen& pen, VSTGUI::CPoint middle, const Color& color);
void drawFolder(Pen& pen, VSTGUI::CPoint middle, const Color& color);
void drawSheet(Pen& pen, VSTGUI::CPoint middle, const Color& color);

// The bar of something that is longer than its place, and where that stands; it lies where its place is wider than high. In
// window units.
class ScrollBar {
public:
    // Where the bar is drawn, and how long content and place are. The position is held within.
    void setPlace(const VSTGUI::CRect& area, double content, double visible);

    double position() const { return position_; }
    bool isNeeded() const { return content_ > visible_ + 0.5; }
    void scrollTo(double position);
    void scrollBy(double distance) { scrollTo(position_ + distance); }
    // So that what lies from `from` to `to` of the content is seen.
    void reveal(double from, double to);

    // The pointer. `press` tells whether it went down on the bar, which then follows `drag` until `release`.
    bool press(VSTGUI::CPoint where);
    bool isHeld() const { return isHeld_; }
    void drag(VSTGUI::CPoint where);
    void release() { isHeld_ = false; }

    void draw(Pen& pen, const Color& ground) const;
    VSTGUI::CRect thumb() const;

private:
    double farthest() const;
    bool isLying() const { return area_.getWidth() > area_.getHeight(); }
    // Along the bar.
    double along(VSTGUI::CPoint where) const { return isLying() ? where.x : where.y; }
    double start() const { return isLying() ? area_.left : area_.top; }
    double length() const { return isLying() ? area_.getWidth() : area_.getHeight(); }
    double thumbLength() const;

    VSTGUI::CRect area_;
    double content_ = 0, visible_ = 0, position_ = 0, heldAt_ = 0;
    bool isHeld_ = false;
};

}  // namespace vantoric
