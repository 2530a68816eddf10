// The commands of the file menu that ask the user something.
#pragma once

#include <string>

#include "library/command_log.h"
#include "library/done.h"
#include "patch/patch_file.h"
#include "platform/dialogs.h"

namespace vantoric {

// On the thread of the window. Every command shows what there is to tell at its end. Outlives its questions.
class PatchCommands {
public:
    PatchCommands(PatchFiles& files, Messages& messages, platform::Dialogs& dialogs, CommandLog& log)
        : files_(files), messages_(messages), dialogs_(dialogs), log_(log) {}

    // "Load patch": asks for a file, from the sounds folder on until one was chosen, and loads it. Ends with its path; with
    // nothing, and the patch as it was, if none was chosen or it could not be loaded.
    void loadPatch(platform::OnPath done);
    // "Save patch as...": asks for a path, names the patch after it, saves. Ends with the path; with nothing if none was
    // chosen or it could not be written. `name` is proposed.
    void savePatchAs(const std::string& name, platform::OnPath done);
    // The question alone: from the folder of the last path so chosen on, at first the user's own, which is made if it is not
    // there. Who chooses the sounds folder itself is told that no list shows what lies there, and may take the user's folder.
    void askSavePath(const std::string& name, platform::OnPath then);
    // Loads a file whose path is known. False, with the patch as it was, if that failed.
    bool loadPatchFile(const std::string& path);
    // "Quick save patch", see PatchFiles.
    bool quickSavePatch(const std::string& category, const std::string& name);
    // "Delete Patch": asks, then removes the file. Ends with true if it is gone; the caller then rebuilds its lists.
    void deletePatch(const std::string& category, const std::string& name, Done done);

private:
    bool told(bool result);
    void keepListed(const std::string& path, const platform::OnPath& then);

    PatchFiles& files_;
    Messages& messages_;
    platform::Dialogs& dialogs_;
    CommandLog& log_;
    bool loadedBefore_ = false;
    std::string saveFolder_;  // of the last path to save to
};

}  // namespace vantoric
