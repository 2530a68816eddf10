#include "apps/render/wave_output.h"

namespace vantoric::render {

std::unique_ptr<WaveOutput> WaveOutput::create(const std::string& path, int rate, SampleFormat format, std::string& problem) {
    static constexpr int subtypes[] = {SF_FORMAT_PCM_16, SF_FORMAT_PCM_24, SF_FORMAT_FLOAT};
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | subtypes[static_cast<int>(format)];
    auto output = std::make_unique<WaveOutput>();
    output->file_.reset(sf_open(path.c_str(), SFM_WRITE, &info));
    if (!output->file_) return problem = sf_strerror(nullptr), nullptr;
    sf_command(output->file_.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    return output;
}

bool WaveOutput::write(const float* samples, int frames) { return sf_writef_float(file_.get(), samples, frames) == frames; }

bool WaveOutput::close() { return sf_close(file_.release()) == 0; }

}  // namespace vantoric::render
