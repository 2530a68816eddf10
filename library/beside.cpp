#include "library/beside.h"

#include <memory>
#include <utility>

#include "patch/patch_file.h"

namespace vantoric {

void beside(platform::Dialogs& dialogs, const std::string& title, const std::string& text,
            std::function<void(Progress& progress)> read, platform::OnAnswer then) {
    const auto progress = std::make_shared<Progress>();
    dialogs.work({title, text, [progress, read = std::move(read)] { read(*progress); }, [progress] { return progress->part(); },
                  [progress] { progress->cancel(); }},
                 std::move(then));
}

std::string fileNameOf(const std::string& path) { return path.substr(folderOfPath(path).size()); }

}  // namespace vantoric
