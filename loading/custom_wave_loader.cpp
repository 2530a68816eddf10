#include "loading/custom_wave_loader.h"

#include "base/parameters.h"
#include "samples/wave_file.h"

namespace vantoric {

CustomWaveLoader::CustomWaveLoader(EngineAccess& access, ParameterModel& parameters, const CustomWaveHolders& waves,
                                   Messages& messages)
    : access_(access), parameters_(parameters), waves_(waves), messages_(messages) {}

CustomWaveSlot* CustomWaveLoader::waveOf(int layer, int oscillator) const {
    if (layer < 0 || layer >= layerCount || oscillator < 0 || oscillator >= oscillatorCount) return nullptr;
    return waves_[static_cast<std::size_t>(layer * oscillatorCount + oscillator)];
}

bool CustomWaveLoader::resynthesize(int layer, int oscillator, const std::string& path) try {
    CustomWaveSlot* const wave = waveOf(layer, oscillator);
    CustomCycle cycle{};
    if (wave == nullptr || !messages_.post(resynthesizeFile(path, cycle))) return false;
    const EngineTurn turn(access_);
    {
        // A rebuild that runs would end by writing the earlier wave over this one.
        const EngineHold hold(access_, HoldFor::waves);
        wave->forget();
        wave->cycle = cycle;
    }
    access_.flags().rebuildRequested.set();
    parameters_.setParameter(hostIndex(parameter::Start1 + oscillator, layer), 0.0f);
    parameters_.changes().noteAll(ChangeSource::window);
    return true;
} catch (...) {
    messages_.post("Error", notEnoughMemory);
    return false;
}

bool CustomWaveLoader::saveWave(int layer, int oscillator, const std::string& path) try {
    const CustomWaveSlot* const wave = waveOf(layer, oscillator);
    if (wave == nullptr) return false;
    const EngineTurn turn(access_);
    return messages_.post(writeWave(wave->cycle, path));
} catch (...) {
    messages_.post("Error", notEnoughMemory);
    return false;
}

}  // namespace vantoric
