#include "editor/line_edit.h"

#include <algorithm>

#include "base/text.h"

namespace vantoric {
namespace {

using VSTGUI::ModifierKey;
using VSTGUI::VirtualKey;

bool continues(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

std::string& copied() {
    static std::string text;
    return text;
}

}  // namespace

std::string utf8Of(char32_t c) {
    const auto byte = [](char32_t bits) { return static_cast<char>(bits); };
    if (c < 0x20 || c == 0x7F) return "";
    if (c < 0x80) return {byte(c)};
    if (c < 0x800) return {byte(0xC0 | c >> 6), byte(0x80 | (c & 0x3F))};
    if (c < 0x10000) return {byte(0xE0 | c >> 12), byte(0x80 | (c >> 6 & 0x3F)), byte(0x80 | (c & 0x3F))};
    return {byte(0xF0 | c >> 18), byte(0x80 | (c >> 12 & 0x3F)), byte(0x80 | (c >> 6 & 0x3F)), byte(0x80 | (c & 0x3F))};
}

char32_t letterWithControl(const VSTGUI::KeyboardEvent& event) {
    const char32_t c = event.character;
    if (!event.modifiers.has(ModifierKey::Control)) return 0;
    if (c >= 1 && c <= 26) return U'a' + c - 1;
    if (c >= U'A' && c <= U'Z') return c - U'A' + U'a';
    return c >= U'a' && c <= U'z' ? c : 0;
}

void LineEdit::setText(const std::string& text, bool selectsAll) {
    text_ = cutText(text, maxBytes_);
    caret_ = text_.size();
    anchor_ = selectsAll ? 0 : caret_;
}

std::size_t LineEdit::before(std::size_t position) const {
    if (position == 0) return 0;
    do --position;
    while (position > 0 && continues(text_[position]));
    return position;
}

std::size_t LineEdit::after(std::size_t position) const {
    if (position >= text_.size()) return text_.size();
    do ++position;
    while (position < text_.size() && continues(text_[position]));
    return position;
}

std::size_t LineEdit::wordBefore(std::size_t position) const {
    while (position > 0 && text_[position - 1] == ' ') --position;
    while (position > 0 && text_[position - 1] != ' ') --position;
    return position;
}

void LineEdit::eraseSelection() {
    const std::size_t from = std::min(anchor_, caret_), to = std::max(anchor_, caret_);
    text_.erase(from, to - from);
    caret_ = anchor_ = from;
}

void LineEdit::moveTo(std::size_t position, bool selects) {
    caret_ = position;
    if (!selects) anchor_ = position;
}

void LineEdit::insert(const std::string& added) {
    eraseSelection();
    if (text_.size() + added.size() > maxBytes_) return;
    text_.insert(caret_, added);
    caret_ = anchor_ = caret_ + added.size();
}

bool LineEdit::onShortcut(char32_t character) {
    const std::size_t from = std::min(anchor_, caret_), to = std::max(anchor_, caret_);
    switch (character) {
        case U'a': anchor_ = 0, caret_ = text_.size(); return true;
        case U'c':
            if (hasSelection()) copied() = text_.substr(from, to - from);
            return true;
        case U'x':
            if (hasSelection()) copied() = text_.substr(from, to - from);
            eraseSelection();
            return true;
        case U'v': insert(copied()); return true;
        default: return false;
    }
}

bool LineEdit::onKey(const VSTGUI::KeyboardEvent& event) {
    const bool selects = event.modifiers.has(ModifierKey::Shift), isControl = event.modifiers.has(ModifierKey::Control);
    switch (event.virt) {
        case VirtualKey::Left: moveTo(isControl ? wordBefore(caret_) : before(caret_), selects); return true;
        case VirtualKey::Right: moveTo(after(caret_), selects); return true;
        case VirtualKey::Home: moveTo(0, selects); return true;
        case VirtualKey::End: moveTo(text_.size(), selects); return true;
        case VirtualKey::Back:
            if (!hasSelection()) anchor_ = isControl ? wordBefore(caret_) : before(caret_);
            eraseSelection();
            return true;
        case VirtualKey::Delete:
            if (!hasSelection()) anchor_ = after(caret_);
            eraseSelection();
            return true;
        case VirtualKey::Space: insert(" "); return true;
        case VirtualKey::Return:
        case VirtualKey::Enter:
        case VirtualKey::Escape:
        case VirtualKey::Tab:
        case VirtualKey::Up:
        case VirtualKey::Down:
        case VirtualKey::PageUp:
        case VirtualKey::PageDown: return false;
        default: break;
    }
    if (event.character == 0) return false;
    if (isControl) return onShortcut(letterWithControl(event));
    const std::string added = utf8Of(event.character);
    if (added.empty()) return false;
    insert(added);
    return true;
}

void LineEdit::draw(Pen& pen, double x, double y, double width, style::Face face, double size, const Color& color, bool isActive,
                    bool hasCaret) const {
    std::size_t first = 0;
    while (first < caret_ && pen.textWidth(text_.substr(first, caret_ - first), face, size) > width - 4) first = after(first);
    const auto placeOf = [&](std::size_t position) {
        return position <= first ? x : x + pen.textWidth(text_.substr(first, position - first), face, size);
    };
    const Pen::Clip clip(pen, x - 1, y - size * 1.3, width + 2, size * 1.8);
    if (isActive && hasSelection()) {
        const double from = placeOf(std::min(anchor_, caret_)), to = placeOf(std::max(anchor_, caret_));
        pen.rect(from, y - size, to - from, size * 1.3, fade(style::oscillators, 0.35));
    }
    pen.text(x, y, text_.substr(first), face, size, color);
    if (isActive && hasCaret) pen.rect(placeOf(caret_), y - size, 1.2, size * 1.3, style::oscillators);
}

}  // namespace vantoric
