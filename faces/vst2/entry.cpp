#include "faces/vst2/entry.h"

namespace {

vantoric::AEffect* makeInstance(vantoric::HostCallback host) noexcept {
    if (!host) return nullptr;
    try {
        vantoric::AudioEffect* const effect = vantoric::createEffectInstance(host);
        return effect ? effect->getAeffect() : nullptr;
    } catch (...) {
        return nullptr;
    }
}

}  // namespace

#define VANTORIC_EXPORT __attribute__((visibility("default")))

extern "C" VANTORIC_EXPORT vantoric::AEffect* VSTPluginMain(vantoric::HostCallback host) { return makeInstance(host); }

// Older hosts look for `main`. No other function may have that name in C++, so it is given to the symbol alone.
extern "C" VANTORIC_EXPORT vantoric::AEffect* olderPluginMain(vantoric::HostCallback host) __asm__("main");
vantoric::AEffect* olderPluginMain(vantoric::HostCallback host) { return makeInstance(host); }
