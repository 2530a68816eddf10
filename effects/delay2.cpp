#include "effects/delay2.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace vantoric {

namespace {

constexpr float antiDenormal = 0.0000001f;
constexpr int longestNote = 1 << 27;

constexpr std::array<float, 5> stepBeats{0.125f, 0.25f, 0.5f, 1.0f, 2.0f};
constexpr std::array<float, 8> stepRates{0.7f, 0.84f, 1.008f, 1.2096f, 1.4515203f, 1.7418245f, 2.0901895f, 2.5082273f};

// Signs of the gated taps, left and right. Entry 0 belongs to the tap that does not sound.
constexpr std::array<std::array<float, 33>, 2> tapSigns{{
    {+1, -1, -1, +1, +1, -1, +1, -1, -1, +1, -1, +1, +1, -1, -1, +1, -1,
     +1, -1, -1, +1, +1, -1, +1, -1, -1, +1, +1, -1, +1, -1, -1, +1},
    {-1, +1, -1, +1, -1, -1, +1, +1, -1, +1, -1, -1, +1, +1, -1, +1, -1,
     -1, +1, +1, -1, -1, +1, +1, -1, +1, -1, -1, +1, -1, +1, +1, -1},
}};

float square(float x) { return x * x; }
float cube(float x) { return x * x * x; }
float quickExp(float x) { return static_cast<float>(fastExp(x)); }

// A length in samples from a number that a tempo may have made anything.
int samples(float length) { return truncateTo(length, 0, longestNote); }

// Rises from 0 to `top` / 2 at the middle of the cycle and falls back.
float mirrored(float phase, float top) {
    const float e = phase * top;
    return phase > 0.5f ? top - e : e;
}

// Reads `excursion` samples (with a fraction) before an index, on four and on two points.
template <class R>
float readBehind(const R& ring, int index, float excursion) {
    const int whole = static_cast<int>(excursion);
    return indexRead(ring, index - whole, excursion - static_cast<float>(whole));
}
template <class R>
float linearBehind(const R& ring, int index, float excursion) {
    const int whole = static_cast<int>(excursion);
    const float f = excursion - static_cast<float>(whole);
    return (1.0f - f) * ring[index - whole] + f * ring[index - whole - 1];
}
// The same after an index, for taps that move the opposite way.
template <class R>
float readAhead(const R& ring, int index, float excursion) {
    const int whole = static_cast<int>(excursion);
    return indexRead(ring, index + whole + 1, 1.0f - (excursion - static_cast<float>(whole)));
}
template <class R>
float linearAhead(const R& ring, int index, float excursion) {
    const int whole = static_cast<int>(excursion);
    const float f = excursion - static_cast<float>(whole);
    return (1.0f - f) * ring[index + whole] + f * ring[index + whole + 1];
}

// What a sample asks of either side, with the side known when it is compiled.
template <class Action>
[[gnu::always_inline]] inline void bothSides(Action action) {
    action(std::integral_constant<int, 0>());
    action(std::integral_constant<int, 1>());
}

}  // namespace

const std::array<float, 12> noteBeats{0.125f,   0.1875f, 0.25f, 0.33333f,  0.375f, 0.5f,
                                      0.66666f, 0.75f,   1.0f,  1.333333f, 1.5f,   2.0f};

