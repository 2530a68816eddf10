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

// The levels stay as they are.
bool setsOnlyRate(EditRole role) { return role == EditRole::autotune || role == EditRole::tune; }

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

bool SampleEditor::editSample(int layer, int oscillator, int command) {
    const EngineTurn turn(access_);
    std::optional<SampleEdit> edit = beginEdit(layer, oscillator, command);
    if (!edit) return false;
    makeEdit(*edit, access_.flags().rebuildCancel);
    return finishEdit(std::move(*edit));
}

std::optional<SampleEdit> SampleEditor::beginEdit(int layer, int oscillator, int command) try {
    const Sample* const holder = holderOf(holders_, layer, oscillator);
    if (holder == nullptr || command < 0 || command >= editCommandCount) return {};
    const EditRole role = editCommands[static_cast<std::size_t>(command)].role;
    if (role == EditRole::separator || role == EditRole::exportWave) return {};
    const EngineTurn turn(access_);
    const std::optional<EditSound>& backup = backupOf(layer, oscillator);
    if (role == EditRole::undo && !backup) return {};
    SampleEdit edit;
    edit.layer = layer;
    edit.oscillator = oscillator;
    edit.command = command;
    edit.isLooped = isLooped(layer, oscillator);
    edit.before = soundOf(*holder);
    if (role != EditRole::undo && edit.before.samples.empty()) return {};
    edit.after = role == EditRole::undo ? *backup : edit.before;
    edit.random = random;
    edit.source = holder->levels[0].get();
    return edit;
} catch (...) {
    messages_.post("Error", notEnoughMemory);
    return {};
}

void SampleEditor::makeEdit(SampleEdit& edit, const Flag& cancel) try {
    const EditRole role = editCommands[static_cast<std::size_t>(edit.command)].role;
    EditSound& sound = edit.after;
    if (role == EditRole::autotune)
        sound.sampleRate = rateOfLag(bestLag(sound.samples.data(), static_cast<std::int32_t>(sound.samples.size())));
    else if (role != EditRole::undo)
        applyEdit(sound, edit.command, edit.random);
    if (setsOnlyRate(role)) {
        edit.isMade = true;
        return;
    }
    const bool loops = role == EditRole::loop;
    const SampleContent content{sound.samples, sound.loopStart, sound.loopEnd, sound.sampleRate};
    edit.isMade = prepareSample(edit.prepared, content, loops || role == EditRole::undo, loops || edit.isLooped, cancel);
} catch (...) {
    edit.isMade = false;  // memory is short
}

bool SampleEditor::finishEdit(SampleEdit&& edit) try {
    Sample* const holder = holderOf(holders_, edit.layer, edit.oscillator);
    if (!edit.isMade) throw std::bad_alloc();
    const EngineTurn turn(access_);
    if (holder == nullptr || holder->levels[0].get() != edit.source) return false;
    const EditRole role = editCommands[static_cast<std::size_t>(edit.command)].role;
    std::optional<Mute> mute;
    if (role == EditRole::undo) mute.emplace(access_.flags().audioMuted, access_.sleepFunction());
    if (setsOnlyRate(role))
        setRate(*holder, edit.after.sampleRate);
    else
        exchangeSample(access_, *holder, std::move(edit.prepared));
    writeParameters(edit.layer, edit.oscillator, role);
    backupOf(edit.layer, edit.oscillator) = std::move(edit.before);
    random = edit.random;
    parameters_.changes().noteAll(ChangeSource::window);
    return true;
} catch (...) {
    messages_.post("Error", notEnoughMemory);
    return false;
}

bool SampleEditor::hasSample(int layer, int oscillator) {
    const Sample* const holder = holderOf(holders_, layer, oscillator);
    const EngineTurn turn(access_);
    return holder != nullptr && holder->length > 0 && holder->levels[0];
}

std::vector<std::int16_t> SampleEditor::samplesOf(int layer, int oscillator) {
    const Sample* const holder = holderOf(holders_, layer, oscillator);
    if (holder == nullptr) return {};
    const EngineTurn turn(access_);
    return soundOf(*holder).samples;
}

bool SampleEditor::exportWave(int layer, int oscillator, const std::string& path) try {
    const std::vector<std::int16_t> samples = samplesOf(layer, oscillator);
    return !samples.empty() && messages_.post(writeWave(samples, path));
} catch (...) {
    messages_.post("Error", notEnoughMemory);
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
