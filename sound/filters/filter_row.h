// The row of a filter type: its place in the menu, its label, its setup and the variant of its loop.
#pragma once

#include "sound/filters/filter_inputs.h"

namespace vantoric::filters {

// The number type of a loop: float, unless its family says otherwise.
template <template <class> class Topology>
struct ScalarFor {
    using Type = float;
};
template <template <class> class Topology>
using TopologyScalar = typename ScalarFor<Topology>::Type;

// A loop's variants are an enumeration that ends with `count`: forms of its step, one of which a setup chooses.
template <template <class> class Topology>
using VariantOf = typename Topology<float>::Variant;
template <template <class> class Topology>
inline constexpr int variantCount = static_cast<int>(VariantOf<Topology>::count);

// Whether a loop reads at places of its own in a delay line, so that its voices go one by one.
template <template <class> class Topology>
inline constexpr bool runsByVoice = requires { Topology<float>::byVoice; };

// The variant of a loop that has but one form.
enum class OneForm { only, count };

// When a setup computes its coefficients: at a new type, cutoff, resonance or analog amount, or each time.
enum class Recompute { whenChanged, everySetup };

template <template <class> class Topology>
struct FilterRow {
    using Filter = Topology<TopologyScalar<Topology>>;
    using Variant = VariantOf<Topology>;

    // A type that always runs `variant`.
    constexpr FilterRow(int menuIndex, const char* menuLabel, int ownNumber, void (*coefficients)(const FilterInputs&, Filter&),
                        Variant named, Recompute when = Recompute::whenChanged)
        : index(menuIndex), label(menuLabel), number(ownNumber), recompute(when), set_(coefficients), variant_(named) {}
    // The same, of a loop that has but one form.
    constexpr FilterRow(int menuIndex, const char* menuLabel, int ownNumber, void (*coefficients)(const FilterInputs&, Filter&),
                        Recompute when = Recompute::whenChanged)
        requires(variantCount<Topology> == 1)
        : FilterRow(menuIndex, menuLabel, ownNumber, coefficients, Variant{}, when) {}
    // A type whose setup tells the variant by its inputs.
    constexpr FilterRow(int menuIndex, const char* menuLabel, int ownNumber, Variant (*choose)(const FilterInputs&, Filter&),
                        Recompute when = Recompute::whenChanged)
        : index(menuIndex), label(menuLabel), number(ownNumber), recompute(when), choose_(choose) {}

    // Sets the coefficients; returns the variant that runs with them.
    constexpr Variant setup(const FilterInputs& in, Filter& filter) const {
        if (choose_ != nullptr) return choose_(in, filter);
        set_(in, filter);
        return variant_;
    }

    int index;          // in the list of types
    const char* label;  // in the list of types
    int number;         // the type's own number
    Recompute recompute;

private:
    void (*set_)(const FilterInputs&, Filter&) = nullptr;
    Variant (*choose_)(const FilterInputs&, Filter&) = nullptr;
    Variant variant_{};
};

// The types that a loop sounds for, one row each; the families give those of their loops.
template <template <class> class Topology>
inline constexpr FilterRow<Topology>* filterRows = nullptr;

}  // namespace vantoric::filters
