// The file "tools" holds single functions of several families. Each is bound where its family is:
//   const golden::Tool stageLengths("stage_lengths_*", golden::checkValues<lengths>);
#pragma once

#include "golden_runner/golden.h"

namespace golden {

// Registers `check` for the cases of that name (a trailing * matches any rest). Static objects fill the table.
struct Tool {
    Tool(const char* name, Check check);
};

}  // namespace golden
