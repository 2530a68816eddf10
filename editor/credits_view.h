// Who made the instrument, and with what.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "editor/layer_view.h"
#include "editor/panel_parts.h"

namespace vantoric {

// Scrolls by wheel, bar and keys; Escape, Enter, the cross and a click beside the panel close it.
class CreditsView : public LayerView {
public:
    // `version` stands under the name. `closed` is called once, with the view still there.
    CreditsView(const VSTGUI::CRect& area, std::string version, std::function<void()> closed);

    void setClosed(std::function<void()> closed) { closed_ = std::move(closed); }
    void onKey(VSTGUI::KeyboardEvent& event) override;
    void dismiss() override;

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;
    void onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) override;

    // For tests.
    double scrolled() const { return bar_.position(); }
    const VSTGUI::CRect& panel() const { return panel_; }

    CLASS_METHODS_NOCOPY(CreditsView, VSTGUI::CView)

private:
    enum class Kind { title, entry, text };
    struct Line {
        Kind kind;
        std::string left, right;
        double top;
    };
    void layOut();
    double add(Kind kind, const std::string& left, const std::string& right, double top);
    VSTGUI::CRect closeRect() const;
    void drawHead(Pen& pen) const;
    void drawLine(Pen& pen, const Line& line) const;
    void scrollBy(double distance);

    std::string version_;
    std::function<void()> closed_;
    VSTGUI::CRect panel_, textArea_;
    std::vector<Line> lines_;
    ScrollBar bar_;
    bool isCloseHovered_ = false;
};

}  // namespace vantoric
