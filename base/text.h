// Texts of a limited length.
#pragma once

#include <cstddef>
#include <string_view>

namespace vantoric {

// Bytes of the character that `text` begins with, in UTF-8 (RFC 3629): 1 to 4. A byte that begins no character of that
// form stands alone: 1. 0 for an empty text. Any thread.
constexpr std::size_t characterBytes(std::string_view text) {
    const auto byteAt = [&](std::size_t at) { return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u; };
    const unsigned first = byteAt(0);
    if (first < 0xc2 || first > 0xf4) return text.empty() ? 0 : 1;
    const std::size_t count = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    // The second byte's range keeps out overlong forms, surrogates and what lies above U+10FFFF.
    const unsigned low = first == 0xe0 ? 0xa0 : first == 0xf0 ? 0x90 : 0x80;
    const unsigned high = first == 0xed ? 0x9f : first == 0xf4 ? 0x8f : 0xbf;
    if (byteAt(1) < low || byteAt(1) > high) return 1;
    for (std::size_t k = 2; k < count; ++k)
        if ((byteAt(k) & 0xc0) != 0x80) return 1;
    return count;
}

// The first `limit` bytes of a text, fewer if the last character would be split. Bytes that are no UTF-8 count as
// characters of their own. Any thread.
constexpr std::string_view cutText(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) return text;
    for (std::size_t back = 1; back <= 3 && back <= limit; ++back)
        if (characterBytes(text.substr(limit - back)) > back) return text.substr(0, limit - back);
    return text.substr(0, limit);
}

}  // namespace vantoric
