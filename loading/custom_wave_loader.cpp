#include "loading/custom_wave_loader.h"

#include <algorithm>
#include <vector>

#include "base/engine_hold.h"
#include "base/parameters.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "samples/wave_file.h"

namespace vantoric {

CustomWaveLoader::CustomWaveLoader(EngineFlags& flags, ParameterModel& parameters, const CustomWaveHolders& waves,
                                   platform::Dialogs& dialogs, SleepFunction sleep)
    : flags_(flags), parameters_(parameters), waves_(waves), dialogs_(dialogs), sleep_(sleep) {}

CustomWave* CustomWaveLoader::waveOf(int layer, int oscillator) const {
    if (layer < 0 || layer >= layerCount || oscillator < 0 || oscillator >= oscillatorCount) return nullptr;
    return waves_[static_cast<std::size_t>(layer * oscillatorCount + oscillator)];
}

bool CustomWaveLoader::resynthesize(int layer, int oscillator, const std::string& path) {
    CustomWave* const wave = waveOf(layer, oscillator);
    std::array<std::int16_t, cycleSamples> cycle{};
    if (wave == nullptr || !resynthesizeFile(path, cycle, dialogs_)) return false;
    {
        // A rebuild that runs would end by writing the earlier wave over this one.
        const EngineHold hold(flags_, sleep_);
        std::copy(cycle.begin(), cycle.end(), wave->frame(0, 0));
    }
    flags_.rebuildRequested.set();
    parameters_.setParameter(hostIndex(parameter::Start1 + oscillator, layer), 0.0f);
    parameters_.changes().noteAll(ChangeSource::window);
    return true;
}

bool CustomWaveLoader::resynthesizeDialog(int layer, int oscillator) {
    std::string path;
    return platform::askFilePath(dialogs_, path, platform::wavetableFolder(), false, platform::FileKind::Wave) &&
           resynthesize(layer, oscillator, path);
}

bool CustomWaveLoader::randomWave(int layer, int oscillator) {
    const std::string folder = platform::wavetableFolder();
    std::vector<platform::FolderEntry> entries;
    platform::listFolder(folder, entries);
    std::erase_if(entries, [](const auto& entry) { return entry.isFolder || !entry.name.ends_with(".wav"); });
    if (entries.empty()) return false;
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    const std::size_t chosen = (random.next() >> 8) % entries.size();  // its low bits repeat soon
    return resynthesize(layer, oscillator, folder + entries[chosen].name);
}

bool CustomWaveLoader::saveWave(int layer, int oscillator) {
    const CustomWave* const wave = waveOf(layer, oscillator);
    std::string path;
    return wave != nullptr && platform::askFilePath(dialogs_, path, "", true, platform::FileKind::Wave) &&
           writeWave({wave->frame(0, 0), cycleSamples}, path, dialogs_);
}

}  // namespace vantoric
