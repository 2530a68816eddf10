#include "editor/window_content.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <numbers>
#include <random>
#include <tuple>

#include "base/parameters.h"
#include "editor/gui_module.h"
#include "editor/model/control_texts.h"
#include "editor/model/menu_rows.h"
#include "editor/model/spoken_values.h"
#include "editor/model/typed_values.h"
#include "editor/model/window_files.h"
#include "editor/value_box.h"
#include "library/beside.h"
#include "library/patch_library.h"
#include "vstgui/lib/cframe.h"

namespace vantoric {
namespace {

using VSTGUI::CPoint;
using VSTGUI::CRect;
using VSTGUI::ModifierKey;
using VSTGUI::VirtualKey;

constexpr unsigned roundsASecond = 20;
constexpr unsigned stripRounds = 12, tooltipRounds = 14, newsRounds = 4 * roundsASecond;
constexpr int firstSubmenuTag = lfoRows;
constexpr double historyBarWidth = 80;

CRect rectOf(const LayoutRect& r) { return CRect(CPoint(r.x, r.y), CPoint(r.width, r.height)); }

// The colour of a source's function, by its list index.
Color sourceColor(int source) {
    const std::string label =
        source >= 0 && source < static_cast<int>(matrixSourceLabels.size()) ? matrixSourceLabels[source] : "";
    if (label.find("Env") != std::string::npos || label.find("Decay") != std::string::npos) return style::envelopes;
    if (label.find("Lfo") != std::string::npos || label.find("Hz") != std::string::npos) return style::lfo;
    return style::output;
}

Color submenuColor(int base) {
    if (base == lfoRows || base == freeLfoRows) return style::lfo;
    return base == envelopeRows ? style::envelopes : style::output;
}

const char* helpOf(const ControlEntry& entry) {
    switch (entry.kind) {
        case WidgetKind::Knob:
        case WidgetKind::LargeKnob: return "Drag up or down, Shift for fine steps, right click for modulation.";
        case WidgetKind::Value:
        case WidgetKind::EffectValue:
        case WidgetKind::Step: return "Drag up or down, Shift for fine steps, double click for the default.";
        default: return "";
    }
}

bool isListKind(WidgetKind kind) {
    return kind == WidgetKind::LargeList || kind == WidgetKind::List || kind == WidgetKind::SmallList;
}

// The row of an oscillator, 0 to 2.
CRect controlRowOf(int oscillator) { return CRect(CPoint(68, 136 + 94.0 * oscillator), CPoint(528, 88)); }

// What a dropped file is, by its extension in any letter case.
enum class DropKind { none, patch, sfz, wave };

DropKind dropKindOf(const std::string& path) {
    constexpr std::size_t length = 4;
    if (path.size() <= length) return DropKind::none;
    std::string end = path.substr(path.size() - length);
    for (char& c : end) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return end == ".fxp" ? DropKind::patch : end == ".sfz" ? DropKind::sfz : end == ".wav" ? DropKind::wave : DropKind::none;
}

bool isMenuKey(const VSTGUI::KeyboardEvent& event) {
    if (event.virt == VirtualKey::F10) return event.modifiers.has(ModifierKey::Shift);
    const bool isUnknown = event.virt == VirtualKey::None && event.character == 0;
    return isUnknown && GuiModule::shared().isMenuKeyHeld();
}

// What has an amount.
bool isTurned(WidgetKind kind) {
    return kind == WidgetKind::Knob || kind == WidgetKind::LargeKnob || kind == WidgetKind::Value ||
           kind == WidgetKind::EffectValue || kind == WidgetKind::Step;
}

// Of all windows of the module, on their one thread; below 0: none.
float& copiedValue() {
    static float value = -1;
    return value;
}

bool isSwitchLike(WidgetKind kind) { return kind == WidgetKind::Switch || kind == WidgetKind::Selector; }

}  // namespace

WindowContent::WindowContent(DropContainer& root, double width, double height, Q7Editor& editor, WorkHistory& work,
                             Instrument& instrument)
    : root_(root),
      area_(0, 0, width, height),
      editor_(editor),
      work_(work),
      instrument_(instrument),
      backdrop_(new Backdrop(area_, [this] { hasKeyboard_ = true; })),
      views_((root.addView(backdrop_), root), area_, *this, *this),
      showsTooltips_(!tooltipsHidden()) {
    addBand();
    if (height > bandHeight) {
        addDragAreas();
        addTitles();
    }
    overlay_ = new Overlay(area_);
    root_.addView(overlay_);
    displays_ = std::make_unique<DisplayViews>(views_, editor_, instrument_);
    root_.setDropped([this](const auto& paths, CPoint where) { dropped(paths, where); });
    showPages();
    redrawAll();
    displays_->refresh();
}

WindowContent::~WindowContent() {
    dismissLayers();
    root_.setDropped(nullptr);
}

void WindowContent::addBand() {
    const auto place = [](WindowPart part) { return rectOf(windowPart(part).rect); };
    CRect patch = place(WindowPart::CategoryList);
    patch.unite(place(WindowPart::PatchList));
    root_.addView(patchLine_ = new PatchLine(patch, [this] { openCategories(); }, [this] { openPatches(); }));
    patchLine_->setHoverHeard([this](int list, const CRect& place) { listHovered(list, place); });
    patchLine_->setNotesWanted([this] { wantNotes(); });
    root_.addView(favourite_ = new FavouriteView(place(WindowPart::Favourite), this, tag::favourite));
    root_.addView(pitchWheel_ = new WheelView(place(WindowPart::PitchWheel), this, tag::pitchWheel, true));
    root_.addView(modWheel_ = new WheelView(place(WindowPart::ModWheel), this, tag::modWheel, false));
    modWheel_->setMenuWanted([this] {
        if (ControlFace* knob = views_.withTag(parameter::Modwheel)) controlMenuWanted(*knob);
    });
    root_.addView(meter_ = new MeterView(place(WindowPart::Meter)));
    favourite_->setHoverHeard([this](bool isHovered) {
        partHovered(isHovered, editor_.valueOf(tag::favourite) > 0.5f
                                   ? "Favourite: on.  A click takes the copy away."
                                   : "Favourite: off.  A click puts a copy among the favourites.");
    });
    pitchWheel_->setHoverHeard(
        [this](bool isHovered) { partHovered(isHovered, "Pitch wheel.  It springs back to its middle."); });
    modWheel_->setHoverHeard([this](bool isHovered) {
        partHovered(isHovered, "Modulation wheel: " + std::to_string(std::lround(editor_.valueOf(tag::modWheel) * 100)) +
                                   "%.  Drag the mark beside it to what it should turn.");
    });
    meter_->setHoverHeard([this](bool isHovered) { partHovered(isHovered, "Output level, left and right.  Red is too loud."); });
    CRect hint = place(WindowPart::HintLine), history = hint;
    history.left = history.right - historyBarWidth;
    hint.right = history.left - 6;
    root_.addView(hintLine_ = new HintLine(hint));
    root_.addView(historyBar_ = new HistoryBar(
                      history, [this](HistoryBar::Button button, bool isShifted) { historyPressed(button, isShifted); },
                      [this](HistoryBar::Button button) { historyHovered(button); }));
    root_.addView(dragAreas_[wheelArea] =
                      new MYDragArea(place(WindowPart::DragWheel), wheelArea, "Drag", style::output, style::bandPanel, *this));
    addBandStops();
    addHistoryStops();
}

void WindowContent::addBandStops() {
    const auto place = [](WindowPart part) { return rectOf(windowPart(part).rect); };
    const auto stepPatch = [this](float step) { editor_.valueChanged(step > 0 ? tag::nextPatch : tag::previousPatch, 1, false); };
    stops_.push_back({place(WindowPart::CategoryList), Section::Output, "CATEGORY",
                      [this] { return editor_.commands().patch().category(); }, [this] { openCategories(); }});
    stops_.push_back({place(WindowPart::PatchList), Section::Output, "PATCH", [this] { return editor_.patchName(); },
                      [this] { openPatches(); }, stepPatch});
    stops_.push_back({place(WindowPart::Favourite), Section::Output, "FAVOURITE",
                      [this] { return std::string(editor_.valueOf(tag::favourite) > 0.5f ? "on" : "off"); },
                      [this] { favourite_->press(); }});
    addWheelStop(*pitchWheel_, WindowPart::PitchWheel, "PITCHWHEEL", 0.05f);
    addWheelStop(*modWheel_, WindowPart::ModWheel, "MODWHEEL", 0.01f);
    stops_.back().menu = [this] {
        if (ControlFace* knob = views_.withTag(parameter::Modwheel)) controlMenuWanted(*knob);
    };
}

// The pitch wheel stays where arrows put it until Enter, or the focus' going, lets it spring back.
void WindowContent::addWheelStop(WheelView& wheel, WindowPart part, const char* name, float step) {
    const bool isPitch = part == WindowPart::PitchWheel;
    const int tag = isPitch ? tag::pitchWheel : tag::modWheel;
    const auto set = [this, tag, part](float value) {
        const History::Action action(work_.history());
        editor_.valueChanged(tag, std::clamp(value, 0.0f, 1.0f), false);
        redrawPart(part);
    };
    const auto value = [this, tag, isPitch] {
        const float shown = editor_.valueOf(tag);
        return std::to_string(std::lround(isPitch ? shown * 200 - 100 : shown * 100)) + "%";
    };
    const auto nudge = [this, tag, set, step](float amount) {
        set(editor_.valueOf(tag) + (amount > 0 ? step : -step) * (std::abs(amount) > 0.05f ? 10.0f : 1.0f));
    };
    stops_.push_back({wheel.getViewSize(), Section::Output, name, value, [set, isPitch] { set(isPitch ? 0.5f : 0.0f); }, nudge});
}

void WindowContent::addHistoryStops() {
    const History& history = work_.history();
    const CRect bar = historyBar_->getViewSize();
    const auto add = [&](HistoryBar::Button button, const char* name, std::function<std::string()> value) {
        stops_.push_back({HistoryBar::place(bar, button), Section::Output, name, std::move(value),
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
        stops_.push_back({place, at, name, [] { return std::string("variations by chance"); },
                          [this, place, section, name] { openVariations(place, section, name); }});
        root_.addView(new TitleArea(
            place, [this, place, section, name] { openVariations(place, section, name); },
            [this, name](bool isHovered) {
                if (newsUntil_ == 0) hintLine_->setText(isHovered ? std::string(name) + ": click for variations by chance" : "");
                if (!isHovered) showHelp(hovered_);
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

void WindowContent::addDragAreas() {
    const auto add = [this](int index, WindowPart part, const Color& color) {
        dragAreas_[index] =
            new MYDragArea(rectOf(windowPart(part).rect).inset(0, 1), index, "Drag to knob", color, style::panel, *this);
        root_.addView(dragAreas_[index]);
    };
    add(envelopeArea, WindowPart::DragEnvelope, style::envelopes);
    add(lfoArea, WindowPart::DragLfo, style::lfo);
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
    showStrip();
}

void WindowContent::showPages() {
    views_.forEach([this](ControlFace& face) { face.view().setVisible(editor_.isVisible(face.entry())); });
    if (focused_ != nullptr && !editor_.isVisible(focused_->entry())) setFocus(nullptr);
    redrawAll();
}

void WindowContent::refresh(ControlFace& face) {
    const ControlEntry& entry = face.entry();
    face.setValueQuietly(editor_.valueOf(entry.tag));
    face.setOff(isSilent(editor_, entry));
    face.setMultilayer(editor_.onShow().multilayer && entry.page != page::always);
    if (entry.tag == tag::zoomMenu) return face.setText(std::to_string(editor_.size().percent()) + "%");
    if (entry.kind != WidgetKind::Knob) face.setText(textOn(entry));
    if (auto* knob = dynamic_cast<MYCKnob*>(&face)) refreshKnob(*knob);
    if (auto* list = dynamic_cast<ListView*>(&face);
        list != nullptr && entry.tag >= parameter::ArpVol1 && entry.tag < parameter::ArpVol1 + 16) {
        const char first = face.text().empty() ? '.' : face.text()[0];
        list->setLevel(first >= '1' && first <= '8' ? static_cast<float>(first - '0') / 8 : 0);
    }
    auto* field = dynamic_cast<MYParamDisplay*>(&face);
    if (field == nullptr) return;
    field->setCcNumber(editor_.ccNumberOf(entry));
    if (entry.section == Section::Matrix)
        field->setBarColor(sourceColor(instrument_.parameters().getListIndex(
            hostIndex(parameter::MatSrc1 + entry.tag - parameter::MatVal1, editor_.onShow().layer))));
}

std::string WindowContent::textOn(const ControlEntry& entry) const {
    if (entry.kind == WidgetKind::LargeKnob) return holeText(editor_, entry);
    if (entry.kind == WidgetKind::EffectValue && editor_.effectField(entry.tag).type == 0) return "";  // the slot is off
    if (entry.kind == WidgetKind::SmallList && entry.tag >= tag::sampleEdit1 && entry.tag < tag::sampleEdit1 + 6) return "Edit";
    if (entry.tag < tag::waveMenu1 || entry.tag >= tag::waveMenu1 + 3) return editor_.textOf(entry);
    const std::string wave = editor_.commands().shownWave(entry.tag - tag::waveMenu1);
    return wave.empty() ? "Custom wave" : wave;
}

void WindowContent::refreshKnob(MYCKnob& knob) {
    const KnobModulation modulation = editor_.modulationOf(knob.entry());
    knob.setModulation(modulation, sourceColor(modulation.source));
    knob.setCcNumber(editor_.ccNumberOf(knob.entry()));
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
    if (!flags.editorClosing.isSet() && !flags.engineLocked.isSet()) followEngine();
    followLearning();
    const bool isLearning = touched_ != nullptr && editor_.ccNumberOf(touched_->entry()) == MidiLearn::learning;
    if (touched_ != nullptr && !touched_->view().isEditing() && !isLearning && round_ > touchedUntil_) touch(nullptr);
    if (newsUntil_ != 0 && round_ > newsUntil_) {
        newsUntil_ = 0;
        showHelp(hovered_);
    }
    followTooltip();
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
    const bool waited = std::exchange(isLearning_, false);
    views_.forEach([this, glow](ControlFace& face) {
        auto* knob = dynamic_cast<MYCKnob*>(&face);
        auto* field = dynamic_cast<MYParamDisplay*>(&face);
        const int number = knob != nullptr ? knob->ccNumber() : field != nullptr ? field->ccNumber() : MidiLearn::noController;
        if (number != MidiLearn::learning) return;
        isLearning_ = true;
        knob != nullptr ? knob->setLearnGlow(glow) : field->setLearnGlow(glow);
    });
    if (!waited || isLearning_ || hintLine_->kind() != HintLine::Kind::alarm) return;
    newsUntil_ = 0;
    showHelp(hovered_);
}

void WindowContent::followLamps() {
    for (int layer = 0; layer < layerCount; ++layer)
        if (auto* selector = views_.withTagAs<SelectorView>(tag::layer1 + layer)) selector->setLamp(editor_.lamp(layer));
}

void WindowContent::followTooltip() {
    if (!showsTooltips_ || hasLayers()) return;
    if (hovered_ == nullptr && listTooltip_ != nullptr && round_ == hoveredSince_ + tooltipRounds)
        overlay_->setTooltip(listTooltip_, listPlace_);
    if (hovered_ == nullptr || hovered_ == touched_) return;
    if (round_ == hoveredSince_ + tooltipRounds && !hovered_->view().isEditing())
        overlay_->setTooltip(hovered_->entry().tooltip, hovered_->body());
}

// ---- what a hand does ---------------------------------------------------------------------------------------

ControlFace* WindowContent::faceOf(VSTGUI::CControl* control) const { return dynamic_cast<ControlFace*>(control); }

void WindowContent::valueChanged(VSTGUI::CControl* control) {
    newsUntil_ = 0;
    const History::Action action(work_.history());
    editor_.valueChanged(control->getTag(), control->getValueNormalized(), true);
    if (ControlFace* face = faceOf(control)) {
        refresh(*face);
        touch(face);
        showHelp(face);
    }
}

void WindowContent::controlBeginEdit(VSTGUI::CControl* control) {
    setFocus(nullptr);
    hasKeyboard_ = false;
    overlay_->setTooltip("", {});
    const History::Action action(work_.history());
    editor_.touch(control->getTag());
    editor_.beginEdit(control->getTag());
    editing_ = faceOf(control);
    if (editing_ != nullptr) touch(editing_);
}

void WindowContent::controlEndEdit(VSTGUI::CControl* control) {
    editing_ = nullptr;
    for (const ControlFace* step : std::exchange(drawn_, {})) editor_.endEdit(step->entry().tag);
    editor_.endEdit(control->getTag());
    touchedUntil_ = round_ + stripRounds;
}

void WindowContent::controlCancelled(ControlFace& face) {
    const History::Action action(work_.history());
    for (ControlFace* step : std::exchange(drawn_, {})) {
        editor_.cancelEdit(step->entry().tag);
        refresh(*step);
    }
    editor_.cancelEdit(face.entry().tag);
    refresh(face);
    touch(&face);
    showHelp(&face);
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
    newsUntil_ = 0;
    touch(*nearest);
    showHelp(*nearest);
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

void WindowContent::controlHovered(ControlFace& face, bool isHovered) {
    overlay_->setTooltip("", {});
    hovered_ = isHovered ? &face : hovered_ == &face ? nullptr : hovered_;
    hoveredSince_ = round_;
    showHelp(hovered_);
}

// What stands in the band beside the table.
void WindowContent::partHovered(bool isHovered, const std::string& line) {
    if (newsUntil_ != 0) return;
    isHovered ? hintLine_->setText(line) : showHelp(hovered_);
}

// The lists of categories and of patches, in the line of the patch's name.
void WindowContent::listHovered(int list, const CRect& place) {
    static constexpr const char* tooltips[] = {
        nullptr, "Select a patch category or type",
        "This is the name of the current patch\nClick here to select a patch without opening the patch browser"};
    overlay_->setTooltip("", {});
    listTooltip_ = tooltips[list];
    listPlace_ = place;
    hoveredSince_ = round_;
    if (newsUntil_ != 0) return;
    if (list == 0) return showHelp(hovered_);
    hintLine_->setText(list == 1 ? "Select a patch category or type"
                                 : "Click for the patches of this category, right click or Ctrl+T for tags and author.");
}

// Only patches of the library have notes.
void WindowContent::wantNotes() {
    dismissLayers();
    if (!notesWanted_ || !notesWanted_()) showHint("Save the patch first: tags belong to a patch of the library.");
}

// The strip follows the control that was touched last.
void WindowContent::touch(ControlFace* face) {
    touched_ = face;
    touchedUntil_ = round_ + stripRounds;
    showStrip();
}

void WindowContent::showStrip() {
    if (touched_ == nullptr) return overlay_->setStrip(std::nullopt);
    const KnobState state = editor_.knobState(touched_->entry());
    // A field shows its value itself, but not which controller moves it.
    const bool isMapped = touched_->entry().kind == WidgetKind::Value && state.ccNumber != MidiLearn::noController;
    if (!isKnob(touched_->entry()) && touched_->entry().kind != WidgetKind::Step && !isMapped)
        return overlay_->setStrip(std::nullopt);
    Overlay::Strip strip;
    const CRect body = touched_->body();
    strip.at = {body.getCenter().x, isKnob(touched_->entry()) ? body.bottom + 3 : body.bottom + 2};
    strip.lines = hintLines(state);
    strip.outline = hintOutlineOf(state.ccNumber) == mappedOutline ? style::alarm : style::menuEdge;
    overlay_->setStrip(strip);
}

void WindowContent::showHint(const std::string& text) {
    if (text.empty()) return;
    newsUntil_ = round_ + newsRounds;
    hintLine_->setText(text, text.starts_with("Assign") ? HintLine::Kind::alarm : HintLine::Kind::news);
}

void WindowContent::showHelp(ControlFace* face) {
    if (newsUntil_ != 0) return;
    if (face == nullptr)
        return hintLine_->setText(editor_.restingHint() + (editor_.onShow().loadTarget != 0 ? ".  Esc calls it off." : ""));
    const ControlEntry& entry = face->entry();
    std::string line = entry.name;
    if (const std::string value = spokenOf(entry); !value.empty()) line += ": " + value;
    const std::string help = helpOf(entry), tooltip = entry.tooltip.substr(0, entry.tooltip.find('\n'));
    if (!help.empty() || !tooltip.empty()) line += (line.ends_with('.') ? "  " : ".  ") + (help.empty() ? tooltip : help);
    hintLine_->setText(line);
}

// Also of what is no parameter: tabs, layers, and the lists of waves.
std::string WindowContent::spokenOf(const ControlEntry& entry) const {
    if (std::string value = spokenValue(editor_, entry); !value.empty()) return value;
    if (entry.kind == WidgetKind::Selector) return editor_.valueOf(entry.tag) > 0.5f ? "selected" : "not selected";
    if (entry.kind == WidgetKind::WaveView)
        if (const auto* display = views_.withTagAs<Wavedisplay>(entry.tag)) return display->loopText();
    if (entry.tag == tag::zoomMenu || (entry.tag >= tag::waveMenu1 && entry.tag < tag::waveMenu1 + 3)) return textOn(entry);
    return "";
}

void WindowContent::controlPressed(ControlFace& face, VSTGUI::Modifiers) {
    if (face.entry().kind == WidgetKind::SampleButton && (face.entry().tag - tag::sampleLoad1) % 2 == 1)
        return controlListWanted(face);
    editor_.valueChanged(face.entry().tag, 1, true);
}

void WindowContent::controlTouched(ControlFace& face) {
    const History::Action action(work_.history());
    editor_.touch(face.entry().tag);
}

void WindowContent::controlResetWanted(ControlFace& face) {
    const History::Action action(work_.history());
    editor_.touch(face.entry().tag);
    editor_.knobRowChosen(face.entry().tag, resetValueRow);
    refresh(face);
    touch(&face);
}

void WindowContent::controlTypingWanted(ControlFace& face) { openTyping(face, ""); }

void WindowContent::openTyping(ControlFace& face, const std::string& begun) {
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
    setByKey(*face, *value);
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

void WindowContent::controlStepped(ControlFace& face, int direction) { stepList(face, direction); }

// So many rows on, the separators not counted; at most to the end.
void WindowContent::stepList(ControlFace& face, int rows) {
    const ControlEntry& entry = face.entry();
    if (entry.labels.empty() || parameterOfTag(entry.tag) < 0) return;
    const int count = static_cast<int>(entry.labels.size()), direction = rows > 0 ? 1 : -1;
    const int shown = instrument_.parameters().getListIndex(hostIndexOfTag(entry.tag, editor_.onShow().layer));
    int chosen = shown;
    for (int row = shown + direction; row >= 0 && row < count && rows != 0; row += direction) {
        if (std::string(entry.labels[row]) == "-") continue;
        chosen = row;
        rows -= direction;
    }
    if (chosen != shown) rowChosen(entry, chosen);
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
    if (newsUntil_ != 0) return;
    const History& history = work_.history();
    const auto line = [](const char* what, const std::string& name, const char* key) {
        return name.empty() ? std::string("Nothing to ") + what : std::string(what) + " " + name + "  (" + key + ")";
    };
    switch (button) {
        case HistoryBar::Button::undo: hintLine_->setText(line("undo", history.undoName(), "Ctrl+Z")); break;
        case HistoryBar::Button::redo: hintLine_->setText(line("redo", history.redoName(), "Ctrl+Shift+Z")); break;
        case HistoryBar::Button::compare:
            hintLine_->setText("Two patches to compare: a click plays the other one, with Shift it is made like this one.");
            break;
        default: showHelp(hovered_); break;
    }
}

void WindowContent::dropped(const std::vector<std::string>& paths, CPoint where) {
    const auto file = std::ranges::find_if(paths, [](const std::string& path) { return dropKindOf(path) != DropKind::none; });
    dismissLayers();
    if (file == paths.end()) return showHint("Patches (.fxp), waves (.wav) and .sfz files can be dropped here.");
    if (paths.size() > 1) {
        std::string taken = "'";
        taken.append(fileNameOf(*file)).append("' was taken of ").append(std::to_string(paths.size()));
        showHint(taken.append(" files: one at a time, please."));
    }
    switch (dropKindOf(*file)) {
        case DropKind::patch: editor_.commands().loadPatchFile(*file); break;
        case DropKind::sfz: editor_.commands().importSfzFile(*file); break;
        default: dropWave(*file, where); break;
    }
    showPages();
}

// A wave goes into the oscillator whose row it was dropped on.
void WindowContent::dropWave(const std::string& path, CPoint where) {
    for (int i = 0; i < oscillatorCount; ++i)
        if (controlRowOf(i).pointInside(where))
            return editor_.commands().samples().loadChosen(editor_.onShow().layer, i, path, true, [](bool) {});
    showHint("Drop a wave on the row of an oscillator.");
}

// ---- lists and menus ----------------------------------------------------------------------------------------

std::vector<MenuRow> WindowContent::rowsOf(const ControlEntry& entry) const {
    std::vector<MenuRow> rows;
    for (const std::string& label : editor_.rowsOf(entry)) rows.push_back({label, static_cast<int>(rows.size()), false, {}, {}});
    if (isListKind(entry.kind) && parameterOfTag(entry.tag) >= 0) {
        const int shown = instrument_.parameters().getListIndex(hostIndexOfTag(entry.tag, editor_.onShow().layer));
        if (shown < static_cast<int>(rows.size())) rows[shown].isTicked = !rows[shown].isSeparator();
    }
    if (entry.tag == tag::copyMenu) rows[copy_row::multilayer].isTicked = editor_.onShow().multilayer;
    if (const int target = editor_.onShow().loadTarget; entry.tag == tag::fileMenu && target != 0)
        rows[file_row::loadToLayer1 + target - 1].isTicked = true;
    if (entry.tag == tag::editorMenu || entry.tag == tag::zoomMenu) rows[editor_.size().sizeIndex()].isTicked = true;
    return rows;
}

// A row may set several parameters, as that of an effect does: one step of the history.
void WindowContent::rowChosen(const ControlEntry& entry, int row) {
    const History::Action action(work_.history());
    editor_.rowChosen(entry.tag, row);
}

void WindowContent::controlListWanted(ControlFace& face) {
    const ControlEntry& entry = face.entry();
    openPopup(face.body(), rowsOf(entry), [this, &entry](int row) { rowChosen(entry, row); }, &face);
}

void WindowContent::openMenu(int index) {
    if (ControlFace* face = views_.at(index)) controlListWanted(*face);
}

std::vector<MenuRow> WindowContent::knobRows(const ControlEntry& entry) const {
    const int number = parameterOfTag(entry.tag);
    std::vector<MenuRow> rows;
    for (const std::string& label : knobMenuRows(number, editor_.ccNumberOf(entry))) {
        const int index = static_cast<int>(rows.size());
        MenuRow row{label, index, false, {}, {}};
        if (index >= firstSubmenuRow && index < firstSubmenuRow + knobSubmenuCount) {
            const KnobSubmenu& submenu = knobSubmenus()[index - firstSubmenuRow];
            row.dot = submenuColor(submenu.base);
            int choice = submenu.base;
            for (const char* source : submenu.rows) row.submenu.push_back({source, choice++, false, row.dot, {}});
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

void WindowContent::controlMenuWanted(ControlFace& face) {
    const ControlEntry& entry = face.entry();
    if (parameterOfTag(entry.tag) < 0) return;
    CRect anchor = face.body();
    anchor.top += 14;  // from within the knob on
    openPopup(
        anchor, knobRows(entry),
        [this, &entry, &face](int row) {
            const History::Action action(work_.history());
            if (row >= firstSubmenuTag) {
                editor_.knobSourceChosen(entry.tag, row);
            } else {
                editor_.knobRowChosen(entry.tag, row);
            }
            refresh(face);
            touch(&face);
        },
        &face);
}

void WindowContent::openPopup(const CRect& anchor, std::vector<MenuRow> rows, PopupMenu::Chosen chosen, ControlFace* opener) {
    dismissLayers();
    overlay_->setTooltip("", {});
    if (rows.empty()) return;
    opener_ = opener;
    if (opener_ != nullptr) opener_->setOpen(true);
    auto* popup = new PopupMenu(area_, anchor, std::move(rows), std::move(chosen), nullptr);
    popup->setClosed([this, popup] {
        if (opener_ != nullptr) opener_->setOpen(false);
        opener_ = nullptr;
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

// ---- depth, drags -------------------------------------------------------------------------------------------

void WindowContent::depthDragBegan(ControlFace& knob) {
    const History::Action action(work_.history());
    editing_ = &knob;
    editor_.beginDepth(knob.entry().tag);
    touch(&knob);
}

void WindowContent::depthDragged(ControlFace& knob, float amount) {
    editor_.dragDepth(amount);
    refresh(knob);
    touch(&knob);
    hintLine_->setText(std::string(knob.entry().name) + ": depth " + std::to_string(std::lround(amount * 200 - 100)));
}

void WindowContent::depthDragEnded(ControlFace&) {
    editing_ = nullptr;
    editor_.endDepth();
}

void WindowContent::depthDragCancelled(ControlFace& knob) {
    const History::Action action(work_.history());
    editor_.cancelDepth();
    refresh(knob);
    touch(&knob);
}

Color WindowContent::dragColor(int area) const {
    return area == envelopeArea ? style::envelopes : area == lfoArea ? style::lfo : style::output;
}

void WindowContent::dragHovered(int area, bool isHovered) {
    if (newsUntil_ != 0) return;
    if (!isHovered) return showHelp(hovered_);
    hintLine_->setText(area == wheelArea ? "Drag this to other controls, to map the modwheel to a desired control"
                                         : "Drag & drop it to a knob to create a mod matrix entry");
}

void WindowContent::dragBegan(int area) {
    setFocus(nullptr);
    isDragging_ = true;
    constexpr WindowPart parts[] = {WindowPart::DragEnvelope, WindowPart::DragLfo, WindowPart::DragWheel};
    dragSource_ = editor_.draggedSource(parts[area]);
    markTargets(dragColor(area), -1);
}

// A low window has no more than the band.
int WindowContent::targetAt(CPoint where) const {
    const double scale = editor_.size().layoutScale();
    const int target = editor_.dropTarget(static_cast<float>(where.x * scale), static_cast<float>(where.y * scale));
    return target >= 0 && views_.at(target) != nullptr ? target : -1;
}

void WindowContent::dragMoved(int area, CPoint where) {
    const int target = targetAt(where);
    const bool canDrop = target >= 0 && destinationOf(parameterOfTag(controlEntry(target).tag)) > 0;
    markTargets(dragColor(area), canDrop ? target : -1);
    Overlay::Cable cable{dragAreas_[area]->getViewSize().getCenter(), where, dragColor(area), {}};
    if (canDrop) {
        const int destination = destinationOf(parameterOfTag(controlEntry(target).tag));
        cable.lines = {std::string(matrixSourceLabels[dragSource_]) + " to " + matrixDestinationLabels[destination]};
    }
    overlay_->setCable(cable);
}

void WindowContent::dragEnded(int area, CPoint where) {
    dragCancelled(area);
    if (targetAt(where) < 0) return;
    const double scale = editor_.size().layoutScale();
    editor_.dropSource(dragSource_, static_cast<float>(where.x * scale), static_cast<float>(where.y * scale));
}

void WindowContent::dragCancelled(int) {
    isDragging_ = false;
    overlay_->setCable(std::nullopt);
    markTargets(std::nullopt, -1);
}

// Controls that take the drop get a ring, all others go down.
void WindowContent::markTargets(const std::optional<Color>& ring, int nearest) {
    views_.forEach([&](ControlFace& face) {
        const int number = parameterOfTag(face.entry().tag);
        const bool isField = face.entry().kind == WidgetKind::Value;
        const bool takesDrop = (isKnob(face.entry()) || isField) && number != parameter::Modwheel && destinationOf(number) > 0;
        const bool isNearest = nearest >= 0 && views_.at(nearest) == &face;
        face.setDimmed(ring.has_value() && !takesDrop);
        if (auto* knob = dynamic_cast<MYCKnob*>(&face)) knob->setTargetRing(takesDrop ? ring : std::nullopt, isNearest);
        if (auto* field = dynamic_cast<MYParamDisplay*>(&face))
            field->setTargetRing(takesDrop && ring ? std::optional(fade(*ring, isNearest ? 1.0 : 0.55)) : std::nullopt);
    });
}

// ---- keys ---------------------------------------------------------------------------------------------------

void WindowContent::onKey(VSTGUI::KeyboardEvent& event) {
    if (!layers_.empty()) return layers_.back()->onKey(event);
    if (event.type != VSTGUI::EventType::KeyDown) return;
    if (event.virt == VirtualKey::Escape && cancelHand()) {
        event.consumed = true;
        return;
    }
    if (isHandBusy()) return;  // other keys wait until the mouse lets go
    if (onShortcut(event) || (isMenuKey(event) && openFocusedMenu())) {
        event.consumed = true;
        return;
    }
    onFocusedKey(event);
}

bool WindowContent::isHandBusy() const { return editing_ != nullptr || pitchWheel_->isHeld() || modWheel_->isHeld(); }

// Calls off what the mouse does at present; false if it does nothing.
bool WindowContent::cancelHand() {
    for (MYDragArea* area : dragAreas_)
        if (area != nullptr && area->isDragging()) return area->cancel(), true;
    for (WheelView* wheel : {pitchWheel_, modWheel_})
        if (wheel->isHeld()) return wheel->cancel(), true;
    if (editing_ == nullptr) return false;
    editing_->cancelDrag();
    return true;
}

// The menu of what has the focus, or is pointed at.
bool WindowContent::openFocusedMenu() {
    if (focusedStop_ >= 0) {
        const auto& menu = stops_[static_cast<std::size_t>(focusedStop_)].menu;
        if (menu) menu();
        return static_cast<bool>(menu);
    }
    ControlFace* face = focused_ != nullptr ? focused_ : hovered_;
    if (face == nullptr || parameterOfTag(face->entry().tag) < 0) return false;
    controlMenuWanted(*face);
    return true;
}

bool WindowContent::onShortcut(const VSTGUI::KeyboardEvent& event) {
    if (!event.modifiers.has(ModifierKey::Control)) return false;
    const bool isShifted = event.modifiers.has(ModifierKey::Shift);
    switch (letterWithControl(event)) {
        case U'z': historyPressed(isShifted ? HistoryBar::Button::redo : HistoryBar::Button::undo, false); return true;
        case U'y': historyPressed(HistoryBar::Button::redo, false); return true;
        case U't': wantNotes(); return true;
        case U'c':
            if (focused_ != nullptr && parameterOfTag(focused_->entry().tag) >= 0)
                copiedValue() = editor_.valueOf(focused_->entry().tag);
            return true;
        case U'v':
            if (focused_ != nullptr && copiedValue() >= 0 && parameterOfTag(focused_->entry().tag) >= 0 &&
                !isListKind(focused_->entry().kind))
                setByKey(*focused_, copiedValue());
            return true;
        default: return false;
    }
}

// Keys that need no control: layers, patches, the search.
bool WindowContent::onPlainLetter(char32_t character) {
    if (character >= U'1' && character <= U'4') {
        editor_.valueChanged(tag::layer1 + static_cast<int>(character - U'1'), 1, false);
        return true;
    }
    switch (character) {
        case U'/': editor_.valueChanged(tag::browser, 1, false); return true;
        case U'[': editor_.valueChanged(tag::previousPatch, 1, false); return true;
        case U']': editor_.valueChanged(tag::nextPatch, 1, false); return true;
        default: return false;
    }
}

void WindowContent::setFocus(ControlFace* face) {
    setFocusedStop(-1);
    if (focused_ == face) return;
    if (focused_ != nullptr) focused_->setFocused(false);
    focused_ = face;
    if (focused_ == nullptr) return;
    focused_->setFocused(true);
    newsUntil_ = 0;
    showHelp(focused_);
}

void WindowContent::setFocusedStop(int stop) {
    if (stop == focusedStop_) return;
    const bool wasPitch = focusedStop_ >= 0 && stops_[static_cast<std::size_t>(focusedStop_)].name == "PITCHWHEEL";
    if (wasPitch && editor_.valueOf(tag::pitchWheel) != 0.5f) editor_.valueChanged(tag::pitchWheel, 0.5f, false);
    focusedStop_ = stop;
    if (stop < 0) return overlay_->setFocus(std::nullopt);
    overlay_->setFocus(stops_[static_cast<std::size_t>(stop)].place);
    newsUntil_ = 0;
    showStopHelp();
}

void WindowContent::showStopHelp() {
    if (newsUntil_ != 0) return;
    const FocusStop& stop = stops_[static_cast<std::size_t>(focusedStop_)];
    hintLine_->setText(stop.name + ": " + stop.value());
}

// Along the signal's way: the band, then section by section in reading order. The table is sorted by kind.
void WindowContent::moveFocus(int direction) {
    struct Place {
        std::tuple<int, int, double> order;
        ControlFace* face;
        int stop;
    };
    const auto orderOf = [](Section section, double x, double y) {
        const int group = y < bandHeight ? -1 : static_cast<int>(section);
        return std::tuple(group, static_cast<int>(y) / 24, x);
    };
    std::vector<Place> places;
    views_.forEach([&](ControlFace& face) {
        const ControlEntry& entry = face.entry();
        if (editor_.isVisible(entry))
            places.push_back({orderOf(entry.section, static_cast<double>(entry.x), entry.y), &face, -1});
    });
    for (int i = 0; i < static_cast<int>(stops_.size()); ++i) {
        const FocusStop& stop = stops_[static_cast<std::size_t>(i)];
        places.push_back({orderOf(stop.section, stop.place.left, stop.place.top), nullptr, i});
    }
    if (places.empty()) return;
    std::stable_sort(places.begin(), places.end(), [](const Place& a, const Place& b) { return a.order < b.order; });
    const auto at = std::find_if(places.begin(), places.end(), [&](const Place& place) {
        return place.face != nullptr ? place.face == focused_ : focused_ == nullptr && place.stop == focusedStop_;
    });
    const int count = static_cast<int>(places.size());
    const int now = at == places.end() ? (direction > 0 ? -1 : count) : static_cast<int>(at - places.begin());
    const Place& next = places[static_cast<std::size_t>((now + direction + count) % count)];
    setFocus(next.face);
    setFocusedStop(next.stop);
}

void WindowContent::onStopKey(VSTGUI::KeyboardEvent& event) {
    const FocusStop& stop = stops_[static_cast<std::size_t>(focusedStop_)];
    const auto nudge = [&](float amount) {
        if (stop.nudge) stop.nudge(amount);
        showStopHelp();
    };
    switch (event.virt) {
        case VirtualKey::Up:
        case VirtualKey::Right: return nudge(0.01f);
        case VirtualKey::Down:
        case VirtualKey::Left: return nudge(-0.01f);
        case VirtualKey::PageUp: return nudge(0.1f);
        case VirtualKey::PageDown: return nudge(-0.1f);
        case VirtualKey::Space:
        case VirtualKey::Return:
        case VirtualKey::Enter: stop.press(); return showStopHelp();
        default: event.consumed = onPlainLetter(event.character);
    }
}

void WindowContent::setByKey(ControlFace& face, float value) {
    value = std::clamp(value, 0.0f, 1.0f);
    newsUntil_ = 0;
    const int tag = face.entry().tag;
    const History::Action action(work_.history());
    editor_.beginEdit(tag);
    editor_.valueChanged(tag, value, false);
    editor_.endEdit(tag);
    refresh(face);
    touch(&face);
    showHelp(&face);
}

// Of a list its first or last row.
void WindowContent::setToEnd(ControlFace& face, bool last) {
    const ControlEntry& entry = face.entry();
    if (!isListKind(entry.kind)) {
        if (parameterOfTag(entry.tag) >= 0) setByKey(face, last ? 1 : 0);
        return;
    }
    if (entry.labels.empty() || parameterOfTag(entry.tag) < 0) return;
    int row = last ? static_cast<int>(entry.labels.size()) - 1 : 0;
    while (row > 0 && std::string(entry.labels[row]) == "-") --row;
    rowChosen(entry, row);
}

void WindowContent::nudge(ControlFace& face, float step) {
    constexpr int page = 8;  // rows
    if (isListKind(face.entry().kind)) return stepList(face, (step > 0 ? -1 : 1) * (std::abs(step) > 0.05f ? page : 1));
    if (parameterOfTag(face.entry().tag) >= 0) setByKey(face, editor_.valueOf(face.entry().tag) + step);
}

void WindowContent::pressFocused(ControlFace& face, const VSTGUI::KeyboardEvent& event) {
    const ControlEntry& entry = face.entry();
    if (isListKind(entry.kind) || entry.kind == WidgetKind::Menu) return controlListWanted(face);
    if (isSwitchLike(entry.kind)) {
        const bool turnsOff = editor_.valueOf(entry.tag) > 0.5f && entry.kind == WidgetKind::Switch;
        const History::Action action(work_.history());
        editor_.valueChanged(entry.tag, turnsOff ? 0.0f : 1.0f, false);
        return showHelp(focused_);
    }
    if (entry.kind == WidgetKind::Button || entry.kind == WidgetKind::SampleButton) return controlPressed(face, event.modifiers);
    controlTypingWanted(face);
}

// Left and Right move the loop's start, Down and Up its end.
bool WindowContent::nudgeLoop(Wavedisplay& display, VirtualKey key, float step) {
    const float start = key == VirtualKey::Right ? step : key == VirtualKey::Left ? -step : 0;
    const float end = key == VirtualKey::Up ? step : key == VirtualKey::Down ? -step : 0;
    if ((start == 0 && end == 0) || !display.nudgeLoop(start, end)) return false;
    newsUntil_ = 0;
    showHelp(&display);
    return true;
}

void WindowContent::onFocusedKey(VSTGUI::KeyboardEvent& event) {
    event.consumed = true;
    const bool isFine = event.modifiers.has(ModifierKey::Shift);
    const float step = isFine ? 0.001f : 0.01f;
    if (event.virt == VirtualKey::Tab) return moveFocus(isFine ? -1 : 1);
    if (event.virt == VirtualKey::Escape) {
        if (focused_ == nullptr && editor_.callOffLoad()) return;
        hasKeyboard_ = false;
        return setFocus(nullptr);
    }
    if (focusedStop_ >= 0) return onStopKey(event);
    if (focused_ == nullptr) {
        event.consumed = onPlainLetter(event.character);
        return;
    }
    ControlFace& face = *focused_;
    if (auto* display = dynamic_cast<Wavedisplay*>(&face); display != nullptr && nudgeLoop(*display, event.virt, step)) return;
    switch (event.virt) {
        case VirtualKey::Up:
        case VirtualKey::Right: return nudge(face, step);
        case VirtualKey::Down:
        case VirtualKey::Left: return nudge(face, -step);
        case VirtualKey::PageUp: return nudge(face, 0.1f);
        case VirtualKey::PageDown: return nudge(face, -0.1f);
        case VirtualKey::Home: return setToEnd(face, false);
        case VirtualKey::End: return setToEnd(face, true);
        case VirtualKey::Delete: return controlResetWanted(face);
        case VirtualKey::Space:
            event.consumed = !isTurned(face.entry().kind);  // there is nothing to press: it is the host's
            return event.consumed ? pressFocused(face, event) : void();
        case VirtualKey::Return:
        case VirtualKey::Enter: return pressFocused(face, event);
        default: break;
    }
    // A digit begins a value where there is one to type.
    const bool isDigit = (event.character >= U'0' && event.character <= U'9') || event.character == U'-' ||
                         event.character == U'+' || event.character == U'.';
    const bool isTyping = isDigit && isTurned(face.entry().kind);
    event.consumed = isTyping || onPlainLetter(event.character);
    if (isTyping) openTyping(face, utf8Of(event.character));
}

}  // namespace vantoric
