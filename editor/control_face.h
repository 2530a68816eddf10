// What every control of the window has beside its value: its entry in the table, its text, and the states that change how
// it is drawn.
#pragma once

#include <string>
#include <string_view>

#include "editor/model/control_table.h"
#include "editor/pen.h"
#include "editor/picture.h"
#include "editor/style.h"
#include "vstgui/lib/controls/ccontrol.h"
#include "vstgui/lib/controls/icontrollistener.h"
#include "vstgui/lib/events.h"

namespace vantoric {

class ControlFace;

// Hears what a hand does to controls; the window. Beginning, changes and end of an edit come by VSTGUI's own listener.
class ControlListener : public VSTGUI::IControlListener {
public:
    // The pointer came over a control, or left it.
    virtual void controlHovered(ControlFace& control, bool isHovered) = 0;
    // A right click, or the menu key.
    virtual void controlMenuWanted(ControlFace& control) = 0;
    // A click on a control that opens a list of rows.
    virtual void controlListWanted(ControlFace& control) = 0;
    // A double click: back to the default value.
    virtual void controlResetWanted(ControlFace& control) = 0;
    // A click with Alt, or Enter: the value is to be typed.
    virtual void controlTypingWanted(ControlFace& control) = 0;
    // The left button went down on a control that has no value to edit.
    virtual void controlTouched(ControlFace& control) = 0;
    // What the drag of a mark within it is at: its value is told anew.
    virtual void controlMarked(ControlFace& control) = 0;
    // A click on a button, with its modifiers.
    virtual void controlPressed(ControlFace& control, VSTGUI::Modifiers modifiers) = 0;
    // The pointer of a press that opened a list: moved, or let go of. In window units.
    virtual void controlPointer(VSTGUI::CPoint where, bool isReleased) = 0;
    // The wheel over a list: `direction` rows on.
    virtual void controlStepped(ControlFace& control, int direction) = 0;
    // The drag that is under way is called off; the end of the edit follows.
    virtual void controlCancelled(ControlFace& control) = 0;
    // A drag that began on a step goes on, from one place to another, across whatever steps stand there. In window units.
    virtual void stepsDrawn(VSTGUI::CPoint from, VSTGUI::CPoint to) = 0;
    // Pixels of the layout, before its zoom, for a unit of the window: drags are measured in them.
    virtual float layoutScale() const = 0;
};

// Colours that depend on where a control stands and what it is for.
Color functionColor(Section section);
Color groundColor(const ControlEntry& entry);
// Of a source of the matrix, by its list index.
Color sourceColor(int source);

// The side of a control that is not VSTGUI's; its views derive from both.
class ControlFace {
public:
    ControlFace(const ControlEntry& entry, ControlListener& window) : entry_(entry), window_(window) {}
    virtual ~ControlFace() = default;

    const ControlEntry& entry() const { return entry_; }
    virtual VSTGUI::CControl& view() = 0;
    // Where the control stands for hits, focus and overlays, in window units: without caption and bands.
    virtual VSTGUI::CRect body();

    // Whether it is the left button that changes it at present: what the wheel or another button does wakes no silent layer.
    virtual bool isHeldByLeft() const { return true; }
    // What the hint line says while the pointer is over it, instead of its name and value; null: those.
    virtual const char* hoverHint() const { return nullptr; }
    // Calls off the drag that is under way, if one is.
    virtual void cancelDrag() {}

    const std::string& text() const { return text_; }
    void setText(std::string text);
    void setValueQuietly(float value);

    bool isHovered() const { return isHovered_; }
    bool isFocused() const { return isFocused_; }
    bool isOff() const { return isOff_; }
    bool isOpen() const { return isOpen_; }
    bool isMultilayer() const { return isMultilayer_; }
    void setHovered(bool value) { set(isHovered_, value); }
    void setFocused(bool value) { set(isFocused_, value); }
    // The oscillator or layer that it belongs to does not sound.
    void setOff(bool value) { set(isOff_, value); }
    // Something is being dragged that can't be dropped here.
    void setDimmed(bool value) { set(isDimmed_, value); }
    // Its list is open.
    void setOpen(bool value) { set(isOpen_, value); }
    void setMultilayer(bool value) { set(isMultilayer_, value); }

    // The controller that moves it: -1 none, -2 waits for one.
    void setCcNumber(int number);
    int ccNumber() const { return ccNumber_; }
    // How brightly the ring of a control that waits for its controller is drawn, 0 to 1.
    void setLearnGlow(double glow);

protected:
    ControlListener& window() { return window_; }
    double learnGlow() const { return learnGlow_; }
    Color ground() const { return groundColor(entry_); }
    // The function's colour, faded if the control is off.
    Color color() const;
    void drawFocus(Pen& pen, double radius);
    // Fades what was drawn if the control is dimmed; last in every draw.
    void drawDimming(Pen& pen, const VSTGUI::CRect& area);

private:
    void set(bool& flag, bool value);

    const ControlEntry& entry_;
    ControlListener& window_;
    std::string text_;
    bool isHovered_ = false, isFocused_ = false, isOff_ = false, isDimmed_ = false, isOpen_ = false, isMultilayer_ = false;
    int ccNumber_ = -1;
    double learnGlow_ = 1;
};

// A control of one plain view: everything but the knobs.
class ControlView : public VSTGUI::CControl, public ControlFace {
public:
    ControlView(const ControlEntry& entry, ControlListener& listener);

    VSTGUI::CControl& view() override { return *this; }
    void onMouseEnterEvent(VSTGUI::MouseEnterEvent& event) override;
    void onMouseExitEvent(VSTGUI::MouseExitEvent& event) override;
    void draw(VSTGUI::CDrawContext* context) final;
    void invalidRect(const VSTGUI::CRect& rect) final;

    CLASS_METHODS_NOCOPY(ControlView, VSTGUI::CControl)

protected:
    // Draws the control at the rectangle of its entry.
    virtual void drawControl(Pen& pen) = 0;
    double left() const { return entry().x; }
    double top() const { return entry().y; }
    double width() const { return entry().width; }
    double height() const { return entry().height; }
    double centre() const { return left() + width() / 2; }
    double middle() const { return top() + height() / 2; }

private:
    void drawController(Pen& pen);

    KeptDrawing kept_;
};

// Whether a click comes so soon after the one before, at the same place, that the two are one double click.
class ClickPair {
public:
    bool isSecond(VSTGUI::CPoint where);
    // The pointer moves with the button down: a press that drags is no half of a double click.
    void moved(VSTGUI::CPoint where);

private:
    bool isNear(VSTGUI::CPoint where) const;

    std::uint64_t lastTicks_ = 0;
    VSTGUI::CPoint last_{-1000, -1000};
};

}  // namespace vantoric
