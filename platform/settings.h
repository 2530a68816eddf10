// The few values that other software on the machine may look up: the registry on Windows (current user,
// Software\Orvix\Vantoric\), elsewhere lines "name=value" in Orvix/Vantoric/settings below the user's
// configuration folder ($XDG_CONFIG_HOME, or .config in the home folder). Not for the audio thread.
#pragma once

#include <string>

namespace vantoric::platform {

// The stored text; empty if there is none or it cannot be read.
std::string readSetting(const std::string& name);

// Stores a text, keeping all others; the folder or key is made if necessary. Written in one step.
// `name` must not hold '=' or a line break. A failure is silent: false, with all as it was. Settings that are
// there and cannot be read, or would take more than 64 KiB, are left alone: a failure.
bool writeSetting(const std::string& name, const std::string& value);

// Keeps the settings in `folder` (without Orvix/Vantoric) instead of the user's configuration folder; an
// empty text undoes it. For tests; no effect on Windows. Not guarded against concurrent callers.
void setSettingsFolder(const std::string& folder);

}  // namespace vantoric::platform
