// The window's boxes and choosers: shown in its frame one after the other, without holding up anybody.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "editor/box_view.h"
#include "editor/desktop_chooser.h"
#include "editor/file_chooser.h"
#include "editor/layer_view.h"
#include "platform/dialogs.h"

namespace vantoric {

// While a host of layers is set, what is asked for is shown there in the order of the calls; without one everything is as
// with `DesktopDialogs`. Messages that come while the same one waits or stands open are counted instead of shown anew.
//
// All functions belong to the window's thread, but message, question, choice and choosePath may be called on any other: they then
// show at the next `poll`, on whose thread their answers come too.
class FrameDialogs : public platform::Dialogs {
public:
    FrameDialogs();
    ~FrameDialogs() override;

    // The window opens, or closes (null): what is open or waits is then answered as by `closeAll`.
    void setHost(LayerHost* host);
    // The window is built anew, in another size: what is open waits from `leaveHost` to `moveTo` and is shown again by the
    // next `poll`.
    void leaveHost() { closeLayers(); }
    void moveTo(LayerHost& host);
    // Whether the desktop's chooser is preferred where it is there. It is, by default.
    void setUsesDesktop(bool uses) { usesDesktop_ = uses; }

    void message(const std::string& title, const std::string& text) override;
    void question(const std::string& title, const std::string& text, platform::OnAnswer then) override;
    // Its box has a "Cancel" beside the two answers.
    void choice(const std::string& title, const std::string& text, platform::OnChoice then) override;
    void choosePath(const platform::FileRequest& request, platform::OnPath then) override;
    // On a thread of its own, in its turn; a box with a bar and "Cancel" shows if it takes long. What is cancelled ends by
    // itself, at the latest before this object does.
    void work(platform::Work work, platform::OnAnswer then) override;

    // Boxes and choosers that are open or wait; work is none.
    int openCount() const;
    // At each idle round of the window: opens what other threads asked for, and looks after the desktop's chooser.
    void poll();
    // Answers all with No, or nothing where that is an answer, and takes them away.
    void closeAll();

    // For tests: what is on top now; null if it is nothing of that kind.
    BoxView* box() const { return box_; }
    FileChooser* chooser() const { return chooser_; }

private:
    struct Message {
        std::string title, text;
        int times = 1;
    };
    struct Question {
        std::string title, text;
        platform::OnAnswer then;
    };
    struct Choice {
        std::string title, text;
        platform::OnChoice then;
    };
    struct Path {
        platform::FileRequest request;
        platform::OnPath then;
    };
    // Work and the thread that does it, once it is its turn.
    struct Running {
        platform::Work work;
        std::thread thread;
        std::atomic<bool> isDone{false};
        std::chrono::steady_clock::time_point since;
        ~Running();
    };
    struct Task {
        std::shared_ptr<Running> running;
        platform::OnAnswer then;
    };
    using Asked = std::variant<Message, Question, Choice, Path, Task>;

    bool isShowing() const { return box_ != nullptr || chooser_ != nullptr; }
    enum class Queued { no, here, elsewhere };
    void ask(Asked asked);
    Queued enqueue(Asked& asked);
    bool count(const Message& message);
    void showNext();
    void show(const Message& message);
    void show(const Question& question);
    void show(const Choice& choice);
    void show(const Path& path);
    void show(const Task& task);
    void start(Running& running);
    void endWork(bool isDone);
    void followWork();
    void showChooser();
    void openDesktopChooser();
    void openBox(Box box, std::function<void(int)> answered);
    void closeLayers();
    // Takes what is shown off the window and out of the queue.
    Asked takeShown();
    void answerWithNothing(Asked& asked);

    mutable std::mutex mutex_;  // of the queue
    std::vector<Asked> asked_;  // the first is shown, or about to be; a vector, as an empty one wants no memory
    LayerHost* host_ = nullptr;
    std::thread::id windowThread_;
    bool usesDesktop_ = true, isClosing_ = false;
    BoxView* box_ = nullptr;
    std::vector<std::shared_ptr<Running>> cancelled_;  // whose threads have not ended yet
    FileChooser* chooser_ = nullptr;
    DesktopChooser desktop_;
    platform::DesktopDialogs windowless_;
};

// The places of a file chooser: home, the folders of patches and wavetables, those that were used last.
std::vector<FileChooser::Place> chooserPlaces();
// The folder that something was last chosen from with that extension; empty if there is none.
std::string lastFolder(const std::string& extension);
void rememberFolder(const std::string& extension, const std::string& folder);

}  // namespace vantoric
