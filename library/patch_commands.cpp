#include "library/patch_commands.h"

#include "library/show_messages.h"
#include "platform/module_folder.h"

namespace vantoric {

bool PatchCommands::told(bool result) {
    showMessages(messages_, dialogs_);
    return result;
}

bool PatchCommands::loadPatch() {
    std::string path;
    const std::string start = loadedBefore_ ? std::string() : platform::soundsFolder();
    if (!platform::askFilePath(dialogs_, path, start, false, platform::FileKind::Patch)) return false;
    loadedBefore_ = true;
    files_.loadPatchFile(path);
    return told(true);
}

bool PatchCommands::savePatchAs() {
    std::string path;
    const std::string start = saveFolder_.empty() ? platform::userFolder() : saveFolder_;
    if (!platform::askFilePath(dialogs_, path, start, true, platform::FileKind::Patch)) return false;
    saveFolder_ = folderOfPath(path);
    return told(files_.savePatchAs(path));
}

bool PatchCommands::quickSavePatch(const std::string& category, const std::string& name) {
    return told(files_.quickSavePatch(category, name));
}

bool PatchCommands::deletePatch(const std::string& category, const std::string& name) {
    const std::string path = patchPath(category, name);
    if (!dialogs_.question("Warning", "Are you sure that you want to delete the file '" + path + "'?")) return false;
    return told(files_.deletePatch(category, name));
}

}  // namespace vantoric
