#include "apps/patch/sample_bench.h"

#include <algorithm>

#include "base/numbers.h"
#include "library/show_messages.h"
#include "platform/files.h"
#include "platform/thread.h"
#include "sound/kernels.h"

namespace vantoric::patch {

namespace {

int layerOf(int wave) { return wave / oscillatorCount; }
int oscillatorOf(int wave) { return wave % oscillatorCount; }

SampleHolders holdersOf(Patch& patch) {
    SampleHolders holders{};
    for (std::size_t i = 0; i < holders.size(); ++i) holders[i] = &patch.samples[i];
    return holders;
}

// A custom wave is made one at a time, so that one place serves all.
CustomWaveHolders sharedBy(CustomWaveSlot& wave) {
    CustomWaveHolders holders;
    holders.fill(&wave);
    return holders;
}

}  // namespace

SampleBench::SampleBench(Patch& patch, platform::Dialogs& dialogs)
    : patch_(patch),
      dialogs_(dialogs),
      chunk_(patch, messages_),
      samples_(holdersOf(patch)),
      customWave_(std::make_unique<CustomWaveSlot>()),
      loader_(chunk_.access(), patch.parameters, samples_, messages_),
      editor_(chunk_.access(), patch.parameters, samples_, messages_),
      customWaveLoader_(chunk_.access(), patch.parameters, sharedBy(*customWave_), messages_),
      sfz_(chunk_.access(), patch.parameters, chunk_.program(), samples_, loader_, chunk_, messages_),
      files_(chunk_.chunk(), chunk_.program(), chunk_, messages_),
      quick_(files_, chunk_.program(), patch.parameters, loader_, chunk_.access(), messages_),
      chooser_(dialogs),
      imports_(quick_, sfz_, chooser_, messages_, dialogs, log_) {}

bool SampleBench::told(bool result) {
    showMessages(messages_, dialogs_);
    return result;
}

bool SampleBench::loadWave(int wave, const WaveOrder& order) {
    const int layer = layerOf(wave), oscillator = oscillatorOf(wave);
    if (!told(loader_.loadSampleChannel(layer, oscillator, order.path, order.keepTuning, order.channel, Refusal::leavesEarlier)))
        return false;
    if (order.autotune) loader_.autotune(layer, oscillator);
    told(true);
    play(wave, sampleType);
    return true;
}

bool SampleBench::resynthesize(int wave, const std::string& path) {
    if (!told(customWaveLoader_.resynthesize(layerOf(wave), oscillatorOf(wave), path))) return false;
    Cycle& cycle = patch_.customWaves[static_cast<std::size_t>(wave)];
    std::copy_n(customWave_->cycle.begin(), cycle.size(), cycle.begin());
    play(wave, customWaveType);
    return true;
}

bool SampleBench::importSfz(const std::string& path) {
    bool imported = false;  // the console answers at once
    imports_.importSfz(path, [&](bool done) { imported = done; });
    if (!imported) return false;
    patch_.name = chunk_.program().getProgramName();
    return true;
}

bool SampleBench::quickImport(const std::string& path, bool vocoder) {
    if (!told(vocoder ? quick_.importVocoder(path) : quick_.importSample(path))) return false;
    patch_.name = chunk_.program().getProgramName();
    return true;
}

void SampleBench::mark(int wave, std::int32_t start, std::int32_t end) {
    Sample& sample = sampleOf(wave);
    if (start < 0 || start > end || end > sample.length)
        throw PatchError("", "the markers should lie within the " + std::to_string(sample.length) + " samples of the oscillator");
    sample.loopStart = start;
    sample.loopEnd = end;
}

void SampleBench::edit(int wave, int command) {
    const EditCommand& row = editCommands[static_cast<std::size_t>(command)];
    if (row.role != EditRole::undo) sampleOf(wave);
    if (told(editor_.editSample(layerOf(wave), oscillatorOf(wave), command))) return;
    throw PatchError("", row.role == EditRole::undo ? "there is nothing to undo" : "the command could not be run");
}

void SampleBench::exportWave(int wave, const std::string& path) {
    sampleOf(wave);
    told(editor_.exportWave(layerOf(wave), oscillatorOf(wave), path));
}

Sample& SampleBench::sampleOf(int wave) {
    Sample& sample = patch_.samples[static_cast<std::size_t>(wave)];
    if (sample.length == 0)
        throw PatchError("", "layer " + std::to_string(layerOf(wave) + 1) + " oscillator " +
                                 std::to_string(oscillatorOf(wave) + 1) + " has no sample");
    return sample;
}

void SampleBench::play(int wave, int synthesisType) {
    const int layer = layerOf(wave), oscillator = oscillatorOf(wave);
    patch_.parameters.setParameterQuiet(parameter::Layer1On + layer, 1.0f);
    patch_.parameters.setParameterQuiet(hostIndex(parameter::On1 + oscillator, layer), 1.0f);
    patch_.parameters.setParameterQuiet(hostIndex(parameter::SynType1 + oscillator, layer), listValue(synthesisType));
}

}  // namespace vantoric::patch
