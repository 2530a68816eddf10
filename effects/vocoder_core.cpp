#include "effects/vocoder_core.h"

#include <cmath>

namespace vantoric {

namespace {

constexpr float speechFrequencies12[] = {170, 250, 350, 520, 760, 1200, 1800, 2500, 3500, 5800, 8564, 12664};
constexpr float carrierFrequencies12[] = {150, 220, 350, 500, 760, 1100, 1600, 2200, 3600, 5200, 7678, 11337};
constexpr float frequencies20[] = {167,  224,  404,  520,  635,  775,  945,  1154, 1407,  1717,
                                   2095, 2553, 3113, 3794, 4626, 5639, 6874, 8380, 10214, 12452};
constexpr float widths20[] = {1, 1.3f, 2, 2.5f, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3};
constexpr float gains20[] = {0.8f,  0.7f,  0.8f,  0.95f, 1.0f,  1.0f,  1.0f, 1.0f,  1.0f,  1.0f,
                             1.02f, 1.04f, 1.08f, 1.12f, 1.12f, 1.12f, 1.1f, 1.05f, 0.95f, 0.8f};
// In place of the last four from 48000 Hz on.
constexpr float topGains20[] = {1.1f, 1.1f, 1.1f, 0.99f};

float gainOf(bool twelve, int band, float sampleRate) {
    if (twelve) return 1.0f;
    return band >= 16 && sampleRate >= 48000.0f ? topGains20[band - 16] : gains20[band];
}

// Band-pass around a frequency in Hz; the higher, the narrower. Bilinear, K = tan of half the angle.
VocoderCore::Coefficients bandPass(bool twelve, int band, double frequency, double sampleRate) {
    const double n = clampTo(frequency / sampleRate, 0.0001, 0.45);
    const double k = math::tan(n * 3.14159);
    const double r = twelve ? std::max(2.5 - n * 3.925, 0.000001) : (1.0 - n * 1.57) * widths20[band];
    const double v = k / r, d = v + 1.0 + k * k;
    VocoderCore::Coefficients c;
    c.b0 = static_cast<float>(k / (d * r));
    c.b2 = static_cast<float>(-v / d);
    c.a1 = static_cast<float>((1.0 - (2.0 * k * k - 1.0)) / d);
    c.a2 = static_cast<float>(-((1.0 - v) + k * k) / d);
    return c;
}

template <class T>
void setLane(BandSection<T>& section, int lane, const VocoderCore::Coefficients& c) {
    section.b0[lane] = c.b0;
    section.b2[lane] = c.b2;
    section.a1[lane] = c.a1;
    section.a2[lane] = c.a2;
}

template <class T>
VocoderCore::Coefficients lane(const BandSection<T>& section, int index) {
    return {section.b0[index], 0.0f, section.b2[index], section.a1[index], section.a2[index]};
}

}  // namespace

void VocoderCore::reset() {
    for (auto& group : analysis_) group.clear();
    for (auto& group : synthesis_) group.clear();
}

void VocoderCore::setSampleRate(float rate) { sampleRate_ = rate; }

void VocoderCore::setParameter(int index, float value) { parameters_.set(index, value); }

int VocoderCore::bands() const { return row_ == nullptr ? 0 : isTwelve() ? 12 : maxBands; }

// Coefficients depend on these settings alone. Done where they are needed, on the audio thread: settings may
// come from another.
void VocoderCore::update() {
    const float formant = parameters_[1];
    if (row_ == nullptr || (row_ == knownRow_ && sampleRate_ == knownRate_ && formant == knownFormant_)) return;
    knownRow_ = row_;
    knownRate_ = sampleRate_;
    knownFormant_ = formant;
    const bool twelve = isTwelve();
    const double shift = math::exp(0.5 - static_cast<double>(formant));
    for (int band = 0; band < bands(); ++band) {
        const int group = band / groupSize, at = band % groupSize;
        const double speech = twelve ? speechFrequencies12[band] : frequencies20[band];
        const double carrier = twelve ? carrierFrequencies12[band] * shift : frequencies20[band] * 1.2 * shift;
        const float gain = gainOf(twelve, band, sampleRate_);
        setLane(analysis_[group].section, at, bandPass(twelve, band, speech, sampleRate_));
        setLane(synthesis_[group].section, at, bandPass(twelve, band, carrier, sampleRate_));
        analysis_[group].gain[at] = gain;
        synthesis_[group].gain[at] = twelve ? 96.0f : gain * 128.0f;
    }
    follow_ = static_cast<float>(math::exp(-314.159 / sampleRate_));
}

VocoderCore::Coefficients VocoderCore::analysis(int band) {
    update();
    return lane(analysis_[band / groupSize].section, band % groupSize);
}
VocoderCore::Coefficients VocoderCore::synthesis(int band) {
    update();
    return lane(synthesis_[band / groupSize].section, band % groupSize);
}
float VocoderCore::bandGain(int band) {
    update();
    return analysis_[band / groupSize].gain[band % groupSize];
}
float VocoderCore::follower(int band) const { return analysis_[band / groupSize].e3[band % groupSize]; }

void VocoderCore::analyse(int group, const float* speech, Levels& levels, int count) {
    auto band = analysis_[group];
    const Group a = follow_, rise = Group(1.0f - follow_);
    for (int i = 0; i < count; ++i)
        band.step(Group(speech[i] + 0.0000001f), a, rise).copy_to(&levels[i][group * groupSize], stdx::element_aligned);
    analysis_[group] = band;
}

// Takes the gate off every band and holds the sum of all bands down to one level.
template <int Bands>
void VocoderCore::compress(Levels& levels, int count) const {
    const float gate = parameters_[4] * parameters_[4] * 0.01f;
    const float most = static_cast<float>(fastExp(-4.0f * parameters_[3]));
    const float makeUp = static_cast<float>(fastExp(2.0f * parameters_[3]));
    for (int i = 0; i < count; ++i) {
        float* level = levels[i];
        float sum = 0.0f;
        for (int band = 0; band < Bands; ++band) {
            level[band] = clampUnit(level[band] - gate);
            sum += level[band];
        }
        sum += 0.000001f;
        const float gain = (most <= sum ? most / sum : 1.0f) * makeUp;
        for (int band = 0; band < Bands; ++band) level[band] *= gain;
    }
}

// Turns levels into the bands' parts of the output.
void VocoderCore::synthesise(int group, const float* carrier, Levels& levels, int count) {
    auto band = synthesis_[group];
    for (int i = 0; i < count; ++i) {
        float* at = &levels[i][group * groupSize];
        band.step(Group(carrier[i] + 0.0000001f), Group(at, stdx::element_aligned)).copy_to(at, stdx::element_aligned);
    }
    synthesis_[group] = band;
}

// Odd bands go to the left, even ones to the right, as far as the stereo parameter says.
template <int Bands>
void VocoderCore::mix(const Levels& bands, float* left, float* right, int count) const {
    const float blend = parameters_.mix(), dry = 1.0f - blend;
    const float q = parameters_[2] * 0.5f;
    const float w = 1.0f - parameters_[2] * (isTwelve() ? 0.2f : 0.25f);
    const float a = (0.5f + q) * blend, b = (0.5f - q) * blend;
    for (int i = 0; i < count; ++i) {
        float odd = 0.0f, even = 0.0f;
        for (int band = 0; band < Bands; band += 2) {
            even += bands[i][band];
            odd += bands[i][band + 1];
        }
        left[i] = (b * even + a * odd) * w + left[i] * dry;
        right[i] = (a * even + b * odd) * w + right[i] * dry;
    }
}

template <int Groups, bool Gated>
void VocoderCore::run(float* left, float* right, int count) {
    alignas(64) Levels levels;
    for (int done = 0; done < count; done += stretch) {
        const int n = std::min(stretch, count - done);
        for (int group = 0; group < Groups; ++group) analyse(group, left + done, levels, n);
        if constexpr (Gated) compress<Groups * groupSize>(levels, n);
        for (int group = 0; group < Groups; ++group) synthesise(group, right + done, levels, n);
        mix<Groups * groupSize>(levels, left + done, right + done, n);
    }
}

void VocoderCore::svc(float* left, float* right, int count) { run<3, true>(left, right, count); }
void VocoderCore::pro(float* left, float* right, int count) { run<5, true>(left, right, count); }
void VocoderCore::linear(float* left, float* right, int count) { run<5, false>(left, right, count); }

void VocoderCore::process(float* left, float* right, int count) {
    if (count <= 0 || count > maxBlock || row_ == nullptr) return;
    update();
    (this->*row_->run)(left, right, count);
}

}  // namespace vantoric
