// Writes what is played to a WAV file, on a thread of its own.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "faces/standalone/wave_writer.h"

namespace vantoric::standalone {

// Between the audio thread and the disk lies a ring of some seconds. Samples are written as they are played, as floating-point
// numbers, so that nothing is clipped.
class Recorder {
public:
    // Throws what the system throws for short memory.
    Recorder();
    // Ends a recording.
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // ---- one thread, not the audio thread

    // Holds what is played from now on, at a rate in Hz, for a recording that begins before the ring is full: no file is touched
    // until `start` names it. Does nothing while one runs.
    void listen(int rate);
    // Begins a recording at a rate in Hz, over a file that is there, with what was held for it. False with a reason if one runs
    // or the file cannot be made.
    bool start(const std::string& path, int rate, std::string& problem);
    // Ends it; returns when all is on disk. False if not all that was played is in the file: `trouble` says why.
    bool stop();
    // What follows is of this rate in Hz: a recording of another one ends as if by a failure, or begins anew where it is empty.
    void expectRate(int rate);
    // Whether one runs or is listened for. A disk that takes no more ends it; what was written before is complete by then.
    bool isRecording() const { return isActive_.load(std::memory_order_acquire); }
    // Whether the disk ended one that `stop` was not called for yet.
    bool hasFailed() const { return hasFailed_.load(std::memory_order_acquire); }
    // Of the recording that runs, or the last one.
    const std::string& path() const { return path_; }
    double seconds() const;
    std::string trouble() const;

    // ---- the audio thread

    // Takes a block where a recording runs. What the ring has no room for is left out and counted.
    void hear(const float* left, const float* right, int frames) noexcept;

private:
    static constexpr std::size_t ringFrames = std::size_t{1} << 18;  // more than five seconds at 48 kHz

    void run() noexcept;
    bool writeWaiting();
    void fail(std::string why) noexcept;

    std::vector<float> ring_;                                     // interleaved
    std::atomic<std::uint64_t> heard_{0}, written_{0}, lost_{0};  // frames, of all recordings
    std::atomic<bool> isActive_{false}, isHearing_{false}, isEnding_{false}, hasFailed_{false};
    std::uint64_t first_ = 0;  // frame of this recording
    int rate_ = 0;
    std::string path_;
    mutable std::mutex mutex_;
    std::string trouble_;
    std::unique_ptr<WaveWriter> file_;
    std::thread thread_;
};

}  // namespace vantoric::standalone
