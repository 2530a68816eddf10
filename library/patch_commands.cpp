#include "library/patch_commands.h"

#include "library/show_messages.h"
#include "platform/module_folder.h"

namespace vantoric {

bool PatchCommands::told(bool result) {
    showMessages(messages_, dialogs_);
    return result;
}

void PatchCommands::loadPatch(Done done) {
    const std::string start = loadedBefore_ ? std::string() : platform::soundsFolder();
    platform::askFilePath(dialogs_, start, false, platform::FileKind::Patch, [this, done = std::move(done)](const auto& path) {
        if (!path) return done(false);
        loadedBefore_ = true;
        files_.loadPatchFile(*path);
        done(told(true));
    });
}

void PatchCommands::savePatchAs(Done done) {
    const std::string start = saveFolder_.empty() ? platform::userFolder() : saveFolder_;
    platform::askFilePath(dialogs_, start, true, platform::FileKind::Patch, [this, done = std::move(done)](const auto& path) {
        if (!path) return done(false);
        saveFolder_ = folderOfPath(*path);
        done(told(files_.savePatchAs(*path)));
    });
}

bool PatchCommands::quickSavePatch(const std::string& category, const std::string& name) {
    return told(files_.quickSavePatch(category, name));
}

void PatchCommands::deletePatch(const std::string& category, const std::string& name, Done done) {
    const std::string path = patchPath(category, name);
    dialogs_.question(
        "Warning", "Are you sure that you want to delete the file '" + path + "'?",
        [this, category, name, done = std::move(done)](bool yes) { done(yes && told(files_.deletePatch(category, name))); });
}

}  // namespace vantoric
