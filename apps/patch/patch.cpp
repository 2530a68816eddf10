#include "apps/patch/patch.h"

#include <algorithm>
#include <cmath>

#include "apps/patch/chunk_bench.h"
#include "base/math.h"
#include "base/numbers.h"
#include "parameters/parameter_text.h"
#include "patch/patch_file.h"
#include "platform/recorded_dialogs.h"

namespace vantoric::patch {

namespace {

constexpr int synthesisTypeSample = 3;

// Where the init state leaves the defaults of the controls.
struct InitValue {
    int number, count;
    float value;
};
constexpr InitValue initGlobals[] = {
    {parameter::Volume, 1, 0.5f},
    {parameter::Layer1On, 1, 1.0f},
    {parameter::Quality, 1, listValue(2)},   // "Crossblend PW"
    {parameter::PitchWhl, 1, listValue(2)},  // "Pitchwheel +-2"
};
constexpr InitValue initLayer[] = {
    {parameter::On1, 1, 1.0f},
    {parameter::Pw1, 3, 1.0f},               // the saw of "VA Tri Saw"
    {parameter::FilType1, 1, listValue(4)},  // "LP 24dB"
    {parameter::Cutoff1, 2, 1.0f},
    {parameter::Reso1, 2, 0.0f},
    {parameter::PlayMode, 1, listValue(8)},  // "Polyphonic 16"
    {parameter::AttVol, 4, 0.0f},
    {parameter::SusVol, 1, 1.0f},
};

// The last box that was shown.
std::string complaint(const platform::RecordedDialogs& dialogs) {
    const auto boxes = dialogs.boxes();
    return boxes.empty() ? "not a patch of this instrument" : boxes.back().text;
}

Cycle makeInitCycle() {
    Cycle cycle;
    for (int i = 0; i < chunk::waveSamples; ++i)
        cycle[static_cast<std::size_t>(i)] =
            static_cast<std::int16_t>(std::floor(math::sin(2.0 * math::pi * i / chunk::waveSamples) * 32767.0 + 0.5));
    return cycle;
}

}  // namespace

Patch::Patch() {
    parameters.setDefaults();
    for (const InitValue& init : initGlobals)
        for (int k = 0; k < init.count; ++k) parameters.setParameterQuiet(init.number + k, init.value);
    for (int layer = 0; layer < layerCount; ++layer)
        for (const InitValue& init : initLayer)
            for (int k = 0; k < init.count; ++k) parameters.setParameterQuiet(hostIndex(init.number + k, layer), init.value);
    customWaves.fill(initCycle());
}

const Cycle& initCycle() {
    static const Cycle cycle = makeInitCycle();
    return cycle;
}

bool playsSample(const Patch& patch, int index) {
    const int number = parameter::SynType1 + index % oscillatorCount;
    return patch.parameters.getListIndex(hostIndex(number, index / oscillatorCount)) == synthesisTypeSample;
}

void setSample(Patch& patch, int index, std::span<const std::int16_t> frames, std::uint32_t rate, std::int32_t loopStart,
               std::int32_t loopEnd) {
    if (frames.size() > static_cast<std::size_t>(maxSampleLength)) throw PatchError("", "longer than 16777216 samples");
    if (rate > maxSampleRate) throw PatchError("", "sample rate above 384000 Hz");
    const auto length = static_cast<std::int32_t>(frames.size());
    if (loopStart < 0 || loopEnd < 0 || loopStart > length || loopEnd > length)
        throw PatchError("", "the loop should lie within the " + std::to_string(length) + " samples of the file");
    Sample& sample = patch.samples[static_cast<std::size_t>(index)];
    if (!sample.allocate(length)) throw PatchError("", "memory is short");
    std::copy(frames.begin(), frames.end(), sample.levels[0].get());
    sample.length = length;
    sample.loopStart = loopStart;
    sample.loopEnd = loopEnd;
    sample.sampleRate = rate;
}

void cleanMatrix(Patch& patch) {
    platform::RecordedDialogs dialogs;
    ChunkBench(patch, dialogs).chunk().cleanMatrix();
}

std::vector<std::uint8_t> toPatchFile(Patch& patch) {
    platform::RecordedDialogs dialogs;
    ChunkBench bench(patch, dialogs);
    bench.program().setProgramName(patch.name);
    const ChunkBytes chunk = bench.chunk().getChunk();
    // A box with a chunk: something of the patch was given up.
    if (chunk.size == 0 || !dialogs.boxes().empty()) throw PatchError("", complaint(dialogs));
    std::vector<std::uint8_t> file(static_cast<std::size_t>(patchHeaderBytes) + static_cast<std::size_t>(chunk.size));
    const PatchHeader header = makePatchHeader(patch.name, chunk.size);
    std::copy_n(header.data(), header.size(), file.data());
    std::copy_n(chunk.data.get(), chunk.size, file.data() + patchHeaderBytes);
    return file;
}

void fromPatchFile(std::span<const std::uint8_t> file, Patch& patch) {
    if (!isPatchFile(file)) throw PatchError("", "not a patch file of this instrument");
    const auto bytes = chunkOfFile(file);
    if (bytes.size() < static_cast<std::size_t>(chunk::fixedSize))
        throw PatchError("", "truncated: " + std::to_string(file.size()) + " bytes, a patch has at least " +
                                 std::to_string(patchHeaderBytes + chunk::fixedSize));
    platform::RecordedDialogs dialogs;
    ChunkBench bench(patch, dialogs);
    if (bench.chunk().setChunk(bytes.data(), static_cast<std::int32_t>(bytes.size())) == 0)
        throw PatchError("", complaint(dialogs));
    patch.name = bench.program().getProgramName();
}

}  // namespace vantoric::patch
