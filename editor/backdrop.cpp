#include "editor/backdrop.h"

#include <algorithm>
#include <cmath>

#include "editor/model/window_layout.h"

namespace vantoric {
namespace {

using style::Face;
using VSTGUI::CRect;

constexpr double titleSize = 10.5;

void panel(Pen& pen, double x, double y, double w, double h, const Color& fill) {
    pen.round(x, y, w, h, 6, fill);
    pen.rect(x + 6, y, w - 12, pen.hair(), mix(fill, style::white, 0.06));  // a light edge at the top
}

void title(Pen& pen, double x, double y, const char* text, const Color& color, Align align = Align::left) {
    pen.text(x, y, text, Face::title, titleSize, color, align);
}

constexpr int matrixTop = 450, matrixPitch = 22;
constexpr int stepColumn(int step) { return 406 + 48 * step + 4 * (step / 4); }
constexpr int oscillatorTop(int oscillator) { return 136 + 94 * oscillator; }

const CRect equalizerArea(1028, 38, 1180, 66);
const CRect targetsArea(710, 456, 794, 552);
const CRect matrixArea(802, 424, 1190, 562);
const CRect stepsArea(404, 578, 1186, 650);
const CRect leadArea(944, 228, 994, 324);
const CRect layersArea(402, 4, 598, 78);
const CRect globalArea(8, 84, 60, 102);

}  // namespace

Backdrop::Backdrop(const CRect& area, std::function<void()> clicked)
    : CView(area),
      reach_{globalArea, &Backdrop::drawReach, {}},
      multilayer_{layersArea, &Backdrop::drawMultilayer, {}},
      equalizer_{equalizerArea, &Backdrop::drawEqualizer, {}},
      lead_{leadArea, &Backdrop::drawLead, {}},
      targets_{targetsArea, &Backdrop::drawLfoTargets, {}},
      matrix_{matrixArea, &Backdrop::drawMatrix, {}},
      steps_{stepsArea, &Backdrop::drawSteps, {}},
      clicked_(std::move(clicked)) {}

void Backdrop::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    event.ignoreFollowUpMoveAndUpEvents(true);
    clicked_();
}

void Backdrop::setState(const BackdropState& state) {
    if (state == state_) return;
    const BackdropState before = state_;
    state_ = state;
    if (state.matrix != before.matrix || state.slotsUsed != before.slotsUsed) change(matrix_);
    if (state.driven != before.driven || state.hasLfoTargets != before.hasLfoTargets) change(targets_);
    if (state.isMultilayer != before.isMultilayer) {
        change(multilayer_);
        change(reach_);
    }
    if (state.arpeggiatorStep != before.arpeggiatorStep) change(steps_);
    if (state.equalizer != before.equalizer) change(equalizer_);
    if (state.isSerial != before.isSerial) change(lead_);
}

void Backdrop::change(Part& part) {
    part.kept.changed();
    invalidRect(part.area);
}

void Backdrop::draw(VSTGUI::CDrawContext* context) { drawRect(context, getViewSize()); }

void Backdrop::drawRect(VSTGUI::CDrawContext* context, const CRect& updated) {
    Pen pen(*context);
    ground_.show(pen, getViewSize(), [this](Pen& picture) { drawGround(picture); });
    const auto show = [&](Part& part) {
        if (part.area.rectOverlap(updated)) part.kept.show(pen, part.area, [&](Pen& picture) { (this->*part.draw)(picture); });
    };
    show(reach_);
    if (state_.isMultilayer) show(multilayer_);
    show(equalizer_);
    if (getHeight() > bandHeight) {
        for (Part* part : {&lead_, &targets_, &matrix_, &steps_}) show(*part);
    }
    setDirty(false);
}

void Backdrop::drawGround(Pen& pen) const {
    drawBand(pen);
    if (getHeight() <= bandHeight) return;
    pen.rect(0, bandHeight, layoutWidth, layoutHeight - bandHeight, style::window);
    for (const Panel& each : windowPanels())
        if (!each.inBand) panel(pen, each.rect.x, each.rect.y, each.rect.width, each.rect.height, style::panel);
    drawTitles(pen);
}

void Backdrop::drawBand(Pen& pen) const {
    pen.rect(0, 0, layoutWidth, bandHeight, style::band);
    pen.rect(0, bandHeight - pen.hair(), layoutWidth, pen.hair(), fade(style::black, 0.55));
    pen.round(10, 34, 388, 44, 6, style::inset);
    panel(pen, 602, 8, 192, 114, style::bandPanel);
    panel(pen, 802, 8, 208, 114, style::bandPanel);
    panel(pen, 1018, 8, 172, 114, style::bandPanel);
    pen.text(617, 107, "Bend", Face::medium, 9, style::text2, Align::centre);
    pen.text(645, 107, "Mod", Face::medium, 9, style::text2, Align::centre);
    pen.text(775, 107, "L", Face::medium, 9, style::text2, Align::centre);
    pen.text(783, 107, "R", Face::medium, 9, style::text2, Align::centre);
    title(pen, 810, 25, "Master FX", style::output);
    title(pen, 1028, 25, "Equalizer", style::output);
}

// Over the lists that no layer owns.
void Backdrop::drawReach(Pen& pen) const {
    if (state_.isMultilayer) {
        pen.text(10, 96.5, "All layers", Face::semibold, 9.5, style::multilayer);
    } else {
        pen.text(10, 96.5, "Global", Face::medium, 9.5, style::text2);
    }
}

void Backdrop::drawMultilayer(Pen& pen) const {
    pen.round(403, 5, 194, 72, 7, mix(style::band, style::multilayer, 0.10));
    pen.roundLine(403, 5, 194, 72, 7, style::multilayer, 1.2);
}

