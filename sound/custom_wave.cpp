#include "sound/custom_wave.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "base/numbers.h"
#include "base/thread_check.h"

namespace vantoric {

CycleBandlimiter::CycleBandlimiter() : fft_(cycleSamples) {}

bool CycleBandlimiter::run(const double* cycle, std::int16_t* const levels[mipLevels], const Flag* cancel) {
    notInsideAnyBlock();
    fft_.forward(cycle, real_.data(), imaginary_.data());
    for (int level = 0; level < mipLevels; ++level) {
        if (cancel != nullptr && cancel->isSet()) return false;
        const int limit = 1024 >> level;
        cutReal_.fill(0.0);
        cutImaginary_.fill(0.0);
        std::copy(real_.begin() + 1, real_.begin() + limit, cutReal_.begin() + 1);
        std::copy(imaginary_.begin() + 1, imaginary_.begin() + limit, cutImaginary_.begin() + 1);
        fft_.inverse(cutReal_.data(), cutImaginary_.data(), signal_.data());
        for (int i = 0; i < cycleSamples; ++i)
            levels[level][i] = static_cast<std::int16_t>(clampTo(signal_[i], -1.0, 1.0) * 32767);
    }
    return true;
}

namespace {

using Cycle = std::array<double, cycleSamples>;

double readAt(const Cycle& cycle, double position) {
    const int i = static_cast<int>(position);
    const double frac = position - i;
    return cycle[i & 2047] * (1.0 - frac) + cycle[(i + 1) & 2047] * frac;
}

// The cycle with its first half stretched to 1024 + 32 j samples and its second squeezed into the rest, then
// rotated back by half of the move. `reversed` is the cycle backwards.
Cycle phaseWarped(const Cycle& reversed, int j) {
    const int a = 1024 + 32 * j, b = 1024 - 32 * j;
    Cycle warped, rotated;
    for (int n = 0; n < a; ++n) warped[2047 - n] = readAt(reversed, n * 1024.0 / a);
    for (int n = 0; n < b; ++n) warped[2047 - n - a] = readAt(reversed, 1024.0 + n * 1024.0 / b);
    for (int i = 0; i < cycleSamples; ++i) rotated[i] = warped[(i - 16 * j) & 2047];
    return rotated;
}

}  // namespace

bool makeCustomMips(CustomWave& wave, const Flag& cancel) {
    CycleBandlimiter bandlimiter;
    Cycle cycle, reversed;
    for (int i = 0; i < cycleSamples; ++i) cycle[i] = wave.frame(0, 0)[i] * 3.051851e-5;
    std::reverse_copy(cycle.begin(), cycle.end(), reversed.begin());
    for (int j = 0; j < customFrames; ++j) {
        std::int16_t* levels[mipLevels];
        for (int level = 0; level < mipLevels; ++level) levels[level] = wave.frame(level, j);
        const Cycle frame = j == 0 ? cycle : phaseWarped(reversed, j);
        if (!bandlimiter.run(frame.data(), levels, &cancel)) return false;
    }
    return true;
}

bool sameCycle(const std::int16_t* a, const std::int16_t* b) {
    return std::equal(a, a + cycleSamples, b, [](int x, int y) { return std::abs(x - y) < 3; });
}

void CustomWaveSlot::forget() {
    notInsideAnyBlock();
    const std::lock_guard guard(publishing_);
    generation_.fetch_add(1, std::memory_order_acq_rel);
    samples_.store(nullptr, std::memory_order_release);
}

std::shared_ptr<const CustomWave> CustomWaveSlot::publish(std::shared_ptr<const CustomWave> wave, unsigned generation) {
    const std::lock_guard guard(publishing_);
    if (generation != this->generation()) return wave;
    given_ = cycle;
    std::copy_n(wave->frame(0, 0), cycleSamples, cycle.begin());
    samples_.store(wave->samples.data(), std::memory_order_release);
    std::swap(wave_, wave);
    return wave;
}

std::shared_ptr<const CustomWave> CustomWaveCache::find(const CustomCycle& cycle) {
    const std::lock_guard guard(mutex_);
    for (const auto& entry : entries_)
        if (entry->cycle == cycle)
            if (auto wave = entry->wave.lock()) return wave;
    return nullptr;
}

void CustomWaveCache::add(const CustomCycle& cycle, const std::shared_ptr<const CustomWave>& wave) {
    const std::lock_guard guard(mutex_);
    std::erase_if(entries_, [](const auto& entry) { return entry->wave.expired(); });
    entries_.push_back(std::make_unique<Entry>(Entry{cycle, wave}));
}

}  // namespace vantoric
