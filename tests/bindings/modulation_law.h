// Some cases carry the values of two forms of the fast exponential: those of the plain law 2^n (1 + 0.75 f + 0.25 f f),
// which the instrument follows, stand apart under a name of their own.
#pragma once

#include "golden_runner/golden.h"

namespace golden {

inline const json& expectedByLaw(const Case& c) {
    const auto law = c.whole.find("expected_law");
    return law != c.whole.end() ? *law : c.expected;
}

// As checkValues, against the values of the plain law.
template <json (*values)(const Case&)>
Outcome checkLaw(const Case& c) {
    return compare(expectedByLaw(c), values(c), c.tolerance);
}

}  // namespace golden
