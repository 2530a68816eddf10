// The sizes of the window. Constant; any thread but the audio thread.
#pragma once

#include "parameters/label_lists.h"

namespace vantoric {

struct SizeRow {
    const char* label;
    int width, height;  // of the frame before zoom
    double zoom;
};

// The size of index 0 to 17, held to that.
const SizeRow& sizeRow(int index);

// The labels of all sizes: the rows of the menu.
LabelList sizeLabels();

}  // namespace vantoric
