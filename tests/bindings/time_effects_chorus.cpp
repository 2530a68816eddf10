// The chorus family, rendered.
#include "bindings/time_effects_render.h"

namespace {

const golden::Binding bindings[] = {
    {"time_effects", "chorus_*", golden::renderedEffect<vantoric::Chorus>},
};

}  // namespace
