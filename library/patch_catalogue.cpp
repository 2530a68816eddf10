#include "library/patch_catalogue.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "library/name_order.h"

namespace vantoric {

namespace {

constexpr std::size_t slipLetters = 4;  // of a word that may have a slip

// Costs of a patch: what it is sorted by.
constexpr std::uint8_t exactCost = 0, beginningCost = 1, wordCost = 2;
constexpr int costsOfWords = 6;  // start, part and slip, in a name or elsewhere
constexpr int costCount = wordCost + costsOfWords;

std::string keyOf(const std::string& category, const std::string& name) { return category + '\n' + name; }

bool isPlain(char c) { return static_cast<unsigned char>(c) < 0x80; }

bool continues(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

std::size_t bytesOf(std::string_view word, std::size_t characters) {
    std::size_t bytes = 0;
    while (bytes < word.size() && (characters > 0 || continues(word[bytes])))
        if (!continues(word[bytes++])) --characters;
    return bytes;
}
std::size_t charactersBefore(std::string_view word, std::size_t byte) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < byte; ++i) count += !continues(word[i]);
    return count;
}

}  // namespace

// ---- making it --------------------------------------------------------------------------------------------------

struct PatchCatalogue::Builder {
    struct Word {
        std::uint64_t starts = 0;
        std::vector<Posting> postings;
    };
    std::unordered_map<std::string, std::uint32_t> numbers;
    std::vector<std::pair<std::string, Word>> words;

    void add(const std::vector<SearchWord>& found, std::uint32_t patch, bool isName) {
        for (const SearchWord& word : found) {
            const auto [at, isNew] = numbers.try_emplace(word.text, static_cast<std::uint32_t>(words.size()));
            if (isNew) words.emplace_back(word.text, Word{});
            Word& known = words[at->second].second;
            known.starts |= word.starts;
            known.postings.push_back({patch, isName});
        }
    }
};

PatchCatalogue::PatchCatalogue(std::vector<CataloguedPatch> patches) : patches_(std::move(patches)) {
    std::sort(patches_.begin(), patches_.end(), [](const CataloguedPatch& a, const CataloguedPatch& b) {
        return a.name != b.name ? standsBefore(a.name, b.name) : standsBefore(a.category, b.category);
    });
    Builder builder;
    std::unordered_map<std::string, std::vector<SearchWord>> shared;  // categories, tags and authors come again and again
    const auto wordsOf = [&](const std::string& text) -> const std::vector<SearchWord>& {
        const auto [at, isNew] = shared.try_emplace(text);
        if (isNew) at->second = searchWords(text);
        return at->second;
    };
    places_.reserve(patches_.size());
    titleStarts_.push_back(0);
    for (std::uint32_t i = 0; i < patches_.size(); ++i) {
        const CataloguedPatch& patch = patches_[i];
        const auto name = searchWords(patch.name);
        builder.add(name, i, true);
        builder.add(wordsOf(patch.category), i, false);
        builder.add(wordsOf(patch.author), i, false);
        for (const std::string& tag : patch.tags) builder.add(wordsOf(tag), i, false);
        titles_ += joinWords(name);
        titleStarts_.push_back(static_cast<std::uint32_t>(titles_.size()));
        places_.try_emplace(keyOf(patch.category, patch.name), i);
    }
    for (const auto& [word, known] : builder.words) {
        wordStarts_.push_back(static_cast<std::uint32_t>(text_.size()));
        postingStarts_.push_back(static_cast<std::uint32_t>(postings_.size()));
        innerStarts_.push_back(known.starts);
        text_.append(word).push_back('\0');
        postings_.insert(postings_.end(), known.postings.begin(), known.postings.end());
    }
    wordStarts_.push_back(static_cast<std::uint32_t>(text_.size()));
    postingStarts_.push_back(static_cast<std::uint32_t>(postings_.size()));
}

std::optional<std::uint32_t> PatchCatalogue::find(const std::string& category, const std::string& name) const {
    const auto found = places_.find(keyOf(category, name));
    if (found == places_.end()) return {};
    return found->second;
}

// ---- words ------------------------------------------------------------------------------------------------------

