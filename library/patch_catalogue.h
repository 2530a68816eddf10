// All patches of the library at one moment, made to be searched while somebody types.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "library/search_text.h"

namespace vantoric {

struct CataloguedPatch {
    std::string name, category;     // as their file and folder are called
    std::uint8_t stars = 3;         // 1 to 5
    bool isFavourite = false;       // among the favourites, or one of them
    bool isOwn = false;             // of the user's folder
    std::vector<std::string> tags;  // these three from the category's sidecar file
    std::string author, about;
};

// What a search leaves out.
struct PatchFilter {
    int fewestStars = 1;
    bool favourites = false, own = false, recent = false;
    std::optional<std::string> category;
};

// Is the same once it is made: any threads may search at a time. Indices are those of `patches`.
class PatchCatalogue {
public:
    PatchCatalogue() : PatchCatalogue(std::vector<CataloguedPatch>()) {}
    // Sorts them by name, then category (see standsBefore). At most 2^28. May throw std::bad_alloc.
    explicit PatchCatalogue(std::vector<CataloguedPatch> patches);

    const std::vector<CataloguedPatch>& patches() const { return patches_; }
    // The patch of a category and name.
    std::optional<std::uint32_t> find(const std::string& category, const std::string& name) const;

    // The patches that have every word of the query in their name, category, tags or author: as a word, part of one, or, with
    // four letters or more, with a slip of one letter. A single Latin letter must begin a word. Names that are the query come
    // first, then those that begin with it, then words that begin so, parts, slips; each kind in the catalogue's order, and
    // names before the rest. An empty query finds all. `recent` are the indices that the filter of that name lets pass; with
    // an empty query they give the order.
    std::vector<std::uint32_t> search(std::string_view query, const PatchFilter& filter,
                                      const std::vector<std::uint32_t>& recent = {}) const;

    // What the user is most likely typing: the name that the search finds first, if it begins with the query; else the query
    // with its last word made whole. Empty if nothing begins so.
    std::string complete(std::string_view query, const PatchFilter& filter = {},
                         const std::vector<std::uint32_t>& recent = {}) const;

private:
    enum Match : std::uint8_t { start, part, slip, none };
    static constexpr std::uint8_t unmatched = 255;
    using Costs = std::shared_ptr<const std::vector<std::uint8_t>>;
    struct Posting {
        std::uint32_t patch : 31;
        std::uint32_t isName : 1;
    };
    struct Builder;

    std::string_view wordAt(std::size_t word) const {
        return std::string_view(text_).substr(wordStarts_[word], wordStarts_[word + 1] - wordStarts_[word] - 1);
    }
    std::string_view titleAt(std::size_t patch) const {
        return std::string_view(titles_).substr(titleStarts_[patch], titleStarts_[patch + 1] - titleStarts_[patch]);
    }
    template <class Visit>
    void visitOccurrences(std::string_view sought, Visit&& visit) const;
    void matchWhole(const std::string& query, std::vector<Match>& matches) const;
    template <class Look>
    void visitHalves(const std::string& query, std::size_t half, std::size_t halfBytes, Look&& look) const;
    void matchSlips(const std::string& query, std::vector<Match>& matches) const;
    Costs costsOfWord(const std::string& query) const;
    Costs cachedCosts(const std::string& query) const;
    std::vector<std::uint8_t> costsOf(const std::vector<SearchWord>& query) const;

    std::vector<CataloguedPatch> patches_;
    std::string text_;  // all words, each once and with a zero behind it
    std::vector<std::uint32_t> wordStarts_, postingStarts_;
    std::vector<std::uint64_t> innerStarts_;  // of each word, see SearchWord
    std::vector<Posting> postings_;           // which patches have a word
    std::string titles_;                      // all names, as searched
    std::vector<std::uint32_t> titleStarts_;
    std::unordered_map<std::string, std::uint32_t> places_;

    // Who types a word has typed those before it already.
    mutable std::mutex remembering_;
    mutable std::deque<std::pair<std::string, Costs>> remembered_;
};

}  // namespace vantoric
