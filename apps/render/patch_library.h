// Patches by their place in the library.
#pragma once

#include <string>

namespace vantoric::render {

// Chooses the library: that of the installation that a plug-in belongs to, links followed; where it has none, that of the
// folders above a song or of an instrument's folder there, as an installation and dist/ have them.
void chooseLibrary(const std::string& plugin, const std::string& song);

// The file of a patch of the chosen library, CATEGORY/NAME; a user's own hides the factory's. The path that it would have there
// if there is none.
std::string libraryPatch(const std::string& name);

// The same for a name that may be that of a file as well, which goes first.
std::string patchPath(const std::string& nameOrFile);

}  // namespace vantoric::render
