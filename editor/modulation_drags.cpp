#include "editor/modulation_drags.h"

#include <algorithm>

#include "base/parameters.h"
#include "editor/add_view.h"

namespace vantoric {
namespace {

using VSTGUI::CPoint;
using VSTGUI::CRect;

struct DragSource {
    WindowPart part;
    const Color& color;
    const char* hint;
};
constexpr char knobHint[] = "Drag & drop it to a knob to create a mod matrix entry";
// By area.
const std::array<DragSource, 3> sources = {{
    {WindowPart::DragEnvelope, style::envelopes, knobHint},
    {WindowPart::DragLfo, style::lfo, knobHint},
    {WindowPart::DragWheel, style::output, "Drag this to other controls, to map the modwheel to a desired control"},
}};

const DragSource& sourceOf(int area) { return sources[static_cast<std::size_t>(area)]; }

int destinationAt(int target) { return destinationOf(parameterOfTag(controlEntry(target).tag)); }

}  // namespace

ModulationDrags::ModulationDrags(VSTGUI::CViewContainer& root, bool isLow, Q7Editor& editor, const ControlViews& views,
                                 Hints& hints, Overlay& overlay, std::function<void()> began)
    : editor_(editor), views_(views), hints_(hints), overlay_(overlay), began_(std::move(began)) {
    addArea(root, wheelArea, "Drag", 0, style::bandPanel);
    if (isLow) return;
    addArea(root, envelopeArea, "Drag to knob", 1, style::panel);
    addArea(root, lfoArea, "Drag to knob", 1, style::panel);
    addTabs(envelopeArea, tag::envelopePage1, 4);
    addTabs(lfoArea, tag::lfoPage1, 4);
}

// `inset` above and below.
void ModulationDrags::addArea(VSTGUI::CViewContainer& root, Area area, const char* caption, double inset, const Color& ground) {
    const LayoutRect& at = windowPart(sourceOf(area).part).rect;
    CRect place(CPoint(at.x, at.y), CPoint(at.width, at.height));
    place.inset(0, inset);
    addView(root, new MYDragArea(place, area, caption, sourceOf(area).color, ground, *this));
}

void ModulationDrags::addTabs(Area area, int firstTab, int tabs) {
    for (int tab = firstTab; tab < firstTab + tabs; ++tab)
        if (auto* selector = views_.withTagAs<SelectorView>(tab)) selector->setSource(*this, area, sourceOf(area).hint);
}

bool ModulationDrags::cancel() {
    if (dragged_ == nullptr) return false;
    dragged_->cancel();
    return true;
}

void ModulationDrags::dragHovered(int area, bool isHovered) {
    isHovered ? hints_.showLine(sourceOf(area).hint) : hints_.showHelp();
}

// A tab was selected as it was pressed.
void ModulationDrags::dragBegan(SourceDrag& drag) {
    began_();
    dragged_ = &drag;
    source_ = editor_.draggedSource(sourceOf(drag.area()).part);
    markTargets(sourceOf(drag.area()).color, -1);
}

// A low window has no more than the band.
int ModulationDrags::targetAt(CPoint where) const {
    const double scale = editor_.size().layoutScale();
    const int target = editor_.dropTarget(static_cast<float>(where.x * scale), static_cast<float>(where.y * scale));
    return target >= 0 && views_.at(target) != nullptr ? target : -1;
}

void ModulationDrags::dragMoved(const SourceDrag& drag, CPoint where) {
    const Color& color = sourceOf(drag.area()).color;
    const int target = targetAt(where);
    const bool canDrop = target >= 0 && destinationAt(target) > 0;
    markTargets(color, canDrop ? target : -1);
    Overlay::Cable cable{drag.from(), where, color, {}};
    if (canDrop)
        cable.lines = {std::string(matrixSourceLabels[source_]) + " to " + matrixDestinationLabels[destinationAt(target)]};
    overlay_.setCable(cable);
}

void ModulationDrags::dragEnded(const SourceDrag& drag, CPoint where) {
    dragCancelled(drag);
    if (targetAt(where) < 0) return;
    const double scale = editor_.size().layoutScale();
    editor_.dropSource(source_, static_cast<float>(where.x * scale), static_cast<float>(where.y * scale));
}

void ModulationDrags::dragCancelled(const SourceDrag&) {
    dragged_ = nullptr;
    overlay_.setCable(std::nullopt);
    markTargets(std::nullopt, -1);
}

// Controls that take the drop get a ring, all others go down but the tab that is dragged.
void ModulationDrags::markTargets(const std::optional<Color>& ring, int nearest) {
    views_.forEach([&](ControlFace& face) {
        const int number = parameterOfTag(face.entry().tag);
        const bool isField = face.entry().kind == WidgetKind::Value;
        const bool takesDrop = (isKnob(face.entry()) || isField) && number != parameter::Modwheel && destinationOf(number) > 0;
        const bool isNearest = nearest >= 0 && views_.at(nearest) == &face;
        const bool isSource = dragged_ != nullptr && face.body().pointInside(dragged_->from());
        face.setDimmed(ring.has_value() && !takesDrop && !isSource);
        if (auto* knob = dynamic_cast<MYCKnob*>(&face)) knob->setTargetRing(takesDrop ? ring : std::nullopt, isNearest);
        if (auto* field = dynamic_cast<MYParamDisplay*>(&face))
            field->setTargetRing(takesDrop && ring ? std::optional(fade(*ring, isNearest ? 1.0 : 0.55)) : std::nullopt);
    });
}

}  // namespace vantoric