// A picture of what the three knobs do, not a measured response.
void Backdrop::drawEqualizer(Pen& pen) const {
    const CRect& r = equalizerArea;
    const double middle = (r.top + r.bottom) / 2, height = r.getHeight();
    pen.round(r.left, r.top, r.getWidth(), height, 4, style::inset);
    pen.rect(r.left + 3, middle, r.getWidth() - 6, pen.hair(), style::line);
    const auto [low, mid, high] = state_.equalizer;
    Pen::Points points;
    const int columns = static_cast<int>(r.getWidth()) / 2 - 1;
    for (int column = 1; column <= columns; ++column) {
        const double x = r.left + 2 * column;
        const double t = (x - r.left) / r.getWidth(), bell = (t - 0.52) / 0.14;
        const double gain = (low - 0.5) * 2 / (1 + std::exp((t - 0.25) * 22)) + (mid - 0.5) * 2 * std::exp(-bell * bell) +
                            (high - 0.5) * 2 / (1 + std::exp((0.76 - t) * 22));
        points.emplace_back(x, std::clamp(middle - gain * height * 0.45, r.top + 2, r.bottom - 2));
    }
    pen.filledCurve(points, middle, style::output);
    pen.line(points, style::output, 1.4);
}

void Backdrop::drawTitles(Pen& pen) const {
    title(pen, 38, 150, "Osc", style::oscillators, Align::centre);
    title(pen, 968, 150, "Filters", style::filters, Align::centre);
    title(pen, 1008, 156, "Voice", style::output);
    title(pen, 1008, 298, "Insert", style::output);
    title(pen, 18, 440, "Envelopes", style::envelopes);
    title(pen, 414, 440, "LFO", style::lfo);
    title(pen, 810, 440, "Matrix", style::output);
    title(pen, 18, 590, "Arpeggiator", style::arpeggiator);
    // The signal's way from block to block.
    pen.chevron(600, 274, Pointing::right, 3, style::text3, 1.4);
    pen.chevron(996, 274, Pointing::right, 3, style::text3, 1.4);
    pen.chevron(1095, 274, Pointing::down, 3, style::text3, 1.4);
    for (int i = 0; i < 3; ++i) {
        const int top = oscillatorTop(i);
        pen.text(38, top + 32, std::to_string(i + 1), Face::title, 17, style::oscillators, Align::centre);
        for (const int x : {371, 479}) pen.rect(x, top + 10, pen.hair(), 44, style::line);
    }
    for (int i = 0; i < 2; ++i) {
        const int y = i == 0 ? 148 : 290;
        pen.round(612, y, 18, 18, Corners(4, 0, 0, 0), mix(style::panel, style::filters, 0.22));
        pen.text(621, y + 12.6, std::to_string(i + 1), Face::title, titleSize, style::filters, Align::centre);
    }
    pen.text(398, 609.4, "Note", Face::medium, 9, style::text2, Align::right);
    pen.text(398, 633.4, "Vel", Face::medium, 9, style::text2, Align::right);
}

// From filter 1 to filter 2, brighter where the second is fed by the first.
void Backdrop::drawLead(Pen& pen) const {
    const Color lead = mix(style::panel, style::filters, state_.isSerial ? 0.55 : 0.2);
    pen.line({{948, 240}, {962, 240}, {968, 246}, {968, 266}}, lead, 1.2);
    pen.line({{968, 288}, {968, 306}, {962, 312}, {949, 312}}, lead, 1.2);
    pen.chevron(949.6, 312, Pointing::left, 2.6, lead);
}

void Backdrop::drawLfoTargets(Pen& pen) const {
    if (!state_.hasLfoTargets) return;
    pen.text(716, 466, "Drives", Face::medium, 9, style::text2);
    if (state_.driven.empty()) pen.text(716, 482, "nothing yet", Face::medium, 9.5, style::text2);
    for (std::size_t i = 0; i < state_.driven.size(); ++i) {
        const double y = 482 + 14.0 * static_cast<double>(i);
        pen.dot(719, y - 3.4, 2, style::lfo);
        pen.text(725, y, state_.driven[i], Face::medium, 9.5, style::text, Align::left, 66);
    }
}

void Backdrop::drawMatrix(Pen& pen) const {
    pen.text(1182, 440, std::to_string(state_.slotsUsed) + " of 15 used", Face::medium, 9, style::text2, Align::right);
    for (int row = 0; row < 5; ++row) {
        const BackdropState::MatrixRow& slot = state_.matrix[row];
        const double y = matrixTop + matrixPitch * row + 9;
        pen.text(822, y + 3.6, std::to_string(slot.slot), Face::semibold, 9.5, slot.isUsed ? style::text : style::text3,
                 Align::right);
        const Color arrow = mix(style::panel, slot.isUsed ? slot.source : style::text3, slot.isUsed ? 0.75 : 0.35);
        for (const double x : {951.0, 1059.0}) {
            pen.line({{x - 4.5, y}, {x + 4, y}}, arrow, 1.2);
            pen.chevron(x + 3, y, Pointing::right, 2.4, arrow);
        }
    }
}

void Backdrop::drawSteps(Pen& pen) const {
    for (int step = 0; step < 16; ++step) {
        const bool isPlaying = step == state_.arpeggiatorStep, isBeat = step % 4 == 0;
        const Color color = isPlaying ? style::arpeggiator : isBeat ? style::text2 : style::text3;
        pen.text(stepColumn(step) + 23, 590, std::to_string(step + 1), isPlaying || isBeat ? Face::semibold : Face::medium, 9,
                 color, Align::centre);
        if (isPlaying) pen.round(stepColumn(step), 642, 46, 2, 1, style::arpeggiator);
    }
}

}  // namespace vantoric
