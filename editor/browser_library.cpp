#include "editor/browser_library.h"

#include <algorithm>
#include <sstream>

#include "library/rank_file.h"

namespace vantoric {
namespace {

bool isRow(int row, std::size_t count) { return row >= 0 && static_cast<std::size_t>(row) < count; }

std::string lowered(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

}  // namespace

std::pair<std::size_t, std::size_t> matchIn(const std::string& name, const std::string& query) {
    const std::string text = lowered(name), whole = lowered(query);
    if (const std::size_t at = text.find(whole); !whole.empty() && at != std::string::npos) return {at, whole.size()};
    std::istringstream words(whole);
    for (std::string word; words >> word;)
        if (const std::size_t at = text.find(word); at != std::string::npos) return {at, word.size()};
    return {};
}

std::string BrowserLibrary::categoryName(int row) const {
    const auto& names = library_.categoryNames();
    return isRow(row, names.size()) ? names[static_cast<std::size_t>(row)] : "";
}

int BrowserLibrary::rowOfCategory(const std::string& name) const {
    const auto& names = library_.categoryNames();
    const auto found = std::ranges::find(names, name);
    return found == names.end() ? -1 : static_cast<int>(found - names.begin());
}

// ---- what is shown

void BrowserLibrary::open() {
    tried_.reset();
    index_.rescan();  // patches may have been saved, deleted or starred since
    library_.scanCategories();
    opened_ = library_.selection();
    openedListed_ = categoryName(listedCategory());
    browser_.open();
}

void BrowserLibrary::close() {
    if (!library_.selectedPatch().empty() || library_.selection() == opened_) return;
    if (const int listed = rowOfCategory(openedListed_); listed >= 0) library_.scanPatches(listed);
    patch_.select();
}

unsigned BrowserLibrary::revision() {
    State now{.scans = library_.patchScans(),
              .generation = index_.generation(),
              .ratings = ratingsGiven_,
              .categories = library_.categoryNames().size(),
              .listed = library_.listedCategory(),
              .loadTarget = onShow_.loadTarget,
              .isReading = isReading(),
              .category = patch_.category(),
              .name = patch_.name()};
    if (now != state_) {
        state_ = std::move(now);
        ++revision_;
    }
    return revision_;
}

void BrowserLibrary::countPatches() {
    if (counted_ == index_.generation()) return;
    counted_ = index_.generation();
    counts_.clear();
    const std::shared_ptr<const PatchCatalogue> catalogue = index_.catalogue();  // lives on when a scan brings the next
    for (const CataloguedPatch& patch : catalogue->patches()) ++counts_[patch.category];
}

std::vector<BrowserCategory> BrowserLibrary::categories() {
    countPatches();
    std::vector<BrowserCategory> result;
    for (const std::string& name : library_.categoryNames()) {
        const auto counted = counts_.find(name);
        result.push_back({name, counted != counts_.end() ? counted->second : counted_ == 0 ? -1 : 0});
    }
    const int listed = listedCategory();
    if (listed < 0) return result;
    const std::size_t shown = library_.patchNames().size();
    int& count = result[static_cast<std::size_t>(listed)].count;
    // A list that is full may not show all that was counted.
    count = shown < PatchLibrary::mostPatches ? static_cast<int>(shown) : std::max(count, static_cast<int>(shown));
    return result;
}

int BrowserLibrary::listedCategory() {
    const int listed = library_.listedCategory();
    return isRow(listed, library_.categoryNames().size()) ? listed : -1;
}

std::vector<BrowserPatch> BrowserLibrary::patches() {
    const std::string category = categoryName(listedCategory());
    const Ratings& ratings = browser_.ratings();
    std::vector<BrowserPatch> result;
    for (const std::string& name : library_.patchNames()) {
        const std::size_t row = result.size();
        result.push_back({category, name, row < ratings.size() ? ratings[row] : starsByDefault});
    }
    return result;
}

BrowserPatch BrowserLibrary::playing() {
    if (patch_.category() == customCategory) return {};
    return {patch_.category(), patch_.name()};
}

BrowserHint BrowserLibrary::hint() {
    const CategoryHint hint = browser_.hint();
    return {hint.text, hint.kind == HintKind::loadToLayer};
}

// ---- clicks

void BrowserLibrary::notePlayed() {
    const std::string name = library_.selectedPatch();
    if (!name.empty()) index_.notePlayed({library_.selectedCategory(), name});
}

// A layer that waits gets the first patch on trial: a category is on the way to the one that is meant, and what is clicked there
// must not replace all layers.
void BrowserLibrary::clickCategory(int row) {
    noteTrial();
    const PatchBrowser::Trial trial(browser_);
    if (browser_.clickCategory(row)) notePlayed();
}

void BrowserLibrary::clickPatch(int row) {
    if (browser_.clickPatch(row)) notePlayed();
}

void BrowserLibrary::clickStar(int row, int star) {
    const auto& names = library_.patchNames();
    if (!isRow(row, names.size())) return;
    browser_.clickStar(row, star);
    rated_[{categoryName(listedCategory()), names[static_cast<std::size_t>(row)]}] = std::clamp(star, fewestStars, mostStars);
    ++ratingsGiven_;
    index_.rescan();
}

void BrowserLibrary::clickNext() {
    if (browser_.clickNext()) notePlayed();
}

void BrowserLibrary::clickPrevious() {
    if (browser_.clickPrevious()) notePlayed();
}

// ---- what is written about patches

namespace {

std::string joined(const std::vector<std::string>& tags) {
    std::string all;
    for (const std::string& tag : tags) all += (all.empty() ? "" : ", ") + tag;
    return all;
}

// What stands between the commas, each once and without the blanks around it.
std::vector<std::string> partsOf(const std::string& tags) {
    std::vector<std::string> parts;
    std::istringstream all(tags);
    for (std::string part; std::getline(all, part, ',');) {
        const std::size_t first = part.find_first_not_of(" \t"), last = part.find_last_not_of(" \t");
        if (first == std::string::npos) continue;
        part = part.substr(first, last - first + 1);
        if (std::ranges::find(parts, part) == parts.end()) parts.push_back(part);
    }
    return parts;
}

}  // namespace

BrowserNotes BrowserLibrary::notes(const BrowserPatch& patch) {
    forgetKnown();
    if (const auto noted = noted_.find({patch.category, patch.name}); noted != noted_.end()) return noted->second;
    const std::shared_ptr<const PatchCatalogue> catalogue = index_.catalogue();
    const auto found = catalogue->find(patch.category, patch.name);
    if (!found) return {};
    const CataloguedPatch& known = catalogue->patches()[*found];
    return {joined(known.tags), known.author, known.about};
}

void BrowserLibrary::writeNotes(const BrowserPatch& patch, const BrowserNotes& notes) {
    const std::vector<std::string> tags = partsOf(notes.tags);
    noted_[{patch.category, patch.name}] = {joined(tags), notes.author, notes.about};
    index_.write({patch.category, patch.name}, {tags, notes.author, notes.about});
}

// The catalogue knows them by now.
void BrowserLibrary::forgetKnown() {
    if (index_.isScanning()) return;
    rated_.clear();
    noted_.clear();
}

// ---- the search

namespace {

PatchFilter filterOf(const BrowserFilters& filters) {
    constexpr int manyStars = 4;
    PatchFilter filter;
    filter.fewestStars = filters.fourStars ? manyStars : fewestStars;
    filter.favourites = filters.favourites;
    filter.own = filters.mine;
    filter.recent = filters.recent;
    return filter;
}

}  // namespace

std::string BrowserLibrary::complete(const std::string& query, const BrowserFilters& filters) {
    return index_.complete(query, filterOf(filters));
}

std::vector<BrowserPatch> BrowserLibrary::search(const std::string& query, const BrowserFilters& filters) {
    const PatchFilter filter = filterOf(filters);
    forgetKnown();
    std::shared_ptr<const PatchCatalogue> catalogue;
    std::vector<std::uint32_t> indices;
    do {
        catalogue = index_.catalogue();
        indices = index_.search(query, filter);
    } while (catalogue != index_.catalogue());  // a newer one has come meanwhile
    std::vector<BrowserPatch> result;
    for (const std::uint32_t index : indices) {
        const CataloguedPatch& patch = catalogue->patches()[index];
        const auto [from, bytes] = matchIn(patch.name, query);
        BrowserPatch found{patch.category, patch.name, patch.stars, from, bytes};
        if (const auto rated = rated_.find({patch.category, patch.name}); rated != rated_.end()) found.stars = rated->second;
        result.push_back(std::move(found));
    }
    return result;
}

// Lists a category without loading anything. False if there is no such category.
bool BrowserLibrary::list(const std::string& category) {
    constexpr int beforeFirst = -1;
    if (rowOfCategory(category) < 0) library_.scanCategories();
    const int row = rowOfCategory(category);
    if (row < 0) return false;
    if (row != library_.listedCategory()) library_.select({row, beforeFirst});
    return true;
}

void BrowserLibrary::playFound(const BrowserPatch& patch) {
    if (list(patch.category)) {
        const auto& names = library_.patchNames();
        const auto found = std::ranges::find(names, patch.name);
        if (found != names.end()) return clickPatch(static_cast<int>(found - names.begin()));
        if (library_.loadBeyondList(patch.name)) return index_.notePlayed({patch.category, patch.name});
    }
    index_.rescan();  // it is gone
}

void BrowserLibrary::rateFound(const BrowserPatch& patch, int stars) {
    const auto& listed = library_.patchNames();
    const auto found = patch.category == categoryName(listedCategory()) ? std::ranges::find(listed, patch.name) : listed.end();
    if (found != listed.end()) return clickStar(static_cast<int>(found - listed.begin()), stars);
    if (ratePatch(patch.category, patch.name, stars)) {
        rated_[{patch.category, patch.name}] = std::clamp(stars, fewestStars, mostStars);
        ++ratingsGiven_;
    }
    index_.rescan();
}

// ---- patches on trial

void BrowserLibrary::noteTrial() {
    if (history_ == nullptr || onShow_.loadTarget == 0 || (tried_ && tried_->armed == onShow_.armed)) return;
    history_->follow();
    tried_ = {onShow_.armed, history_->stateId()};
}

void BrowserLibrary::takeBackTried() {
    const bool isTried = tried_ && onShow_.loadTarget != 0 && tried_->armed == onShow_.armed;
    browser_.callOffLoad();
    if (isTried) history_->undoTo(tried_->before);
    tried_.reset();
}

void BrowserLibrary::tryPatch(int row) {
    noteTrial();
    const PatchBrowser::Trial trial(browser_);
    clickPatch(row);
}

void BrowserLibrary::tryFound(const BrowserPatch& patch) {
    noteTrial();
    const PatchBrowser::Trial trial(browser_);
    playFound(patch);
}

void BrowserLibrary::tryNext(bool forward) {
    noteTrial();
    const PatchBrowser::Trial trial(browser_);
    forward ? clickNext() : clickPrevious();
}

}  // namespace vantoric
