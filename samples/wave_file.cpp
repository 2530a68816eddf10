#include "samples/wave_file.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

#include "base/numbers.h"
#include "base/thread_check.h"
#include "platform/files.h"

namespace vantoric {

namespace {

using File = std::span<const std::uint8_t>;

constexpr std::size_t readMargin = 1000;    // zero bytes that stand behind a file's own
constexpr std::size_t headerSearch = 1000;  // bytes in which the format chunk is looked for
constexpr std::size_t formatPosition = 12;  // where it usually stands
constexpr int pcmTag = 1, floatTag = 3;
constexpr double readingPart = 0.3;    // of a load's progress; the rest is the reduction's
constexpr int extensibleTag = 0xfffe;  // the sub-format tells
// Of a sub-format, behind its two bytes of a tag: the standard media identifier.
constexpr std::uint8_t mediaId[] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71};

// Fields of the format chunk, from its tag on.
constexpr std::size_t tagField = 8, channelsField = 10, rateField = 12, bitsField = 22, subFormatField = 32;
// Fields of the sampler chunk, from its tag on.
constexpr std::size_t loopCountField = 36, loopStartField = 52, loopEndField = 56;

// Little-endian numbers; what lies behind the end of the file reads as 0.
std::uint32_t byteAt(File file, std::size_t at) { return at < file.size() ? file[at] : 0u; }
std::uint32_t word16(File file, std::size_t at) { return byteAt(file, at) | byteAt(file, at + 1) << 8; }
std::uint32_t word32(File file, std::size_t at) { return word16(file, at) | word16(file, at + 2) << 16; }

bool isTagAt(File file, std::size_t at, const char (&tag)[5]) {
    return at + 4 <= file.size() && std::memcmp(file.data() + at, tag, 4) == 0;
}

// The first place of a tag, at any byte.
std::optional<std::size_t> findTag(File file, const char (&tag)[5]) {
    const auto hit = std::search(file.begin(), file.end(), tag, tag + 4);
    if (hit == file.end()) return std::nullopt;
    return static_cast<std::size_t>(hit - file.begin());
}

std::optional<std::size_t> findFormat(File file) {
    if (isTagAt(file, formatPosition, "fmt ")) return formatPosition;
    return findTag(file.first(std::min(file.size(), headerSearch)), "fmt ");
}

// The tag that counts. An extensible format without a sub-format of the standard kind keeps its own.
std::uint32_t formatTag(File file, std::size_t format) {
    const std::uint32_t tag = word16(file, format + tagField);
    const std::size_t id = format + subFormatField + 2;
    if (tag != extensibleTag || id + sizeof mediaId > file.size()) return tag;
    return std::memcmp(file.data() + id, mediaId, sizeof mediaId) == 0 ? word16(file, format + subFormatField) : tag;
}

WaveError readFormat(File file, WaveLayout& layout) {
    const std::optional<std::size_t> format = findFormat(file);
    if (!format) return WaveError::badHeader;
    const std::uint32_t tag = formatTag(file, *format);
    const std::uint32_t channels = word16(file, *format + channelsField);
    const std::uint32_t bits = word16(file, *format + bitsField);
    if (tag != pcmTag && tag != floatTag) return WaveError::badEncoding;
    if (channels < 1 || channels > 2) return WaveError::badChannels;
    if (bits != 8 && bits != 16 && bits != 24 && bits != 32) return WaveError::badBits;
    layout.channels = static_cast<int>(channels);
    layout.bits = static_cast<int>(bits);
    layout.isFloat = tag == floatTag && bits == 32;
    layout.sampleRate = word32(file, *format + rateField);
    return WaveError::none;
}

void readLoop(File file, WaveLayout& layout) {
    const std::optional<std::size_t> sampler = findTag(file, "smpl");
    if (!sampler || (word32(file, *sampler + loopCountField) & 0xff) == 0) return;
    layout.loopOn = true;
    layout.loopStart = word32(file, *sampler + loopStartField);
    layout.loopEnd = word32(file, *sampler + loopEndField);
}

WaveError findData(File file, WaveLayout& layout) {
    const std::optional<std::size_t> data = findTag(file, "data");
    if (!data) return WaveError::noData;
    layout.dataOffset = *data + 8;
    const std::size_t there = file.size() > layout.dataOffset ? file.size() - layout.dataOffset : 0;
    std::size_t size = word32(file, *data + 4);
    if (size > there + readMargin) size = there;
    if (size == 0) return WaveError::noData;
    const auto frames = static_cast<std::uint64_t>(size) * 8 / static_cast<std::uint64_t>(layout.channels * layout.bits);
    layout.frames = static_cast<std::int32_t>(std::min<std::uint64_t>(frames, 0x7fffffff));
    return WaveError::none;
}

std::int16_t upperHalf(std::uint32_t word) {
    return std::max<std::int16_t>(static_cast<std::int16_t>(static_cast<std::uint16_t>(word)), -32767);
}

std::int16_t fromFloat(std::uint32_t bits, double scale) {
    const auto value = static_cast<double>(std::bit_cast<float>(bits));
    return value == value ? static_cast<std::int16_t>(truncateTo(value * scale, -32767, 32767)) : std::int16_t{0};
}

// One sample at byte `at`.
std::int16_t sampleAt(File file, const WaveLayout& layout, std::size_t at, double floatScale) {
    switch (layout.bits) {
        case 8: return static_cast<std::int16_t>(static_cast<int>(byteAt(file, at)) * 255 - 32640);
        case 16: {
            // One up, so that -32768 never occurs.
            const auto value = static_cast<std::int16_t>(static_cast<std::uint16_t>(word16(file, at)));
            return value == 32767 ? value : static_cast<std::int16_t>(value + 1);
        }
        case 24: return upperHalf(word16(file, at + 1));
        default: return layout.isFloat ? fromFloat(word32(file, at), floatScale) : upperHalf(word16(file, at + 2));
    }
}

constexpr int octaves = 7;
constexpr const char* noteNames[5][12] = {
    {"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"},
    {"C-", "C#-", "D-", "D#-", "E-", "F-", "F#-", "G-", "G#-", "A-", "A#-", "B-"},
    {"c", "c#", "d", "d#", "e", "f", "f#", "g", "g#", "a", "a#", "b"},
    {"C_", "Db", "D_", "Eb", "E_", "F_", "Gb", "G_", "Ab", "A_", "Bb", "B_"},
    {"c-", "c#-", "d-", "d#-", "e-", "f-", "f#-", "g-", "g#-", "a-", "a#-", "b-"},
};

bool nameTells(std::string_view name, int note, int octave) {
    return std::any_of(std::begin(noteNames), std::end(noteNames), [&](const auto& form) {
        return name.find(form[note] + std::to_string(octave)) != std::string_view::npos;
    });
}

// Puts little-endian numbers and tags one after the other.
class Writer {
public:
    explicit Writer(std::uint8_t* at) : at_(at) {}
    void tag(const char (&text)[5]) { at_ = std::copy_n(text, 4, at_); }
    void word16(std::uint32_t value) {
        *at_++ = static_cast<std::uint8_t>(value);
        *at_++ = static_cast<std::uint8_t>(value >> 8);
    }
    void word32(std::uint32_t value) {
        word16(value);
        word16(value >> 16);
    }

private:
    std::uint8_t* at_;
};

}  // namespace

