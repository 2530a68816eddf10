// What is pressed: switches, tabs, buttons, the heads of menus.
#pragma once

#include <optional>

#include "editor/control_face.h"
#include "editor/drag_area.h"

namespace vantoric {

// Kind 3: a pill, filled when on. A power sign stands for "On".
class SwitchView : public ControlView {
public:
    using ControlView::ControlView;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;

protected:
    void drawControl(Pen& pen) override;
};

// Kind 4: one of several pages, or a layer with its lamp. Its value is 1 while it is the one selected.
class SelectorView : public ControlView {
public:
    using ControlView::ControlView;
    // How brightly the layer's lamp glows, 0 to 127.
    void setLamp(int value);
    // What the page makes can be dragged from its tab; `hint` says so while the pointer is over it, and outlives it.
    void setSource(DragListener& listener, int area, const char* hint);
    const char* hoverHint() const override { return hint_; }
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;

protected:
    void drawControl(Pen& pen) override;

private:
    bool isLayer() const;
    void drawLayer(Pen& pen);
    void drawTab(Pen& pen);
    void leaveIfOutside(VSTGUI::CPoint where);

    int lamp_ = 0;
    std::optional<SourceDrag> drag_;
    const char* hint_ = nullptr;
};

// Kinds 5 and 17: previous, next, the browser, the word mark; a sample's folder and pencil.
class ButtonView : public ControlView {
public:
    using ControlView::ControlView;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;

protected:
    void drawControl(Pen& pen) override;

private:
    void drawWordMark(Pen& pen);
    void drawBrowser(Pen& pen);
    void drawFolder(Pen& pen);
    void drawPencil(Pen& pen);

    bool isPressed_ = false;
};

// Kind 9: a word that opens a menu below it.
class MenuButtonView : public ControlView {
public:
    using ControlView::ControlView;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;

protected:
    void drawControl(Pen& pen) override;

private:
    bool isPressed_ = false;
};

}  // namespace vantoric