namespace {

// Where the bytes stand first in [begin, end), or null.
const char* firstOf(std::string_view sought, const char* begin, const char* end) {
#ifdef _WIN32
    const auto place = std::string_view(begin, static_cast<std::size_t>(end - begin)).find(sought);
    return place == std::string_view::npos ? nullptr : begin + place;
#else
    return static_cast<const char*>(memmem(begin, static_cast<std::size_t>(end - begin), sought.data(), sought.size()));
#endif
}

}  // namespace

// Calls visit(word, byte within it) for each place of a text in the words, in order. Where it returns true, the rest of the
// word is passed over.
template <class Visit>
void PatchCatalogue::visitOccurrences(std::string_view sought, Visit&& visit) const {
    const char* const begin = text_.data();
    const char* const end = begin + text_.size();
    std::size_t word = 0;
    for (const char* at = begin; at < end;) {
        at = firstOf(sought, at, end);
        if (at == nullptr) return;
        const auto position = static_cast<std::uint32_t>(at - begin);
        while (wordStarts_[word + 1] <= position) ++word;
        at = visit(word, position - wordStarts_[word]) ? begin + wordStarts_[word + 1] : at + 1;
    }
}

void PatchCatalogue::matchWhole(const std::string& query, std::vector<Match>& matches) const {
    if (query.size() == 1 && isPlain(query[0])) {
        for (std::size_t word = 0; word < matches.size(); ++word) {
            std::uint64_t starts = innerStarts_[word];
            for (std::size_t at = 0; starts != 0 && matches[word] != start; ++at, starts >>= 1)
                if ((starts & 1) != 0 && text_[wordStarts_[word] + at] == query[0]) matches[word] = start;
        }
        return;
    }
    visitOccurrences(query, [&](std::size_t word, std::size_t at) {
        const bool isStart = at < 64 && (innerStarts_[word] >> at & 1) != 0;
        matches[word] = isStart ? start : part;
        return isStart;
    });
}

// A slip leaves one half of the query as it is, or swaps the two letters where the halves meet.
template <class Look>
void PatchCatalogue::visitHalves(const std::string& query, std::size_t half, std::size_t halfBytes, Look&& look) const {
    const std::string_view whole = query;
    visitOccurrences(whole.substr(0, halfBytes), [&](std::size_t word, std::size_t at) { return look(word, at, 0); });
    visitOccurrences(whole.substr(halfBytes), [&](std::size_t word, std::size_t at) {
        return look(word, at, half) || look(word, at, half - 1) || look(word, at, half + 1);
    });
}

void PatchCatalogue::matchSlips(const std::string& query, std::vector<Match>& matches) const {
    const std::u32string letters = searchCharacters(query);
    if (letters.size() < slipLetters) return;
    const std::size_t half = letters.size() / 2;
    const auto isStart = [&](std::size_t word, std::size_t at) {
        return at == 0 || (at < 64 && (innerStarts_[word] >> at & 1) != 0);
    };
    if (letters.size() == query.size()) {
        visitHalves(query, half, half, [&](std::size_t word, std::size_t at, std::size_t back) {
            if (matches[word] == none && at >= back && matchesWithSlip(wordAt(word), at - back, query, isStart(word, at - back)))
                matches[word] = slip;
            return matches[word] != none;
        });
        std::string swapped = query;
        std::swap(swapped[half - 1], swapped[half]);
        visitOccurrences(swapped, [&](std::size_t word, std::size_t) {
            if (matches[word] == none) matches[word] = slip;
            return true;
        });
        return;
    }
    visitHalves(query, half, bytesOf(query, half), [&](std::size_t word, std::size_t byte, std::size_t back) {
        const std::size_t at = charactersBefore(wordAt(word), byte);
        // Bytes and characters of starts within words are the same, as those words are of plain letters up to there.
        if (matches[word] == none && at >= back &&
            matchesWithSlip(searchCharacters(wordAt(word)), at - back, letters, isStart(word, at - back)))
            matches[word] = slip;
        return matches[word] != none;
    });
}

// ---- patches ----------------------------------------------------------------------------------------------------

