// What a program asks of a real number on its command line.
#pragma once

#include <cmath>
#include <string>

#include "base/number_text.h"

namespace vantoric {

// Empty if the whole text is a number from `low` to `high`, else what it should be. "nan" compares with no bound and "inf" is
// no number to count with: neither is taken.
inline std::string problemOfReal(const std::string& text, double low, double high) {
    const auto found = numberAtStart(text);
    const bool isNumber = found && found->bytes == text.size() && std::isfinite(found->number);
    if (isNumber && found->number >= low && found->number <= high) return {};
    return "should be a number from " + shortText(low, 7) + " to " + shortText(high, 7) + ", not \"" + text + "\"";
}

// Holds an option of the command line's parser to such a number.
template <class Option>
Option* holdToReal(Option* option, double low, double high) {
    return option->check([low, high](const std::string& text) { return problemOfReal(text, low, high); },
                         "FLOAT in [" + shortText(low, 7) + " - " + shortText(high, 7) + "]");
}

}  // namespace vantoric
