// Everything that the window shows, built into a frame: in a host's window, or in a picture.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "editor/backdrop.h"
#include "editor/band_views.h"
#include "editor/control_views.h"
#include "editor/display_views.h"
#include "editor/drop_target.h"
#include "editor/hints.h"
#include "editor/history_bar.h"
#include "editor/keyboard_focus.h"
#include "editor/layer_view.h"
#include "editor/model/q7editor.h"
#include "editor/model/work_history.h"
#include "editor/modulation_drags.h"
#include "editor/overlay.h"
#include "editor/popup_menu.h"
#include "library/variation.h"

namespace vantoric {

// On the thread of the window. Listens to all views, hands on to the editor what a hand does, and shows what the editor has.
class WindowContent final : public LayerHost, private KeyListener, private DepthListener {
public:
    // Adds its views to `root`, which owns them and must outlive it. `width` and `height` in window units: what stands beyond
    // is left out.
    WindowContent(DropContainer& root, double width, double height, Q7Editor& editor, WorkHistory& work, Instrument& instrument);
    ~WindowContent() override;
    WindowContent(const WindowContent&) = delete;
    WindowContent& operator=(const WindowContent&) = delete;

    // ---- what the editor says; see EditorView

    void redrawControl(int index);
    void redrawPart(WindowPart part);
    void redrawAll();
    void showPages();
    void showHint(const std::string& text);
    void openMenu(int index);
    // The list of the category's patches, which takes the browser's place in a low window.
    void openPatches();
    // Who shows where tags and author of the patch in force are written; false if it is none of the library.
    void setNotesWanted(std::function<bool()> wanted) { openNotes_ = std::move(wanted); }
    // Whether the browser is open, which its button shows.
    void showBrowserOpen(bool isOpen);
    // Lamps, meters, displays, hints: at each round of the window's timer.
    void follow();

    // ---- keys

    // A key that came while the window has the keys; consumed if it was used.
    void onKey(VSTGUI::KeyboardEvent& event);
    // Whether keys belong to the window at present: something is open, a control has the focus by keyboard, or the user has
    // clicked on the window's ground, or a control is held by the mouse, a controller to be learned or a layer to be loaded:
    // Escape calls that off.
    bool wantsKeys() const;
    // The same without the click on the ground: the user sees what has the keys.
    bool wantsKeysVisibly() const;

    // ---- layers

    void openLayer(LayerView* view) override;
    void closeLayer(LayerView& view) override;
    VSTGUI::CRect layerArea() const override { return area_; }
    // Takes away what is open, as Escape does.
    void dismissLayers();
    bool hasLayers() const { return !layers_.empty(); }

    ControlViews& views() { return views_; }

private:
    void valueChanged(VSTGUI::CControl* control) override;
    void controlBeginEdit(VSTGUI::CControl* control) override;
    void controlEndEdit(VSTGUI::CControl* control) override;
    void controlHovered(ControlFace& face, bool isHovered) override;
    void controlMenuWanted(ControlFace& face) override;
    void controlListWanted(ControlFace& face) override;
    void controlResetWanted(ControlFace& face) override;
    void controlTypingWanted(ControlFace& face) override;
    void controlTouched(ControlFace& face) override;
    void controlMarked(ControlFace& face) override;
    void controlPressed(ControlFace& face, VSTGUI::Modifiers modifiers) override;
    void controlPointer(VSTGUI::CPoint where, bool isReleased) override;
    void controlStepped(ControlFace& face, int direction) override;
    void controlCancelled(ControlFace& face) override;
    void stepsDrawn(VSTGUI::CPoint from, VSTGUI::CPoint to) override;
    float layoutScale() const override { return static_cast<float>(editor_.size().layoutScale()); }
    void drawStep(ControlFace& step, float level);
    void depthDragBegan(ControlFace& knob) override;
    void depthDragged(ControlFace& knob, float amount) override;
    void depthDragEnded(ControlFace& knob) override;
    void depthDragCancelled(ControlFace& knob) override;
    void typingBegun(ControlFace& face, const std::string& begun) override;
    void valueSetByKey(ControlFace& face, float value) override;
    void switchedByKey(ControlFace& face, bool isOn) override;
    void listStepped(ControlFace& face, int rows) override;
    void rowChosen(ControlFace& face, int row) override;
    void historyPressed(HistoryBar::Button button, bool isShifted) override;
    void notesWanted() override;

    // `wakes`: the layer on show, if it is silent.
    void stepList(ControlFace& face, int rows, bool wakes);
    void chooseRow(ControlFace& face, int row, bool wakes);
    void partHovered(bool isHovered, Hints::Line line);
    void listHovered(int list, const VSTGUI::CRect& place);
    void dropped(const std::vector<std::string>& paths, VSTGUI::CPoint where);
    void historyHovered(HistoryBar::Button button);
    void addBand();
    void addTitles();
    void addBandStops();
    void addHistoryStops();
    std::string wheelText(bool isPitch) const;
    KeyboardFocus::Stop wheelStop(WindowPart part, const char* name, float step);
    void openVariations(const VSTGUI::CRect& place, VariedSection section, const char* name);
    void refresh(ControlFace& face);
    void refreshKnob(MYCKnob& knob);
    void refreshBackdrop();
    void refreshPatchLine();
    void followEngine();
    void followLearning();
    void followLamps();

    ControlFace* faceOf(VSTGUI::CControl* control) const;
    void openPopup(const VSTGUI::CRect& anchor, std::vector<MenuRow> rows, PopupMenu::Chosen chosen, ControlFace* opener);
    void openCategories();
    void openModWheelMenu();
    void showTouched(ControlFace& face);
    bool isHandBusy() const;
    bool cancelHand();
    bool cancelLearning();
    Wavedisplay* draggedDisplay() const;  // whose marker is being dragged
    std::optional<std::string> takeTyped(const ControlEntry& entry, const std::string& text);

    DropContainer& root_;
    VSTGUI::CRect area_;
    Q7Editor& editor_;
    WorkHistory& work_;
    Instrument& instrument_;
    Backdrop* backdrop_;
    ControlViews views_;
    PatchLine* patchLine_ = nullptr;
    FavouriteView* favourite_ = nullptr;
    WheelView* pitchWheel_ = nullptr;
    WheelView* modWheel_ = nullptr;
    // By the keys, and not let go of: what the engine tells of the wheel comes later, if it plays at all.
    bool isPitchTurned_ = false;
    MeterView* meter_ = nullptr;
    HistoryBar* historyBar_ = nullptr;
    VSTGUI::SharedPointer<Overlay> overlay_;
    std::unique_ptr<DisplayViews> displays_;
    std::unique_ptr<Hints> hints_;
    std::unique_ptr<KeyboardFocus> keys_;
    std::unique_ptr<ModulationDrags> drags_;
    std::vector<LayerView*> layers_;
    ControlFace* opener_ = nullptr;    // of the menu that is open
    bool isRowByLeft_ = true;          // of the menu that was open last, or by a key
    ControlFace* editing_ = nullptr;   // held by the mouse
    std::vector<ControlFace*> drawn_;  // steps beside the one that is held, set by the same drag
    std::function<bool()> openNotes_;
    bool isLearning_ = false;  // by a menu of this window: Escape calls it off
    unsigned round_ = 0;
};

}  // namespace vantoric
