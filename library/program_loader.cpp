#include "library/program_loader.h"

#include <chrono>

#include "base/outcome.h"
#include "library/program_steps.h"
#include "library/show_messages.h"
#include "patch/patch_file.h"
#include "platform/thread.h"

namespace vantoric {

ProgramLoader::ProgramLoader(Instrument& instrument, platform::Dialogs& dialogs)
    : instrument_(instrument),
      dialogs_(dialogs),
      library_(*this),
      patch_(instrument, library_),
      changes_(instrument.programChanges()),
      thread_([this] { run(); }) {}

ProgramLoader::~ProgramLoader() {
    {
        const std::lock_guard guard(mutex_);
        isEnding_ = true;
    }
    ending_.notify_all();
    thread_.join();
}

void ProgramLoader::setWindowOpen(bool open) {
    bool isLoaded = false;
    {
        const std::lock_guard guard(mutex_);
        isLoaded = look();  // what came while it was otherwise
        isWindowOpen_ = open;
    }
    if (isLoaded) tellHost();
}

int ProgramLoader::lastNumber() const {
    const std::lock_guard guard(mutex_);
    return last_;
}

void ProgramLoader::run() {
    platform::setLowPriority();
    std::unique_lock guard(mutex_);
    while (!ending_.wait_for(guard, std::chrono::milliseconds(lookEvery), [this] { return isEnding_; })) {
        const bool isLoaded = look();
        guard.unlock();
        if (isLoaded) tellHost();
        saveLearned();
        guard.lock();
    }
}

// Without the lock: a host may open a window meanwhile, and wait until it is open.
// Whatever is thrown there ends neither the thread nor the host.
void ProgramLoader::tellHost() try {
    if (instrument_.hostPort() != nullptr) instrument_.hostPort()->patchChanged();
} catch (...) {
    return;
}

// A learn is over when its controller comes, and the window that armed it may be closed by then.
// Where it cannot be kept, on a full disk, its entries stay changed and are tried again, though not at every look.
void ProgramLoader::saveLearned() try {
    if (looksToSkip_ > 0) {
        --looksToSkip_;
        return;
    }
    ControllerMap& map = instrument_.controllerMap();
    if (!map.isChanged()) return;
    looksToSkip_ = looksAfterAFailure;
    if (map.save(controllerMapPath())) looksToSkip_ = 0;
} catch (...) {  // NOLINT(bugprone-empty-catch)
    // As above.
}

// With the lock. Whether a patch was loaded.
bool ProgramLoader::look() {
    const std::optional<int> number = changes_.take();
    if (!number) return false;
    const int direction = programStep(last_, *number);
    last_ = *number;
    return !isWindowOpen_ && step(direction);
}

bool ProgramLoader::step(int direction) try {
    library_.scanCategories();
    library_.scanPatches(-1);
    patch_.follow();
    const bool isLoaded = direction > 0 ? library_.nextPatch() : library_.previousPatch();
    showMessages(instrument_.messages(), dialogs_);
    return isLoaded;
} catch (...) {
    instrument_.messages().post("Error", notEnoughMemory);
    return false;
}

bool ProgramLoader::loadListed(const std::string& category, const std::string& name) {
    if (!instrument_.patchFiles().loadPatchFile(patchPath(category, name))) return false;
    patch_.showListed(category, name);
    return true;
}

}  // namespace vantoric
