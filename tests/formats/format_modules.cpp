// The modules of all formats that this build has.
#include <dlfcn.h>

#include <stdexcept>

#include "tests/formats/format_host.h"

namespace testhost {

void* loadModule(const char* path, const char* symbol) {
    void* const module = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    void* const found = module != nullptr ? dlsym(module, symbol) : nullptr;
    if (found == nullptr) throw std::runtime_error(dlerror());
    return found;
}

std::vector<Format> formats() {
    return {
#ifdef CLAP_MODULE
        {"clap", makeClapHost, true},
#endif
#ifdef LV2_MODULE
        {"lv2", makeLv2Host, false},
#endif
#ifdef VST3_MODULE
        {"vst3", makeVst3Host, true},
#endif
    };
}

}  // namespace testhost
