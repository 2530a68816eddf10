// What a window shows, as far as commands read and change it. Without a window it stays as it is here.
#pragma once

namespace vantoric {

struct OnShow {
    int layer = 0;            // 0 to 3: the one whose controls show, which layer commands work on
    bool multilayer = false;  // a change of a layer's parameter goes to all four layers
    int loadTarget = 0;       // the next patch goes to this layer, 1 to 4; 0: it replaces the whole patch
    unsigned armed = 0;       // counts how often a layer was told to wait for one
};

}  // namespace vantoric
