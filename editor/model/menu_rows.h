// The rows of the menus as they read in the window, and the numbers by which commands know them. Rows count with their
// separators, "-". Constant; any thread but the audio thread.
#pragma once

#include "parameters/label_lists.h"

namespace vantoric {

// The rows of the menu of that tag (of namespace tag), or of the commands on samples; empty for any other tag, that of the
// wave menus among them, whose rows follow the folder of waves.
LabelList menuRows(int tag);

namespace file_row {
enum Number : int {
    load = 0,
    loadToLayer1 = 1,  // to 4
    saveAs = 6,
    quickSave = 7,
    saveLayer1 = 8,  // to 11
    deletePatch = 13,
    quickSample = 15,
    quickVocoder = 16,
    importSfz = 17,
    downloadSounds = 19,
};
}  // namespace file_row

namespace copy_row {
enum Number : int {
    completePatch = 0,
    layer = 2,
    layerToOscillator1 = 3,  // to 5
    layerToArpeggiator = 6,
    layerToStepLfo = 7,
    multilayer = 9,
    stack1 = 11,  // to 22
};
}  // namespace copy_row

namespace paste_row {
enum Number : int {
    loadToLayer = 0,
    completePatch = 2,
    layer = 4,
    oscillator1 = 5,  // to 7
    arpeggiator = 8,
    stepLfo = 9,
};
}  // namespace paste_row

namespace init_row {
enum Number : int { all = 0, layer = 1, arpeggiator = 2, matrix = 3, cleanMatrix = 4, create1 = 6 };  // create: to 24
}  // namespace init_row

namespace help_row {
enum Number : int {
    tooltips = 0,
    removeControllers = 2,
    home = 4,
    downloadSounds = 5,
    credits = 7,
    tutorial = 8,
    manual = 9,
    version = 11,
    updates = 12,
};
}  // namespace help_row

namespace wave_row {
enum Number : int { load = 0, save = 1, random = 2, firstFile = 4 };
}  // namespace wave_row

}  // namespace vantoric
