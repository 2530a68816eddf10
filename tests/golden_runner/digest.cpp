#include "golden_runner/digest.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <span>

namespace golden {

namespace {

constexpr int rounds = 64;

// The first 32 bits of the fractional parts of the roots (square or cube) of the first primes.
template <std::size_t N, class Root>
std::array<std::uint32_t, N> fractionsOfRoots(Root root) {
    std::array<std::uint32_t, N> words{};
    std::size_t count = 0;
    for (int candidate = 2; count < N; ++candidate) {
        bool prime = true;
        for (int divisor = 2; divisor * divisor <= candidate; ++divisor) prime = prime && candidate % divisor != 0;
        if (!prime) continue;
        const long double value = root(static_cast<long double>(candidate));
        words[count++] = static_cast<std::uint32_t>((value - std::floor(value)) * 4294967296.0L);
    }
    return words;
}

void digestBlock(std::array<std::uint32_t, 8>& state, const std::uint8_t* block) {
    static const auto constants = fractionsOfRoots<rounds>([](long double x) { return std::cbrt(x); });
    std::uint32_t w[rounds];
    for (int t = 0; t < 16; ++t) {
        w[t] = static_cast<std::uint32_t>(block[4 * t]) << 24 | static_cast<std::uint32_t>(block[4 * t + 1]) << 16 |
               static_cast<std::uint32_t>(block[4 * t + 2]) << 8 | block[4 * t + 3];
    }
    for (int t = 16; t < rounds; ++t) {
        const std::uint32_t s0 = std::rotr(w[t - 15], 7) ^ std::rotr(w[t - 15], 18) ^ (w[t - 15] >> 3);
        const std::uint32_t s1 = std::rotr(w[t - 2], 17) ^ std::rotr(w[t - 2], 19) ^ (w[t - 2] >> 10);
        w[t] = w[t - 16] + s0 + w[t - 7] + s1;
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (int t = 0; t < rounds; ++t) {
        const std::uint32_t s1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
        const std::uint32_t t1 = h + s1 + ((e & f) ^ (~e & g)) + constants[static_cast<std::size_t>(t)] + w[t];
        const std::uint32_t s0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
        const std::uint32_t t2 = s0 + ((a & b) ^ (a & c) ^ (b & c));
        h = g, g = f, f = e, e = d + t1, d = c, c = b, b = a, a = t1 + t2;
    }
    const std::uint32_t last[8] = {a, b, c, d, e, f, g, h};
    for (std::size_t k = 0; k < 8; ++k) state[k] += last[k];
}

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string sha256(std::span<const std::uint8_t> bytes) {
    std::array<std::uint32_t, 8> state = fractionsOfRoots<8>([](long double x) { return std::sqrt(x); });
    Bytes padded(bytes.begin(), bytes.end());
    padded.push_back(0x80);
    while (padded.size() % 64 != 56) padded.push_back(0);
    const std::uint64_t bits = static_cast<std::uint64_t>(bytes.size()) * 8;
    for (int shift = 56; shift >= 0; shift -= 8) padded.push_back(static_cast<std::uint8_t>(bits >> shift));
    for (std::size_t at = 0; at < padded.size(); at += 64) digestBlock(state, &padded[at]);
    std::string text;
    for (const std::uint32_t word : state)
        for (int shift = 28; shift >= 0; shift -= 4) text += "0123456789abcdef"[(word >> shift) & 15];
    return text;
}

std::string base64(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) group = group << 8 | (at + k < bytes.size() ? bytes[at + k] : 0u);
        for (std::size_t k = 0; k < 4; ++k) text += at + k <= bytes.size() ? alphabet[(group >> (18 - 6 * k)) & 63] : '=';
    }
    return text;
}

Bytes fromBase64(const std::string& text) {
    Bytes bytes;
    std::uint32_t group = 0;
    int bits = 0;
    for (const char letter : text) {
        const char* found = letter == '\0' ? nullptr : std::strchr(alphabet, letter);
        if (found == nullptr) break;
        group = group << 6 | static_cast<std::uint32_t>(found - alphabet);
        bits += 6;
        if (bits >= 8) bytes.push_back(static_cast<std::uint8_t>(group >> (bits -= 8)));
    }
    return bytes;
}

}  // namespace golden
