// Parameter values as a musician writes them in a patch text, and back without the loss of a bit.
#pragma once

#include <string>
#include <string_view>

namespace vantoric::patch {

// The stored value, 0 to 1, that a text means for parameter number `n` (0 to 323): "=0.6953" for the value itself,
// else labels and texts as in engine/parameter_text.h, and "1200 Hz", "1.2 kHz", "0.35 sec", "350 ms" for
// cutoffs, LFO speeds and times. Throws PatchError with what was expected.
float readValue(int n, std::string_view text);

// The same for a bare number: percent, or -100 to 100 where the parameter has two sides; labels of a list that are
// numbers.
float readValue(int n, double number);

// A text that `readValue` takes back to the same bits: short and in the unit of the parameter if there is one, else
// "=" and the value. `lfoMode`: list index of the mode of that LFO, for its speed.
std::string writeValue(int n, float value, int lfoMode = 0);

// Percent of a value, 0 to 100, or -100 to 100 if `bipolar`: a number that `readPercent` takes back to the same
// bits, in `percent`. False if none of at most five digits does.
bool writePercent(float value, bool bipolar, double& percent);
float readPercent(double percent, bool bipolar);

// The nearest name of a parameter of a layer, or of a global one, to one that does not exist.
std::string nearestName(std::string_view name, bool global);
// The nearest of any texts. Empty without texts.
template <class Texts>
std::string nearestText(std::string_view text, const Texts& texts);

// Letters that have to be changed, added or removed to make one of the other; case counts half.
int editDistance(std::string_view a, std::string_view b);

template <class Texts>
std::string nearestText(std::string_view text, const Texts& texts) {
    std::string nearest;
    int best = 1 << 20;
    for (const auto& candidate : texts) {
        const int distance = editDistance(text, candidate);
        if (distance < best) nearest = candidate, best = distance;
    }
    return nearest;
}

}  // namespace vantoric::patch
