#include "platform/settings.h"

#ifdef _WIN32

#include <windows.h>

namespace vantoric::platform {

namespace {
constexpr char keyName[] = "Software\\Orvix\\Vantoric\\";
}

void setSettingsFolder(const std::string&) {}

std::string readSetting(const std::string& name) {
    DWORD size = 0;
    const auto read = [&](char* text) {
        return RegGetValueA(HKEY_CURRENT_USER, keyName, name.c_str(), RRF_RT_REG_SZ, nullptr, text, &size) == ERROR_SUCCESS;
    };
    if (!read(nullptr)) return {};
    std::string text(size, '\0');
    if (!read(text.data())) return {};
    return text.c_str();  // up to its end mark
}

bool writeSetting(const std::string& name, const std::string& value) {
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, keyName, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr) != ERROR_SUCCESS)
        return false;
    const auto* bytes = reinterpret_cast<const BYTE*>(value.c_str());
    const LSTATUS status = RegSetValueExA(key, name.c_str(), 0, REG_SZ, bytes, static_cast<DWORD>(value.size() + 1));
    RegCloseKey(key);
    return status == ERROR_SUCCESS;
}

}  // namespace vantoric::platform

#endif
