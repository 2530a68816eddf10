#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <set>

#include "apps/patch/patch.h"
#include "base/numbers.h"
#include "parameters/label_lists.h"
#include "platform/files.h"

#ifndef MADE_FOLDER
#error "the folder of the made content"
#endif

namespace vantoric::patch {
namespace {

namespace fs = std::filesystem;
namespace p = parameter;

constexpr int layerCount = 4, oscillatorCount = 3, stepCount = 16, matrixRows = 15;

// The factory patches, read once.
const std::vector<std::unique_ptr<Patch>>& factory() {
    static const std::vector<std::unique_ptr<Patch>> patches = [] {
        std::vector<std::unique_ptr<Patch>> read;
        for (const auto& entry : fs::recursive_directory_iterator(fs::path(MADE_FOLDER) / "Vantoric_sounds")) {
            if (entry.path().extension() != ".fxp") continue;
            std::vector<std::uint8_t> bytes;
            EXPECT_TRUE(platform::readFile(entry.path().string(), bytes)) << entry.path();
            read.push_back(std::make_unique<Patch>());
            fromPatchFile(bytes, *read.back());
        }
        return read;
    }();
    return patches;
}

// One layer that is on, of any patch.
struct Layer {
    const Patch& patch;
    int layer;
    float value(int n) const { return patch.parameters.getParameter(hostIndex(n, layer)); }
    int row(int n) const { return listIndex(value(n)); }
    bool isOn(int oscillator) const { return value(p::On1 + oscillator) > 0.5f; }
};

void eachLayer(const std::function<void(const Layer&)>& visit) {
    for (const auto& patch : factory())
        for (int layer = 0; layer < layerCount; ++layer)
            if (patch->parameters.getParameter(p::Layer1On + layer) > 0.5f) visit({*patch, layer});
}

using Rows = std::set<int>;

// Labels of a list that no patch uses; separators do not count.
std::vector<std::string> unused(LabelList labels, const Rows& used) {
    std::vector<std::string> texts;
    for (std::size_t row = 0; row < labels.size(); ++row)
        if (std::string_view(labels[row]) != "-" && !used.contains(static_cast<int>(row))) texts.emplace_back(labels[row]);
    return texts;
}

using Texts = std::vector<std::string>;

TEST(FactoryContent, UsesEveryEffect) {
    Rows used;
    for (const auto& patch : factory()) used.insert(listIndex(patch->parameters.getParameter(p::FxMaType)));
    eachLayer([&used](const Layer& layer) { used.insert({layer.row(p::FxInType), layer.row(p::FxIn2Type)}); });
    EXPECT_EQ(unused(insertTypeMenuLabels, used), Texts());
}

TEST(FactoryContent, UsesEveryOscillatorKind) {
    Rows kinds, stacks, noises;
    eachLayer([&](const Layer& layer) {
        for (int i = 0; i < oscillatorCount; ++i) {
            if (!layer.isOn(i)) continue;
            kinds.insert(layer.row(p::SynType1 + i));
            if (layer.row(p::SynType1 + i) == 1) stacks.insert(layer.row(p::SSWave1 + i));
            if (layer.row(p::SynType1 + i) == 2) noises.insert(layer.row(p::NoiWave1 + i));
        }
    });
    EXPECT_EQ(unused(synthesisTypeLabels, kinds), Texts());
    EXPECT_GE(stacks.size(), 12u);
    EXPECT_GE(noises.size(), 14u);
}

TEST(FactoryContent, UsesEveryFilterAndEveryFamilyOfDistortion) {
    Rows filters, distortions;
    eachLayer([&](const Layer& layer) {
        bool second = layer.value(p::FilSerial) > 0.5f;
        for (int i = 0; i < oscillatorCount; ++i) second = second || (layer.isOn(i) && layer.value(p::FiltMix1 + i) > 0.0f);
        for (int i = 0; i < (second ? 2 : 1); ++i) {
            filters.insert(layer.row(p::FilType1 + i));
            if (layer.value(p::Drive1 + i) > 0.0f) distortions.insert(layer.row(p::DisType1 + i));
        }
    });
    filters.erase(0);
    distortions.erase(0);
    EXPECT_EQ(unused(filterTypeLabels, filters), Texts({"Bypass"}));
    EXPECT_GE(distortions.size(), 18u);
    // The menu's groups: saturation, shapers, and what breaks the wave.
    for (const auto& [first, last] : {std::pair(2, 5), std::pair(7, 15), std::pair(17, 21)})
        EXPECT_GE(std::distance(distortions.lower_bound(first), distortions.upper_bound(last)), 3) << first;
}

TEST(FactoryContent, ShowsLfosStepsAndTheMatrix) {
    Rows waves, modes, shapes, sources, destinations;
    eachLayer([&](const Layer& layer) {
        for (int i = 0; i < 3; ++i) waves.insert(layer.row(p::LfoWave1 + i)), modes.insert(layer.row(p::LfoMode1 + i));
        for (int row = 0; row < matrixRows; ++row) {
            if (layer.value(p::MatVal1 + row) == 0.5f) continue;
            sources.insert(layer.row(p::MatSrc1 + row));
            destinations.insert(layer.row(p::MatDst1 + row));
            if (layer.row(p::MatSrc1 + row) == 5 || layer.row(p::MatSrc1 + row) == 6) shapes.insert(layer.row(p::StepShap));
        }
    });
    EXPECT_GE(waves.size(), 24u);
    EXPECT_GE(modes.size(), 10u);
    EXPECT_GE(shapes.size(), 24u);
    EXPECT_GE(sources.size(), 45u);
    EXPECT_GE(destinations.size(), 65u);
}

TEST(FactoryContent, ShowsTheArpeggiator) {
    Rows types, chords, songModes, events;
    bool slides = false, swings = false, thirds = false;
    eachLayer([&](const Layer& layer) {
        if (layer.row(p::ArpType) == 0) return;
        types.insert(layer.row(p::ArpType));
        chords.insert(layer.row(p::ArpChord));
        songModes.insert(layer.row(p::ArpRetri));
        swings = swings || layer.value(p::ArpSwing) > 0.1f;
        for (int step = 0; step < stepCount; ++step) {
            const std::string note = arpStepNoteLabels[static_cast<std::size_t>(layer.row(p::ArpStp1 + step))];
            slides = slides || note.starts_with('/') || note.starts_with('\\');
            thirds = thirds || note == "3/4" || note == "15/16";
            events.insert(layer.row(p::ArpVol1 + step));
        }
    });
    EXPECT_GE(types.size(), 15u);
    EXPECT_GE(chords.size(), 16u);
    EXPECT_EQ(unused(arpRetriggerLabels, songModes), Texts());
    EXPECT_TRUE(slides);
    EXPECT_TRUE(swings);
    EXPECT_TRUE(thirds);
    for (const int event : {0, 11, 13, 16})
        EXPECT_TRUE(events.contains(event)) << arpStepVolumeLabels[static_cast<std::size_t>(event)];
}

TEST(FactoryContent, ShowsTuningsAndSoundModes) {
    Rows tunings, modes;
    for (const auto& patch : factory()) {
        tunings.insert(listIndex(patch->parameters.getParameter(p::Microtun)));
        modes.insert(listIndex(patch->parameters.getParameter(p::SoundMod)));
    }
    EXPECT_GE(tunings.size(), 11u);
    EXPECT_GE(modes.size(), 10u);
}

}  // namespace
}  // namespace vantoric::patch
