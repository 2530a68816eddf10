// What stands in the band beside the controls of the table: the patch line, the wheels, the meter, the hint line.
#pragma once

#include <functional>
#include <string>

#include "editor/pen.h"
#include "vstgui/lib/controls/ccontrol.h"
#include "vstgui/lib/events.h"

namespace vantoric {

// The name of the patch, its category and its place in it. Clicks open the two lists.
class PatchLine : public VSTGUI::CView {
public:
    struct Shown {
        std::string category, name;
        int place = 0, count = 0;  // from 1; 0 for none
        bool isChanged = false;    // since it was loaded or saved
        friend bool operator==(const Shown&, const Shown&) = default;
    };
    PatchLine(const VSTGUI::CRect& area, std::function<void()> openCategories, std::function<void()> openPatches);

    // Hears which of the two lists the pointer is over, with its place: 1 the categories, 2 the patches, 0 neither.
    using Hovered = std::function<void(int list, const VSTGUI::CRect& place)>;
    void setHoverHeard(Hovered heard) { hoverHeard_ = std::move(heard); }
    // A right click on the name.
    void setNotesWanted(std::function<void()> wanted) { notesWanted_ = std::move(wanted); }

    void setShown(const Shown& shown);
    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseExitEvent(VSTGUI::MouseExitEvent& event) override;

    CLASS_METHODS_NOCOPY(PatchLine, VSTGUI::CView)

private:
    enum class Part { none, category, name };
    Part partAt(VSTGUI::CPoint where) const;
    void setHovered(Part part);

    Shown shown_;
    Part hovered_ = Part::none;
    std::function<void()> openCategories_, openPatches_, notesWanted_;
    Hovered hoverHeard_;
};

// A view that tells when the pointer comes over it and leaves it.
class HoverHeard {
public:
    using Heard = std::function<void(bool isHovered)>;
    void setHoverHeard(Heard heard) { heard_ = std::move(heard); }

protected:
    void tellHover(bool isHovered) {
        if (heard_) heard_(isHovered);
    }

private:
    Heard heard_;
};

// The star of a favourite.
class FavouriteView : public VSTGUI::CControl, public HoverHeard {
public:
    FavouriteView(const VSTGUI::CRect& area, VSTGUI::IControlListener* listener, int tag);
    // Puts the star on or takes it off, as a click does.
    void press();
    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseEnterEvent(VSTGUI::MouseEnterEvent& event) override;
    void onMouseExitEvent(VSTGUI::MouseExitEvent& event) override;

    CLASS_METHODS_NOCOPY(FavouriteView, VSTGUI::CControl)

private:
    bool isHovered_ = false;
};

// The wheels on the screen. The pitch wheel springs back to its middle.
class WheelView : public VSTGUI::CControl, public HoverHeard {
public:
    WheelView(const VSTGUI::CRect& area, VSTGUI::IControlListener* listener, int tag, bool springsBack);
    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;
    void onMouseEnterEvent(VSTGUI::MouseEnterEvent&) override { tellHover(true); }
    void onMouseExitEvent(VSTGUI::MouseExitEvent&) override { tellHover(false); }
    bool isHeld() const { return isHeld_; }
    // Calls off the drag that is under way, if one is.
    void cancel();
    // What a right click does; nothing if it is never set.
    void setMenuWanted(std::function<void()> menuWanted) { menuWanted_ = std::move(menuWanted); }

    CLASS_METHODS_NOCOPY(WheelView, VSTGUI::CControl)

private:
    void follow(VSTGUI::CPoint where);
    void letGo();
    void setByHand(float value);

    bool springsBack_;
    bool isHeld_ = false;
    float valueBefore_ = 0;  // the drag
    std::function<void()> menuWanted_;
};

// The level of both channels.
class MeterView : public VSTGUI::CView, public HoverHeard {
public:
    explicit MeterView(const VSTGUI::CRect& area);
    // 0 to 1 each.
    void setLevels(float left, float right);
    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseEnterEvent(VSTGUI::MouseEnterEvent&) override { tellHover(true); }
    void onMouseExitEvent(VSTGUI::MouseExitEvent&) override { tellHover(false); }

    CLASS_METHODS_NOCOPY(MeterView, VSTGUI::CView)

private:
    static constexpr int segments = 20;
    static int lit(float level);
    int left_ = 0, right_ = 0;  // segments
};

// One line of help on what is under the pointer, or news that stay for a while.
class HintLine : public VSTGUI::CView {
public:
    enum class Kind { help, news, alarm };
    explicit HintLine(const VSTGUI::CRect& area);
    void setText(const std::string& text, Kind kind = Kind::help);
    const std::string& text() const { return text_; }
    Kind kind() const { return kind_; }
    void draw(VSTGUI::CDrawContext* context) override;

    CLASS_METHODS_NOCOPY(HintLine, VSTGUI::CView)

private:
    std::string text_;
    Kind kind_ = Kind::help;
};

}  // namespace vantoric
