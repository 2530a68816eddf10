// Several layers rendered stage by stage sound as they do one after the other, random draws included.
#include "voice/layer_stack.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "sound/kernels.h"
#include "tests/voice/layer_bench.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::LayerBench;

// Four layers that share an engine's state and its sources of chance.
struct Stack {
    LayerBench bench;
    EngineState& engine = bench.engine;
    RandomSources& random = bench.random;
    std::array<std::unique_ptr<Layer>, layerCount> owned;
    std::array<Layer*, layerCount> layers;
    std::vector<float> left, right;

    Stack() {
        for (int i = 0; i < layerCount; ++i) {
            owned[i] = std::make_unique<Layer>(i, engine, random, bench.waves, [](int) {});
            layers[i] = owned[i].get();
            layers[i]->block() = bench.layer->block();
            layers[i]->block()[par::Layer1On + i] = 1.0f;
            layers[i]->reset();
        }
    }
    void set(int layer, int number, float value) { layers[layer]->block()[number] = value; }
    void setList(int layer, int number, int row) { set(layer, number, listValue(row)); }
    void press(int layer, int key) {
        layers[layer]->blockChanged();
        layers[layer]->noteOn(key, 100);
    }
    void play(bool together, int count) {
        for (Layer* layer : layers) layer->tick();
        left.assign(count, 0.0f);
        right.assign(count, 0.0f);
        if (together)
            renderLayers(layers, left.data(), right.data(), count);
        else
            for (Layer* layer : layers) layer->renderBlock(left.data(), right.data(), count);
    }
};

constexpr int butter = 50, orvix = 51, ms20 = 53, phaser3 = 56, lowPass24 = 4, noiseDistortion = 19, noiseRm = 20, tube = 2;

// Whatever is drawn, and wherever: oscillators, filters side by side and in series, distortions, inserts.
TEST(LayerStack, SoundsAsOneLayerAfterTheOther) {
    std::mt19937 chance(11);
    const auto below = [&](int end) { return std::uniform_int_distribution<int>(0, end - 1)(chance); };
    const auto oneOf = [&](std::initializer_list<int> values) { return values.begin()[below(static_cast<int>(values.size()))]; };
    Stack together, apart;
    for (int patch = 0; patch < 60; ++patch) {
        const auto onBoth = [&](int layer, int number, int row) {
            together.setList(layer, number, row);
            apart.setList(layer, number, row);
        };
        for (int layer = 0; layer < layerCount; ++layer) {
            for (int i = 0; i < oscillatorCount; ++i) {
                onBoth(layer, par::On1 + i, 128);
                onBoth(layer, par::Vol1 + i, 64);
                onBoth(layer, par::SynType1 + i, oneOf({wavetableType, wavetableType, noiseType, analogType}));
                onBoth(layer, par::NoiWave1 + i, below(14));
                onBoth(layer, par::Timbre1 + i, below(128));
                if (i > 0) onBoth(layer, par::Fm1 + i - 1, oneOf({0, 0, 0, 40}));
            }
            for (int f = 0; f < filterCount; ++f) {
                onBoth(layer, par::FilType1 + f, oneOf({0, lowPass24, lowPass24, butter, orvix, ms20, phaser3}));
                onBoth(layer, par::DisType1 + f, oneOf({0, 0, tube, noiseDistortion, noiseRm}));
                onBoth(layer, par::Drive1 + f, 90);
            }
            onBoth(layer, par::FilSerial, oneOf({0, 0, 128}));
            onBoth(layer, par::FxInType, below(4) == 0 ? below(77) : 0);
            onBoth(layer, par::FxInMix, 100);
            onBoth(layer, par::Layer1On + layer, below(8) == 0 ? 0 : 128);
        }
        for (Stack* stack : {&together, &apart})
            for (Layer* layer : stack->layers) layer->reset();
        for (int t = 0; t < 6; ++t) {
            const int layer = below(layerCount), key = 30 + below(60), count = 1 + below(96);
            for (Stack* stack : {&together, &apart}) {
                stack->press(layer, key);
                stack->play(stack == &together, count);
            }
            ASSERT_EQ(together.left, apart.left) << patch << ' ' << t;
            ASSERT_EQ(together.right, apart.right) << patch << ' ' << t;
            ASSERT_EQ(together.random.congruence.state, apart.random.congruence.state) << patch;
            ASSERT_EQ(together.random.hash.counter, apart.random.hash.counter) << patch;
        }
    }
}

