#include "library/patch_commands.h"

#include "library/show_messages.h"
#include "platform/module_folder.h"

namespace vantoric {

bool PatchCommands::told(bool result) {
    showMessages(messages_, dialogs_);
    return result;
}

bool PatchCommands::loadPatchFile(const std::string& path) {
    bool isLoaded = false;
    {
        const CommandLog::Running running(log_, "Load '" + patchNameOfPath(path) + "'");
        isLoaded = files_.loadPatchFile(path);
        if (isLoaded) log_.notePatchLoaded();
    }
    return told(isLoaded);
}

void PatchCommands::loadPatch(platform::OnPath done) {
    const std::string start = loadedBefore_ ? std::string() : platform::soundsFolder();
    platform::askFilePath(dialogs_, start, false, platform::FileKind::Patch, [this, done = std::move(done)](const auto& path) {
        if (path) loadedBefore_ = true;
        path&& loadPatchFile(*path) ? done(path) : done({});
    });
}

void PatchCommands::askSavePath(platform::OnPath then) {
    const std::string start = saveFolder_.empty() ? platform::userFolder() : saveFolder_;
    platform::askFilePath(dialogs_, start, true, platform::FileKind::Patch, [this, then = std::move(then)](const auto& path) {
        if (path) saveFolder_ = folderOfPath(*path);
        then(path);
    });
}

void PatchCommands::savePatchAs(platform::OnPath done) {
    askSavePath([this, done = std::move(done)](const auto& path) {
        if (!path || !told(files_.savePatchAs(*path))) return done({});
        done(path);
        log_.notePatchSaved();
    });
}

bool PatchCommands::quickSavePatch(const std::string& category, const std::string& name) {
    if (!told(files_.quickSavePatch(category, name))) return false;
    log_.notePatchSaved();
    return true;
}

void PatchCommands::deletePatch(const std::string& category, const std::string& name, Done done) {
    const std::string path = patchPath(category, name);
    dialogs_.question(
        "Warning", "Are you sure that you want to delete the file '" + path + "'?",
        [this, category, name, done = std::move(done)](bool yes) { done(yes && told(files_.deletePatch(category, name))); });
}

}  // namespace vantoric