const char* waveErrorText(WaveError error) {
    switch (error) {
        case WaveError::badHeader: return "Invalid wav file header.";
        case WaveError::badEncoding:
        case WaveError::badRate: return "Unsupported file format (no PCM or FLOAT encoding).";
        case WaveError::badChannels: return "Only mono or stereo samples can be loaded.";
        case WaveError::badBits: return "Only 8bit, 16bit, 24bit or 32 bit samples can be loaded.";
        case WaveError::noData: return "Corrupt Wav file format. No data found.";
        default: return "";
    }
}

WaveLayout parseWave(File file) {
    WaveLayout layout;
    layout.error = readFormat(file, layout);
    if (layout.error != WaveError::none) return layout;
    readLoop(file, layout);
    layout.error = findData(file, layout);
    return layout;
}

bool isStereoWave(File file) {
    const std::optional<std::size_t> format = findFormat(file);
    return format && word16(file, *format + channelsField) == 2;
}

std::vector<std::int16_t> convertWave(File file, const WaveLayout& layout, int channel, double floatScale) {
    std::vector<std::int16_t> samples(static_cast<std::size_t>(layout.frames));
    const auto width = static_cast<std::size_t>(layout.bits / 8);
    const std::size_t stride = width * static_cast<std::size_t>(layout.channels);
    std::size_t at = layout.dataOffset + (channel == 1 && layout.channels == 2 ? width : 0);
    for (std::int16_t& sample : samples) {
        sample = sampleAt(file, layout, at, floatScale);
        at += stride;
    }
    return samples;
}

