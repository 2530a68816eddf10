#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>

#include "samples/resynthesis.h"
#include "samples/sfz.h"
#include "samples/wave_file.h"
#include "tests/fuzz/targets.h"

namespace vantoric::fuzz {

namespace {

constexpr std::size_t longestSound = 20000;  // samples; longer ones only take longer

bool isUnit(float value) { return value >= 0.0f && value <= 1.0f; }
bool isKey(int key) { return key >= 0 && key <= 127; }

void requireSoundOscillator(const SfzOscillator& oscillator, const SfzPlan& plan) {
    require(oscillator.region < plan.regions, "an oscillator's region is one of those used");
    require(!oscillator.sample.empty() && oscillator.sample.size() <= 2 * maxSfzLine, "and has a sample");
    require(isKey(oscillator.keys.low) && isKey(oscillator.keys.high), "keys are on the keyboard");
    for (const float value : {oscillator.oct, oscillator.semi, oscillator.detune, oscillator.vol})
        require(isUnit(value), "a parameter is from 0 to 1");
    require(oscillator.offset >= 0 && oscillator.loopStart >= -1 && oscillator.loopEnd >= -1, "points are not negative");
}

void requireSoundPlan(const SfzPlan& plan) {
    require(plan.oscillators.size() == std::min(plan.regions, importedOscillators), "as many oscillators as there can be");
    float loudest = 0.0f;
    for (const SfzOscillator& oscillator : plan.oscillators) {
        requireSoundOscillator(oscillator, plan);
        loudest = std::max(loudest, oscillator.vol);
    }
    require(plan.oscillators.empty() || loudest == 1.0f, "the loudest is at full level");
    for (const auto& value : {plan.attack, plan.hold, plan.decay, plan.sustain, plan.release, plan.velocityDepth})
        require(!value || isUnit(*value), "an envelope value is from 0 to 1");
    require(!plan.playMode || (*plan.playMode >= 2 && *plan.playMode <= 13), "a play mode is one of the list");
}

}  // namespace

void sfzFile(const std::uint8_t* data, std::size_t size) {
    const SfzFile file = parseSfz({reinterpret_cast<const char*>(data), size});
    require(file.regions.size() <= maxSfzRegions, "regions are bounded");
    require(file.lines > 0 || file.regions.empty(), "regions come from lines");
    const SfzPlan all = planSfz(file, false), first = planSfz(file, true);
    requireSoundPlan(all);
    requireSoundPlan(first);
    require(first.regions <= all.regions, "the first group has no more regions than all");
}

// The file's own bytes.
void resynthesis(const std::uint8_t* data, std::size_t size) {
    std::array<std::int16_t, cycleSamples> cycle;
    cycle.fill(-32768);
    const WaveLayout layout = parseWave({data, size});
    if (layout.error == WaveError::none && static_cast<std::size_t>(layout.frames) > longestSound) return;
    const Outcome outcome = resynthesizeWave({data, size}, "x", cycle);
    if (!outcome) {
        require(outcome.title == "x" && !outcome.text.empty(), "a refusal is told");
        for (const std::int16_t s : cycle) require(s == -32768, "and changes nothing");
        return;
    }
    require(outcome.text.empty(), "a success is quiet");
    int peak = 0;
    for (const int s : cycle) peak = std::max(peak, std::abs(s));
    require(peak == 0 || (peak >= resynthesisPeak - 1 && peak <= resynthesisPeak), "a cycle is silent or at its peak");
}

std::vector<Bytes> sfzFileSeeds() {
    std::vector<Bytes> seeds;
    for (const std::string_view text : {
             std::string_view("<control>\ndefault_path=Samples\\Piano\\\n<group> ampeg_attack=0.1 ampeg_sustain=40 volume=-3\r\n"
                              "<region> sample=a b.wav lokey=c#3 hikey=Db4 pitch_keycenter=60 tune=-12 // note\n"
                              "<region> sample=c.WAV key=61 hivel=63\n<region> sample=d.wav\tkey=62 seq_position=2\n"),
             std::string_view(
                 "<global>\nampeg_release=0.6 polyphony=4 amp_veltrack=50\n<master>\n<group>\nloop_mode=loop_continuous\n"
                 "<region>\nsample=x.wav\nloop_start=5\nloop_end=900\noffset=3\n<group>\n<region>sample=y.flac key=c-1\n"
                 "<region>\ntrigger=release\nsample=z.wav\n"),
             std::string_view("<region>sample=.wav<region>sample=.wav key=g9 volume=1e308 tune=-nan loop_end=-5 offset=1e99\n"),
         })
        seeds.emplace_back(text.begin(), text.end());
    std::string many;
    for (int i = 0; i < 30; ++i) many += "<region> sample=z.wav key=" + std::to_string(i * 4) + "\n";
    seeds.emplace_back(many.begin(), many.end());
    return seeds;
}

std::vector<Bytes> resynthesisSeeds() {
    std::vector<std::int16_t> sound;
    for (int i = 0; i < 4200; ++i) sound.push_back(static_cast<std::int16_t>(i % 97 * 300 - 14000));
    std::vector<Bytes> seeds = {waveFileBytes(sound)};
    sound.resize(60);
    seeds.push_back(waveFileBytes(sound));
    for (const std::uint8_t bits : {8, 24, 32}) {
        seeds.push_back(seeds[1]);
        seeds.back()[34] = bits;
    }
    seeds.push_back(seeds.back());
    seeds.back()[20] = 3;  // float
    return seeds;
}

}  // namespace vantoric::fuzz