const std::array<MultitapPattern, 20> multitapPatterns{{
    {{1, 0, 1, 0, 1, 0, 1, 0}, {1, 0, 1, 0, 1, 0, 1, 0}},                                                        // "C_C_"
    {{1, 0, 0, 0, 1, 0, 1, 0}, {1, 0, 1, 0, 1, 0, 0, 0}},                                                        // "C_R_C_L_"
    {{1, 0, 1, 1, 1, 0, 1, 1}, {1, 0, 1, 1, 1, 0, 1, 1}},                                                        // "C_CC"
    {{1, 0, 0, 1, 1, 0, 0, 1}, {1, 0, 1, 0, 1, 0, 1, 0}},                                                        // "C_LR"
    {{1, 1, 1, 0, 1, 1, 1, 0}, {1, 1, 1, 0, 1, 1, 1, 0}},                                                        // "CCC_"
    {{1, 1, 0, 0, 1, 1, 0, 0}, {1, 0, 1, 0, 1, 0, 1, 0}},                                                        // "CLR_"
    {{1, 0, 0, 0.5f, 1, 0, 0, 0.5f}, {1, 0, 0, 0.5f, 1, 0, 0, 0.5f}},                                            // "C__C"
    {{1, 0, 0, 0, 1, 0, 0, 0}, {0, 0, 0, 1, 0, 0, 0, 1}},                                                        // "L__R"
    {{1, 0, 0, 1, 0, 0, 0, 0}, {1, 0, 0, 0, 0, 0, 1, 0}},                                                        // "Dotted 1"
    {{1, 0.5f, 0, 1, 0, 0.25f, 1, 0.5f}, {1, 0, 0.25f, 1, 0.5f, 0, 1, 0}},                                       // "Dotted 2"
    {{1, 0.7f, 0.5f, 0.35f, 0.25f, 0.18f, 0.125f, 0.09f}, {1, 0.7f, 0.5f, 0.35f, 0.25f, 0.18f, 0.125f, 0.09f}},  // "Fall"
    {{1, 0.7f, 0.5f, 0.35f, 0.25f, 0.18f, 0.125f, 0.09f}, {0.25f, 0.18f, 0.125f, 0.09f, 1, 0.7f, 0.5f, 0.35f}},  // "Fall LR"
    {{1, 0.5f, 0.25f, 0.125f, 0.0625f, 0.125f, 0.25f, 0.5f},
     {1, 0.5f, 0.25f, 0.125f, 0.0625f, 0.125f, 0.25f, 0.5f}},                                          // "Fall and raise"
    {{0, 0.25f, 0.5f, 0.75f, 1, 0.75f, 0.5f, 0.25f}, {0, 0.25f, 0.5f, 0.75f, 1, 0.75f, 0.5f, 0.25f}},  // "Raise and fall"
    {{0, 0.01f, 0.03125f, 0.0625f, 0.125f, 0.25f, 0.5f, 1}, {0, 0.01f, 0.03125f, 0.0625f, 0.125f, 0.25f, 0.5f, 1}},  // "Reverse"
    {{1, 0, 0.5f, 0, 0, 0, 0.5f, 0}, {0, 0, 0.5f, 0, 1, 0, 0.5f, 0}},                                                // "Pan 1"
    {{1, 0.75f, 0.5f, 0.25f, 0, 0.25f, 0.5f, 0.75f}, {0, 0.25f, 0.5f, 0.75f, 1, 0.75f, 0.5f, 0.25f}},                // "Pan 2"
    {{1, 0, 0.25f, 0, 1, 0, 0.25f, 0}, {0, 0.5f, 0, 0.125f, 0, 0.5f, 0, 0.125f}},     // "Pingpong echo1"
    {{1, 0, 0.5f, 0, 0.25f, 0, 0.125f, 0}, {0, 0.7f, 0, 0.35f, 0, 0.18f, 0, 0.09f}},  // "Pingpong echo2"
    {{0, 1, 0, 1, 0, 0, 0, 1}, {0, 0, 1, 0, 0, 1, 0, 0}},                             // "Chaos"
}};

int noteIndex(float p) { return truncateTo(p * 11.999f, 0, 11); }

int noteSamples(float p, float sampleRate, float beatsPerMinute) {
    return samples(sampleRate / beatsPerMinute * noteBeats[noteIndex(p)] * 60.0f);
}

Delay2::Delay2(RandomSources& random) : random_(random) {}

void Delay2::reset() {
    for (Line* ring : {&ringA_, &ringB_, &ringC_, &ringD_}) ring->clear();
    for (SmallLine* ring : {&diffuseE_, &diffuseF_}) ring->clear();
    position_ = position2_ = 0;
    state_ = {};
    lfoPhase_.fill(0.0f);
    dispersion_ = {};
}

