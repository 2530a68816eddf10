// The border between the texts of the instrument, which are UTF-8, and those of Windows, which are UTF-16. Windows alone.
#pragma once

#ifdef _WIN32

#include <string>
#include <string_view>

namespace vantoric::platform {

// What is no proper UTF-8, or a half of a pair that stands alone, becomes U+FFFD. Any thread.
std::wstring wide(std::string_view text);
std::string utf8(std::wstring_view text);

}  // namespace vantoric::platform

#endif
