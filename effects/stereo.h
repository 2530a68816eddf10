// Compressor, gate and stereo placing: family 5 of an effect slot.
#pragma once

#include "effects/effect_tools.h"

namespace vantoric {

// Audio thread only. Nothing allocates after construction.
class Stereo {
public:
    enum Variant { compressor = 0, trancegate = 1, surroundEncode = 2, surroundPan = 3, stereoWidth = 4 };

    // Silences envelopes and gates and puts the pan back to its start; parameters, variant, rate and tempo stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // Position (quarter notes) and tempo of the song.
    void setTempo(double songPosition, double beatsPerMinute);
    // The effect of the family; the type table lists those in use. Others pass audio through.
    void setVariant(int variant);
    // Index 0 is the mix, 1 to 4 the parameters, values 0 to 1; other indices are ignored.
    void setParameter(int index, float value);
    // Processes `count` samples in place and does its own blending of dry and wet. The gate takes its step from
    // the song position once per call.
    void process(float* left, float* right, int count);

    // The step, 0 to 31, of the gate's pattern at the present song position.
    int gateStep() const;
    // The compressor's envelopes.
    float envelopeLeft() const { return envelopeLeft_; }
    float envelopeRight() const { return envelopeRight_; }

private:
    struct CompressorLaw;
    static void compress(const CompressorLaw& law, float& envelope, float* buffer, int count);
    void compress(float* left, float* right, int count);
    int gatePattern() const;
    void gate(float* left, float* right, int count);
    void encode(float* left, float* right, int count) const;
    void pan(float* left, float* right, int count);
    void widen(float* left, float* right, int count) const;

    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    double songPosition_ = 0.0;
    double tempo_ = 120.0;
    int variant_ = compressor;
    float panPhase_ = 0.0f;      // 0 to 1
    float panDirection_ = 0.0f;  // +1 or -1; 0 before the first block
    float envelopeLeft_ = 0.0f, envelopeRight_ = 0.0f;
    float gateLeft_ = 0.0f, gateRight_ = 0.0f;
};

}  // namespace vantoric