void Delay2::touchMemory(int variant) {
    const Row* row = rowOf(rows, variant);
    if (row == nullptr) return;
    touchLines({&ringA_, &ringB_, &ringC_, &ringD_}, row->lines.lines);
    if (!row->lines.shortOnes) return;
    touchLines({&diffuseE_, &diffuseF_}, 2);
    for (Line* ring : {&ringC_, &ringD_}) ring->touch(SmallLine::size);
}

void Delay2::setSampleRate(float rate) { sampleRate_ = rate; }

void Delay2::setTempo(float beatsPerMinute) { tempo_ = beatsPerMinute; }

void Delay2::setParameter(int index, float value) { parameters_.set(index, clampUnit(value)); }

void Delay2::process(float* left, float* right, int count) {
    if (count <= 0 || row_ == nullptr) return;
    const Sides io{left, right};
    ringA_.beginBlock(position_, count + 1);
    ringB_.beginBlock(position_, count + 1);
    (this->*row_->run)(io, count);
}

// The note that p selects, in the order of arithmetic of the wide and gated types.
int Delay2::wideNote(float p) const { return samples(60.0f / tempo_ * sampleRate_ * noteBeats[noteIndex(p)]); }

// High damping of the types that sweep it down from 22000 Hz.
float Delay2::sweptDamping(float p) const { return damping(std::min(quickExp(-5.0f * p) * 44100.0f, 22000.0f)); }

// Damping of echo and its relatives, on parameter 3.
float Delay2::lineDamping() const { return std::min((square(1.0f - parameters_[3]) * 42336.0f + 1764.0f) / sampleRate_, 1.0f); }

// The input is scaled by the feedback, so that without feedback nothing is delayed.
void Delay2::delay(Sides io, int count) {
    const float mix = parameters_.mix(), feedback = parameters_[2];
    const float damp = std::min((cube(1.0f - parameters_[3]) * 43659.0f + 441.0f) / sampleRate_, 1.0f);
    const float detune = square(parameters_[4]);
    const float depth = detune * 0.0022675737f * sampleRate_;
    const int base = static_cast<int>(static_cast<float>(note(parameters_[1])) - detune * 0.0011337869f * sampleRate_);
    const float increment = 1.0f / sampleRate_, c = 480.0f / sampleRate_;
    for (int n = 0; n < count; ++n, advance()) {
        const float t = triangle(stepPhase(lfoPhase_[0], increment));
        bothSides([&](auto side) {
            SideState& state = state_[side];
            float& sample = io[side][n];
            const float y = readBehind(line(side), position_ - base, depth * (side == 0 ? t : 1.0f - t));
            line(side)[position_] = heldInLoop(state.low.low((sample - y) * feedback, damp, antiDenormal));
            sample = dryWet(sample, state.cut.cut(y, c, antiDenormal), mix);
        });
    }
}

// Two lines feed one another; the left output hears the left one's echoes and the right input half way.
void Delay2::pingPong(Sides io, int count) {
    ringC_.beginBlock(position_, count);
    ringD_.beginBlock(position_, count);
    const float mix = parameters_.mix(), feedback = parameters_[2];
    const float h = damping(quickExp(-4.0f * parameters_[3]) * 22050.0f), c = damping(120.0f);
    const int time = note(parameters_[1]);
    const float detune = square(parameters_[4]);
    const float increment = 1.4142f / sampleRate_;
    const float share = std::sqrt(feedback);
    float &a = state_[0].low.state, &b = state_[1].low.state;
    OnePole<float>& rightInput = state_[0].low2;
    for (int n = 0; n < count; ++n, advance()) {
        const float left = io[0][n], right = io[1][n], mono = (left + right) * 0.5f;
        const float e = mirrored(stepPhase(lfoPhase_[0], increment), 120.0f) * detune;
        a = readBehind(ringA_, position_ - 2 * time, e) * feedback * h + (1.0f - h) * a + antiDenormal;
        b = readAhead(ringB_, position_ - 2 * time, e) * feedback * h + (1.0f - h) * b + antiDenormal;
        ringC_[position_] = (feedback + 1.0f) * a * 0.5f;
        ringD_[position_] = rightInput.low(-right, h, antiDenormal);
        const float x = share * ringD_[position_ - time] + ringC_[position_ - time];
        io[0][n] = dryWet(left, state_[0].cut.cut(x, c, antiDenormal), mix);
        io[1][n] = dryWet(right, state_[1].cut.cut(b, c, antiDenormal), mix);
        ringA_[position_] = heldInLoop(b + mono);
        ringB_[position_] = heldInLoop(a + mono);
    }
}

