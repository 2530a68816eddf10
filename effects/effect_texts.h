// What an effect's parameters show.
#pragma once

#include <string>

namespace vantoric {

// Every text of a slot fits, with its closing zero.
inline constexpr int effectTextSize = 64;

// Writes the text of parameter `index` (0 the mix, 1 to 4 the parameters) at `value` for an effect type
// into `text`, effectTextSize characters. Separators, the type 0 beside its mix, and indices outside 0 to
// 4 show index and value. The same in every locale. Any thread.
void effectParameterText(int type, int index, float value, char* text);

// What stands before the value in the text of parameter `index`, 1 to 4: "Low Damp"; empty where that is the value alone, and
// for indices and types without a text. Any thread but the audio thread.
std::string effectParameterWords(int type, int index);

// Writes "Effect mix" for index 0, else "Effect param <index>", at most 20 characters.
void effectParameterName(int index, char* text);

}  // namespace vantoric
