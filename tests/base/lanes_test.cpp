#include <gtest/gtest.h>

#include <limits>

#include "base/lane_bank.h"
#include "base/random.h"
#include "base/shapes.h"

namespace vantoric {
namespace {

// A loop with everything that loops use: feedback, division, a select, rounding, a sine.
template <class T>
struct Probe {
    T gain, memory, previous;
    T step(T x) {
        memory += gain * (x - memory / (T(1) + absolute(previous)));
        previous = select(memory > T(0.25f), floored(memory * T(8)) * T(0.125f), polynomialSine(memory * T(3)));
        return memory + squareRoot(absolute(previous));
    }
};

TEST(Lanes, GiveEveryVoiceTheBitsOfTheScalarLoop) {
    for (const LaneMask mask : {0x8000, 0xc000, 0x0800, 0x8008, 0xff00, 0xfff0, 0xffff}) {
        LaneBank<Probe> bank;
        std::array<Probe<float>, voiceCount> scalar;
        for (int v = 0; v < voiceCount; ++v) {
            scalar[v] = {0.05f + 0.03f * v, 0.1f * v, 0.0f};
            bank.put(v, scalar[v]);
        }
        LinearCongruence random{3};
        static LaneBuffer buffer;
        for (float& x : buffer) x = random.unit() * 4.0f - 2.0f;
        std::vector<float> input(std::begin(buffer), std::end(buffer));
        runBank(bank, buffer, 96, mask);
        for (int v = 0; v < voiceCount; ++v) {
            const bool active = (mask >> v & 1) != 0;
            Probe<float> before = scalar[v];
            for (int i = 0; i < 96; ++i) {
                const float y = scalar[v].step(input[i * voiceCount + v]);
                if (active) {
                    ASSERT_EQ(buffer[i * voiceCount + v], y) << "voice " << v << " sample " << i;
                }
            }
            // A silent voice keeps its memories.
            EXPECT_EQ(bank.get(v).memory, active ? scalar[v].memory : before.memory);
        }
    }
}

TEST(Lanes, SpansCoverTheSoundingGroups) {
    EXPECT_EQ(spanOf(0).count, 0);
    EXPECT_EQ(spanOf(0x8000).first, 12);
    EXPECT_EQ(spanOf(0x8000).count, 4);
    EXPECT_EQ(spanOf(0x8001).count, 16);
    EXPECT_EQ(spanOf(0x0010).first, 4);
}

TEST(Lanes, FloorAndTruncateAsTheLibraryDoes) {
    for (float x = -5.0f; x < 5.0f; x += 0.125f) {
        EXPECT_EQ(floored(x), std::floor(x));
        EXPECT_EQ(truncated(x), std::trunc(x));
        EXPECT_EQ((floored(Lanes<float, 4>(x))[2]), std::floor(x));
        EXPECT_EQ((truncated(Lanes<float, 4>(x))[1]), std::trunc(x));
    }
    EXPECT_EQ(truncated(1e20f), 1e20f);
}

TEST(Lanes, LimitsReadNaNAsTheLowerBound) {
    EXPECT_EQ(limit(NAN, -1.0f, 1.0f), -1.0f);
    EXPECT_EQ((limit(Lanes<float, 4>(NAN), Lanes<float, 4>(-1.0f), Lanes<float, 4>(1.0f))[3]), -1.0f);
}

TEST(Lanes, PickTheSmallerAndTheLargerAsScalarsDo) {
    using Quad = Lanes<float, 4>;
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (const float x : {-infinity, -1.0f, -0.0f, 0.0f, 2.0f, infinity, NAN})
        for (const float bound : {-infinity, -0.0f, 0.0f, 1.0f, infinity}) {
            const auto bits = [](float v) { return std::bit_cast<std::uint32_t>(v); };
            EXPECT_EQ(bits(minimum(Quad(x), Quad(bound))[2]), bits(minimum(x, bound))) << x << " " << bound;
            EXPECT_EQ(bits(maximum(Quad(x), Quad(bound))[2]), bits(maximum(x, bound))) << x << " " << bound;
            EXPECT_EQ(bits(minimum(NAN, bound)), bits(bound));
            EXPECT_EQ(bits(absolute(Quad(x))[1]), bits(std::fabs(x)));
        }
}

TEST(Shapes, ThePolynomialSineIsCloseToTheSine) {
    for (float x = -100.0f; x < 100.0f; x += 0.01f) EXPECT_NEAR(polynomialSine(x), std::sin(x), 2e-5f);
    for (double x = -10.0; x < 10.0; x += 0.001) EXPECT_NEAR(polynomialSine(x), std::sin(x), 4e-6);
}

TEST(Lanes, ConvertUnsignedNumbersAsOneVoiceDoes) {
    using Bits = Lanes<std::uint32_t, 4>;
    for (const std::uint32_t u : {0u, 1u, 0x80000000u, 0xffffffffu, 0x7fffffffu, 0x01000001u, 0xdeadbeefu, 0xffffff80u}) {
        EXPECT_EQ((fromUnsigned<Lanes<float, 4>>(Bits(u))[1]), static_cast<float>(u));
        EXPECT_EQ((fromUnsigned<Lanes<double, 4>>(Bits(u))[2]), static_cast<double>(u));
    }
}

}  // namespace
}  // namespace vantoric
