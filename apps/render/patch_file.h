// Patch files as hosts keep them (".fxp"): 60 bytes of header, then the chunk.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantoric::render {

// Reads the chunk of a program file. False with a reason if the file is none or shorter than it says.
bool loadPatch(const std::string& path, std::vector<std::uint8_t>& chunk, std::string& problem);

}  // namespace vantoric::render
