// A WAV file of stereo floating-point samples that grows while it is written.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace vantoric::standalone {

// Samples are appended; the head says from time to time how many there are, so that a file is whole at any moment. Beyond 4 GB
// it becomes an RF64 file (EBU Tech 3306), below it is a plain one. One thread at a time, not the audio thread.
class WaveWriter {
public:
    // Makes a file, over one that is there. Null with a reason if that fails.
    static std::unique_ptr<WaveWriter> make(const std::string& path, int rate, std::string& problem);
    // Writes the head once more; a failure stays unsaid.
    ~WaveWriter();
    WaveWriter(const WaveWriter&) = delete;
    WaveWriter& operator=(const WaveWriter&) = delete;

    // Appends frames of left and right in turn. False where the disk takes no more: `problem` says why, and what it took before
    // is in the file.
    bool write(const float* samples, std::size_t frames, std::string& problem);
    // Brings the head up to date. False if that fails.
    bool update();

private:
    static constexpr std::size_t headSize = 92;
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    WaveWriter(std::FILE* file, int rate) : file_(file), rate_(rate) {}
    std::array<std::uint8_t, headSize> head() const;

    std::unique_ptr<std::FILE, Close> file_;
    int rate_;
    std::uint64_t frames_ = 0;
};

}  // namespace vantoric::standalone
