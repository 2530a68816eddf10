#include "editor/box_view.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "editor/overlay.h"

namespace vantoric {

using style::Face;
using VSTGUI::CPoint;
using VSTGUI::CRect;
using VSTGUI::VirtualKey;

namespace {

constexpr double widest = 232, tallest = 320, padding = 12, headHeight = 30, footHeight = 38, lowFootHeight = 28, lineHeight = 14,
                 textSize = 10, buttonHeight = 18, narrowestButton = 58, betweenButtons = 6, barWidth = 3, progressHeight = 14;

// The bytes of a text's longest beginning that is no wider; at least one character.
std::size_t fittingBytes(std::string_view text, double width) {
    const auto fits = [&](std::size_t bytes) {
        return measured(std::string(text.substr(0, bytes)), Face::medium, textSize) <= width;
    };
    if (text.size() <= 60 && fits(text.size())) return text.size();
    std::size_t fitting = 0;
    while (fitting < text.size()) {
        const std::size_t next = fitting + characterBytes(text.substr(fitting));
        if (fitting > 0 && !fits(next)) break;
        fitting = next;
    }
    if (fitting == text.size()) return fitting;
    const std::size_t slash = text.rfind('/', fitting - 1);  // a path breaks between its folders
    return slash != std::string_view::npos && slash > fitting / 3 ? slash + 1 : fitting;
}

// Lines for a place of that width: words that are wider than it, such as paths, break anywhere.
std::vector<std::string> linesOf(const std::string& text, double width) {
    std::vector<std::string> lines;
    for (const std::string& line : wrapped(text, Face::medium, textSize, width)) {
        std::string_view rest = line;
        do {
            const std::size_t fitting = fittingBytes(rest, width);
            lines.emplace_back(rest.substr(0, fitting));
            rest.remove_prefix(fitting);
        } while (!rest.empty());
    }
    return lines;
}

// A path as a title: its last folders and its name, as much as there is room for.
std::string endOfPath(const std::string& path, double width) {
    std::string shown = path;
    while (measured(shown, Face::title, 10.5) > width) {
        const std::size_t slash = shown.find('/', shown.starts_with("…/") ? std::string_view("…/").size() : 1);
        if (slash == std::string::npos) break;
        shown = "…" + shown.substr(slash);
    }
    return shown;
}

}  // namespace

BoxView::BoxView(const CRect& area, Box box, std::function<void(int)> answered)
    : LayerView(area), box_(std::move(box)), answered_(std::move(answered)), focused_(box_.main) {
    setTransparency(true);
    layOut();
}

void BoxView::layOut() {
    CRect area = CRect(getViewSize()).inset(4, 4);
    area.setHeight(std::min(area.getHeight(), tallest));
    const double width = std::min(widest, area.getWidth());
    double textWidth = width - 2 * padding;
    lines_ = linesOf(box_.text, textWidth);
    const bool isLow = area.getHeight() < 200;
    const double foot = (isLow ? lowFootHeight : footHeight) + (box_.part ? progressHeight : 0),
                 room = area.getHeight() - headHeight - foot;
    double content = lineHeight * static_cast<double>(lines_.size());
    if (content > room) {
        textWidth -= barWidth + 5;
        lines_ = linesOf(box_.text, textWidth);
        content = lineHeight * static_cast<double>(lines_.size());
    }
    const double shown = std::min(content, std::max(lineHeight, std::floor(room / lineHeight) * lineHeight));
    const double height = headHeight + shown + foot;
    const CPoint middle = getViewSize().getCenter();
    const double left = std::round(middle.x - width / 2), top = std::max(area.top, std::round(middle.y - height / 2));
    panel_ = {left, top, left + width, top + height};
    textArea_ = {left + padding, top + headHeight, left + padding + textWidth, top + headHeight + shown};
    bar_.setPlace({panel_.right - padding - barWidth, textArea_.top, panel_.right - padding, textArea_.bottom}, content, shown);
    buttonWidths_.clear();
    for (const std::string& label : box_.buttons)
        buttonWidths_.push_back(std::max(narrowestButton, measured(label, Face::semibold, 9.5) + 18));
}

CRect BoxView::buttonRect(int button) const {
    double right = panel_.right - padding + 2;
    for (int k = static_cast<int>(buttonWidths_.size()) - 1; k > button; --k) right -= buttonWidths_[k] + betweenButtons;
    const double bottom = panel_.bottom - (getViewSize().getHeight() < 208 ? 6 : 9);
    return {right - buttonWidths_[button], bottom - buttonHeight, right, bottom};
}

int BoxView::buttonAt(CPoint where) const {
    for (int button = 0; button < static_cast<int>(buttonWidths_.size()); ++button)
        if (buttonRect(button).pointInside(where)) return button;
    return -1;
}

void BoxView::setTimes(int times) {
    times_ = times;
    invalidRect(panel_);
}

void BoxView::answer(int button) {
    const auto alive = VSTGUI::shared(this);
    if (const auto answered = std::exchange(answered_, nullptr)) answered(button);
}

void BoxView::focus(int button) {
    const int count = static_cast<int>(box_.buttons.size());
    focused_ = (button + count) % count;
    invalidRect(panel_);
}

void BoxView::follow() {
    const double part = box_.part ? box_.part() : 0;
    if (part != std::exchange(part_, part)) invalidRect(progressRect());
}

// ---- drawing

void BoxView::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    drawVeil(pen, getViewSize());
    drawPanel(pen, panel_, 6);
    drawSign(pen);
    const double room = panel_.getWidth() - 44 - (times_ > 1 ? 26 : 0);
    const std::string title = box_.title.starts_with('/') ? endOfPath(box_.title, room) : box_.title;
    pen.text(panel_.left + 29, panel_.top + 19.6, title, Face::title, 10.5, style::text, Align::left, room);
    if (times_ > 1)
        pen.text(panel_.right - padding, panel_.top + 19.4, std::to_string(times_) + " times", Face::medium, 9, style::text2,
                 Align::right);
    drawText(pen);
    if (box_.part) drawProgress(pen);
    for (int button = 0; button < static_cast<int>(box_.buttons.size()); ++button)
        drawButton(pen, buttonRect(button), box_.buttons[button],
                   {.isMain = button == box_.main && !box_.part,
                    .isHovered = button == hovered_,
                    .isPressed = button == pressed_,
                    .isFocused = button == focused_ && !box_.part});
    setDirty(false);
}

