// What the window says without being asked: the hint line, tooltips, and the strip at the control that is touched.
#pragma once

#include <functional>
#include <string>

#include "editor/band_views.h"
#include "editor/control_views.h"
#include "editor/model/q7editor.h"
#include "editor/overlay.h"

namespace vantoric {

// On the thread of the window.
class Hints {
public:
    // All of them outlive it, and so do the controls that it is told of.
    Hints(Q7Editor& editor, const ControlViews& views, HintLine& line, Overlay& overlay);

    // ---- the hint line

    // Stays for some seconds, or until something is done. An empty text is none.
    void showNews(const std::string& text);
    void forgetNews() { newsUntil_ = 0; }
    // What the user is asked for stays, whatever is done and pointed at, until it has come: an empty text.
    void setRequest(const std::string& text);
    // Unless news are shown, or something is asked for.
    void showLine(const std::string& text);
    // One that `refreshLine` asks for anew as long as it stands, so that it never tells an old value.
    using Line = std::function<std::string()>;
    void showLive(Line line);
    // Name, value and use of a control; of null the resting hint.
    void showHelp(const ControlFace* face);
    // What the line tells may be another by now: at each round of the timer.
    void refreshLine();
    // Of what is pointed at.
    void showHelp() { showHelp(hovered_); }

    // ---- what is pointed at

    // The pointer came over a control, or left it.
    void hover(ControlFace& face, bool isHovered);
    // The control under the pointer; null: none.
    ControlFace* hovered() const { return hovered_; }
    // The pointer came over a place that is no control, with its tooltip; null: it left.
    void hoverPlace(const char* tooltip, const VSTGUI::CRect& place);
    void hideTooltip() { overlay_.setTooltip("", {}); }

    // ---- what is touched

    // The strip follows the control that was touched last; null takes it away.
    void touch(ControlFace* face);
    // The hand let go: the strip goes soon.
    void letGo();
    void refreshStrip();

    // At each round of the window's timer; tooltips wait while something is `covered` by a menu or box.
    void follow(bool isCovered);

private:
    void write(const std::string& text);
    std::string restingLine();
    std::string lineOf(const ControlFace& face) const;
    std::string spokenOf(const ControlEntry& entry) const;
    void followTooltip();

    Q7Editor& editor_;
    const ControlViews& views_;
    HintLine& line_;
    Overlay& overlay_;
    const bool showsTooltips_;
    unsigned round_ = 0;
    unsigned newsUntil_ = 0;  // 0: none
    std::string request_;
    Line live_;  // what the line tells, if that may change
    ControlFace* hovered_ = nullptr;
    unsigned hoveredSince_ = 0;
    const char* placeTooltip_ = nullptr;
    VSTGUI::CRect place_;
    ControlFace* touched_ = nullptr;
    unsigned touchedUntil_ = 0;
};

}  // namespace vantoric
