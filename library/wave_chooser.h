// The dialog for wave files, which begins where the last file was found.
#pragma once

#include <string>

#include "patch/patch_file.h"
#include "platform/dialogs.h"

namespace vantoric {

// On the thread of the window.
class WaveChooser {
public:
    explicit WaveChooser(platform::Dialogs& dialogs) : dialogs_(dialogs) {}

    // False, with `path` as it was, if none was chosen.
    bool ask(std::string& path) {
        if (!platform::askFilePath(dialogs_, path, lastFolder_, false, platform::FileKind::Wave)) return false;
        const std::string folder = folderOfPath(path);
        if (!folder.empty()) lastFolder_ = folder;
        return true;
    }

private:
    platform::Dialogs& dialogs_;
    std::string lastFolder_;
};

}  // namespace vantoric
