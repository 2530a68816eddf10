// The editor: all that the window knows and does. It draws nothing; a view does, which asks here what to show and tells
// what the user's hand does.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "editor/model/control_table.h"
#include "editor/model/control_texts.h"
#include "editor/model/display_flags.h"
#include "editor/model/editor_view.h"
#include "editor/model/knob_commands.h"
#include "editor/model/matrix_editing.h"
#include "editor/model/midi_learn.h"
#include "editor/model/pages.h"
#include "editor/model/window_files.h"
#include "editor/model/window_size.h"
#include "engine/instrument.h"
#include "library/menu_commands.h"
#include "library/on_show.h"
#include "library/parameter_edits.h"
#include "platform/dialogs.h"

namespace vantoric {

// On the thread of the window throughout. Lives as long as its instrument has an editor, with or without an open window;
// the dialogs outlive it. Layers, oscillators, filters and tabs count from 0. Tags are those of the table.
class Q7Editor {
public:
    // `openPage`: empty for the desktop's opener.
    Q7Editor(Instrument& instrument, platform::Dialogs& dialogs, std::string_view hostProduct, PageOpener openPage = {});
    Q7Editor(const Q7Editor&) = delete;
    Q7Editor& operator=(const Q7Editor&) = delete;

    // ---- the window's life

    // Takes the size for a start. Before the first window is built.
    void loadSize(Screen screen) { size_.loadSize(screen); }
    // The size for a start where none is stored, for a host that knows better what fits.
    void startWithSize(int index) {
        if (!readSizeIndex()) size_.applySize(index);
    }
    // A window shows from now on, or the one that shows was built anew; it outlives `close`.
    void open(EditorView& view);
    // It goes away, with that many dialogs still open, which the user is told of. The engine plays on.
    void close(int openDialogs);
    // To be called by the window's timer, some twenty times a second.
    void idle();

    // ---- what the user's hand does; nothing while no window is open

    // A hand begins something with a control: that of a silent layer turns the layer on, if it is the left button's.
    void touch(int tag, bool leftButton = true);
    // A gesture on a control: any number of `valueChanged` between the two. Other tags than those of parameters need none.
    void beginEdit(int tag);
    void endEdit(int tag);
    // Ends the gesture with everything as it was at its beginning; a layer that it woke falls silent again.
    void cancelEdit(int tag);
    // A control has another value, 0 to 1: a parameter's, a selector that went on, a button that was let go of. `leftButton`:
    // the left button of the mouse is held.
    void valueChanged(int tag, float value, bool leftButton);
    // A row of a list or menu was chosen, counted with the separators. `leftButton`: by it, or by a key.
    void rowChosen(int tag, int row, bool leftButton = true);

    // ---- knobs and the matrix

    // A row of the menu of the control with that tag, and a row of one of its submenus by the tag that stands for it.
    void knobRowChosen(int tag, int row);
    void knobSourceChosen(int tag, int sourceTag);
    // A drag of the depth of a knob's modulation: any number of `dragDepth`, 0 to 1, between the two.
    void beginDepth(int tag);
    void dragDepth(float amount);
    void endDepth();
    void cancelDepth();
    // What the mouse carries that left a part of the window (one of the drag areas): the list index of the source.
    int draggedSource(WindowPart part) const;
    // The control, by its row of the table, that would take a drop at a point of the window in pixels before zoom; -1 for
    // none. And the drop itself.
    int dropTarget(float x, float y) const;
    void dropSource(int source, float x, float y);

    // ---- what to show

    bool isVisible(const ControlEntry& entry) const { return pages_.isShown(entry.page); }
    // 0 to 1: a parameter's value, 1 for a selector that is on; 0 for what has no value.
    float valueOf(int tag) const;
    // The text of a list, field or knob at its present value; empty where there is none.
    std::string textOf(const ControlEntry& entry) const;
    // The list index of the mode of the LFO whose speed that number is; 0 for all other numbers.
    int lfoModeOf(int number) const;
    // The strip over a knob or field, its modulation, and the rows of its menu.
    KnobState knobState(const ControlEntry& entry) const;
    KnobModulation modulationOf(const ControlEntry& entry) const;
    int ccNumberOf(const ControlEntry& entry) const;
    // Whether the next controller is to be learned; calls that off (false if nothing waits).
    bool isLearning() const { return learn_.isPending(); }
    bool callOffLearning();
    // The type of an effect field's slot, and its parameter there, 1 to 4. {0, 0} for any other tag.
    struct EffectField {
        int type, parameter;
    };
    EffectField effectField(int tag) const;
    int lamp(int layer) const { return lamps_[static_cast<std::size_t>(layer)]; }  // 0 to 127
    float meter(int channel) const;                                                // 0 to 1

