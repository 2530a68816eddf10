// The dialog for wave files, which begins where the last file was found.
#pragma once

#include <string>
#include <utility>

#include "patch/patch_file.h"
#include "platform/dialogs.h"

namespace vantoric {

// On the thread of the window. Outlives its questions.
class WaveChooser {
public:
    explicit WaveChooser(platform::Dialogs& dialogs) : dialogs_(dialogs) {}

    // `then` gets nothing if none was chosen.
    void ask(platform::OnPath then) {
        platform::askFilePath(dialogs_, lastFolder_, false, platform::FileKind::Wave,
                              [this, then = std::move(then)](const auto& path) {
                                  const std::string folder = path ? folderOfPath(*path) : std::string();
                                  if (!folder.empty()) lastFolder_ = folder;
                                  then(path);
                              });
    }

private:
    platform::Dialogs& dialogs_;
    std::string lastFolder_;
};

}  // namespace vantoric
