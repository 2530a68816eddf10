#include "loading/sample_loader.h"

#include <utility>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"
#include "samples/autotune.h"
#include "samples/sample_levels.h"
#include "sound/kernels.h"

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
    WaveReading reading = readWave(task.path, task.channel);
    if (!reading.wave) {
        if (reading.wasRead && task.refusal == Refusal::leavesNone) {
            const EngineHold hold(access_, HoldFor::waves);
            holder->length = holder->loopStart = holder->loopEnd = 0;
        }
        if (!task.silent) messages_.post(reading.refused);
        return false;
    }
    place(task.layer, task.oscillator, std::move(*reading.wave), task.keepTuning, task.silent);
    return true;
} catch (...) {
    if (!task.silent) messages_.post(memoryTitle, memoryText);
    return false;
}

WaveReading SampleLoader::readWave(const std::string& path, int channel, Progress* progress) const {
    WaveReading reading;
    try {
        read(path, channel, progress, reading);
    } catch (...) {
        reading.wave.reset();
        reading.refused = Outcome::failure(memoryTitle, memoryText);
    }
    return reading;
}

void SampleLoader::read(const std::string& path, int channel, Progress* progress, WaveReading& reading) const {
    std::vector<std::uint8_t> file;
    switch (readWaveFile(path, file, maxWaveFileBytes, progress)) {
        case WaveRead::done: break;
        case WaveRead::tooLarge: reading.refused = Outcome::failure("Warning", "This wave file is too large."); return;
        default: return;
    }
    reading.wasRead = true;
    prepare(file, channel, progress, reading);
    if (reading.wave) reading.wave->path = path;
}

void SampleLoader::prepare(std::span<const std::uint8_t> file, int channel, Progress* progress, WaveReading& reading) const {
    const WaveLayout layout = parseWave(file);
    const bool isPlayable = layout.error != WaveError::none || layout.sampleRate <= maxSampleRate;
    const WaveError error = isPlayable ? layout.error : WaveError::badRate;
    if (error != WaveError::none) {
        reading.refused = Outcome::failure("Error", waveErrorText(error));
        return;
    }
    WaveSound sound{convertWave(file, layout, channel), layout.sampleRate, layout.loopOn, layout.loopStart, layout.loopEnd};
    if (!reduceSound(sound, levelRows().front(), progress)) return;
    PreparedWave wave;
    wave.loopWasSound = settleLoop(sound);
    wave.loopOn = sound.loopOn;
    const SampleContent content{sound.samples, static_cast<std::int32_t>(sound.loopStart),
                                static_cast<std::int32_t>(sound.loopEnd), sound.sampleRate};
    static const Flag never;
    const bool isPrepared =
        prepareSample(wave.sample, content, sound.loopOn, sound.loopOn, progress != nullptr ? progress->cancelled() : never);
    if (progress != nullptr && progress->isCancelled()) return;
    if (isPrepared) {
        reading.wave = std::move(wave);
    } else {
        reading.refused = Outcome::failure(memoryTitle, memoryText);
    }
}

void SampleLoader::tellLoop(PreparedWave& wave, bool silent) {
    if (!std::exchange(wave.loopWasSound, true) && !silent)
        messages_.post(wave.path, "The loop point information of this sample is not valid!");
}

void SampleLoader::place(int layer, int oscillator, PreparedWave&& wave, bool keepTuning, bool silent) {
    Sample* const holder = holderOf(holders_, layerOf(layer), oscillator);
    if (holder == nullptr) return;
    const EngineTurn turn(access_);
    exchangeSample(access_, *holder, std::move(wave.sample));
    tellLoop(wave, silent);
    writeParameters(layerOf(layer), oscillator, wave, keepTuning);
}

void SampleLoader::selectSample(int layer, int oscillator) {
    if (holderOf(holders_, layerOf(layer), oscillator) == nullptr) return;
    parameters_.setParameter(hostIndex(parameter::SynType1 + oscillator, layerOf(layer)), listValue(sampleType));
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

}  // namespace vantoric