bool reduceSound(WaveSound& sound, const FirRow& row, Progress* progress) {
    double all = 0, done = 0;  // samples of all passes
    for (std::size_t count = sound.samples.size(); count > static_cast<std::size_t>(maxPlayableSamples); count /= 2)
        all += static_cast<double>(count);
    const Flag* const cancel = progress != nullptr ? &progress->cancelled() : nullptr;
    while (sound.samples.size() > static_cast<std::size_t>(maxPlayableSamples)) {
        std::vector<std::int16_t> filtered(sound.samples.size());
        const auto count = static_cast<std::int32_t>(sound.samples.size());
        if (!firFilter(sound.samples.data(), count, filtered.data(), false, row, cancel)) return false;
        const std::size_t half = filtered.size() / 2;
        for (std::size_t i = 0; i < half; ++i) sound.samples[i] = filtered[2 * i];
        sound.samples.resize(half);
        sound.sampleRate /= 2;
        sound.loopStart /= 2;
        sound.loopEnd /= 2;
        done += count;
        if (progress != nullptr) progress->report(readingPart + (1 - readingPart) * done / all);
    }
    return true;
}

bool settleLoop(WaveSound& sound) {
    const auto length = static_cast<std::uint32_t>(sound.samples.size());
    const bool valid = sound.loopStart < sound.loopEnd && sound.loopEnd <= length;
    const bool wasOn = sound.loopOn;
    sound.loopOn = wasOn && valid;
    sound.loopStart = sound.loopOn ? sound.loopStart : 0;
    sound.loopEnd = sound.loopOn ? std::min(sound.loopEnd + 1, length) : length;
    return sound.loopOn == wasOn;
}

WaveRead readWaveFile(const std::string& path, std::vector<std::uint8_t>& bytes, std::size_t limit, Progress* progress) {
    notInsideAnyBlock();
    const auto goesOn = [progress](std::size_t read, std::size_t all) {
        if (all > 0) progress->report(readingPart * static_cast<double>(read) / static_cast<double>(all));
        return !progress->isCancelled();
    };
    switch (platform::tryReadFile(path, bytes, limit, progress != nullptr ? platform::GoesOn(goesOn) : nullptr)) {
        case platform::FileRead::done: return WaveRead::done;
        case platform::FileRead::tooLarge: return WaveRead::tooLarge;
        case platform::FileRead::stopped: return WaveRead::stopped;
        default: return WaveRead::unreadable;
    }
}

bool isStereoFile(const std::string& path) {
    std::vector<std::uint8_t> bytes;
    return readWaveFile(path, bytes) == WaveRead::done && isStereoWave(bytes);
}

std::optional<FileNameTuning> fileNameTuning(const std::string& path) {
    const std::size_t folderEnd = path.find_last_of("/\\");
    const std::string_view name = std::string_view(path).substr(folderEnd == std::string::npos ? 0 : folderEnd + 1);
    for (int note = 11; note >= 0; --note) {
        for (int octave = octaves - 1; octave >= 0; --octave) {
            if (!nameTells(name, note, octave)) continue;
            return FileNameTuning{note, octave, static_cast<float>(1.0 - (octave + 2) * 0.11123471),
                                  static_cast<float>(1.0 - note * 0.0769823)};
        }
    }
    return std::nullopt;
}

std::vector<std::uint8_t> waveFileBytes(std::span<const std::int16_t> samples) {
    const auto count = static_cast<std::uint32_t>(samples.size());
    std::vector<std::uint8_t> bytes(44 + 2 * samples.size());
    Writer writer(bytes.data());
    writer.tag("RIFF");
    writer.word32(2 * (count + 18));
    writer.tag("WAVE");
    writer.tag("fmt ");
    writer.word32(16);
    writer.word16(pcmTag);
    writer.word16(1);
    writer.word32(44100);
    writer.word32(88200);
    writer.word16(2);
    writer.word16(16);
    writer.tag("data");
    writer.word32(2 * count);
    for (const std::int16_t sample : samples) writer.word16(static_cast<std::uint16_t>(sample));
    return bytes;
}

Outcome writeWave(std::span<const std::int16_t> samples, const std::string& path) {
    notInsideAnyBlock();
    const std::vector<std::uint8_t> bytes = waveFileBytes(samples);
    if (platform::writeFile(path, bytes.data(), bytes.size())) return Outcome::success();
    return Outcome::failure(path, "File write error. File is write protected or opened by another application.");
}

}  // namespace vantoric