// What each patch costs for one word of a query.
PatchCatalogue::Costs PatchCatalogue::costsOfWord(const std::string& query) const {
    std::vector<Match> matches(innerStarts_.size(), none);
    matchWhole(query, matches);
    matchSlips(query, matches);
    auto costs = std::make_shared<std::vector<std::uint8_t>>(patches_.size(), unmatched);
    for (std::size_t word = 0; word < matches.size(); ++word) {
        if (matches[word] == none) continue;
        for (std::uint32_t i = postingStarts_[word]; i < postingStarts_[word + 1]; ++i) {
            const Posting posting = postings_[i];
            const auto cost = static_cast<std::uint8_t>(wordCost + 2 * matches[word] + (posting.isName ? 0 : 1));
            std::uint8_t& known = (*costs)[posting.patch];
            if (cost < known) known = cost;
        }
    }
    return costs;
}

PatchCatalogue::Costs PatchCatalogue::cachedCosts(const std::string& query) const {
    constexpr std::size_t mostRemembered = 8;
    {
        const std::lock_guard guard(remembering_);
        for (const auto& [word, costs] : remembered_)
            if (word == query) return costs;
    }
    Costs costs = costsOfWord(query);
    const std::lock_guard guard(remembering_);
    remembered_.emplace_front(query, costs);
    if (remembered_.size() > mostRemembered) remembered_.pop_back();
    return costs;
}

// The worst word counts, and a patch without one is out.
std::vector<std::uint8_t> PatchCatalogue::costsOf(const std::vector<SearchWord>& query) const {
    std::vector<std::uint8_t> costs(patches_.size(), exactCost);
    for (const SearchWord& word : query) {
        const Costs more = cachedCosts(word.text);
        for (std::size_t i = 0; i < costs.size(); ++i) costs[i] = std::max(costs[i], (*more)[i]);
    }
    const std::string title = joinWords(query);
    for (std::size_t i = 0; i < costs.size(); ++i)
        if (!title.empty() && costs[i] == wordCost && titleAt(i).starts_with(title))
            costs[i] = titleAt(i).size() == title.size() ? exactCost : beginningCost;
    return costs;
}

std::vector<std::uint32_t> PatchCatalogue::search(std::string_view query, const PatchFilter& filter,
                                                  const std::vector<std::uint32_t>& recent) const {
    const auto words = searchWords(query);
    std::vector<std::uint8_t> costs = costsOf(words);
    std::vector<bool> isRecent(filter.recent ? patches_.size() : 0);
    if (filter.recent)
        for (const std::uint32_t i : recent)
            if (i < patches_.size()) isRecent[i] = true;
    const auto passes = [&](std::uint32_t i) {
        const CataloguedPatch& patch = patches_[i];
        return costs[i] != unmatched && patch.stars >= filter.fewestStars && (!filter.favourites || patch.isFavourite) &&
               (!filter.own || patch.isOwn) && (!filter.recent || isRecent[i]) &&
               (!filter.category || *filter.category == patch.category);
    };
    std::vector<std::uint32_t> found;
    if (words.empty() && filter.recent) {
        for (const std::uint32_t i : recent)
            if (i < patches_.size() && passes(i)) found.push_back(i);
        return found;
    }
    std::array<std::vector<std::uint32_t>, costCount> byCost;
    for (std::uint32_t i = 0; i < patches_.size(); ++i)
        if (passes(i)) byCost[costs[i]].push_back(i);
    for (const auto& some : byCost) found.insert(found.end(), some.begin(), some.end());
    return found;
}

// ---- completion -------------------------------------------------------------------------------------------------

std::string PatchCatalogue::complete(std::string_view query, const PatchFilter& filter,
                                     const std::vector<std::uint32_t>& recent) const {
    auto words = searchWords(query);
    if (words.empty()) return {};
    const std::vector<std::uint32_t> found = search(query, filter, recent);
    if (!found.empty() && titleAt(found[0]).starts_with(joinWords(words))) return patches_[found[0]].name;
    // The word that most patches have.
    std::string& last = words.back().text;
    std::size_t best = innerStarts_.size();
    const auto patchesWith = [&](std::size_t word) { return postingStarts_[word + 1] - postingStarts_[word]; };
    visitOccurrences(last, [&](std::size_t word, std::size_t at) {
        if (at == 0 && (best == innerStarts_.size() || patchesWith(word) > patchesWith(best))) best = word;
        return true;
    });
    if (best == innerStarts_.size()) return {};
    last = wordAt(best);
    return joinWords(words);
}

}  // namespace vantoric