void BoxView::drawSign(Pen& pen) const {
    const double x = panel_.left + 18, y = panel_.top + 16;
    // What goes wrong with a file has the file for a title.
    const bool isError = box_.title == "Error" || box_.title.starts_with('/'), isWarning = box_.title == "Warning";
    const Color fill = isError                ? style::alarm
                       : isWarning            ? style::oscillators
                       : box_.title == "Hint" ? style::arpeggiator
                                              : style::filters;
    const Color ink = hexColor(0x14181A);
    pen.dot(x, y, 5.6, fill);
    if (isError || isWarning) {
        pen.rect(x - 0.75, y - 3.4, 1.5, 4.2, ink);
        pen.dot(x, y + 2.8, 0.95, ink);
    } else {
        pen.dot(x, y - 2.7, 0.95, ink);
        pen.rect(x - 0.75, y - 0.7, 1.5, 4.2, ink);
    }
}

void BoxView::drawText(Pen& pen) const {
    bar_.draw(pen, style::menu);
    const Pen::Clip clip(pen, textArea_.left - 1, textArea_.top, textArea_.getWidth() + 2, textArea_.getHeight());
    double y = textArea_.top - bar_.position();
    for (const std::string& line : lines_) {
        if (y > textArea_.top - lineHeight && y < textArea_.bottom)
            pen.text(textArea_.left, y + 10.5, line, Face::medium, textSize, style::text2);
        y += lineHeight;
    }
}

CRect BoxView::progressRect() const {
    return {panel_.left + padding, textArea_.bottom + 6, panel_.right - padding, textArea_.bottom + 10};
}

void BoxView::drawProgress(Pen& pen) const {
    const CRect place = progressRect();
    pen.round(place.left, place.top, place.getWidth(), place.getHeight(), 2, style::inset);
    const double done = std::max(place.getHeight(), part_ * place.getWidth());
    pen.round(place.left, place.top, done, place.getHeight(), 2, style::filters);
}

// ---- the pointer

void BoxView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    if (bar_.press(event.mousePosition)) return invalidRect(panel_);
    pressed_ = event.buttonState.isLeft() ? buttonAt(event.mousePosition) : -1;
    if (pressed_ >= 0) focus(pressed_);
}

void BoxView::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    event.consumed = true;
    if (bar_.isHeld()) {
        bar_.drag(event.mousePosition);
        return invalidRect(panel_);
    }
    const int over = buttonAt(event.mousePosition);
    if (over == hovered_) return;
    hovered_ = over;
    invalidRect(panel_);
}

void BoxView::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    event.consumed = true;
    bar_.release();
    const int pressed = std::exchange(pressed_, -1);
    invalidRect(panel_);
    if (pressed >= 0 && buttonAt(event.mousePosition) == pressed) answer(pressed);
}

void BoxView::onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) {
    event.consumed = true;
    bar_.release();
    pressed_ = -1;
    invalidRect(panel_);
}

void BoxView::onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) {
    event.consumed = true;
    bar_.scrollBy(-3 * lineHeight * event.deltaY);
    invalidRect(panel_);
}

// ---- keys

void BoxView::onKey(VSTGUI::KeyboardEvent& event) {
    event.consumed = true;
    if (event.type != VSTGUI::EventType::KeyDown) return;
    const double page = textArea_.getHeight() - lineHeight;
    switch (event.virt) {
        case VirtualKey::Escape: return dismiss();
        case VirtualKey::Return:
        case VirtualKey::Enter:
        case VirtualKey::Space:
            if (!box_.part) answer(focused_);  // a key that was meant for what stood there before cancels nothing
            return;
        case VirtualKey::Tab: return focus(focused_ + (event.modifiers.has(VSTGUI::ModifierKey::Shift) ? -1 : 1));
        case VirtualKey::Left: return focus(std::max(0, focused_ - 1));
        case VirtualKey::Right: return focus(std::min(focused_ + 1, static_cast<int>(box_.buttons.size()) - 1));
        case VirtualKey::Up: bar_.scrollBy(-lineHeight); break;
        case VirtualKey::Down: bar_.scrollBy(lineHeight); break;
        case VirtualKey::PageUp: bar_.scrollBy(-page); break;
        case VirtualKey::PageDown: bar_.scrollBy(page); break;
        default: return;
    }
    invalidRect(panel_);
}

}  // namespace vantoric
