// The two symbols a plug-in module exports, VSTPluginMain and main, and the function they call.
#pragma once

#include "faces/vst2/audio_effect.h"

namespace vantoric {

// Defined by the plug-in: makes one instance with `new`; null or an exception if it cannot. `host` is not null. The
// host's pluginClose deletes what it returns.
AudioEffect* createEffectInstance(HostCallback host);

}  // namespace vantoric
