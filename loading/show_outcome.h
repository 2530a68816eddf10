// Telling a user what became of something.
#pragma once

#include "base/outcome.h"
#include "platform/dialogs.h"

namespace vantoric {

// Shows the box of an outcome, if it has one, and returns whether it was done.
inline bool showOutcome(platform::Dialogs& dialogs, const Outcome& outcome) {
    if (!outcome.text.empty()) dialogs.message(outcome.title, outcome.text);
    return outcome.isDone;
}

}  // namespace vantoric
