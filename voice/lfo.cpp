#include "voice/lfo.h"

#include <algorithm>
#include <cmath>

#include "base/lfo_waves.h"
#include "base/math.h"
#include "base/numbers.h"

namespace vantoric {

const std::array<double, tempoRatioCount> tempoRatios = {1.0 / 32, 1.0 / 16, 1.0 / 8, 1.0 / 4, 1.0 / 2, 3.0 / 4, 1,
                                                         3.0 / 2,  2,        3,       4,       6,       8,       16};

namespace {

using namespace lfo;

// Random waves keep their phase and memories over triggers.
bool runsOn(int wave) { return wave >= Random && wave <= Bandlimited; }
bool isOneShot(int wave) { return wave >= FadeOut && wave <= FadeStepUp; }
// Rows outside these and the one-shots are "Off" or separators and leave the output alone.
bool isCycle(int wave) {
    return (wave >= Sine && wave <= Square) || runsOn(wave) || (wave >= Square12 && wave <= Square88) ||
           (wave >= Stair4Up && wave <= Stair8UpDown);
}

double fraction(double x) {
    const double rest = x - std::floor(x);
    return rest >= 0.0 && rest < 1.0 ? rest : 0.0;
}

// Far beyond any use; it keeps the random walk finite whatever modulates the speed.
constexpr double highestRate = 1e6;

double tempoRatio(double speed) {
    return tempoRatios[static_cast<std::size_t>(truncateTo(speed * 13.99, 0, tempoRatioCount - 1))];
}

LfoTables makeTables() {
    LfoTables tables;
    for (int i = 0; i < 256; ++i) tables.sine[i] = static_cast<float>(0.5 * math::sin(i * 0.024575781) + 0.5);
    std::array<double, 256> sums{};
    double largest = 0.0;
    for (int i = 0; i < 256; ++i) {
        double sum = 0.0;
        for (int h = 1; h <= 128; h += 2) sum += math::cos(i * h * 0.024543693) / (h * h);
        sums[static_cast<std::size_t>((i + 128) % 256)] = sum;
        largest = std::max(largest, std::fabs(sum));
    }
    for (std::size_t i = 0; i < 256; ++i) tables.triangle[i] = static_cast<float>(0.5 * sums[i] / largest + 0.5);
    return tables;
}

double interpolated(const std::array<float, 256>& table, double phase) {
    const double at = phase * 256.0;
    const int i = static_cast<int>(at);
    const double f = at - i;
    const double a = static_cast<double>(table[static_cast<std::size_t>(i & 255)]);
    const double b = static_cast<double>(table[static_cast<std::size_t>((i + 1) & 255)]);
    return a + (b - a) * f;
}

// Steps of a staircase: the whole part of `count` x p, over `scale`. Rising ones are lifted a little against
// rounding at the edges.
double stairUp(double p, double count, double scale) { return static_cast<int>(count * p + 1e-6) / scale; }
double stairDown(double p, double count, double scale) { return static_cast<int>(count * (1.0 - p)) / scale; }

double stair(int wave, double p) {
    const bool rising = p < 0.5;
    double w = 0.0;
    switch (wave) {
        case Stair4Up: w = stairUp(p, 4, 3); break;
        case Stair8Up: w = stairUp(p, 8, 7); break;
        case Stair4Down: w = stairDown(p, 4, 3); break;
        case Stair8Down: w = stairDown(p, 8, 7); break;
        case Stair4UpDown: w = rising ? stairUp(p, 4, 2) : stairDown(p, 4, 2) + 0.5; break;
        default: w = rising ? stairUp(p, 8, 4) : stairDown(p, 8, 4) + 0.25; break;
    }
    return clampUnit(w);
}

constexpr double squareWidths[] = {0.125, 0.25, 0.3333333333333333, 0.5, 0.6666666666666666, 0.75, 0.875};

}  // namespace

LfoMode lfoMode(int index) {
    static constexpr LfoMode modes[] = {
        {true, false, 0.0, false},   // Free
        {true, true, 0.0, false},    // Free BPM
        {false, true, 0.0, false},   // Trigger BPM
        {false, false, 0.0, false},  // Trigger
        {false, false, 0.25, false}, {false, false, 0.5, false}, {false, false, 0.75, false}, {false, false, 1.0, false},  // Key
        {false, false, 0.0, true},                                                                                         // Mono
        {false, true, 0.0, true},  // Mono BPM
    };
    return index >= 0 && index < 10 ? modes[index] : LfoMode{};
}

const LfoTables& lfoTables() {
    static const LfoTables tables = makeTables();
    return tables;
}

Lfo::Lfo() : tables_(&lfoTables()) {}

void Lfo::noteOn(int modeIndex, const Start& start, int activeVoices, const Lfo* oldest) {
    const LfoMode mode = lfoMode(modeIndex);
    if (mode.mono && activeVoices > 1 && oldest != nullptr) {
        *this = *oldest;
        return;
    }
    trigger(start, mode.freeRunning, mode.tempoSynced, mode.keyAmount);
}

void Lfo::retrigger(int modeIndex, const Start& start) {
    const LfoMode mode = lfoMode(modeIndex);
    if (!mode.mono) trigger(start, mode.freeRunning, mode.tempoSynced, mode.keyAmount);
}

void Lfo::trigger(const Start& start, bool free, bool synced, double keyAmount) {
    wave = start.wave;
    speed = start.speed;
    freeRunning = free;
    tempoSynced = synced;
    tickRate = start.tickRate > 0.0 ? start.tickRate : 1000.0;
    tickTime = 1.0 / tickRate;
    tempo = start.tempo;
    const bool fades = start.fade > 0.01f;
    fadeLevel = fades ? 0.0 : 1.0;
    fadeStep = fades ? fastExp(-10.0 * static_cast<double>(start.fade)) : 0.0;

    const bool restarts = !runsOn(wave);
    if (restarts) {
        output = 0.5;
        heldA = 0.0;
        heldB = 0.5;
        previousPhase = 0.99999;
        phase = static_cast<double>(start.startPhase > 0.99f && !free ? seed.unit() : start.startPhase);
    }
    const bool follows = free && restarts;
    if (synced) {
        const double ratio = tempoRatio(speed);
        keyRate = 1.0;
        rate = std::min(tempo * ratio / 60.0 / tickRate, highestRate);
        if (follows) phase += ratio * start.songPosition;
    } else {
        const double k = fastPower2((start.note - 60) * 0.08332005 * keyAmount) / tickRate;
        const double r = fastPower2(12.76456546 * speed) * k;
        keyRate = k / 16.0;
        rate = std::min(r / 16.0, highestRate);
        if (follows) phase += start.songPosition / tempo * 3.75 * r * tickRate;
    }
    phase = fraction(phase);
}

void Lfo::setSpeed(double newSpeed) {
    if (newSpeed == speed) return;
    speed = newSpeed;
    rate = tempoSynced ? tempoRatio(speed) * tempo * tickTime / 60.0 : fastExp(8.85936 * speed) * keyRate;
    rate = std::min(rate, highestRate);
}

void Lfo::step() {
    fadeLevel = clampUnit(fadeLevel + fadeStep);
    phase = fraction(phase + rate);
    if (isOneShot(wave)) {
        output = oneShot();
    } else if (isCycle(wave)) {
        output = (waveValue() - 0.5) * fadeLevel + 0.5;
    }
    previousPhase = phase;
}

double Lfo::waveValue() {
    const double p = phase;
    const bool wrapped = phase < previousPhase;
    switch (wave) {
        case Sine: return interpolated(tables_->sine, p);
        case Triangle: return interpolated(tables_->triangle, p);
        case SawUp: return 0.84 * p + 0.08;
        case SawDown: return 0.84 * (1.0 - p) + 0.08;
        case Square: return p < 0.5 ? 0.893 : 0.107;
        case Random:
            if (wrapped) heldA = static_cast<double>(seed.unit());
            return heldA;
        case RandomRamp:
            if (wrapped) {
                heldB = heldA;
                heldA = static_cast<double>(seed.unit());
            }
            return p * heldA + (1.0 - p) * heldB;
        case Digital:
            if (wrapped) heldA = seed.unit() > 0.5f ? 0.0 : 1.0;
            return heldA;
        case Bandlimited: return randomWalk();
        default: break;
    }
    return wave <= Square88 ? (p < squareWidths[wave - Square12] ? 1.0 : 0.0) : stair(wave, p);
}

// Position heldB moves by slope heldA and turns at 0 and 1 with a newly drawn slope; each test of a tick has a draw
// of its own.
double Lfo::randomWalk() {
    const auto draw = [this] { return static_cast<double>(seed.next()) * 3.495e-10 + 0.5; };
    if (heldA == 0.0) heldA = 2.0 * rate;
    if (heldB + heldA > 1.0) heldA = -2.0 * rate * draw();
    if (heldB + heldA < 0.0) heldA = 2.0 * rate * draw();
    heldB += heldA;
    return heldB;
}

// Ramps that run once, along the fade.
double Lfo::oneShot() const {
    const double a = fadeLevel;
    switch (wave) {
        case FadeOut: return 1.0 - a / 2.0;
        case FadeIn: return a / 2.0 + 0.5;
        case FadeInOut: return a < 0.5 ? a + 0.5 : 1.5 - a;
        case FadeStepDown: return a < 1.0 ? 1.0 : 0.5;
        default: return a < 1.0 ? 0.5 : 1.0;
    }
}

}  // namespace vantoric
