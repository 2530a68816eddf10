// The parts of an engine that take in MIDI and patches, without its sound: for tests, vectors and fuzzing.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/random.h"
#include "engine/midi_intake.h"
#include "patch/patch_chunk.h"
#include "patch/patch_file.h"
#include "tests/base/told.h"

namespace vantoric {

// Milliseconds that anybody slept, on a clock that costs no time.
inline int& sleptMilliseconds() {
    static int slept = 0;
    return slept;
}
inline void fakeSleep(int milliseconds) { sleptMilliseconds() += milliseconds; }

class PatchBench : public PatchHost, public MidiListener {
public:
    struct Call {
        std::string what;
        int layer = -1, key = -1, velocity = 0;
        bool operator==(const Call&) const = default;
    };

    explicit PatchBench(SleepFunction sleep = fakeSleep) : access(state.flags, sleep) {
        PatchWaves waves;
        for (int k = 0; k < chunk::waveCount; ++k) {
            waves.samples[k] = &samples[k];
            waves.customWaves[k] = customWaves[k].data();
        }
        chunk = std::make_unique<PatchChunk>(access, parameters, program, waves, *this, messages);
        files = std::make_unique<PatchFiles>(*chunk, program, *this, messages);
        sleptMilliseconds() = 0;
    }

    // As the engine has them.
    void allNotesOff() override {
        calls.push_back({"allNotesOff"});
        countByLock();
        quiet_ = true;
        intake.allNotesOff();
        quiet_ = false;
    }
    void resetEngine() override {
        calls.push_back({"resetEngine"});
        countByLock();
        intake.resetPedal();
        sounding.clear();
    }
    void refreshAll() override {
        calls.push_back({"refreshAll"});
        lockedAtRefresh = state.flags.engineLocked.isSet();
    }
    void lookUpPatchName() override { calls.push_back({"lookUpPatchName"}); }
    void setBusy(bool on) override { busy = on; }

    void noteOn(int layer, int key, int velocity) override {
        calls.push_back({"noteOn", layer, key, velocity});
        sounding.insert({layer, key});
    }
    void noteOff(int layer, int key) override {
        if (!quiet_) calls.push_back({"noteOff", layer, key});
        if (quiet_) ++quietNoteOffs[key];
        sounding.erase({layer, key});
    }
    void programPending(int number) override { pendingPrograms.push_back(number); }

    void receive(std::uint8_t status, std::uint8_t data1, std::uint8_t data2, std::int32_t offset = 0) {
        intake.receive(status, data1, data2, offset);
    }
    // Queues one message and acts on it.
    void play(std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
        receive(status, data1, data2, 0);
        intake.drainMidiQueue(0);
    }
    int heldNotes() const {
        int held = 0;
        for (const auto key : state.heldNote) held += key;
        return held;
    }
    std::vector<std::string> boxTexts() const { return told.texts(); }
    // Gives oscillator `index` (layer x 3 + oscillator) a sample of pseudo-random data.
    void putSample(int index, std::int32_t length, std::int32_t loopStart, std::int32_t loopEnd, std::uint32_t rate,
                   std::uint32_t seed) {
        Sample& sample = samples[index];
        sample.allocate(length);
        LinearCongruence noise{seed};
        for (int i = 0; i < length; ++i) sample.levels[0][i] = static_cast<std::int16_t>(noise.next() >> 16);
        sample.length = length;
        sample.loopStart = loopStart;
        sample.loopEnd = loopEnd;
        sample.sampleRate = rate;
    }
    int load(const std::vector<std::uint8_t>& bytes) {
        return chunk->setChunk(bytes.data(), static_cast<std::int32_t>(bytes.size()));
    }
    std::vector<std::uint8_t> save() {
        const ChunkBytes bytes = chunk->getChunk();
        return {bytes.data.get(), bytes.data.get() + bytes.size};
    }

    EngineState state;
    ParameterModel parameters;
    ControllerMap ccMap;
    EngineAccess access;
    Messages messages;
    test::Told told{messages};
    ProgramSlot program{messages};
    Sample samples[chunk::waveCount];
    std::array<std::int16_t, chunk::waveSamples> customWaves[chunk::waveCount]{};
    MidiIntake intake{state, parameters, ccMap, *this};
    std::unique_ptr<PatchChunk> chunk;
    std::unique_ptr<PatchFiles> files;

    std::vector<Call> calls;
    std::vector<int> pendingPrograms;
    std::set<std::pair<int, int>> sounding;  // layer, key
    int quietNoteOffs[128] = {};             // those of allNotesOff
    bool busy = false;
    bool lockedAtRefresh = true;
    int callsWhileLocked = 0, callsWhileUnlocked = 0;  // of allNotesOff and resetEngine

private:
    void countByLock() { ++(state.flags.engineLocked.isSet() ? callsWhileLocked : callsWhileUnlocked); }
    bool quiet_ = false;
};

// A chunk made by hand: every parameter 0.5, custom waves 0, no samples.
class HandMadeChunk {
public:
    explicit HandMadeChunk(int version = chunk::formatVersion) : bytes(chunk::fixedSize) {
        bytes[0] = static_cast<std::uint8_t>(version);
        for (int i = 0; i < parameterCount; ++i) parameter(i, 0.5f);
        for (int k = 0; k < chunk::waveCount; ++k) header(k, {});
    }
    HandMadeChunk& name(const std::string& text) {
        for (std::size_t k = 0; k < chunk::nameRead; ++k) bytes[1 + k] = k < text.size() ? static_cast<std::uint8_t>(text[k]) : 0;
        return *this;
    }
    HandMadeChunk& parameter(int index, float value) {
        chunk::writeBigFloat(&bytes[chunk::parameterOffset + 4 * index], value);
        return *this;
    }
    HandMadeChunk& header(int index, const chunk::SampleHeader& header) {
        chunk::writeSampleHeader(bytes.data(), index, header);
        return *this;
    }
    // Appends `count` pseudo-random samples.
    HandMadeChunk& data(int count, std::uint32_t seed) {
        LinearCongruence noise{seed};
        for (int i = 0; i < count; ++i) {
            const std::uint16_t value = static_cast<std::uint16_t>(noise.next() >> 16);
            bytes.push_back(static_cast<std::uint8_t>(value));
            bytes.push_back(static_cast<std::uint8_t>(value >> 8));
        }
        return *this;
    }

    std::vector<std::uint8_t> bytes;
};

// A name of so many letters and what it ends with.
inline std::string lettersAnd(std::size_t letters, const char* end) {
    std::string name(letters, 'n');
    name += end;
    return name;
}

}  // namespace vantoric
