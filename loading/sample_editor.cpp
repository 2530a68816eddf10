#include "loading/sample_editor.h"

#include <new>
#include <utility>

#include "base/engine_hold.h"
#include "base/numbers.h"
#include "base/parameters.h"
#include "samples/autotune.h"
#include "samples/wave_file.h"

namespace vantoric {

namespace {

constexpr int muteMilliseconds = 100;  // for a running block to end

// Under a hold, since another thread may be loading a patch.
EditSound soundOf(const Sample& holder, EngineFlags& flags, SleepFunction sleep) {
    const EngineHold hold(flags, sleep);
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

SampleEditor::SampleEditor(EngineFlags& flags, ParameterModel& parameters, const SampleHolders& holders,
                           platform::Dialogs& dialogs, SleepFunction sleep)
    : flags_(flags), parameters_(parameters), holders_(holders), dialogs_(dialogs), sleep_(sleep) {}

bool SampleEditor::editSample(int layer, int oscillator, int command) try {
    if (command < 0 || command >= editCommandCount || !run(layer, oscillator, command)) return false;
    parameters_.changes().noteAll(ChangeSource::window);
    return true;
} catch (const std::bad_alloc&) {
    dialogs_.message("Error", "Not enought memory.");
    return false;
}

bool SampleEditor::run(int layer, int oscillator, int command) {
    Sample* const holder = holderOf(holders_, layer, oscillator);
    const EditRole role = editCommands[static_cast<std::size_t>(command)].role;
    if (holder == nullptr || role == EditRole::separator) return false;
    if (role == EditRole::undo) return undo(layer, oscillator, *holder);
    EditSound before = soundOf(*holder, flags_, sleep_);
    if (before.samples.empty()) return false;
    const bool changes = role != EditRole::exportWave;
    if (changes) {
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
    } else {
        exportWave(before);
    }
    backupOf(layer, oscillator) = std::move(before);
    return changes;
}

bool SampleEditor::undo(int layer, int oscillator, Sample& holder) {
    std::optional<EditSound>& backup = backupOf(layer, oscillator);
    if (!backup) return false;
    const Mute mute(flags_.audioMuted, sleep_);
    EditSound before = soundOf(holder, flags_, sleep_);
    put(holder, *backup, true, isLooped(layer, oscillator));
    *backup = std::move(before);
    return true;
}

void SampleEditor::put(Sample& holder, const EditSound& sound, bool wrap, bool isLooped) {
    const SampleContent content{sound.samples, sound.loopStart, sound.loopEnd, sound.sampleRate};
    if (!exchangeSample(holder, content, wrap, isLooped, flags_, sleep_)) throw std::bad_alloc();
}

// The levels stay as they are.
void SampleEditor::setRate(Sample& holder, std::uint32_t rate) {
    const EngineHold hold(flags_, sleep_);
    holder.sampleRate = rate;
}

bool SampleEditor::isLooped(int layer, int oscillator) const {
    return parameters_.getListIndex(hostIndex(parameter::LoopMod1 + oscillator, layer)) == loopModeLoop;
}

std::optional<EditSound>& SampleEditor::backupOf(int layer, int oscillator) {
    return backups_[static_cast<std::size_t>(layer * oscillatorCount + oscillator)];
}

void SampleEditor::exportWave(const EditSound& sound) {
    std::string path;
    if (platform::askFilePath(dialogs_, path, "", true, platform::FileKind::Wave)) writeWave(sound.samples, path, dialogs_);
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
