#include "library/patch_state.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "base/text.h"

namespace vantoric {

namespace {

int layerOf(std::size_t index) { return static_cast<int>(index) / oscillatorCount; }
int oscillatorOf(std::size_t index) { return static_cast<int>(index) % oscillatorCount; }

std::size_t weightOf(const KeptSample& sample) { return sizeof(KeptSample) + sample.samples.size() * sizeof(std::int16_t); }

bool holds(const KeptSample* kept, const Sample& sample) {
    return kept != nullptr && static_cast<std::int64_t>(kept->samples.size()) == sample.length &&
           kept->loopStart == sample.loopStart && kept->loopEnd == sample.loopEnd && kept->sampleRate == sample.sampleRate &&
           std::equal(kept->samples.begin(), kept->samples.end(), sample.levels[0].get());
}

}  // namespace

bool PatchState::hasSameSounds(const PatchState& other) const {
    for (std::size_t i = 0; i < waves.size(); ++i)
        if (waves[i] != other.waves[i] && waveGenerations[i] != other.waveGenerations[i]) return false;
    return samples == other.samples;
}

std::shared_ptr<const PatchState> PatchStates::take(const PatchPlace& place, WaveNames waveNames) {
    const EngineTurn turn(instrument_.patchChunk().access());
    auto state = std::make_shared<PatchState>();
    PatchValues values;
    for (int i = 0; i < parameterCount; ++i) values[static_cast<std::size_t>(i)] = instrument_.parameters().getParameter(i);
    if (last_ != nullptr && *last_->values == values)
        state->values = last_->values;
    else
        state->values = values_.keep(PatchValues(values), std::as_bytes(std::span(values)), sizeof values);
    state->name = instrument_.program().getProgramName();
    state->place = place;
    state->waveNames = std::move(waveNames);
    for (std::size_t i = 0; i < state->waves.size(); ++i) {
        Layer& layer = instrument_.layer(layerOf(i));
        const CustomWaveSlot& slot = layer.customWave(oscillatorOf(i));
        state->waveGenerations[i] = slot.generation();
        state->waves[i] = takeWave(i, slot);
        state->samples[i] = takeSample(i, layer.sample(oscillatorOf(i)));
    }
    last_ = std::move(state);
    return last_;
}

std::shared_ptr<const CustomCycle> PatchStates::takeWave(std::size_t index, const CustomWaveSlot& slot) {
    CustomCycle cycle = slot.cycle;  // once, as the worker may be smoothing it
    if (last_ != nullptr && *last_->waves[index] == cycle) return last_->waves[index];
    return waves_.keep(CustomCycle(cycle), std::as_bytes(std::span(cycle)), sizeof cycle);
}

std::shared_ptr<const KeptSample> PatchStates::takeSample(std::size_t index, const Sample& sample) {
    if (sample.length <= 0 || sample.levels[0] == nullptr) return nullptr;
    if (last_ != nullptr && holds(last_->samples[index].get(), sample)) return last_->samples[index];
    const std::span sounds(sample.levels[0].get(), static_cast<std::size_t>(sample.length));
    KeptSample kept{{sounds.begin(), sounds.end()}, sample.loopStart, sample.loopEnd, sample.sampleRate};
    const std::size_t weight = weightOf(kept);
    return samples_.keep(std::move(kept), std::as_bytes(sounds), weight);
}

std::size_t PatchStates::bytesOfLast() const {
    if (last_ == nullptr) return 0;
    std::size_t bytes = sizeof(PatchValues);
    for (std::size_t i = 0; i < last_->waves.size(); ++i) {
        const auto end = last_->waves.begin() + static_cast<std::ptrdiff_t>(i);
        if (std::find(last_->waves.begin(), end, last_->waves[i]) == end) bytes += sizeof(CustomCycle);
        const auto before = last_->samples.begin() + static_cast<std::ptrdiff_t>(i);
        const auto& sample = last_->samples[i];
        if (sample != nullptr && std::find(last_->samples.begin(), before, sample) == before) bytes += weightOf(*sample);
    }
    return bytes;
}

// With the samples of all oscillators, also of those that play none: a saved patch would leave them out.
ChunkBytes PatchStates::chunkOf(const PatchState& state) const {
    std::size_t size = chunk::fixedSize;
    for (const auto& sample : state.samples)
        if (sample != nullptr) size += sample->samples.size() * 2;
    ChunkBytes bytes;
    bytes.data.reset(new (std::nothrow) std::uint8_t[size]);
    if (!bytes.data) return bytes;
    bytes.size = static_cast<std::int32_t>(size);
    std::uint8_t* const data = bytes.data.get();
    std::fill_n(data, chunk::parameterOffset, std::uint8_t{0});
    data[chunk::versionOffset] = chunk::formatVersion;
    const std::string_view name = cutText(state.name, chunk::nameWritten);
    std::memcpy(data + chunk::nameOffset, name.data(), name.size());
    for (int i = 0; i < parameterCount; ++i)
        chunk::writeBigFloat(data + chunk::parameterOffset + 4 * i, (*state.values)[static_cast<std::size_t>(i)]);
    std::uint8_t* end = data + chunk::sampleDataOffset;
    for (std::size_t i = 0; i < state.waves.size(); ++i) {
        const int index = static_cast<int>(i);
        chunk::writeSamples(data + chunk::customWaveOffset + index * chunk::waveSamples * 2, state.waves[i]->data(),
                            chunk::waveSamples);
        chunk::SampleHeader header;
        if (const KeptSample* sample = state.samples[i].get(); sample != nullptr) {
            header = {static_cast<std::int32_t>(sample->samples.size()), sample->loopStart, sample->loopEnd, sample->sampleRate};
            chunk::writeSamples(end, sample->samples.data(), header.length);
            end += sample->samples.size() * 2;
        }
        chunk::writeSampleHeader(data, index, header);
    }
    return bytes;
}

bool PatchStates::put(const PatchState& state) {
    const EngineTurn turn(instrument_.patchChunk().access());
    const ChunkBytes bytes = chunkOf(state);
    if (bytes.size == 0 || instrument_.patchChunk().setCheckedChunk(bytes.data.get(), bytes.size) == 0) return false;
    // A load tidies up what the user may have been in the middle of, such as a matrix row with a source alone.
    ParameterModel& parameters = instrument_.parameters();
    bool wasTidied = false;
    for (int i = 0; i < parameterCount; ++i) {
        const float value = (*state.values)[static_cast<std::size_t>(i)];
        if (parameters.getParameter(i) == value) continue;
        parameters.writeRaw(i, value);
        wasTidied = true;
    }
    if (wasTidied) parameters.changes().noteAll(ChangeSource::patch);
    instrument_.program().setProgramName(state.name);
    return true;
}

}  // namespace vantoric
