// The focus that keys move from control to control, and what it lets a user do without a mouse.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "editor/control_views.h"
#include "editor/hints.h"
#include "editor/history_bar.h"
#include "editor/model/q7editor.h"
#include "editor/overlay.h"
#include "vstgui/lib/events.h"

namespace vantoric {

// Hears what keys do to controls, beside all that a hand does to them; the window.
class KeyListener : public ControlListener {
public:
    // A value is to be typed, and begins with what was typed already.
    virtual void typingBegun(ControlFace& control, const std::string& begun) = 0;
    // A control's new value, held to 0 to 1: one step of the history.
    virtual void valueSetByKey(ControlFace& control, float value) = 0;
    // A switch or selector: one step of the history.
    virtual void switchedByKey(ControlFace& control, bool isOn) = 0;
    // So many rows of a list on, the separators not counted; at most to the end.
    virtual void listStepped(ControlFace& control, int rows) = 0;
    virtual void rowChosen(ControlFace& control, int row) = 0;
    virtual void historyPressed(HistoryBar::Button button, bool isShifted) = 0;
    // Tags and author of the patch in force.
    virtual void notesWanted() = 0;
};

// On the thread of the window.
class KeyboardFocus {
public:
    // What the keyboard reaches beside the controls of the table.
    struct Stop {
        VSTGUI::CRect place;
        Section section;
        std::string name;
        std::function<std::string()> value;     // as spoken
        std::function<void()> press;            // Enter or the space bar
        std::function<void(float)> nudge = {};  // arrows, by a step of the value; may be empty
        std::function<void()> menu = {};        // the menu key; may be empty
        std::function<void()> left = {};        // the focus goes on; may be empty
    };

    // All of them outlive it.
    KeyboardFocus(Q7Editor& editor, const ControlViews& views, Hints& hints, Overlay& overlay, KeyListener& listener);

    void addStop(Stop stop) { stops_.push_back(std::move(stop)); }

    // A key that nothing else takes; consumed if it was used.
    void onKey(VSTGUI::KeyboardEvent& event);
    // Whether something has the focus.
    bool hasFocus() const { return focused_ != nullptr || stop_ >= 0; }
    // Whether the user has clicked on the window's ground, which shows nowhere.
    bool isTaken() const { return isTaken_; }
    // Keys belong to the window from now on.
    void take() { isTaken_ = true; }
    // Nothing has the focus, but keys stay with the window if it has them.
    void clear() { setFocus(nullptr); }
    // The mouse is at work: nothing has the focus.
    void leave();
    // What has the focus goes off the window with its page.
    void followPages();

private:
    void setFocus(ControlFace* face);
    void setStop(int stop);
    void showStopHelp();
    void moveFocus(int direction);
    bool openMenu();
    bool onShortcut(const VSTGUI::KeyboardEvent& event);
    bool onPlainLetter(char32_t character);
    void copyValue() const;
    void pasteValue();
    void onStopKey(VSTGUI::KeyboardEvent& event);
    void onControlKey(ControlFace& face, VSTGUI::KeyboardEvent& event, float step);
    void onCharacter(ControlFace& face, VSTGUI::KeyboardEvent& event);
    bool nudgeLoop(Wavedisplay& display, VSTGUI::VirtualKey key, float step);
    void nudge(ControlFace& face, float step);
    void setToEnd(ControlFace& face, bool last);
    void press(ControlFace& face, const VSTGUI::KeyboardEvent& event);
    const Stop& stop() const { return stops_[static_cast<std::size_t>(stop_)]; }

    Q7Editor& editor_;
    const ControlViews& views_;
    Hints& hints_;
    Overlay& overlay_;
    KeyListener& listener_;
    std::vector<Stop> stops_;
    ControlFace* focused_ = nullptr;
    int stop_ = -1;  // that has the focus; -1: none
    bool isTaken_ = false;
};

}  // namespace vantoric
