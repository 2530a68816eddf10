#include "editor/tooltip_text.h"

#include <algorithm>

#include "editor/overlay.h"

namespace vantoric {
namespace {

using style::Face;

constexpr double letters = 9.5, lineHeight = 13, mostWidth = 300, atSides = 9, aboveAndBelow = 6, baseLine = 10;

}  // namespace

TooltipText::TooltipText(const std::string& text) : lines_(wrapped(text, Face::medium, letters, mostWidth)) {}

VSTGUI::CPoint TooltipText::size() const {
    double width = 0;
    for (const std::string& line : lines_) width = std::max(width, measured(line, Face::medium, letters));
    return {width + 2 * atSides, 2 * aboveAndBelow + lineHeight * static_cast<double>(lines_.size())};
}

void TooltipText::draw(Pen& pen, const VSTGUI::CPoint& leftTop) const {
    double y = leftTop.y + aboveAndBelow + baseLine;
    for (const std::string& line : lines_) {
        pen.text(leftTop.x + atSides, y, line, Face::medium, letters, style::text2);
        y += lineHeight;
    }
}

}  // namespace vantoric
