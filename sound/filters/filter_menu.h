// The menu of filter types as it follows from the rows of all loops.
#pragma once

#include <array>
#include <iterator>
#include <span>

#include "sound/filters/loop_list.h"

namespace vantoric::filters {

inline constexpr int bypassIndex = 0;
inline constexpr int separatorIndices[] = {1, 6, 11, 16, 22, 29, 33, 40, 46, 49, 54, 59};

// A line of the menu.
struct MenuLine {
    int index;
    const char* label;
};

template <template <class> class... Topologies>
constexpr auto menuLines(LoopList<Topologies...>) {
    constexpr std::size_t types = (std::size(filterRows<Topologies>) + ...);
    std::array<MenuLine, types + std::size(separatorIndices) + 1> lines{};
    std::size_t count = 0;
    lines[count++] = {bypassIndex, "Bypass"};
    for (const int index : separatorIndices) lines[count++] = {index, "-"};
    const auto add = [&](const auto& rows) {
        for (const auto& row : rows) lines[count++] = {row.index, row.label};
    };
    (add(filterRows<Topologies>), ...);
    return lines;
}

// Types, separators and "Bypass".
inline constexpr int menuSize = static_cast<int>(menuLines(AllLoops{}).size());

enum class MenuFault { none, wrongIndex, missingIndex, doubleIndex };

// Whether the lines take each index of the menu once.
constexpr MenuFault faultOf(std::span<const MenuLine> lines) {
    bool taken[menuSize] = {};
    for (const MenuLine& line : lines) {
        if (line.index < 0 || line.index >= menuSize) return MenuFault::wrongIndex;
        if (taken[line.index]) return MenuFault::doubleIndex;
        taken[line.index] = true;
    }
    for (const bool one : taken)
        if (!one) return MenuFault::missingIndex;
    return MenuFault::none;
}

// The labels by index.
consteval std::array<const char*, menuSize> menuLabels() {
    constexpr auto lines = menuLines(AllLoops{});
    constexpr MenuFault fault = faultOf(lines);
    static_assert(fault != MenuFault::wrongIndex, "a filter type stands outside the menu");
    static_assert(fault != MenuFault::doubleIndex, "two filter types, or a type and a separator, have the same index");
    static_assert(fault != MenuFault::missingIndex, "an index of the menu has neither a filter type nor a separator");
    std::array<const char*, menuSize> labels{};
    for (const MenuLine& line : lines) labels[static_cast<std::size_t>(line.index)] = line.label;
    return labels;
}

// Whether any variant of a loop draws random numbers.
template <template <class> class Topology>
consteval bool everDraws() {
    for (int variant = 0; variant < variantCount<Topology>; ++variant)
        if (Topology<float>::draws(static_cast<VariantOf<Topology>>(variant)).any()) return true;
    return false;
}

// By index: whether the type's loop ever does.
template <template <class> class... Topologies>
consteval std::array<bool, menuSize> drawingTypes(LoopList<Topologies...>) {
    std::array<bool, menuSize> draws{};
    const auto mark = [&](const auto& rows, bool any) {
        for (const auto& row : rows) draws[static_cast<std::size_t>(row.index)] = any;
    };
    (mark(filterRows<Topologies>, everDraws<Topologies>()), ...);
    return draws;
}

}  // namespace vantoric::filters
