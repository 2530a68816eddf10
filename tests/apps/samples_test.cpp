// The samples that are worked out for the factory patches.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>

#include "factory/samples/recipes.h"
#include "factory/samples/singer.h"

namespace vantoric::made {
namespace {

class MadeSamples : public testing::TestWithParam<int> {
protected:
    const Recipe& recipe() const { return recipes()[static_cast<std::size_t>(GetParam())]; }
};

double level(const Wave& wave, std::size_t from, std::size_t to) {
    double sum = 0.0;
    for (std::size_t i = from; i < to; ++i) sum += wave[i] * wave[i];
    return std::sqrt(sum / static_cast<double>(to - from));
}

// Hz of the sound around `expected`, by the lag of best likeness between two stretches of a tenth of a second.
double pitch(const Wave& wave, std::size_t from, double expected) {
    double best = -1.0, found = 0.0;
    for (double lag = rate / expected * 0.97; lag < rate / expected * 1.03; lag += 0.05) {
        double likeness = 0.0, energy = 1e-9;
        // Eight periods apart, so that a cent is a fraction of a sample.
        const auto whole = static_cast<std::size_t>(8.0 * lag);
        const double part = 8.0 * lag - static_cast<double>(whole);
        for (std::size_t i = from; i < from + 4410; ++i) {
            const double late = (1.0 - part) * wave[i + whole] + part * wave[i + whole + 1];
            likeness += wave[i] * late;
            energy += late * late;
        }
        if (likeness / std::sqrt(energy) > best) best = likeness / std::sqrt(energy), found = rate / lag;
    }
    return found;
}

double cents(double hertz, double of) { return 1200.0 * std::log2(hertz / of); }

// How bright: the mean square of the differences against that of the samples.
double brightness(const Wave& wave, std::size_t from, std::size_t to) {
    double steps = 0.0, squares = 1e-12;
    for (std::size_t i = from + 1; i < to; ++i) {
        steps += (wave[i] - wave[i - 1]) * (wave[i] - wave[i - 1]);
        squares += wave[i] * wave[i];
    }
    return steps / squares;
}

TEST_P(MadeSamples, FillTheRangeWithoutAConstantPart) {
    const Wave wave = recipe().make().wave;
    double highest = 0.0, mean = 0.0;
    for (const double sample : wave) {
        ASSERT_TRUE(std::isfinite(sample)) << recipe().name;
        highest = std::max(highest, std::fabs(sample));
        mean += sample / static_cast<double>(wave.size());
    }
    EXPECT_LE(highest, 1.0);
    EXPECT_GE(highest, 0.8);
    EXPECT_LT(std::fabs(mean), 0.02) << recipe().name;
    EXPECT_LT(wave.size() * 2, std::size_t{300000});
}

TEST_P(MadeSamples, BeginSoftlyAndEndAtZeroOrGoRoundWithoutAClick) {
    const Sample sample = recipe().make();
    const Wave& wave = sample.wave;
    EXPECT_LT(std::fabs(wave.front()), 0.35) << recipe().name;
    if (sample.loop == 0) {
        EXPECT_LT(std::fabs(wave.back()), 1e-3) << recipe().name;
        return;
    }
    ASSERT_LT(sample.loop + framesOf(0.5), wave.size());
    // The step at the seam is no larger than those that the sound makes by itself, and its level stays.
    double largest = 0.0;
    for (std::size_t i = sample.loop + 1; i < wave.size(); ++i) largest = std::max(largest, std::fabs(wave[i] - wave[i - 1]));
    EXPECT_LE(std::fabs(wave[sample.loop] - wave.back()), largest) << recipe().name;
    const double late = level(wave, wave.size() - 8820, wave.size()), early = level(wave, sample.loop, sample.loop + 8820);
    EXPECT_NEAR(20.0 * std::log10(late / early), 0.0, 1.0) << recipe().name;
}

TEST_P(MadeSamples, ComeOutTheSameEveryTime) { EXPECT_EQ(recipe().make().wave, recipe().make().wave); }

INSTANTIATE_TEST_SUITE_P(All, MadeSamples, testing::Range(0, static_cast<int>(recipes().size())), [](const auto& index) {
    std::string name = recipes()[static_cast<std::size_t>(index.param)].name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

TEST(MadeSampleNames, DifferFromEachOther) {
    std::set<std::string> names;
    for (const Recipe& recipe : recipes()) names.insert(recipe.name);
    EXPECT_EQ(names.size(), recipes().size());
}

TEST(MadeStrings, AreInTune) {
    for (const double hertz : {82.4, home, 196.0, 329.6})
        EXPECT_NEAR(cents(pitch(pluck({.hertz = hertz}, 1.5), 22050, hertz), hertz), 0.0, 4.0) << hertz;
}

TEST(MadeStrings, LoseTheirHighPartialsFirst) {
    const Wave wave = pluck({}, 2.0);
    EXPECT_LT(brightness(wave, 66150, 74970), 0.5 * brightness(wave, 2205, 11025));
}

TEST(MadeTubes, AreInTuneHowEverTheyAreBlown) {
    for (const double pressure : {0.56, 0.66, 0.76})
        EXPECT_NEAR(cents(pitch(tube(pressure, 1.5).wave, 33075, home), home), 0.0, 5.0) << pressure;
}

TEST(MadeVoices, SingAtTheirPitchWithTheirVowel) {
    EXPECT_NEAR(cents(pitch(vowel("a", home).wave, 44100, home), home), 0.0, 10.0);
    EXPECT_GT(brightness(vowel("a", home).wave, 44100, 66150), 1.5 * brightness(vowel("u", home).wave, 44100, 66150));
}

TEST(MadeVoices, SpeakInSyllables) {
    // The level of a phrase comes and goes; that of a sung vowel does not.
    auto falls = [](const Wave& wave) {
        double least = 1e9, most = 0.0;
        for (std::size_t at = 8820; at + 4410 < wave.size() - 22050; at += 2205) {
            const double now = level(wave, at, at + 2205);
            least = std::min(least, now);
            most = std::max(most, now);
        }
        return 20.0 * std::log10(most / least);
    };
    EXPECT_GT(falls(phrase()), 9.0);
    EXPECT_LT(falls(vowel("o", home).wave), 4.0);
}

TEST(MadeDrums, AreBrighterTheHarderTheyAreStruck) {
    for (const auto make : {kick, snare, tom}) EXPECT_GT(brightness(make(0.9), 0, 8820), 1.2 * brightness(make(0.1), 0, 8820));
    EXPECT_GT(brightness(bar(0.9), 0, 8820), 1.2 * brightness(bar(0.1), 0, 8820));
}

}  // namespace
}  // namespace vantoric::made
