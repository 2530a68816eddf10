#include "editor/hints.h"

#include <optional>
#include <utility>

#include "editor/model/spoken_values.h"
#include "editor/model/window_files.h"

namespace vantoric {
namespace {

// In rounds of the window's timer, 20 a second.
constexpr unsigned stripRounds = 12, tooltipRounds = 14, newsRounds = 80;

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

}  // namespace

Hints::Hints(Q7Editor& editor, const ControlViews& views, HintLine& line, Overlay& overlay)
    : editor_(editor), views_(views), line_(line), overlay_(overlay), showsTooltips_(!tooltipsHidden()) {}

void Hints::showNews(const std::string& text) {
    if (text.empty()) return;
    newsUntil_ = round_ + newsRounds;
    line_.setText(text, HintLine::Kind::news);
}

void Hints::setRequest(const std::string& text) {
    if (text == request_) return;
    request_ = text;
    if (!text.empty()) forgetNews();
    showHelp();
}

void Hints::showLine(const std::string& text) {
    live_ = nullptr;
    write(text);
}

void Hints::showLive(Line line) {
    live_ = std::move(line);
    write(live_());
}

void Hints::refreshLine() {
    if (live_) write(live_());
}

void Hints::write(const std::string& text) {
    if (newsUntil_ != 0) return;
    if (request_.empty()) return line_.setText(text);
    line_.setText(request_, HintLine::Kind::alarm);
}

void Hints::showHelp(const ControlFace* face) {
    if (face == nullptr) return showLive([this] { return restingLine(); });
    showLive([this, face] { return lineOf(*face); });
}

std::string Hints::restingLine() {
    return editor_.restingHint() + (editor_.onShow().loadTarget != 0 ? ".  Esc calls it off." : "");
}

std::string Hints::lineOf(const ControlFace& face) const {
    if (&face == hovered_ && !face.isFocused() && face.hoverHint() != nullptr) return face.hoverHint();
    const ControlEntry& entry = face.entry();
    std::string line = entry.name;
    if (const std::string value = spokenOf(entry); !value.empty()) line += ": " + value;
    const std::string help = helpOf(entry), tooltip = entry.tooltip.substr(0, entry.tooltip.find('\n'));
    if (!help.empty() || !tooltip.empty()) line += (line.ends_with('.') ? "  " : ".  ") + (help.empty() ? tooltip : help);
    return line;
}

// Also of what is no parameter: tabs, layers, and the lists of waves.
std::string Hints::spokenOf(const ControlEntry& entry) const {
    if (std::string value = spokenValue(editor_, entry); !value.empty()) return value;
    if (entry.kind == WidgetKind::Selector) return editor_.valueOf(entry.tag) > 0.5f ? "selected" : "not selected";
    if (entry.kind == WidgetKind::WaveView)
        if (const auto* display = views_.withTagAs<Wavedisplay>(entry.tag)) return display->loopText();
    if (entry.tag == tag::zoomMenu || isWaveMenu(entry)) return faceText(editor_, entry);
    return "";
}

void Hints::hover(ControlFace& face, bool isHovered) {
    hideTooltip();
    hovered_ = isHovered ? &face : hovered_ == &face ? nullptr : hovered_;
    hoveredSince_ = round_;
    showHelp();
}

void Hints::hoverPlace(const char* tooltip, const VSTGUI::CRect& place) {
    hideTooltip();
    placeTooltip_ = tooltip;
    place_ = place;
    hoveredSince_ = round_;
}

void Hints::touch(ControlFace* face) {
    touched_ = face;
    letGo();
    refreshStrip();
}

void Hints::letGo() { touchedUntil_ = round_ + stripRounds; }

void Hints::refreshStrip() {
    if (touched_ == nullptr) return overlay_.setStrip(std::nullopt);
    const KnobState state = editor_.knobState(touched_->entry());
    // Most others show their value themselves, but not which controller moves it.
    const bool isMapped = state.ccNumber != MidiLearn::noController;
    if (!isKnob(touched_->entry()) && touched_->entry().kind != WidgetKind::Step && !isMapped)
        return overlay_.setStrip(std::nullopt);
    Overlay::Strip strip;
    const VSTGUI::CRect body = touched_->body();
    strip.at = {body.getCenter().x, isKnob(touched_->entry()) ? body.bottom + 3 : body.bottom + 2};
    strip.lines = hintLines(state);
    strip.outline = hintOutlineOf(state.ccNumber) == mappedOutline ? style::alarm : style::menuEdge;
    overlay_.setStrip(strip);
}

void Hints::follow(bool isCovered) {
    ++round_;
    const bool isLearning = touched_ != nullptr && editor_.ccNumberOf(touched_->entry()) == MidiLearn::learning;
    if (touched_ != nullptr && !touched_->view().isEditing() && !isLearning && round_ > touchedUntil_) touch(nullptr);
    if (newsUntil_ != 0 && round_ > newsUntil_) {
        newsUntil_ = 0;
        showHelp();
    }
    if (showsTooltips_ && !isCovered) followTooltip();
}

void Hints::followTooltip() {
    if (round_ != hoveredSince_ + tooltipRounds) return;
    if (hovered_ == nullptr && placeTooltip_ != nullptr) overlay_.setTooltip(placeTooltip_, place_);
    if (hovered_ == nullptr || hovered_ == touched_ || hovered_->view().isEditing()) return;
    overlay_.setTooltip(hovered_->entry().tooltip, hovered_->body());
}

}  // namespace vantoric
