// A module that tells where it finds its data.
#include <string>

#include "platform/module_folder.h"

extern "C" __attribute__((visibility("default"))) const char* probedDataFolder() {
    static std::string folder;
    folder = vantoric::platform::dataFolder();
    return folder.c_str();
}
