// Where the installation lies: everything the instrument reads stands beside its module file, or beside the bundle that the
// module is in.
#pragma once

#include <string>

#include "platform/files.h"

namespace vantoric::platform {

// The part of `path`, of any length, up to and with its last separator; empty without one.
std::string folderOfModulePath(const std::string& path);

// Folder of the shared library or program that holds this code, with its trailing separator: that of the real
// file, however many links led to it, as the data lie beside the file and not beside the links. Asks the
// system at each call. Empty if the system does not tell. Any thread but the audio thread.
std::string moduleFolder();

// Makes `dataFolder` answer `folder` (a trailing separator is added if missing) in place of the module's
// own; an empty text undoes it. For programs and tests that run beside no installation. Call it while no
// engine exists: it is not guarded against concurrent readers.
void setDataFolder(const std::string& folder);

// The module's folder, or the first of the four above it, that holds Vantoric_data; `moduleFolder` itself if none does. It is
// given and returned with its trailing separator.
std::string installedFolder(const std::string& moduleFolder);

// Root of all files below, with a trailing separator: the installed folder of the module unless `setDataFolder` said
// otherwise. Nothing is cached. The folders after it end in a separator too.
std::string dataFolder();
std::string bankFolder();       // Vantoric_data: wave banks, configuration files, templates
std::string soundsFolder();     // Vantoric_sounds: one folder per patch category
std::string wavetableFolder();  // Vantoric_wavetables

}  // namespace vantoric::platform
