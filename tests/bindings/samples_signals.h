// Signals and files of the sample vectors, given by recipe.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "golden_runner/golden.h"

namespace golden {

using Samples = std::vector<std::int16_t>;

inline std::int16_t truncatedSample(double x) { return static_cast<std::int16_t>(std::fmin(std::fmax(x, -32768.0), 32767.0)); }

// The signal as 16-bit integers.
inline Samples sampleSignal(const json& s) {
    const std::string kind = s.at("kind");
    if (kind == "values") return s.at("values").get<Samples>();
    if (kind == "concat") {
        Samples all;
        for (const json& part : s.at("of")) {
            const Samples one = sampleSignal(part);
            all.insert(all.end(), one.begin(), one.end());
        }
        return all;
    }
    if (kind == "sum") {
        std::vector<int> sums;
        for (const json& part : s.at("of")) {
            const Samples one = sampleSignal(part);
            sums.resize(std::max(sums.size(), one.size()));
            for (std::size_t i = 0; i < one.size(); ++i) sums[i] += one[i];
        }
        Samples all;
        for (const int sum : sums) all.push_back(static_cast<std::int16_t>(std::min(std::max(sum, -32767), 32767)));
        return all;
    }
    if (kind == "decay") {
        Samples x = sampleSignal(s.at("of"));
        const double time = s.at("time");
        for (std::size_t i = 0; i < x.size(); ++i) x[i] = truncatedSample(x[i] * std::exp(-static_cast<double>(i) / time));
        return x;
    }
    const int n = s.at("n");
    const double amp = s.value("amp", 0.0);
    Samples x(static_cast<std::size_t>(n));
    std::uint32_t state = s.value("seed", 0u);
    for (int i = 0; i < n; ++i) {
        double value = 0.0;
        if (kind == "constant") {
            value = s.at("value");
        } else if (kind == "impulse") {
            value = i == s.at("at").get<int>() ? amp : 0.0;
        } else if (kind == "pulse") {
            value = i % s.at("period").get<int>() == s.value("at", 0) ? amp : 0.0;
        } else if (kind == "ramp") {
            value = s.at("from").get<double>() + s.at("step").get<double>() * i;
        } else if (kind == "wrapramp") {
            const std::int64_t sum = s.at("from").get<std::int64_t>() + s.at("step").get<std::int64_t>() * i;
            value = std::fmax(-32767.0, static_cast<double>((sum & 65535) - 32768));
        } else if (kind == "sine") {
            value = amp * std::sin(2.0 * M_PI * i / s.at("period").get<double>() + s.value("phase", 0.0));
        } else if (kind == "saw") {
            const double cycles = i / s.at("period").get<double>();
            value = amp * (2.0 * (cycles - std::floor(cycles)) - 1.0);
        } else if (kind == "noise") {
            state = state * 196314165u + 907633515u;
            value = (static_cast<double>(state >> 16) - 32768.0) * amp / 32768.0;
        } else {
            throw std::runtime_error("unknown signal " + kind);
        }
        x[static_cast<std::size_t>(i)] = truncatedSample(value);
    }
    return x;
}

// Place of a stepped factor among all that a knob can give.
inline int stepOf(double (*factor)(float), float value) {
    std::set<double> factors;
    for (int i = 0; i <= 4096; ++i) factors.insert(factor(static_cast<float>(i) / 4096.0f));
    return static_cast<int>(std::distance(factors.begin(), factors.find(factor(value))));
}

inline std::vector<std::uint8_t> fromHex(const std::string& text) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(text.substr(i, 2), nullptr, 16)));
    return bytes;
}

inline std::string toHex(const std::vector<std::uint8_t>& bytes, std::size_t count) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < count && i < bytes.size(); ++i) {
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 15];
    }
    return text;
}

inline void appendNumber(std::vector<std::uint8_t>& bytes, std::uint32_t value, int size) {
    for (int k = 0; k < size; ++k) bytes.push_back(static_cast<std::uint8_t>(value >> (8 * k)));
}

// One part of a file.
inline std::vector<std::uint8_t> partOf(const json& entry) {
    std::vector<std::uint8_t> bytes;
    const auto part = entry.begin();
    const std::string& kind = part.key();
    const json& value = part.value();
    if (kind == "hex") {
        const auto raw = fromHex(value);
        bytes.insert(bytes.end(), raw.begin(), raw.end());
    } else if (kind == "text") {
        const std::string text = value;
        bytes.insert(bytes.end(), text.begin(), text.end());
    } else if (kind == "u16") {
        appendNumber(bytes, value, 2);
    } else if (kind == "u32") {
        appendNumber(bytes, value, 4);
    } else if (kind == "zero") {
        bytes.resize(bytes.size() + value.get<std::size_t>());
    } else if (kind == "interleave") {
        const Samples left = sampleSignal(value.at(0)), right = sampleSignal(value.at(1));
        for (std::size_t i = 0; i < left.size(); ++i) {
            appendNumber(bytes, static_cast<std::uint16_t>(left[i]), 2);
            appendNumber(bytes, static_cast<std::uint16_t>(right.at(i)), 2);
        }
    } else {
        for (const std::int16_t v : sampleSignal(value)) {
            const auto wide = static_cast<std::uint32_t>(static_cast<std::int32_t>(v));
            if (kind == "s16")
                appendNumber(bytes, wide, 2);
            else if (kind == "u8")
                bytes.push_back(static_cast<std::uint8_t>((v + 32768) >> 8));
            else if (kind == "s24")
                appendNumber(bytes, wide << 8, 3);
            else if (kind == "s32")
                appendNumber(bytes, wide << 16, 4);
            else if (kind == "f32")
                appendNumber(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(v / 32768.0)), 4);
            else
                throw std::runtime_error("unknown part " + kind);
        }
    }
    return bytes;
}

// A file by its list of parts.
inline std::vector<std::uint8_t> fileOf(const json& parts) {
    std::vector<std::uint8_t> bytes;
    for (const json& entry : parts) {
        const std::vector<std::uint8_t> part = partOf(entry);
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

}  // namespace golden
