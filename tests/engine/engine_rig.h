// A whole engine for tests: its own data folder, a host that answers as told, dialogs that nobody sees.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"
#include "engine/instrument.h"
#include "platform/module_folder.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"
#include "platform/settings.h"
#include "platform/thread.h"

namespace vantoric::test {

namespace par = parameter;

// A folder that serves as the installation of all engines made while it stands. The folder is gone with it.
class DataFolder {
public:
    DataFolder() {
        makeCurrent();  // what the platform keeps must be there before, to outlive this
    }
    ~DataFolder() {
        platform::setDataFolder("");
        platform::setSettingsFolder("");
    }
    DataFolder(const DataFolder&) = delete;
    DataFolder& operator=(const DataFolder&) = delete;

    const std::string& path() const { return folder_.path(); }
    void makeCurrent() const {
        platform::setDataFolder(path());
        platform::setSettingsFolder(folder_ / "settings");
    }

private:
    platform::ScratchFolder folder_;
};

// One for the whole test program, made with its first engine. Other tests may have moved the data folder: it
// is moved back.
inline DataFolder& sharedDataFolder() {
    static DataFolder folder;
    if (platform::dataFolder() != folder.path()) folder.makeCurrent();
    return folder;
}

// A bank wave of some frames: each a sine with a growing share of its third harmonic, all levels alike.
inline std::vector<std::int16_t> plainWave(int frames) {
    std::vector<std::int16_t> samples(static_cast<std::size_t>(frames) * mipLevels * cycleSamples);
    for (int f = 0; f < frames; ++f)
        for (int i = 0; i < cycleSamples; ++i) {
            const double phase = 2.0 * 3.14159265358979 * i / cycleSamples;
            const double value = std::sin(phase) + 0.5 * f / frames * std::sin(3.0 * phase);
            for (int level = 0; level < mipLevels; ++level)
                samples[(static_cast<std::size_t>(level) * frames + f) * cycleSamples + i] =
                    static_cast<std::int16_t>(20000.0 * value);
        }
    return samples;
}

// The host's side: tempo and position, if it has any to tell.
struct RigHost {
    Transport transport;

    void tell(double tempo, double ppqPos) { transport = {true, tempo, ppqPos, false}; }
};

struct Midi {
    int status, data1, data2;
    int offset = 0;
};

class EngineRig {
public:
    explicit EngineRig(float hostRate = 48000.0f) : folder_(sharedDataFolder()), audio(dialogs) {
        audio.setSampleRate(hostRate);
        for (int i = 0; i < 5000 && audio.flags().audioMuted.isSet(); ++i) platform::sleepMilliseconds(1);
    }
    EngineRig(const EngineRig&) = delete;
    EngineRig& operator=(const EngineRig&) = delete;

    void set(int index, float value) { audio.parameters().writeRaw(index, value); }
    void set(int number, float value, int layer) { set(hostIndex(number, layer), value); }
    void setList(int number, int row, int layer = 0) { set(hostIndex(number, layer), listValue(row)); }
    void clearParameters() {
        for (int i = 0; i < parameterCount; ++i) set(i, 0.0f);
    }
    // A layer as the simplest instrument: oscillator 1 over all keys, instant attack, full level.
    void plainLayer(int layer = 0) {
        set(par::Volume, 0.5f);
        for (int n : {par::EqLow, par::EqMid, par::EqHigh}) set(n, 0.5f);
        set(par::Layer1On + layer, 1.0f);
        for (int i = 0; i < oscillatorCount; ++i) {
            setList(par::KeyEnd1 + i, 127, layer);
            for (int n : {par::Oct1, par::Detune1, par::Timbre1, par::Pw1}) set(n + i, 0.5f, layer);
            set(par::KeyFol1 + i, 1.0f, layer);
        }
        set(par::On1, 1.0f, layer);
        set(par::Vol1, 1.0f, layer);
        setList(par::SynType1, 2, layer);  // noise needs no wave
        for (int f = 0; f < filterCount; ++f) {
            set(par::FilVol1 + f, 1.0f, layer);
            for (int n : {par::FilPan1, par::FilKey1, par::FilEnv1}) set(n + f, 0.5f, layer);
            set(par::Cutoff1 + f, 1.0f, layer);
        }
        for (int n : {par::Pitch, par::Fine}) set(n, 0.5f, layer);
        set(par::LayerVol, 0.5f, layer);
        set(par::SusVol, 0.99f, layer);
        set(par::RelVol, 0.2f, layer);
        setList(par::PlayMode, 8, layer);
        for (int i = 0; i < 16; ++i) set(par::MatVal1 + i, 0.5f, layer);
    }

    void send(const std::vector<Midi>& messages) {
        const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
        for (const Midi& m : messages) audio.receive({m.offset, byte(m.status), byte(m.data1), byte(m.data2)});
    }

    // Renders a block and appends it to `left` and `right`.
    void block(int frames) {
        const std::size_t at = left.size();
        left.resize(at + static_cast<std::size_t>(frames));
        right.resize(at + static_cast<std::size_t>(frames));
        audio.render(left.data() + at, right.data() + at, frames, host.transport);
    }

    // Runs exactly one tick: at 48 kHz, first a block of one frame, then blocks of a tick's length that end
    // a frame after theirs. `fresh` until the first one has run.
    void tick() {
        block(fresh_ ? 1 : audio.state().tickSamples / (audio.state().oversampled ? 2 : 1));
        fresh_ = false;
    }

    float peak(std::size_t from = 0) const {
        float highest = 0.0f;
        for (std::size_t i = from; i < left.size(); ++i) highest = std::max({highest, std::fabs(left[i]), std::fabs(right[i])});
        return highest;
    }

private:
    DataFolder& folder_;

public:
    platform::RecordedDialogs dialogs;
    RigHost host;
    Instrument audio;
    std::vector<float> left, right;

private:
    bool fresh_ = true;
};

}  // namespace vantoric::test
