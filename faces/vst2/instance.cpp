#include "faces/vst2/entry.h"
#include "faces/vst2/q7audio.h"

namespace vantoric {

AudioEffect* createEffectInstance(HostCallback host) { return new Q7Audio(host); }

}  // namespace vantoric
