// The single cycles: wave files that the instrument takes as they are, clean at the seam, loud alike, and
// different from each other.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <set>

#include "base/fft.h"
#include "factory/cycles/cycle.h"
#include "loading/custom_wave_loader.h"
#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "samples/wave_file.h"

namespace vantoric::cycles {
namespace {

const std::vector<Cycle>& made() {
    static const std::vector<Cycle> all = [] {
        Workshop workshop;
        std::vector<Cycle> result;
        for (const Recipe& recipe : recipes()) result.push_back(finish(recipe.make(workshop), workshop));
        return result;
    }();
    return all;
}

std::vector<double> magnitudes(const Cycle& cycle) {
    static RealFft fft(waves::cycleLength);
    std::vector<double> signal(cycle.begin(), cycle.end()), real(cycle.size() / 2 + 1), imaginary(cycle.size() / 2 + 1);
    fft.forward(signal.data(), real.data(), imaginary.data());
    for (std::size_t k = 0; k < real.size(); ++k) real[k] = std::hypot(real[k], imaginary[k]);
    return real;
}

int peakOf(const Cycle& cycle) {
    int peak = 0;
    for (const int x : cycle) peak = std::max(peak, std::abs(x));
    return peak;
}

int step(const Cycle& cycle, std::size_t to) { return std::abs(cycle[to % cycle.size()] - cycle[to - 1]); }

// Runs a statement about every cycle under its name.
template <class Statement>
void ofAll(Statement statement) {
    for (std::size_t i = 0; i < made().size(); ++i) {
        SCOPED_TRACE(recipes()[i].name);
        statement(made()[i]);
    }
}

TEST(SingleCycles, AreMoreThanSixtyWithNamesThatTuneNothing) {
    std::set<std::string> names;
    for (const Recipe& recipe : recipes()) {
        names.insert(recipe.name);
        EXPECT_FALSE(fileNameTuning(recipe.name + ".wav")) << recipe.name;
        EXPECT_EQ(recipe.name.find_first_of("/\\."), recipe.name.npos) << recipe.name;
    }
    EXPECT_EQ(names.size(), recipes().size());
    EXPECT_GE(names.size(), 61u);
    EXPECT_TRUE(names.contains("2048"));
}

TEST(SingleCycles, BeginAtARisingZero) {
    ofAll([](const Cycle& cycle) {
        EXPECT_LE(std::abs(cycle[0]), 20);
        // Some rest at zero before they leave it.
        const auto isLoud = [peak = peakOf(cycle)](int x) { return std::abs(x) > 0.0101 * peak; };
        EXPECT_GT(*std::find_if(cycle.begin(), cycle.end(), isLoud), 0);
        EXPECT_LT(*std::find_if(cycle.rbegin(), cycle.rend(), isLoud), 0);
    });
}

TEST(SingleCycles, HaveNoStepAtTheirSeam) {
    ofAll([](const Cycle& cycle) {
        int largest = 0;
        for (std::size_t i = 1; i < cycle.size(); ++i) largest = std::max(largest, step(cycle, i));
        EXPECT_LE(step(cycle, cycle.size()), largest * 1.02 + 1.0);
        // Nor a kink: the seam bends no more than the rest.
        int bend = 0;
        const auto bendAt = [&](std::size_t i) {
            return std::abs(cycle[i % 2048] - 2 * cycle[(i - 1) % 2048] + cycle[(i - 2) % 2048]);
        };
        for (std::size_t i = 2; i < cycle.size(); ++i) bend = std::max(bend, bendAt(i));
        for (const std::size_t i : {2048u, 2049u}) EXPECT_LE(bendAt(i), bend * 1.02 + 2.0);
    });
}

TEST(SingleCycles, AreLoudAlikeWithoutAConstantPart) {
    ofAll([](const Cycle& cycle) {
        double sum = 0.0, squares = 0.0;
        for (const int x : cycle) {
            sum += x;
            squares += static_cast<double>(x) * x;
        }
        EXPECT_LT(std::fabs(sum / 2048), 0.5);
        EXPECT_LE(peakOf(cycle), cyclePeak);
        EXPECT_GT(std::sqrt(squares / 2048), 0.15 * cyclePeak);
    });
}

TEST(SingleCycles, SoundAtTheirOwnPitch) {
    // A fundamental, or partials that have no common divisor but one.
    ofAll([](const Cycle& cycle) {
        const std::vector<double> spectrum = magnitudes(cycle);
        const double strongest = *std::max_element(spectrum.begin() + 1, spectrum.end());
        std::size_t divisor = 0;
        for (std::size_t k = 1; k < 64; ++k)
            if (spectrum[k] > 0.02 * strongest) divisor = std::gcd(divisor, k);
        EXPECT_EQ(divisor, 1u);
    });
}

TEST(SingleCycles, DifferFromEachOther) {
    std::vector<std::vector<double>> spectra;
    ofAll([&](const Cycle& cycle) {
        std::vector<double> spectrum = magnitudes(cycle);
        double power = 0.0;
        for (const double size : spectrum) power += size * size;
        for (double& size : spectrum) size /= std::sqrt(power);
        spectra.push_back(spectrum);
    });
    for (std::size_t a = 0; a < spectra.size(); ++a)
        for (std::size_t b = 0; b < a; ++b) {
            double squares = 0.0;
            for (std::size_t k = 1; k < spectra[a].size(); ++k)
                squares += (spectra[a][k] - spectra[b][k]) * (spectra[a][k] - spectra[b][k]);
            EXPECT_GT(std::sqrt(squares), 0.06) << recipes()[a].name << " and " << recipes()[b].name;
        }
}

TEST(SingleCycles, ComeOutTheSameEveryTime) {
    Workshop workshop;
    for (std::size_t i = 0; i < recipes().size(); i += 7) EXPECT_EQ(finish(recipes()[i].make(workshop), workshop), made()[i]);
}

TEST(SingleCycles, LoadAsCustomWaves) {
    const platform::ScratchFolder folder;
    EngineFlags flags;
    ParameterModel parameters;
    parameters.setDefaults();
    const auto wave = std::make_unique<CustomWaveSlot>();
    CustomWaveHolders holders{};
    holders.fill(wave.get());
    EngineAccess access(flags, [](int) {});
    Messages messages;
    CustomWaveLoader loader(access, parameters, holders, messages);
    const std::string path = folder.path() + "cycle.wav";
    ofAll([&](const Cycle& cycle) {
        ASSERT_TRUE(writeCycle(cycle, path));
        std::vector<std::uint8_t> bytes;
        ASSERT_TRUE(platform::readFile(path, bytes));
        EXPECT_EQ(bytes.size(), 4140u);
        ASSERT_TRUE(loader.resynthesize(0, 0, path));
        const int peak = peakOf(cycle);
        // The whole file is the cycle, at the peak that the instrument gives every one.
        for (int i = 0; i < 2048; ++i)
            ASSERT_NEAR(wave->cycle[static_cast<std::size_t>(i)], cycle[static_cast<std::size_t>(i)] * 20000.0 / peak, 8.0) << i;
    });
    EXPECT_TRUE(messages.take().empty());
}

TEST(SingleCycles, CannotBeWrittenWhereThereIsNoFolder) { EXPECT_FALSE(writeCycle(made()[0], "/nowhere/at/all.wav")); }

}  // namespace
}  // namespace vantoric::cycles
