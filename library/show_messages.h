// Telling a user what the instrument had to say.
#pragma once

#include "base/messages.h"
#include "platform/dialogs.h"

namespace vantoric {

// Shows all that was posted, in order, and forgets it. On a thread that may wait for the user.
void showMessages(Messages& messages, platform::Dialogs& dialogs);

}  // namespace vantoric
