#include "library/search_text.h"

#include <algorithm>

#include "base/text.h"

namespace vantoric {

namespace {

constexpr char32_t brokenByte = 0x10ff00;  // and the byte: of the last private plane, which nobody uses

char32_t decode(std::string_view character) {
    const auto byteAt = [&](std::size_t at) { return static_cast<char32_t>(static_cast<unsigned char>(character[at])); };
    switch (character.size()) {
        case 1: return byteAt(0) < 0x80 ? byteAt(0) : brokenByte + byteAt(0);
        case 2: return (byteAt(0) & 0x1f) << 6 | (byteAt(1) & 0x3f);
        case 3: return (byteAt(0) & 0x0f) << 12 | (byteAt(1) & 0x3f) << 6 | (byteAt(2) & 0x3f);
        default: return (byteAt(0) & 0x07) << 18 | (byteAt(1) & 0x3f) << 12 | (byteAt(2) & 0x3f) << 6 | (byteAt(3) & 0x3f);
    }
}

void encode(char32_t c, std::string& to) {
    const auto put = [&](char32_t byte) { to += static_cast<char>(byte); };
    if (c < 0x80) return put(c);
    if (c < 0x800) {
        put(0xc0 | c >> 6);
    } else {
        if (c < 0x10000) {
            put(0xe0 | c >> 12);
        } else {
            put(0xf0 | c >> 18);
            put(0x80 | (c >> 12 & 0x3f));
        }
        put(0x80 | (c >> 6 & 0x3f));
    }
    put(0x80 | (c & 0x3f));
}

// Latin letters with accents, and the letters that people type for them.
struct Plain {
    char32_t first, last;
    const char* letters;
};
constexpr Plain plainLetters[] = {
    {0xc0, 0xc5, "a"},   {0xc6, 0xc6, "ae"},   {0xc7, 0xc7, "c"},   {0xc8, 0xcb, "e"},   {0xcc, 0xcf, "i"},   {0xd0, 0xd0, "d"},
    {0xd1, 0xd1, "n"},   {0xd2, 0xd6, "o"},    {0xd8, 0xd8, "o"},   {0xd9, 0xdc, "u"},   {0xdd, 0xdd, "y"},   {0xdf, 0xdf, "ss"},
    {0xe0, 0xe5, "a"},   {0xe6, 0xe6, "ae"},   {0xe7, 0xe7, "c"},   {0xe8, 0xeb, "e"},   {0xec, 0xef, "i"},   {0xf0, 0xf0, "d"},
    {0xf1, 0xf1, "n"},   {0xf2, 0xf6, "o"},    {0xf8, 0xf8, "o"},   {0xf9, 0xfc, "u"},   {0xfd, 0xfd, "y"},   {0xff, 0xff, "y"},
    {0x100, 0x105, "a"}, {0x106, 0x10d, "c"},  {0x10e, 0x111, "d"}, {0x112, 0x11b, "e"}, {0x11c, 0x123, "g"}, {0x124, 0x127, "h"},
    {0x128, 0x131, "i"}, {0x132, 0x133, "ij"}, {0x134, 0x135, "j"}, {0x136, 0x138, "k"}, {0x139, 0x142, "l"}, {0x143, 0x14b, "n"},
    {0x14c, 0x151, "o"}, {0x152, 0x153, "oe"}, {0x154, 0x159, "r"}, {0x15a, 0x161, "s"}, {0x162, 0x167, "t"}, {0x168, 0x173, "u"},
    {0x174, 0x175, "w"}, {0x176, 0x178, "y"},  {0x179, 0x17e, "z"}, {0x17f, 0x17f, "s"},
};

// Capital letters that lie by a fixed distance before their small ones (Unicode's CaseFolding, simple foldings).
struct Capitals {
    char32_t first, last;
    int step;  // 2: capital and small letter in turn
    std::int32_t distance;
};
constexpr Capitals capitals[] = {
    {'A', 'Z', 1, 32},     {0x386, 0x386, 1, 38}, {0x388, 0x38a, 1, 37}, {0x38c, 0x38c, 1, 64},  {0x38e, 0x38f, 1, 63},
    {0x391, 0x3ab, 1, 32}, {0x3c2, 0x3c2, 1, 1},  {0x400, 0x40f, 1, 80}, {0x410, 0x42f, 1, 32},  {0x460, 0x480, 2, 1},
    {0x48a, 0x4be, 2, 1},  {0x4d0, 0x52e, 2, 1},  {0x531, 0x556, 1, 48}, {0x1e00, 0x1e94, 2, 1}, {0x1ea0, 0x1efe, 2, 1},
};

void fold(char32_t c, std::string& to) {
    if (c >= 0x300 && c <= 0x36f) return;         // accents that stand for themselves
    if (c >= 0xff01 && c <= 0xff5e) c -= 0xfee0;  // full width
    if (c >= 0xc0 && c <= 0x17f) {
        const auto* const plain = std::find_if(std::begin(plainLetters), std::end(plainLetters),
                                               [=](const Plain& p) { return c >= p.first && c <= p.last; });
        if (plain != std::end(plainLetters)) {
            to += plain->letters;
            return;
        }
    }
    for (const Capitals& range : capitals)
        if (c >= range.first && c <= range.last && (c - range.first) % static_cast<char32_t>(range.step) == 0) {
            c = static_cast<char32_t>(static_cast<std::int32_t>(c) + range.distance);
            break;
        }
    if (c == 0x451) c = 0x435;  // io, mostly written as ie
    encode(c, to);
}

enum class Kind : unsigned char { separator, small, capital, digit, other };

Kind kindOf(char32_t c) {
    if (c >= 'a' && c <= 'z') return Kind::small;
    if (c >= 'A' && c <= 'Z') return Kind::capital;
    if (c >= '0' && c <= '9') return Kind::digit;
    const bool isSign = c < 0xc0 || c == 0xd7 || c == 0xf7 || (c >= 0x2000 && c <= 0x206f) || (c >= 0x3000 && c <= 0x303f);
    return isSign && c != 0xaa && c != 0xb5 && c != 0xba ? Kind::separator : Kind::other;
}

bool beginsWithin(Kind before, Kind kind) {
    return (kind == Kind::capital && before == Kind::small) || (kind == Kind::digit) != (before == Kind::digit);
}

template <class Text>
bool matchesBut(Text word, std::size_t at, Text query, bool isStart) {
    if (at >= word.size()) return false;
    word.remove_prefix(at);
    std::size_t same = 0;
    while (same < query.size() && same < word.size() && query[same] == word[same]) ++same;
    if (same >= query.size()) return false;  // no slip at all
    const bool isLast = same + 1 == query.size();
    if (isLast ? !isStart || word.size() > same + 1 : !isStart && same == 0) return false;
    const auto goesOn = [&](std::size_t inWord, std::size_t inQuery) {
        return inWord <= word.size() && word.substr(inWord).starts_with(query.substr(inQuery));
    };
    const bool isSwapped = same + 1 < std::min(query.size(), word.size()) && query[same] == word[same + 1] &&
                           query[same + 1] == word[same] && goesOn(same + 2, same + 2);
    return isSwapped || goesOn(same + 1, same + 1) || goesOn(same, same + 1) || goesOn(same + 1, same);
}

}  // namespace

std::vector<SearchWord> searchWords(std::string_view text) {
    std::vector<SearchWord> words;
    Kind before = Kind::separator;
    while (!text.empty()) {
        const std::size_t count = characterBytes(text);
        const char32_t c = decode(text.substr(0, count));
        text.remove_prefix(count);
        const Kind kind = kindOf(c);
        if (kind != Kind::separator) {
            if (before == Kind::separator) words.emplace_back();
            SearchWord& word = words.back();
            if (before != Kind::separator && beginsWithin(before, kind) && word.text.size() < 64)
                word.starts |= std::uint64_t{1} << word.text.size();
            fold(c, word.text);
        }
        before = kind;
    }
    std::erase_if(words, [](const SearchWord& word) { return word.text.empty(); });
    return words;
}

std::string joinWords(const std::vector<SearchWord>& words) {
    std::string text;
    for (const SearchWord& word : words) {
        if (!text.empty()) text += ' ';
        text += word.text;
    }
    return text;
}

std::u32string searchCharacters(std::string_view word) {
    std::u32string characters;
    characters.reserve(word.size());
    while (!word.empty()) {
        const std::size_t count = characterBytes(word);
        characters += decode(word.substr(0, count));
        word.remove_prefix(count);
    }
    return characters;
}

bool matchesWithSlip(std::u32string_view word, std::size_t at, std::u32string_view query, bool isStart) {
    return matchesBut(word, at, query, isStart);
}
bool matchesWithSlip(std::string_view word, std::size_t at, std::string_view query, bool isStart) {
    return matchesBut(word, at, query, isStart);
}

}  // namespace vantoric
