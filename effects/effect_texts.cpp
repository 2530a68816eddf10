#include "effects/effect_texts.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

#include "base/math.h"
#include "base/numbers.h"
#include "effects/type_table.h"

namespace vantoric {

namespace {

using Names = const char* const*;

constexpr const char* notes[] = {"1/8", "3/16", "1/4", "1/3", "3/8", "1/2", "2/3", "3/4", "1", "4/3", "3/2", "2"};
constexpr const char* tapTimes[] = {"1/8", "1/4", "1/2", "1", "2"};
constexpr const char* tapPatterns[] = {"C_C_",  "C_R_C_L_", "C_CC",           "C_LR",           "CCC_",
                                       "CLR_",  "C__C",     "L__R",           "Dotted 1",       "Dotted 2",
                                       "Fall",  "Fall LR",  "Fall and raise", "Raise and fall", "Reverse",
                                       "Pan 1", "Pan 2",    "Pingpong echo1", "Pingpong echo2", "Chaos"};
constexpr const char* gatePatterns[] = {"Tremolo",    "Trance 1",     "Trance 2",   "Trance 3",  "Metal",    "Football",
                                        "Dotted",     "La cucaracha", "2 Step 1",   "2 Step 2",  "2 Step 3", "Echo 1",
                                        "Echo 2",     "Echo 3",       "Echo 4",     "Echo 5",    "Echo 6",   "Scramble 1",
                                        "Scramble 2", "Scramble 3",   "Scramble 4", "Scramble 5"};
constexpr const char* gateSpeeds[] = {"1/2", "3/4", "1", "3/2", "2"};
constexpr const char* places[] = {"Back", "Rear left", "Left", "Center", "Right", "Rear right", "Back"};
constexpr const char* sides[] = {"Left", "Right"};

// A row of a family's display table. `format` holds at most one of %d (the number truncated), %.1f, %.2f
// and %s (the entry of `names` at the number truncated), and %% for a per cent sign.
struct Row {
    unsigned variants;  // one bit each
    int index;
    const char* format;
    float (*number)(float p);
    Names names = nullptr;
    int nameCount = 0;
};

template <class... Numbers>
constexpr unsigned of(Numbers... variants) {
    return ((1u << variants) | ...);
}
constexpr unsigned all = ~0u;

constexpr float percent(float p) { return p * 100.0f; }
constexpr float bipolar(float p) { return p * 200.0f - 100.0f; }
constexpr float milliseconds(float p) { return p * p * 1000.0f; }
constexpr float envelopeTime(float p) { return p * 975.0f + 25.0f; }
constexpr float noteIndex(float p) { return p * 11.99f; }
constexpr float decibels(float p) { return static_cast<float>(-10 + static_cast<int>(20.0f * p)); }
constexpr float reverbFrequency(float p) { return p * p * p * 5900.0f + 100.0f; }
constexpr float bigReverbSize(float p) { return p * p * 160.0f + 40.0f; }
constexpr float ratio(float p) {
    return static_cast<float>(p > 0.5f ? 4 - static_cast<int>(36.99f - 73.98f * p) : 1 + static_cast<int>(6.99f * p));
}

template <int N>
constexpr Row list(unsigned variants, int index, const char* format, float (*number)(float), const char* const (&names)[N]) {
    return {variants, index, format, number, names, N};
}

// The types of family 1 by variant: 0 Theater, 1 Hangar, 4 Cathedral, 6 Infinity, 7 Big, 8 Glass, 9 Plate,
// 10 Cold, 11 Hall, 12 Room, 13 Laser Punch.
constexpr Row reverbRows[] = {
    {of(12), 1, "Size %.1fm", [](float p) { return p * 10.0f + 5.0f; }},
    {of(11, 0), 1, "Size %.1fm", [](float p) { return p * 20.0f + 10.0f; }},
    {of(4, 1), 1, "Size %.1fm", [](float p) { return p * 53.5f + 21.4f; }},
    {of(6), 1, "Size %.1fm", [](float p) { return p * p * 132.0f + 66.0f; }},
    {of(7, 8, 9), 1, "Size %.1fm", bigReverbSize},
    {of(10), 1, "Size %.1fm", [](float p) { return p * p * 50.0f + 2.5f; }},
    {of(13), 1, "Zzzapp %d%%", percent},
    {of(8), 2, "Low Damp %d%%", percent},
    {of(9, 13), 2, "Frequency %d Hz", reverbFrequency},
    {all, 2, "Damp %d%%", percent},
    {of(10), 3, "Diffuse %d%%", percent},
    {of(13), 3, "", percent},
    {all, 3, "Swirl %d%%", percent},
    {of(11, 4, 12, 0, 1), 4, "Predelay %.2fs", [](float p) { return p * p * 0.65f; }},
    {of(6, 7, 8, 9, 10), 4, "Decay %d%%", percent},
};

constexpr Row delayRows[] = {
    list(
        of(3), 1, "Time %s", [](float p) { return p * 4.99f; }, tapTimes),
    {of(4), 1, "Left %dms", milliseconds},
    list(of(5), 1, "Left %s", noteIndex, notes),
    {of(8), 1, "Time %dms", milliseconds},
    {of(10), 1, "Size %d", percent},
    list(all, 1, "Time %s", noteIndex, notes),
    {of(4), 2, "Right %dms", milliseconds},
    list(of(5), 2, "Right %s", noteIndex, notes),
    {of(7), 2, "Feedback %d%%", [](float p) { return p * 150.0f; }},
    {of(8), 2, "Feedback %d%%", bipolar},
    {of(9), 2, "High Damp %d%%", percent},
    {of(10, 12, 13, 14), 2, "Diffuse %d%%", percent},
    {all, 2, "Feedback %d%%", percent},
    {of(0, 1, 4, 5, 6, 10), 3, "Damp %d%%", percent},
    {of(2), 3, "Frequency %d%%", percent},
    list(
        of(3), 3, "%s", [](float p) { return p * 19.99f; }, tapPatterns),
    {of(7), 3, "Noise %d%%", percent},
    {of(8), 3, "High Damp %d%%", percent},
    {of(9), 3, "Low Damp %d%%", percent},
    {of(11), 3, "Hi Damp %d%%", percent},
    {of(12, 13, 14), 3, "Hi Damp %.1f", percent},
    {of(4), 4, "Feedback %d%%", bipolar},
    {of(5), 4, "Feedback %d%%", percent},
    {of(7), 4, "Tape Wow %d%%", percent},
    {of(8, 11), 4, "Low Damp %d%%", percent},
    {of(10), 4, "", percent},
    {of(12, 13, 14), 4, "Low cut %.1f", percent},
    {all, 4, "Detune %d%%", percent},
};

constexpr Row modulationRows[] = {
    {of(14, 15), 1, "Speed %.1fHz", [](float p) { return p * p * 20.0f + 1.0f; }},
    {of(16, 17), 1, "Speed %.1fHz", [](float p) { return p * p * 23.0f + 0.25f; }},
    {of(19), 1, "Spread %d%%", percent},
    {of(20), 1, "Delay %dms", [](float p) { return p * 40.0f; }},
    {all, 1, "Speed %d%%", percent},
    {of(13), 2, "Detune %d%%", percent},
    {of(16, 17), 2, "", percent},
    {of(19), 2, "Unison %d", [](float p) { return static_cast<float>(3 + 2 * static_cast<int>(p * 3.999f)); }},
    list(
        of(20), 2, "%s", [](float p) { return p < 0.5f ? 0.0f : 1.0f; }, sides),
    {all, 2, "Depth %d%%", percent},
    {of(2, 12, 13), 3, "Feedback %d%%", percent},
    {of(3), 3, "Modspeed %d%%", percent},
    {of(9), 3, "Stages %d", [](float p) { return static_cast<float>(2 + 2 * static_cast<int>(p * 7.999f)); }},
    {of(10, 11), 3, "Stages %d", [](float p) { return static_cast<float>(2 + 2 * static_cast<int>(p * 5.999f)); }},
    {of(19), 3, "Speed %.1fHz", [](float p) { return p * 3.6f + 0.4f; }},
    {of(2, 9), 4, "Center %d%%", percent},
    {of(3), 4, "Moddepth %d%%", percent},
    {of(10, 11), 4, "Feedback %d%%", bipolar},
    {of(19), 4, "Stereo width %d%%", percent},
};

constexpr Row degradeRows[] = {
    {all, 1, "Samplerate %.1fkHz", [](float p) { return math::exp(5.0f * p) * 0.1f; }},
};

constexpr Row dynamicsRows[] = {
    {of(0), 1, "Threshold %d%%", percent},
    {of(0), 2, "Attack %dms", envelopeTime},
    {of(0), 3, "Release %dms", envelopeTime},
    {of(0), 4, "Ratio 1:%d", ratio},
    list(
        of(1), 1, "%s", [](float p) { return p * 21.99f; }, gatePatterns),
    list(
        of(1), 2, "Speed %s", [](float p) { return p * 4.99f; }, gateSpeeds),
    {of(1), 3, "Smooth %d%%", percent},
    {of(1), 4, "Offset %d", [](float p) { return p * 3.99f; }},
    list(
        of(2), 1, "%s", [](float p) { return p * 6.99f; }, places),
    {of(3), 1, "Speed %.2fHz", [](float p) { return p * p * 23.0f + 0.0625f; }},
    {of(4), 1, "Width %d%%", [](float p) { return p * 200.0f; }},
};

constexpr Row driveRows[] = {
    {of(13), 1, "White %d%%", percent},
    {all, 1, "Drive %d%%", percent},
    {of(12), 2, "Pre Damp %d%%", percent},
    {of(13), 2, "Pink %d%%", percent},
    {of(25), 2, "Frequency %d%%", percent},
    {all, 2, "Postamp %d%%", percent},
    {of(12), 3, "Bass +%ddB", [](float p) { return p * 12.0f; }},
    {of(13), 3, "Crackle %d%%", percent},
    {of(25), 3, "Balance %d%%", percent},
    {of(13), 4, "Humm %d%%", percent},
};

constexpr Row equalizerRows[] = {
    {all, 1, "Low gain %d dB", decibels},
    {all, 2, "Mid gain %d dB", decibels},
    {all, 3, "Mid freq %d Hz", [](float p) { return static_cast<float>(250 + static_cast<int>(4000.0f * p * p)); }},
    {all, 4, "High gain %d dB", decibels},
};

constexpr Row vocoderRows[] = {
    {all, 1, "Formant %d%%", bipolar},
    {all, 2, "Stereo %d%%", percent},
    {of(2, 4), 3, "Compressor %d%%", percent},
    {of(2, 4), 4, "Gate %d%%", percent},
};

struct Table {
    const Row* rows = nullptr;
    int count = 0;
};
template <int N>
constexpr Table tableOf(const Row (&rows)[N]) {
    return {rows, N};
}

Table familyTable(EffectFamily family) {
    switch (family) {
        case EffectFamily::reverb: return tableOf(reverbRows);
        case EffectFamily::delay: return tableOf(delayRows);
        case EffectFamily::modulation: return tableOf(modulationRows);
        case EffectFamily::degrade: return tableOf(degradeRows);
        case EffectFamily::dynamics: return tableOf(dynamicsRows);
        case EffectFamily::drive: return tableOf(driveRows);
        case EffectFamily::equalizer: return tableOf(equalizerRows);
        case EffectFamily::vocoder: return tableOf(vocoderRows);
        default: return {};
    }
}

// Appends to a text of limited length, without the C library's locale.
class Writer {
public:
    Writer(char* text, int size) : at_(text), end_(text + size - 1) { *at_ = 0; }