// A state-variable band-pass in the loop.
void Delay2::delayBand(Sides io, int count) {
    const float mix = parameters_.mix(), feedback = parameters_[2];
    const float w = (cube(parameters_[3]) * 10584.0f + 441.0f) / sampleRate_;
    const float c = std::min(2.0f * math::sin(w), 0.5f);
    const float detune = square(parameters_[4]);
    const float depth = detune * 0.0022675737f * sampleRate_;
    const int base = static_cast<int>(static_cast<float>(note(parameters_[1])) - detune * 0.0011337869f * sampleRate_);
    const float increment = 1.0f / sampleRate_;
    for (int n = 0; n < count; ++n, advance()) {
        const float t = triangle(stepPhase(lfoPhase_[0], increment));
        bothSides([&](auto side) {
            float &low = state_[side].low.state, &band = state_[side].low2.state;
            float& sample = io[side][n];
            const float y = readBehind(line(side), position_ - base, depth * (side == 0 ? t : 1.0f - t));
            low += c * band;
            const float high = (sample - y) * feedback - low - band;
            band += c * high;
            line(side)[position_] = heldInLoop(band);
            sample = dryWet(sample, y, mix);
        });
    }
}

// Lines A and B carry the damped feedback, C and D the taps of the eight steps, each with an LFO of its own.
void Delay2::multitap(Sides io, int count) {
    ringC_.beginBlock(position_, count);
    ringD_.beginBlock(position_, count);
    const float mix = parameters_.mix();
    const int beat = truncateTo(parameters_[1] * 4.999f, 0, 4);
    const int length = 4 * samples(sampleRate_ / tempo_ * stepBeats[beat] * 60.0f);
    const float feedback = square(parameters_[2]) * 0.995f + 0.005f;
    const float k = std::min(22050.0f / sampleRate_, 1.0f), c = damping(120.0f);

    struct Step {
        float* phase;
        float increment, depth, left, right;
        int distance;
    };
    std::array<Step, 8> steps;
    int used = 0;
    const MultitapPattern& pattern = multitapPatterns[truncateTo(parameters_[3] * 19.999f, 0, 19)];
    for (int i = 0; i < 8; ++i) {
        if (pattern.left[i] + pattern.right[i] == 0.0f) continue;
        const float share = i == 4 ? std::sqrt(feedback) : math::pow(feedback, 0.125f * static_cast<float>(i));
        const float gain = share / (feedback + 0.01f);
        const float depth = square(parameters_[4]) * 0.0045351475f / stepRates[i] * sampleRate_;
        const int distance = static_cast<int>(depth + 1.0f) + static_cast<int>(static_cast<long long>(i) * length / 8);
        steps[used++] = {&lfoPhase_[i],          stepRates[i] / sampleRate_, depth,
                         gain * pattern.left[i], gain * pattern.right[i],    distance};
    }

    for (int n = 0; n < count; ++n, advance()) {
        const std::array<float, 2> in{io[0][n], io[1][n]};
        for (const int side : {0, 1}) {
            const float fed = (in[side] - line(side)[position_ - length]) * feedback;
            line(side)[position_] = heldInLoop(state_[side].low.low(fed, k, antiDenormal));
            (side == 0 ? ringC_ : ringD_)[position_] = fed;
        }
        float left = 0.0f, right = 0.0f;
        for (int i = 0; i < used; ++i) {
            const Step& step = steps[i];
            const float d = triangle(stepPhase(*step.phase, step.increment)) * step.depth;
            left += linearBehind(ringC_, position_ - step.distance, d) * step.left;
            right += linearAhead(ringD_, position_ - step.distance, d) * step.right;
        }
        io[0][n] = dryWet(in[0], state_[0].cut.cut(left, c, antiDenormal), mix);
        io[1][n] = dryWet(in[1], state_[1].cut.cut(right, c, antiDenormal), mix);
    }
}

