#include "effects/distortion_bank.h"

namespace vantoric {

constinit const std::array<const char*, distortionTypeCount> distortionLabels = [] {
    std::array<const char*, distortionTypeCount> all{};
    all.fill("-");
    all[0] = "Bypass";
    distortion::AllLoops::any([&](auto which) {
        all[decltype(which)::Traits::index] = decltype(which)::Traits::label;
        return false;
    });
    return all;
}();

namespace {

constexpr bool contains(LaneMask mask, int voice) { return ((mask >> voice) & 1) != 0; }

// The lanes whose memory holds an infinity or NaN.
template <int N>
LaneMask brokenLanes(const DistortionMemory<Lanes<float, N>>& memory, int first) {
    using Vector = Lanes<float, N>;
    constexpr int fields = sizeof memory / sizeof(Vector);
    const auto* bytes = reinterpret_cast<const unsigned char*>(&memory);
    Vector zero(0.0f);
    for (int k = 0; k < fields; ++k) {
        Vector value;
        std::memcpy(static_cast<void*>(&value), bytes + k * sizeof value, sizeof value);
        zero = zero + (value - value);
    }
    const auto finite = zero == Vector(0.0f);
    if (allOf(finite)) return 0;
    LaneMask broken = 0;
    for (int lane = 0; lane < N; ++lane)
        if (!finite[lane]) broken = static_cast<LaneMask>(broken | 1 << (first + lane));
    return broken;
}

}  // namespace

LaneMask DistortionBank::membersOf(int variant, LaneMask mask) const {
    LaneMask members = 0;
    for (int voice = 0; voice < voiceCount; ++voice)
        if (contains(mask, voice) && variant_[voice] == variant) members = static_cast<LaneMask>(members | 1 << voice);
    return members;
}

void DistortionBank::dealRandom(int count, LaneMask mask) {
    for (int voice = 0; voice < voiceCount; ++voice) {
        if (!contains(mask, voice)) continue;
        seed_[voice] = random_.congruence.state;
        random_.congruence.skip(static_cast<std::uint32_t>(count));
    }
}

void DistortionBank::silence(float* buffer, int count, LaneMask broken) {
    for (int voice = 0; voice < voiceCount; ++voice) {
        if (!contains(broken, voice)) continue;
        reset(voice);
        for (int i = 0; i < count; ++i) buffer[i * voiceCount + voice] = 0.0f;
    }
}

// Runs the voices of `group`, keeping the samples of the other voices of `mask`.
template <int N, class Which>
void DistortionBank::runLanes(float* buffer, int count, int first, LaneMask group, LaneMask mask) {
    using Vector = Lanes<float, N>;
    typename Which::template On<Vector> loop;
    loop.setup(
        {distortion::loadSamples<Vector>(&drive_[first]), sampleRate_, IntegersOf<Vector>(&seed_[first], stdx::element_aligned)});
    DistortionMemory<Vector> memory = memory_.load<N>(first);
    const auto kept = static_cast<LaneMask>(mask & ~group);
    distortion::run<Vector>(loop, low_, memory, buffer + first, voiceCount, count, !maskOf<Vector>(kept, first));
    memory_.store<N>(first, memory, group);
    silence(buffer, count, static_cast<LaneMask>(brokenLanes<N>(memory, first) & group));
}

template <class Which>
void DistortionBank::runType(float* buffer, int count, LaneMask group, LaneMask mask) {
    using Traits = typename Which::Traits;
    if constexpr (Traits::gated)
        for (int voice = 0; voice < voiceCount; ++voice)
            if (!(drive_[voice] > distortion::least)) group = static_cast<LaneMask>(group & ~(1 << voice));
    for (int first = 0; first < voiceCount; first += laneGroup)
        if (((group >> first) & 15) != 0) runLanes<laneGroup, Which>(buffer, count, first, group, mask);
}

void DistortionBank::run(float* buffer, int count, LaneMask mask) {
    LaneMask drawing = static_cast<LaneMask>(membersOf(distortion::Noise<float>::variant, mask) |
                                             membersOf(distortion::NoiseRm<float>::variant, mask));
    if (drawing != 0) dealRandom(count, drawing);
    for (LaneMask left = mask; left != 0;) {
        const int variant = variant_[std::countr_zero(left)];
        const LaneMask group = membersOf(variant, left);
        left = static_cast<LaneMask>(left & ~group);
        distortion::withLoop(variant, [&](auto which) { runType<decltype(which)>(buffer, count, group, mask); });
    }
}

}  // namespace vantoric
