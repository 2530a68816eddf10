// Numbers in texts with a decimal point, whatever the host's locale says.
#pragma once

#include <charconv>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vantoric {

// The decimal number that a text begins with, and its bytes; no blanks before it, a sign may stand there. Nothing if there is
// none or it is beyond what a double holds.
struct NumberInText {
    double number;
    std::size_t bytes;
};
inline std::optional<NumberInText> numberAtStart(std::string_view text) {
    const std::size_t plus = text.starts_with('+') && !text.starts_with("+-") ? 1 : 0;
    double number = 0;
    const auto [end, error] = std::from_chars(text.data() + plus, text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    return NumberInText{number, static_cast<std::size_t>(end - text.data())};
}

// With so many digits behind the point, up to 9.
inline std::string decimalText(double number, int digits) {
    char text[400];  // the longest double has 309 digits before the point
    const auto [end, error] = std::to_chars(std::begin(text), std::end(text), number, std::chars_format::fixed, digits);
    return error == std::errc() ? std::string(text, end) : std::string();
}

// As short as it may be with so many digits that count, up to 9.
inline std::string shortText(double number, int digits) {
    char text[64];
    const auto [end, error] = std::to_chars(std::begin(text), std::end(text), number, std::chars_format::general, digits);
    return error == std::errc() ? std::string(text, end) : std::string();
}

}  // namespace vantoric
