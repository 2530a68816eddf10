// Numbers as text, independent of the process's locale, which a host may have set.
#pragma once

#include <charconv>
#include <string>

namespace vantoric {

// What "%.<decimals>f" writes in the plain locale: rounded to nearest from the exact value, decimal point,
// "-0" for a negative value that rounds to zero. `decimals` is 0 to 17. Any thread; may allocate.
inline std::string fixedText(double value, int decimals) {
    char text[400];  // the largest double has 309 digits before the point
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    return std::string(text, end.ptr);
}

}  // namespace vantoric
