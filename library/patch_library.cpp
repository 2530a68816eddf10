#include "library/patch_library.h"

#include <algorithm>

#include "library/name_order.h"
#include "patch/patch_file.h"
#include "platform/files.h"
#include "platform/own_files.h"

namespace vantoric {

namespace {

constexpr std::size_t mostWavetables = 2047;

// The two folders that stand behind all others, and the names by which they are sorted.
struct LastFolder {
    const char *name, *sortedAs;
};
constexpr LastFolder lastFolders[] = {{"Favourites", "ZZZF"}, {"User", "ZZZU"}};

bool isPlace(int place, std::size_t count) { return place >= 0 && static_cast<std::size_t>(place) < count; }

// Whether a patch of exactly this name lies in a folder. The name of a patch may hold anything, a path's separators too.
bool holdsPatch(const std::string& category, const std::string& name) {
    if (name.empty() || name.find_first_of(std::string_view("/\\\0", 3)) != std::string::npos) return false;
    const std::string path = patchPath(category, name);
    return platform::exists(path) && !platform::isFolder(path);
}

}  // namespace

int PatchLibrary::scanCategories() {
    const std::string selected = categoryName(selection_.category), listed = categoryName(listed_);
    categories_.clear();
    for (const platform::FolderEntry& entry : platform::listDataFolder(platform::belowSounds()))
        if (entry.isFolder && !entry.name.starts_with('.')) categories_.push_back(entry.name);
    for (const LastFolder& last : lastFolders)
        std::replace(categories_.begin(), categories_.end(), std::string(last.name), std::string(last.sortedAs));
    sortNames(categories_);
    for (const LastFolder& last : lastFolders)
        std::replace(categories_.begin(), categories_.end(), std::string(last.sortedAs), std::string(last.name));
    categories_.emplace_back(customCategory);

    const auto placeOfCategory = [this](const std::string& name) {
        const auto found = std::find(categories_.begin(), categories_.end(), name);
        return name.empty() || found == categories_.end() ? PatchSelection::none : static_cast<int>(found - categories_.begin());
    };
    selection_.category = placeOfCategory(selected);
    if (selection_.category == PatchSelection::none) selection_ = {};
    listed_ = placeOfCategory(listed);
    if (listed_ == PatchSelection::none) scanPatches(listed_);
    return static_cast<int>(categories_.size());
}

void PatchLibrary::scanPatches(int category) {
    ++scans_;
    const std::string selected = selectedPatch();
    if (category != -1) listed_ = isPlace(category, categories_.size()) ? category : PatchSelection::none;
    patches_.clear();
    if (listed_ == PatchSelection::none || isCustom(listed_)) return;
    patches_ = listNames(platform::listDataFolder(platform::belowSounds() + categoryName(listed_)), ".fxp", mostPatches);
    if (selected.empty() || listed_ != selection_.category) return;
    if (const int place = placeOf(selected); place >= 0) selection_.patch = place;
}

void PatchLibrary::findPatch(const std::string& name) {
    if (loading_ > 0) return;
    if (categories_.empty()) scanCategories();
    const int searched = static_cast<int>(std::min(categories_.size() - 1, mostCategories));
    const int listedBefore = listed_;
    for (int category = 0; category < searched; ++category) {
        if (!holdsPatch(categoryName(category), name)) continue;
        scanPatches(category);
        const int place = placeOf(name);
        if (place < 0) continue;
        selection_ = {category, place};
        return;
    }
    scanPatches(listedBefore);
    selection_ = {};
}

bool PatchLibrary::loadSelectedPatch() {
    const std::string name = selectedPatch();
    if (name.empty()) return false;
    const Loading loading(*this);
    return loader_.loadListed(selectedCategory(), name);
}

bool PatchLibrary::loadBeyondList(const std::string& name) {
    const std::string category = categoryName(listed_);
    if (isCustom(listed_) || !holdsPatch(category, name)) return false;
    selection_ = {listed_, static_cast<int>(patches_.size())};
    const Loading loading(*this);
    return loader_.loadListed(category, name);
}

bool PatchLibrary::nextPatch() {
    const int next = selection_.patch + (selection_.isGone ? 0 : 1);
    if (!isCustom(selection_.category) && listed_ == selection_.category && isPlace(next, patches_.size())) {
        selection_ = {selection_.category, next};
        return loadSelectedPatch();
    }
    return loadFirst(isCustom(selection_.category) ? 0 : selection_.category + 1, false);
}

bool PatchLibrary::previousPatch() {
    if (isCustom(selection_.category)) return loadFirst(0, false);
    if (selection_.patch > 0) {
        selection_ = {selection_.category, selection_.patch - 1};
        return loadSelectedPatch();
    }
    // Before the first category comes the last one of the folders.
    const int last = static_cast<int>(categories_.size()) - 2;
    return loadFirst(selection_.category > 0 ? selection_.category - 1 : last, true);
}

bool PatchLibrary::loadFirst(int category, bool last) {
    if (categories_.empty()) scanCategories();
    select({category, 0});
    if (last && !patches_.empty()) selection_.patch = static_cast<int>(patches_.size()) - 1;
    return loadSelectedPatch();
}

void PatchLibrary::select(PatchSelection selection) {
    selection_ = {};
    scanPatches(selection.category);
    selection_ = selection;
}

void PatchLibrary::selectPatch(int patch) { selection_ = {listed_, patch}; }

void PatchLibrary::selectPatch(const std::string& name) { selectPatch(std::max(0, placeOf(name))); }

bool PatchLibrary::selectPatch(const std::string& category, const std::string& name) {
    if (selectedCategory() == category && selectedPatch() == name) return true;
    if (!holdsPatch(category, name)) return false;
    const auto rowOf = [this, &category] { return std::find(categories_.begin(), categories_.end(), category); };
    if (rowOf() == categories_.end()) scanCategories();
    if (rowOf() == categories_.end() || isCustom(static_cast<int>(rowOf() - categories_.begin()))) return false;
    select({static_cast<int>(rowOf() - categories_.begin()), 0});
    const int place = placeOf(name);
    selection_.patch = place >= 0 ? place : static_cast<int>(patches_.size());
    return true;
}

int PatchLibrary::placeOf(const std::string& patch) const {
    const auto found = std::find(patches_.begin(), patches_.end(), patch);
    return found != patches_.end() ? static_cast<int>(found - patches_.begin()) : PatchSelection::none;
}

void PatchLibrary::noteDeleted(const std::string& category, const std::string& name) {
    if (!selection_.isGone && selectedCategory() == category && selectedPatch() == name) selection_.isGone = true;
}

bool PatchLibrary::isCustom(int category) const {
    return !isPlace(category, categories_.size()) || static_cast<std::size_t>(category) + 1 == categories_.size();
}

std::string PatchLibrary::categoryName(int category) const {
    return isPlace(category, categories_.size()) ? categories_[static_cast<std::size_t>(category)] : std::string();
}

std::string PatchLibrary::selectedCategory() const {
    return isCustom(selection_.category) ? customCategory : categoryName(selection_.category);
}

std::string PatchLibrary::selectedPatch() const {
    const bool isListed = !selection_.isGone && listed_ == selection_.category && isPlace(selection_.patch, patches_.size());
    return isListed ? patches_[static_cast<std::size_t>(selection_.patch)] : std::string();
}

std::vector<std::string> wavetableNames() {
    return listNames(platform::listDataFolder(platform::belowWavetables()), ".wav", mostWavetables);
}

}  // namespace vantoric
