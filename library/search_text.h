// Texts as a search compares them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantoric {

// A word of a text, folded: small letters, of Latin, Greek, Cyrillic and Armenian and of full width, Latin ones without their
// accents; other characters as they are. UTF-8; a byte that is none stands for a character that nobody can type.
struct SearchWord {
    std::string text;
    // Bit i: a word within the word begins at byte i, below 64: at "Layer" or "2" of "MultiLayer2". Bit 0 is set.
    std::uint64_t starts = 1;
};

// The words of a text in their order: what stands between blanks, punctuation and other signs.
std::vector<SearchWord> searchWords(std::string_view text);

// Words with a blank between them.
std::string joinWords(const std::vector<SearchWord>& words);

// The characters of a folded word.
std::u32string searchCharacters(std::string_view word);

// Whether `query` stands at character `at` of `word` but for one slip: a letter too much, one missing, one wrong, or two
// swapped. In the middle of a word the first and the last letter must be right; a slip in the last letter counts only at the
// end of the word.
bool matchesWithSlip(std::u32string_view word, std::size_t at, std::u32string_view query, bool isStart);
// The same for a query of ASCII, by bytes.
bool matchesWithSlip(std::string_view word, std::size_t at, std::string_view query, bool isStart);

}  // namespace vantoric
