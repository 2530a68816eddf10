#include "base/fft.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "base/math.h"
#include "base/random.h"

namespace vantoric {
namespace {

TEST(RealFft, ForwardAndInverseGiveTheSignalBack) {
    RealFft fft(2048);
    LinearCongruence random{7};
    std::vector<double> signal(2048), back(2048), re(1025), im(1025);
    for (double& x : signal) x = random.unit() - 0.5;
    fft.forward(signal.data(), re.data(), im.data());
    fft.inverse(re.data(), im.data(), back.data());
    for (int i = 0; i < 2048; ++i) EXPECT_NEAR(back[i], signal[i], 1e-14);
}

TEST(RealFft, ASineStandsInItsBin) {
    RealFft fft(64);
    std::vector<double> signal(64), re(33), im(33);
    for (int i = 0; i < 64; ++i) signal[i] = std::sin(2 * math::pi * 5 * i / 64);
    fft.forward(signal.data(), re.data(), im.data());
    for (int k = 0; k <= 32; ++k) {
        EXPECT_NEAR(re[k], 0.0, 1e-12);
        EXPECT_NEAR(im[k], k == 5 ? -32.0 : 0.0, 1e-12);
    }
}

}  // namespace
}  // namespace vantoric
