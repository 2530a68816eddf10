// Parameters by name: "--set 2:Cutoff1=0.7".
#pragma once

#include <string>

#include "apps/render/plugin.h"

namespace vantoric::render {

// Sets one parameter from the text [LAYER:]NAME=VALUE. NAME as the plug-in shows it; a longer name matches by
// its first eight characters, since plug-ins cut theirs. LAYER n picks the n-th parameter of that name; 1 if left
// out. VALUE is one of
//   0 to 1     the value itself
//   #n         row n of a list, counted from 0 (n / 128)
//   other text what the display shows, letter case aside, found by trying values; "@text" for text that looks
//              like a number from 0 to 1
// False with a reason if there is no such parameter or no value that shows the text.
bool applySetting(PluginHost& plugin, const std::string& setting, std::string& problem);

}  // namespace vantoric::render
