// The wave banks: files that the instrument's loader takes, and contents that fit their labels.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "base/fft.h"
#include "base/math.h"
#include "factory/waves/bank.h"
#include "factory/waves/makers.h"

namespace vantoric::waves {
namespace {

// Every bank, made once for all tests, on two threads.
const std::vector<Bank>& banks() {
    static const std::vector<Bank> made = [] {
        std::vector<Bank> result(recipes().size());
        auto half = [&result](std::size_t first) {
            Workshop workshop;
            for (std::size_t i = first; i < recipes().size(); i += 2) result[i] = makeBank(recipes()[i], workshop);
        };
        auto other = std::async(std::launch::async, half, 1);
        half(0);
        other.get();
        return result;
    }();
    return made;
}

std::size_t indexOf(const std::string& stem) {
    for (std::size_t i = 0; i < recipes().size(); ++i)
        if (recipes()[i].stem == stem) return i;
    ADD_FAILURE() << "no bank " << stem;
    return 0;
}
const Bank& bank(const std::string& stem) { return banks()[indexOf(stem)]; }

double rms(const std::int16_t* a, const std::int16_t* b = nullptr) {
    double sum = 0.0;
    for (int i = 0; i < cycleLength; ++i) {
        const double x = (a[i] - (b ? b[i] : 0)) / 32768.0;
        sum += x * x;
    }
    return std::sqrt(sum / cycleLength);
}

std::vector<double> magnitudes(const std::int16_t* cycle) {
    static RealFft fft(cycleLength);
    std::vector<double> signal(cycle, cycle + cycleLength), real(cycleLength / 2 + 1), imaginary(cycleLength / 2 + 1), result;
    fft.forward(signal.data(), real.data(), imaginary.data());
    for (std::size_t k = 0; k < real.size(); ++k)
        result.push_back(std::hypot(real[k], imaginary[k]) / (cycleLength / 2) / 32768.0);
    return result;
}

// How much of the cycle lies above zero.
double partAbove(const std::int16_t* cycle, double threshold) {
    return static_cast<double>(std::count_if(cycle, cycle + cycleLength, [=](int x) { return x > threshold; })) / cycleLength;
}

class Folder {
public:
    Folder() : path(std::filesystem::temp_directory_path() / ("vantoric-waves-test-" + std::to_string(getpid()))) {
        std::filesystem::create_directories(path);
    }
    ~Folder() { std::filesystem::remove_all(path); }
    const std::filesystem::path path;
};

std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

unsigned number(const std::string& bytes, std::size_t at, int width) {
    unsigned value = 0;
    for (int i = width; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
    return value;
}

TEST(WaveBanks, AreThirtyNineWithDifferentNames) {
    std::set<std::string> names;
    for (const Recipe& recipe : recipes()) names.insert(recipe.stem);
    EXPECT_EQ(recipes().size(), 39u);
    EXPECT_EQ(names.size(), 39u);
}

TEST(WaveBanks, HaveTheFramesThatTheInstrumentCountsOn) {
    const std::map<std::string, int> wanted = {{"VA_Triangle_Saw", 64}, {"VA_Square_Impulse", 128}, {"FM_Waveforms", 8},
                                               {"WT_Sine", 32},         {"WT_Combsaw", 32},         {"FX_Bitnoise", 64},
                                               {"EL_Alpha2", 128},      {"NO_NoisySaw", 128},       {"WT_Waves8", 16}};
    for (const auto& [stem, frames] : wanted) EXPECT_EQ(bank(stem).frames, frames) << stem;
}

TEST(WaveBanks, AreWrittenAsTheLoaderReadsThem) {
    const Folder folder;
    for (std::size_t i = 0; i < banks().size(); ++i) {
        SCOPED_TRACE(recipes()[i].stem);
        const auto path = folder.path / "bank.va";
        ASSERT_TRUE(writeBank(banks()[i], path));
        const std::string bytes = readFile(path);
        ASSERT_GT(bytes.size(), 44u);
        EXPECT_EQ(bytes.substr(0, 4), "RIFF");
        EXPECT_EQ(number(bytes, 4, 4), bytes.size() - 8);
        EXPECT_EQ(number(bytes, 16, 4) + 28, 44u);  // where the samples begin
        EXPECT_EQ(number(bytes, 20, 2), 1u);        // PCM
        EXPECT_EQ(number(bytes, 22, 1), 1u);        // mono
        EXPECT_EQ(number(bytes, 34, 1), 16u);       // bits
        const unsigned size = number(bytes, 40, 4);
        EXPECT_EQ(size, bytes.size() - 44);
        EXPECT_EQ(size, static_cast<unsigned>(banks()[i].frames) * 32768u);
        EXPECT_EQ(static_cast<std::int16_t>(number(bytes, 44 + 2 * 321, 2)), banks()[i].samples[321]);
    }
}

TEST(WaveBanks, CannotBeWrittenWhereThereIsNoFolder) { EXPECT_FALSE(writeBank(banks()[2], "/nowhere/at/all.va")); }

TEST(WaveBanks, HaveNoConstantPart) {
    for (std::size_t i = 0; i < banks().size(); ++i)
        for (int level = 0; level < levels; ++level)
            for (int frame = 0; frame < banks()[i].frames; ++frame) {
                const std::int16_t* cycle = banks()[i].cycle(level, frame);
                double sum = 0.0;
                for (int n = 0; n < cycleLength; ++n) sum += cycle[n];
                ASSERT_LT(std::fabs(sum / cycleLength), 1.0) << recipes()[i].stem << " " << level << " " << frame;
            }
}

TEST(WaveBanks, KeepOnlyTheHarmonicsOfTheirLevel) {
    for (std::size_t i = 0; i < banks().size(); ++i)
        for (int level = 0; level < levels; ++level)
            for (int frame : {0, banks()[i].frames / 2, banks()[i].frames - 1}) {
                const auto spectrum = magnitudes(banks()[i].cycle(level, frame));
                const auto above = spectrum.begin() + (harmonicLimit >> level);
                // What is left above the limit is the rounding to 16 bits.
                ASSERT_LT(*std::max_element(above, spectrum.end()), 2e-5) << recipes()[i].stem << " " << level << " " << frame;
            }
}

TEST(WaveBanks, KeepTheHarmonicsBelowTheLimitAsTheyAre) {
    for (std::size_t i = 0; i < banks().size(); ++i) {
        const int frame = banks()[i].frames / 3;
        const auto full = magnitudes(banks()[i].cycle(0, frame));
        for (int level = 1; level < levels; ++level) {
            const auto part = magnitudes(banks()[i].cycle(level, frame));
            for (int k = 1; k < harmonicLimit >> level; ++k)
                ASSERT_NEAR(part[k], full[k], 4e-5) << recipes()[i].stem << " " << level;
        }
    }
}

TEST(WaveBanks, StayBelowTheirPeakCapAndAreLoudAlike) {
    for (std::size_t i = 0; i < banks().size(); ++i) {
        int peak = 0;
        for (const std::int16_t x : banks()[i].samples) peak = std::max(peak, std::abs(static_cast<int>(x)));
        EXPECT_LE(peak, peakCap * 32768.0) << recipes()[i].stem;
        for (int frame = 0; frame < banks()[i].frames; ++frame) {
            const double level = rms(banks()[i].cycle(0, frame));
            ASSERT_LT(level, targetRms + 0.001) << recipes()[i].stem << " " << frame;
            ASSERT_GT(level, 0.07) << recipes()[i].stem << " " << frame;
        }
    }
}

TEST(WaveBanks, MorphWithoutJumps) {
    for (std::size_t i = 0; i < banks().size(); ++i) {
        if (recipes()[i].kind != Kind::morph) continue;
        double largest = 0.0;
        for (int frame = 1; frame < banks()[i].frames; ++frame)
            largest = std::max(largest,
                               rms(banks()[i].cycle(0, frame), banks()[i].cycle(0, frame - 1)) / rms(banks()[i].cycle(0, frame)));
        EXPECT_LT(largest, 0.55) << recipes()[i].stem;
        EXPECT_GT(largest, 0.0) << recipes()[i].stem;
    }
}

TEST(WaveBanks, CloseTheirScansSeamlessly) {
    for (std::size_t i = 0; i < banks().size(); ++i) {
        if (recipes()[i].kind != Kind::scan) continue;
        const Bank& scan = banks()[i];
        double largest = 0.0;
        for (int frame = 1; frame < scan.frames; ++frame)
            largest = std::max(largest, rms(scan.cycle(0, frame), scan.cycle(0, frame - 1)));
        EXPECT_LE(rms(scan.cycle(0, 0), scan.cycle(0, scan.frames - 1)), largest * 1.05) << recipes()[i].stem;
        EXPECT_LT(largest, 0.16) << recipes()[i].stem;
    }
}

TEST(WaveBanks, ComeOutTheSameEveryTime) {
    for (const char* stem : {"FM_Waveforms", "NO_NoisySaw", "SS_NoisySaws", "WT_Waves8"}) {
        Workshop workshop;
        EXPECT_EQ(makeBank(recipes()[indexOf(stem)], workshop).samples, bank(stem).samples) << stem;
    }
}

TEST(NamedFrames, GoFromTriangleToFallingSaw) {
    const auto triangle = magnitudes(bank("VA_Triangle_Saw").cycle(0, 0));
    const auto saw = magnitudes(bank("VA_Triangle_Saw").cycle(0, 63));
    for (int k = 2; k < 40; ++k) {
        EXPECT_NEAR(triangle[k] / triangle[1], k % 2 ? 1.0 / (k * k) : 0.0, 2e-4) << k;
        EXPECT_NEAR(saw[k] / saw[1], 1.0 / k, 2e-4) << k;
    }
    const std::int16_t* falling = bank("VA_Triangle_Saw").cycle(0, 63);
    EXPECT_GT(falling[256], falling[1024]);
    EXPECT_GT(falling[1024], falling[1792]);
}

TEST(NamedFrames, HoldThePulsesOfTheirLabels) {
    const std::map<int, double> widths = {{0, 1.0 / 2},  {25, 2.0 / 5}, {43, 1.0 / 3}, {64, 1.0 / 4},
                                          {77, 1.0 / 5}, {85, 1.0 / 6}, {96, 1.0 / 8}};
    for (const auto& [frame, width] : widths) {
        EXPECT_NEAR(pulseWidth(frame), width, 1e-12);
        EXPECT_NEAR(partAbove(bank("VA_Square_Impulse").cycle(0, frame), 0.0), width, 0.002) << frame;
    }
    for (int frame = 1; frame < 128; ++frame) EXPECT_LT(pulseWidth(frame), pulseWidth(frame - 1)) << frame;
}

TEST(NamedFrames, HoldThePureSine) {
    const auto sine = magnitudes(bank("WT_Sine").cycle(0, 0));
    EXPECT_NEAR(sine[1], targetRms * std::sqrt(2.0), 1e-3);
    for (int k = 2; k < 1024; ++k) ASSERT_LT(sine[k], 2e-5);
}

TEST(NamedFrames, HoldTheHalfSineAndTheFlippedSine) {
    // Half sine: harmonics 1, and the even ones at 4 / (pi (k^2 - 1)) of it. Flipped: 3 / (4 k^2 - 1).
    const auto half = magnitudes(bank("FM_Waveforms").cycle(0, 1)), flip = magnitudes(bank("FM_Waveforms").cycle(0, 2));
    for (int k = 2; k < 30; ++k) {
        EXPECT_NEAR(half[k] / half[1], k % 2 ? 0.0 : 4.0 / (math::pi * (k * k - 1)), 3e-4) << k;
        EXPECT_NEAR(flip[k] / flip[1], 3.0 / (4.0 * k * k - 1.0), 3e-4) << k;
    }
}

TEST(NamedFrames, HoldThreeCombs) {
    // A comb has deep notches between strong teeth among its first 32 harmonics.
    for (const auto& [stem, frame] : {std::pair{"WT_Combsaw", 1}, std::pair{"FX_Bitnoise", 8}, std::pair{"EL_Alpha2", 64}}) {
        const auto spectrum = magnitudes(bank(stem).cycle(0, frame));
        int notches = 0;
        for (int k = 3; k < 63; ++k)
            if (spectrum[k] < 0.35 * std::max(*std::max_element(&spectrum[k - 2], &spectrum[k]), 1e-9) ||
                spectrum[k] * k < 0.1 * spectrum[1])
                ++notches;
        EXPECT_GE(notches, 4) << stem;
    }
}

TEST(NamedFrames, HoldAnImpulse) {
    const std::int16_t* impulse = bank("WT_Waves8").cycle(0, 0);
    EXPECT_LT(partAbove(impulse, 0.4 * *std::max_element(impulse, impulse + cycleLength)), 1.0 / 32);
    const auto spectrum = magnitudes(impulse);
    for (int k = 2; k < 16; ++k) EXPECT_GT(spectrum[k], 0.8 * spectrum[1]) << k;
}

TEST(NamedFrames, HoldASawOfNoise) {
    // The same harmonic ladder, but the crest of a saw is gone: energy is spread over the whole cycle.
    const auto noise = magnitudes(bank("NO_NoisySaw").cycle(0, 127)), saw = magnitudes(bank("NO_NoisySaw").cycle(0, 0));
    double top = 0.0, sawTop = 0.0;
    for (int k = 100; k < 1000; ++k) {
        top += noise[k] * noise[k];
        sawTop += saw[k] * saw[k];
    }
    EXPECT_GT(top, 10.0 * sawTop);
    EXPECT_GT(noise[1], 0.05);
}

TEST(HarmonicTools, TurnACycleToItsFundamental) {
    Workshop workshop;
    Spectrum wave = pulse(0.2);
    wave.advance(0.37);
    wave.alignFundamental();
    EXPECT_NEAR(wave.cosine[1], 0.0, 1e-12);
    EXPECT_GT(wave.sine[1], 0.0);
    EXPECT_NEAR(wave.magnitude(7), pulse(0.2).magnitude(7), 1e-12);
}

TEST(HarmonicTools, DrawTheSineTheyAreGiven) {
    Workshop workshop;
    const Spectrum drawn =
        workshop.draw([](double t) { return math::sin(2 * math::pi * 3 * t) + 0.5 * math::cos(2 * math::pi * t); });
    EXPECT_NEAR(drawn.sine[3], 1.0, 1e-9);
    EXPECT_NEAR(drawn.cosine[1], 0.5, 1e-9);
    EXPECT_NEAR(drawn.magnitude(2), 0.0, 1e-9);
}

}  // namespace
}  // namespace vantoric::waves