// Free times. The feedback goes from crossed through none to straight, with a gain that keeps the length of
// the tail whatever the delay.
void Delay2::echo(Sides io, int count) {
    const float mix = parameters_.mix(), p4 = parameters_[4];
    const std::array<int, 2> time{static_cast<int>(square(parameters_[1]) * sampleRate_) + 1,
                                  static_cast<int>(square(parameters_[2]) * sampleRate_) + 1};
    std::array<float, 2> straight{}, crossed{};
    for (const int side : {0, 1}) {
        const float length = -static_cast<float>(time[side]);
        if (p4 > 0.55f) straight[side] = quickExp((1.0f - p4) * length * 0.0005f);
        if (p4 < 0.45f) crossed[side] = quickExp(p4 * length * 0.0005f);
    }
    const float k = lineDamping(), c = 560.0f / sampleRate_;
    for (int n = 0; n < count; ++n, advance()) {
        std::array<float, 2> z;
        for (const int side : {0, 1}) {
            SideState& state = state_[side];
            z[side] = state.cut.cut(state.low.low(line(side)[position_ - time[side]], k), c, antiDenormal);
        }
        for (const int side : {0, 1}) {
            float& sample = io[side][n];
            line(side)[position_] = heldInLoop(sample - z[side] * straight[side] - z[1 - side] * crossed[1 - side]);
            sample = dryWet(sample, z[side], mix);
        }
    }
}

// Two notes, one a side, that feed one another.
void Delay2::delayDual(Sides io, int count) {
    const float mix = parameters_.mix(), feedback = parameters_[4];
    const int timeLeft = note(parameters_[1]) + 1, timeRight = note(parameters_[2]) + 1;
    const float k = lineDamping(), c = 480.0f / sampleRate_;
    const float increment = 1.4142f / sampleRate_;
    for (int n = 0; n < count; ++n, advance()) {
        const float e = mirrored(stepPhase(lfoPhase_[0], increment), 60.0f);
        const std::array<float, 2> read{linearBehind(ringA_, position_ - timeLeft, e),
                                        linearAhead(ringB_, position_ - timeRight, e)};
        std::array<float, 2> z;
        for (const int side : {0, 1}) z[side] = state_[side].cut.cut(state_[side].low.low(read[side], k), c, antiDenormal);
        for (const int side : {0, 1}) {
            float& sample = io[side][n];
            line(side)[position_] = heldInLoop(sample - z[1 - side] * feedback);
            sample = dryWet(sample, z[side], mix);
        }
    }
}

// The rings of the diffuser wrap at 16 bits.
void Delay2::announceDiffuser(int count) {
    const int first = position2_ & SmallLine::mask;
    const int head = std::min(count, SmallLine::size - first);
    for (Line* ring : {&ringC_, &ringD_}) {
        ring->beginBlock(first, head);
        if (count > head) ring->beginBlock(0, std::min(count - head, SmallLine::size));
    }
    for (SmallLine* ring : {&diffuseE_, &diffuseF_}) ring->beginBlock(first, count);
}

