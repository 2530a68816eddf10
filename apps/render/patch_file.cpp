#include "apps/render/patch_file.h"

#include <fstream>
#include <iterator>

namespace vantoric::render {

bool loadPatch(const std::string& path, std::int32_t uniqueId, std::vector<std::uint8_t>& chunk, std::string& problem) {
    constexpr std::size_t headerSize = 60, identifierAt = 16, sizeAt = 56;
    std::ifstream stream(path, std::ios::binary);
    if (!stream) return problem = "cannot be opened", false;
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
    auto number = [&bytes](std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i) value = value << 8 | bytes[at + i];
        return value;
    };
    if (bytes.size() < headerSize || bytes[0] != 'C' || bytes[1] != 'c') return problem = "not a patch file", false;
    if (number(identifierAt) != static_cast<std::uint32_t>(uniqueId)) return problem = "a patch of another plug-in", false;
    const std::uint32_t size = number(sizeAt);
    if (size == 0) return problem = "its chunk is empty", false;
    if (size > bytes.size() - headerSize) return problem = "truncated: the file ends within the chunk", false;
    chunk.assign(bytes.begin() + headerSize, bytes.begin() + headerSize + size);
    return true;
}

}  // namespace vantoric::render
