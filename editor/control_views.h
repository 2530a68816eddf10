// All controls of the table as views.
#pragma once

#include <array>

#include "editor/button_views.h"
#include "editor/knob.h"
#include "editor/list_view.h"
#include "editor/value_view.h"
#include "editor/wavedisplay.h"
#include "vstgui/lib/cviewcontainer.h"

namespace vantoric {

// Makes the views of the controls that stand within `shown` (window units) and adds them to `root`, which owns them: it must
// outlive this. Controls that a low window leaves out have no view.
class ControlViews {
public:
    ControlViews(VSTGUI::CViewContainer& root, const VSTGUI::CRect& shown, ControlListener& listener, DepthListener& depth);

    // The control of a row of the table; null where it has no view.
    ControlFace* at(int index) const { return faces_[static_cast<std::size_t>(index)]; }
    // The first that has that tag.
    ControlFace* withTag(int tag) const;
    template <class Kind>
    Kind* withTagAs(int tag) const {
        return dynamic_cast<Kind*>(withTag(tag));
    }

    // Calls function(face) for all that have a view.
    template <class Function>
    void forEach(Function function) const {
        for (ControlFace* face : faces_)
            if (face != nullptr) function(*face);
    }

private:
    std::array<ControlFace*, controlTotal> faces_{};
};

}  // namespace vantoric
