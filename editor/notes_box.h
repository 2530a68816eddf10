// Where tags, author and a line about a patch are written.
#pragma once

#include <array>
#include <functional>
#include <string>

#include "editor/browser_model.h"
#include "editor/layer_view.h"
#include "editor/line_edit.h"
#include "editor/panel_parts.h"

namespace vantoric {

// A box in the middle of the window. Enter takes what was written, Tab and the vertical arrows go from line to line and to the
// buttons, Escape leaves all as it was.
class NotesBox : public LayerView {
public:
    // `written` gets what was taken, then `closed` is called; that alone if the user went back. The view is still there.
    NotesBox(const VSTGUI::CRect& area, const BrowserPatch& patch, const BrowserNotes& notes,
             std::function<void(const BrowserNotes&)> written);
    void setClosed(std::function<void()> closed) { closed_ = std::move(closed); }

    void onKey(VSTGUI::KeyboardEvent& event) override;
    void dismiss() override;
    void follow() override;

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;
    void onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) override { event.consumed = true; }

    // For tests: the lines and the buttons, from above.
    static constexpr int lineCount = 3, cancel = lineCount, save = lineCount + 1, spots = lineCount + 2;
    VSTGUI::CRect spotRect(int spot) const;
    int focused() const { return focused_; }

    CLASS_METHODS_NOCOPY(NotesBox, VSTGUI::CView)

private:
    int spotAt(VSTGUI::CPoint where) const;
    void focus(int spot);
    void press(int spot);
    void accept();
    void drawLine(Pen& pen, int line) const;

    std::string title_;
    std::array<LineEdit, lineCount> lines_{LineEdit(400), LineEdit(120), LineEdit(400)};
    std::function<void(const BrowserNotes&)> written_;
    std::function<void()> closed_;
    VSTGUI::CRect panel_;
    struct {
        double head = 30, line = 22, gap = 6, foot = 38;
    } measures_;
    int focused_ = 0, hovered_ = -1, pressed_ = -1;
    unsigned rounds_ = 0;
};

// Opens one for a patch of the library and writes what comes of it.
void openNotes(LayerHost& host, BrowserModel& model, const BrowserPatch& patch);

}  // namespace vantoric