[[gnu::always_inline]] inline float Delay2::Diffuser::step(Delay2& delay, int side, float x) const {
    const auto pass = [&](auto& first, int firstDistance, auto& second, int secondDistance) {
        const int now = delay.position2_;
        const float g = first[(now - firstDistance) & SmallLine::mask];
        const float h = second[(now - secondDistance) & SmallLine::mask];
        const float a = x - g * 0.5f;
        first[now] = a;
        const float b = a * 0.5f + g - h * 0.5f;
        second[now] = b;
        return b * 0.5f + h;
    };
    return side == 0 ? pass(delay.ringC_, 11 * unit, delay.ringD_, 19 * unit)
                     : pass(delay.diffuseE_, 13 * unit, delay.diffuseF_, 23 * unit);
}

// The input is smeared before the loop. Both outputs read the left line.
void Delay2::delayDiffuse(Sides io, int count) {
    announceDiffuser(count);
    const float mix = parameters_.mix(), feedback = parameters_[2];
    const Diffuser diffuser{static_cast<int>(sampleRate_ * 0.00010544218f + 1.0f)};
    const int depth = static_cast<int>(square(parameters_[4]) * sampleRate_ * 0.0017006802f);
    const int base = static_cast<int>(static_cast<double>(note(parameters_[1])) - depth * 0.5);
    const float k = lineDamping(), c = 480.0f / sampleRate_;
    const float increment = 1.4142f / sampleRate_;
    for (int n = 0; n < count; ++n, advance()) {
        const float t = triangle(stepPhase(lfoPhase_[0], increment));
        const std::array<float, 2> read{readBehind(ringA_, position_ - base, t * static_cast<float>(depth)),
                                        readBehind(ringA_, position_ - base, (1.0f - t) * static_cast<float>(depth))};
        bothSides([&](auto side) {
            SideState& state = state_[side];
            float& sample = io[side][n];
            const float diffused = diffuser.step(*this, side, sample);
            line(side)[position_] = heldInLoop(state.low.low((diffused - read[side]) * feedback, k, antiDenormal));
            sample = dryWet(sample, state.cut.cut(read[side], c, antiDenormal), mix);
        });
        position2_ = (position2_ + 1) & SmallLine::mask;
    }
}

// Wow, hiss, and a loop that saturates the lower the higher the feedback.
void Delay2::tapeDelay(Sides io, int count) {
    const float mix = parameters_.mix();
    const int time = note(parameters_[1]);
    const float level = parameters_[2] * 1.5f;
    const float hiss = cube(parameters_[3]) * 0.003f;
    const float depth = square(square(parameters_[4])) * 6400.0f;
    const float k = 480.0f / sampleRate_, c = damping(8820.0f);
    const float g = 0.0625f / (parameters_[2] + 0.00001f), drive = 1.1f / g;
    const float increment = 0.42f / sampleRate_;
    for (int n = 0; n < count; ++n, advance()) {
        const float wow = bump(stepPhase(lfoPhase_[0], increment)) * depth;
        for (const int side : {0, 1}) {
            SideState& state = state_[side];
            float &s2 = state.low.state, &s3 = state.low2.state;
            float& sample = io[side][n];
            const float noise = (static_cast<float>(random_.congruence.next()) * 0.000000000466f - 1.0f) * hiss;
            const float y = linearBehind(line(side), position_ - time, wow) * level + noise;
            const float bright = state.cut.cut(y, k, antiDenormal);
            s2 = (1.0f - c) * s2 + bright * c - antiDenormal;
            s3 = math::tanh(drive * ((1.0f - c) * s3 + c * s2 + antiDenormal)) * g;
            line(side)[position_] = sample - s3;
            sample = dryWet(sample, s3, mix);
        }
    }
}

