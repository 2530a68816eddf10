#include "effects/type_table.h"

#include <algorithm>
#include <iterator>

#include "base/numbers.h"
#include "effects/chorus.h"
#include "effects/delay2.h"
#include "effects/drive_core.h"
#include "effects/equalizer.h"
#include "effects/filter_degrader.h"
#include "effects/reverb_core.h"
#include "effects/stereo.h"
#include "effects/vocoder_core.h"

namespace vantoric {

namespace {

constexpr EffectDefaults halfThroughout{0.5f, 0.5f, 0.5f, 0.5f, 0.5f};

// The dividing lines of the menu.
constexpr int separators[] = {1, 5, 10, 16, 23, 31, 39, 42, 51, 62, 70, 74};

// What stands behind the last dividing line came later: a slot has no name for it.
static_assert(std::is_sorted(std::begin(separators), std::end(separators)));
constexpr int lastNamedType = separators[std::size(separators) - 1] - 1;

using Table = std::array<EffectType, effectTypeCount>;

// Fills the table. A row whose index is taken or outside the menu ends the compilation at its throw, and so does an
// index without a row.
class Assembly {
public:
    constexpr void place(int index, const EffectType& type) {
        if (index < 0 || index >= effectTypeCount) throw "a row stands outside the menu";
        if (table_[index].label != nullptr) throw "two rows have the same index";
        if (type.label == nullptr || type.name == nullptr) throw "a row has no label";
        if (type.family > lastEffectFamily) throw "a family stands behind the last one";
        table_[index] = type;
    }
    template <class Family>
    constexpr void placeAll() {
        for (const auto& row : Family::rows)
            place(row.index, {row.label, row.name, Family::family, static_cast<int>(row.variant), row.defaults, row.texts});
    }
    constexpr Table whole() const {
        for (const EffectType& type : table_)
            if (type.label == nullptr) throw "an index of the menu has no row";
        return table_;
    }

private:
    Table table_{};
};

consteval Table assembled() {
    Assembly assembly;
    assembly.place(0, {"off", "off", EffectFamily::off, 0, halfThroughout, {}});
    for (const int index : separators) assembly.place(index, {"-", "-", EffectFamily::separator, 0, halfThroughout, {}});
    assembly.placeAll<ReverbCore>();
    assembly.placeAll<Delay2>();
    assembly.placeAll<Chorus>();
    assembly.placeAll<Filter>();
    assembly.placeAll<Stereo>();
    assembly.placeAll<DriveCore>();
    assembly.placeAll<Equalizer>();
    assembly.placeAll<VocoderCore>();
    return assembly.whole();
}

constexpr Table table = assembled();

static_assert(table[trancegateType].variant == static_cast<int>(Stereo::Variant::trancegate) &&
              table[trancegateType].family == EffectFamily::dynamics);

consteval std::array<const char*, effectTypeCount> labels() {
    std::array<const char*, effectTypeCount> all{};
    for (int type = 0; type < effectTypeCount; ++type) all[type] = table[type].label;
    return all;
}

}  // namespace

constinit const std::array<const char*, effectTypeCount> insertTypeLabels = labels();
constinit const std::array<const char*, effectTypeCount> masterTypeLabels = [] {
    auto all = labels();
    all[trancegateType] = all[0];
    return all;
}();

bool hasSlotName(int type) { return type <= lastNamedType; }

int legalEffectType(int type) { return type >= 0 && type < effectTypeCount ? type : 0; }

const EffectType& effectType(int type) { return table[legalEffectType(type)]; }

int typeFromValue(float value) { return legalEffectType(listIndex(value)); }

int masterTypeFromValue(float value) {
    const int type = typeFromValue(value);
    return type == trancegateType ? 0 : type;
}

float extremeValue(float base, float lowest, float highest) {
    return clampUnit(highest - base > base - lowest ? highest : lowest);
}

}  // namespace vantoric
