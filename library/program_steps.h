// Program changes as steps through the patches: a number never loads the patch of that number.
#pragma once

namespace vantoric {

// The step that a program change of `number` (0 to 127) makes after `last`: +1 to the next patch, -1 to the previous one.
// Upward if it is above the last, also where it wrapped around the end of the numbers.
inline int programStep(int last, int number) {
    int direction = number > last ? 1 : -1;
    if (number + 98 < last) direction = 1;
    if (last + 98 < number) direction = -1;
    return direction;
}

}  // namespace vantoric
