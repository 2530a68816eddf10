#include "loading/sample_loader.h"

#include <new>
#include <vector>

#include "base/engine_hold.h"
#include "base/numbers.h"
#include "base/parameters.h"
#include "patch/patch_file.h"
#include "samples/autotune.h"
#include "samples/sample_levels.h"

namespace vantoric {

namespace {
constexpr char memoryTitle[] = "Error L2";
constexpr char memoryText[] = "Not enought memory to load sample.";
}  // namespace

SampleLoader::SampleLoader(EngineFlags& flags, ParameterModel& parameters, const SampleHolders& holders,
                           platform::Dialogs& dialogs, SleepFunction sleep)
    : flags_(flags), parameters_(parameters), holders_(holders), dialogs_(dialogs), sleep_(sleep) {}

bool SampleLoader::loadSample(int layer, int oscillator, const std::string& path, bool silent) {
    return load({layerOf(layer), oscillator, path, 0, silent, false});
}

bool SampleLoader::loadSampleChannel(int layer, int oscillator, const std::string& path, bool keepTuning, int channel) {
    return load({layerOf(layer), oscillator, path, channel, false, keepTuning});
}

bool SampleLoader::loadChosen(int layer, int oscillator, const std::string& path, bool wasDropped) {
    if (!loadSample(layer, oscillator, path)) return false;
    const bool tune =
        dialogs_.question("Autotune", wasDropped ? "Autotune the sample?"
                                                 : "Should the sample be tuned automatically (YES) or be tuned to C (NO)?");
    if (tune) autotune(layer, oscillator);
    return true;
}

bool SampleLoader::loadSampleDialog(int oscillator) {
    std::string path;
    return askWaveFile(path) && loadChosen(-1, oscillator, path, false);
}

bool SampleLoader::askWaveFile(std::string& path) {
    if (!platform::askFilePath(dialogs_, path, lastFolder_, false, platform::FileKind::Wave)) return false;
    const std::string folder = folderOfPath(path);
    if (!folder.empty()) lastFolder_ = folder;
    return true;
}

void SampleLoader::autotune(int layer, int oscillator) try {
    Sample* const holder = holderOf(holders_, layerOf(layer), oscillator);
    if (holder == nullptr) return;
    std::vector<std::int16_t> copy;
    {
        const EngineHold hold(flags_, sleep_);
        if (holder->length <= 0 || !holder->levels[0]) return;
        copy.assign(holder->levels[0].get(), holder->levels[0].get() + holder->length);
    }
    const std::uint32_t rate = rateOfLag(bestLag(copy.data(), static_cast<std::int32_t>(copy.size())));
    const EngineHold hold(flags_, sleep_);
    holder->sampleRate = rate;
} catch (const std::bad_alloc&) {
    dialogs_.message(memoryTitle, memoryText);
}

bool SampleLoader::load(const Task& task) try {
    Sample* const holder = holderOf(holders_, task.layer, task.oscillator);
    if (holder == nullptr) return false;
    std::vector<std::uint8_t> file;
    switch (readWaveFile(task.path, file)) {
        case WaveRead::unreadable: return false;
        case WaveRead::tooLarge: return refuse(task, "Warning", "This wave file is too large.");
        case WaveRead::done: break;
    }
    {
        const EngineHold hold(flags_, sleep_);
        holder->length = holder->loopStart = holder->loopEnd = 0;
    }
    WaveSound sound;
    const WaveError error = read(task, file, sound);
    if (error != WaveError::none) return refuse(task, "Error", waveErrorText(error));
    const bool loopIsSound = settleLoop(sound);
    if (!publish(task, sound)) return refuse(task, memoryTitle, memoryText);
    if (!loopIsSound) refuse(task, task.path.c_str(), "The loop point information of this sample is not valid!");
    writeParameters(task, sound.loopOn);
    return true;
} catch (const std::bad_alloc&) {
    return refuse(task, memoryTitle, memoryText);
}

WaveError SampleLoader::read(const Task& task, std::span<const std::uint8_t> file, WaveSound& sound) const {
    const WaveLayout layout = parseWave(file);
    if (layout.error != WaveError::none) return layout.error;
    sound = {convertWave(file, layout, task.channel), layout.sampleRate, layout.loopOn, layout.loopStart, layout.loopEnd};
    reduceSound(sound, levelRows().front());
    return WaveError::none;
}

bool SampleLoader::publish(const Task& task, const WaveSound& sound) {
    const SampleContent content{sound.samples, static_cast<std::int32_t>(sound.loopStart),
                                static_cast<std::int32_t>(sound.loopEnd), sound.sampleRate};
    Sample& holder = *holderOf(holders_, task.layer, task.oscillator);
    return exchangeSample(holder, content, sound.loopOn, sound.loopOn, flags_, sleep_);
}

void SampleLoader::writeParameters(const Task& task, bool loopOn) {
    setParameter(task, parameter::LoopMod1, listValue(loopOn ? loopModeLoop : loopModeSingle));
    setParameter(task, parameter::Start1, 0.0f);
    if (task.keepTuning) return;
    const std::optional<FileNameTuning> tuning = fileNameTuning(task.path);
    if (!tuning) return;
    setParameter(task, parameter::Oct1, tuning->oct);
    setParameter(task, parameter::Semi1, tuning->semi);
}

void SampleLoader::setParameter(const Task& task, int number, float value) {
    parameters_.setParameter(hostIndex(number + task.oscillator, task.layer), value);
}

bool SampleLoader::refuse(const Task& task, const char* title, const char* text) {
    if (!task.silent) dialogs_.message(title, text);
    return false;
}

}  // namespace vantoric
