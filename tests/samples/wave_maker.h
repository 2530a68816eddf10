// Wave files as tests want them: sound ones, odd ones and broken ones.
#pragma once

#include <bit>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vantoric::test {

using Bytes = std::vector<std::uint8_t>;

inline void putText(Bytes& bytes, const std::string& text) {
    for (const char c : text) bytes.push_back(static_cast<std::uint8_t>(c));
}
inline void putNumber(Bytes& bytes, std::uint32_t value, int size) {
    for (int k = 0; k < size; ++k) bytes.push_back(static_cast<std::uint8_t>(value >> (8 * k)));
}

// A file piece by piece. Sizes are those of the pieces unless told otherwise.
struct WaveMaker {
    int tag = 1, channels = 1, bits = 16;
    bool isExtensible = false;  // `tag` is then that of the sub-format
    std::uint32_t rate = 44100;
    Bytes data;
    bool hasSizeOfItsOwn = false;
    std::uint32_t dataSize = 0;  // then

    WaveMaker& claimSize(std::uint32_t size) {
        hasSizeOfItsOwn = true;
        dataSize = size;
        return *this;
    }
    // Appends one number to the data in the width of `bits`; float files take the bits of a float.
    WaveMaker& put(std::int32_t value) {
        putNumber(data, static_cast<std::uint32_t>(value), bits / 8);
        return *this;
    }
    WaveMaker& putFloat(float value) {
        putNumber(data, std::bit_cast<std::uint32_t>(value), 4);
        return *this;
    }
    WaveMaker& putFrames(int count, const std::function<int(int)>& value = [](int i) { return i; }) {
        for (int i = 0; i < count; ++i)
            for (int c = 0; c < channels; ++c) put(value(i) + c * 1000);
        return *this;
    }

    Bytes head() const {
        Bytes bytes;
        putText(bytes, "RIFF");
        putNumber(bytes, 36 + static_cast<std::uint32_t>(data.size()), 4);
        putText(bytes, "WAVE");
        return bytes;
    }
    Bytes format() const {
        Bytes bytes;
        putText(bytes, "fmt ");
        putNumber(bytes, isExtensible ? 40 : 16, 4);
        putNumber(bytes, isExtensible ? 0xfffeu : static_cast<std::uint32_t>(tag), 2);
        putNumber(bytes, static_cast<std::uint32_t>(channels), 2);
        putNumber(bytes, rate, 4);
        putNumber(bytes, rate * 2, 4);
        putNumber(bytes, static_cast<std::uint32_t>(channels * bits / 8), 2);
        putNumber(bytes, static_cast<std::uint32_t>(bits), 2);
        if (!isExtensible) return bytes;
        putNumber(bytes, 22, 2);
        putNumber(bytes, static_cast<std::uint32_t>(bits), 2);
        putNumber(bytes, 0, 4);  // no places for the channels
        putNumber(bytes, static_cast<std::uint32_t>(tag), 2);
        for (const int byte : {0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xaa, 0, 0x38, 0x9b, 0x71})
            bytes.push_back(static_cast<std::uint8_t>(byte));
        return bytes;
    }
    Bytes dataChunk() const {
        Bytes bytes;
        putText(bytes, "data");
        putNumber(bytes, hasSizeOfItsOwn ? dataSize : static_cast<std::uint32_t>(data.size()), 4);
        bytes.insert(bytes.end(), data.begin(), data.end());
        return bytes;
    }
    static Bytes sampler(std::uint32_t start, std::uint32_t end, std::uint32_t loops = 1) {
        Bytes bytes;
        putText(bytes, "smpl");
        putNumber(bytes, 60, 4);
        for (int i = 0; i < 7; ++i) putNumber(bytes, 0, 4);
        putNumber(bytes, loops, 4);
        for (int i = 0; i < 3; ++i) putNumber(bytes, 0, 4);
        putNumber(bytes, start, 4);
        putNumber(bytes, end, 4);
        putNumber(bytes, 0, 4);
        putNumber(bytes, 0, 4);
        return bytes;
    }
    static Bytes join(const std::vector<Bytes>& pieces) {
        Bytes all;
        for (const Bytes& piece : pieces) all.insert(all.end(), piece.begin(), piece.end());
        return all;
    }
    Bytes file() const { return join({head(), format(), dataChunk()}); }
    Bytes looped(std::uint32_t start, std::uint32_t end, std::uint32_t loops = 1) const {
        return join({file(), sampler(start, end, loops)});
    }
};

}  // namespace vantoric::test
