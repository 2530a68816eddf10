// A box with one line to type into: a value in its parameter's own unit, or a name.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "editor/layer_view.h"
#include "editor/line_edit.h"
#include "editor/panel_parts.h"

namespace vantoric {

// Enter takes what was typed, Escape or a click outside of the box leaves all as it was.
class ValueBox : public LayerView {
public:
    struct Asked {
        std::string title;  // "Cutoff 1"
        std::string text;   // what stands in the line at first
        std::string hint;   // what may be typed: "20 Hz to 20 kHz"
        std::string unit;   // shown behind the line
        std::size_t maxBytes = 64;
        bool selectsAll = true;  // what is typed replaces it; else it goes on behind it
    };
    // Gets what was typed; tells what is wrong with it, or nothing if it was taken.
    using Then = std::function<std::optional<std::string>(const std::string& text)>;

    // Beside `anchor`, within `area`; in the middle if the anchor is empty. `closed` is called once, at the end, with the view
    // still there.
    ValueBox(const VSTGUI::CRect& area, const VSTGUI::CRect& anchor, Asked asked, Then then, std::function<void()> closed);

    void setClosed(std::function<void()> closed) { closed_ = std::move(closed); }
    void onKey(VSTGUI::KeyboardEvent& event) override;
    void dismiss() override;
    void follow() override;

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override { event.consumed = true; }
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override { event.consumed = true; }
    void onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) override { event.consumed = true; }

    // For tests.
    const VSTGUI::CRect& panel() const { return panel_; }
    const std::string& error() const { return error_; }
    const std::string& text() const { return line_.text(); }

    CLASS_METHODS_NOCOPY(ValueBox, VSTGUI::CView)

private:
    void layOut();
    void accept();
    void close();

    Asked asked_;
    Then then_;
    std::function<void()> closed_;
    LineEdit line_;
    std::string error_;
    std::vector<std::string> notes_;  // the error, or the hint
    VSTGUI::CRect anchor_, panel_;
    unsigned rounds_ = 0;
};

}  // namespace vantoric
