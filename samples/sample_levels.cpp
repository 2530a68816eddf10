#include "samples/sample_levels.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/math.h"

namespace vantoric {

const std::array<FirResponse, sampleLevels - 1> firResponses = {{
    {0.248, 0.274, 0.4951446652},
    {0.126, 0.149, 0.250057821107},
    {0.063, 0.087, 0.1249772681566},
    {0.032, 0.056, 0.06251328815864},
}};

namespace {

// Design.

constexpr int unknowns = firCentre + 1;  // one half of a symmetric row, the centre first
constexpr int constraints = 4;
constexpr int order = unknowns + constraints;
constexpr double stopWeight = 300.0;  // of errors in the stop band against the pass band

using Matrix = std::array<std::array<double, order + 1>, order>;  // with the right-hand side

double turn(double frequency) { return 2.0 * math::pi * frequency; }

// cos(2 pi f k) with the factor 2 of a pair of taps.
double basis(int k, double frequency) { return k == 0 ? 1.0 : 2.0 * math::cos(turn(frequency) * k); }

// Integral of cos(2 pi f n) from 0 to `frequency`.
double cosineIntegral(int n, double frequency) {
    return n == 0 ? frequency : math::sin(turn(frequency) * n) / (2.0 * math::pi * n);
}
// Integral of basis(i) x basis(k) over a band.
double bandProduct(int i, int k, double from, double to) {
    const double factor = (i == 0 ? 1.0 : 2.0) * (k == 0 ? 1.0 : 2.0) * 0.5;
    const auto upTo = [&](double f) { return cosineIntegral(std::abs(i - k), f) + cosineIntegral(i + k, f); };
    return factor * (upTo(to) - upTo(from));
}

// Gauss with row exchange. The system is regular: the basis is independent and so are the constraints.
void solve(Matrix& m) {
    for (int column = 0; column < order; ++column) {
        const auto pivot = std::max_element(m.begin() + column, m.end(), [column](const auto& a, const auto& b) {
            return std::fabs(a[column]) < std::fabs(b[column]);
        });
        std::swap(m[column], *pivot);
        for (int row = 0; row < order; ++row) {
            if (row == column) continue;
            const double factor = m[row][column] / m[column][column];
            for (int k = column; k <= order; ++k) m[row][k] -= factor * m[column][k];
        }
    }
    for (int row = 0; row < order; ++row) m[row][order] /= m[row][row];
}

}  // namespace

FirRow designRow(const FirResponse& response) {
    const double passEdge = std::max(2.0 * response.half - response.stop, 0.0);
    Matrix m{};
    for (int i = 0; i < unknowns; ++i) {
        for (int k = 0; k < unknowns; ++k)
            m[i][k] = bandProduct(i, k, 0.0, passEdge) + stopWeight * bandProduct(i, k, response.stop, 0.5);
        m[i][order] = bandProduct(i, 0, 0.0, passEdge);
    }
    const auto constrain = [&m](int which, double value, auto coefficient) {
        const int row = unknowns + which;
        for (int k = 0; k < unknowns; ++k) m[row][k] = m[k][row] = coefficient(k);
        m[row][order] = value;
    };
    constrain(0, 1.0, [](int k) { return basis(k, 0.0); });
    constrain(1, response.centre, [](int k) { return k == 0 ? 1.0 : 0.0; });
    constrain(2, 0.50118723362727229, [&](int k) { return basis(k, response.half); });
    constrain(3, 0.001, [&](int k) { return basis(k, response.stop); });
    solve(m);
    FirRow row;
    for (int k = 0; k < unknowns; ++k) row[firCentre - k] = row[firCentre + k] = m[k][order];
    return row;
}

double firAmplitude(const FirRow& row, double frequency) {
    double sum = 0.0;
    for (int k = 0; k < unknowns; ++k) sum += row[firCentre + k] * basis(k, frequency);
    return sum;
}

const LevelRows& levelRows() {
    static const LevelRows rows = [] {
        LevelRows designed;
        std::transform(firResponses.begin(), firResponses.end(), designed.begin(), designRow);
        return designed;
    }();
    return rows;
}

// Filtering.

namespace {

constexpr int chunkSamples = 4096;  // outputs between two looks at the flag

using Coefficients = std::array<std::int32_t, firTaps>;

Coefficients integersOf(const FirRow& row) {
    Coefficients c;
    std::transform(row.begin(), row.end(), c.begin(),
                   [](double tap) { return static_cast<std::int32_t>(std::clamp(tap * 8192.0, -32700.0, 32700.0)); });
    return c;
}

// The stretch of the source that outputs `first` to `first + outputs` reach, 40 samples more on either side.
void gather(const std::int16_t* source, std::int32_t count, std::int64_t first, int outputs, bool wrap, std::int16_t* window) {
    const std::int64_t from = first - firCentre;
    const int size = outputs + firTaps - 1;
    if (from >= 0 && from + size <= count) {
        std::copy_n(source + from, size, window);
        return;
    }
    for (int i = 0; i < size; ++i) {
        std::int64_t at = from + i;
        if (wrap) at = (at % count + count) % count;
        window[i] = at >= 0 && at < count ? source[at] : std::int16_t{0};
    }
}

// Tap by tap over a block that stays in the cache: the inner loop has no order to keep, so it runs as
// vectors.
void filterChunk(const std::int16_t* window, int outputs, const Coefficients& c, std::int16_t* out) {
    constexpr int block = 256;
    std::int32_t sums[block];
    for (int start = 0; start < outputs; start += block) {
        const int size = std::min(block, outputs - start);
        std::fill_n(sums, size, 0);
        for (int k = 0; k < firTaps; ++k) {
            if (c[k] == 0) continue;
            const std::int16_t* const x = window + start + k;
            const auto tap = static_cast<std::int16_t>(c[k]);
            for (int i = 0; i < size; ++i) sums[i] += (x[i] * tap) >> 13;
        }
        for (int i = 0; i < size; ++i) out[start + i] = static_cast<std::int16_t>(std::clamp(sums[i], -32767, 32767));
    }
}

}  // namespace

bool firFilter(const std::int16_t* source, std::int32_t count, std::int16_t* destination, bool wrap, const FirRow& row,
               const Flag* cancel) {
    const Coefficients c = integersOf(row);
    std::int16_t window[chunkSamples + firTaps - 1];
    for (std::int32_t first = 0; first < count;) {
        if (cancel != nullptr && cancel->isSet()) return false;
        const int outputs = std::min<std::int32_t>(chunkSamples, count - first);
        gather(source, count, first, outputs, wrap, window);
        filterChunk(window, outputs, c, destination + first);
        first += outputs;
    }
    return true;
}

bool buildLevels(Sample& sample, bool wrap, const Flag* cancel, const LevelRows& rows) {
    for (int level = 1; level < sampleLevels; ++level) {
        const auto &from = sample.levels[level - 1], &to = sample.levels[level];
        if (!from || !to) return true;
        if (!firFilter(from.get(), sample.length, to.get(), wrap, rows[static_cast<std::size_t>(level - 1)], cancel))
            return false;
    }
    return true;
}

}  // namespace vantoric
