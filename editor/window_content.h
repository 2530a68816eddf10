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
#include "editor/display_views.h"
#include "editor/drag_area.h"
#include "editor/drop_target.h"
#include "editor/history_bar.h"
#include "editor/layer_view.h"
#include "editor/model/q7editor.h"
#include "editor/model/work_history.h"
#include "editor/overlay.h"
#include "editor/popup_menu.h"
#include "library/variation.h"
#include "vstgui/lib/cviewcontainer.h"

namespace vantoric {

// On the thread of the window. Listens to all views, hands on to the editor what a hand does, and shows what the editor has.
class WindowContent final : public LayerHost, private ControlListener, private DepthListener, private DragListener {
public:
    // Adds its views to `root`, which owns them and must outlive it. `width` and `height` in window units: what stands beyond
    // is left out.
    WindowContent(DropContainer& root, double width, double height, Q7Editor& editor, WorkHistory& work, Instrument& instrument);
    ~WindowContent();
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
    void setNotesWanted(std::function<bool()> wanted) { notesWanted_ = std::move(wanted); }
    // Whether the browser is open, which its button shows.
    void showBrowserOpen(bool isOpen);
    // Lamps, meters, displays, hints: at each round of the window's timer.
    void follow();

    // ---- keys

    // A key that came while the window has the keys; consumed if it was used.
    void onKey(VSTGUI::KeyboardEvent& event);
    // Whether keys belong to the window at present: something is open, a control has the focus by keyboard, or the user has
    // clicked on the window's ground, or holds a control by the mouse: Escape calls that off.
    bool wantsKeys() const {
        return !layers_.empty() || focused_ != nullptr || focusedStop_ >= 0 || hasKeyboard_ || isDragging_ || isHandBusy();
    }

    // ---- layers

    void openLayer(LayerView* view) override;
    void closeLayer(LayerView& view) override;
    VSTGUI::CRect layerArea() const override { return area_; }
    // Takes away what is open, as Escape does.
    void dismissLayers();
    bool hasLayers() const { return !layers_.empty(); }

    ControlViews& views() { return views_; }

private:
    enum DragAreaIndex { envelopeArea, lfoArea, wheelArea };

    // What the keyboard reaches beside the controls of the table.
    struct FocusStop {
        VSTGUI::CRect place;
        Section section;
        std::string name;
        std::function<std::string()> value;     // as spoken; may be empty
        std::function<void()> press;            // Enter or the space bar; may be empty
        std::function<void(float)> nudge = {};  // arrows, by a step of the value; may be empty
        std::function<void()> menu = {};        // the menu key; may be empty
    };

    void valueChanged(VSTGUI::CControl* control) override;
    void controlBeginEdit(VSTGUI::CControl* control) override;
    void controlEndEdit(VSTGUI::CControl* control) override;
    void controlHovered(ControlFace& face, bool isHovered) override;
    void controlMenuWanted(ControlFace& face) override;
    void controlListWanted(ControlFace& face) override;
    void controlResetWanted(ControlFace& face) override;
    void controlTypingWanted(ControlFace& face) override;
    void controlTouched(ControlFace& face) override;
    void controlPressed(ControlFace& face, VSTGUI::Modifiers modifiers) override;
    void controlPointer(VSTGUI::CPoint where, bool isReleased) override;
    void controlStepped(ControlFace& face, int direction) override;
    void controlCancelled(ControlFace& face) override;
    void stepsDrawn(VSTGUI::CPoint from, VSTGUI::CPoint to) override;
    void drawStep(ControlFace& step, float level);
    void depthDragBegan(ControlFace& knob) override;
    void depthDragged(ControlFace& knob, float amount) override;
    void depthDragEnded(ControlFace& knob) override;
    void depthDragCancelled(ControlFace& knob) override;
    void dragHovered(int area, bool isHovered) override;
    void dragBegan(int area) override;
    void dragMoved(int area, VSTGUI::CPoint where) override;
    void dragEnded(int area, VSTGUI::CPoint where) override;
    void dragCancelled(int area) override;

