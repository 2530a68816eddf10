#include "library/patch_commands.h"

#include "library/show_messages.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/native_path.h"
#include "platform/own_files.h"

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

void PatchCommands::askSavePath(const std::string& name, platform::OnPath then) {
    if (saveFolder_.empty()) platform::makeFolder(platform::userFolder());  // one that cannot be made is told when saving
    const std::string start = saveFolder_.empty() ? platform::userFolder() : saveFolder_;
    const auto chosen = [this, then = std::move(then)](const auto& path) { path ? keepListed(*path, then) : then({}); };
    platform::askFilePath(dialogs_, start, true, platform::FileKind::Patch, chosen, name);
}

// Beside the category folders a patch is in no list.
void PatchCommands::keepListed(const std::string& path, const platform::OnPath& then) {
    const auto take = [this, then](const std::string& chosen) {
        saveFolder_ = folderOfPath(chosen);
        then(chosen);
    };
    if (platform::nativePath(folderOfPath(path)).lexically_normal() !=
        platform::nativePath(platform::soundsFolder()).lexically_normal())
        return take(path);
    const std::string listed = platform::userFolder() + path.substr(folderOfPath(path).size());
    if (platform::exists(listed)) return take(path);  // there is nothing better to offer
    dialogs_.choice("Warning",
                    "Patches beside the category folders are in no list.\nShould it be saved in the category 'User' instead?",
                    [path, listed, take, then](std::optional<bool> yes) { yes ? take(*yes ? listed : path) : then({}); });
}

void PatchCommands::savePatchAs(const std::string& name, platform::OnPath done) {
    askSavePath(name, [this, done = std::move(done)](const auto& path) {
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
