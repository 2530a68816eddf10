#include "editor/notes_box.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "editor/file_list.h"

namespace vantoric {

using style::Face;
using VSTGUI::CPoint;
using VSTGUI::CRect;
using VSTGUI::VirtualKey;

namespace {

constexpr double widest = 330, padding = 12, labelWidth = 46, buttonWidth = 58, buttonHeight = 18;
// In a window that has nothing but the band all stands closer.
constexpr double lowWindow = 160;
constexpr unsigned caretRounds = 10;  // of `follow`: half a second
constexpr std::array labels{"Tags", "Author", "About"};
constexpr std::array examples{"bright, bell, slow", "who made it", "one line about it"};

}  // namespace

NotesBox::NotesBox(const CRect& area, const BrowserPatch& patch, const BrowserNotes& notes,
                   std::function<void(const BrowserNotes&)> written)
    : LayerView(area), title_(shownName(patch.name)), written_(std::move(written)) {
    setTransparency(true);
    lines_[0].setText(notes.tags);
    lines_[1].setText(notes.author);
    lines_[2].setText(notes.about);
    const CRect room = CRect(area).inset(4, 4);
    const double width = std::min(widest, room.getWidth());
    if (room.getHeight() < lowWindow) measures_ = {24, 20, 4, 28};
    const double height = measures_.head + lineCount * (measures_.line + measures_.gap) - measures_.gap + measures_.foot;
    const CPoint middle = area.getCenter();
    const double left = std::round(middle.x - width / 2), top = std::max(room.top, std::round(middle.y - height / 2));
    panel_ = {left, top, left + width, top + height};
}

CRect NotesBox::spotRect(int spot) const {
    if (spot < lineCount) {
        const double top = panel_.top + measures_.head + spot * (measures_.line + measures_.gap);
        return {panel_.left + padding + labelWidth, top, panel_.right - padding, top + measures_.line};
    }
    const double right = panel_.right - padding - (spot == cancel ? buttonWidth + 6 : 0),
                 bottom = panel_.bottom - (measures_.foot - buttonHeight) / 2 + 1;
    return {right - buttonWidth, bottom - buttonHeight, right, bottom};
}

int NotesBox::spotAt(CPoint where) const {
    for (int spot = 0; spot < spots; ++spot)
        if (spotRect(spot).pointInside(where)) return spot;
    return -1;
}

// ---- drawing

void NotesBox::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    drawVeil(pen, getViewSize());
    drawPanel(pen, panel_, 6);
    const double left = panel_.left + padding;
    pen.text(left, panel_.top + measures_.head / 2 + 4.4, title_, Face::title, 10.5, style::text, Align::left,
             panel_.getWidth() - 2 * padding);
    for (int line = 0; line < lineCount; ++line) drawLine(pen, line);
    const double notesEnd = spotRect(cancel).left - 8;
    pen.text(left, spotRect(save).getCenter().y + 3.4, "Tags are parted by commas.", Face::medium, 9, style::text3, Align::left,
             notesEnd - left);
    for (const int spot : {cancel, save})
        drawButton(pen, spotRect(spot), spot == save ? "Save" : "Cancel",
                   {.isMain = spot == save,
                    .isHovered = spot == hovered_,
                    .isPressed = spot == pressed_,
                    .isFocused = spot == focused_});
    setDirty(false);
}

void NotesBox::drawLine(Pen& pen, int line) const {
    const CRect place = spotRect(line);
    const auto index = static_cast<std::size_t>(line);
    const bool isActive = focused_ == line;
    const double base = place.getCenter().y + 3.6, width = place.getWidth() - 16;
    pen.text(panel_.left + padding, base, labels[index], Face::medium, 10, isActive ? style::text : style::text2);
    drawTypingPlace(pen, place, isActive || hovered_ == line);
    if (lines_[index].text().empty() && !isActive)
        pen.text(place.left + 8, base, examples[index], Face::medium, 10.5, style::text3, Align::left, width);
    if (!isActive)  // from its beginning; a line that is typed in shows where its caret is
        return static_cast<void>(
            pen.text(place.left + 8, base, lines_[index].text(), Face::medium, 10.5, style::text, Align::left, width));
    const bool hasCaret = rounds_ / caretRounds % 2 == 0;
    lines_[index].draw(pen, place.left + 8, base, width, Face::medium, 10.5, style::text, true, hasCaret);
}

void NotesBox::follow() {
    if (++rounds_ % caretRounds == 0 && focused_ < lineCount) invalidRect(spotRect(focused_));
}

// ---- what is done

void NotesBox::focus(int spot) {
    focused_ = (spot + spots) % spots;
    rounds_ = 0;
    invalidRect(panel_);
}

void NotesBox::press(int spot) { spot == save ? accept() : dismiss(); }

void NotesBox::accept() {
    const auto alive = VSTGUI::shared(this);
    if (const auto written = std::exchange(written_, nullptr)) written({lines_[0].text(), lines_[1].text(), lines_[2].text()});
    dismiss();
}

void NotesBox::dismiss() {
    const auto alive = VSTGUI::shared(this);
    written_ = nullptr;
    if (const auto closed = std::exchange(closed_, nullptr)) closed();
}

void NotesBox::onKey(VSTGUI::KeyboardEvent& event) {
    event.consumed = true;
    if (event.type != VSTGUI::EventType::KeyDown) return;
    switch (event.virt) {
        case VirtualKey::Escape: return dismiss();
        case VirtualKey::Return:
        case VirtualKey::Enter: return focused_ == cancel ? dismiss() : accept();
        case VirtualKey::Tab: return focus(focused_ + (event.modifiers.has(VSTGUI::ModifierKey::Shift) ? -1 : 1));
        case VirtualKey::Up: return focus(focused_ - 1);
        case VirtualKey::Down: return focus(focused_ + 1);
        default: break;
    }
    if (focused_ >= lineCount) {
        if (event.virt == VirtualKey::Space) press(focused_);
        return;
    }
    if (!lines_[static_cast<std::size_t>(focused_)].onKey(event)) return;
    rounds_ = 0;
    invalidRect(spotRect(focused_));
}

void NotesBox::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    pressed_ = event.buttonState.isLeft() ? spotAt(event.mousePosition) : -1;
    if (pressed_ >= 0) focus(pressed_);
}

void NotesBox::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    event.consumed = true;
    if (const int over = spotAt(event.mousePosition); over != std::exchange(hovered_, over)) invalidRect(panel_);
}

void NotesBox::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    event.consumed = true;
    const int pressed = std::exchange(pressed_, -1);
    invalidRect(panel_);
    if (pressed >= lineCount && spotAt(event.mousePosition) == pressed) press(pressed);
}

void NotesBox::onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) {
    event.consumed = true;
    pressed_ = -1;
    invalidRect(panel_);
}

void openNotes(LayerHost& host, BrowserModel& model, const BrowserPatch& patch) {
    if (patch.name.empty()) return;
    auto* box = new NotesBox(host.layerArea(), patch, model.notes(patch),
                             [&model, patch](const BrowserNotes& notes) { model.writeNotes(patch, notes); });
    box->setClosed([&host, box] { host.closeLayer(*box); });
    host.openLayer(box);
}

}  // namespace vantoric