// A tuned line; negative feedback leaves the odd harmonics.
void Delay2::resonator(Sides io, int count) {
    const float mix = parameters_.mix();
    const float length = std::min(square(parameters_[1]) * sampleRate_ + 2.0f, 262143.0f);
    const float feedback = 2.0f * parameters_[2] - 1.0f;
    const float h = damping(quickExp(-5.0f * parameters_[3]) * 22000.0f);
    const float l = damping(square(parameters_[4]) * 2000.0f + 1.0f);
    for (int n = 0; n < count; ++n, advance()) {
        bothSides([&](auto side) {
            SideState& state = state_[side];
            float& sample = io[side][n];
            const float y = readBehind(line(side), position_, length);
            const float s = state.low.low((sample - y) * feedback, h, antiDenormal);
            line(side)[position_] = heldInLoop(state.cut.cut(s, l, antiDenormal));
            sample = dryWet(sample, y, mix);
        });
    }
}

// A modulated allpass around a band-limited line. The mix scales the loop.
void Delay2::delayFat(Sides io, int count) {
    const float mix = parameters_.mix();
    const int time = note(parameters_[1]);
    const float depth = parameters_[4] * 0.006f * sampleRate_;
    const float h = sweptDamping(parameters_[2]), l = damping(square(parameters_[3]) * 2000.0f);
    const float increment = 0.7071f / sampleRate_;
    for (int n = 0; n < count; ++n) {
        advance();
        const float t = triangle(stepPhase(lfoPhase_[0], increment));
        for (const int side : {0, 1}) {
            SideState& state = state_[side];
            float& sample = io[side][n];
            float& w = state.feedback;
            const float a = sample - w * 0.7071f + antiDenormal;
            line(side)[position_] = state.cut.cut(state.low.low(a, h), l);
            w = readBehind(line(side), position_ - time, depth * (side == 0 ? t : 1.0f - t)) * mix;
            sample = a * 0.7071f + w;
        }
    }
}

// Two damped allpass lines in series a side.
void Delay2::reflections(Sides io, int count) {
    for (Line* ring : {&ringA_, &ringB_, &ringC_, &ringD_}) ring->beginBlock(position2_, count);
    const float mix = parameters_.mix();
    const int unit = static_cast<int>((square(parameters_[1]) * 0.09869388f + 0.0054829936f) * sampleRate_);
    const float g = parameters_[2] * 0.7071f;
    const float h = damping(quickExp(-4.0f * parameters_[3]) * 22000.0f), c120 = damping(120.0f);

    const auto side = [&](Line& first, int firstDistance, Line& second, int secondDistance, SideState& state, float in) {
        const float c = state.low.low(first[position2_ - firstDistance], h);
        const float d = state.low2.low(second[position2_ - secondDistance], h);
        const float x = in - g * c;
        first[position2_] = x;
        const float x2 = x * g + c - g * d;
        second[position2_] = x2;
        return dryWet(in, state.cut.cut(x2 * g + d, c120, antiDenormal), mix);
    };
    for (int n = 0; n < count; ++n) {
        io[0][n] = side(ringC_, 11 * unit, ringD_, 19 * unit, state_[0], io[0][n]);
        io[1][n] = side(ringA_, 13 * unit, ringB_, 23 * unit, state_[1], io[1][n]);
        position2_ = (position2_ + 1) & Line::mask;
    }
}

// The left side's echoes come a little later than the right side's.
void Delay2::delayWide(Sides io, int count) {
    ringC_.beginBlock(position_, count);
    const float mix = parameters_.mix(), feedback = parameters_[2];
    const int time = wideNote(parameters_[1]) + 1;
    const int late = static_cast<int>(sampleRate_ * 0.015f);
    const float h = sweptDamping(parameters_[3]), l = damping(square(parameters_[4]) * 2000.0f + 0.5f);
    for (int n = 0; n < count; ++n, advance()) {
        bothSides([&](auto side) {
            SideState& state = state_[side];
            float& sample = io[side][n];
            const float z = state.cut.cut(state.low.low(line(side)[position_ - time], h), l, antiDenormal);
            line(side)[position_] = heldInLoop(sample - z * feedback);
            if (side == 0) ringC_[position_] = z;
            sample = dryWet(sample, side == 0 ? ringC_[position_ - late] : z, mix);
        });
    }
}

