#include "effects/stereo.h"

#include <cmath>

namespace vantoric {

namespace {

constexpr int patternCount = 22;
constexpr int patternLength = 32;

// A rhythm of the gate. One sign per step: # is 2, x is 1, o is 0.5, : is 0.25, , is 0.125, ' is 0.0625, _ is 0.
struct Pattern {
    float speed;
    const char* steps;
};

constexpr Pattern patterns[patternCount] = {
    {1.0f, "##__##__##__##__##__##__##__##__"},  // Tremolo
    {1.0f, "##__##__######__##__##__######__"},  // Trance 1
    {1.0f, "######__##__##__######__##__##__"},  // Trance 2
    {1.0f, "##__##__######__######__##__##__"},  // Trance 3
    {1.0f, "##__##__###_##__##__###_##__###_"},  // Metal
    {0.5f, "###_###_#_#_###_#_#_#_###_#_###_"},  // Football
    {1.0f, "##__##__xx__##__xx__##__xx__##__"},  // Dotted
    {1.0f, "##__xx__xx__##__xx__xx__##__xx__"},  // La cucaracha
    {0.5f, "##x_#_##x_o_##x_##x_#_##x_o_##x_"},  // 2 Step 1
    {0.5f, "##o_x_o_#_o_x_##x_o_##o_#_o_x_o_"},  // 2 Step 2
    {0.5f, "##o_##o_#_o_x_#_x_#_##o_#_o_x_o_"},  // 2 Step 3
    {0.5f, "##__xx##__xx##__xx##__xx##__##__"},  // Echo 1
    {0.5f, "##x_xx##x_##x_xx##x_xx##x_##x_xx"},  // Echo 2
    {0.5f, "##xxoo##xxoo##xxoo##xxoo##xx##xx"},  // Echo 3
    {0.5f, "##xxoo::##xxoo::##xxoo::##xxoo::"},  // Echo 4
    {0.5f, "##xxoo::,,''##xxoo::,,''##xxoo:_"},  // Echo 5
    {0.5f, "##xxoo::''::ooxx##xxoo::''::ooxx"},  // Echo 6
    {0.5f, "#_x_x_#_x_#_x_x_#_x_x_#_x_#_#_x_"},  // Scramble 1
    {1.0f, "##__xx__##__xx__##__xx__##__xx__"},  // Scramble 2
    {0.5f, "#_x_o_#_x_o_#_x_o_#_x_o_#_x_#_x_"},  // Scramble 3
    {0.5f, "#_x_o_:_#_x_o_#_x_o_#_x_#_x_#_x_"},  // Scramble 4
    {0.5f, "###x#_x_#_x_#_x_o_#_x_o_#_x_##xx"},  // Scramble 5
};

constexpr float gateRates[] = {0.25f, 0.375f, 0.5f, 0.75f, 1.0f};

constexpr float gateValue(char sign) {
    switch (sign) {
        case '#': return 2.0f;
        case 'x': return 1.0f;
        case 'o': return 0.5f;
        case ':': return 0.25f;
        case ',': return 0.125f;
        case '\'': return 0.0625f;
        default: return 0.0f;
    }
}

// How loud a mono source is on either side for a place on the circle from 0 to 1: 0.5 in front, 0.25 and 0.75
// hard left and right, behind that one side in opposite phase.
struct Placing {
    float left, right;
};
inline Placing placing(float place) {
    if (place < 0.5f) {
        const float x = 1.0f - 2.0f * place;
        return {1.0f, 1.0f - 2.0f * x};
    }
    return {3.0f - 4.0f * place, 1.0f};
}

}  // namespace

void Stereo::reset() {
    envelopeLeft_ = envelopeRight_ = 0.0f;
    gateLeft_ = gateRight_ = 0.0f;
    panPhase_ = panDirection_ = 0.0f;
}

void Stereo::setSampleRate(float rate) { sampleRate_ = rate; }

void Stereo::setTempo(double songPosition, double beatsPerMinute) {
    songPosition_ = songPosition;
    tempo_ = beatsPerMinute;
}

void Stereo::setParameter(int index, float value) { parameters_.set(index, value); }

void Stereo::process(float* left, float* right, int count) {
    if (row_ != nullptr) (this->*row_->run)(left, right, count);
}

struct Stereo::CompressorLaw {
    float threshold, attack, release, depth, mix;
};

void Stereo::compress(const CompressorLaw& law, float& envelope, float* buffer, int count) {
    float e = envelope;
    for (int i = 0; i < count; ++i) {
        const float x = buffer[i];
        const float size = std::fabs(x);
        const float rate = size > e ? law.attack : law.release;
        e = rate * 0.5f * (size - e) + e;
        e = e + 0.0000001f;
        const float y = law.threshold <= e ? ((law.threshold / e) * law.depth + 1.0f - law.depth) * x : x;
        buffer[i] = dryWet(x, y, law.mix);
    }
    envelope = e;
}

void Stereo::compressor(float* left, float* right, int count) {
    const auto& p = parameters_;
    const CompressorLaw law{p[1] * p[1] * 0.5f, ((1.0f - p[2]) * 39.0f + 1.0f) / sampleRate_,
                            ((1.0f - p[3]) * 39.0f + 1.0f) / sampleRate_, std::sqrt(std::max(p[4], 0.0f)), p.mix()};
    compress(law, envelopeLeft_, left, count);
    compress(law, envelopeRight_, right, count);
}

int Stereo::gatePattern() const { return truncateTo(parameters_[1] * 21.999f, 0, patternCount - 1); }

int Stereo::gateStep() const {
    const auto& p = parameters_;
    // Smoothing makes the gate late: it looks ahead as much.
    const double position = songPosition_ + static_cast<double>(p[3] * p[3]) * 0.05;
    const float speed = gateRates[truncateTo(p[2] * 4.999f, 0, 4)];
    const int offset = truncateTo(p[4] * 3.99f, 0, 3) * 4;
    const double steps = position * speed * patterns[gatePattern()].speed * patternLength;
    return (offset + truncateTo(steps, -2000000000, 2000000000)) & (patternLength - 1);
}

// The gate settles at half the pattern's value times the colour of the side.
void Stereo::trancegate(float* left, float* right, int count) {
    const float g = gateValue(patterns[gatePattern()].steps[gateStep()]);
    const float colourLeft = g == 1.0f ? 1.4f : g == 0.5f ? 0.6f : 1.0f;
    const float colourRight = g == 1.0f ? 0.6f : g == 0.5f ? 1.4f : 1.0f;
    const float rest = 1.0f - parameters_[3];
    const float k = (rest * rest * rest * rest * 0.2f + 0.001f) / sampleRate_;
    const float c = 1.0f - k * 44100.0f;
    const float stepLeft = g * 22050.0f * colourLeft * k, stepRight = g * 22050.0f * colourRight * k;
    const float mix = parameters_.mix(), dry = 1.0f - mix;
    float gateLeft = gateLeft_, gateRight = gateRight_;
    for (int i = 0; i < count; ++i) {
        gateLeft = c * gateLeft + stepLeft;
        gateRight = c * gateRight + stepRight;
        left[i] = left[i] * mix * gateLeft + left[i] * dry;
        right[i] = right[i] * mix * gateRight + right[i] * dry;
    }
    gateLeft_ = gateLeft;
    gateRight_ = gateRight;
}

void Stereo::surroundEncode(float* left, float* right, int count) {
    const Placing at = placing(parameters_[1]);
    const float mix = parameters_.mix(), dry = 1.0f - mix;
    for (int i = 0; i < count; ++i) {
        const float mono = (left[i] + right[i]) * mix;
        left[i] = at.left * mono + left[i] * dry;
        right[i] = at.right * mono + right[i] * dry;
    }
}

void Stereo::surroundPan(float* left, float* right, int count) {
    const float increment = (parameters_[1] * parameters_[1] * 23.0f + 0.0625f) / sampleRate_;
    const float mix = parameters_.mix(), dry = 1.0f - mix;
    float phase = panPhase_;
    float direction = panDirection_ == 0.0f ? 1.0f : panDirection_;
    for (int i = 0; i < count; ++i) {
        phase += increment;
        if (phase > 1.0f) {
            phase -= 1.0f;
            direction = -direction;
        }
        const float level = phase > 0.5f ? (phase - 0.5f) * 0.6666f + 0.6666f : 1.0f - phase * 0.6666f;
        const float mono = (left[i] + right[i]) * 0.666f * direction * level * mix;
        const Placing at = placing(phase);
        left[i] = at.left * mono + left[i] * dry;
        right[i] = at.right * mono + right[i] * dry;
    }
    panPhase_ = phase;
    panDirection_ = direction;
}

void Stereo::stereoWidth(float* left, float* right, int count) {
    const float p1 = parameters_[1];
    const float keep = p1 < 0.5f ? 1.0f - 2.0f * (0.5f - p1) : 1.0f;
    const float sum = 0.5f - p1;  // the share of the other side: added below the middle, taken away above
    const float mix = parameters_.mix();
    for (int i = 0; i < count; ++i) {
        const float both = (left[i] + right[i]) * sum;
        left[i] = dryWet(left[i], left[i] * keep + both, mix);
        right[i] = dryWet(right[i], right[i] * keep + both, mix);
    }
}

}  // namespace vantoric
