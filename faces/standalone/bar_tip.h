// What a part of the bar is for, shown above it after the pointer has rested there.
#pragma once

#include <string>

#include "editor/tooltip_text.h"
#include "vstgui/lib/cview.h"

namespace vantoric::standalone {

class BarTip : public VSTGUI::CView {
public:
    // As large as its text asks for, in window units.
    explicit BarTip(const std::string& text);

    void draw(VSTGUI::CDrawContext* context) override;

    CLASS_METHODS_NOCOPY(BarTip, VSTGUI::CView)

private:
    TooltipText text_;
};

}  // namespace vantoric::standalone
