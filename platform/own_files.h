// What a user makes: patches, ranks and settings. They go into the installation where that can be written, as when a user copied
// it to a place of theirs; one that belongs to the system stays as it is, and a folder of the user's is seen as if it lay over
// it.
//
// Below, `below` is a path within either, as "Vantoric_sounds/Bass", with the system's separators and none at its begin. Nothing
// is cached. Not for the audio thread.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/files.h"

namespace vantoric::platform {

// The folder in which the user's files stand, with its trailing separator: dataFolder() if it can be written and is not below
// /usr; otherwise userDataFolder(). Where the user has none it is dataFolder() all the same.
std::string ownFolder();
// Makes ownFolder answer `folder` (a trailing separator is added if missing); an empty text undoes it. For tests; not guarded
// against concurrent callers.
void setOwnFolder(const std::string& folder);
// Makes the user's folder with all that is written to, if it lies apart from the installation. What cannot be made is not.
void makeOwnFolders();

// With a trailing separator, below ownFolder().
std::string userFolder();        // Vantoric_sounds, User
std::string favouritesFolder();  // Vantoric_sounds, Favourites

// Where a file is to be written.
std::string ownPath(const std::string& below);
// Where a file or folder is: the user's, or else the installation's, whether it is there or not.
std::string dataPath(const std::string& below);
// All entries of a folder of both, the user's before the installation's of the same name, until `visit` returns false.
void visitDataFolder(const std::string& below, const std::function<bool(FolderEntry&&)>& visit);
std::vector<FolderEntry> listDataFolder(const std::string& below);

// Parts of such paths: Vantoric_sounds and Vantoric_wavetables, with a trailing separator.
std::string belowSounds();
std::string belowWavetables();

}  // namespace vantoric::platform
