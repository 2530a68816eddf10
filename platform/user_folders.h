// Where the system wants a user's files to be: by the XDG rules (XDG Base Directory Specification 0.8, xdg-user-dirs), on Windows
// by its known folders. All are asked for at each call, end in a separator and are empty where the user has none; nothing is
// made. Texts are UTF-8 on every system. Any thread but the audio thread.
#pragma once

#include <string>

namespace vantoric::platform {

// The user's own folder: $HOME, on Windows the profile.
std::string homeFolder();

// For patches and the like: vantoric below $XDG_DATA_HOME or .local/share in the home folder; on Windows Vantoric below the
// user's local application data.
std::string userDataFolder();

// For what programs remember: vantoric below $XDG_STATE_HOME or .local/state in the home folder; on Windows Vantoric\State below
// the user's local application data.
std::string userStateFolder();

// What the folders of all programs' settings lie in: $XDG_CONFIG_HOME or .config in the home folder; on Windows the user's
// application data that go with him from machine to machine.
std::string userConfigFolder();

// For recordings: what the user's list of folders says (user-dirs.dirs), Music in the home folder without one; on Windows the
// folder that the system has for music.
std::string userMusicFolder();

}  // namespace vantoric::platform
