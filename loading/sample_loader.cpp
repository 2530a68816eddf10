#include "loading/sample_loader.h"

#include <utility>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"
#include "samples/autotune.h"
#include "samples/sample_levels.h"

namespace vantoric {

namespace {
constexpr char memoryTitle[] = "Error L2";
constexpr char memoryText[] = "Not enought memory to load sample.";
}  // namespace

SampleLoader::SampleLoader(EngineAccess& access, ParameterModel& parameters, const SampleHolders& holders, Messages& messages)
    : access_(access), parameters_(parameters), holders_(holders), messages_(messages) {}

bool SampleLoader::loadSample(int layer, int oscillator, const std::string& path, bool silent, Refusal refusal) {
    return load({layerOf(layer), oscillator, path, 0, silent, false, refusal});
}

bool SampleLoader::loadSampleChannel(int layer, int oscillator, const std::string& path, bool keepTuning, int channel,
                                     Refusal refusal) {
    return load({layerOf(layer), oscillator, path, channel, false, keepTuning, refusal});
}

void SampleLoader::autotune(int layer, int oscillator) try {
    Sample* const holder = holderOf(holders_, layerOf(layer), oscillator);
    if (holder == nullptr) return;
    const EngineTurn turn(access_);
    if (holder->length <= 0 || !holder->levels[0]) return;
    const std::vector<std::int16_t> copy(holder->levels[0].get(), holder->levels[0].get() + holder->length);
    const std::uint32_t rate = rateOfLag(bestLag(copy.data(), static_cast<std::int32_t>(copy.size())));
    const EngineHold hold(access_, HoldFor::waves);
    holder->sampleRate = rate;
} catch (...) {
    messages_.post(memoryTitle, memoryText);
}

bool SampleLoader::load(const Task& task) try {
    Sample* const holder = holderOf(holders_, task.layer, task.oscillator);
    if (holder == nullptr) return false;
    const EngineTurn turn(access_);
    std::vector<std::uint8_t> file;
    if (!readBytes(task.path, task.silent, file)) return false;
    if (task.refusal == Refusal::leavesNone) {
        const EngineHold hold(access_, HoldFor::waves);
        holder->length = holder->loopStart = holder->loopEnd = 0;
    }
    std::optional<PreparedWave> wave = prepare(file, task.path, task.channel, task.silent);
    if (!wave) return false;
    place(task.layer, task.oscillator, std::move(*wave), task.keepTuning, task.silent);
    return true;
} catch (...) {
    return refuse(task.silent, memoryTitle, memoryText);
}

std::optional<PreparedWave> SampleLoader::prepareWave(const std::string& path, int channel, bool silent) try {
    std::vector<std::uint8_t> file;
    if (!readBytes(path, silent, file)) return std::nullopt;
    return prepare(file, path, channel, silent);
} catch (...) {
    refuse(silent, memoryTitle, memoryText);
    return std::nullopt;
}

bool SampleLoader::readBytes(const std::string& path, bool silent, std::vector<std::uint8_t>& file) {
    switch (readWaveFile(path, file)) {
        case WaveRead::done: return true;
        case WaveRead::tooLarge: return refuse(silent, "Warning", "This wave file is too large.");
        default: return false;
    }
}

std::optional<PreparedWave> SampleLoader::prepare(std::span<const std::uint8_t> file, const std::string& path, int channel,
                                                  bool silent) {
    const WaveLayout layout = parseWave(file);
    const bool isPlayable = layout.error != WaveError::none || layout.sampleRate <= maxSampleRate;
    const WaveError error = isPlayable ? layout.error : WaveError::badRate;
    if (error != WaveError::none) {
        refuse(silent, "Error", waveErrorText(error));
        return std::nullopt;
    }
    WaveSound sound{convertWave(file, layout, channel), layout.sampleRate, layout.loopOn, layout.loopStart, layout.loopEnd};
    reduceSound(sound, levelRows().front());
    PreparedWave wave;
    wave.path = path;
    wave.loopWasSound = settleLoop(sound);
    wave.loopOn = sound.loopOn;
    const SampleContent content{sound.samples, static_cast<std::int32_t>(sound.loopStart),
                                static_cast<std::int32_t>(sound.loopEnd), sound.sampleRate};
    if (prepareSample(wave.sample, content, sound.loopOn, sound.loopOn, access_.flags().rebuildCancel)) return wave;
    refuse(silent, memoryTitle, memoryText);
    return std::nullopt;
}

void SampleLoader::place(int layer, int oscillator, PreparedWave&& wave, bool keepTuning, bool silent) {
    Sample* const holder = holderOf(holders_, layerOf(layer), oscillator);
    if (holder == nullptr) return;
    const EngineTurn turn(access_);
    exchangeSample(access_, *holder, std::move(wave.sample));
    if (!wave.loopWasSound) refuse(silent, wave.path, "The loop point information of this sample is not valid!");
    writeParameters(layerOf(layer), oscillator, wave, keepTuning);
}

void SampleLoader::writeParameters(int layer, int oscillator, const PreparedWave& wave, bool keepTuning) {
    const auto set = [&](int number, float value) { parameters_.setParameter(hostIndex(number + oscillator, layer), value); };
    set(parameter::LoopMod1, listValue(wave.loopOn ? loopModeLoop : loopModeSingle));
    set(parameter::Start1, 0.0f);
    if (keepTuning) return;
    const std::optional<FileNameTuning> tuning = fileNameTuning(wave.path);
    if (!tuning) return;
    set(parameter::Oct1, tuning->oct);
    set(parameter::Semi1, tuning->semi);
}

bool SampleLoader::refuse(bool silent, std::string_view title, std::string_view text) {
    if (!silent) messages_.post(title, text);
    return false;
}

}  // namespace vantoric
