#include "engine/decimator.h"

#include <algorithm>

#include "base/lanes.h"

namespace vantoric {

namespace {

constexpr std::array<double, 31> taps = {
    0.028284612131378613,  0.14813959774678084,   0.3468627801333856,    0.43702049837482354,   0.24325806513986503,
    -0.08721033737789377,  -0.19775839977462176,  -0.018610764570385758, 0.1306556439824458,    0.044733760649891284,
    -0.08369949350489973,  -0.04483993243451467,  0.05308730299821246,   0.03662193548658544,   -0.03323636109935891,
    -0.026609171618318966, 0.020380576862326718,  0.01743519540232511,   -0.01212581035872066,  -0.01011223857566721,
    0.006920055138951727,  0.004773566550121092,  -0.004050885500957641, -0.001778797941155996, 0.002225446193571742,
    0.0003398183252755,    -0.001029268385205196, 0.000174050972255973,  0.000300317973555159,  -0.000187577494702256,
    0.000035814574650719};

constexpr int chunk = 256;  // internal samples laid out at a time
constexpr double offset = 0.00001;

using Pair = Lanes<double, 2>;  // left, right

// Sums for `Outputs` neighbouring outputs side by side, each from tap 0 upwards. `newest` is the newest
// sample pair of the first; the next output's is two pairs on.
template <int Outputs>
void sums(const double* newest, float* outLeft, float* outRight) {
    Pair sum[Outputs];
    for (Pair& s : sum) s = 0.0;
    for (int tap = 0; tap < static_cast<int>(taps.size()); ++tap)
        for (int k = 0; k < Outputs; ++k) sum[k] += Pair(newest + 2 * (2 * k - tap), stdx::element_aligned) * taps[tap];
    for (int k = 0; k < Outputs; ++k) {
        outLeft[k] = static_cast<float>(sum[k][0]);
        outRight[k] = static_cast<float>(sum[k][1]);
    }
}

}  // namespace

void Decimator::reset() {
    ring_.fill(0.0);
    index_ = 0;
}

void Decimator::process(const float* left, const float* right, int internalCount, float* outLeft, float* outRight) {
    // The ring unrolled, oldest pair first, then the chunk's own input.
    std::array<double, 2 * (ringSize + chunk)> line;
    for (int done = 0; done < internalCount; done += chunk) {
        const int count = std::min(chunk, internalCount - done);
        const auto split = ring_.begin() + 2 * index_;
        std::copy(ring_.begin(), split, std::copy(split, ring_.end(), line.begin()));
        double* input = line.data() + 2 * ringSize;
        for (int i = 0; i < count; ++i) {
            input[2 * i] = left[done + i] + offset;
            input[2 * i + 1] = right[done + i] + offset;
        }
        // The output of a chunk never passes its input, which is already copied.
        const int outputs = (count + 1) / 2;
        float* toLeft = outLeft + done / 2;
        float* toRight = outRight + done / 2;
        int k = 0;
        for (; k + 4 <= outputs; k += 4) sums<4>(input + 4 * k, toLeft + k, toRight + k);
        for (; k < outputs; ++k) sums<1>(input + 4 * k, toLeft + k, toRight + k);
        for (int i = std::max(0, count - ringSize); i < count; ++i) {
            const int at = (index_ + i) % ringSize;
            ring_[2 * at] = input[2 * i];
            ring_[2 * at + 1] = input[2 * i + 1];
        }
        index_ = (index_ + count) % ringSize;
    }
}

}  // namespace vantoric
