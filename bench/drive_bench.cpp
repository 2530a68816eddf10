// Time of every voice distortion, per voice and sample, as scalar code, in four lanes and in the bank of a layer; and of
// every drive effect, per stereo sample at 88.2 kHz: bench-drive
#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "effects/distortion_bank.h"
#include "effects/drive_core.h"
#include "effects/filter_degrader.h"
#include "effects/type_table.h"
#include "thread_time.h"

using namespace vantoric;

namespace {

constexpr int tick = 88;
constexpr int calls = 400;

// The shortest of several rounds, in nanoseconds a call.
template <class Work>
double measure(Work work) {
    return bench::bestTime(9, calls, work) * 1e9;
}

void fill(float* buffer, int count) {
    LinearCongruence chance{7};
    for (int i = 0; i < count; ++i) buffer[i] = 0.6f * chance.unit() - 0.3f;
}

template <int N, class Which>
double lanes(const float* signal) {
    using T = std::conditional_t<N == 1, float, Lanes<float, N>>;
    static LaneBuffer buffer;
    DistortionMemory<T> memory{};
    const double time = measure([&] {
        std::copy_n(signal, tick * voiceCount, buffer);
        typename Which::template On<T> loop;
        loop.setup({T(0.6f), 88200.0f, IntegersOf<T>(5u)});
        distortion::run<T>(loop, halfBand(), memory, buffer, voiceCount, tick, MaskOf<T>(true));
    });
    return time / (tick * N);
}

LaneBuffer bankBuffer;

double copying(const float* signal) {
    static LaneBuffer buffer;
    return measure([&] { std::copy_n(signal, tick * voiceCount, buffer); }) / tick;
}

void voices() {
    static LaneBuffer signal;
    fill(signal, maxTickSamples * voiceCount);
    const double copy = copying(signal);
    std::printf("voice distortion: ns per voice and sample\n%-10s %8s %8s | %8s %8s\n", "", "scalar", "4 lanes", "bank, 1",
                "bank, 16");
    for (int type = 0; type < distortionTypeCount; ++type) {
        distortion::withLoop(distortionVariant(type), [&](auto which) {
            using Which = decltype(which);
            RandomSources random;
            DistortionBank bank(random);
            auto& buffer = bankBuffer;
            for (int voice = 0; voice < voiceCount; ++voice) {
                bank.setType(voice, type);
                bank.setDrive(voice, 0.6f);
            }
            const auto whole = [&](LaneMask mask) {
                return (measure([&] {
                            std::copy_n(signal, tick * voiceCount, buffer);
                            bank.run(buffer, tick, mask);
                        }) / tick -
                        copy) /
                       std::popcount(mask);
            };
            std::printf("%-10s %8.2f %8.2f | %8.2f %8.2f\n", distortionLabels[type], lanes<1, Which>(signal) - copy,
                        lanes<4, Which>(signal) - copy / 4, whole(0x8000), whole(0xffff));
        });
    }
}

template <class Effect>
void effect(const EffectType& row, Effect& unit) {
    constexpr float rate = 88200.0f;
    float left[tick], right[tick], inLeft[tick], inRight[tick];
    fill(inLeft, tick);
    fill(inRight, tick);
    unit.setSampleRate(rate);
    unit.setVariant(row.variant);
    for (int index = 0; index < 5; ++index) unit.setParameter(index, row.defaults[index]);
    const double time = measure([&] {
        std::copy_n(inLeft, tick, left);
        std::copy_n(inRight, tick, right);
        unit.process(left, right, tick);
    });
    std::printf("%-16s %8.2f\n", row.name, time / tick);
}

}  // namespace

int main() {
    voices();
    std::printf("\neffects: ns per stereo sample at 88.2 kHz\n");
    RandomSources random;
    for (int type = 0; type < effectTypeCount; ++type) {
        const EffectType& row = effectType(type);
        if (row.family == EffectFamily::drive) {
            DriveCore drive(random);
            effect(row, drive);
        } else if (row.family == EffectFamily::degrade) {
            Filter filter;
            effect(row, filter);
        }
    }
    return 0;
}
