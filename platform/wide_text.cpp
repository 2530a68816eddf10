#include "platform/wide_text.h"

#ifdef _WIN32

#include <windows.h>

namespace vantoric::platform {

std::wstring wide(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring out(static_cast<std::size_t>(size > 0 ? MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0) : 0),
                     L'\0');
    if (!out.empty()) MultiByteToWideChar(CP_UTF8, 0, text.data(), size, out.data(), static_cast<int>(out.size()));
    return out;
}

std::string utf8(std::wstring_view text) {
    const int size = static_cast<int>(text.size());
    const auto convert = [&](char* to, int room) {
        return WideCharToMultiByte(CP_UTF8, 0, text.data(), size, to, room, nullptr, nullptr);
    };
    std::string out(static_cast<std::size_t>(size > 0 ? convert(nullptr, 0) : 0), '\0');
    if (!out.empty()) convert(out.data(), static_cast<int>(out.size()));
    return out;
}

}  // namespace vantoric::platform

#endif
