// The commands by which scripts drive the window.
#pragma once

#include <string>

#include "tests/window/window_host.h"

namespace testhost {

// Carries out one line: a command of those that drive.cpp tells, a remark after '#', or nothing. False if it is none of them, or
// if a window did not open, a picture was not saved, or a patch not found.
bool drive(WindowHost& host, const std::string& line);

}  // namespace testhost
