// Where a program keeps what it remembers from one run to the next, and which of its runs are still there. Not for the audio
// thread.
#pragma once

#include <string>

namespace vantoric::platform {

// The folder, with a trailing separator: userStateFolder(). Nothing is made. Empty if the user has none.
std::string stateFolder();

// Makes stateFolder answer `folder` (a trailing separator is added if missing); an empty text undoes it. For tests; not
// guarded against concurrent callers.
void setStateFolder(const std::string& folder);

// The number of this process.
long processNumber();

// What tells a process from every other that had or will have its number: a text without line breaks of when the machine and
// the process were started. Empty if no process of that number runs.
std::string processStart(long number);

}  // namespace vantoric::platform