    const OnShow& onShow() const { return onShow_; }
    const Pages& pages() const { return pages_; }
    const WindowSize& size() const { return size_; }
    DisplayFlags& displayFlags() { return displays_; }
    ParameterEdits& edits() { return edits_; }
    // The number of the last program change that made a step; 0 before the first. Set where others followed them while no
    // window was open.
    int lastProgram() const { return lastProgram_; }
    void setLastProgram(int number) { lastProgram_ = number; }
    // The lists of patches, and where in them the patch in force is; the browser over them; and all commands.
    PatchLibrary& patches() { return menus_.library(); }
    PatchBrowser& browser() { return menus_.browser(); }
    MenuCommands& commands() { return menus_; }
    // The name of the patch in force.
    std::string patchName() { return menus_.patch().name(); }
    // What the hint line says while nothing is pointed at: of the category of the patch in force.
    std::string restingHint() { return categoryHint(menus_.patch().category(), onShow_.loadTarget).text; }
    // Calls off a load to a layer that waits for its patch. False if none does.
    bool callOffLoad();
    // The step that the arpeggiator of the layer on show plays, 0 to 15; -1: none.
    int playingStep() const;
    // The rows of the menu or list of a control, "-" for separators.
    std::vector<std::string> rowsOf(const ControlEntry& entry) const;
    // The row that a list stands at: of its parameter's value, or of the wave; -1: none.
    int shownRow(const ControlEntry& entry) const;
    // The row so many on from there, at most to the end; separators and commands are passed over. -1: none.
    int rowAfter(const ControlEntry& entry, int rows) const;

    // Shows a layer, 0 to 3.
    void showLayer(int layer);
    // Turns multilayer editing on and off.
    void toggleMultilayer();

private:
    // A gesture that is under way, and the host indices that it began.
    struct Gesture {
        int tag;
        std::vector<int> indices;
        std::vector<float> before;  // their values
        int woken;                  // host index of the layer's switch that the touch turned on; -1 for none
    };

    std::vector<int> indicesOf(int tag) const;
    std::string nameOfControl(int tag) const;
    void wakeLayer(int tag, bool leftButton);
    void silenceAgain(int woken);
    void setParameter(int tag, float value);
    void loadEffectDefaults(int number);
    void turnPitchWheel(float position);
    void setFavourite(bool on);
    void selectPage(int tag);
    void pressButton(int tag);
    void chooseSize(int row);
    void chooseHelp(int row);
    void chooseCommand(int tag, int row);
    void chooseCategory(int row);
    void commandDone();
    void refreshAll();
    void parameterShown(int number);
    void redrawParameter(int number);

    void showModulations();
    void stepPatch(int direction);
    void showMatrixPage(const std::optional<int>& page);
    void finish(const KnobCommandResult& result);

    void followOnShow();
    void followPatch();
    void followParameters();
    void followControllers();
    void followProgramChanges();
    void followWheels();
    void followLamps();
    void refreshDisplays();

    Instrument& instrument_;
    platform::Dialogs& dialogs_;
    EditorView* view_ = nullptr;
    OnShow onShow_;
    ParameterEdits edits_;
    Pages pages_;
    WindowSize size_;
    MatrixEditing matrix_;
    MidiLearn learn_;
    KnobCommands knobs_;
    KnobModulations modulations_;
    MenuCommands menus_;
    DisplayFlags displays_;

    std::vector<Gesture> gestures_;
    int woken_ = -1;  // by the last touch
    ParameterChanges::Reader parameterNews_;
    ProgramChanges::Reader programNews_;
    OnShow drawn_;  // as the view shows it
    std::string drawnName_, drawnCategory_;
    int lastProgram_ = 0;
    float pitchWheel_ = 0.5f;
    std::array<int, layerCount> lamps_{};
    bool isIdling_ = false;
    bool isDisplayRound_ = false;
};

}  // namespace vantoric