    void wantNotes();
    void partHovered(bool isHovered, const std::string& line);
    void listHovered(int list, const VSTGUI::CRect& place);
    void dropped(const std::vector<std::string>& paths, VSTGUI::CPoint where);
    void dropWave(const std::string& path, VSTGUI::CPoint where);
    void historyPressed(HistoryBar::Button button, bool isShifted);
    void historyHovered(HistoryBar::Button button);
    void addBand();
    void addDragAreas();
    void addTitles();
    void addBandStops();
    void addHistoryStops();
    void addWheelStop(WheelView& wheel, WindowPart part, const char* name, float step);
    void openVariations(const VSTGUI::CRect& place, VariedSection section, const char* name);
    void openTyping(ControlFace& face, const std::string& begun);
    void refresh(ControlFace& face);
    void refreshKnob(MYCKnob& knob);
    std::string textOn(const ControlEntry& entry) const;
    void refreshBackdrop();
    void refreshPatchLine();
    void followEngine();
    void followLearning();
    void followLamps();
    void followTooltip();

    ControlFace* faceOf(VSTGUI::CControl* control) const;
    void touch(ControlFace* face);
    void showStrip();
    void showHelp(ControlFace* face);
    std::vector<MenuRow> rowsOf(const ControlEntry& entry) const;
    std::vector<MenuRow> knobRows(const ControlEntry& entry) const;
    void openPopup(const VSTGUI::CRect& anchor, std::vector<MenuRow> rows, PopupMenu::Chosen chosen, ControlFace* opener);
    void openCategories();
    void setFocus(ControlFace* face);
    void setFocusedStop(int stop);
    void showStopHelp();
    bool isHandBusy() const;
    bool cancelHand();
    bool openFocusedMenu();
    void onStopKey(VSTGUI::KeyboardEvent& event);
    void pressFocused(ControlFace& face, const VSTGUI::KeyboardEvent& event);
    std::string spokenOf(const ControlEntry& entry) const;
    void moveFocus(int direction);
    bool onShortcut(const VSTGUI::KeyboardEvent& event);
    bool nudgeLoop(Wavedisplay& display, VSTGUI::VirtualKey key, float step);
    void onFocusedKey(VSTGUI::KeyboardEvent& event);
    bool onPlainLetter(char32_t character);
    std::optional<std::string> takeTyped(const ControlEntry& entry, const std::string& text);
    void nudge(ControlFace& face, float step);
    void stepList(ControlFace& face, int rows);
    void rowChosen(const ControlEntry& entry, int row);
    void setToEnd(ControlFace& face, bool last);
    void setByKey(ControlFace& face, float value);
    void markTargets(const std::optional<Color>& ring, int nearest);
    Color dragColor(int area) const;
    int targetAt(VSTGUI::CPoint where) const;

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
    MeterView* meter_ = nullptr;
    HintLine* hintLine_ = nullptr;
    HistoryBar* historyBar_ = nullptr;
    std::array<MYDragArea*, 3> dragAreas_{};
    Overlay* overlay_ = nullptr;
    std::unique_ptr<DisplayViews> displays_;
    std::vector<LayerView*> layers_;
    ControlFace* opener_ = nullptr;

    unsigned round_ = 0;
    ControlFace* hovered_ = nullptr;
    const char* listTooltip_ = nullptr;  // of the list that the pointer is over
    VSTGUI::CRect listPlace_;
    std::function<bool()> notesWanted_;
    unsigned hoveredSince_ = 0;
    bool showsTooltips_;
    ControlFace* touched_ = nullptr;
    unsigned touchedUntil_ = 0;
    unsigned newsUntil_ = 0;
    ControlFace* focused_ = nullptr;
    ControlFace* editing_ = nullptr;   // held by the mouse
    std::vector<ControlFace*> drawn_;  // steps beside the one that is held, set by the same drag
    std::vector<FocusStop> stops_;
    int focusedStop_ = -1;
    bool hasKeyboard_ = false, isDragging_ = false, isLearning_ = false;
    int dragSource_ = 0;
};

}  // namespace vantoric
