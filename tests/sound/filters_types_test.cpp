#include <algorithm>

#include "filters_fixture.h"
#include "sound/filter_labels.h"
#include "sound/filter_response.h"
#include "sound/filters/filter_menu.h"

namespace vantoric {
namespace {

using namespace filters;

class FilterTypes : public Filters {};

float loudestOf(const std::vector<float>& x, std::size_t from = 0) {
    float loudest = 0.0f;
    for (std::size_t i = from; i < x.size(); ++i) loudest = std::max(loudest, std::fabs(x[i]));
    return loudest;
}
std::vector<float> scaled(std::vector<float> x, float factor) {
    for (float& sample : x) sample *= factor;
    return x;
}

// --- The list ------------------------------------------------------------------------------------------

TEST_F(FilterTypes, TheListHasFiftyOneTypesAndSeparatorsThatPassAudio) {
    EXPECT_EQ(filterIndices().size(), 51u);
    for (const int separator : {0, 1, 6, 11, 16, 22, 29, 33, 40, 46, 49, 54, 59, 64, 127, -1}) {
        EXPECT_EQ(filterNumber(separator), -1);
        RandomSources random;
        VoiceFilter filter(random);
        filter.setup({.type = separator});
        std::vector<float> x = noise(100);
        filter.run(x.data(), 100);
        EXPECT_EQ(x, noise(100));
    }
    EXPECT_EQ(filterNumber(4), 140);
    EXPECT_EQ(filterNumber(63), 249);
}

TEST_F(FilterTypes, TheMenuNamesEachTypeAndSeparator) {
    for (int i = 0; i < menuSize; ++i) {
        const std::string label = filterLabels[static_cast<std::size_t>(i)];
        EXPECT_EQ(filterNumber(i) < 0, label == "-" || label == "Bypass") << i << " " << label;
    }
    EXPECT_STREQ(filterLabels[0], "Bypass");
    EXPECT_STREQ(filterLabels[4], "LP 24dB");
    EXPECT_STREQ(filterLabels[41], "Vocals 2");
    EXPECT_STREQ(filterLabels[63], "Formant 4x");
}

TEST_F(FilterTypes, ARowAtAWrongOrTakenIndexAndAMissingOneAreFaults) {
    auto lines = menuLines(AllLoops{});
    EXPECT_EQ(faultOf(lines), MenuFault::none);
    EXPECT_EQ(faultOf({lines.data(), lines.size() - 1}), MenuFault::missingIndex);
    const int own = lines.back().index;
    for (const int beyond : {-1, menuSize}) {
        lines.back().index = beyond;
        EXPECT_EQ(faultOf(lines), MenuFault::wrongIndex);
    }
    for (const int taken : {0, 1, 4}) {
        lines.back().index = taken;
        EXPECT_EQ(faultOf(lines), MenuFault::doubleIndex);
    }
    lines.back().index = own;
    EXPECT_EQ(faultOf(lines), MenuFault::none);
}

// --- What the text of the types promises ---------------------------------------------------------------

TEST_F(FilterTypes, FullyOpenWithFullResonanceLp24StopsAtItsCeilingWithoutDrive) {
    FilterUnderTest open("LP 24dB", 1.0f, 1.0f, 1.0f);
    open.settings.sampleRate = 48001.0f;
    open.settings.type = 0;
    open.set(1, 1, 1);
    open.settings.type = 4;
    open.set(1, 1, 1);
    EXPECT_EQ(open.filter.loop<Svf24>().f, 0.93f);
    EXPECT_EQ(open.filter.loop<Svf24>().drive, 0.0f);
    const std::vector<float> y = open.run(noise(40000, 1.0f));
    EXPECT_LT(loudestOf(y), 3.0f);
    EXPECT_LT(loudestOf(open.run(std::vector<float>(40000, 0.0f)), 20000), 0.001f);
}

TEST_F(FilterTypes, CombMinusSoundsAsCombPlus) {
    FilterUnderTest plus("Comb+", 0.8f, 0.7f), minus("Comb-", 0.8f, 0.7f);
    EXPECT_EQ(plus.run(noise(4000)), minus.run(noise(4000)));
}

TEST_F(FilterTypes, ADelayGlidesToItsNewLengthForOneTickWithoutAClick) {
    for (const char* label : {"Comb+", "Phys String", "Phys Flute"}) {
        FilterUnderTest moved(label, 0.7f, 0.5f), still(label, 0.7f, 0.5f);
        std::vector<float> tone(88 * 40);
        for (std::size_t i = 0; i < tone.size(); ++i) tone[i] = 0.5f * std::sin(0.02f * static_cast<float>(i));
        for (std::size_t at = 0; at < tone.size(); at += 88) {
            std::vector<float> a(tone.begin() + static_cast<long>(at), tone.begin() + static_cast<long>(at) + 88), b = a;
            const bool jump = at == 88 * 30;
            moved.set(jump ? 0.75f : 0.7f, 0.5f, 0.0f);
            still.set(0.7f, 0.5f, 0.0f);
            a = moved.run(a);
            b = still.run(b);
            if (at < 88 * 30) {
                ASSERT_EQ(a, b);
            }
            if (!jump) continue;
            EXPECT_NEAR(a[0], b[0], 0.02f) << label;
            for (std::size_t i = 1; i < a.size(); ++i) EXPECT_LT(std::fabs(a[i] - a[i - 1]), 0.12f) << label;
            EXPECT_GT(std::fabs(a[87] - b[87]), 0.0005f) << label;
            break;
        }
    }
}

TEST_F(FilterTypes, TheFirstTickOfADelayGlidesFromZero) {
    FilterUnderTest comb("Comb+", 0.5f, 0.5f);
    EXPECT_EQ(comb.filter.loop<Comb>().glide.from, 0.0f);
    comb.set(0.5f, 0.5f, 0.0f);
    EXPECT_EQ(comb.filter.loop<Comb>().glide.from, comb.filter.loop<Comb>().glide.delay);
}

TEST_F(FilterTypes, AliaserFullyOpenPassesItsInput) {
    for (const float rate : {48000.0f, 59535.0f, 88200.0f, 96000.0f}) {
        FilterUnderTest open("Aliaser");
        open.settings.sampleRate = rate;
        open.set(1.0f, 0.3f, 0.0f);
        EXPECT_EQ(open.filter.loop<Aliaser>().N, 1.0f);
        EXPECT_EQ(open.run(noise(500)), noise(500));
    }
    FilterUnderTest fast("Aliaser");
    fast.settings.sampleRate = 192000.0f;
    fast.set(1.0f, 0.3f, 0.0f);
    EXPECT_EQ(fast.filter.loop<Aliaser>().N, 3.0f);
}

TEST_F(FilterTypes, AliaserHoldsTheMeanOfEachStretch) {
    FilterUnderTest filter("Aliaser", 0.7f);
    const int n = static_cast<int>(filter.filter.loop<Aliaser>().N);
    ASSERT_GT(n, 3);
    const std::vector<float> x = noise(n * 4), y = filter.run(x);
    float sum = 0.0f;
    for (int i = 0; i < n; ++i) sum += x[i];
    EXPECT_EQ(y[n - 2], 0.0f);
    for (int i = n - 1; i < 2 * n - 1; ++i) EXPECT_NEAR(y[i], sum / n, 1e-6f);
    FilterUnderTest other("Aliaser", 0.7f, 1.0f, 1.0f);
    EXPECT_EQ(other.run(x), y);  // resonance and analog have no effect
}

TEST_F(FilterTypes, AliaserHoldsTheMeanOfWhatItHasWhenItsStretchGetsShorter) {
    FilterUnderTest filter("Aliaser", 0.1f);
    filter.run(std::vector<float>(100, 0.5f));
    filter.set(0.9f, 0.5f, 0.0f);
    EXPECT_EQ(filter.run(std::vector<float>(1, 0.5f))[0], 0.5f);
}

TEST_F(FilterTypes, WithoutAnalogTheLaddersFeedbackIsLinear) {
    const std::vector<float> x = noise(2000);
    const auto departure = [&](float analog) {
        FilterUnderTest soft("LP Ladder", 0.6f, 0.9f, analog), loud("LP Ladder", 0.6f, 0.9f, analog);
        const std::vector<float> a = soft.run(scaled(x, 0.01f)), b = loud.run(x);
        float largest = 0.0f;
        for (std::size_t i = 0; i < x.size(); ++i) largest = std::max(largest, std::fabs(100.0f * a[i] - b[i]));
        return largest / loudestOf(b);
    };
    EXPECT_LT(departure(0.0f), 0.01f);
    EXPECT_GT(departure(1.0f), 0.1f);
}

TEST_F(FilterTypes, WithoutAnalogLpButterMakesNoNoise) {
    for (const float resonance : {0.0f, 0.1f, 0.6f}) {
        const auto rendered = [&](float analog, std::uint32_t seed) {
            FilterUnderTest filter("LP Butter", 0.6f, resonance, analog);
            filter.random.congruence.state = seed;
            return filter.run(noise(500));
        };
        EXPECT_EQ(rendered(0.0f, 1), rendered(0.0f, 2));
        if (resonance > 0.05f) {
            EXPECT_NE(rendered(1.0f, 1), rendered(1.0f, 2));
        }
    }
}

TEST_F(FilterTypes, TheLaddersGainAtFullResonanceFallsFromTwoTowardsOneAsItOpens) {
    const auto gain = [](float cutoff, float resonance) {
        return FilterUnderTest("LP Ladder", cutoff, resonance).filter.loop<Ladder>().gain;
    };
    EXPECT_NEAR(gain(0.0f, 1.0f), 2.0f, 0.02f);
    EXPECT_NEAR(gain(1.0f, 1.0f), 1.349f, 0.001f);
    EXPECT_NEAR(gain(0.0f, 0.0f), 1.0f, 0.001f);
    EXPECT_NEAR(gain(0.5f, 0.5f),
                1.3f * (1.0f + 0.25f - 0.25f * FilterUnderTest("LP Ladder", 0.5f, 0.5f).filter.loop<Ladder>().pole), 0.001f);
}

TEST_F(FilterTypes, OnlyTheClippedFormOfLpOrvixDraws) {
    FilterUnderTest linear("LP Orvix", 0.5f, 0.1f), clipped("LP Orvix", 0.5f, 0.8f), driven("LP Orvix", 0.3f, 0.1f, 0.5f);
    LinearCongruence expected;
    linear.run(noise(88));
    EXPECT_EQ(linear.random.congruence.state, expected.state);
    for (int i = 0; i < 2 * 88; ++i) expected.next();
    clipped.run(noise(88));
    EXPECT_EQ(clipped.random.congruence.state, expected.state);
    driven.run(noise(88));
    EXPECT_EQ(driven.random.congruence.state, expected.state);
}

TEST_F(FilterTypes, NoisyTypesAreStillWithoutAnalog) {
    for (const char* label : {"LP MS-20", "Phaser 2x", "Formant 4x"}) {
        const auto rendered = [&](float analog, std::uint32_t counter) {
            FilterUnderTest filter(label, 0.6f, 0.7f, analog);
            filter.random.hash.counter = counter;
            return filter.run(noise(500));
        };
        EXPECT_EQ(rendered(0.0f, 0), rendered(0.0f, 5000)) << label;
        EXPECT_NE(rendered(0.5f, 0), rendered(0.5f, 5000)) << label;
    }
}

TEST_F(FilterTypes, ThePhaserTakesTwoMoreStagesWithEachSixthOfTheResonance) {
    const auto stages = [](float resonance) {
        return Phaser<float>::stages(FilterUnderTest("Phaser", 0.5f, resonance).filter.variant<Phaser>());
    };
    for (int k = 0; k < 6; ++k) EXPECT_EQ(stages((k + 0.5f) / 5.99f), 2 * k + 2);
    EXPECT_EQ(stages(1.0f), 12);
}

TEST_F(FilterTypes, TwoStepsComeInAboveTheThresholdOrWithTheDriveOfTheSetupBefore) {
    FilterUnderTest filter("LP 12dB", 0.2f, 0.8f, 0.9f);
    EXPECT_EQ(stepsOf(filter.filter.variant<Svf12>()), 1);
    filter.set(0.21f, 0.8f, 0.9f);
    EXPECT_EQ(stepsOf(filter.filter.variant<Svf12>()), 2);
    EXPECT_NEAR(filter.filter.kept().drive, 1.8, 1e-6);
    FilterUnderTest gentle("LP 12dB", 0.8f, 0.8f);
    EXPECT_EQ(stepsOf(gentle.filter.variant<Svf12>()), 2);
    gentle.set(0.8f, 0.04f, 0.0f);
    EXPECT_EQ(stepsOf(gentle.filter.variant<Svf12>()), 1);
}

// --- Life of the state ---------------------------------------------------------------------------------

TEST_F(FilterTypes, UnchangedInputsKeepTheCoefficientsButDelaysRingmodAndEllipticRecompute) {
    for (const int type : filterIndices()) {
        const std::string label = labelOf(type);
        if (label == "Aliaser" || label == "LP FM") continue;
        FilterUnderTest kept(label, 0.62f, 0.6f, 0.3f), same(label, 0.62f, 0.6f, 0.3f);
        kept.set(0.62f, 0.6f, 0.3f);
        same.set(0.62f, 0.6f, 0.3f);
        kept.settings.sampleRate = 140000.0f;
        kept.set(0.62f, 0.6f, 0.3f);
        const bool recomputes =
            label.starts_with("Comb") || label.starts_with("Phys") || label == "Ringmod" || label == "LP Elliptic";
        EXPECT_EQ(kept.run(noise(500)) == same.run(noise(500)), !recomputes) << label;
    }
}

// The setup of "LP 12dB" looks at the drive that the one before left: one more would take two steps a sample.
TEST_F(FilterTypes, InputsThatAreClampedAlikeAreUnchanged) {
    FilterUnderTest beyond("LP 12dB", -0.1f, 1.2f, 0.5f);
    ASSERT_EQ(stepsOf(beyond.filter.variant<Svf12>()), 1);
    beyond.set(-0.2f, 1.3f, 0.5f);
    EXPECT_EQ(stepsOf(beyond.filter.variant<Svf12>()), 1);
    beyond.set(0.01f, 1.3f, 0.5f);
    EXPECT_EQ(stepsOf(beyond.filter.variant<Svf12>()), 2);
    FilterUnderTest nonsense("LP 12dB", NAN, NAN, 0.5f);
    nonsense.set(NAN, -1.0f, 0.5f);
    EXPECT_EQ(stepsOf(nonsense.filter.variant<Svf12>()), 1);
}

TEST_F(FilterTypes, AModulationFasterThanTheSamplesLeavesNothingBehind) {
    struct Case {
        const char* label;
        float rate;
    };
    for (const Case c : {Case{"LP AM", 44100.0f}, Case{"LP AM", 48001.0f}, Case{"LP AM", 8000.0f}, Case{"Ringmod", 8000.0f}}) {
        FilterUnderTest filter(c.label);
        filter.settings.sampleRate = c.rate;
        filter.set(1.0f, 0.2f, 0.0f);
        filter.run(noise(20000));
        filter.set(0.5f, 0.8f, 0.0f);
        EXPECT_LT(loudestOf(filter.run(noise(2000))), 5.0f) << c.label << " at " << c.rate;
    }
}

TEST_F(FilterTypes, AChangedNumberClearsTheMemoriesAndAResetDoesToo) {
    for (const int type : filterIndices()) {
        FilterUnderTest changed(labelOf(type), 0.8f, 0.5f, 0.0f), reset(labelOf(type), 0.8f, 0.5f, 0.0f);
        FilterUnderTest fresh(labelOf(type), 0.8f, 0.5f, 0.0f);
        changed.run(noise(1000));
        reset.run(noise(1000));
        changed.settings.type = 0;
        changed.set(0.8f, 0.5f, 0.0f);
        changed.settings.type = type;
        changed.set(0.8f, 0.5f, 0.0f);
        reset.filter.reset();
        reset.set(0.8f, 0.5f, 0.0f);
        fresh.set(0.8f, 0.5f, 0.0f);  // past the first glide, as the others
        for (FilterUnderTest* filter : {&changed, &reset, &fresh}) filter->random = {};
        const std::vector<float> expected = fresh.run(noise(500));
        EXPECT_EQ(changed.run(noise(500)), expected) << labelOf(type);
        EXPECT_EQ(reset.run(noise(500)), expected) << labelOf(type);
    }
}

TEST_F(FilterTypes, CutoffAndResonanceAreClampedAndNonsenseReadsAsTheLowerBound) {
    for (const int type : filterIndices()) {
        const std::string label = labelOf(type);
        FilterUnderTest wild(label, 7.0f, -3.0f), open(label, 1.0f, 0.0f);
        EXPECT_EQ(wild.run(noise(300)), open.run(noise(300))) << label;
        FilterUnderTest nonsense(label, NAN, NAN), closed(label, 0.0f, 0.0f);
        EXPECT_EQ(nonsense.run(noise(300)), closed.run(noise(300))) << label;
        FilterUnderTest broken(label, 0.5f, 0.5f, NAN);
        for (const float y : broken.run(noise(300))) ASSERT_TRUE(std::isfinite(y)) << label;
    }
}

TEST_F(FilterTypes, CuttingARunIntoBlocksDoesNotMatter) {
    for (const int type : filterIndices()) {
        FilterUnderTest whole(labelOf(type), 0.6f, 0.7f, 0.4f), cut(labelOf(type), 0.6f, 0.7f, 0.4f);
        std::vector<float> a = noise(264), b = a;
        whole.filter.run(a.data(), 264);
        for (int at = 0, count = 1; at < 264; at += count, count = std::min(count * 2, 264 - at))
            cut.filter.run(b.data() + at, count);
        EXPECT_EQ(a, b) << labelOf(type);
    }
}

// --- Parts ---------------------------------------------------------------------------------------------

TEST_F(FilterTypes, ADelayLineForgetsAtOnceWhenCleared) {
    const LineMemory memory = allocateLines(1);
    DelayLine line(memory.get());
    for (int i = 0; i < 40000; ++i) {
        line.write(static_cast<float>(i));
        EXPECT_EQ(line.at(100), i >= 100 ? i - 100.0f : 0.0f);
        line.advance();
    }
    line.clear();
    for (int i = 0; i < 20; ++i) {
        line.write(1.0f);
        EXPECT_EQ(line.at(i), 1.0f);
        EXPECT_EQ(line.at(i + 1), 0.0f);
        EXPECT_EQ(line.at(-1), 0.0f);
        line.advance();
    }
}

TEST_F(FilterTypes, TheCongruenceSkipsAsItSteps) {
    for (const std::uint32_t steps : {0u, 1u, 2u, 7u, 88u, 1000u, 65537u}) {
        LinearCongruence stepped{99}, skipped{99};
        for (std::uint32_t i = 0; i < steps; ++i) stepped.next();
        skipped.skip(steps);
        EXPECT_EQ(stepped.state, skipped.state);
    }
}

double magnitudeAt(const BiquadDesign& d, double w) {
    const auto value = [w](double c0, double c1, double c2) {
        return std::hypot(c0 + c1 * std::cos(w) + c2 * std::cos(2 * w), -c1 * std::sin(w) - c2 * std::sin(2 * w));
    };
    return value(d.b0, d.b1, d.b2) / value(1.0, -d.a1, -d.a2);
}

TEST_F(FilterTypes, BiquadDesignsPassWhatTheirKindSays) {
    const double nyquist = M_PI, rate = 88200.0;
    for (const double c : {0.2, 0.5, 0.9})
        for (const double r : {0.0, 0.4, 1.0}) {
            EXPECT_NEAR(magnitudeAt(designBiquad(biquadLowPass, c, r, rate), 0.0), 1.0, 1e-6);
            EXPECT_NEAR(magnitudeAt(designBiquad(biquadLowPass, c, r, rate), nyquist), 0.0, 1e-6);
            EXPECT_NEAR(magnitudeAt(designBiquad(biquadHighPass, c, r, rate), 0.0), 0.0, 1e-4);
            EXPECT_NEAR(magnitudeAt(designBiquad(biquadBandPass, c, r, rate), 0.0), 0.0, 1e-6);
            EXPECT_NEAR(magnitudeAt(designBiquad(biquadNotch, c, r, rate), 0.0), 1.0, 1e-6);
            EXPECT_NEAR(magnitudeAt(designBiquad(biquadLowShelf, c, r, rate), 0.0), std::pow(4.0, r), 0.9);
            EXPECT_NEAR(magnitudeAt(designBiquad(biquadLowShelf, c, r, rate), nyquist), 1.0, 1e-6);
            EXPECT_NEAR(magnitudeAt(designBiquad(biquadHighShelf, c, r, rate), 0.0), 1.0, 1e-4);
            for (const double w : {0.1, 1.0, 3.0})
                EXPECT_NEAR(magnitudeAt(designBiquad(biquadAllPass, c, r, rate), w), 1.0, 1e-6);
        }
}

TEST_F(FilterTypes, TheCutoffOfAVoiceFollowsKeyAndEnvelope) {
    EXPECT_EQ(voiceCutoff(64.0, 1.0f, 0.5f, 0.4f, 1.0f), 0.4f);
    EXPECT_NEAR(voiceCutoff(76.0, 1.0f, 0.5f, 0.4f, 1.0f), 0.4f + 12 * 0.5f * 0.0195f, 1e-6f);
    EXPECT_NEAR(voiceCutoff(64.0, 0.0f, 1.0f, 0.4f, 0.5f), 0.9f, 1e-6f);
    EXPECT_EQ(voiceCutoff(64.0, 0.5f, 0.0f, 0.4f, 3.0f), voiceCutoff(64.0, 0.5f, 0.0f, 0.4f, 1.0f));
}

TEST_F(FilterTypes, AnOpenResponseIsFlatAndALowPassFalls) {
    FilterResponse response;
    const auto flat = response.measure({.type = 0});
    for (const double m : flat) EXPECT_NEAR(m, 100000.0, 1.0);
    const auto low = response.measure({.type = 4, .cutoff = 0.6f, .resonance = 0.1f});
    EXPECT_GT(low[1], 100.0 * low[400]);
    const auto again = response.measure({.type = 4, .cutoff = 0.6f, .resonance = 0.1f});
    EXPECT_EQ(low, again);
}

TEST_F(FilterTypes, ASingleFilterThatIsNoLongerFiniteIsClearedAndSilentForOneRun) {
    for (const int type : filterIndices()) {
        const std::string label = labelOf(type);
        if (label == "Ringmod" || label == "Aliaser") continue;  // no feedback: they forget it by themselves
        for (const float wrong : {INFINITY, -INFINITY, NAN}) {
            FilterUnderTest broken(label, 0.6f, 0.5f, 0.2f), fresh(label, 0.6f, 0.5f, 0.2f);
            broken.run(noise(264));
            std::vector<float> x = noise(88);
            x[30] = wrong;
            EXPECT_EQ(broken.run(x), std::vector<float>(88, 0.0f)) << label;
            broken.set(0.6f, 0.5f, 0.2f);
            fresh.set(0.6f, 0.5f, 0.2f);  // past the first glide of the delay types
            broken.random = fresh.random = {};
            EXPECT_EQ(broken.run(noise(264)), fresh.run(noise(264))) << label;
        }
    }
}

// Far below the usual rates some types run away from a click alone.
TEST_F(FilterTypes, AResponseIsFiniteWhateverTheSettingsAndOneThatRunsAwayIsSilent) {
    FilterResponse response;
    const FilterSettings usual{.type = indexOfFilter("LP 24dB"), .cutoff = 0.6f, .resonance = 0.5f};
    const auto expected = FilterResponse().measure(usual);
    int silent = 0;
    for (const float rate : {4000.0f, 8000.0f, 88200.0f})
        for (const int type : filterIndices())
            for (const float cutoff : {0.0f, 0.5f, 0.95f, 1.0f})
                for (const float resonance : {0.0f, 0.5f, 1.0f})
                    for (const float analog : {-4.0f, 0.0f, 1.0f, 4.0f}) {
                        const auto magnitudes = response.measure(
                            {.sampleRate = rate, .type = type, .cutoff = cutoff, .resonance = resonance, .analog = analog});
                        double sum = 0.0;
                        for (const double m : magnitudes) sum += m;
                        ASSERT_TRUE(std::isfinite(sum)) << labelOf(type) << " at " << rate;
                        if (sum != 0.0) continue;
                        ++silent;
                        ASSERT_EQ(response.measure(usual), expected) << "after " << labelOf(type) << " at " << rate;
                    }
    EXPECT_GT(silent, 0);
}

}  // namespace
}  // namespace vantoric
