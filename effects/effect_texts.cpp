#include "effects/effect_texts.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

#include "base/numbers.h"
#include "effects/type_table.h"

namespace vantoric {

namespace {

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

void writeText(const ParameterText& text, float value, Writer& writer) {
    std::string_view rest = text.format;
    while (!rest.empty()) {
        const std::size_t mark = rest.find('%');
        writer.add(rest.substr(0, mark));
        if (mark == std::string_view::npos) return;
        rest.remove_prefix(mark + 1);
        if (rest[0] == '%')
            writer.add("%");
        else if (rest[0] == 'd')
            writer.addWhole(text.number(value));
        else if (rest[0] == 's')
            writer.add(text.names[truncateTo(text.number(value), 0, text.nameCount - 1)]);
        else
            writer.addFixed(text.number(value), rest[1] - '0');
        rest.remove_prefix(rest[0] == '.' ? 3 : 1);
    }
}

void writePlain(int index, float value, Writer& writer) {
    writer.add("param ");
    writer.addWhole(static_cast<float>(index));
    writer.add(" value ");
    writer.addWhole(shown::percentOf(value));
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
        return writer.addWhole(shown::percentOf(value));
    }
    if (row.family == EffectFamily::off) return writePlain(index, value, writer);
    writeText(row.texts[index - 1], value, writer);
}

std::string effectParameterWords(int type, int index) {
    const EffectType& row = effectType(type);
    const bool hasTexts = row.family != EffectFamily::separator && row.family != EffectFamily::off;
    if (!hasTexts || index < 1 || index > 4) return "";
    const std::string_view format = row.texts[index - 1].format;
    const std::size_t mark = format.find('%');
    if (mark == std::string_view::npos) return std::string(format);
    const std::size_t end = format.substr(0, mark).rfind(' ');  // what is next to the value belongs to it: "Ratio 1:%d"
    return end == std::string_view::npos ? "" : std::string(format.substr(0, end));
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
