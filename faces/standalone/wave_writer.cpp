#include "faces/standalone/wave_writer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "platform/files.h"

namespace vantoric::standalone {
namespace {

constexpr std::uint32_t frameBytes = 8, unknownSize = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint16_t formatFloat = 3;

// The bytes of a head, one part after the other, numbers with the low byte first.
class HeadBytes {
public:
    explicit HeadBytes(std::uint8_t* to) : to_(to) {}
    HeadBytes& text(const char* four) {
        to_ = std::copy_n(four, 4, to_);
        return *this;
    }
    template <class Number>
    HeadBytes& number(Number value) {
        for (std::size_t i = 0; i < sizeof value; ++i) *to_++ = static_cast<std::uint8_t>(std::uint64_t{value} >> 8 * i);
        return *this;
    }

private:
    std::uint8_t* to_;
};

}  // namespace

std::unique_ptr<WaveWriter> WaveWriter::make(const std::string& path, int rate, std::string& problem) {
    std::FILE* const file = platform::makeFile(path);
    if (file == nullptr) return problem = std::strerror(errno), nullptr;
    std::setvbuf(file, nullptr, _IONBF, 0);  // what is lacking room shows at once
    std::unique_ptr<WaveWriter> writer(new WaveWriter(file, rate));
    if (!writer->update()) return problem = std::strerror(errno), nullptr;
    return writer;
}

WaveWriter::~WaveWriter() { update(); }

bool WaveWriter::write(const float* samples, std::size_t frames, std::string& problem) {
    errno = 0;
    const std::size_t written = std::fwrite(samples, frameBytes, frames, file_.get());
    frames_ += written;
    if (written == frames) return true;
    problem = errno != 0 ? std::strerror(errno) : "the disk takes no more";
    return false;
}

bool WaveWriter::update() {
    const auto bytes = head();
    const bool isWritten =
        std::fseek(file_.get(), 0, SEEK_SET) == 0 && std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) == bytes.size();
    return std::fseek(file_.get(), 0, SEEK_END) == 0 && isWritten;
}

// The part JUNK keeps the room that a large file's sizes need.
std::array<std::uint8_t, WaveWriter::headSize> WaveWriter::head() const {
    constexpr std::uint32_t sizesBytes = 28;
    const std::uint64_t data = frames_ * frameBytes, all = headSize - 8 + data;
    const bool isLarge = all >= unknownSize;
    const auto small = [isLarge](std::uint64_t size) { return isLarge ? unknownSize : static_cast<std::uint32_t>(size); };
    const auto rate = static_cast<std::uint32_t>(rate_);
    std::array<std::uint8_t, headSize> bytes{};
    HeadBytes to(bytes.data());
    to.text(isLarge ? "RF64" : "RIFF").number(small(all)).text("WAVE");
    to.text(isLarge ? "ds64" : "JUNK").number(sizesBytes);
    to.number(isLarge ? all : 0).number(isLarge ? data : 0).number(isLarge ? frames_ : 0).number(std::uint32_t{0});
    to.text("fmt ").number(std::uint32_t{16}).number(formatFloat).number(std::uint16_t{2}).number(rate);
    to.number(rate * frameBytes).number(static_cast<std::uint16_t>(frameBytes)).number(std::uint16_t{32});
    to.text("fact").number(std::uint32_t{4}).number(small(frames_));
    to.text("data").number(small(data));
    return bytes;
}

}  // namespace vantoric::standalone
