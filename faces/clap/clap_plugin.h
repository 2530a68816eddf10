// The instrument as a CLAP host sees it.
#pragma once

#include <clap/plugin.h>

namespace vantoric::clap_face {

// What the module holds: the one instrument.
const clap_plugin_descriptor_t& descriptor();

// Makes an instance for a host, which outlives it; null if it cannot be made, or `host` is of no version that is known. The
// host destroys it.
const clap_plugin_t* makePlugin(const clap_host_t* host) noexcept;

}  // namespace vantoric::clap_face
