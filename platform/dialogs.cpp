#include "platform/dialogs.h"

#include <cstdarg>
#include <cstdio>
#include <string_view>
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

#ifdef _WIN32
constexpr std::string_view notInNames = "/\\<>:\"|?*", separators = "/\\";
#else
constexpr std::string_view notInNames = "/\\", separators = "/";
#endif

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

// Who chose a file that is there and does not want it overwritten chooses anew, from the same folder and name on.
// NOLINTNEXTLINE(misc-no-recursion)
void askSavePath(Dialogs& dialogs, const FileRequest& request, const OnPath& then) {
    dialogs.choosePath(request, [&dialogs, request, then](const auto& chosen) {
        if (!chosen) return then({});
        const std::string& extension = request.extension;
        const std::string path = chosen->ends_with(extension) ? *chosen : *chosen + extension;
        if (!exists(path)) return then(path);
        FileRequest again = request;
        const std::size_t name = path.find_last_of(separators) + 1;
        again.startFolder = path.substr(0, name);
        again.name = path.substr(name, path.size() - name - extension.size());
        dialogs.question("Warning", "Are you sure that you want to overwrite this file?",
                         [&dialogs, path, again, then](bool yes) { yes ? then(path) : askSavePath(dialogs, again, then); });
    });
}

}  // namespace

// By value, as who does it beside its caller keeps both.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void Dialogs::work(Work work, OnAnswer then) {
    work.run();
    then(true);
}

void Dialogs::choice(const std::string& title, const std::string& text, OnChoice then) {
    question(title, text, [then = std::move(then)](bool yes) { then(yes); });
}

void showMessage(Dialogs& dialogs, const char* title, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = formatted(format, arguments);
    va_end(arguments);
    dialogs.message(title, text);
}

void askQuestion(Dialogs& dialogs, OnAnswer then, const char* title, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = formatted(format, arguments);
    va_end(arguments);
    dialogs.question(title, text, std::move(then));
}

FileRequest fileRequest(FileKind kind, bool isSave, const std::string& startFolder) {
    const KindTexts& texts = textsOf(kind);
    return {isSave ? texts.saveTitle : texts.loadTitle, texts.filter, texts.extension, startFolder, isSave};
}

void askFilePath(Dialogs& dialogs, const std::string& startFolder, bool isSave, FileKind kind, OnPath then,
                 const std::string& name) {
    FileRequest request = fileRequest(kind, isSave, startFolder);
    for (const char c : name)
        request.name += notInNames.find(c) != std::string_view::npos || static_cast<unsigned char>(c) < ' ' ? '-' : c;
    isSave ? askSavePath(dialogs, request, then) : dialogs.choosePath(request, std::move(then));
}

void WrittenDialogs::message(const std::string& title, const std::string& text) {
    std::fprintf(stderr, "Vantoric: %s: %s\n", title.c_str(), text.c_str());
}

void WrittenDialogs::question(const std::string& title, const std::string& text, OnAnswer then) {
    std::fprintf(stderr, "Vantoric: %s: %s (No)\n", title.c_str(), text.c_str());
    then(false);
}

void WrittenDialogs::choosePath(const FileRequest&, OnPath then) { then({}); }

Dialogs& desktopDialogs() {
    static DesktopDialogs dialogs;
    return dialogs;
}

}  // namespace vantoric::platform
