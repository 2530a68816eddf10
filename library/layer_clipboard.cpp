#include "library/layer_clipboard.h"

#include <algorithm>
#include <utility>

#include "base/parameters.h"
#include "patch/exchange_contents.h"

namespace vantoric {

namespace {

struct Section {
    int first, last;
};
constexpr Section sections[] = {{203, 268}, {152, 174}};  // by LayerSection

std::size_t placeOf(int layer, int oscillator) { return static_cast<std::size_t>(layer * oscillatorCount + oscillator); }

void set(const PatchParts& parts, int number, int layer, float value) {
    parts.parameters.setParameter(hostIndex(number, layer), value, ChangeSource::window);
}

// A holder's new contents, all levels alike until the worker has made them.
bool prepare(Sample& fresh, const CopiedSample& copied) {
    fresh.length = static_cast<std::int32_t>(copied.samples.size());
    fresh.loopStart = copied.loopStart;
    fresh.loopEnd = copied.loopEnd;
    fresh.sampleRate = copied.sampleRate;
    if (fresh.length == 0) return true;
    if (!fresh.allocate(fresh.length)) return false;
    for (auto& level : fresh.levels) std::copy(copied.samples.begin(), copied.samples.end(), level.get());
    return true;
}

void exchange(const PatchParts& parts, Sample& holder, Sample&& fresh) {
    holder.levelsPending.set();
    exchangeContents(parts.access, holder, std::move(fresh));
}

void putWave(CustomWaveSlot& slot, const CustomCycle& wave) {
    slot.forget();
    slot.cycle = wave;
}

}  // namespace

CopiedSample copyOf(const Sample& sample) {
    CopiedSample copied;
    if (sample.length > 0 && sample.levels[0] != nullptr) {
        copied.samples.assign(sample.levels[0].get(), sample.levels[0].get() + sample.length);
        copied.loopStart = sample.loopStart;
        copied.loopEnd = sample.loopEnd;
        copied.sampleRate = sample.sampleRate;
    }
    return copied;
}

bool putSample(const PatchParts& parts, Sample& holder, const CopiedSample& copied) {
    Sample fresh;
    if (!prepare(fresh, copied)) return false;
    {
        const EngineHold hold(parts.access, HoldFor::waves);
        exchange(parts, holder, std::move(fresh));
    }
    parts.access.flags().rebuildRequested.set();
    return true;
}

void LayerClipboard::copyLayer(const PatchParts& parts, int layer) {
    const EngineTurn turn(parts.access);
    std::array<Oscillator, oscillatorCount> copied;
    for (int o = 0; o < oscillatorCount; ++o) {
        copied[o].wave = parts.waves[placeOf(layer, o)]->cycle;
        copied[o].sample = copyOf(*parts.samples[placeOf(layer, o)]);
    }
    oscillators_ = std::move(copied);
    for (int n = firstNumber; n <= lastNumber; ++n) values_[n] = parts.parameters.getParameter(hostIndex(n, layer));
    isEmpty_ = false;
    oscillator_ = 0;
}

bool LayerClipboard::pasteLayer(const PatchParts& parts, int layer) const {
    if (isEmpty_) return true;
    std::array<Sample, oscillatorCount> fresh;
    for (int o = 0; o < oscillatorCount; ++o)
        if (!prepare(fresh[o], oscillators_[o].sample)) return false;
    {
        const EngineHold hold(parts.access, HoldFor::waves);
        for (int n = firstNumber; n <= lastNumber; ++n) set(parts, n, layer, values_[n]);
        for (int o = 0; o < oscillatorCount; ++o) {
            putWave(*parts.waves[placeOf(layer, o)], oscillators_[o].wave);
            exchange(parts, *parts.samples[placeOf(layer, o)], std::move(fresh[o]));
        }
    }
    parts.access.flags().rebuildRequested.set();
    return true;
}

bool LayerClipboard::pasteOscillator(const PatchParts& parts, int layer, int o) const {
    if (isEmpty_ || oscillator_ < 0) return true;
    const Oscillator& copied = oscillators_[oscillator_];
    Sample fresh;
    if (!prepare(fresh, copied.sample)) return false;
    {
        const EngineHold hold(parts.access, HoldFor::waves);
        for (int n = firstOscillatorNumber; n < endOfOscillators; n += oscillatorCount)
            set(parts, n + o, layer, values_[n + oscillator_]);
        putWave(*parts.waves[placeOf(layer, o)], copied.wave);
        exchange(parts, *parts.samples[placeOf(layer, o)], std::move(fresh));
    }
    parts.access.flags().rebuildRequested.set();
    return true;
}

void LayerClipboard::pasteSection(const PatchParts& parts, int layer, LayerSection section) const {
    if (isEmpty_) return;
    const EngineTurn turn(parts.access);
    const auto [first, last] = sections[static_cast<int>(section)];
    for (int n = first; n <= last; ++n) set(parts, n, layer, values_[n]);
}

}  // namespace vantoric
