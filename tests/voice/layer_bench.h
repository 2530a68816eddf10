// A layer on a bench: a plain patch at 96 kHz, a wave to play, keys pressed by hand.
#pragma once

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"
#include "voice/layer.h"

namespace vantoric::test {

namespace par = parameter;

class LayerBench {
public:
    LayerBench() {
        engine.internalRate = 96000.0f;
        engine.internalRateExact = 96000.0;
        engine.tickSamples = 96;
        engine.ticksPerSecond = 1000.0;
        double frequency = 523.2511306007598;  // of key 0, times 128
        for (float& increment : engine.keyIncrement) {
            increment = static_cast<float>(frequency) * 0.0078125f / 96000.0f;
            frequency *= 1.059463094359;
        }
        std::vector<std::int16_t> wave(mipLevels * cycleSamples);
        for (int i = 0; i < mipLevels * cycleSamples; ++i)
            wave[i] = static_cast<std::int16_t>(20000.0 * std::sin(2.0 * 3.14159265358979 * i / cycleSamples));
        waves.setWave(0, false, wave.data(), 1);
        layer = std::make_unique<Layer>(0, engine, random, waves, [](int) {});
        plainPatch();
        layer->reset();
    }

    void set(int number, float value) { layer->block()[number] = value; }
    void setList(int number, int row) { set(number, listValue(row)); }

    // Oscillator 1 alone over all keys through open filters, instant attack, full sustain, sixteen voices.
    void plainPatch() {
        set(par::Layer1On, 1.0f);
        for (int i = 0; i < oscillatorCount; ++i) {
            setList(par::KeyEnd1 + i, 127);
            for (const int n : {par::Oct1, par::Detune1, par::Timbre1, par::Pw1}) set(n + i, 0.5f);
            set(par::KeyFol1 + i, 1.0f);
        }
        set(par::On1, 1.0f);
        set(par::Vol1, 1.0f);
        for (int f = 0; f < filterCount; ++f) {
            set(par::FilVol1 + f, 1.0f);
            for (const int n : {par::FilPan1, par::FilKey1, par::FilEnv1}) set(n + f, 0.5f);
            set(par::Cutoff1 + f, 1.0f);
        }
        set(par::LayerVol, 0.5f);
        set(par::SusVol, 0.99f);
        set(par::RelVol, 0.2f);
        setList(par::PlayMode, 8);
        for (int i = 0; i < 16; ++i) set(par::MatVal1 + i, 0.5f);
    }

    // What the engine does with a key event.
    void press(int key, int velocity = 100) {
        layer->blockChanged();
        engine.heldNote[key] = 1;
        layer->noteOn(key, velocity);
    }
    void release(int key) {
        engine.heldNote[key] = 0;
        layer->noteOff(key);
    }
    void tick(int count = 1) {
        for (int i = 0; i < count; ++i) layer->tick();
    }
    // Ticks with the audio after each; appends to left and right.
    void play(int ticks = 1) {
        for (int i = 0; i < ticks; ++i) {
            layer->tick();
            render(engine.tickSamples);
        }
    }
    void render(int count) {
        const std::size_t at = left.size();
        left.resize(at + static_cast<std::size_t>(count));
        right.resize(at + static_cast<std::size_t>(count));
        layer->renderBlock(left.data() + at, right.data() + at, count);
    }

    Voice& voice(int i) { return layer->voice(i); }
    int sounding() const {
        int count = 0;
        for (int i = 0; i < voiceCount; ++i) count += layer->voice(i).sounding() ? 1 : 0;
        return count;
    }
    float peak(std::size_t from = 0) const {
        float highest = 0.0f;
        for (std::size_t i = from; i < left.size(); ++i) highest = std::max({highest, std::fabs(left[i]), std::fabs(right[i])});
        return highest;
    }

    EngineState engine;
    RandomSources random;
    WaveStore waves;
    std::unique_ptr<Layer> layer;
    std::vector<float> left, right;
};

}  // namespace vantoric::test
