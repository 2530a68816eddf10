// The WAV file that a render goes into.
#pragma once

#include <sndfile.h>

#include <memory>
#include <string>

namespace vantoric::render {

enum class SampleFormat { pcm16, pcm24, float32 };

class WaveOutput {
public:
    // Null with a reason if the file cannot be made. Rate in Hz.
    static std::unique_ptr<WaveOutput> create(const std::string& path, int rate, SampleFormat format, std::string& problem);

    // Interleaved stereo; whole-number formats are clipped at full scale. False if the disk does not take it.
    bool write(const float* samples, int frames);
    // Completes the header. False if that fails.
    bool close();

private:
    struct Close {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };
    std::unique_ptr<SNDFILE, Close> file_;
};

}  // namespace vantoric::render
