#include "platform/dialogs.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

#include "platform/files.h"

namespace vantoric::platform {

namespace {

std::string formatted(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);  // NOLINT(clang-analyzer-valist.Uninitialized)
    va_end(again);
    if (length < 0) return format;
    std::vector<char> text(static_cast<std::size_t>(length) + 1);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    return std::string(text.data(), static_cast<std::size_t>(length));
}

struct KindTexts {
    FileKind kind;
    const char* loadTitle;
    const char* saveTitle;
    const char* filter;
    const char* extension;
};

constexpr KindTexts kindTexts[] = {
    {FileKind::All, "Load a file", "Save a file", "All files(*.*)", ""},
    {FileKind::Patch, "Load a fxp program (.fxp file)", "Save a fxp program (.fxp file)", "Single preset (*.fxp)", ".fxp"},
    {FileKind::Bank, "Load a fxb bank (.fxb file)", "Save a fxb bank (.fxb file)", "Preset bank (*.fxb)", ".fxb"},
    {FileKind::Wave, "Load a wave file (.wav file)", "Save a wave file (.wav file)", "Wave file (*.wav)", ".wav"},
    {FileKind::Sfz, "Import .sfz file", "Save a file", "sfz import (*.sfz)", ".sfz"},
};

const KindTexts& textsOf(FileKind kind) {
    for (const KindTexts& texts : kindTexts)
        if (texts.kind == kind) return texts;
    return kindTexts[0];
}

}  // namespace

void showMessage(Dialogs& dialogs, const char* title, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = formatted(format, arguments);
    va_end(arguments);
    dialogs.message(title, text);
}

bool askQuestion(Dialogs& dialogs, const char* title, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = formatted(format, arguments);
    va_end(arguments);
    return dialogs.question(title, text);
}

FileRequest fileRequest(FileKind kind, bool isSave, const std::string& startFolder) {
    const KindTexts& texts = textsOf(kind);
    return {isSave ? texts.saveTitle : texts.loadTitle, texts.filter, texts.extension, startFolder, isSave};
}

bool askFilePath(Dialogs& dialogs, std::string& path, const std::string& startFolder, bool isSave, FileKind kind) {
    const FileRequest request = fileRequest(kind, isSave, startFolder);
    std::string chosen;
    if (!dialogs.choosePath(request, chosen)) return false;
    if (isSave) {
        if (!chosen.ends_with(request.extension)) chosen += request.extension;
        if (exists(chosen) && !dialogs.question("Warning", "Are you sure that you want to overwrite this file?")) return false;
    }
    path = chosen;
    return true;
}

#ifndef _WIN32

void DesktopDialogs::message(const std::string& title, const std::string& text) {
    std::fprintf(stderr, "Vantoric: %s: %s\n", title.c_str(), text.c_str());
}

bool DesktopDialogs::question(const std::string& title, const std::string& text) {
    std::fprintf(stderr, "Vantoric: %s: %s (No)\n", title.c_str(), text.c_str());
    return false;
}

bool DesktopDialogs::choosePath(const FileRequest&, std::string&) { return false; }

#endif

Dialogs& desktopDialogs() {
    static DesktopDialogs dialogs;
    return dialogs;
}

}  // namespace vantoric::platform