    void add(std::string_view part) {
        const int count = static_cast<int>(std::min<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(part.size()), end_ - at_));
        std::memcpy(at_, part.data(), static_cast<std::size_t>(count));
        at_ += count;
        *at_ = 0;
    }
    void addWhole(float number) {
        char digits[16];
        const auto result = std::to_chars(digits, digits + sizeof digits, truncateTo(number, -999999999, 999999999));
        add({digits, static_cast<std::size_t>(result.ptr - digits)});
    }
    void addFixed(float number, int decimals) {
        char digits[32];
        const double bounded = clampTo(static_cast<double>(number), -1e9, 1e9);
        const auto result = std::to_chars(digits, digits + sizeof digits, bounded, std::chars_format::fixed, decimals);
        add({digits, static_cast<std::size_t>(result.ptr - digits)});
    }

private:
    char* at_;
    char* end_;
};

void writeRow(const Row& row, float value, Writer& writer) {
    std::string_view rest = row.format;
    while (!rest.empty()) {
        const std::size_t mark = rest.find('%');
        writer.add(rest.substr(0, mark));
        if (mark == std::string_view::npos) return;
        rest.remove_prefix(mark + 1);
        if (rest[0] == '%')
            writer.add("%");
        else if (rest[0] == 'd')
            writer.addWhole(row.number(value));
        else if (rest[0] == 's')
            writer.add(row.names[truncateTo(row.number(value), 0, row.nameCount - 1)]);
        else
            writer.addFixed(row.number(value), rest[1] - '0');
        rest.remove_prefix(rest[0] == '.' ? 3 : 1);
    }
}

void writePlain(int index, float value, Writer& writer) {
    writer.add("param ");
    writer.addWhole(static_cast<float>(index));
    writer.add(" value ");
    writer.addWhole(percent(value));
    writer.add(" %");
}

}  // namespace

void effectParameterText(int type, int index, float value, char* text) {
    Writer writer(text, effectTextSize);
    value = clampUnit(value);
    const EffectType& row = effectType(type);
    if (row.family == EffectFamily::separator || index < 0 || index > 4) return writePlain(index, value, writer);
    if (index == 0) {
        writer.add("Mix ");
        return writer.addWhole(percent(value));
    }
    if (row.family == EffectFamily::off) return writePlain(index, value, writer);
    const Table table = familyTable(row.family);
    const auto found = std::find_if(table.rows, table.rows + table.count,
                                    [&](const Row& r) { return r.index == index && ((r.variants >> row.variant) & 1u) != 0; });
    if (found != table.rows + table.count) writeRow(*found, value, writer);
}

void effectParameterName(int index, char* text) {
    Writer writer(text, 21);
    if (index == 0) return writer.add("Effect mix");
    writer.add("Effect param ");
    char digits[16];
    const auto result = std::to_chars(digits, digits + sizeof digits, index);
    writer.add({digits, static_cast<std::size_t>(result.ptr - digits)});
}

}  // namespace vantoric
