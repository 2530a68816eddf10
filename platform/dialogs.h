// Boxes, questions and file choosers: the one seam through which the instrument speaks to its user. Never
// called on the audio thread.
#pragma once

#include <string>

namespace vantoric::platform {

// What a file chooser is for.
enum class FileKind { All = 0, Patch = 1, Bank = 2, Wave = 3, Sfz = 5 };

// What a file chooser shows.
struct FileRequest {
    std::string title;        // "Load a wave file (.wav file)"
    std::string filterText;   // "Wave file (*.wav)"
    std::string extension;    // ".wav"; empty for all files
    std::string startFolder;  // empty: the system's last place
    bool isSave = false;
};

// Implemented by the editor's window, by `DesktopDialogs` where there is none, and by
// `RecordedDialogs`. An implementation must come back without a user where nobody can see a box.
class Dialogs {
public:
    virtual ~Dialogs() = default;

    // Shows a text with an information sign until the user has read it.
    virtual void message(const std::string& title, const std::string& text) = 0;

    // Asks a question; true only for Yes.
    virtual bool question(const std::string& title, const std::string& text) = 0;

    // Lets the user choose a path; false, with `path` as it was, if none was chosen. Callers use
    // `askFilePath`, which adds the extension and asks before overwriting.
    virtual bool choosePath(const FileRequest& request, std::string& path) = 0;
};

#if defined(__GNUC__)
#define VANTORIC_PRINTF(text, arguments) __attribute__((format(printf, text, arguments)))
#else
#define VANTORIC_PRINTF(text, arguments)
#endif

// A message or question whose text is formatted with printf rules. Texts of any length.
void showMessage(Dialogs& dialogs, const char* title, const char* format, ...) VANTORIC_PRINTF(3, 4);
bool askQuestion(Dialogs& dialogs, const char* title, const char* format, ...) VANTORIC_PRINTF(3, 4);

// The titles, filter and extension of a kind.
FileRequest fileRequest(FileKind kind, bool isSave, const std::string& startFolder);

// The open or save dialog of a kind. On saving, the kind's extension is added unless the path ends in it
// already, letter case included, and an existing file is a question to the user. True if `path` holds
// the choice; false, with `path` as it was, if the user went back.
bool askFilePath(Dialogs& dialogs, std::string& path, const std::string& startFolder, bool isSave, FileKind kind);

// The dialogs of a process without an editor's window. On Windows the system's own; elsewhere a text goes
// to standard error, a question answers No and no path is chosen, so that no host is ever held up.
class DesktopDialogs : public Dialogs {
public:
    void message(const std::string& title, const std::string& text) override;
    bool question(const std::string& title, const std::string& text) override;
    bool choosePath(const FileRequest& request, std::string& path) override;
};

// The one instance that engines use until a window brings its own.
Dialogs& desktopDialogs();

}  // namespace vantoric::platform
