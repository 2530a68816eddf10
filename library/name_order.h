// The order in which the library lists names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"

namespace vantoric {

// Whether `a` stands before `b`: by bytes, where only the letters A to Z count as their small forms. Names that are then
// alike stand as their bytes do, so that every scan of a folder gives one order.
bool standsBefore(std::string_view a, std::string_view b);

void sortNames(std::vector<std::string>& names);

// The names of all files among a folder's entries that end in `extension` (case counts), without it and in order; at most
// `limit`, and none of more than 255 bytes.
std::vector<std::string> listNames(const std::vector<platform::FolderEntry>& entries, std::string_view extension,
                                   std::size_t limit);

}  // namespace vantoric
