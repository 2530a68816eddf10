// One line of text under a caret: what is typed into the browser's search, a file's name, a value.
#pragma once

#include <functional>
#include <string>

#include "editor/pen.h"
#include "vstgui/lib/events.h"

namespace vantoric {

// Texts are UTF-8; the caret stands between characters. What is copied is shared by all windows of the module.
class LineEdit {
public:
    explicit LineEdit(std::size_t maxBytes = 255) : maxBytes_(maxBytes) {}

    const std::string& text() const { return text_; }
    // The caret goes to the end; all is selected if `selectsAll`.
    void setText(const std::string& text, bool selectsAll = false);

    // A key that went down. True if it was one for a text; Return, Escape, Tab and the vertical arrows are not.
    bool onKey(const VSTGUI::KeyboardEvent& event);

    // Draws the line with its base line at `y`; the part that does not fit is cut at its beginning. One that is typed in
    // (`isActive`) shows what is selected, and the caret in its turn.
    void draw(Pen& pen, double x, double y, double width, style::Face face, double size, const Color& color, bool isActive,
              bool hasCaret) const;

private:
    std::size_t before(std::size_t position) const;
    std::size_t after(std::size_t position) const;
    std::size_t wordBefore(std::size_t position) const;
    bool hasSelection() const { return anchor_ != caret_; }
    void eraseSelection();
    void moveTo(std::size_t position, bool selects);
    void insert(const std::string& added);
    bool onShortcut(char32_t character);

    std::string text_;
    std::size_t caret_ = 0, anchor_ = 0, maxBytes_;
};

// The character in UTF-8; empty for control characters.
std::string utf8Of(char32_t character);

// The lower-case letter of a key that went down with Ctrl: the window system gives its control character (1 for A), hosts the
// letter. 0 for anything else.
char32_t letterWithControl(const VSTGUI::KeyboardEvent& event);

}  // namespace vantoric