// Every block draws the same taps.
Delay2::GatedTaps Delay2::gatedTaps() const {
    GatedTaps taps;
    taps.count = std::min(static_cast<int>(parameters_[2] * 15.0f + 1.0f), 16);
    const bool echoes = is(Variant::reverbGatedEcho);
    const int time = wideNote(parameters_[1]);
    const float length = static_cast<float>(echoes ? static_cast<int>(time * 0.5 + 1.0) : 1 + time);
    const float n = static_cast<float>(taps.count), spread = std::sqrt(parameters_[2]);
    LinearCongruence generator{82913};
    for (int i = 0; i <= taps.count; ++i)
        for (const int side : {0, 1}) {
            const float x = static_cast<float>(generator.next());
            const float tap = length / n * static_cast<float>(i) + spread * (x * length * 0.000000000466f - length) / n * 0.5f;
            taps.distance[side][i] = truncateTo(echoes ? tap + length : tap, 0, Line::mask);
        }
    return taps;
}

// Forty allpasses in series. Four at a time go over the whole chunk, so that their states stay in registers
// and successive samples overlap.
void Delay2::disperse(Chunk& x, int count, float c) {
    constexpr int group = 4;
    const SideLanes coefficient = c;
    for (std::size_t first = 0; first < dispersion_.size(); first += group) {
        std::array<AllpassStage<SideLanes>, group> stages;
        std::copy_n(dispersion_.begin() + first, group, stages.begin());
        for (int n = 0; n < count; ++n) {
            SideLanes y(x.samples[n].data(), stdx::element_aligned);
            for (AllpassStage<SideLanes>& stage : stages) y = stage.step(y, coefficient);
            y.copy_to(x.samples[n].data(), stdx::element_aligned);
        }
        std::copy_n(stages.begin(), group, dispersion_.begin() + first);
    }
}

// A cloud of taps, dispersed and diffused, without feedback: it ends where its last tap ends. The reverse
// type grows towards that end.
void Delay2::reverbGated(Sides io, int count) {
    announceDiffuser(count);
    const float mix = parameters_.mix(), wet = (1.0f - parameters_[2] * 0.6f) * 0.5f;
    const GatedTaps taps = gatedTaps();
    const float h = sweptDamping(parameters_[3]), l = damping(square(parameters_[4]) * 2000.0f + 1.0f);
    const float c = quickExp(-1256.0f / sampleRate_);
    const Diffuser diffuser{static_cast<int>(sampleRate_ * 0.0006326531f + 1.0f)};
    const bool grows = is(Variant::reverbReverse);
    std::array<std::array<float, 17>, 2> weight{};
    for (const int side : {0, 1})
        for (int i = 1; i <= taps.count; ++i)
            weight[side][i] = tapSigns[side][i] * (grows ? static_cast<float>(i) / static_cast<float>(taps.count) : 1.0f);

    Chunk x;
    for (int done = 0; done < count; done += chunk) {
        const int length = std::min(chunk, count - done);
        for (int n = 0; n < length; ++n, advance())
            for (const int side : {0, 1}) {
                SideState& state = state_[side];
                Line& ring = line(side);
                float sum = 0.0f;
                for (int i = 1; i <= taps.count; ++i) sum += weight[side][i] * ring[position_ - taps.distance[side][i]];
                x.samples[n][side] = state.cut.cut(state.low.low(sum, h, antiDenormal), l, antiDenormal);
                ring[position_] = io[side][done + n] + antiDenormal;
            }
        disperse(x, length, c);
        for (int n = 0; n < length; ++n) {
            for (const int side : {0, 1}) {
                float& sample = io[side][done + n];
                sample = sample * (1.0f - mix) + diffuser.step(*this, side, x.samples[n][side]) * wet * mix;
            }
            position2_ = (position2_ + 1) & SmallLine::mask;
        }
    }
}

}  // namespace vantoric
