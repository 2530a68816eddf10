#include "patch/patch_chunk.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "base/numbers.h"
#include "base/parameters.h"
#include "base/text.h"
#include "patch/exchange_contents.h"
#include "patch/patch_reset.h"

namespace vantoric {

namespace {

constexpr int synthesisTypeSample = 3;

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

PatchChunk::PatchChunk(EngineAccess& access, ParameterModel& parameters, ProgramSlot& program, const PatchWaves& waves,
                       PatchHost& host, Messages& messages)
    : access_(access),
      flags_(access.flags()),
      parameters_(parameters),
      program_(program),
      waves_(waves),
      host_(host),
      messages_(messages) {}

// Writing.

bool PatchChunk::inSampleMode(int index) const {
    const int number = parameter::SynType1 + index % oscillatorCount;
    return parameters_.getListIndex(hostIndex(number, index / oscillatorCount)) == synthesisTypeSample;
}

void PatchChunk::boundSample(Sample& sample) {
    const bool hasData = sample.length == 0 || sample.levels[0] != nullptr;
    if (hasData && chunk::isSound(headerOf(sample), maxSampleLength)) return;
    sample.clearHeader();
    messages_.post("Error", "Invalid sample parametres.");
}

// A lock is waited for without the turn, so that whoever set it can go on meanwhile. Behind one that a failed load left
// nobody is at work.
ChunkBytes PatchChunk::getChunk() try {
    if (!access_.isLeftLocked()) waitUntilClear(flags_.engineLocked, 100, 100, access_.sleepFunction(), false);
    const EngineTurn turn(access_);
    return writeChunk();
} catch (...) {
    messages_.post("Error", "Memory allocation error on saving");
    return {};
}

ChunkBytes PatchChunk::writeChunk() {
    std::size_t words = 36868;
    for (const Sample* sample : waves_.samples) words += static_cast<std::size_t>(clampTo(sample->length, 0, maxSampleLength));
    ChunkBytes bytes;
    bytes.data.reset(new (std::nothrow) std::uint8_t[words * 2]);
    if (!bytes.data) {
        messages_.post("Error", "Memory allocation error on saving");
        return bytes;
    }
    std::uint8_t* const data = bytes.data.get();
    std::fill(data, data + chunk::parameterOffset, std::uint8_t{0});
    data[chunk::versionOffset] = chunk::formatVersion;
    const std::string name = program_.getProgramName();
    const std::string_view cutName = cutText(name, chunk::nameWritten);
    std::memcpy(data + chunk::nameOffset, cutName.data(), cutName.size());
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

void PatchChunk::quieten() {
    host_.allNotesOff();
    host_.resetEngine();
}

bool PatchChunk::refuse(const char* title, const char* text) {
    messages_.post(title, text);
    return false;
}

int PatchChunk::setChunk(const std::uint8_t* data, std::int32_t size) try {
    return replacePatch(data, size, nullptr) ? 1 : 0;
} catch (...) {
    refuse("Error SetCh1", notEnoughMemory);
    return 0;
}

int PatchChunk::setCheckedChunk(const std::uint8_t* data, std::int32_t size) try {
    const auto samples = std::make_unique<NewSamples>();
    for (int index = 0; index < chunk::waveCount; ++index) {
        const int length = chunk::readSampleHeader(data, index).length;
        if ((*samples)[index].allocate(length)) continue;
        refuse("Error SetCh1", notEnoughMemory);
        return 0;
    }
    return replacePatch(data, size, samples.get()) ? 1 : 0;
} catch (...) {
    refuse("Error SetCh1", notEnoughMemory);
    return 0;
}

bool PatchChunk::replacePatch(const std::uint8_t* data, std::int32_t size, NewSamples* samples) {
    const EngineTurn turn(access_);
    {
        EngineHold hold(access_, HoldFor::patch);
        hold.setStaysLocked(true);  // unless it all goes well
        quieten();
        if (data == nullptr || size < chunk::fixedSize) return true;
        if (!readPatch(data, size, samples, hold)) return false;
        hold.setStaysLocked(false);
    }
    host_.refreshAll();
    host_.lookUpPatchName();
    // The block may be running again: it is held once more, so that it does not render what is being reset.
    const EngineHold hold(access_, HoldFor::patch);
    quieten();
    return true;
}

// The worker reads waves and lengths. It is stopped before they are touched and again before memory is exchanged.
bool PatchChunk::readPatch(const std::uint8_t* data, std::int32_t size, NewSamples* samples, EngineHold& hold) {
    const bool rebuildWasDue = flags_.rebuildRequested.isSet() || flags_.rebuildRunning.isSet();
    flags_.rebuildCancel.set();
    flags_.rebuildRequested.clear();
    const int version = data[chunk::versionOffset];
    if (version > chunk::formatVersion) {
        hold.setStaysLocked(false);
        if (rebuildWasDue) flags_.rebuildOwed.set();  // the patch in force plays on
        return refuse("Error", chunk::newerVersionText);
    }
    hold.endRebuild();
    for (Sample* sample : waves_.samples) sample->clearHeader();
    readName(data);
    readParameters(data);
    convertOlderPatch(version);
    if (!flags_.bootPending.isSet()) readCustomWaves(data);
    hold.endRebuild();
    // Every header is checked before memory is taken, so that what a header claims costs nothing.
    if (!chunk::areHeadersSound({data, static_cast<std::size_t>(size)})) {
        flags_.rebuildOwed.set();
        return refuse("Error", chunk::badHeaderText);
    }
    if (!readSampleData(data, size, samples)) {
        flags_.rebuildOwed.set();
        return false;
    }
    flags_.rebuildCancel.clear();
    flags_.rebuildRequested.set();
    cleanMatrix();
    program_.setProgram(0);
    host_.resetEngine();
    host_.prepareToSound();
    return true;
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
        if (waves_.slots[index] != nullptr) waves_.slots[index]->forget();
        chunk::readSamples(wave, waves_.customWaves[index], chunk::waveSamples);
    }
}

// A sample gets its length only once it has been read whole; all before it have then theirs.
bool PatchChunk::readSampleData(const std::uint8_t* data, std::int32_t size, NewSamples* samples) {
    std::int64_t position = chunk::sampleDataOffset;
    for (int index = 0; index < chunk::waveCount; ++index) {
        const chunk::SampleHeader header = chunk::readSampleHeader(data, index);
        const std::int64_t end = position + std::int64_t{header.length} * 2;
        if (end > size) return refuse("Error", chunk::missingDataText);
        Sample fresh;
        if (samples != nullptr) {
            fresh = std::move((*samples)[index]);
        } else if (!fresh.allocate(header.length)) {
            return refuse("Error SetCh1", notEnoughMemory);
        }
        chunk::readSamples(data + position, fresh.levels[0].get(), header.length);
        for (int level = 1; level < sampleLevels; ++level) {
            std::copy_n(fresh.levels[0].get(), header.length, fresh.levels[level].get());
        }
        fresh.length = header.length;
        fresh.loopStart = header.loopStart;
        fresh.loopEnd = header.loopEnd;
        fresh.sampleRate = header.sampleRate;
        waves_.samples[index]->levelsPending.set();  // until the worker has made them
        exchangeContents(access_, *waves_.samples[index], std::move(fresh));
        position = end;
    }
    return true;
}

void PatchChunk::cleanMatrix() {
    const EngineTurn turn(access_);
    forUnusedMatrixSlots(parameters_, [this](int layer, int slot) {
        parameters_.setParameterQuiet(hostIndex(parameter::MatSrc1 + slot, layer), 0.0f);
        parameters_.setParameterQuiet(hostIndex(parameter::MatDst1 + slot, layer), 0.0f);
        parameters_.setParameterQuiet(hostIndex(parameter::MatVal1 + slot, layer), 0.5f);
    });
}

}  // namespace vantoric
