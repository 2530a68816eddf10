// Whether two pictures show the same, as far as that can be said across renderers of letters and edges.
#pragma once

#include "tests/window/window_host.h"

namespace testhost {

// The picture at another width, each pixel the mean of those that it stands for.
Picture reduced(const Picture& picture, int width);

struct Difference {
    double largest = 0;  // of a small neighbourhood's mean, 0 to 255
    int x = 0, y = 0;    // its place in the reference
};

// How a picture differs from a reduced one that was stored. Different shapes differ by 255.
Difference difference(const Picture& picture, const Picture& reference);

// Above what another renderer's edges come to, below what a missing caption does.
inline constexpr double tolerance = 9;

}  // namespace testhost
