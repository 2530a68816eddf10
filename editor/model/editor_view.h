// The window as the editor's knowledge sees it: what draws. Implemented with a window library.
#pragma once

#include <string>

#include "editor/model/window_layout.h"
#include "editor/model/window_size.h"

namespace vantoric {

// Called on the thread of the window, from within the editor's calls.
class EditorView {
public:
    // The value, text or state of the control of that row of the table may be another.
    virtual void redrawControl(int index) = 0;
    // The same for a part beside the table.
    virtual void redrawPart(WindowPart part) = 0;
    // The same for everything.
    virtual void redrawAll() = 0;
    // Other pages than before may show.
    virtual void showPages() = 0;

    // The window is to be built anew, in the size that is in force by now.
    virtual void rebuild() = 0;
    // Another zoom is in force; a rebuild follows.
    virtual void setZoom(double zoom) = 0;
    // The primary screen, as far as it is known.
    virtual Screen screen() const = 0;

    // Opens the browser of patches, or closes it; the second leaves an open one open.
    virtual void toggleBrowser() = 0;
    virtual void openBrowser() = 0;
    // Opens the menu of a control, by the row of the table.
    virtual void openMenu(int index) = 0;
    // The patch in force, its name, its place in the lists or the lists may be others.
    virtual void showPatchName() = 0;
    virtual void showHint(const std::string& text) = 0;
    virtual void showCredits() = 0;

protected:
    ~EditorView() = default;
};

}  // namespace vantoric
