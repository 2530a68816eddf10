// Compressor, gate and stereo placing: family 5 of an effect slot.
#pragma once

#include "effects/effect_row.h"
#include "effects/effect_tools.h"

namespace vantoric {

// Family 5: every effect that sets the level of the two sides. Audio thread only. Nothing allocates after construction.
class Stereo {
public:
    // The numbers of the effects within the family.
    enum class Variant : int { compressor = 0, trancegate = 1, surroundEncode = 2, surroundPan = 3, stereoWidth = 4 };

    // Silences envelopes and gates and puts the pan back to its start; parameters, variant, rate and tempo stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // Position (quarter notes) and tempo of the song.
    void setTempo(double songPosition, double beatsPerMinute);
    // The effect of the family by its Variant. Numbers not in use pass audio through.
    void setVariant(int variant) { row_ = rowOf(rows, variant); }
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
    int gatePattern() const;

    // One function an effect.
    void compressor(float* left, float* right, int count);
    void trancegate(float* left, float* right, int count);
    void surroundEncode(float* left, float* right, int count);
    void surroundPan(float* left, float* right, int count);
    void stereoWidth(float* left, float* right, int count);

    // What they show.
    struct Text {
        static constexpr const char* gatePatterns[] = {
            "Tremolo",  "Trance 1",   "Trance 2",   "Trance 3",   "Metal",      "Football",  "Dotted", "La cucaracha",
            "2 Step 1", "2 Step 2",   "2 Step 3",   "Echo 1",     "Echo 2",     "Echo 3",    "Echo 4", "Echo 5",
            "Echo 6",   "Scramble 1", "Scramble 2", "Scramble 3", "Scramble 4", "Scramble 5"};
        static constexpr const char* gateSpeeds[] = {"1/2", "3/4", "1", "3/2", "2"};
        static constexpr const char* places[] = {"Back", "Rear left", "Left", "Center", "Right", "Rear right", "Back"};
        static constexpr auto envelopeTime = [](float p) { return p * 975.0f + 25.0f; };
        static constexpr auto ratio = [](float p) {
            return static_cast<float>(p > 0.5f ? 4 - static_cast<int>(36.99f - 73.98f * p) : 1 + static_cast<int>(6.99f * p));
        };
        static constexpr ParameterText none{},
            gateRhythm = shown::oneOf(gatePatterns, "%s", [](float p) { return p * 21.99f; }),
            gateSpeed = shown::oneOf(gateSpeeds, "Speed %s", [](float p) { return p * 4.99f; }),
            place = shown::oneOf(places, "%s", [](float p) { return p * 6.99f; });
    };

public:
    using Row = EffectRow<Variant, void (Stereo::*)(float* left, float* right, int count)>;
    static constexpr EffectFamily family = EffectFamily::dynamics;

    // One row an effect.
    // clang-format off
    static constexpr Row rows[] = {
        {17, "Trancegate", "Trancegate", Variant::trancegate, {1.0f, 0.08f, 0.5f, 0.6f, 0.0f}, &Stereo::trancegate,
         {Text::gateRhythm, Text::gateSpeed, shown::percent("Smooth %d%%"),
          shown::number("Offset %d", [](float p) { return p * 3.99f; })}},
        {18, "Compressor", "Compressor", Variant::compressor, {1.0f, 0.5f, 0.0f, 0.2f, 1.0f}, &Stereo::compressor,
         {shown::percent("Threshold %d%%"), shown::number("Attack %dms", Text::envelopeTime),
          shown::number("Release %dms", Text::envelopeTime), shown::number("Ratio 1:%d", Text::ratio)}},
        {21, "Surround encode", "Surround encode", Variant::surroundEncode, {1.0f, 1.0f, 0.5f, 0.5f, 0.5f}, &Stereo::surroundEncode,
         {Text::place, Text::none, Text::none, Text::none}},
        {67, "Surround Pan", "Surround Pan", Variant::surroundPan, {1.0f, 0.045f, 0.5f, 0.5f, 0.5f}, &Stereo::surroundPan,
         {shown::number("Speed %.2fHz", [](float p) { return p * p * 23.0f + 0.0625f; }), Text::none, Text::none, Text::none}},
        {68, "Stereo Width", "Stereo Width", Variant::stereoWidth, {1.0f, 0.25f, 0.5f, 0.5f, 0.5f}, &Stereo::stereoWidth,
         {shown::number("Width %d%%", [](float p) { return p * 200.0f; }), Text::none, Text::none, Text::none}},
    };
    // clang-format on

private:
    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    double songPosition_ = 0.0;
    double tempo_ = 120.0;
    const Row* row_ = rowOf(rows, 0);
    float panPhase_ = 0.0f;      // 0 to 1
    float panDirection_ = 0.0f;  // +1 or -1; 0 before the first block
    float envelopeLeft_ = 0.0f, envelopeRight_ = 0.0f;
    float gateLeft_ = 0.0f, gateRight_ = 0.0f;
};

}  // namespace vantoric
