// The window's colours and fonts: every one that is drawn stands here. Surfaces are neutral; colour means function.
#pragma once

#include "vstgui/lib/ccolor.h"

namespace vantoric {

using Color = VSTGUI::CColor;

constexpr Color hexColor(unsigned rgb, unsigned alpha = 255) {
    return Color(static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8 & 255),
                 static_cast<std::uint8_t>(rgb & 255), static_cast<std::uint8_t>(alpha));
}

// `a` with the part `t`, 0 to 1, of the way to `b`; alpha as in `a`.
Color mix(const Color& a, const Color& b, double t);
// The colour, `t` opaque.
Color fade(const Color& color, double t);

namespace style {

inline constexpr Color window = hexColor(0x0E1113), band = hexColor(0x15191C), panel = hexColor(0x181D20),
                       bandPanel = hexColor(0x1C2125), inset = hexColor(0x0B0D0F), raised = hexColor(0x272D32),
                       hover = hexColor(0x333B41), line = hexColor(0x2B3136), grid = hexColor(0x1A1F23),
                       menu = hexColor(0x1F252A), menuEdge = hexColor(0x3B444B);
inline constexpr Color text = hexColor(0xEFF2F3), text2 = hexColor(0xB3BBC1), text3 = hexColor(0x8D979E),
                       sign = hexColor(0x14181A);  // on a switch that is on
inline constexpr Color white = hexColor(0xFFFFFF), black = hexColor(0x000000), handle = hexColor(0xF0F0F0);
// By function.
inline constexpr Color oscillators = hexColor(0xFFC061), filters = hexColor(0x5AD1EE), envelopes = hexColor(0xFF7468),
                       lfo = hexColor(0xAB90FB), arpeggiator = hexColor(0x35C0A4), output = hexColor(0xDDE1E0);
// Multilayer editing, and what is mapped to a controller or learning one.
inline constexpr Color multilayer = hexColor(0xFFC45A), alarm = hexColor(0xFF4040);
// How far a modulation moves a knob, within its range and beyond.
inline constexpr Color modulated = hexColor(0xFFFFFF, 0x80), beyondRange = hexColor(0xFF0000, 0x6E);
inline constexpr Color lampOn = hexColor(0x8CFFBE);
inline constexpr Color hintFill = hexColor(0x141414), hintEdge = hexColor(0x282828);

// Inter in its weights, and Sora for titles, numerals and names.
enum class Face { regular, medium, semibold, title };
}  // namespace style
}  // namespace vantoric
