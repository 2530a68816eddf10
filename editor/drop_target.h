// Files that are dropped on the window.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "vstgui/lib/cviewcontainer.h"
#include "vstgui/lib/dragging.h"

namespace vantoric {

// The container of the whole window. The library tells where a drag came in, not where it is, so one target takes all drops
// and asks for the pointer itself.
class DropContainer : public VSTGUI::CViewContainer {
public:
    explicit DropContainer(const VSTGUI::CRect& size);

    // Hears of the files that were dropped, and where, in window units.
    using Dropped = std::function<void(const std::vector<std::string>& paths, VSTGUI::CPoint where)>;
    void setDropped(Dropped dropped) { dropped_ = std::move(dropped); }

    VSTGUI::SharedPointer<VSTGUI::IDropTarget> getDropTarget() override;

private:
    class Target : public VSTGUI::DropTargetAdapter, public VSTGUI::NonAtomicReferenceCounted {
    public:
        explicit Target(DropContainer& container) : container_(container) {}
        VSTGUI::DragOperation onDragEnter(VSTGUI::DragEventData) override { return VSTGUI::DragOperation::Copy; }
        VSTGUI::DragOperation onDragMove(VSTGUI::DragEventData) override { return VSTGUI::DragOperation::Copy; }
        bool onDrop(VSTGUI::DragEventData data) override;

    private:
        DropContainer& container_;
    };

    Target target_{*this};
    Dropped dropped_;
};

// The path of a file that a drag names by "file:///..." with its %-coded bytes, or by a path; empty for anything else.
std::string pathOfDrop(const std::string& text);

}  // namespace vantoric
