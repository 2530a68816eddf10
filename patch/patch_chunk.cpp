#include "patch/patch_chunk.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "base/numbers.h"
#include "base/parameters.h"

namespace vantoric {

namespace {

constexpr int lockTries = 1000;  // of 1 ms
constexpr int synthesisTypeSample = 3;
constexpr int matrixRows = 16;

// What parameters were given when a patch was written before they existed.
struct Conversion {
    int lastVersion;  // applies to patches up to this version
    int number;       // within a layer
    int count;        // numbers in a row
    float value;
};
constexpr Conversion conversions[] = {
    {3, parameter::AnaWave1, 3, 0.0f},     {6, parameter::FxIn2Type, 1, 0.0f},    {6, parameter::FxIn2Mix, 5, 0.5f},
    {6, parameter::MatSrc1 + 10, 5, 0.0f}, {6, parameter::MatDst1 + 10, 5, 0.0f}, {6, parameter::MatVal1 + 10, 5, 0.5f},
};

chunk::SampleHeader headerOf(const Sample& sample) {
    return {sample.length, sample.loopStart, sample.loopEnd, sample.sampleRate};
}

}  // namespace

PatchChunk::PatchChunk(EngineState& state, ParameterModel& parameters, ProgramSlot& program, const PatchWaves& waves,
                       PatchHost& host, platform::Dialogs& dialogs, SleepFunction sleep)
    : state_(state), parameters_(parameters), program_(program), waves_(waves), host_(host), dialogs_(dialogs), sleep_(sleep) {}

// Writing.

bool PatchChunk::inSampleMode(int index) const {
    const int number = parameter::SynType1 + index % oscillatorCount;
    return parameters_.getListIndex(hostIndex(number, index / oscillatorCount)) == synthesisTypeSample;
}

void PatchChunk::boundSample(Sample& sample) {
    const bool hasData = sample.length == 0 || sample.levels[0] != nullptr;
    if (hasData && chunk::isSound(headerOf(sample), maxSampleLength)) return;
    sample.clearHeader();
    dialogs_.message("Error", "Invalid sample parametres.");
}

ChunkBytes PatchChunk::getChunk() {
    waitUntilClear(state_.flags.engineLocked, 100, 100, sleep_, false);
    std::size_t words = 36868;
    for (const Sample* sample : waves_.samples) words += static_cast<std::size_t>(clampTo(sample->length, 0, maxSampleLength));
    ChunkBytes bytes;
    bytes.data.reset(new (std::nothrow) std::uint8_t[words * 2]);
    if (!bytes.data) {
        dialogs_.message("Error", "Memory allocation error on saving");
        return bytes;
    }
    std::uint8_t* const data = bytes.data.get();
    std::fill(data, data + chunk::parameterOffset, std::uint8_t{0});
    data[chunk::versionOffset] = chunk::formatVersion;
    const std::string name = program_.getProgramName();
    std::memcpy(data + chunk::nameOffset, name.data(), std::min<std::size_t>(name.size(), chunk::nameWritten));
    for (int i = 0; i < parameterCount; ++i)
        chunk::writeBigFloat(data + chunk::parameterOffset + 4 * i, parameters_.getParameter(i));

    std::uint8_t* end = data + chunk::sampleDataOffset;
    for (int index = 0; index < chunk::waveCount; ++index) {
        std::uint8_t* const wave = data + chunk::customWaveOffset + index * chunk::waveSamples * 2;
        chunk::writeSamples(wave, waves_.customWaves[index], chunk::waveSamples);
        Sample& sample = *waves_.samples[index];
        boundSample(sample);
        const bool stored = inSampleMode(index);
        chunk::writeSampleHeader(data, index, stored ? headerOf(sample) : chunk::SampleHeader{});
        if (!stored) continue;
        chunk::writeSamples(end, sample.levels[0].get(), sample.length);
        end += std::ptrdiff_t{sample.length} * 2;
    }
    bytes.size = static_cast<std::int32_t>(end - data);
    return bytes;
}

// Reading.

void PatchChunk::takeLock() {
    waitUntilClear(state_.flags.engineLocked, lockTries, 1, sleep_);
    state_.flags.engineLocked.set();
    waitUntilClear(state_.flags.audioRunning, lockTries, 1, sleep_);
}

void PatchChunk::quieten() {
    host_.allNotesOff();
    host_.resetEngine();
}

// The block may be running again: it is held once more, so that it does not render what is being reset.
void PatchChunk::quietenWhilePlaying() {
    takeLock();
    quieten();
    state_.flags.engineLocked.clear();
}

bool PatchChunk::refuse(const char* title, const char* text) {
    dialogs_.message(title, text);
    return false;
}

int PatchChunk::setChunk(const std::uint8_t* data, std::int32_t size) {
    EngineFlags& flags = state_.flags;
    takeLock();
    quieten();
    if (data == nullptr || size < chunk::fixedSize) return 1;
    flags.rebuildCancel.set();
    flags.rebuildRequested.clear();
    const int version = data[chunk::versionOffset];
    if (version > chunk::formatVersion) {
        refuse("Error",
               "The preset can not be loaded. The version number of the file format is not supported. You must update Vantori.");
        flags.engineLocked.clear();
        return 0;
    }
    stopRebuild();
    for (Sample* sample : waves_.samples) sample->clearHeader();
    readName(data);
    readParameters(data);
    convertOlderPatch(version);
    if (!flags.bootPending.isSet()) readCustomWaves(data);
    stopRebuild();
    if (!readSampleHeaders(data, size) || !readSampleData(data, size)) return 0;
    flags.rebuildCancel.clear();
    flags.rebuildRequested.set();
    cleanMatrix();
    program_.setProgram(0);
    host_.resetEngine();
    flags.engineLocked.clear();
    host_.refreshAll();
    host_.lookUpPatchName();
    quietenWhilePlaying();
    return 1;
}

void PatchChunk::readName(const std::uint8_t* data) {
    char name[chunk::nameRead + 1] = {};
    std::memcpy(name, data + chunk::nameOffset, chunk::nameRead);
    program_.setProgramName(name);
}

void PatchChunk::readParameters(const std::uint8_t* data) {
    for (int i = 0; i < parameterCount; ++i) {
        parameters_.setParameterQuiet(i, chunk::readBigFloat(data + chunk::parameterOffset + 4 * i));
    }
}

void PatchChunk::convertOlderPatch(int version) {
    for (int layer = 0; layer < layerCount; ++layer) {
        const int attack = hostIndex(parameter::AttVol, layer);
        if (version == 1 && parameters_.getParameter(attack) < 0.02f) parameters_.setParameter(attack, 0.02f);
        for (const Conversion& conversion : conversions) {
            if (version > conversion.lastVersion) continue;
            for (int k = 0; k < conversion.count; ++k) {
                parameters_.setParameter(hostIndex(conversion.number + k, layer), conversion.value);
            }
        }
    }
}

void PatchChunk::readCustomWaves(const std::uint8_t* data) {
    for (int index = 0; index < chunk::waveCount; ++index) {
        const std::uint8_t* wave = data + chunk::customWaveOffset + index * chunk::waveSamples * 2;
        chunk::readSamples(wave, waves_.customWaves[index], chunk::waveSamples);
    }
}

// The worker reads waves and lengths. Asked before they are touched and again before memory is freed, since
// an editing command of another thread may have begun a rebuild in between.
void PatchChunk::stopRebuild() {
    EngineFlags& flags = state_.flags;
    if (!flags.rebuildRunning.isSet()) return;
    flags.rebuildCancel.set();
    flags.rebuildRequested.clear();
    waitUntilClear(flags.rebuildRunning, lockTries, 1, sleep_);
}

// Every header is checked before memory is taken, so that what a header claims costs nothing.
bool PatchChunk::readSampleHeaders(const std::uint8_t* data, std::int32_t size) {
    for (int index = 0; index < chunk::waveCount; ++index) {
        if (chunk::isSound(chunk::readSampleHeader(data, index), size / 2)) continue;
        return refuse("Error", "Invalid sample header");
    }
    return true;
}

// A sample gets its length only once it has been read whole; all before it have then theirs.
bool PatchChunk::readSampleData(const std::uint8_t* data, std::int32_t size) {
    std::int64_t position = chunk::sampleDataOffset;
    for (int index = 0; index < chunk::waveCount; ++index) {
        const chunk::SampleHeader header = chunk::readSampleHeader(data, index);
        const std::int64_t end = position + std::int64_t{header.length} * 2;
        if (end > size) return refuse("Error", "Invalid sample chunk size.");
        Sample& sample = *waves_.samples[index];
        if (!sample.allocate(header.length)) return refuse("Error SetCh1", "Not enought memory.");
        chunk::readSamples(data + position, sample.levels[0].get(), header.length);
        for (int level = 1; level < sampleLevels; ++level) {
            std::copy_n(sample.levels[0].get(), header.length, sample.levels[level].get());
        }
        sample.length = header.length;
        sample.loopStart = header.loopStart;
        sample.loopEnd = header.loopEnd;
        sample.sampleRate = header.sampleRate;
        position = end;
    }
    return true;
}

void PatchChunk::cleanMatrix() {
    for (int layer = 0; layer < layerCount; ++layer) {
        for (int row = 0; row < matrixRows; ++row) {
            const int source = hostIndex(parameter::MatSrc1 + row, layer);
            const int destination = hostIndex(parameter::MatDst1 + row, layer);
            if (parameters_.getListIndex(source) != 0 && parameters_.getListIndex(destination) != 0) continue;
            parameters_.setParameterQuiet(source, 0.0f);
            parameters_.setParameterQuiet(destination, 0.0f);
            parameters_.setParameterQuiet(hostIndex(parameter::MatVal1 + row, layer), 0.5f);
        }
    }
}

}  // namespace vantoric
