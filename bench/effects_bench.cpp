// Cost of the effect slot: every type at 88.2 kHz in blocks of a tick, as it opens and with all parameters up, the memory of a
// slot and of an instance's nine, and the time that a change of type takes with the block that carries it out, in a new slot
// whose memory was touched beforehand or not, and after a run of sound.
#include <malloc.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <memory>
#include <vector>

#include "effects/multieffect.h"
#include "engine/denormals.h"

namespace {

using namespace vantoric;
using Clock = std::chrono::steady_clock;

constexpr float rate = 88200.0f;
constexpr int block = 88;
constexpr int typeCount = 77;

double nanoseconds(Clock::duration time) { return std::chrono::duration<double, std::nano>(time).count(); }

std::size_t heapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Bytes of the process that stand in memory.
std::size_t residentBytes() {
    std::size_t pages = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%*u %zu", &pages) != 1) pages = 0;
        std::fclose(file);
    }
    return pages * 4096;
}

using Values = std::array<float, 5>;

void feed(Multieffect& slot, int type, const Values& values) {
    slot.setSampleRate(rate);
    slot.setTempo(120.0f, 0.0);
    slot.setType(type);
    for (int i = 0; i < 5; ++i) slot.setParameter(i, values[static_cast<std::size_t>(i)]);
}

class Noise {
public:
    void fill(std::vector<float>& samples) {
        for (float& sample : samples) sample = generator_.unit() - 0.5f;
    }

private:
    LinearCongruence generator_;
};

// The best of several runs, in ns a stereo sample. The input is written afresh for each block and its cost is
// left out.
double costOf(Multieffect& slot, int type, const Values& values) {
    feed(slot, type, values);
    Noise noise;
    std::vector<float> left(block), right(block);
    double best = 1e9;
    for (int run = 0; run < 6; ++run) {
        Clock::duration spent{};
        constexpr int blocks = 200;
        for (int i = 0; i < blocks; ++i) {
            noise.fill(left);
            noise.fill(right);
            const auto start = Clock::now();
            slot.process(left.data(), right.data(), block);
            spent += Clock::now() - start;
        }
        best = std::min(best, nanoseconds(spent) / (blocks * block));
    }
    return best;
}

// The longest time that `action` takes after a run of sound in `type`, in microseconds.
template <class Action>
double longest(Multieffect& slot, int type, Action action) {
    std::vector<float> left(block, 0.25f), right(block, -0.25f);
    double worst = 0.0;
    for (int run = 0; run < 4; ++run) {
        feed(slot, type, effectType(type).defaults);
        for (int i = 0; i < 1000; ++i) slot.process(left.data(), right.data(), block);
        const auto start = Clock::now();
        action();
        worst = std::max(worst, nanoseconds(Clock::now() - start) / 1000.0);
    }
    return worst;
}

// The first block of a type in a new slot, in microseconds: the best of several slots.
double firstBlock(RandomSources& random, int type, bool touched) {
    double best = 1e9;
    for (int run = 0; run < 5; ++run) {
        const auto slot = std::make_unique<Multieffect>(random);
        std::vector<float> left(block, 0.25f), right(block, -0.25f);
        if (touched) slot->touchMemory(type);
        const auto start = Clock::now();
        feed(*slot, type, effectType(type).defaults);
        slot->process(left.data(), right.data(), block);
        best = std::min(best, nanoseconds(Clock::now() - start) / 1000.0);
    }
    return best;
}

void showMemory() {
    constexpr int instanceSlots = 9;
    RandomSources random;
    const std::size_t heap = heapBytes(), resident = residentBytes();
    std::vector<std::unique_ptr<Multieffect>> slots;
    for (int i = 0; i < instanceSlots; ++i) slots.push_back(std::make_unique<Multieffect>(random));
    const std::size_t idle = residentBytes();
    std::printf("a slot: %zu bytes beside its delay lines; nine slots in memory while off: %zu\n",
                (heapBytes() - heap) / instanceSlots, idle - resident);
    for (const int type : {2, 6, 11, 17}) {
        const std::size_t now = residentBytes();
        longest(*slots[static_cast<std::size_t>(type % instanceSlots)], type, [] {});
        std::printf("in memory after four seconds of %s: %zu more\n", effectType(type).name, residentBytes() - now);
    }
}

}  // namespace

int main() {
    const DenormalsOff denormalsOff;
    RandomSources random;
    showMemory();
    const auto slot = std::make_unique<Multieffect>(random);
    std::printf("\n");

    std::printf("%4s  %-24s %8s %8s %12s %12s %12s\n", "type", "name", "ns", "ns at 1", "first us", "touched", "changed");
    for (int type = 0; type < typeCount; ++type) {
        const EffectType& row = effectType(type);
        if (row.family == EffectFamily::separator) continue;
        const double cost = costOf(*slot, type, row.defaults), highest = costOf(*slot, type, {1.0f, 1.0f, 1.0f, 1.0f, 1.0f});
        std::vector<float> left(block), right(block);
        const double change = longest(*slot, type, [&] {
            slot->setType(0);
            slot->setType(type);
            slot->process(left.data(), right.data(), block);
        });
        std::printf("%4d  %-24s %8.1f %8.1f %12.1f %12.1f %12.1f\n", type, row.name, cost, highest,
                    firstBlock(random, type, false), firstBlock(random, type, true), change);
    }
}
