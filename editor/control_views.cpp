#include "editor/control_views.h"

#include "editor/add_view.h"
#include "editor/model/window_layout.h"

namespace vantoric {
namespace {

template <class View, class... More>
ControlFace* add(VSTGUI::CViewContainer& root, More&&... arguments) {
    return addView(root, new View(std::forward<More>(arguments)...));
}

ControlFace* addControl(VSTGUI::CViewContainer& root, const ControlEntry& entry, ControlListener& listener,
                        DepthListener& depth) {
    switch (entry.kind) {
        case WidgetKind::Knob:
        case WidgetKind::LargeKnob: return add<MYCKnob>(root, entry, listener, depth);
        case WidgetKind::Switch: return add<SwitchView>(root, entry, listener);
        case WidgetKind::Selector: return add<SelectorView>(root, entry, listener);
        case WidgetKind::Button:
        case WidgetKind::SampleButton: return add<ButtonView>(root, entry, listener);
        case WidgetKind::LargeList:
        case WidgetKind::List:
        case WidgetKind::SmallList: return add<ListView>(root, entry, listener);
        case WidgetKind::Menu: return add<MenuButtonView>(root, entry, listener);
        case WidgetKind::Value:
        case WidgetKind::EffectValue: return add<MYParamDisplay>(root, entry, listener);
        case WidgetKind::Step: return add<StepSliderView>(root, entry, listener);
        case WidgetKind::WaveView:
        case WidgetKind::FilterView:
        case WidgetKind::EnvelopeView:
        case WidgetKind::LfoView: return add<Wavedisplay>(root, entry, listener);
    }
    return nullptr;
}

}  // namespace

ControlViews::ControlViews(VSTGUI::CViewContainer& root, const VSTGUI::CRect& shown, ControlListener& listener,
                           DepthListener& depth) {
    for (int index = 0; index < controlCount(); ++index) {
        const ControlEntry& entry = controlEntry(index);
        const LayoutRect place = controlRect(entry);
        if (place.x + place.width > shown.right || place.y + place.height > shown.bottom) continue;
        faces_[static_cast<std::size_t>(index)] = addControl(root, entry, listener, depth);
    }
}

ControlFace* ControlViews::withTag(int tag) const {
    for (ControlFace* face : faces_)
        if (face != nullptr && face->entry().tag == tag) return face;
    return nullptr;
}

}  // namespace vantoric
