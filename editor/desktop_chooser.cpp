#include "editor/desktop_chooser.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace vantoric {
namespace {

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

// The desktop's own first.
std::string chooserProgram() {
    const char* desktop = std::getenv("XDG_CURRENT_DESKTOP");
    const bool isKde = desktop != nullptr && std::string_view(desktop).find("KDE") != std::string_view::npos;
    const std::string first = isKde ? "kdialog" : "zenity", second = isKde ? "zenity" : "kdialog";
    return isInstalled(first) ? first : isInstalled(second) ? second : "";
}

std::string upper(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return text;
}

// "*.wav *.WAV"
std::string patterns(const platform::FileRequest& request) { return "*" + request.extension + " *" + upper(request.extension); }

// A folder with a slash at its end: choosers then open in it and not beside it. With the name that a save proposes.
std::string startOf(const platform::FileRequest& request) {
    const std::string name = !request.isSave || request.name.empty() ? "" : request.name + request.extension;
    if (request.startFolder.empty() || request.startFolder.ends_with('/')) return request.startFolder + name;
    return request.startFolder + "/" + name;
}

}  // namespace

std::vector<std::string> chooserCommand(const std::string& program, const platform::FileRequest& request) {
    std::vector<std::string> words{program};
    if (program == "kdialog") {
        words.insert(words.end(), {"--title", request.title, request.isSave ? "--getsavefilename" : "--getopenfilename",
                                   startOf(request).empty() ? "." : startOf(request)});
        if (!request.extension.empty()) words.push_back(patterns(request) + "|" + request.filterText + "\n*|All files");
        return words;
    }
    words.insert(words.end(), {"--file-selection", "--title=" + request.title});
    if (request.isSave) words.emplace_back("--save");
    if (!startOf(request).empty()) words.push_back("--filename=" + startOf(request));
    if (!request.extension.empty()) {
        words.push_back("--file-filter=" + request.filterText + " | " + patterns(request));
        words.emplace_back("--file-filter=All files | *");
    }
    return words;
}

DesktopChooser::Outcome chooserOutcome(int exitCode, const std::string& output, std::chrono::milliseconds after) {
    constexpr std::chrono::milliseconds fasterThanAnyHand{300};
    std::string path = output;
    while (path.ends_with('\n') || path.ends_with('\r')) path.pop_back();
    if (exitCode == 0 && path.starts_with('/')) return {path, false};
    // A program that finds no display ends like one that was cancelled, but at once.
    if (exitCode == 0 || exitCode == 1) return {{}, after < fasterThanAnyHand};
    return {{}, true};
}

bool DesktopChooser::isThere() { return (isSet("DISPLAY") || isSet("WAYLAND_DISPLAY")) && !chooserProgram().empty(); }

bool DesktopChooser::open(const platform::FileRequest& request, Done done) {
    const auto start = std::chrono::steady_clock::now();
    return isThere() && process_.start(chooserCommand(chooserProgram(), request), [start, done = std::move(done)](
                                                                                      int code, const std::string& output) {
        const auto after = std::chrono::steady_clock::now() - start;
        done(chooserOutcome(code, output, std::chrono::duration_cast<std::chrono::milliseconds>(after)));
    });
}

}  // namespace vantoric
