// Views drawn without a window, and the hand that works them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "editor/gui_module.h"
#include "editor/layer_view.h"

namespace vantoric {

// The window library for the time of a test program.
class WithGui {
public:
    WithGui();
    ~WithGui();
    WithGui(const WithGui&) = delete;
    WithGui& operator=(const WithGui&) = delete;
};

// Draws the view on the window's ground, `width` x `height` window units, and keeps the picture under that name beside the
// other pictures of the run. The view is used up. Returns the number of its pixels that are not the ground's.
int keepPicture(const std::string& name, VSTGUI::CView* view, double width, double height, double zoom);

// The colours of all pixels, row by row, of what `draw` draws in window units on the window's ground.
std::vector<std::uint32_t> pixelsOf(double zoom, double width, double height,
                                    const std::function<void(VSTGUI::CDrawContext&)>& draw);

// A key that goes down: one that types, or another.
VSTGUI::KeyboardEvent typedKey(char32_t character);
VSTGUI::KeyboardEvent virtualKey(VSTGUI::VirtualKey key, bool withShift = false);
void press(LayerView& view, VSTGUI::VirtualKey key, bool withShift = false);
void type(LayerView& view, const std::string& text);
void click(VSTGUI::CView& view, VSTGUI::CPoint where);
void turnWheel(VSTGUI::CView& view, VSTGUI::CPoint where, double up);
void movePointer(VSTGUI::CView& view, VSTGUI::CPoint where);

}  // namespace vantoric
