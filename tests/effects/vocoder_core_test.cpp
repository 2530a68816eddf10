#include "effects/vocoder_core.h"

#include <cmath>
#include <vector>

#include "base/random.h"
#include "tests/effects/effect_run.h"

namespace vantoric {
namespace {

constexpr float rate = 88200.0f;
constexpr int svc = 2, pro = 4, linear = 5;

struct Pair {
    std::vector<float> left, right;
};

std::vector<float> silence(int count) { return std::vector<float>(static_cast<std::size_t>(count), 0.0f); }

std::vector<float> sine(double frequency, float amplitude, int count) {
    std::vector<float> x = silence(count);
    for (int i = 0; i < count; ++i) x[i] = amplitude * static_cast<float>(math::sin(2.0 * math::pi * frequency * i / rate));
    return x;
}

std::vector<float> noise(std::uint32_t seed, float amplitude, int count) {
    LinearCongruence congruence{seed};
    std::vector<float> x = silence(count);
    for (float& value : x) value = amplitude * (2.0f * congruence.unit() - 1.0f);
    return x;
}

float peak(const std::vector<float>& x, int from = 0) {
    float most = 0.0f;
    for (std::size_t i = static_cast<std::size_t>(from); i < x.size(); ++i) most = std::max(most, std::fabs(x[i]));
    return most;
}

float level(const std::vector<float>& x, int from) {
    double sum = 0.0;
    for (std::size_t i = static_cast<std::size_t>(from); i < x.size(); ++i) sum += static_cast<double>(x[i]) * x[i];
    return static_cast<float>(std::sqrt(sum / static_cast<double>(x.size() - static_cast<std::size_t>(from))));
}

class Vocoder : public ::testing::Test {
protected:
    void use(int variant, float mix = 1.0f, float formant = 0.5f, float width = 0.0f, float press = 0.0f, float gate = 0.0f) {
        const float values[] = {mix, formant, width, press, gate};
        vocoder.setSampleRate(rate);
        vocoder.setVariant(variant);
        for (int index = 0; index < 5; ++index) vocoder.setParameter(index, values[index]);
        vocoder.reset();
    }
    Pair through(Pair x, int block = 88) {
        const int count = static_cast<int>(x.left.size());
        for (int at = 0; at < count; at += block)
            vocoder.process(x.left.data() + at, x.right.data() + at, std::min(block, count - at));
        return x;
    }

