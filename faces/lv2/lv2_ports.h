// What the LV2 plug-in is called and which ports it has: read by the plug-in, and by the program that writes its description.
#pragma once

#include <array>
#include <vector>

#include "base/parameters.h"
#include "faces/common/host_parameters.h"

namespace vantoric::lv2_face {

inline constexpr char pluginUri[] = "https://vantoric.example/vantoric";
inline constexpr char windowUri[] = "https://vantoric.example/vantoric#window";
inline constexpr char patchUri[] = "https://vantoric.example/vantoric#patch";       // the patch in force, a chunk
inline constexpr char portsUri[] = "https://vantoric.example/vantoric#portValues";  // that the patch knew, floats

enum Port : int { eventsPort, leftPort, rightPort, freeWheelPort, firstValuePort };

// Parameters that hosts may automate have a control port each, in plain values; the others belong to the patch alone.
inline const std::vector<int>& portParameters() {
    static const std::vector<int> indices = [] {
        std::vector<int> made;
        for (int i = 0; i < parameterCount; ++i)
            if (host_parameter::isAutomatable(i)) made.push_back(i);
        return made;
    }();
    return indices;
}

// Behind them: what the plug-in tells its host of.
inline int noticePort() { return firstValuePort + static_cast<int>(portParameters().size()); }

}  // namespace vantoric::lv2_face