TEST(LayerStack, LeavesALayerThatIsOffAlone) {
    Stack stack;
    for (int i = 1; i < layerCount; ++i) stack.set(i, par::Layer1On + i, 0.0f);
    stack.press(0, 60);
    stack.press(1, 60);
    stack.play(true, 96);
    std::vector<float> alone(96), right(96);
    Stack one;
    one.press(0, 60);
    one.layers[0]->tick();
    one.layers[0]->renderBlock(alone.data(), right.data(), 96);
    EXPECT_EQ(stack.left, alone);
}

// Filters that are taken not to draw leave the sources of chance alone, and those that are taken to draw do so somewhere: a
// layer whose filters draw sounds by itself, which takes longer.
TEST(LayerStack, KnowsTheFiltersThatDraw) {
    std::vector<int> drawing;
    for (int type = -1; type < 128; ++type) {
        RandomSources random;
        FilterBank bank(random);
        static LaneBuffer buffer;
        std::fill_n(buffer, 16 * voiceCount, 0.1f);
        for (const float cutoff : {0.1f, 0.5f, 0.9f}) {
            for (const float resonance : {0.0f, 0.4f, 1.0f}) {
                bank.setup(3, {.type = type, .cutoff = cutoff, .resonance = resonance, .analog = cutoff});
                bank.run(buffer, 16, 1u << 3);
            }
        }
        const bool drew = random.congruence.state != 0 || random.hash.counter != 0;
        EXPECT_EQ(filters::mayDraw(type), drew) << type;
        if (drew) drawing.push_back(type);
    }
    EXPECT_EQ(drawing, (std::vector<int>{butter, orvix, ms20, 55, phaser3, 57, 58, 60, 61, 62, 63}));
}

TEST(LayerStack, KnowsTheDistortionsThatDraw) {
    for (int type = 0; type < 22; ++type) {
        RandomSources random;
        DistortionBank bank(random);
        static LaneBuffer buffer;
        std::fill_n(buffer, 16 * voiceCount, 0.1f);
        bank.setType(3, type);
        bank.setDrive(3, 0.7f);
        bank.run(buffer, 16, 1u << 3);
        EXPECT_EQ(random.congruence.state != 0 || random.hash.counter != 0, distortionMayDraw(type)) << type;
    }
}

// Kernels of every type of synthesis and every wave: those that draw are known to.
TEST(LayerStack, KnowsTheOscillatorsThatDraw) {
    constexpr struct {
        int synType, wave, rows;
    } types[] = {{wavetableType, par::WTWave1, 3},
                 {hypersawType, par::SSWave1, 13},
                 {noiseType, par::NoiWave1, 14},
                 {customWaveType, par::NoiWave1, 1},
                 {analogType, par::AnaWave1, 10}};
    for (const auto& type : types)
        for (int row = 0; row < type.rows; ++row)
            for (const float fm : {0.0f, 0.5f}) {
                LayerBench bench;
                for (int i = 0; i < oscillatorCount; ++i) {
                    bench.set(par::On1 + i, 1.0f);
                    bench.set(par::Vol1 + i, 1.0f);
                    bench.setList(par::SynType1 + i, type.synType);
                    bench.setList(type.wave + i, row);
                    if (i > 0) bench.set(par::Fm1 + i - 1, fm);
                }
                bench.press(60);
                bench.tick();
                const RandomSources before = bench.random;
                bench.render(96);
                const bool drew =
                    before.congruence.state != bench.random.congruence.state || before.hash.counter != bench.random.hash.counter;
                EXPECT_TRUE(bench.voice(15).oscillatorsDraw() || !drew) << type.synType << ' ' << row;
            }
}

}  // namespace
}  // namespace vantoric
