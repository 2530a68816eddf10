#include "platform/dialogs.h"

#ifdef _WIN32

#include <windows.h>
// After windows.h: it needs its types.
#include <commdlg.h>

#include "platform/wide_text.h"

namespace vantoric::platform {

namespace {
// Sign, buttons and "above all other windows", in the bits of MessageBox.
constexpr UINT messageStyle = 0x40030;
constexpr UINT questionStyle = 0x40024;
constexpr std::size_t longestPath = 32768;  // that the system knows
}  // namespace

void DesktopDialogs::message(const std::string& title, const std::string& text) {
    MessageBoxW(nullptr, wide(text).c_str(), wide(title).c_str(), messageStyle);
}

void DesktopDialogs::question(const std::string& title, const std::string& text, OnAnswer then) {
    then(MessageBoxW(nullptr, wide(text).c_str(), wide(title).c_str(), questionStyle) == IDYES);
}

void DesktopDialogs::choosePath(const FileRequest& request, OnPath then) {
    std::wstring chosen = wide(request.name);
    chosen.resize(longestPath, L'\0');
    std::wstring filter = wide(request.filterText);
    filter.push_back(L'\0');
    filter += request.extension.empty() ? L"*.*" : L"*" + wide(request.extension);
    filter.push_back(L'\0');
    const std::wstring title = wide(request.title), folder = wide(request.startFolder);
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.lpstrFilter = filter.c_str();
    dialog.lpstrFile = chosen.data();
    dialog.nMaxFile = static_cast<DWORD>(chosen.size());
    dialog.lpstrTitle = title.c_str();
    dialog.lpstrInitialDir = folder.empty() ? nullptr : folder.c_str();
    dialog.Flags = OFN_NOCHANGEDIR | OFN_HIDEREADONLY | (request.isSave ? 0 : OFN_FILEMUSTEXIST);
    if (!(request.isSave ? GetSaveFileNameW(&dialog) : GetOpenFileNameW(&dialog))) return then({});
    then(utf8(chosen.c_str()));
}

}  // namespace vantoric::platform

#endif
