// Everything that the window shows, built into a frame: in a host's window, or in a picture.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "editor/backdrop.h"
#include "editor/band_views.h"
#include "editor/control_views.h"
#include "editor/drag_area.h"
#include "editor/model/control_values.h"
#include "editor/model/q7editor.h"
#include "editor/overlay.h"
#include "editor/popup_menu.h"
#include "vstgui/lib/cviewcontainer.h"

namespace vantoric {

// The parts beside the table that every size has; null where a size leaves them out.
struct BandParts {
    PatchLine* patchLine = nullptr;
    FavouriteView* favourite = nullptr;
    WheelView* pitchWheel = nullptr;
    WheelView* modWheel = nullptr;
    MeterView* meter = nullptr;
    HintLine* hintLine = nullptr;
};

// On the thread of the window. Listens to all views, hands on to the editor what a hand does, and shows what the editor has.
class WindowContent final : public ControlListener, public DepthListener, public DragListener {
public:
    // Adds its views to `root`, which owns them and must outlive it. `width` and `height` in window units: what is beyond is
    // left out.
    WindowContent(VSTGUI::CViewContainer& root, double width, double height, Q7Editor& editor, Instrument& instrument);
    ~WindowContent() override;

    // ---- what the editor says

    void redrawControl(int index);
    void redrawPart(WindowPart part);
    void redrawAll();
    void showPages();
    void showHint(const std::string& text);
    void openMenu(int index);
    // Lamps, meters, displays, what plays: at each round of the window's timer, `round` counting on.
    void follow(unsigned round);

    // A key while the window has them; true if it was used.
    bool onKey(VSTGUI::KeyboardEvent& event);
    // Whether keys belong to the window at present: something is open or has the focus.
    bool wantsKeys() const;

    // ---- what a hand does

    void valueChanged(VSTGUI::CControl* control) override;
    void controlBeginEdit(VSTGUI::CControl* control) override;
    void controlEndEdit(VSTGUI::CControl* control) override;
    void controlHovered(ControlFace& control, bool isHovered) override;
    void controlMenuWanted(ControlFace& control) override;
    void controlListWanted(ControlFace& control) override;
    void controlResetWanted(ControlFace& control) override;
    void controlTypingWanted(ControlFace& control) override;
    void controlPressed(ControlFace& control, VSTGUI::Modifiers modifiers) override;
    void controlStepped(ControlFace& control, int direction) override;
    void depthDragBegan(ControlFace& knob) override;
    void depthDragged(ControlFace& knob, float amount) override;
    void depthDragEnded(ControlFace& knob) override;
    void dragHovered(int area, bool isHovered) override;
    void dragBegan(int area) override;
    void dragMoved(int area, VSTGUI::CPoint where) override;
    void dragEnded(int area, VSTGUI::CPoint where) override;
    void dragCancelled(int area) override;

    ControlViews& views() { return views_; }
    PopupMenu* popup() const { return popup_; }

private:
    void addBand(double width);
    void addDragAreas(double height);
    void refresh(ControlFace& face);
    void refreshModulations();
    void refreshBackdrop();
    void refreshDisplays();
    void refreshPatchLine();
    void showStrip(MYCKnob* knob);
    void updateHint();
    std::vector<MenuRow> rowsOf(const ControlEntry& entry) const;
    void openPopup(const VSTGUI::CRect& anchor, std::vector<MenuRow> rows, PopupMenu::Chosen chosen, ControlFace* opener);
    void closePopup();
    std::vector<MenuRow> knobRows(ControlFace& face) const;
    void setDimmed(bool isDimmed, const Color& source);
    ControlFace* targetAt(VSTGUI::CPoint where);

    VSTGUI::CViewContainer& root_;
    VSTGUI::CRect area_;
    Q7Editor& editor_;
    Instrument& instrument_;
    ControlValues values_;
    Backdrop* backdrop_;
    ControlViews views_;
    BandParts band_;
    std::array<MYDragArea*, 3> dragAreas_{};
    Overlay* overlay_;
    PopupMenu* popup_ = nullptr;
    ControlFace* opener_ = nullptr;
    ControlFace* hovered_ = nullptr;
    unsigned hoveredSince_ = 0, round_ = 0;
    bool isTooltipShown_ = false;
    MYCKnob* touched_ = nullptr;
    unsigned touchedUntil_ = 0;
    std::string news_;
    unsigned newsUntil_ = 0;
};

}  // namespace vantoric
