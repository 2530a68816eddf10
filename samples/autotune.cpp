#include "samples/autotune.h"

#include <array>
#include <vector>

namespace vantoric {

namespace {

// Sums of x[n] x[n + lag], each computed once: multiples of one lag are lags of others. A double holds all
// of them exactly, since products of 16-bit numbers are whole and their sums stay below 2^53.
class Autocorrelation {
public:
    Autocorrelation(const std::int16_t* samples, std::int32_t count)
        : x_(samples, samples + count), known_(3 * highestLag + 1), sums_(3 * highestLag + 1) {}

    double at(int lag) {
        const auto index = static_cast<std::size_t>(lag);
        if (!known_[index]) {
            sums_[index] = sum(index);
            known_[index] = true;
        }
        return sums_[index];
    }

private:
    double sum(std::size_t lag) const {
        constexpr std::size_t lanes = 8;
        std::array<double, lanes> part{};
        if (lag >= x_.size()) return 0.0;
        const std::size_t count = x_.size() - lag;
        const double *const now = x_.data(), *const later = now + lag;
        std::size_t n = 0;
        for (; n + lanes <= count; n += lanes)
            for (std::size_t k = 0; k < lanes; ++k) part[k] += now[n + k] * later[n + k];
        double total = 0.0;
        for (; n < count; ++n) total += now[n] * later[n];
        for (const double p : part) total += p;
        return total;
    }

    std::vector<double> x_;
    std::vector<bool> known_;
    std::vector<double> sums_;
};

}  // namespace

int bestLag(const std::int16_t* samples, std::int32_t count) {
    Autocorrelation sums(samples, count > 0 ? count : 0);
    int best = lowestLag;
    double highest = 0.0;
    for (int lag = lowestLag; lag <= highestLag; ++lag) {
        const double score = sums.at(lag) + 0.5 * sums.at(2 * lag) + 0.25 * sums.at(3 * lag);
        if (lag > lowestLag && !(score > highest)) continue;
        best = lag;
        highest = score;
    }
    return best;
}

std::uint32_t rateOfLag(int lag) { return static_cast<std::uint32_t>(lag * 130.81277); }

}  // namespace vantoric
