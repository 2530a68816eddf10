#include "platform/settings.h"

#ifdef _WIN32

#include <windows.h>

#include "platform/wide_text.h"

namespace vantoric::platform {

namespace {
constexpr std::size_t longestValue = 65536;  // bytes
constexpr wchar_t keyName[] = L"Software\\Orvix\\Vantoric";
}  // namespace

void setSettingsFolder(const std::string&) {}

std::string readSetting(const std::string& name) {
    const std::wstring wideName = wide(name);
    DWORD size = 0;  // bytes, with the end mark
    const auto read = [&](wchar_t* text) {
        return RegGetValueW(HKEY_CURRENT_USER, keyName, wideName.c_str(), RRF_RT_REG_SZ, nullptr, text, &size) == ERROR_SUCCESS;
    };
    if (!read(nullptr)) return {};
    std::wstring text(size / sizeof(wchar_t) + 1, L'\0');
    if (!read(text.data())) return {};
    return utf8(text.c_str());  // up to its end mark
}

bool writeSetting(const std::string& name, const std::string& value) {
    if (name.find_first_of("=\n") != std::string::npos || value.size() > longestValue) return false;
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, keyName, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr) != ERROR_SUCCESS)
        return false;
    const std::wstring text = wide(value);
    const auto* bytes = reinterpret_cast<const BYTE*>(text.c_str());
    const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    const LSTATUS status = RegSetValueExW(key, wide(name).c_str(), 0, REG_SZ, bytes, size);
    RegCloseKey(key);
    return status == ERROR_SUCCESS;
}

}  // namespace vantoric::platform

#endif
