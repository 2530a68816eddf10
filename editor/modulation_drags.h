// Sources of modulation that the mouse carries from where they are made to what they should turn.
#pragma once

#include <functional>
#include <optional>

#include "editor/control_views.h"
#include "editor/drag_area.h"
#include "editor/hints.h"
#include "editor/model/q7editor.h"
#include "editor/overlay.h"

namespace vantoric {

// On the thread of the window.
class ModulationDrags final : private DragListener {
public:
    // Adds the areas from which drags go to `root`, which owns them: beside the wheel and, unless the window is low, at
    // envelopes and LFOs, whose tabs can be dragged too. All that it is given outlives it. `began` is called as a drag begins.
    ModulationDrags(VSTGUI::CViewContainer& root, bool isLow, Q7Editor& editor, const ControlViews& views, Hints& hints,
                    Overlay& overlay, std::function<void()> began);

    bool isDragging() const { return dragged_ != nullptr; }
    // Calls off the drag that is under way; false if none is.
    bool cancel();

private:
    enum Area { envelopeArea, lfoArea, wheelArea };

    void addArea(VSTGUI::CViewContainer& root, Area area, const char* caption, double inset, const Color& ground);
    void dragHovered(int area, bool isHovered) override;
    void dragBegan(SourceDrag& drag) override;
    void dragMoved(const SourceDrag& drag, VSTGUI::CPoint where) override;
    void dragEnded(const SourceDrag& drag, VSTGUI::CPoint where) override;
    void dragCancelled(const SourceDrag& drag) override;
    void addTabs(Area area, int firstTab, int tabs);
    int targetAt(VSTGUI::CPoint where) const;
    void markTargets(const std::optional<Color>& ring, int nearest);

    Q7Editor& editor_;
    const ControlViews& views_;
    Hints& hints_;
    Overlay& overlay_;
    std::function<void()> began_;
    SourceDrag* dragged_ = nullptr;  // the drag that is under way
    int source_ = 0;                 // list index of what is carried
};

}  // namespace vantoric
