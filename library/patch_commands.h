// The commands of the file menu that ask the user something.
#pragma once

#include <string>

#include "library/done.h"
#include "patch/patch_file.h"
#include "platform/dialogs.h"

namespace vantoric {

// On the thread of the window. Every command shows what there is to tell at its end. Outlives its questions.
class PatchCommands {
public:
    PatchCommands(PatchFiles& files, Messages& messages, platform::Dialogs& dialogs)
        : files_(files), messages_(messages), dialogs_(dialogs) {}

    // "Load patch": asks for a file, from the sounds folder on until one was chosen, and loads it. True if one was chosen;
    // the caller then lets the browser follow the patch name.
    void loadPatch(Done done);
    // "Save patch as...": asks for a path, from the folder of the last such save on, names the patch after it, saves.
    void savePatchAs(Done done);
    // "Quick save patch", see PatchFiles.
    bool quickSavePatch(const std::string& category, const std::string& name);
    // "Delete Patch": asks, then removes the file. True if it is gone; the caller then rebuilds its lists.
    void deletePatch(const std::string& category, const std::string& name, Done done);

private:
    bool told(bool result);

    PatchFiles& files_;
    Messages& messages_;
    platform::Dialogs& dialogs_;
    bool loadedBefore_ = false;
    std::string saveFolder_;  // of the last "Save patch as..."
};

}  // namespace vantoric
