// SHA-256 (FIPS 180-4) and base64 (RFC 4648) of byte ranges, as vectors give them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace golden {

using Bytes = std::vector<std::uint8_t>;

// 64 hexadecimal digits.
std::string sha256(std::span<const std::uint8_t> bytes);

std::string base64(std::span<const std::uint8_t> bytes);
Bytes fromBase64(const std::string& text);

}  // namespace golden
