#include "samples/sample_levels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/random.h"

namespace vantoric {
namespace {

using Samples = std::vector<std::int16_t>;

Samples noise(std::size_t count, std::uint32_t seed = 1) {
    LinearCongruence random{seed};
    Samples x(count);
    for (auto& value : x) value = static_cast<std::int16_t>(random.next() >> 16);
    return x;
}

// The rule as it is stated, sample by sample.
Samples plainFilter(const Samples& x, bool wrap, const FirRow& row) {
    const auto count = static_cast<int>(x.size());
    Samples y;
    for (int n = 0; n < count; ++n) {
        std::int64_t sum = 0;
        for (int k = 0; k < firTaps; ++k) {
            int at = n + k - firCentre;
            if (wrap) at = ((at % count) + count) % count;
            if (at < 0 || at >= count) continue;
            sum +=
                (std::int64_t{x[static_cast<std::size_t>(at)]} * static_cast<int>(row[static_cast<std::size_t>(k)] * 8192)) >> 13;
        }
        y.push_back(static_cast<std::int16_t>(std::min<std::int64_t>(std::max<std::int64_t>(sum, -32767), 32767)));
    }
    return y;
}

Samples filtered(const Samples& x, bool wrap, const FirRow& row) {
    Samples y(x.size());
    EXPECT_TRUE(firFilter(x.data(), static_cast<std::int32_t>(x.size()), y.data(), wrap, row));
    return y;
}

Sample sampleOf(const Samples& x) {
    Sample sample;
    EXPECT_TRUE(sample.allocate(static_cast<std::int32_t>(x.size())));
    sample.length = static_cast<std::int32_t>(x.size());
    std::copy(x.begin(), x.end(), sample.levels[0].get());
    return sample;
}

TEST(LevelRows, AreSymmetricWithASumOfOneAndTheStatedCentreTaps) {
    for (std::size_t level = 0; level < levelRows().size(); ++level) {
        const FirRow& row = levelRows()[level];
        double sum = 0.0;
        for (std::size_t k = 0; k < row.size(); ++k) {
            sum += row[k];
            EXPECT_EQ(row[k], row[row.size() - 1 - k]);
        }
        EXPECT_NEAR(sum, 1.0, 1e-12);
        EXPECT_NEAR(row[firCentre], firResponses[level].centre, 1e-13);
    }
}

TEST(LevelRows, FallToMinusSixAndMinusSixtyDecibelsWhereStated) {
    for (std::size_t level = 0; level < levelRows().size(); ++level) {
        const auto fall = [&](double amplitude) {
            double f = 0.0;
            while (f < 0.5 && std::fabs(firAmplitude(levelRows()[level], f)) > amplitude) f += 1e-5;
            return f;
        };
        EXPECT_NEAR(fall(0.5011872), firResponses[level].half, 2e-5);
        EXPECT_NEAR(fall(0.001), firResponses[level].stop, 2e-5);
    }
}

TEST(LevelRows, StayDownBehindTheirStopAndFlatBelowTheirPass) {
    for (std::size_t level = 0; level < levelRows().size(); ++level) {
        const FirRow& row = levelRows()[level];
        const FirResponse& response = firResponses[level];
        for (double f = response.stop; f <= 0.5; f += 1e-4) EXPECT_LE(std::fabs(firAmplitude(row, f)), 0.00101) << f;
        for (double f = 0.0; f < 2 * response.half - response.stop; f += 1e-4) EXPECT_NEAR(firAmplitude(row, f), 1.0, 0.03) << f;
    }
}

TEST(FirFilter, GivesTheIntegersOfTheRuleAtAnyLength) {
    for (const std::size_t count : {1u, 2u, 7u, 40u, 41u, 80u, 81u, 300u, 4095u, 4096u, 4097u, 9000u})
        for (const bool wrap : {false, true})
            for (const FirRow& row : levelRows()) {
                const Samples x = noise(count, static_cast<std::uint32_t>(count));
                EXPECT_EQ(filtered(x, wrap, row), plainFilter(x, wrap, row)) << count << wrap;
            }
}

TEST(FirFilter, NothingIsFilteredToNothing) {
    std::int16_t untouched = 77;
    EXPECT_TRUE(firFilter(nullptr, 0, &untouched, true, levelRows()[0]));
    EXPECT_EQ(untouched, 77);
}

TEST(FirFilter, OvershootIsClampedToThirtyTwoThousandSevenHundredSixtySeven) {
    Samples step(200, 32767);
    std::fill(step.begin() + 100, step.end(), std::int16_t{-32768});
    const Samples y = filtered(step, false, levelRows()[0]);
    EXPECT_EQ(*std::max_element(y.begin(), y.end()), 32767);
    EXPECT_EQ(*std::min_element(y.begin(), y.end()), -32767);
}

TEST(FirFilter, RoundsEveryTermDownBeforeTheSum) {
    const Samples y = filtered(Samples(400, -1), true, levelRows()[3]);
    int terms = 0;
    for (const double tap : levelRows()[3]) terms += static_cast<int>(tap * 8192) > 0 ? 1 : 0;
    EXPECT_EQ(y[200], -terms) << "each positive tap of -1 gives -1, each negative one 0";
}

TEST(FirFilter, WrapTakesWhatStandsAtTheOtherEnd) {
    Samples x(200);
    x[0] = 8192;
    const Samples open = filtered(x, false, levelRows()[0]), closed = filtered(x, true, levelRows()[0]);
    EXPECT_EQ(open[199], 0);
    EXPECT_EQ(closed[199], open[1]);
}

TEST(FirFilter, StopsAtItsNextLookAtTheFlag) {
    Flag cancel;
    cancel.set();
    const Samples x = noise(20000);
    Samples y(x.size(), 7);
    EXPECT_FALSE(firFilter(x.data(), 20000, y.data(), false, levelRows()[0], &cancel));
    EXPECT_EQ(y, Samples(x.size(), 7));
}

TEST(BuildLevels, EachLevelComesFromTheOneBefore) {
    for (const bool wrap : {false, true}) {
        const Samples x = noise(700);
        Sample sample = sampleOf(x);
        EXPECT_TRUE(buildLevels(sample, wrap));
        Samples level = x;
        for (std::size_t L = 1; L < sampleLevels; ++L) {
            level = plainFilter(level, wrap, levelRows()[L - 1]);
            EXPECT_EQ(Samples(sample.levels[L].get(), sample.levels[L].get() + 700), level) << L;
        }
        EXPECT_EQ(Samples(sample.levels[0].get(), sample.levels[0].get() + 700), x);
    }
}

TEST(BuildLevels, WritesNothingBehindTheLength) {
    Sample sample = sampleOf(noise(500));
    for (auto& level : sample.levels) std::fill_n(level.get() + 500, sampleGuard, std::int16_t{123});
    buildLevels(sample, true);
    for (auto& level : sample.levels)
        for (int i = 0; i < sampleGuard; ++i) EXPECT_EQ(level[static_cast<std::size_t>(500 + i)], 123);
}

TEST(BuildLevels, AnEmptySampleIsLeftAlone) {
    Sample none;
    EXPECT_TRUE(buildLevels(none, true));
    ASSERT_TRUE(none.allocate(0));
    EXPECT_TRUE(buildLevels(none, true));
}

TEST(BuildLevels, GivesUpWhenCancelled) {
    Sample sample = sampleOf(noise(500));
    Flag cancel;
    cancel.set();
    EXPECT_FALSE(buildLevels(sample, false, &cancel));
    EXPECT_EQ(sample.levels[1][250], 0);
}

}  // namespace
}  // namespace vantoric
