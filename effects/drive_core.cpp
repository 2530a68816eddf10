#include "effects/drive_core.h"

namespace vantoric {

namespace {

// The shapers have no feedback: neighbouring samples of a channel go through side by side.
using Samples = Lanes<float, 4>;
constexpr int width = 4;

Samples load(const float* at) { return Samples(at, stdx::element_aligned); }
void store(const Samples& x, float* at) { x.copy_to(at, stdx::element_aligned); }

// Each shaper: wet(points, y0, in) gives the effect's wet part, of the four points, the newest low-passed
// value and the input. The dry share is added to all alike.

// The sum of four shaped points at a gain.
template <class Shape>
struct SumOfPoints {
    Shape one;
    float gain;
    Samples wet(const CurvePoints<Samples>& points, Samples, Samples) const { return points.sum(one) * Samples(gain); }
};
template <class Shape>
SumOfPoints<Shape> sumOfPoints(Shape one, float gain) {
    return {one, gain};
}

struct Rectifier {
    float amount;
    Samples wet(const CurvePoints<Samples>& points, Samples, Samples in) const {
        const Samples signs = points.sum([](Samples z) { return select(z > Samples(0), Samples(1), Samples(-1)); });
        return Samples(1.0f - amount) * in + signs * Samples(amount * 0.03125f);
    }
};

struct Rippler {
    float depth;
    Samples wet(const CurvePoints<Samples>& points, Samples y0, Samples) const {
        const Samples sum = points.sum([this](Samples z) { return rippleShape(z * Samples(depth)); });
        return (sum + Samples(8) * y0) * Samples(0.0625f);
    }
};

// Two logarithms: of the newest low-passed value and of its mean with the one before.
struct Saturator {
    float depth, gain;
    static Samples curve(Samples v) {
        const Samples size = logarithmOfOneMore(minimum(absolute(v), Samples(1e30f)));
        return select(v < Samples(0), -size, size);
    }
    Samples wet(const CurvePoints<Samples>& points, Samples y0, Samples) const {
        const Samples before = points.at[0];
        return (curve(y0 * Samples(depth * 8.0f)) + curve((y0 + before) * Samples(depth * 4.0f))) * Samples(gain);
    }
};

float setupExp(float x) { return static_cast<float>(fastExp(x)); }

}  // namespace

DriveCore::DriveCore(RandomSources& random) : random_(random) { reset(); }

void DriveCore::reset() {
    left_ = right_ = Side{};
    pink_ = {};
    humPhase_ = 0.0f;
}

void DriveCore::setSampleRate(float rate) { sampleRate_ = rate; }

void DriveCore::setParameter(int index, float value) { parameters_.set(index, value); }

// Low-pass, four points, shaper. The buffers are padded so that whole vectors can be taken.
template <class Shaper>
void DriveCore::shapeSide(Side& side, float* buffer, int count, const Shaper& shaper) const {
    constexpr int before = shaperTaps - 1;
    float in[stretch + width] = {}, x[before + stretch + width] = {}, line[3 + stretch + width] = {}, out[stretch + width];
    std::copy_n(buffer, count, in);
    std::copy_n(side.inputs.begin(), before, x);
    std::copy_n(side.line.begin(), 3, line);
    for (int i = 0; i < count; ++i) x[before + i] = in[i] + 0.00001f;
    for (int i = 0; i < count; i += width)
        store(filterSum<Samples>(low_, [at = x + before + i](int k) { return load(at - k); }), line + 3 + i);
    const Samples wet(parameters_.mix()), dry(1.0f - parameters_.mix());
    for (int i = 0; i < count; i += width) {
        const float* newest = line + 3 + i;
        const Samples y0 = load(newest), dryIn = load(in + i);
        const CurvePoints<Samples> points(y0, load(newest - 1), load(newest - 2), load(newest - 3));
        store(shaper.wet(points, y0, dryIn) * wet + dryIn * dry, out + i);
    }
    std::copy_n(out, count, buffer);
    std::copy_n(x + count, before, side.inputs.begin());
    std::copy_n(line + count, 3, side.line.begin());
}

template <class Shaper>
void DriveCore::shape(float* left, float* right, int count, const Shaper& shaper) {
    for (int at = 0; at < count; at += stretch) {
        const int part = std::min(stretch, count - at);
        shapeSide(left_, left + at, part, shaper);
        shapeSide(right_, right + at, part, shaper);
    }
}

// Two shaped points for each sample of b and c: the drive stage behind a pair of one-poles.
void DriveCore::tubeAmpSide(Side& side, float* buffer, int count) const {
    const float p1 = parameters_[1], m = parameters_.mix();
    const float a = 0.9f * p1, post = setupExp((parameters_[2] - 0.5f) * 8.0f);
    const float q = p1 * p1 * p1 * 50.0f, r = p1 * p1 * p1 * 12.5f + 1.0f;
    const float wet = post * m * 0.5f, dry = 1.0f - m;
    float s = side.tube;
    for (int i = 0; i < count; ++i) {
        const float x = (buffer[i] + 0.00001f) * (1.0f - a);
        const float b = a * s + x;
        const float c = b * a + x;
        s = c;
        buffer[i] = (b * r / (absolute(b) * q + 1.0f) + c * r / (absolute(c) * q + 1.0f)) * wet + buffer[i] * dry;
    }
    side.tube = s;
}

// Band-limit, four points without the low-pass, two stages of distortion at the fourfold rate, mean, bass.
void DriveCore::ampSimSide(Side& side, float* buffer, int count) const {
    const float m = parameters_.mix();
    if (!(m > 0.0001f) || count > ampBlock) return;
    const float open = 1.0f - parameters_[2];
    const float k = std::min((open * open * 14000.0f + 1500.0f) / sampleRate_, 1.0f);
    const float highPass = 500.0f / sampleRate_, bass = 1000.0f / sampleRate_;
    const float g = parameters_[1] * parameters_[1];
    float line[3 + ampBlock + width] = {};
    std::copy_n(side.line.begin(), 3, line);
    for (int i = 0; i < count; ++i) {
        side.highPass = highPass * buffer[i] + (1.0f - highPass) * side.highPass;
        side.lowPass = k * (buffer[i] - side.highPass) + (1.0f - k) * side.lowPass;
        line[3 + i] = side.lowPass;
    }
    std::copy_n(line + count, 3, side.line.begin());

    float four[4][ampBlock + width];  // the four points of each sample
    for (int i = 0; i < count; i += width) {
        const float* newest = line + 3 + i;
        const CurvePoints<Samples> points(load(newest), load(newest - 1), load(newest - 2), load(newest - 3));
        for (int point = 0; point < 4; ++point) store(softCurve(points.at[point] * Samples(16)) * Samples(k), four[point] + i);
    }
    const float keep = 1.0f - k;
    for (int i = 0; i < count; ++i)
        for (auto& point : four) point[i] = side.fourPass = point[i] + keep * side.fourPass;
    const float steep = 8.0f * g + 0.125f, turn = 25.13272f * g + 0.39269876f;
    float mean[ampBlock + width];
    for (int i = 0; i < count; i += width) {
        Samples sum(0);
        for (const auto& point : four) {
            const Samples st = load(point + i), w = st * Samples(steep), sine = polynomialSine(st * Samples(turn));
            sum += select(w > Samples(1.5f), Samples(-1), select(w < Samples(-1.5f), Samples(1), sine)) * Samples(0.25f);
        }
        store(sum * Samples(0.25f), mean + i);
    }
    for (int i = 0; i < count; ++i) {
        const float out = buffer[i] * (1.0f - m) + mean[i] * m;
        side.bass = (1.0f - bass) * side.bass + out * bass;
        buffer[i] = side.bass * parameters_[3] * 0.5f + out * 0.25f;
    }
}

float DriveCore::splitCoefficient(float p2, float sampleRate) {
    const double w = fastExp(-4.95 + 2.178 * p2) * 0.5 / sampleRate;
    return clampUnit(static_cast<float>(w * 44100.0 * 6.2831 - w * w * w * w * 37822857000000000000.0));
}

// A state-variable split: the band around a frequency is saturated, p3 balances it against the rest.
void DriveCore::multibandSide(Side& side, float* buffer, int count) const {
    const float c = splitCoefficient(parameters_[2], sampleRate_);
    const float p1 = parameters_[1], p3 = parameters_[3], m = parameters_.mix();
    float low = side.low, band = side.band;
    for (int i = 0; i < count; ++i) {
        const float in = buffer[i];
        const float high = in + 0.00001f - low - band;
        band += high * c;
        low += band * c;
        buffer[i] = ((low + high) * (1.0f - p3) - softCurve(band * p1) * 0.25f * p3) * m + in * (1.0f - m);
    }
    side.low = low;
    side.band = band;
}

// White noise for each side, pink noise and hum for both, and crackle: single samples at random, at the same
// rate whatever the sample rate.
void DriveCore::noise(float* left, float* right, int count) {
    const float m = parameters_.mix();
    const auto squared = [this](int index) { return parameters_[index] * parameters_[index]; };
    const float white = squared(1) * 0.25f, pink = squared(2) * 0.125f, crackle = squared(3), hum = squared(4) * 0.25f;
    const auto range = static_cast<std::uint32_t>(truncateTo(sampleRate_ * 0.5f, 1, 1 << 30));
    const float humStep = 50.0f / sampleRate_;
    for (int i = 0; i < count; ++i) {
        float toLeft = (static_cast<float>(random_.congruence.next()) * 0.000000000466f - 1.0f) * white;
        float toRight = (static_cast<float>(random_.congruence.next()) * 0.000000000466f - 1.0f) * white;
        const float both = pink_.step(random_.hash.unit() * 2.0f - 1.0f) * pink;
        toLeft += both;
        toRight += both;
        switch ((random_.hash.next() >> 1) % range) {
            case 3: toLeft -= crackle; break;
            case 5: toLeft -= crackle * 0.25f; break;
            case 7: toRight += crackle; break;
            case 9: toRight += crackle * 0.25f; break;
            case 11: toLeft -= crackle * 0.0625f; break;
            case 13: toRight += crackle * 0.0625f; break;
            default: break;
        }
        const float h = sineShape(stepPhase(humPhase_, humStep)) * hum;
        left[i] += (h + toLeft) * m;
        right[i] += (h + toRight) * m;
    }
}

namespace {

// The drive of the clippers, and the gain that keeps the level of quiet ones.
struct Clipping {
    explicit Clipping(float p1) {
        const float depth = 4.0f * p1 + 0.0001f;
        gain = depth < 1.0f ? 0.03125f / depth : 0.03125f;
        drive = 8.0f * depth;
    }
    float gain, drive;
};

}  // namespace

void DriveCore::softClip(float* left, float* right, int count) {
    const Clipping clipping(parameters_[1]);
    const auto curve = [drive = clipping.drive](Samples z) { return softCurve(z * Samples(drive)); };
    shape(left, right, count, sumOfPoints(curve, clipping.gain));
}

void DriveCore::hardClip(float* left, float* right, int count) {
    const Clipping clipping(parameters_[1]);
    const auto curve = [drive = clipping.drive](Samples z) { return limit(z * Samples(drive), Samples(-1), Samples(1)); };
    shape(left, right, count, sumOfPoints(curve, clipping.gain));
}

void DriveCore::tubeAmp(float* left, float* right, int count) {
    if (!(parameters_[1] > 0.0001f)) return;
    tubeAmpSide(left_, left, count);
    tubeAmpSide(right_, right, count);
}

void DriveCore::ampSim(float* left, float* right, int count) {
    ampSimSide(left_, left, count);
    ampSimSide(right_, right, count);
}

void DriveCore::rectify(float* left, float* right, int count) { shape(left, right, count, Rectifier{parameters_[1]}); }

void DriveCore::warp(float* left, float* right, int count) {
    const float depth = 16.0f * parameters_[1] + 0.0001f;
    const auto curve = [depth](Samples z) { return warpShape(z * Samples(depth)); };
    shape(left, right, count, sumOfPoints(curve, depth < 1.0f ? 0.03125f / depth : 0.03125f));
}

void DriveCore::waveshape(float* left, float* right, int count) {
    const float depth = 16.0f * parameters_[1] + 1.0f;
    shape(left, right, count, sumOfPoints([depth](Samples z) { return waveShape(z * Samples(depth)); }, 0.03125f));
}

void DriveCore::ripple(float* left, float* right, int count) {
    shape(left, right, count, Rippler{24.0f * parameters_[1] + 1.0f});
}

void DriveCore::bitcrush(float* left, float* right, int count) {
    const float q = setupExp(6.0f - 4.2f * parameters_[1]);
    const auto level = [q](Samples z) { return crushLevel(z, Samples(q)) - Samples(99.5f); };
    shape(left, right, count, sumOfPoints(level, 0.25f / q));
}

void DriveCore::saturate(float* left, float* right, int count) {
    const float p1 = parameters_[1], depth = 4.0f * p1 + 0.0001f;
    shape(left, right, count, Saturator{depth, (2.0f * p1 + 1.0f) * 0.0625f / depth});
}

void DriveCore::multibandDist(float* left, float* right, int count) {
    multibandSide(left_, left, count);
    multibandSide(right_, right, count);
}

void DriveCore::process(float* left, float* right, int count) {
    if (row_ != nullptr) (this->*row_->run)(left, right, count);
}

}  // namespace vantoric
