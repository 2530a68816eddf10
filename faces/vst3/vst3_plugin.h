// The instrument as a VST 3 host sees it.
#pragma once

#include "pluginterfaces/base/funknown.h"

namespace vantoric::vst3_face {

// By which hosts know the class.
extern const Steinberg::TUID classId;

// Makes an instance and hands out its interface `wanted`, with one reference; kNoInterface if it has none of the kind.
Steinberg::tresult makePlugin(const Steinberg::TUID wanted, void** object) noexcept;

}  // namespace vantoric::vst3_face
