// Work beside the window, for commands whose files take their time.
#pragma once

#include <functional>
#include <string>

#include "base/progress.h"
#include "platform/dialogs.h"

namespace vantoric {

// Does `read` where the dialogs do such work, see platform::Work; the user reads the text below the title. `then` hears whether
// it ended, No if it was cancelled; what was read should then be left alone. What `read` refers to must outlive the
// dialogs, not only the command: work that is cancelled may go on for a moment.
void beside(platform::Dialogs& dialogs, const std::string& title, const std::string& text,
            std::function<void(Progress& progress)> read, platform::OnAnswer then);

// Of a path what a user reads: the name with its extension.
std::string fileNameOf(const std::string& path);

}  // namespace vantoric
