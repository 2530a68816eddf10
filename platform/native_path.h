// Paths as the standard library takes them, of texts that may hold any bytes. Any thread.
#pragma once

#include <filesystem>
#include <string>

#ifdef _WIN32
#include "platform/wide_text.h"
#endif

namespace vantoric::platform {

#ifdef _WIN32

// The library itself would throw for what is no proper UTF-8; its calls do not find a folder by a name with a separator at its
// end.
inline std::filesystem::path nativePath(const std::string& text) {
    std::wstring path = wide(text);
    const auto isSeparator = [](wchar_t c) { return c == L'\\' || c == L'/'; };
    while (path.size() > 1 && isSeparator(path.back()) && path[path.size() - 2] != L':') path.pop_back();
    return path;
}
inline std::string pathText(const std::filesystem::path& path) { return utf8(path.native()); }

#else

inline std::filesystem::path nativePath(const std::string& text) { return text; }
inline std::string pathText(const std::filesystem::path& path) { return path.native(); }

#endif

}  // namespace vantoric::platform
