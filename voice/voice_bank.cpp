#include "voice/voice_bank.h"

#include <algorithm>

#include "sound/analog_clip.h"

namespace vantoric {

namespace {

constexpr float analogMakeDown = 0.333f;  // level behind the filters of an analog voice

// Applies `function` to every sample of the lanes in `mask`, four voices at a time.
template <class Function>
void onLanes(float* buffer, int count, LaneMask mask, Function&& function) {
    using Quad = Lanes<float, laneGroup>;
    for (int first = 0; first < voiceCount; first += laneGroup) {
        if (((mask >> first) & 15) == 0) continue;
        const auto wanted = maskOf<Quad>(mask, first);
        for (int i = 0; i < count; ++i) {
            float* at = buffer + i * voiceCount + first;
            const Quad x(at, stdx::element_aligned);
            select(wanted, function(x, i * voiceCount + first), x).copy_to(at, stdx::element_aligned);
        }
    }
}

}  // namespace

bool distortionMayDraw(int type) {
    const int variant = distortionVariant(type);
    return variant == distortion::Noise<float>::variant || variant == distortion::NoiseRm<float>::variant;
}

void VoiceBank::reset(int voice) {
    oscillators.reset(voice);
    for (FilterBank& filter : filters) filter.clear(voice);
    for (DistortionBank& distortion : distortions) distortion.reset(voice);
    output.reset(voice);
    setAnalog(voice, false);
    setSerial(voice, false);
    for (int i = voice; i < maxTickSamples * voiceCount; i += voiceCount) f1_[i] = f2_[i] = 0.0f;
}

DrawStages VoiceBank::drawStages(LaneMask mask) const {
    constexpr DrawStage filterStages[] = {DrawStage::filter1, DrawStage::filter2};
    constexpr DrawStage distortionStages[] = {DrawStage::distortion1, DrawStage::distortion2};
    DrawStages stages;
    for (int i = 0; i < filterCount; ++i) {
        if (filterDraws(i, mask)) stages.add(filterStages[i]);
        if ((distortionDraws_[i] & mask) != 0) stages.add(distortionStages[i]);
    }
    return stages;
}

void VoiceBank::clipInputs(int count, LaneMask mask) {
    const auto analog = static_cast<LaneMask>(analog_ & mask);
    if (analog == 0) return;
    const auto clip = [](auto x, int) { return analogSoftClip(x); };
    onLanes(f1_, count, analog, clip);
    onLanes(f2_, count, analog, clip);
}

void VoiceBank::joinSerial(int count, LaneMask mask) {
    onLanes(f2_, count, static_cast<LaneMask>(serial_ & mask),
            [this](auto x, int at) { return x + decltype(x)(f1_ + at, stdx::element_aligned); });
}

void VoiceBank::scaleOutputs(int count, LaneMask mask) {
    const auto analog = static_cast<LaneMask>(analog_ & mask);
    if (analog == 0) return;
    const auto scale = [](auto x, int) { return x * decltype(x)(analogMakeDown); };
    onLanes(f1_, count, analog, scale);
    onLanes(f2_, count, analog, scale);
}

void VoiceBank::render(int count, LaneMask mask, float* left, float* right) {
    const BankRun run{this, mask, left, right};
    renderBanks({&run, 1}, count);
}

namespace {

// The filter places of a stage.
struct FilterStage {
    void add(const FilterPlace& place) { places[count++] = place; }
    std::span<const FilterPlace> all() const { return {places.data(), count}; }

    std::array<FilterPlace, FilterRack::maxPlaces> places{};
    std::size_t count = 0;
};

}  // namespace

// The second filter goes with the first ones unless it hears one of them, or draws, which comes after the first distortion.
void renderBanks(std::span<const BankRun> runs, int count) {
    const auto waits = [](const BankRun& run) {
        return (run.bank->serial_ & run.mask) != 0 || run.bank->filterDraws(1, run.mask);
    };
    if (runs.empty()) return;
    FilterStage first, second;
    for (const BankRun& run : runs) {
        run.bank->clipInputs(count, run.mask);
        first.add(run.bank->place(0, run.mask));
        if (!waits(run)) first.add(run.bank->place(1, run.mask));
    }
    FilterRack& rack = runs.front().bank->rack_;
    rack.run(first.all(), count);
    for (const BankRun& run : runs) run.bank->distortions[0].run(run.bank->f1_, count, run.mask);
    for (const BankRun& run : runs) {
        if (!waits(run)) continue;
        run.bank->joinSerial(count, run.mask);
        second.add(run.bank->place(1, run.mask));
    }
    rack.run(second.all(), count);
    for (const BankRun& run : runs) {
        run.bank->distortions[1].run(run.bank->f2_, count, run.mask);
        run.bank->scaleOutputs(count, run.mask);
        run.bank->output.render(run.bank->f1_, run.bank->f2_, count, run.mask, run.left, run.right);
    }
}

}  // namespace vantoric
