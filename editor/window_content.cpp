#include "editor/window_content.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <utility>

#include "base/parameters.h"
#include "editor/add_view.h"
#include "editor/control_menus.h"
#include "editor/dropped_files.h"
#include "editor/model/spoken_values.h"
#include "editor/model/typed_values.h"
#include "editor/value_box.h"
#include "library/patch_library.h"
#include "vstgui/lib/cframe.h"

namespace vantoric {
namespace {

using VSTGUI::CPoint;
using VSTGUI::CRect;

constexpr unsigned roundsASecond = 20;
constexpr double historyBarWidth = 80;

CRect rectOf(const LayoutRect& r) { return CRect(CPoint(r.x, r.y), CPoint(r.width, r.height)); }

}  // namespace

WindowContent::WindowContent(DropContainer& root, double width, double height, Q7Editor& editor, WorkHistory& work,
                             Instrument& instrument)
    : root_(root),
      area_(0, 0, width, height),
      editor_(editor),
      work_(work),
      instrument_(instrument),
      backdrop_(addView(root, new Backdrop(area_, [this] { keys_->take(); }))),
      views_(root, area_, *this, *this) {
    const bool isLow = height <= bandHeight;
    overlay_ = VSTGUI::owned(new Overlay(area_));
    addBand();
    keys_ = std::make_unique<KeyboardFocus>(editor_, views_, *hints_, *overlay_, static_cast<KeyListener&>(*this));
    drags_ = std::make_unique<ModulationDrags>(root_, isLow, editor_, views_, *hints_, *overlay_, [this] { keys_->clear(); });
    addBandStops();
    addHistoryStops();
    if (!isLow) addTitles();
    overlay_->remember();
    addView(root_, overlay_.get());
    displays_ = std::make_unique<DisplayViews>(views_, editor_, instrument_);
    root_.setDropped([this](const auto& paths, CPoint where) { dropped(paths, where); });
    showPages();
    redrawAll();
    displays_->refresh();
    hints_->showHelp();
    followLearning();
}

WindowContent::~WindowContent() {
    dismissLayers();
    root_.setDropped(nullptr);
}

void WindowContent::addBand() {
    const auto place = [](WindowPart part) { return rectOf(windowPart(part).rect); };
    CRect patch = place(WindowPart::CategoryList);
    patch.unite(place(WindowPart::PatchList));
    patchLine_ = addView(root_, new PatchLine(patch, [this] { openCategories(); }, [this] { openPatches(); }));
    patchLine_->setHoverHeard([this](int list, const CRect& place) { listHovered(list, place); });
    patchLine_->setNotesWanted([this] { notesWanted(); });
    favourite_ = addView(root_, new FavouriteView(place(WindowPart::Favourite), this, tag::favourite));
    pitchWheel_ = addView(root_, new WheelView(place(WindowPart::PitchWheel), this, tag::pitchWheel, true));
    modWheel_ = addView(root_, new WheelView(place(WindowPart::ModWheel), this, tag::modWheel, false));
    modWheel_->setMenuWanted([this] { openModWheelMenu(); });
    meter_ = addView(root_, new MeterView(place(WindowPart::Meter)));
    favourite_->setHoverHeard([this](bool isHovered) {
        partHovered(isHovered, [this] {
            return editor_.valueOf(tag::favourite) > 0.5f ? "Favourite: on.  A click takes the copy away."
                                                          : "Favourite: off.  A click puts a copy among the favourites.";
        });
    });
    pitchWheel_->setHoverHeard([this](bool isHovered) {
        partHovered(isHovered, [this] { return "Pitch wheel: " + wheelText(true) + ".  It springs back to its middle."; });
    });
    modWheel_->setHoverHeard([this](bool isHovered) {
        partHovered(isHovered, [this] {
            return "Modulation wheel: " + wheelText(false) + ".  Drag the mark beside it to what it should turn.";
        });
    });
    meter_->setHoverHeard(
        [this](bool isHovered) { partHovered(isHovered, [] { return "Output level, left and right.  Red is too loud."; }); });
    CRect hint = place(WindowPart::HintLine), history = hint;
    history.left = history.right - historyBarWidth;
    hint.right = history.left - 6;
    auto* const line = addView(root_, new HintLine(hint));
    hints_ = std::make_unique<Hints>(editor_, views_, *line, *overlay_);
    historyBar_ =
        addView(root_, new HistoryBar(
                           history, [this](HistoryBar::Button button, bool isShifted) { historyPressed(button, isShifted); },
                           [this](HistoryBar::Button button) { historyHovered(button); }));
}

void WindowContent::addBandStops() {
    const auto place = [](WindowPart part) { return rectOf(windowPart(part).rect); };
    const auto stepPatch = [this](float step) { editor_.valueChanged(step > 0 ? tag::nextPatch : tag::previousPatch, 1, false); };
    keys_->addStop({place(WindowPart::CategoryList), Section::Output, "CATEGORY",
                    [this] { return editor_.commands().patch().category(); }, [this] { openCategories(); }});
    keys_->addStop({place(WindowPart::PatchList), Section::Output, "PATCH", [this] { return editor_.patchName(); },
                    [this] { openPatches(); }, stepPatch});
    keys_->addStop({place(WindowPart::Favourite), Section::Output, "FAVOURITE",
                    [this] { return std::string(editor_.valueOf(tag::favourite) > 0.5f ? "on" : "off"); },
                    [this] { favourite_->press(); }});
    const auto springBack = [this] {
        if (std::exchange(isPitchTurned_, false)) editor_.valueChanged(tag::pitchWheel, 0.5f, false);
    };
    KeyboardFocus::Stop pitch = wheelStop(WindowPart::PitchWheel, "PITCHWHEEL", 0.05f);
    pitch.left = springBack;
    keys_->addStop(std::move(pitch));
    KeyboardFocus::Stop modulation = wheelStop(WindowPart::ModWheel, "MODWHEEL", 0.01f);
    modulation.menu = [this] { openModWheelMenu(); };
    keys_->addStop(std::move(modulation));
}

// What the engine tells of the pitch wheel comes later than the hand that holds it.
std::string WindowContent::wheelText(bool isPitch) const {
    if (!isPitch) return std::to_string(std::lround(editor_.valueOf(tag::modWheel) * 100)) + "%";
    const float shown = pitchWheel_->isHeld() ? pitchWheel_->getValue() : editor_.valueOf(tag::pitchWheel);
    return std::to_string(std::lround(shown * 200 - 100)) + "%";
}

// The pitch wheel stays where arrows put it until Enter, or the focus' going, lets it spring back.
KeyboardFocus::Stop WindowContent::wheelStop(WindowPart part, const char* name, float step) {
    const bool isPitch = part == WindowPart::PitchWheel;
    const int tag = isPitch ? tag::pitchWheel : tag::modWheel;
    const auto set = [this, tag, part, isPitch](float value) {
        const History::Action action(work_.history());
        if (isPitch) isPitchTurned_ = value != 0.5f;
        editor_.valueChanged(tag, std::clamp(value, 0.0f, 1.0f), false);
        redrawPart(part);
    };
    const auto value = [this, isPitch] { return wheelText(isPitch); };
    const auto nudge = [this, tag, set, step](float amount) {
        set(editor_.valueOf(tag) + (amount > 0 ? step : -step) * (std::abs(amount) > 0.05f ? 10.0f : 1.0f));
    };
    const CRect place = (isPitch ? pitchWheel_ : modWheel_)->getViewSize();
    return {place, Section::Output, name, value, [set, isPitch] { set(isPitch ? 0.5f : 0.0f); }, nudge};
}

void WindowContent::addHistoryStops() {
    const History& history = work_.history();
    const CRect bar = historyBar_->getViewSize();
    const auto add = [&](HistoryBar::Button button, const char* name, std::function<std::string()> value) {
        keys_->addStop({HistoryBar::place(bar, button), Section::Output, name, std::move(value),
                        [this, button] { historyPressed(button, false); }});
    };
    add(HistoryBar::Button::compare, "COMPARE",
        [&history] { return std::string(history.comparedSlot() == 0 ? "A plays" : "B plays"); });
    add(HistoryBar::Button::undo, "UNDO", [&history] { return history.undoCount() > 0 ? history.undoName() : "nothing"; });
    add(HistoryBar::Button::redo, "REDO", [&history] { return history.redoCount() > 0 ? history.redoName() : "nothing"; });
}

// A section's title opens its variations.
void WindowContent::addTitles() {
    const auto add = [this](double x, double y, double w, VariedSection section, Section at, const char* name) {
        const CRect place(CPoint(x, y), CPoint(w, 16));
        keys_->addStop({place, at, name, [] { return std::string("variations by chance"); },
                        [this, place, section, name] { openVariations(place, section, name); }});
        addView(root_, new TitleArea(
                           place, [this, place, section, name] { openVariations(place, section, name); },
                           [this, name](bool isHovered) {
                               isHovered ? hints_->showLine(std::string(name) + ": click for variations by chance")
                                         : hints_->showHelp();
                           }));
    };
    add(22, 138, 32, VariedSection::oscillators, Section::Oscillators, "Oscillators");
    add(948, 138, 40, VariedSection::filters, Section::Filters, "Filters");
    add(14, 428, 74, VariedSection::envelopes, Section::Envelopes, "Envelopes");
    add(410, 428, 34, VariedSection::lfos, Section::Lfo, "LFOs");
    add(14, 578, 86, VariedSection::arpeggiator, Section::Arpeggiator, "Arpeggiator");
    add(1004, 144, 44, VariedSection::all, Section::Output, "The whole layer");
}

void WindowContent::openVariations(const CRect& place, VariedSection section, const char* name) {
    const std::vector<MenuRow> rows{{std::string("Mutate: ") + name, 0, false, {}, {}},
                                    {std::string("Randomise: ") + name, 1, false, {}, {}}};
    openPopup(
        place, rows,
        [this, section](int row) {
            VariationCommands variations(instrument_, editor_.edits(), work_.history(), editor_.onShow());
            const std::uint32_t seed = std::random_device()();
            if (row == 0) {
                variations.mutate(section, seed);
            } else {
                variations.randomise(section, seed);
            }
            redrawAll();
        },
        nullptr);
}

// ---- showing ------------------------------------------------------------------------------------------------

void WindowContent::redrawControl(int index) {
    if (ControlFace* face = views_.at(index)) refresh(*face);
    refreshBackdrop();
}

void WindowContent::redrawPart(WindowPart part) {
    switch (part) {
        case WindowPart::PitchWheel:
            if (!pitchWheel_->isHeld()) {
                pitchWheel_->setValue(editor_.valueOf(tag::pitchWheel));
                pitchWheel_->invalid();
            }
            break;
        case WindowPart::ModWheel:
            if (!modWheel_->isHeld()) {
                modWheel_->setValue(editor_.valueOf(tag::modWheel));
                modWheel_->invalid();
            }
            break;
        case WindowPart::Favourite:
            favourite_->setValue(editor_.valueOf(tag::favourite));
            favourite_->invalid();
            break;
        case WindowPart::CategoryList:
        case WindowPart::PatchList: refreshPatchLine(); break;
        case WindowPart::Meter: break;  // followed with the displays
        default: refreshBackdrop(); break;
    }
}

void WindowContent::redrawAll() {
    views_.forEach([this](ControlFace& face) { refresh(face); });
    for (const WindowPart part : {WindowPart::PitchWheel, WindowPart::ModWheel, WindowPart::Favourite, WindowPart::PatchList})
        redrawPart(part);
    refreshBackdrop();
    hints_->refreshStrip();
    hints_->refreshLine();
}

void WindowContent::showPages() {
    views_.forEach([this](ControlFace& face) { face.view().setVisible(editor_.isVisible(face.entry())); });
    keys_->followPages();
    redrawAll();
}

void WindowContent::refresh(ControlFace& face) {
    const ControlEntry& entry = face.entry();
    face.setValueQuietly(editor_.valueOf(entry.tag));
    face.setOff(isSilent(editor_, entry));
    face.setMultilayer(editor_.onShow().multilayer && entry.page != page::always);
    if (entry.tag == tag::zoomMenu) return face.setText(std::to_string(editor_.size().percent()) + "%");
    if (entry.kind != WidgetKind::Knob) face.setText(faceText(editor_, entry));
    face.setCcNumber(editor_.ccNumberOf(entry));
    if (auto* knob = dynamic_cast<MYCKnob*>(&face)) refreshKnob(*knob);
    if (auto* list = dynamic_cast<ListView*>(&face);
        list != nullptr && entry.tag >= parameter::ArpVol1 && entry.tag < parameter::ArpVol1 + 16) {
        const char first = face.text().empty() ? '.' : face.text()[0];
        list->setLevel(first >= '1' && first <= '8' ? static_cast<float>(first - '0') / 8 : 0);
    }
    auto* field = dynamic_cast<MYParamDisplay*>(&face);
    if (field == nullptr) return;
    if (entry.section == Section::Matrix)
        field->setBarColor(sourceColor(instrument_.parameters().getListIndex(
            hostIndex(parameter::MatSrc1 + entry.tag - parameter::MatVal1, editor_.onShow().layer))));
}

void WindowContent::refreshKnob(MYCKnob& knob) {
    const KnobModulation modulation = editor_.modulationOf(knob.entry());
    knob.setModulation(modulation, sourceColor(modulation.source));
}

void WindowContent::refreshBackdrop() {
    const ParameterModel& parameters = instrument_.parameters();
    const int layer = editor_.onShow().layer;
    const auto listIndex = [&](int number) { return parameters.getListIndex(hostIndex(number, layer)); };
    BackdropState state;
    const int shownLfo = editor_.pages().lfo();
    const auto isOfShownLfo = [&](int source) {
        return source == dragSource(DragSection::lfo, shownLfo) || (shownLfo < 3 ? source == 2 + shownLfo : source == 6);
    };
    for (int slot = 0; slot < 15; ++slot) {
        const int source = listIndex(parameter::MatSrc1 + slot), destination = listIndex(parameter::MatDst1 + slot);
        const bool isUsed = source > 0 && destination > 0;
        if (isUsed) ++state.slotsUsed;
        if (slot / 5 == editor_.pages().matrix()) state.matrix[slot % 5] = {slot + 1, isUsed, sourceColor(source)};
        if (isUsed && isOfShownLfo(source) && state.driven.size() < 5 &&
            destination < static_cast<int>(matrixDestinationLabels.size()))
            state.driven.emplace_back(matrixDestinationLabels[destination]);
    }
    state.hasLfoTargets = shownLfo < 3;
    state.isMultilayer = editor_.onShow().multilayer;
    state.equalizer = {parameters.getParameter(parameter::EqLow), parameters.getParameter(parameter::EqMid),
                       parameters.getParameter(parameter::EqHigh)};
    state.isSerial = parameters.getParameter(hostIndex(parameter::FilSerial, layer)) > 0.5f;
    state.arpeggiatorStep = editor_.playingStep();
    backdrop_->setState(state);
}

void WindowContent::refreshPatchLine() {
    const PatchLibrary& patches = editor_.patches();
    PatchLine::Shown shown;
    shown.name = editor_.patchName();
    const PatchOnShow& patch = editor_.commands().patch();
    shown.category = patch.category();
    // The lists may stand elsewhere: on the patch from which steps go on.
    if (!patch.file().empty() && patches.selectedCategory() == patch.category() && patches.selectedPatch() == patch.file()) {
        shown.place = patches.selection().patch + 1;
        shown.count = static_cast<int>(patches.patchNames().size());
    }
    shown.isChanged = work_.isChanged();
    patchLine_->setShown(shown);
    const History& history = work_.history();
    historyBar_->setShown({history.undoCount() > 0, history.redoCount() > 0, history.comparedSlot()});
}

// ---- idle rounds --------------------------------------------------------------------------------------------

void WindowContent::follow() {
    ++round_;
    // What loads now, or goes away, is not looked at.
    const EngineFlags& flags = instrument_.flags();
    const bool isSettled = !flags.editorClosing.isSet() && !flags.engineLocked.isSet();
    if (isSettled) followEngine();
    followLearning();
    hints_->follow(hasLayers());
    if (isSettled) hints_->refreshLine();
    for (LayerView* layer : std::vector(layers_)) layer->follow();
}

void WindowContent::followEngine() {
    followLamps();
    if (round_ % 2 != 0) return;
    meter_->setLevels(editor_.meter(0), editor_.meter(1));
    displays_->refresh();
    refreshBackdrop();
    refreshPatchLine();
}

// What waits for its controller glows; once it has one, the line that asks for it goes.
void WindowContent::followLearning() {
    const double glow = 0.5 + 0.5 * std::sin(2 * std::numbers::pi * round_ / roundsASecond);
    views_.forEach([glow](ControlFace& face) {
        if (face.ccNumber() == MidiLearn::learning) face.setLearnGlow(glow);
    });
    isLearning_ = isLearning_ && editor_.isLearning();
    hints_->setRequest(editor_.isLearning() ? MidiLearn::request : "");
}

void WindowContent::followLamps() {
    for (int layer = 0; layer < layerCount; ++layer)
        if (auto* selector = views_.withTagAs<SelectorView>(tag::layer1 + layer)) selector->setLamp(editor_.lamp(layer));
}

// ---- what a hand does ---------------------------------------------------------------------------------------

ControlFace* WindowContent::faceOf(VSTGUI::CControl* control) const { return dynamic_cast<ControlFace*>(control); }

void WindowContent::valueChanged(VSTGUI::CControl* control) {
    hints_->forgetNews();
    const History::Action action(work_.history());
    ControlFace* const face = faceOf(control);
    editor_.valueChanged(control->getTag(), control->getValueNormalized(), face == nullptr || face->isHeldByLeft());
    if (face != nullptr) showTouched(*face);
}

// What a hand has done to a control.
void WindowContent::showTouched(ControlFace& face) {
    refresh(face);
    hints_->touch(&face);
    hints_->showHelp(&face);
}

void WindowContent::controlBeginEdit(VSTGUI::CControl* control) {
    keys_->leave();
    hints_->hideTooltip();
    const History::Action action(work_.history());
    editing_ = faceOf(control);
    editor_.touch(control->getTag(), editing_ == nullptr || editing_->isHeldByLeft());
    editor_.beginEdit(control->getTag());
    if (editing_ != nullptr) hints_->touch(editing_);
}

void WindowContent::controlEndEdit(VSTGUI::CControl* control) {
    editing_ = nullptr;
    for (const ControlFace* step : std::exchange(drawn_, {})) editor_.endEdit(step->entry().tag);
    editor_.endEdit(control->getTag());
    hints_->letGo();
}

void WindowContent::controlCancelled(ControlFace& face) {
    const History::Action action(work_.history());
    for (ControlFace* step : std::exchange(drawn_, {})) {
        editor_.cancelEdit(step->entry().tag);
        refresh(*step);
    }
    editor_.cancelEdit(face.entry().tag);
    showTouched(face);
}

// The step nearest to the pointer has its height, those that it passed the height at which it passed them.
void WindowContent::stepsDrawn(CPoint from, CPoint to) {
    const auto centreOf = [](const ControlFace& step) { return step.entry().x + step.entry().width / 2.0; };
    std::vector<StepSliderView*> steps;
    views_.forEach([&](ControlFace& face) {
        if (auto* step = dynamic_cast<StepSliderView*>(&face)) steps.push_back(step);
    });
    const auto nearest = std::ranges::min_element(steps, {}, [&](auto* step) { return std::abs(centreOf(*step) - to.x); });
    if (nearest == steps.end()) return;
    const History::Action action(work_.history());
    for (StepSliderView* step : steps) {
        const double centre = centreOf(*step);
        const bool isPassed = std::min(from.x, to.x) <= centre && centre <= std::max(from.x, to.x) && from.x != to.x;
        if (step == *nearest || !isPassed) continue;
        drawStep(*step, step->levelAt(from.y + (to.y - from.y) * (centre - from.x) / (to.x - from.x)));
    }
    drawStep(**nearest, (*nearest)->levelAt(to.y));
    hints_->forgetNews();
    showTouched(**nearest);
}

void WindowContent::drawStep(ControlFace& step, float level) {
    const int tag = step.entry().tag;
    if (level == editor_.valueOf(tag)) return;
    if (&step != editing_ && std::ranges::find(drawn_, &step) == drawn_.end()) {
        editor_.beginEdit(tag);
        drawn_.push_back(&step);
    }
    editor_.valueChanged(tag, level, true);
    refresh(step);
}

void WindowContent::controlHovered(ControlFace& face, bool isHovered) { hints_->hover(face, isHovered); }

// What stands in the band beside the table.
void WindowContent::partHovered(bool isHovered, Hints::Line line) {
    isHovered ? hints_->showLive(std::move(line)) : hints_->showHelp();
}

// The lists of categories and of patches, in the line of the patch's name.
void WindowContent::listHovered(int list, const CRect& place) {
    static constexpr const char* tooltips[] = {
        nullptr, "Select a patch category or type",
        "This is the name of the current patch\nClick here to select a patch without opening the patch browser"};
    hints_->hoverPlace(tooltips[list], place);
    if (list == 0) return hints_->showHelp();
    hints_->showLine(list == 1 ? "Select a patch category or type"
                               : "Click for the patches of this category, right click or Ctrl+T for tags and author.");
}

// Only patches of the library have notes.
void WindowContent::notesWanted() {
    dismissLayers();
    if (!openNotes_ || !openNotes_()) showHint("Save the patch first: tags belong to a patch of the library.");
}

void WindowContent::showHint(const std::string& text) { hints_->showNews(text); }

void WindowContent::controlPressed(ControlFace& face, VSTGUI::Modifiers) {
    if (face.entry().kind == WidgetKind::SampleButton && (face.entry().tag - tag::sampleLoad1) % 2 == 1)
        return controlListWanted(face);
    editor_.valueChanged(face.entry().tag, 1, true);
}

void WindowContent::controlTouched(ControlFace& face) {
    const History::Action action(work_.history());
    editor_.touch(face.entry().tag);
}

void WindowContent::controlMarked(ControlFace& face) {
    hints_->forgetNews();
    hints_->showHelp(&face);
}

void WindowContent::controlResetWanted(ControlFace& face) {
    hints_->forgetNews();
    const History::Action action(work_.history());
    editor_.touch(face.entry().tag);
    editor_.knobRowChosen(face.entry().tag, resetValueRow);
    showTouched(face);
}

void WindowContent::controlTypingWanted(ControlFace& face) { typingBegun(face, ""); }

void WindowContent::typingBegun(ControlFace& face, const std::string& begun) {
    const ControlEntry& entry = face.entry();
    if (parameterOfTag(entry.tag) < 0) return;
    dismissLayers();
    ValueBox::Asked asked{entry.name,   begun.empty() ? spokenValue(editor_, entry) : begun, typedRange(editor_, entry), "", 64,
                          begun.empty()};
    auto* box = new ValueBox(
        area_, face.body(), std::move(asked), [this, &entry](const std::string& text) { return takeTyped(entry, text); },
        nullptr);
    box->setClosed([this, box] { closeLayer(*box); });
    openLayer(box);
}

std::optional<std::string> WindowContent::takeTyped(const ControlEntry& entry, const std::string& text) {
    const std::optional<float> value = typedValue(editor_, entry, text);
    if (!value) return "Not understood. " + typedRange(editor_, entry);
    ControlFace* face = views_.withTag(entry.tag);
    if (face == nullptr || *value == editor_.valueOf(entry.tag)) return std::nullopt;
    const History::Action action(work_.history());
    editor_.touch(entry.tag);
    valueSetByKey(*face, *value);
    return std::nullopt;
}

// The menu that a press opened follows the pointer that is still held.
void WindowContent::controlPointer(CPoint where, bool isReleased) {
    auto* popup = layers_.empty() ? nullptr : dynamic_cast<PopupMenu*>(layers_.back());
    if (popup == nullptr) return;
    if (isReleased) {
        VSTGUI::MouseUpEvent event(where, VSTGUI::MouseButton::Left);
        popup->onMouseUpEvent(event);
    } else {
        VSTGUI::MouseMoveEvent event;
        event.mousePosition = where;
        popup->onMouseMoveEvent(event);
    }
}

void WindowContent::controlStepped(ControlFace& face, int direction) { stepList(face, direction, false); }

void WindowContent::listStepped(ControlFace& face, int rows) { stepList(face, rows, true); }

void WindowContent::stepList(ControlFace& face, int rows, bool wakes) {
    const ControlEntry& entry = face.entry();
    if (!isWaveMenu(entry) && (entry.labels.empty() || parameterOfTag(entry.tag) < 0)) return;
    const int shown = editor_.shownRow(entry), chosen = editor_.rowAfter(entry, rows);
    if (chosen != shown) chooseRow(face, chosen, wakes);
}

void WindowContent::valueSetByKey(ControlFace& face, float value) {
    hints_->forgetNews();
    const int tag = face.entry().tag;
    const History::Action action(work_.history());
    editor_.beginEdit(tag);
    editor_.valueChanged(tag, std::clamp(value, 0.0f, 1.0f), false);
    editor_.endEdit(tag);
    showTouched(face);
}

void WindowContent::switchedByKey(ControlFace& face, bool isOn) {
    const History::Action action(work_.history());
    editor_.valueChanged(face.entry().tag, isOn ? 1.0f : 0.0f, false);
    hints_->showHelp(&face);
}

// ---- history, drops -----------------------------------------------------------------------------------------

void WindowContent::historyPressed(HistoryBar::Button button, bool isShifted) {
    switch (button) {
        case HistoryBar::Button::undo: showHint(work_.undo()); break;
        case HistoryBar::Button::redo: showHint(work_.redo()); break;
        case HistoryBar::Button::compare: showHint(isShifted ? work_.copyToOther() : work_.compare()); break;
        default: break;
    }
    showPages();
}

void WindowContent::historyHovered(HistoryBar::Button button) {
    const History& history = work_.history();
    const auto line = [](const char* what, const std::string& name, const char* key) {
        return name.empty() ? std::string("Nothing to ") + what : std::string(what) + " " + name + "  (" + key + ")";
    };
    switch (button) {
        case HistoryBar::Button::undo: hints_->showLine(line("undo", history.undoName(), "Ctrl+Z")); break;
        case HistoryBar::Button::redo: hints_->showLine(line("redo", history.redoName(), "Ctrl+Shift+Z")); break;
        case HistoryBar::Button::compare:
            hints_->showLine("Two patches to compare: a click plays the other one, with Shift it is made like this one.");
            break;
        default: hints_->showHelp(); break;
    }
}

void WindowContent::dropped(const std::vector<std::string>& paths, CPoint where) {
    dismissLayers();
    showHint(takeDropped(editor_, paths, where));
    showPages();
}

// ---- lists and menus ----------------------------------------------------------------------------------------

void WindowContent::rowChosen(ControlFace& face, int row) { chooseRow(face, row, true); }

// A row may set several parameters, as that of an effect does: one step of the history.
void WindowContent::chooseRow(ControlFace& face, int row, bool wakes) {
    const ControlEntry& entry = face.entry();
    hints_->forgetNews();
    const History::Action action(work_.history());
    editor_.rowChosen(entry.tag, row, wakes);
    if (parameterOfTag(entry.tag) >= 0 || isWaveMenu(entry)) showTouched(face);
}

void WindowContent::controlListWanted(ControlFace& face) {
    const ControlEntry& entry = face.entry();
    openPopup(face.body(), listRows(editor_, entry), [this, &face](int row) { chooseRow(face, row, isRowByLeft_); }, &face);
}

void WindowContent::openMenu(int index) {
    if (ControlFace* face = views_.at(index)) controlListWanted(*face);
}

void WindowContent::controlMenuWanted(ControlFace& face) {
    const ControlEntry& entry = face.entry();
    if (parameterOfTag(entry.tag) < 0) return;
    // At the control's place: a knob's middle, a field's corner.
    openPopup(
        CRect(entry.x, entry.y, entry.x, entry.y), knobRows(editor_, entry),
        [this, &entry, &face](int row) {
            hints_->forgetNews();
            const History::Action action(work_.history());
            if (row >= firstSourceTag) {
                editor_.knobSourceChosen(entry.tag, row);
            } else {
                editor_.knobRowChosen(entry.tag, row);
            }
            showTouched(face);
            isLearning_ = editor_.isLearning();
        },
        &face);
}

void WindowContent::openModWheelMenu() {
    if (ControlFace* knob = views_.withTag(parameter::Modwheel)) controlMenuWanted(*knob);
}

void WindowContent::openPopup(const CRect& anchor, std::vector<MenuRow> rows, PopupMenu::Chosen chosen, ControlFace* opener) {
    dismissLayers();
    hints_->hideTooltip();
    if (rows.empty()) return;
    opener_ = opener;
    if (opener_ != nullptr) opener_->setOpen(true);
    auto* popup = new PopupMenu(area_, anchor, std::move(rows), std::move(chosen), nullptr);
    popup->setClosed([this, popup] {
        if (opener_ != nullptr) opener_->setOpen(false);
        opener_ = nullptr;
        isRowByLeft_ = popup->isByLeft();
        closeLayer(*popup);
    });
    openLayer(popup);
}

void WindowContent::openCategories() {
    PatchLibrary& patches = editor_.patches();
    patches.scanCategories();
    std::vector<MenuRow> rows;
    for (const std::string& name : patches.categoryNames())
        rows.push_back({name, static_cast<int>(rows.size()), name == editor_.commands().patch().category(), {}, {}});
    openPopup(
        rectOf(windowPart(WindowPart::CategoryList).rect), std::move(rows),
        [this](int row) { editor_.rowChosen(tag::categoryList, row); }, nullptr);
}

void WindowContent::showBrowserOpen(bool isOpen) {
    if (ControlFace* button = views_.withTag(tag::browser)) button->setOpen(isOpen);
}

void WindowContent::openPatches() {
    const PatchLibrary& patches = editor_.patches();
    std::vector<MenuRow> rows;
    for (const std::string& name : patches.patchNames())
        rows.push_back({name, static_cast<int>(rows.size()), static_cast<int>(rows.size()) == patches.selection().patch, {}, {}});
    openPopup(
        rectOf(windowPart(WindowPart::PatchList).rect), std::move(rows),
        [this](int row) { editor_.rowChosen(tag::patchList, row); }, nullptr);
}

// ---- layers -------------------------------------------------------------------------------------------------

void WindowContent::openLayer(LayerView* view) {
    layers_.push_back(view);
    root_.addView(view);
}

void WindowContent::closeLayer(LayerView& view) {
    if (std::erase(layers_, &view) == 0) return;
    VSTGUI::CFrame* frame = root_.getFrame();
    VSTGUI::CViewContainer* root = &root_;
    LayerView* closed = &view;
    closed->setVisible(false);
    const auto remove = [root, closed] { root->removeView(closed); };
    // A view may not go away while it handles an event.
    if (frame == nullptr || !frame->doAfterEventProcessing(remove)) remove();
}

void WindowContent::dismissLayers() {
    while (!layers_.empty()) {
        LayerView* top = layers_.back();
        top->dismiss();
        std::erase(layers_, top);
    }
}

// ---- depth --------------------------------------------------------------------------------------------------

void WindowContent::depthDragBegan(ControlFace& knob) {
    const History::Action action(work_.history());
    editing_ = &knob;
    editor_.beginDepth(knob.entry().tag);
    hints_->touch(&knob);
}

void WindowContent::depthDragged(ControlFace& knob, float amount) {
    editor_.dragDepth(amount);
    refresh(knob);
    hints_->touch(&knob);
    hints_->forgetNews();
    hints_->showLine(std::string(knob.entry().name) + ": depth " + std::to_string(std::lround(amount * 200 - 100)));
}

void WindowContent::depthDragEnded(ControlFace&) {
    editing_ = nullptr;
    editor_.endDepth();
}

void WindowContent::depthDragCancelled(ControlFace& knob) {
    const History::Action action(work_.history());
    editor_.cancelDepth();
    refresh(knob);
    hints_->touch(&knob);
}

// ---- keys ---------------------------------------------------------------------------------------------------

void WindowContent::onKey(VSTGUI::KeyboardEvent& event) {
    if (!layers_.empty()) return layers_.back()->onKey(event);
    if (event.type != VSTGUI::EventType::KeyDown) return;
    if (event.virt == VSTGUI::VirtualKey::Escape && (cancelHand() || cancelLearning())) {
        event.consumed = true;
        return;
    }
    if (!isHandBusy()) keys_->onKey(event);  // keys wait until the mouse lets go
}

bool WindowContent::isHandBusy() const {
    return editing_ != nullptr || pitchWheel_->isHeld() || modWheel_->isHeld() || draggedDisplay() != nullptr;
}

Wavedisplay* WindowContent::draggedDisplay() const {
    for (int i = 0; i < oscillatorCount; ++i)
        if (auto* display = views_.withTagAs<Wavedisplay>(tag::waveView1 + i); display != nullptr && display->isDragged())
            return display;
    return nullptr;
}

bool WindowContent::wantsKeys() const { return keys_->isTaken() || wantsKeysVisibly(); }

bool WindowContent::wantsKeysVisibly() const {
    return !layers_.empty() || keys_->hasFocus() || drags_->isDragging() || isHandBusy() || isLearning_ ||
           editor_.onShow().loadTarget != 0;
}

bool WindowContent::cancelLearning() {
    if (!editor_.callOffLearning()) return false;
    followLearning();
    return true;
}

// Calls off what the mouse does at present; false if it does nothing.
bool WindowContent::cancelHand() {
    if (drags_->cancel()) return true;
    for (WheelView* wheel : {pitchWheel_, modWheel_})
        if (wheel->isHeld()) return wheel->cancel(), true;
    if (Wavedisplay* display = draggedDisplay()) return display->cancelDrag(), true;
    if (editing_ == nullptr) return false;
    editing_->cancelDrag();
    return true;
}

}  // namespace vantoric
