// The one symbol of a CLAP module.
#include <clap/entry.h>
#include <clap/plugin-factory.h>

#include <cstring>

#include "faces/clap/clap_plugin.h"

namespace {

using namespace vantoric;

const clap_plugin_factory_t factory = {
    [](const clap_plugin_factory_t*) { return std::uint32_t{1}; },
    [](const clap_plugin_factory_t*, std::uint32_t index) { return index == 0 ? &clap_face::descriptor() : nullptr; },
    [](const clap_plugin_factory_t*, const clap_host_t* host, const char* id) -> const clap_plugin_t* {
        if (host == nullptr || id == nullptr || std::strcmp(id, clap_face::descriptor().id) != 0) return nullptr;
        return clap_face::makePlugin(host);
    }};

}  // namespace

extern "C" CLAP_EXPORT const clap_plugin_entry_t clap_entry;
const clap_plugin_entry_t clap_entry = {CLAP_VERSION_INIT, [](const char*) { return true; }, [] {},
                                        [](const char* id) -> const void* {
                                            return id != nullptr && std::strcmp(id, CLAP_PLUGIN_FACTORY_ID) == 0 ? &factory
                                                                                                                 : nullptr;
                                        }};
