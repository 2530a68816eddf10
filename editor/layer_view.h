// What opens over the window and takes all input while it is there: menus, boxes, the file chooser, the browser.
#pragma once

#include "vstgui/lib/cview.h"
#include "vstgui/lib/events.h"

namespace vantoric {

class LayerView : public VSTGUI::CView {
public:
    using CView::CView;

    // A key while it is on top; it takes all that it does not leave unconsumed.
    virtual void onKey(VSTGUI::KeyboardEvent& event) = 0;
    // Goes away without a choice, as by Escape.
    virtual void dismiss() = 0;
    // Called some twenty times a second while it is open, for carets, progress and news from other threads.
    virtual void follow() {}
};

// Shows layers, the newest on top. On the thread of the window.
class LayerHost {
public:
    // Takes the view over and shows it. Its area is `layerArea()`.
    virtual void openLayer(LayerView* view) = 0;
    // Takes it away, at the latest when the present event is over; it may be called from within the view's own methods.
    virtual void closeLayer(LayerView& view) = 0;
    // The window, in window units.
    virtual VSTGUI::CRect layerArea() const = 0;

protected:
    ~LayerHost() = default;
};

}  // namespace vantoric
