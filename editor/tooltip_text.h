// The lines of a tooltip, wrapped; whoever shows them draws the ground.
#pragma once

#include <string>
#include <vector>

#include "editor/pen.h"

namespace vantoric {

class TooltipText {
public:
    // An empty text has no lines.
    explicit TooltipText(const std::string& text = {});

    bool isEmpty() const { return lines_.empty(); }
    // With the room around the letters, in window units.
    VSTGUI::CPoint size() const;
    // The corner is that of the room around them.
    void draw(Pen& pen, const VSTGUI::CPoint& leftTop) const;

private:
    std::vector<std::string> lines_;
};

}  // namespace vantoric
