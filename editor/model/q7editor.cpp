#include "editor/model/q7editor.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/heard_while_written.h"
#include "base/numbers.h"
#include "base/parameters.h"
#include "editor/model/effect_slots.h"
#include "editor/model/indicators.h"
#include "editor/model/menu_rows.h"
#include "editor/model/step_names.h"
#include "editor/model/window_files.h"
#include "effects/effect_texts.h"
#include "effects/type_table.h"
#include "library/program_steps.h"
#include "parameters/parameter_table.h"

namespace vantoric {

namespace {

namespace par = parameter;

constexpr char calledOff[] = "No patch goes to a layer any more.";

// The load and edit buttons stand in turn, two an oscillator.
bool isSampleButton(int tag) { return isOneOf(tag, tag::sampleLoad1, 2 * oscillatorCount); }
int oscillatorOfButton(int tag) { return (tag - tag::sampleLoad1) / 2; }
bool isSampleEdit(int tag) { return isSampleButton(tag) && (tag - tag::sampleLoad1) % 2 == 1; }

bool isLayerControl(int tag) {
    if (const int n = parameterOfTag(tag); n >= 0) return n >= globalParameterCount;
    const int index = controlIndexForTag(tag);
    return index >= 0 && controlEntry(index).page != page::always;
}

bool isOn(float value) { return value > 0.5f; }

}  // namespace

Q7Editor::Q7Editor(Instrument& instrument, platform::Dialogs& dialogs, std::string_view hostProduct, PageOpener openPage)
    : instrument_(instrument),
      dialogs_(dialogs),
      edits_(instrument),
      pages_(instrument.parameters(), onShow_),
      size_(dialogs, hostProduct),
      matrix_(instrument.parameters(), edits_, onShow_, dialogs),
      learn_(instrument),
      knobs_(edits_, onShow_, matrix_, learn_),
      modulations_(matrix_.updateKnobModulation()),
      menus_(instrument, onShow_, dialogs, std::move(openPage)),
      parameterNews_(instrument.parameters().changes()),
      programNews_(instrument.programChanges()) {}

// ---- the window's life ------------------------------------------------------------------------------------------

void Q7Editor::open(EditorView& view) {
    const bool isRebuilt = view_ != nullptr;
    view_ = &view;
    parameterNews_.take();
    if (!isRebuilt) {
        menus_.library().scanCategories();
        menus_.library().scanPatches(-1);
    }
    // Program changes that came without a window have been followed by others.
    if (!isRebuilt)
        if (const std::optional<int> number = programNews_.take()) lastProgram_ = *number;
    menus_.patch().follow();
    refreshAll();
}

void Q7Editor::close(int openDialogs) {
    if (openDialogs > 0)
        platform::showMessage(dialogs_, ("Number of open Windows: " + std::to_string(openDialogs)).c_str(), "%s",
                              "You did not close all open Dialog Boxes before you closed the plugin. "
                              "This can cause a progam crash!");
    while (!gestures_.empty()) endEdit(gestures_.back().tag);
    view_ = nullptr;
}

// ---- parameters -------------------------------------------------------------------------------------------------

// With multilayer editing a layer's parameter is that of all layers.
std::vector<int> Q7Editor::indicesOf(int tag) const {
    const int n = parameterOfTag(tag);
    if (n < globalParameterCount || !onShow_.multilayer) return {hostIndexOfTag(tag, onShow_.layer)};
    std::vector<int> indices(layerCount);
    for (int layer = 0; layer < layerCount; ++layer) indices[static_cast<std::size_t>(layer)] = hostIndex(n, layer);
    return indices;
}

std::string Q7Editor::nameOfControl(int tag) const {
    return parameterOfTag(tag) < 0 ? "" : stepName(instrument_.parameters(), indicesOf(tag));
}

void Q7Editor::touch(int tag, bool leftButton) {
    if (view_ == nullptr) return;
    woken_ = -1;
    wakeLayer(tag, leftButton);
}

void Q7Editor::beginEdit(int tag) {
    if (view_ == nullptr || parameterOfTag(tag) < 0) return;
    gestures_.push_back({tag, indicesOf(tag), {}, std::exchange(woken_, -1)});
    Gesture& gesture = gestures_.back();
    for (const int index : gesture.indices) {
        gesture.before.push_back(instrument_.parameters().getParameter(index));
        edits_.begin(index);
    }
}

void Q7Editor::endEdit(int tag) {
    const auto gesture = std::find_if(gestures_.begin(), gestures_.end(), [=](const Gesture& g) { return g.tag == tag; });
    if (gesture == gestures_.end()) return;
    const std::vector<int> indices = std::move(gesture->indices);
    gestures_.erase(gesture);
    for (const int index : indices) edits_.end(index);
}

void Q7Editor::cancelEdit(int tag) {
    const auto found = std::find_if(gestures_.begin(), gestures_.end(), [=](const Gesture& g) { return g.tag == tag; });
    if (found == gestures_.end()) return;
    const Gesture& gesture = *found;
    for (std::size_t i = 0; i < gesture.indices.size(); ++i) edits_.set(gesture.indices[i], gesture.before[i]);
    silenceAgain(gesture.woken);
    endEdit(tag);
    parameterShown(parameterOfTag(tag));
}

void Q7Editor::silenceAgain(int woken) {
    if (woken < 0) return;
    edits_.change(woken, 0.0f);
    if (view_ != nullptr) view_->redrawAll();
}

void Q7Editor::setParameter(int tag, float value) {
    const auto gesture = std::find_if(gestures_.begin(), gestures_.end(), [=](const Gesture& g) { return g.tag == tag; });
    if (gesture != gestures_.end()) {
        for (const int index : gesture->indices) edits_.set(index, value);
    } else {
        for (const int index : indicesOf(tag)) edits_.change(index, value);
    }
    const int n = parameterOfTag(tag);
    if (slotOfType(n) != nullptr) loadEffectDefaults(n);
    parameterShown(n);
}

// Who touches a control of a silent layer wants to hear it.
void Q7Editor::wakeLayer(int tag, bool leftButton) {
    if (!leftButton || !isLayerControl(tag)) return;
    const int index = par::Layer1On + onShow_.layer;
    if (isOn(instrument_.parameters().getParameter(index))) return;
    edits_.change(index, 1.0f);
    woken_ = index;
    view_->redrawAll();  // the whole layer lights up
}

void Q7Editor::loadEffectDefaults(int number) {
    const EffectSlot& slot = *slotOfType(number);
    const int type = slot.typeOf(instrument_.parameters().getParameter(hostIndexOfTag(number, onShow_.layer)));
    const EffectDefaults& values = effectType(type).defaults;
    for (int i = 0; i <= effectValues; ++i) {
        const int n = i == 0 ? slot.mix : slot.first + i - 1;
        for (const int index : indicesOf(n)) edits_.change(index, values[static_cast<std::size_t>(i)]);
        redrawParameter(n);
    }
}

// The value of a parameter that the window shows has changed, whoever changed it.
void Q7Editor::parameterShown(int number) {
    displays_.noteParameter(number);
    if (isOneOf(number, par::MatSrc1, 3 * storedMatrixSlots)) showModulations();
    if (isOneOf(number, par::SynType1, oscillatorCount)) view_->showPages();
    if (const EffectSlot* slot = slotOfType(number); slot != nullptr)
        for (int i = 0; i < effectValues; ++i) redrawParameter(slot->first + i);
    // Where a row of steps ends the others are dark.
    if (number == par::Steps)
        for (int i = 0; i < 16; ++i) redrawParameter(par::Step1 + i);
    if (isOneOf(number, par::ArpVol1, 16))
        for (int i = 0; i < 16; ++i) redrawParameter(par::ArpStp1 + i), redrawParameter(par::ArpVol1 + i);
    if (isOneOf(number, par::LfoMode1, 3)) redrawParameter(par::LfoSpd1 + number - par::LfoMode1);
    redrawParameter(number);
}

void Q7Editor::showModulations() {
    modulations_ = matrix_.updateKnobModulation();
    for (int i = 0; i < controlCount(); ++i)
        if (isKnob(controlEntry(i))) view_->redrawControl(i);
}

void Q7Editor::redrawParameter(int number) {
    for (int i = 0; i < controlCount(); ++i)
        if (parameterOfTag(controlEntry(i).tag) == number) view_->redrawControl(i);
    if (number == par::Modwheel) view_->redrawPart(WindowPart::ModWheel);
}

// ---- what the hand does -----------------------------------------------------------------------------------------

void Q7Editor::valueChanged(int tag, float value, bool leftButton) {
    if (view_ == nullptr) return;
    wakeLayer(tag, leftButton);
    if (parameterOfTag(tag) >= 0) return setParameter(tag, value);
    if (tag == tag::pitchWheel) return turnPitchWheel(value);
    if (tag == tag::favourite) return setFavourite(isOn(value));
    if (!isOn(value)) return;
    if (const int index = controlIndexForTag(tag); index >= 0 && controlEntry(index).kind == WidgetKind::Selector)
        return selectPage(tag);
    pressButton(tag);
}

// A user who keeps the file keeps the star.
void Q7Editor::setFavourite(bool on) {
    menus_.setFavourite(on, [this](bool) {
        if (view_ != nullptr) view_->redrawPart(WindowPart::Favourite);
    });
}

void Q7Editor::selectPage(int tag) {
    if (isOneOf(tag, tag::layer1, layerCount)) return showLayer(tag - tag::layer1);
    pages_.select(tag);
    displays_.envelope = displays_.lfo = true;
    view_->showPages();
}

void Q7Editor::showLayer(int layer) {
    onShow_.layer = clampTo(layer, 0, layerCount - 1);
    instrument_.sampleLoader().currentLayer = onShow_.layer;
    refreshAll();
}

void Q7Editor::toggleMultilayer() { rowChosen(tag::copyMenu, copy_row::multilayer); }

// Everything shows another patch, layer or mode.
void Q7Editor::refreshAll() {
    modulations_ = matrix_.updateKnobModulation();
    displays_.noteAll();
    drawn_ = onShow_;
    if (view_ == nullptr) return;
    view_->showPages();
    view_->redrawAll();
}

void Q7Editor::pressButton(int tag) {
    if (isSampleButton(tag)) {
        if (isSampleEdit(tag)) return view_->openMenu(controlIndexForTag(tag));
        return menus_.loadSample(oscillatorOfButton(tag));
    }
    switch (tag) {
        case tag::previousPatch: return stepPatch(-1);
        case tag::nextPatch: return stepPatch(1);
        case tag::browser: return view_->toggleBrowser();
        case tag::shop: return menus_.visitShop();
        default: return;
    }
}

// A bend of the whole range of its 14 bits, as from a keyboard.
void Q7Editor::turnPitchWheel(float position) {
    const int bend = truncateTo(clampUnit(position) * 16384.0, 0, 16383);
    instrument_.midi().enqueueMidi(0xe0, static_cast<std::uint8_t>(bend & 127), static_cast<std::uint8_t>(bend >> 7), 0);
}

void Q7Editor::rowChosen(int tag, int row, bool leftButton) {
    if (view_ == nullptr || row < 0) return;
    if (parameterOfTag(tag) >= 0) return valueChanged(tag, listValue(row), leftButton);
    if (tag == tag::editorMenu || tag == tag::zoomMenu) return chooseSize(row);
    if (tag == tag::helpMenu) return chooseHelp(row);
    chooseCommand(tag, row);
    commandDone();
    const bool isArmed = (tag == tag::fileMenu && row >= file_row::loadToLayer1 && row < file_row::loadToLayer1 + layerCount) ||
                         (tag == tag::pasteMenu && row == paste_row::loadToLayer);
    if (!isArmed || view_ == nullptr) return;
    if (onShow_.loadTarget != 0) return view_->openBrowser();
    view_->showHint(calledOff);
}

bool Q7Editor::callOffLoad() {
    if (onShow_.loadTarget == 0 || view_ == nullptr) return false;
    menus_.callOffLoad();
    commandDone();
    view_->showHint(calledOff);
    return true;
}

void Q7Editor::chooseCommand(int tag, int row) {
    if (isSampleEdit(tag)) return menus_.editSample(oscillatorOfButton(tag), row);
    if (isOneOf(tag, tag::waveMenu1, oscillatorCount)) return menus_.chooseWave(tag - tag::waveMenu1, row);
    switch (tag) {
        case tag::fileMenu: return menus_.file(row);
        case tag::copyMenu: return menus_.copy(row);
        case tag::pasteMenu: return menus_.paste(row);
        case tag::initMenu:
            menus_.init(row);
            if (row == init_row::all) pages_.showFirstPages();
            return;
        case tag::categoryList: return chooseCategory(row);
        case tag::patchList: return static_cast<void>(menus_.browser().clickPatch(row));
        default: return;
    }
}

// One that nothing can be loaded from leaves the lists at the patch on show.
void Q7Editor::chooseCategory(int row) {
    PatchLibrary& library = menus_.library();
    const int listed = library.listedCategory();
    if (menus_.browser().clickCategory(row) || !library.selectedPatch().empty()) return;
    library.scanPatches(listed);
    menus_.patch().select();
    view_->showHint("No patches are in this category.");
}

// Of a command that asks, this is what it did before; idle time follows the rest.
void Q7Editor::commandDone() {
    if (view_ == nullptr) return;
    instrument_.sampleLoader().currentLayer = onShow_.layer;
    refreshAll();
    followPatch();
}

void Q7Editor::chooseSize(int row) {
    size_.chooseSize(row, view_->screen(), [this](bool zoomChanged) {
        if (view_ == nullptr) return;
        if (zoomChanged) view_->setZoom(size_.zoom());
        view_->rebuild();
    });
}

void Q7Editor::chooseHelp(int row) {
    switch (row) {
        case help_row::tooltips: return toggleTooltips(dialogs_);
        case help_row::removeControllers: view_->showHint(learn_.removeAll()); return view_->redrawAll();
        case help_row::credits: return view_->showCredits();
        default: return menus_.help(row);
    }
}

// ---- patches ----------------------------------------------------------------------------------------------------

void Q7Editor::stepPatch(int direction) {
    if (menus_.library().categoryNames().empty()) menus_.library().scanCategories();
    direction > 0 ? menus_.browser().clickNext() : menus_.browser().clickPrevious();
    commandDone();
}

// ---- knobs and the matrix ---------------------------------------------------------------------------------------

void Q7Editor::showMatrixPage(const std::optional<int>& page) {
    static constexpr int selectors[] = {tag::matrixPage1, tag::matrixPage2, tag::matrixPage3};
    if (page) selectPage(selectors[*page - 1]);
}

void Q7Editor::finish(const KnobCommandResult& result) {
    if (view_ == nullptr) return;
    showMatrixPage(result.matrixPage);
    if (result.hint[0] != 0) view_->showHint(result.hint);
    refreshAll();
}

void Q7Editor::knobRowChosen(int tag, int row) {
    if (view_ == nullptr) return;
    if (row == learnRow || row == resetValueRow) return finish(knobs_.chooseRow(parameterOfTag(tag), row));
    const CommandLog::Running running(menus_.log(),
                                      (row == resetAllRow ? "Reset " : "Remove modulation of ") + nameOfControl(tag));
    finish(knobs_.chooseRow(parameterOfTag(tag), row));
}

void Q7Editor::knobSourceChosen(int tag, int sourceTag) {
    if (view_ == nullptr) return;
    const CommandLog::Running running(menus_.log(), "Modulate " + nameOfControl(tag));
    finish(knobs_.chooseSource(parameterOfTag(tag), sourceTag));
}

void Q7Editor::beginDepth(int tag) {
    if (view_ == nullptr) return;
    woken_ = -1;
    wakeLayer(tag, true);
    matrix_.beginDepth(parameterOfTag(tag));
}

void Q7Editor::dragDepth(float amount) {
    if (view_ == nullptr) return;
    matrix_.dragDepth(amount);
    showModulations();
}

void Q7Editor::endDepth() { matrix_.endDepth(); }

void Q7Editor::cancelDepth() {
    matrix_.cancelDepth();
    silenceAgain(std::exchange(woken_, -1));
    if (view_ != nullptr) showModulations();
}

int Q7Editor::draggedSource(WindowPart part) const {
    constexpr int modwheelSource = 19;
    switch (part) {
        case WindowPart::DragEnvelope: return dragSource(DragSection::envelope, pages_.envelope());
        case WindowPart::DragLfo: return dragSource(DragSection::lfo, pages_.lfo());
        case WindowPart::DragWheel: return modwheelSource;
        default: return 0;
    }
}

int Q7Editor::dropTarget(float x, float y) const {
    std::array<DropTarget, controlTotal> targets;
    for (int i = 0; i < controlTotal; ++i) {
        const ControlEntry& entry = controlEntry(i);
        targets[static_cast<std::size_t>(i)] = {static_cast<int>(entry.kind), static_cast<float>(entry.x),
                                                static_cast<float>(entry.y), isVisible(entry)};
    }
    return dropHit(targets, x, y, static_cast<float>(size_.layoutScale()));
}

void Q7Editor::dropSource(int source, float x, float y) {
    const int target = dropTarget(x, y);
    if (view_ == nullptr || target < 0 || source <= 0) return;
    const CommandLog::Running running(menus_.log(), "Modulate " + nameOfControl(controlEntry(target).tag));
    finish({matrix_.addDroppedModulation(parameterOfTag(controlEntry(target).tag), source), ""});
}

// ---- what to show -----------------------------------------------------------------------------------------------

float Q7Editor::valueOf(int tag) const {
    if (tag == tag::pitchWheel) return pitchWheel_;
    if (tag == tag::favourite) return menus_.isFavourite() ? 1.0f : 0.0f;
    if (parameterOfTag(tag) >= 0) return instrument_.parameters().getParameter(hostIndexOfTag(tag, onShow_.layer));
    return pages_.isSelected(tag) ? 1.0f : 0.0f;
}

Q7Editor::EffectField Q7Editor::effectField(int tag) const {
    const EffectSlot* slot = slotOfField(tag);
    if (slot == nullptr) return {0, 0};
    return {slot->typeOf(valueOf(slot->type)), tag - slot->first + 1};
}

std::string Q7Editor::textOf(const ControlEntry& entry) const {
    if (isWaveMenu(entry)) return menus_.shownWave(entry.tag - tag::waveMenu1);
    const int n = parameterOfTag(entry.tag);
    if (n < 0) return "";
    const float value = valueOf(entry.tag);
    if (entry.kind == WidgetKind::EffectValue) {
        const EffectField field = effectField(entry.tag);
        char text[effectTextSize];
        effectParameterText(field.type, field.parameter, value, text);
        return text;
    }
    if (isOneOf(entry.tag, tag::lfoSpeedText1, 4)) {
        const int tab = entry.tag - tag::lfoSpeedText1;
        const int mode = tab == 3 ? 0 : listIndex(valueOf(par::LfoMode1 + tab));
        return lfoSpeedText(tab, mode, value);
    }
    if (entry.format != nullptr) return entry.format(value);
    return instrument_.parameters().displayText(hostIndexOfTag(entry.tag, onShow_.layer));
}

KnobModulation Q7Editor::modulationOf(const ControlEntry& entry) const {
    const int n = parameterOfTag(entry.tag);
    return n < 0 ? KnobModulation{} : modulations_[static_cast<std::size_t>(n)];
}

int Q7Editor::ccNumberOf(const ControlEntry& entry) const {
    const int index = hostIndexOfTag(entry.tag, onShow_.layer);
    return index < 0 ? MidiLearn::noController : learn_.ccNumber(index);
}

bool Q7Editor::callOffLearning() {
    if (!learn_.cancel()) return false;
    if (view_ != nullptr) view_->redrawAll();
    return true;
}

int Q7Editor::lfoModeOf(int number) const {
    return isOneOf(number, par::LfoSpd1, 3) ? listIndex(valueOf(par::LfoMode1 + number - par::LfoSpd1)) : 0;
}

KnobState Q7Editor::knobState(const ControlEntry& entry) const {
    const int n = parameterOfTag(entry.tag);
    if (n < 0) return {.name = entry.name};
    const int mode = lfoModeOf(n);
    const KnobModulation modulation = modulationOf(entry);
    return {entry.name,        textOf(entry),       isKnob(entry) ? parameterUnit(n, mode) : "",
            ccNumberOf(entry), modulation.modCount, modulation.modNames};
}

std::vector<std::string> Q7Editor::rowsOf(const ControlEntry& entry) const {
    if (isWaveMenu(entry)) return menus_.waveRows();
    return {entry.labels.begin(), entry.labels.end()};
}

int Q7Editor::shownRow(const ControlEntry& entry) const {
    if (isList(entry) && parameterOfTag(entry.tag) >= 0)
        return instrument_.parameters().getListIndex(hostIndexOfTag(entry.tag, onShow_.layer));
    if (!isWaveMenu(entry)) return -1;
    const std::string wave = menus_.shownWave(entry.tag - tag::waveMenu1);
    const std::vector<std::string> rows = menus_.waveRows();
    const auto found = std::find(rows.begin() + MenuCommands::firstWaveRow, rows.end(), wave);
    return wave.empty() || found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

int Q7Editor::rowAfter(const ControlEntry& entry, int rows) const {
    const bool isWaves = isWaveMenu(entry);
    const std::vector<std::string> labels = rowsOf(entry);
    const int first = isWaves ? MenuCommands::firstWaveRow : 0, count = static_cast<int>(labels.size());
    const int direction = rows > 0 ? 1 : -1;
    int chosen = shownRow(entry);
    // A wave that is in no list stands before the first.
    for (int row = (chosen < first ? first - 1 : chosen) + direction; row >= first && row < count && rows != 0;
         row += direction) {
        if (labels[static_cast<std::size_t>(row)] == "-") continue;
        chosen = row;
        rows -= direction;
    }
    return chosen;
}

int Q7Editor::playingStep() const {
    const HeardWhileWritten reading;
    return instrument_.layer(onShow_.layer).arpeggiator().playingStep();
}

float Q7Editor::meter(int channel) const { return levelMeter(instrument_.peak(channel)); }

// ---- idle time --------------------------------------------------------------------------------------------------

void Q7Editor::idle() {
    const EngineFlags& flags = instrument_.flags();
    if (isIdling_ || view_ == nullptr || flags.editorClosing.isSet() || flags.engineLocked.isSet()) return;
    const struct Idling {
        bool& flag;
        explicit Idling(bool& f) : flag(f) { flag = true; }
        ~Idling() { flag = false; }
    } idling(isIdling_);
    menus_.poll();
    followOnShow();
    followPatch();
    followParameters();
    followWheels();
    followProgramChanges();
    followControllers();
    followLamps();
    isDisplayRound_ = !isDisplayRound_;
    if (isDisplayRound_) refreshDisplays();
}

// Commands that have asked something end when the user answers.
void Q7Editor::followOnShow() {
    if (onShow_.layer != drawn_.layer || onShow_.multilayer != drawn_.multilayer || onShow_.loadTarget != drawn_.loadTarget)
        commandDone();
}

void Q7Editor::followPatch() {
    menus_.patch().follow();
    std::string name = patchName();
    if (name == drawnName_ && menus_.patch().category() == drawnCategory_) return;
    drawnName_ = std::move(name);
    drawnCategory_ = menus_.patch().category();
    view_->showPatchName();
}

void Q7Editor::followParameters() {
    const ParameterChanges::News news = parameterNews_.take();
    if (!news.any()) return;
    if (news.all) return refreshAll();
    for (int n = 0; n < layerParameterEnd; ++n)
        if (news.has(hostIndexOfTag(n, onShow_.layer))) parameterShown(n);
}

// The modulation wheel is a parameter.
void Q7Editor::followWheels() {
    float position = 0.0f;
    {
        const HeardWhileWritten reading;
        position = instrument_.midi().pitchWheel();
    }
    if (position == pitchWheel_) return;
    pitchWheel_ = position;
    view_->redrawPart(WindowPart::PitchWheel);
}

void Q7Editor::followProgramChanges() {
    const std::optional<int> number = programNews_.take();
    if (!number) return;
    const int direction = programStep(lastProgram_, *number);
    lastProgram_ = *number;
    stepPatch(direction);
}

void Q7Editor::followControllers() {
    if (learn_.takeMapChange()) view_->redrawAll();
}

void Q7Editor::followLamps() {
    for (int layer = 0; layer < layerCount; ++layer) {
        int ticks = 0;
        {
            const HeardWhileWritten reading;
            ticks = instrument_.layer(layer).ticksSinceNote;
        }
        const int value = activityLamp(ticks, instrument_.parameters().getParameter(par::Layer1On + layer));
        int& lamp = lamps_[static_cast<std::size_t>(layer)];
        if (value == lamp) continue;
        lamp = value;
        view_->redrawControl(controlIndexForTag(tag::layer1 + layer));
    }
}

void Q7Editor::refreshDisplays() { view_->redrawPart(WindowPart::Meter); }

}  // namespace vantoric
