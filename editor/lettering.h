// Lines of text, laid out once and kept: shaping a line costs more than drawing it, and the same few hundred come again at
// every redraw.
#pragma once

#include <string>

#include "editor/style.h"
#include "vstgui/lib/cdrawcontext.h"

namespace vantoric::lettering {

// The fonts in `folder` are found beside those of the system. To be called before the first text.
void useFontsOf(const std::string& folder);

// The width of a line in window units, which is the same at every zoom. `text` may hold any bytes.
double width(const std::string& text, style::Face face, double size);

// Draws a line that begins at `x` with its base line at `y`, in the units of the context's transform.
void draw(VSTGUI::CDrawContext& context, double x, double y, const std::string& text, style::Face face, double size,
          const Color& color);

// Forgets all lines and fonts, ahead of the window library's end. The next text looks the fonts up anew.
void forget();

}  // namespace vantoric::lettering
