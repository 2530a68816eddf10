#include "engine/q7audio.h"
#include "vst/entry.h"

namespace vantoric {

AudioEffect* createEffectInstance(HostCallback host) { return new Q7Audio(host); }

}  // namespace vantoric
