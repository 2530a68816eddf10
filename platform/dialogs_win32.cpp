#include "platform/dialogs.h"

#ifdef _WIN32

#include <windows.h>
// After windows.h: it needs its types.
#include <commdlg.h>

namespace vantoric::platform {

namespace {
// Sign, buttons and "above all other windows", in the bits of MessageBox.
constexpr UINT messageStyle = 0x40030;
constexpr UINT questionStyle = 0x40024;
}  // namespace

void DesktopDialogs::message(const std::string& title, const std::string& text) {
    MessageBoxA(nullptr, text.c_str(), title.c_str(), messageStyle);
}

void DesktopDialogs::question(const std::string& title, const std::string& text, OnAnswer then) {
    then(MessageBoxA(nullptr, text.c_str(), title.c_str(), questionStyle) == IDYES);
}

void DesktopDialogs::choosePath(const FileRequest& request, OnPath then) {
    std::string chosen(32768, '\0');  // the longest path that the system knows
    std::string filter = request.filterText;
    filter.push_back('\0');
    filter += request.extension.empty() ? "*.*" : "*" + request.extension;
    filter.push_back('\0');
    OPENFILENAMEA dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.lpstrFilter = filter.c_str();
    dialog.lpstrFile = chosen.data();
    dialog.nMaxFile = static_cast<DWORD>(chosen.size());
    dialog.lpstrTitle = request.title.c_str();
    dialog.lpstrInitialDir = request.startFolder.empty() ? nullptr : request.startFolder.c_str();
    dialog.Flags = OFN_NOCHANGEDIR | OFN_HIDEREADONLY | (request.isSave ? 0 : OFN_FILEMUSTEXIST);
    if (!(request.isSave ? GetSaveFileNameA(&dialog) : GetOpenFileNameA(&dialog))) return then({});
    then(std::string(chosen.c_str()));
}

}  // namespace vantoric::platform

#endif
