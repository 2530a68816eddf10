// Patch files as hosts keep them (".fxp"): 60 bytes of header, then the chunk.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantoric::render {

// Reads the chunk of a program file of the plug-in with this identifier. Looks at the first two bytes, the
// identifier and the chunk's size only, as other writers fill the rest of the header differently. False with a
// reason if the file is none, belongs to another plug-in or is shorter than it says.
bool loadPatch(const std::string& path, std::int32_t uniqueId, std::vector<std::uint8_t>& chunk, std::string& problem);

}  // namespace vantoric::render
