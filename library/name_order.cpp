#include "library/name_order.h"

#include <algorithm>

#include "platform/files.h"

namespace vantoric {

namespace {

constexpr std::size_t longestName = 255;

unsigned char folded(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + 32) : byte;
}

}  // namespace

bool standsBefore(std::string_view a, std::string_view b) {
    const std::size_t shared = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < shared; ++i)
        if (folded(a[i]) != folded(b[i])) return folded(a[i]) < folded(b[i]);
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

void sortNames(std::vector<std::string>& names) { std::sort(names.begin(), names.end(), standsBefore); }

std::vector<std::string> listNames(const std::vector<platform::FolderEntry>& entries, std::string_view extension,
                                   std::size_t limit) {
    std::vector<std::string> names;
    for (const platform::FolderEntry& entry : entries) {
        if (entry.isFolder || !entry.name.ends_with(extension)) continue;
        std::string name = entry.name.substr(0, entry.name.size() - extension.size());
        if (!name.empty() && name.size() <= longestName) names.push_back(std::move(name));
    }
    sortNames(names);
    if (names.size() > limit) names.resize(limit);
    return names;
}

}  // namespace vantoric