    VocoderCore vocoder;
};

TEST_F(Vocoder, IsSilentWithoutSpeechWhateverTheCarrier) {
    for (const int variant : {svc, pro, linear}) {
        use(variant);
        const Pair out = through({silence(8000), noise(4, 0.9f, 8000)});
        EXPECT_LT(peak(out.left), 1e-4f) << variant;
        EXPECT_LT(peak(out.right), 1e-4f) << variant;
    }
}

TEST_F(Vocoder, IsSilentWithoutACarrier) {
    for (const int variant : {svc, pro, linear}) {
        use(variant);
        const Pair out = through({noise(4, 0.9f, 8000), silence(8000)});
        EXPECT_LT(peak(out.left), 1e-4f) << variant;
        EXPECT_LT(peak(out.right), 1e-4f) << variant;
    }
}

TEST_F(Vocoder, SoundsWithBoth) {
    for (const int variant : {svc, pro, linear}) {
        use(variant);
        const Pair out = through({noise(4, 0.9f, 8000), noise(5, 0.9f, 8000)});
        EXPECT_GT(level(out.left, 4000), 0.1f) << variant;
    }
}

TEST_F(Vocoder, MixZeroReturnsTheInput) {
    for (const int variant : {svc, pro, linear}) {
        use(variant, 0.0f, 0.3f, 0.7f, 0.4f, 0.2f);
        const Pair in{noise(8, 0.5f, 2000), noise(9, 0.4f, 2000)};
        const Pair out = through(in);
        EXPECT_EQ(out.left, in.left);
        EXPECT_EQ(out.right, in.right);
    }
}

TEST_F(Vocoder, AFullGateShutsEveryBandBelowAHundredth) {
    for (const int variant : {svc, pro}) {
        use(variant, 1.0f, 0.5f, 0.0f, 0.5f, 1.0f);
        Pair out = through({sine(1154.0, 0.012f, 20000), noise(14, 0.9f, 20000)});  // its mean is 0.0076
        EXPECT_EQ(peak(out.left), 0.0f);
        EXPECT_EQ(peak(out.right), 0.0f);
        out = through({sine(1154.0, 0.05f, 20000), noise(14, 0.9f, 20000)});
        EXPECT_GT(peak(out.left), 0.01f);
    }
}

// Speech that swells until the loudest band is heard: it is so just above a hundredth.
TEST_F(Vocoder, AFullGateOpensAtAHundredth) {
    for (const int variant : {svc, pro}) {
        use(variant, 1.0f, 0.5f, 0.0f, 0.0f, 1.0f);
        const std::vector<float> speech = sine(1154.0, 1.0f, 40000), carrier = noise(14, 0.9f, 40000);
        float loudest = 0.0f, heard = 0.0f;
        for (std::size_t i = 0; i < speech.size() && heard == 0.0f; ++i) {
            float left = speech[i] * 0.05f * static_cast<float>(i) / 40000.0f, right = carrier[i];
            vocoder.process(&left, &right, 1);
            heard = left;
            for (int band = 0; band < vocoder.bands(); ++band) loudest = std::max(loudest, vocoder.follower(band));
        }
        EXPECT_NE(heard, 0.0f);
        EXPECT_GT(loudest, 0.01f);
        EXPECT_LT(loudest, 0.01002f);
    }
}

TEST_F(Vocoder, TheLinearFormHasNeitherGateNorCompressor) {
    const Pair in{noise(1, 0.02f, 3000), noise(2, 0.5f, 3000)};
    use(linear, 1.0f, 0.5f, 0.0f, 0.0f, 0.0f);
    const Pair plain = through(in);
    use(linear, 1.0f, 0.5f, 0.0f, 1.0f, 1.0f);
    EXPECT_EQ(through(in).left, plain.left);
}

TEST_F(Vocoder, ABlockAboveItsLimitPassesUnchanged) {
    for (const int variant : {svc, pro, linear}) {
        const Pair in{noise(21, 0.5f, 16385), noise(22, 0.5f, 16385)};
        use(variant);
        const Pair out = through(in, 16385);
        EXPECT_EQ(out.left, in.left);
        EXPECT_EQ(out.right, in.right);
        Pair shorter{noise(21, 0.5f, 16384), noise(22, 0.5f, 16384)};
        EXPECT_NE(through(shorter, 16384).left, shorter.left);
    }
}

TEST_F(Vocoder, TheTopFourGainsOfTwentyBandsDifferByTheRate) {
    for (const int variant : {pro, linear}) {
        use(variant);
        const float low[] = {1.1f, 1.05f, 0.95f, 0.8f}, high[] = {1.1f, 1.1f, 1.1f, 0.99f};
        for (int band = 16; band < 20; ++band) {
            vocoder.setSampleRate(44100.0f);
            EXPECT_EQ(vocoder.bandGain(band), low[band - 16]);
            vocoder.setSampleRate(48000.0f);
            EXPECT_EQ(vocoder.bandGain(band), high[band - 16]);
        }
    }
}

TEST_F(Vocoder, HasTwelveOrTwentyBands) {
    use(svc);
    EXPECT_EQ(vocoder.bands(), 12);
    use(pro);
    EXPECT_EQ(vocoder.bands(), 20);
    use(linear);
    EXPECT_EQ(vocoder.bands(), 20);
}

// The mean of a rectified sine is 2 / pi of its top.
TEST_F(Vocoder, AToneInTheMiddleOfABandSetsItsFollowerToTheToneTimesTheBandsGain) {
    use(pro);
    const double frequencies[] = {167, 520, 1154, 2553, 5639, 12452};
    const int bands[] = {0, 3, 7, 11, 15, 19};
    const float gains[] = {0.8f, 0.95f, 1.0f, 1.04f, 1.12f, 0.99f};
    for (int k = 0; k < 6; ++k) {
        vocoder.reset();
        through({sine(frequencies[k], 0.5f, 12000), silence(12000)});
        EXPECT_NEAR(vocoder.follower(bands[k]), 0.5f * 0.63662f * gains[k], 0.005f) << bands[k];
        for (int other = 0; other < 20; ++other)
            EXPECT_TRUE(other == bands[k] || vocoder.follower(other) < vocoder.follower(bands[k])) << other;
    }
}

TEST_F(Vocoder, TheTwelveSpeechBandsHaveAGainOfOne) {
    use(svc);
    const double frequencies[] = {170, 760, 3500, 12664};
    const int bands[] = {0, 4, 8, 11};
    for (int k = 0; k < 4; ++k) {
        vocoder.reset();
        through({sine(frequencies[k], 0.5f, 12000), silence(12000)});
        EXPECT_NEAR(vocoder.follower(bands[k]), 0.31831f, 0.003f) << bands[k];
    }
}

// Speech and carrier in the middle of one band: follower, gain and 128 tell how loud the side of the band is.
// Neighbours sound on the other side at full width.
TEST_F(Vocoder, ABandSoundsOnItsSideAtItsGain) {
    const int bands[] = {7, 12, 16};
    const double frequencies[] = {1154, 3113, 6874};
    const float gains[] = {1.0f, 1.08f, 1.1f};
    for (int k = 0; k < 3; ++k) {
        use(linear, 1.0f, 0.5f, 1.0f);
        const Pair out = through({sine(frequencies[k], 0.02f, 16000), sine(frequencies[k] * 1.2, 0.1f, 16000)});
        const float expected = 0.02f * 0.63662f * gains[k] * 0.1f * gains[k] * 128.0f * 0.75f;
        const bool even = bands[k] % 2 == 0;
        EXPECT_NEAR(peak(even ? out.right : out.left, 10000), expected, expected * 0.03f) << bands[k];
        EXPECT_LT(peak(even ? out.left : out.right, 10000), expected * 0.1f) << bands[k];
    }
}

TEST_F(Vocoder, WithoutWidthBothSidesAreTheSame) {
    for (const int variant : {svc, pro, linear}) {
        use(variant);
        const Pair out = through({noise(4, 0.5f, 3000), noise(5, 0.5f, 3000)});
        EXPECT_EQ(out.left, out.right);
    }
}

TEST_F(Vocoder, CompressionHoldsLouderSpeechToTheSameSum) {
    for (const int variant : {svc, pro}) {
        const auto loudness = [&](float press, float speech) {
            use(variant, 1.0f, 0.5f, 0.0f, press);
            return level(through({noise(4, speech, 16000), noise(5, 0.3f, 16000)}).left, 8000);
        };
        EXPECT_NEAR(loudness(1.0f, 0.9f) / loudness(1.0f, 0.45f), 1.0f, 0.01f);
        EXPECT_NEAR(loudness(0.0f, 0.1f) / loudness(0.0f, 0.05f), 2.0f, 0.01f);  // the sum stays below 1
        EXPECT_NEAR(loudness(0.3f, 0.001f) / loudness(0.0f, 0.001f), fastExp(0.6), 0.01f);
    }
}

TEST_F(Vocoder, FormantMovesTheCarrierBandsByAnExponential) {
    use(pro, 1.0f, 0.5f + static_cast<float>(math::log(1.2)));  // as far down as the carrier bands stand above
    for (int band = 0; band < 20; ++band) {
        EXPECT_NEAR(vocoder.synthesis(band).a1, vocoder.analysis(band).a1, 2e-6f) << band;
        EXPECT_NEAR(vocoder.synthesis(band).a2, vocoder.analysis(band).a2, 2e-6f) << band;
    }
    const float before = vocoder.analysis(7).a1;
    vocoder.setParameter(1, 0.0f);
    EXPECT_EQ(vocoder.analysis(7).a1, before);
    EXPECT_LT(vocoder.synthesis(7).a1, before);
}

// Near half the rate the bands would fold, far below it they would never settle.
TEST_F(Vocoder, BandsAreHeldBetweenATenThousandthAndFortyFiveHundredthsOfTheRate) {
    const auto expectHeldAt = [](const VocoderCore::Coefficients& got, double n, double width) {
        const double k = std::tan(n * 3.14159), r = (1.0 - n * 1.57) * width, d = k / r + 1.0 + k * k;
        EXPECT_NEAR(got.b0, k / (d * r), 1e-3 * k / (d * r));
        EXPECT_NEAR(got.a1, (2.0 - 2.0 * k * k) / d, 1e-5);
    };
    use(pro, 1.0f, 0.0f);
    vocoder.setSampleRate(48000.0f);
    expectHeldAt(vocoder.synthesis(19), 0.45, 3.0);  // 24.6 kHz
    vocoder.setSampleRate(2e6f);
    expectHeldAt(vocoder.analysis(0), 0.0001, 1.0);
}

TEST_F(Vocoder, AMovedFormantActsAtTheNextBlock) {
    const Pair in{noise(4, 0.5f, 400), noise(5, 0.5f, 400)};
    use(pro, 1.0f, 0.1f);
    const Pair plain = through(in);
    use(pro, 1.0f, 0.8f);
    vocoder.setParameter(1, 0.1f);
    EXPECT_EQ(through(in).left, plain.left);
}

TEST_F(Vocoder, BlockLengthDoesNotMatter) {
    const Pair in{noise(4, 0.5f, 5000), noise(5, 0.5f, 5000)};
    for (const int variant : {svc, pro, linear}) {
        use(variant, 0.8f, 0.4f, 0.3f, 0.5f, 0.2f);
        const Pair whole = through(in, 5000);
        for (const int block : {1, 31, 33, 88}) {
            vocoder.reset();
            const Pair out = through(in, block);
            EXPECT_EQ(out.left, whole.left) << block;
            EXPECT_EQ(out.right, whole.right) << block;
        }
    }
}

TEST_F(Vocoder, AResetSilencesAllBands) {
    const Pair in{noise(4, 0.5f, 500), noise(5, 0.5f, 500)};
    for (const int variant : {svc, pro, linear}) {
        use(variant, 1.0f, 0.5f, 0.5f, 0.5f, 0.1f);
        const Pair fresh = through(in);
        through({noise(6, 1.0f, 3000), noise(7, 1.0f, 3000)});
        vocoder.reset();
        for (int band = 0; band < vocoder.bands(); ++band) EXPECT_EQ(vocoder.follower(band), 0.0f);
        EXPECT_EQ(through(in).left, fresh.left);
    }
}

TEST_F(Vocoder, OtherVariantsPassAudioUnchanged) {
    const Pair in{noise(4, 0.5f, 100), noise(5, 0.5f, 100)};
    for (const int variant : {0, 1, 3, 6}) {
        use(variant);
        EXPECT_EQ(vocoder.bands(), 0);
        EXPECT_EQ(through(in).left, in.left);
    }
}

// The lanes must not change a bit of what a band alone would give.
TEST_F(Vocoder, BandsSideBySideSoundLikeEachAlone) {
    using Four = Lanes<float, 4>;
    BandAnalysis<Four> speech;
    BandSynthesis<Four> carrier;
    BandAnalysis<float> aloneSpeech[4];
    BandSynthesis<float> aloneCarrier[4];
    use(pro);
    for (int lane = 0; lane < 4; ++lane) {
        const auto a = vocoder.analysis(lane * 6), s = vocoder.synthesis(lane * 6);
        aloneSpeech[lane].section = {a.b0, a.b2, a.a1, a.a2};
        aloneCarrier[lane].section = {s.b0, s.b2, s.a1, s.a2};
        aloneSpeech[lane].gain = aloneCarrier[lane].gain = vocoder.bandGain(lane * 6);
    }
    const auto gather = [](auto value) { return Four([&](auto lane) { return value(static_cast<int>(lane)); }); };
    speech.section = {
        gather([&](int i) { return aloneSpeech[i].section.b0; }), gather([&](int i) { return aloneSpeech[i].section.b2; }),
        gather([&](int i) { return aloneSpeech[i].section.a1; }), gather([&](int i) { return aloneSpeech[i].section.a2; })};
    carrier.section = {
        gather([&](int i) { return aloneCarrier[i].section.b0; }), gather([&](int i) { return aloneCarrier[i].section.b2; }),
        gather([&](int i) { return aloneCarrier[i].section.a1; }), gather([&](int i) { return aloneCarrier[i].section.a2; })};
    speech.gain = carrier.gain = gather([&](int i) { return aloneSpeech[i].gain; });
    const std::vector<float> x = noise(3, 0.8f, 500), y = noise(4, 0.8f, 500);
    for (int i = 0; i < 500; ++i) {
        const Four levels = speech.step(Four(x[i]), Four(0.99f), Four(0.01f));
        const Four out = carrier.step(Four(y[i]), levels);
        for (int lane = 0; lane < 4; ++lane) {
            ASSERT_EQ(levels[lane], aloneSpeech[lane].step(x[i], 0.99f, 0.01f));
            ASSERT_EQ(out[lane], aloneCarrier[lane].step(y[i], levels[lane]));
        }
    }
}

TEST_F(Vocoder, FadesToSilenceAfterTheSound) {
    for (const int variant : {svc, pro, linear}) {
        use(variant, 1.0f, 0.5f, 0.5f, 0.0f, 0.0f);
        through({noise(4, 1.0f, 5000), noise(5, 1.0f, 5000)});
        EXPECT_LT(peak(through({silence(20000), silence(20000)}).left, 15000), 1e-4f);
    }
}

TEST_F(Vocoder, StaysFiniteAndBoundedAtEveryRateAndBlockLength) {
    const auto square = [](float amplitude) {
        std::vector<float> x = silence(4096);
        for (int i = 0; i < 4096; ++i) x[i] = i / 40 % 2 == 0 ? amplitude : -amplitude;
        return x;
    };
    std::vector<float> impulse = silence(4096);
    impulse[3] = 1.0f;
    const struct {
        int block, count;
    } runs[] = {{1, 200}, {88, 600}, {4096, 4096}};
    for (const int variant : {svc, pro, linear})
        for (const float sampleRate : testing_effects::everyRate())
            for (const float formant : {0.0f, 1.0f})
                for (const auto& run : runs)
                    for (auto x : {impulse, silence(4096), square(1.0f), square(1e-40f)}) {
                        x.resize(static_cast<std::size_t>(run.count));
                        use(variant, 1.0f, formant, 1.0f, 1.0f, 0.0f);
                        vocoder.setSampleRate(sampleRate);
                        const Pair out = through({x, x}, run.block);
                        for (int i = 0; i < run.count; ++i) {
                            ASSERT_LE(std::fabs(out.left[i]), 1000.0f) << variant << " " << sampleRate << " " << run.block;
                            ASSERT_LE(std::fabs(out.right[i]), 1000.0f) << variant << " " << sampleRate << " " << run.block;
                        }
                    }
}

}  // namespace
}  // namespace vantoric
