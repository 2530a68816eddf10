// How a view comes into its container.
#pragma once

#include "vstgui/lib/cviewcontainer.h"

namespace vantoric {

// Hands a view that was just made to a container, and returns it. It is the container's from then on; where memory is too short
// for that it is gone, while the window library's own call would leave it to nobody. On the thread of the window.
template <class View>
View* addView(VSTGUI::CViewContainer& container, View* view) {
    const VSTGUI::SharedPointer<View> kept(view);
    const auto owners = view->getNbReference();
    try {
        container.addView(view);
    } catch (...) {
        // Unless the container has taken it, or let go of it already.
        if (view->getNbReference() == owners && !view->isSubview()) view->forget();
        throw;
    }
    return view;
}

}  // namespace vantoric
