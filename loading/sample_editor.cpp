#include "loading/sample_editor.h"

#include <algorithm>
#include <new>
#include <utility>

#include "base/numbers.h"
#include "base/parameters.h"
#include "samples/autotune.h"
#include "samples/sample_kernels.h"
#include "samples/wave_file.h"

namespace vantoric {

namespace {

constexpr int muteMilliseconds = 100;  // for a running block to end

EditSound soundOf(const Sample& holder) {
    EditSound sound{{}, holder.loopStart, holder.loopEnd, holder.sampleRate};
    if (holder.length > 0 && holder.levels[0])
        sound.samples.assign(holder.levels[0].get(), holder.levels[0].get() + holder.length);
    return sound;
}

// Holds the engine silent; one that was silent before stays so.
class Mute {
public:
    Mute(Flag& muted, SleepFunction sleep) : muted_(muted), wasMuted_(muted.isSet()) {
        muted_.set();
        sleep(muteMilliseconds);
    }
    ~Mute() {
        if (!wasMuted_) muted_.clear();
    }
    Mute(const Mute&) = delete;
    Mute& operator=(const Mute&) = delete;

private:
    Flag& muted_;
    bool wasMuted_;
};

}  // namespace

SampleEditor::SampleEditor(EngineAccess& access, ParameterModel& parameters, const SampleHolders& holders, Messages& messages)
    : access_(access), parameters_(parameters), holders_(holders), messages_(messages) {}

bool SampleEditor::editSample(int layer, int oscillator, int command) try {
    if (command < 0 || command >= editCommandCount) return false;
    const EngineTurn turn(access_);
    if (!run(layer, oscillator, command)) return false;
    parameters_.changes().noteAll(ChangeSource::window);
    return true;
} catch (...) {
    messages_.post("Error", "Not enought memory.");
    return false;
}

bool SampleEditor::hasSample(int layer, int oscillator) {
    const Sample* const holder = holderOf(holders_, layer, oscillator);
    const EngineTurn turn(access_);
    return holder != nullptr && holder->length > 0 && holder->levels[0];
}

bool SampleEditor::exportWave(int layer, int oscillator, const std::string& path) try {
    const Sample* const holder = holderOf(holders_, layer, oscillator);
    if (holder == nullptr) return false;
    const EngineTurn turn(access_);
    const EditSound sound = soundOf(*holder);
    return !sound.samples.empty() && messages_.post(writeWave(sound.samples, path));
} catch (...) {
    messages_.post("Error", "Not enought memory.");
    return false;
}

bool SampleEditor::readPeaks(int layer, int oscillator, std::span<float> low, std::span<float> high) {
    const Sample* const holder = holderOf(holders_, layer, oscillator);
    const EngineTurn turn(access_);
    if (holder == nullptr || holder->length <= 0 || !holder->levels[0]) return false;
    const std::size_t stretches = std::min(low.size(), high.size()), length = static_cast<std::size_t>(holder->length);
    const std::int16_t* const samples = holder->levels[0].get();
    for (std::size_t i = 0; i < stretches; ++i) {
        const std::size_t from = i * length / stretches, to = std::max((i + 1) * length / stretches, from + 1);
        const auto [lowest, highest] = std::minmax_element(samples + from, samples + to);
        low[i] = static_cast<float>(*lowest) / 32768.0f;
        high[i] = static_cast<float>(*highest) / 32768.0f;
    }
    return true;
}

bool SampleEditor::setLoopPoints(int layer, int oscillator, std::int32_t start, std::int32_t end) {
    Sample* const holder = holderOf(holders_, layer, oscillator);
    const EngineTurn turn(access_);
    if (holder == nullptr || holder->length <= 0 || !holder->levels[0]) return false;
    const std::int32_t length = holder->length;
    const std::int32_t from = clampTo(std::min(start, end), 0, length), to = clampTo(std::max(start, end), 0, length);
    {
        const EngineHold hold(access_, HoldFor::waves);
        holder->loopStart = from;
        holder->loopEnd = to;
        writeSampleGuards(*holder, isLooped(layer, oscillator));
    }
    set(parameter::LoopSta1, layer, oscillator, static_cast<float>(from) / static_cast<float>(length));
    set(parameter::LoopEnd1, layer, oscillator, static_cast<float>(to) / static_cast<float>(length));
    return true;
}

bool SampleEditor::run(int layer, int oscillator, int command) {
    Sample* const holder = holderOf(holders_, layer, oscillator);
    const EditRole role = editCommands[static_cast<std::size_t>(command)].role;
    if (holder == nullptr || role == EditRole::separator || role == EditRole::exportWave) return false;
    if (role == EditRole::undo) return undo(layer, oscillator, *holder);
    EditSound before = soundOf(*holder);
    if (before.samples.empty()) return false;
    EditSound sound = before;
    if (role == EditRole::autotune)
        sound.sampleRate = rateOfLag(bestLag(sound.samples.data(), static_cast<std::int32_t>(sound.samples.size())));
    else
        applyEdit(sound, command, random);
    const bool loops = role == EditRole::loop;
    if (role == EditRole::autotune || role == EditRole::tune)
        setRate(*holder, sound.sampleRate);
    else
        put(*holder, sound, loops, loops || isLooped(layer, oscillator));
    writeParameters(layer, oscillator, role);
    backupOf(layer, oscillator) = std::move(before);
    return true;
}

bool SampleEditor::undo(int layer, int oscillator, Sample& holder) {
    std::optional<EditSound>& backup = backupOf(layer, oscillator);
    if (!backup) return false;
    const Mute mute(access_.flags().audioMuted, access_.sleepFunction());
    EditSound before = soundOf(holder);
    put(holder, *backup, true, isLooped(layer, oscillator));
    *backup = std::move(before);
    return true;
}

void SampleEditor::put(Sample& holder, const EditSound& sound, bool wrap, bool isLooped) {
    const SampleContent content{sound.samples, sound.loopStart, sound.loopEnd, sound.sampleRate};
    if (!exchangeSample(access_, holder, content, wrap, isLooped)) throw std::bad_alloc();
}

// The levels stay as they are.
void SampleEditor::setRate(Sample& holder, std::uint32_t rate) {
    const EngineHold hold(access_, HoldFor::waves);
    holder.sampleRate = rate;
}

bool SampleEditor::isLooped(int layer, int oscillator) const {
    return parameters_.getListIndex(hostIndex(parameter::LoopMod1 + oscillator, layer)) == loopModeLoop;
}

std::optional<EditSound>& SampleEditor::backupOf(int layer, int oscillator) {
    return backups_[static_cast<std::size_t>(layer * oscillatorCount + oscillator)];
}

void SampleEditor::writeParameters(int layer, int oscillator, EditRole role) {
    if (role == EditRole::loop) {
        set(parameter::LoopMod1, layer, oscillator, listValue(loopModeLoop));
        set(parameter::Start1, layer, oscillator, 0.0f);
    } else if (role == EditRole::tune) {
        set(parameter::Oct1, layer, oscillator, 0.5f);
        set(parameter::Semi1, layer, oscillator, 0.0f);
        set(parameter::Interv1, layer, oscillator, 0.0f);
        set(parameter::Detune1, layer, oscillator, 0.5f);
    }
}

void SampleEditor::set(int number, int layer, int oscillator, float value) {
    parameters_.setParameter(hostIndex(number + oscillator, layer), value);
}

}  // namespace vantoric
