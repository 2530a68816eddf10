#include "samples/autotune.h"

#include <algorithm>
#include <array>
#include <vector>

#include "base/fft.h"

namespace vantoric {

namespace {

constexpr int longestLag = 3 * highestLag;
constexpr int lagCount = highestLag - lowestLag + 1;

// Sums of x[n] x[n + lag] for all lags, by transforms of stretches that overlap by the longest lag: right to
// far better than a billionth of the sum for lag 0.
class FastSums {
public:
    FastSums(const std::int16_t* samples, std::int32_t count) : sums_(size) {
        RealFft fft(size);
        std::vector<double> here(size), ahead(size), re(bins), im(bins), aheadRe(bins), aheadIm(bins), sumRe(bins), sumIm(bins);
        for (std::int32_t start = 0; start < count; start += stretch) {
            for (int i = 0; i < size; ++i) {
                ahead[i] = start + i < count ? samples[start + i] : 0.0;
                here[i] = i < stretch ? ahead[i] : 0.0;
            }
            fft.forward(here.data(), re.data(), im.data());
            fft.forward(ahead.data(), aheadRe.data(), aheadIm.data());
            for (int k = 0; k < bins; ++k) {
                sumRe[k] += re[k] * aheadRe[k] + im[k] * aheadIm[k];
                sumIm[k] += re[k] * aheadIm[k] - im[k] * aheadRe[k];
            }
        }
        fft.inverse(sumRe.data(), sumIm.data(), sums_.data());
    }
    double at(int lag) const { return sums_[static_cast<std::size_t>(lag)]; }

private:
    static constexpr int size = 32768;
    static constexpr int bins = size / 2 + 1;
    static constexpr int stretch = size - longestLag - 1;
    std::vector<double> sums_;
};

// The same sums exactly: products of 16-bit numbers are whole, and their sums stay below 2^53.
class ExactSums {
public:
    ExactSums(const std::int16_t* samples, std::int32_t count) : x_(samples, samples + count) {}

    double at(int lag) const {
        constexpr std::size_t lanes = 8;
        const auto offset = static_cast<std::size_t>(lag);
        if (offset >= x_.size()) return 0.0;
        const std::size_t count = x_.size() - offset;
        const double *const now = x_.data(), *const later = now + offset;
        std::array<double, lanes> part{};
        std::size_t n = 0;
        for (; n + lanes <= count; n += lanes)
            for (std::size_t k = 0; k < lanes; ++k) part[k] += now[n + k] * later[n + k];
        double total = 0.0;
        for (; n < count; ++n) total += now[n] * later[n];
        for (const double p : part) total += p;
        return total;
    }

private:
    std::vector<double> x_;
};

template <class Sums>
double scoreOf(const Sums& sums, int lag) {
    return sums.at(lag) + 0.5 * sums.at(2 * lag) + 0.25 * sums.at(3 * lag);
}

}  // namespace

int bestLag(const std::int16_t* samples, std::int32_t count) {
    const FastSums fast(samples, std::max(count, 0));
    const double margin = 1e-8 * fast.at(0);
    if (margin < 1e-9) return lowestLag;  // silence
    std::array<double, lagCount> scores;
    for (int i = 0; i < lagCount; ++i) scores[static_cast<std::size_t>(i)] = scoreOf(fast, lowestLag + i);
    const double nearHighest = *std::max_element(scores.begin(), scores.end()) - margin;

    // Those that the transforms cannot tell apart.
    const ExactSums exact(samples, count);
    int best = -1;
    double highest = 0.0;
    for (int lag = lowestLag; lag <= highestLag; ++lag) {
        if (scores[static_cast<std::size_t>(lag - lowestLag)] < nearHighest) continue;
        const double score = scoreOf(exact, lag);
        if (best >= 0 && !(score > highest)) continue;
        best = lag;
        highest = score;
    }
    return best;
}

std::uint32_t rateOfLag(int lag) { return static_cast<std::uint32_t>(lag * 130.81277); }

}  // namespace vantoric
