// Boxes, questions and file choosers: the one seam through which the instrument speaks to its user. Never
// called on the audio thread.
#pragma once

#include <functional>
#include <optional>
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
    std::string name = {};  // of a save: what the file would be called, without the extension; empty: nothing is proposed
};

// What goes on with the user's answer: true only for Yes.
using OnAnswer = std::function<void(bool yes)>;
// The same where No does something too; nothing if the user went back or the window closed over the question.
using OnChoice = std::function<void(std::optional<bool> yes)>;
// What goes on with the chosen path; nothing if none was chosen.
using OnPath = std::function<void(std::optional<std::string> path)>;

// Something that takes its time. `run` may be on a thread of its own, the other two are called meanwhile on that of the window.
struct Work {
    std::string title, text;       // what a user reads who has to wait
    std::function<void()> run;     // touches nothing that the thread of the window uses; throws nothing
    std::function<double()> part;  // how far it is, 0 to 1
    std::function<void()> cancel;  // it is not wanted any more: `run` should end soon
};

// Implemented by the editor's window, by `DesktopDialogs` where there is none, and by `RecordedDialogs`.
//
// No call waits for the user. What is asked for shows one after the other in the order of the calls, and `then` is called
// on the thread of the call once the user has answered: within the call or later. It is called exactly once; if the
// window closes first, it is called with No or none (with none where the question can be called off), or dropped without a call.
// So what `then` refers to must live as long as the dialogs do, and must not rely on the state at the time of the call. Where
// nobody can see a box the answer is No.
class Dialogs {
public:
    virtual ~Dialogs() = default;

    // Shows a text with an information sign until the user has read it.
    virtual void message(const std::string& title, const std::string& text) = 0;

    // Asks a question.
    virtual void question(const std::string& title, const std::string& text, OnAnswer then) = 0;

    // Asks a question that can be called off, as what it is about goes on with No too. Where there is no window to close over
    // it, it is a question like all others.
    virtual void choice(const std::string& title, const std::string& text, OnChoice then);

    // Lets the user choose a path. Callers use `askFilePath`, which adds the extension and asks before overwriting.
    virtual void choosePath(const FileRequest& request, OnPath then) = 0;

    // Does something long without holding up the caller's thread, where that is possible; without a window it is done within
    // the call. `then` hears whether it ended: No if the user or the window's end cancelled it.
    virtual void work(Work work, OnAnswer then);
};

#if defined(__GNUC__)
#define VANTORIC_PRINTF(text, arguments) __attribute__((format(printf, text, arguments)))
#else
#define VANTORIC_PRINTF(text, arguments)
#endif

// A message or question whose text is formatted with printf rules. Texts of any length.
void showMessage(Dialogs& dialogs, const char* title, const char* format, ...) VANTORIC_PRINTF(3, 4);
void askQuestion(Dialogs& dialogs, OnAnswer then, const char* title, const char* format, ...) VANTORIC_PRINTF(4, 5);

// The titles, filter and extension of a kind.
FileRequest fileRequest(FileKind kind, bool isSave, const std::string& startFolder);

// The open or save dialog of a kind. On saving, the kind's extension is added unless the path ends in it
// already, letter case included, and an existing file is a question to the user, who chooses anew after a No. `then` gets
// nothing if the user went back.
// A save may propose a name; characters that no file name holds are replaced.
void askFilePath(Dialogs& dialogs, const std::string& startFolder, bool isSave, FileKind kind, OnPath then,
                 const std::string& name = {});

// Those of a program that shows no boxes: a text goes to standard error, a question answers No and no path is chosen, so that
// nothing is ever held up. Every answer comes at once, within the call.
class WrittenDialogs : public Dialogs {
public:
    void message(const std::string& title, const std::string& text) override;
    void question(const std::string& title, const std::string& text, OnAnswer then) override;
    void choosePath(const FileRequest& request, OnPath then) override;
};

// The dialogs of a process without an editor's window: on Windows the system's own, which hold up the caller until the user
// has answered.
#ifdef _WIN32
class DesktopDialogs : public Dialogs {
public:
    void message(const std::string& title, const std::string& text) override;
    void question(const std::string& title, const std::string& text, OnAnswer then) override;
    void choosePath(const FileRequest& request, OnPath then) override;
};
#else
using DesktopDialogs = WrittenDialogs;
#endif

// The one instance that engines use until a window brings its own.
Dialogs& desktopDialogs();

}  // namespace vantoric::platform
