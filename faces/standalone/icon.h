// The program's sign for task bars and menus.
#pragma once

#include <cstdint>
#include <vector>

namespace vantoric::standalone {

// A square of `size` pixels, row by row, each 0xAARRGGBB: a V of two strokes on a dark tile.
std::vector<std::uint32_t> iconPixels(int size);

}  // namespace vantoric::standalone
