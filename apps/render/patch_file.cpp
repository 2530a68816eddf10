#include "apps/render/patch_file.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace vantoric::render {

bool loadPatch(const std::string& path, std::vector<std::uint8_t>& chunk, std::string& problem) {
    constexpr std::size_t headerSize = 60, sizeAt = 56;
    std::ifstream stream(path, std::ios::binary);
    if (!stream) return problem = "cannot be opened", false;
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
    auto says = [&bytes](std::size_t at, const char* id) {
        return std::equal(id, id + 4, bytes.begin() + static_cast<std::ptrdiff_t>(at));
    };
    if (bytes.size() < headerSize || !says(0, "CcnK")) return problem = "not a patch file", false;
    if (!says(8, "FPCh")) return problem = "not a patch file with a chunk", false;
    std::uint32_t size = 0;
    for (std::size_t i = 0; i < 4; ++i) size = size << 8 | bytes[sizeAt + i];
    if (size == 0) return problem = "its chunk is empty", false;
    if (size > bytes.size() - headerSize) return problem = "truncated: the file ends within the chunk", false;
    chunk.assign(bytes.begin() + headerSize, bytes.begin() + headerSize + size);
    return true;
}

}  // namespace vantoric::render
