#include "editor/frame_dialogs.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <utility>

#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"
#include "platform/user_folders.h"

namespace vantoric {

namespace {

// Of this module, for all its windows; on their one thread.
struct FolderMemory {
    std::vector<std::string> recent;  // the last first
    std::map<std::string, std::string> lastOf;
};

FolderMemory& folderMemory() {
    static FolderMemory memory;
    return memory;
}

std::string lastPart(const std::string& folder) {
    const std::string name = std::filesystem::path(folder).filename().string();
    return name.empty() ? folder : name;
}

std::string withoutSlash(std::string folder) {
    while (folder.size() > 1 && (folder.ends_with('/') || folder.ends_with('\\'))) folder.pop_back();
    return folder;
}

}  // namespace

std::vector<FileChooser::Place> chooserPlaces() {
    std::vector<FileChooser::Place> places;
    const auto add = [&](const std::string& label, const std::string& path, bool isRecent = false) {
        const std::string folder = withoutSlash(path);
        const bool isThere = std::ranges::any_of(places, [&](const auto& place) { return place.folder == folder; });
        if (!folder.empty() && !isThere && platform::isFolder(folder)) places.push_back({label, folder, isRecent});
    };
    add("Home", platform::homeFolder());
    add("My patches", platform::userFolder());
    add("All patches", platform::soundsFolder());
    add("Wavetables", platform::dataFolder() + "Vantoric_wavetables");
    add("Computer", "/");
    for (const std::string& folder : folderMemory().recent) add(lastPart(folder), folder, true);
    return places;
}

std::string lastFolder(const std::string& extension) {
    const auto& folders = folderMemory().lastOf;
    const auto found = folders.find(extension);
    return found != folders.end() ? found->second : "";
}

void rememberFolder(const std::string& extension, const std::string& folder) {
    constexpr std::size_t mostRecent = 6;
    FolderMemory& memory = folderMemory();
    memory.lastOf[extension] = folder;
    std::erase(memory.recent, folder);
    memory.recent.insert(memory.recent.begin(), folder);
    if (memory.recent.size() > mostRecent) memory.recent.resize(mostRecent);
}

FrameDialogs::FrameDialogs() : windowThread_(std::this_thread::get_id()) {}

FrameDialogs::~FrameDialogs() {
    try {
        closeAll();
    } catch (...) {
        isClosing_ = false;  // short memory: who asked hears nothing
    }
}

void FrameDialogs::setHost(LayerHost* host) {
    if (host != host_) closeAll();
    const std::lock_guard guard(mutex_);
    host_ = host;
    windowThread_ = std::this_thread::get_id();
}

int FrameDialogs::openCount() const {
    const std::lock_guard guard(mutex_);
    return static_cast<int>(
        std::ranges::count_if(asked_, [](const Asked& asked) { return !std::holds_alternative<Task>(asked); }));
}

// ---- what is asked for

void FrameDialogs::moveTo(LayerHost& host) {
    const std::lock_guard guard(mutex_);
    host_ = &host;
}

void FrameDialogs::message(const std::string& title, const std::string& text) { ask(Message{title, text}); }

void FrameDialogs::question(const std::string& title, const std::string& text, platform::OnAnswer then) {
    ask(Question{title, text, std::move(then)});
}

void FrameDialogs::choice(const std::string& title, const std::string& text, platform::OnChoice then) {
    ask(Choice{title, text, std::move(then)});
}

void FrameDialogs::choosePath(const platform::FileRequest& request, platform::OnPath then) {
    ask(Path{request, std::move(then)});
}

void FrameDialogs::work(platform::Work work, platform::OnAnswer then) {
    auto running = std::make_shared<Running>();
    running->work = std::move(work);
    ask(Task{std::move(running), std::move(then)});
}

void FrameDialogs::ask(Asked asked) {
    switch (enqueue(asked)) {
        case Queued::here: return showNext();
        case Queued::elsewhere: return;  // the next `poll` shows it
        case Queued::no: return answerWithNothing(asked);
    }
}

FrameDialogs::Queued FrameDialogs::enqueue(Asked& asked) {
    const std::lock_guard guard(mutex_);
    if (host_ == nullptr || isClosing_) return Queued::no;
    const auto* message = std::get_if<Message>(&asked);
    if (message == nullptr || !count(*message)) asked_.push_back(std::move(asked));
    return std::this_thread::get_id() == windowThread_ ? Queued::here : Queued::elsewhere;
}

// With the queue locked: whether the same message is there already and counts it.
bool FrameDialogs::count(const Message& message) {
    for (Asked& waiting : asked_) {
        auto* same = std::get_if<Message>(&waiting);
        if (same == nullptr || same->title != message.title || same->text != message.text) continue;
        ++same->times;
        return true;
    }
    return false;
}

// ---- showing

void FrameDialogs::showNext() {
    Asked next;
    {
        const std::lock_guard guard(mutex_);
        if (asked_.empty() || host_ == nullptr) return;
        const auto* message = std::get_if<Message>(&asked_.front());
        if (isShowing()) {
            if (message != nullptr && box_ != nullptr && message->times > 1) box_->setTimes(message->times);
            return;
        }
        next = asked_.front();
    }
    std::visit([this](const auto& asked) { show(asked); }, next);
}

void FrameDialogs::openBox(Box box, std::function<void(int)> answered) {
    box_ = new BoxView(host_->layerArea(), std::move(box), std::move(answered));
    host_->openLayer(box_);
}

void FrameDialogs::show(const Message& message) {
    openBox({message.title, message.text, {"OK"}}, [this](int) {
        takeShown();
        showNext();
    });
    if (message.times > 1) box_->setTimes(message.times);
}

void FrameDialogs::show(const Question& question) {
    openBox({question.title, question.text, {"No", "Yes"}}, [this](int button) {
        const Asked asked = takeShown();
        if (const auto& then = std::get<Question>(asked).then) then(button == 1);
        showNext();
    });
}

void FrameDialogs::show(const Choice& choice) {
    enum Button { cancel, no, yes };
    openBox({choice.title, choice.text, {"Cancel", "No", "Yes"}, {}, no}, [this](int button) {
        const Asked asked = takeShown();
        if (const auto& then = std::get<Choice>(asked).then) then(button == cancel ? std::nullopt : std::optional(button == yes));
        showNext();
    });
}

void FrameDialogs::show(const Path& path) {
    if (usesDesktop_ && DesktopChooser::isThere()) {
        platform::FileRequest request = path.request;
        if (request.startFolder.empty()) request.startFolder = lastFolder(request.extension);
        const bool isOpen = desktop_.open(request, [this](const DesktopChooser::Outcome& outcome) {
            if (outcome.failed) {
                usesDesktop_ = false;  // it would fail the next time too
                closeLayers();
                return showNext();
            }
            const Asked asked = takeShown();
            const auto& [asking, then] = std::get<Path>(asked);
            if (outcome.path) rememberFolder(asking.extension, folderAbove(*outcome.path));
            if (then) then(outcome.path);
            showNext();
        });
        if (isOpen) return openDesktopChooser();
    }
    showChooser();
}

// The frame says where the chooser is, and takes it away if asked to.
void FrameDialogs::openDesktopChooser() {
    openBox({"Info", "Choose a file in the window that has opened beside this one.", {"Cancel", "Choose here"}},
            [this](int button) {
                desktop_.close();
                if (button == 1) {
                    closeLayers();
                    return showChooser();
                }
                const Asked asked = takeShown();
                if (const auto& then = std::get<Path>(asked).then) then({});
                showNext();
            });
}

void FrameDialogs::showChooser() {
    platform::FileRequest request;
    {
        const std::lock_guard guard(mutex_);
        request = std::get<Path>(asked_.front()).request;
    }
    if (request.startFolder.empty()) request.startFolder = lastFolder(request.extension);
    chooser_ = new FileChooser(host_->layerArea(), request, chooserPlaces(), [this](std::optional<std::string> path) {
        const Asked asked = takeShown();
        const auto& [asking, then] = std::get<Path>(asked);
        if (path) rememberFolder(asking.extension, folderAbove(*path));
        if (then) then(path);
        showNext();
    });
    host_->openLayer(chooser_);
}

// ---- work

FrameDialogs::Running::~Running() {
    if (thread.joinable()) thread.join();
}

void FrameDialogs::start(Running& running) {
    cancelled_.reserve(cancelled_.size() + 1);  // its end asks for no memory
    running.since = std::chrono::steady_clock::now();
    const auto run = [&running] {
        try {
            running.work.run();
        } catch (...) {
            running.work.cancel();  // what it did is good for nothing
        }
        running.isDone.store(true);
    };
    try {
        running.thread = std::thread(run);
    } catch (...) {
        run();  // no more threads: the window waits
    }
}

// Short work never shows.
void FrameDialogs::show(const Task& task) {
    constexpr std::chrono::milliseconds unseen(250);
    Running& running = *task.running;
    if (running.since == std::chrono::steady_clock::time_point()) start(running);
    if (running.isDone.load()) return endWork(true);
    if (std::chrono::steady_clock::now() - running.since < unseen) return;
    openBox({running.work.title, running.work.text, {"Cancel"}, running.work.part}, [this](int) { endWork(false); });
}

// Of the work in turn: it has ended, or is not wanted any more.
void FrameDialogs::endWork(bool isDone) {
    const Asked asked = takeShown();
    const auto& [running, then] = std::get<Task>(asked);
    if (isDone) {
        if (running->thread.joinable()) running->thread.join();
    } else {
        running->work.cancel();
        cancelled_.push_back(running);
    }
    if (then) then(isDone);
    showNext();
}

void FrameDialogs::followWork() {
    std::erase_if(cancelled_, [](const auto& running) { return running->isDone.load(); });
    bool hasEnded = false;
    {
        const std::lock_guard guard(mutex_);
        const auto* task = asked_.empty() ? nullptr : std::get_if<Task>(&asked_.front());
        hasEnded = task != nullptr && task->running->isDone.load() && box_ != nullptr;
    }
    if (hasEnded) endWork(true);
}

void FrameDialogs::closeLayers() {
    if (auto* box = std::exchange(box_, nullptr)) host_->closeLayer(*box);
    if (auto* chooser = std::exchange(chooser_, nullptr)) host_->closeLayer(*chooser);
}

FrameDialogs::Asked FrameDialogs::takeShown() {
    closeLayers();
    const std::lock_guard guard(mutex_);
    Asked shown = std::move(asked_.front());
    asked_.erase(asked_.begin());
    return shown;
}

// ---- idle rounds and the end

void FrameDialogs::poll() {
    desktop_.poll();
    followWork();
    showNext();
}

void FrameDialogs::answerWithNothing(Asked& asked) {
    if (const auto* message = std::get_if<Message>(&asked)) windowless_.message(message->title, message->text);
    if (auto* question = std::get_if<Question>(&asked))
        windowless_.question(question->title, question->text, std::move(question->then));
    if (auto* choice = std::get_if<Choice>(&asked)) {
        if (isClosing_) return choice->then({});
        windowless_.choice(choice->title, choice->text, std::move(choice->then));
    }
    if (auto* path = std::get_if<Path>(&asked)) {
        if (isClosing_) return path->then({});  // a window that goes away opens no other
        windowless_.choosePath(path->request, std::move(path->then));
    }
    auto* task = std::get_if<Task>(&asked);
    if (task == nullptr) return;
    if (isClosing_) return task->then(false);  // a window that goes away begins nothing
    windowless_.work(std::move(task->running->work), std::move(task->then));
}

void FrameDialogs::closeAll() {
    if (isClosing_) return;
    desktop_.close();
    if (host_ != nullptr) closeLayers();
    std::vector<Asked> left;
    {
        const std::lock_guard guard(mutex_);
        isClosing_ = true;  // what the answers ask for is answered at once too
        left = std::exchange(asked_, {});
    }
    for (std::size_t index = 0; index < left.size(); ++index) {
        const auto* message = std::get_if<Message>(&left[index]);
        if (message != nullptr && index > 0) windowless_.message(message->title, message->text);  // that on top has been seen
        if (auto* question = std::get_if<Question>(&left[index]); question != nullptr && question->then) question->then(false);
        if (auto* choice = std::get_if<Choice>(&left[index]); choice != nullptr && choice->then) choice->then({});
        if (auto* path = std::get_if<Path>(&left[index]); path != nullptr && path->then) path->then({});
        if (auto* task = std::get_if<Task>(&left[index])) {
            task->running->work.cancel();
            if (task->running->thread.joinable()) cancelled_.push_back(task->running);
            if (task->then) task->then(false);
        }
    }
    const std::lock_guard guard(mutex_);
    isClosing_ = false;
}

}  // namespace vantoric
