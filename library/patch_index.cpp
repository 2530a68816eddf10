#include "library/patch_index.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "library/rank_file.h"
#include "library/text_sections.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"
#include "platform/thread.h"
#include "platform/user_state.h"

namespace vantoric {

namespace {

constexpr char patchExtension[] = ".fxp", notesExtension[] = ".tags";
constexpr char ownCategory[] = "User", favouritesCategory[] = "Favourites", favouritePrefix[] = "Fav";
constexpr std::size_t mostPatches = 1 << 20;

std::string notesPath(const std::string& category) { return platform::soundsFolder() + category + notesExtension; }

// Empty without a state folder.
std::string ownNotesFolder() {
    const std::string folder = platform::stateFolder();
    return folder.empty() ? folder : folder + "tags" + platform::pathSeparator;
}

std::string recentPath() {
    const std::string folder = platform::stateFolder();
    return folder.empty() ? folder : folder + "recent";
}

std::vector<std::string> tagsOf(const std::string& text) {
    std::vector<std::string> tags;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(',', at), text.size());
        std::string tag = text.substr(at, end - at);
        while (!tag.empty() && tag.back() == ' ') tag.pop_back();
        tag.erase(0, std::min(tag.find_first_not_of(' '), tag.size()));
        if (!tag.empty()) tags.push_back(std::move(tag));
        at = end + 1;
    }
    return tags;
}

std::string textOf(const std::vector<std::string>& tags) {
    std::string text;
    for (const std::string& tag : tags) {
        if (!text.empty()) text += ", ";
        for (const char c : tag) text += c == ',' ? ' ' : c;
    }
    return text;
}

// The notes of a category by the patches' names.
using Notes = std::unordered_map<std::string, TextSection>;
Notes notesOf(const std::string& category) {
    Notes notes;
    const auto add = [&](const std::string& path) {
        for (TextSection& section : loadSections(path)) notes[section.name] = std::move(section);
    };
    add(notesPath(category));
    if (const std::string own = ownNotesFolder(); !own.empty()) add(own + category + notesExtension);
    return notes;
}

bool changeNotes(const std::string& path, const PatchPlace& patch, const PatchNotes& notes) {
    TextSections sections = loadSections(path);
    auto section = std::find_if(sections.begin(), sections.end(), [&](const TextSection& s) { return s.name == patch.patch; });
    if (section == sections.end()) section = sections.insert(sections.end(), TextSection{patch.patch, {}});
    section->set("tags", textOf(notes.tags));
    section->set("author", notes.author);
    section->set("about", notes.about);
    return saveSections(path, sections);
}

// `first`, then those of `others` that are not in it.
std::vector<PatchPlace> joined(std::vector<PatchPlace> first, const std::vector<PatchPlace>& others) {
    for (const PatchPlace& place : others)
        if (std::find(first.begin(), first.end(), place) == first.end()) first.push_back(place);
    if (first.size() > PatchIndex::mostRecent) first.resize(PatchIndex::mostRecent);
    return first;
}

std::vector<PatchPlace> loadRecent() {
    std::vector<PatchPlace> recent;
    if (recentPath().empty()) return recent;
    for (const TextSection& section : loadSections(recentPath()))
        if (recent.size() < PatchIndex::mostRecent) recent.push_back({section.valueOf("category"), section.name});
    return recent;
}

void saveRecent(const std::vector<PatchPlace>& recent) {
    const std::string folder = platform::stateFolder();
    if (folder.empty() || !platform::makeFolder(folder)) return;
    TextSections sections;
    for (const PatchPlace& place : recent) sections.push_back({place.patch, {{"category", place.category}}});
    saveSections(recentPath(), sections);
}

// What a user saved: all in "User", and of other categories what lies in a folder of the user's own over the installation.
std::unordered_set<std::string> ownNamesIn(const std::string& category) {
    std::unordered_set<std::string> names;
    if (platform::ownFolder() == platform::dataFolder() || category == favouritesCategory) return names;
    platform::visitFolder(platform::ownPath(platform::belowSounds() + category),
                          [&](platform::FolderEntry&& entry) { return names.insert(std::move(entry.name)), true; });
    return names;
}

// A copy among the favourites has a name of its own.
void markFavourites(std::vector<CataloguedPatch>& patches) {
    std::unordered_set<std::string> favourites;
    for (const CataloguedPatch& patch : patches)
        if (patch.category == favouritesCategory) favourites.insert(patch.name);
    for (CataloguedPatch& patch : patches)
        patch.isFavourite = patch.category == favouritesCategory || favourites.contains(favouritePrefix + patch.name);
}

}  // namespace

PatchIndex::PatchIndex(Messages& messages) : messages_(messages) {
    thread_ = std::thread([this] { run(); });
}

PatchIndex::~PatchIndex() {
    {
        const std::lock_guard guard(mutex_);
        stops_ = true;
    }
    work_.notify_one();
    thread_.join();
}

// ---- the window's side ------------------------------------------------------------------------------------------

void PatchIndex::rescan() {
    {
        const std::lock_guard guard(mutex_);
        again_ = true;
        due_ = true;
    }
    work_.notify_one();
}

std::shared_ptr<const PatchCatalogue> PatchIndex::catalogue() const {
    const std::lock_guard guard(mutex_);
    return catalogue_;
}

std::vector<std::uint32_t> PatchIndex::recentIn(const PatchCatalogue& catalogue) const {
    std::vector<std::uint32_t> indices;
    for (const PatchPlace& place : recent())
        if (const auto index = catalogue.find(place.category, place.patch)) indices.push_back(*index);
    return indices;
}

std::vector<std::uint32_t> PatchIndex::search(std::string_view query, const PatchFilter& filter) const {
    const auto all = catalogue();
    return all->search(query, filter, filter.recent ? recentIn(*all) : std::vector<std::uint32_t>());
}

std::string PatchIndex::complete(std::string_view query, const PatchFilter& filter) const {
    const auto all = catalogue();
    return all->complete(query, filter, filter.recent ? recentIn(*all) : std::vector<std::uint32_t>());
}

void PatchIndex::write(const PatchPlace& patch, const PatchNotes& notes) {
    {
        const std::lock_guard guard(mutex_);
        writings_.push_back({patch, notes});
    }
    rescan();
}

void PatchIndex::notePlayed(const PatchPlace& patch) {
    {
        const std::lock_guard guard(mutex_);
        played_ = joined({patch}, played_);
        recent_ = joined({patch}, recent_);
    }
    work_.notify_one();
}

std::vector<PatchPlace> PatchIndex::recent() const {
    const std::lock_guard guard(mutex_);
    return recent_;
}

// ---- the thread -------------------------------------------------------------------------------------------------

// What the user did is written also when the end has come; a scan is not begun any more. With short memory what could not
// be done is left until it is asked for again; what is taken over here allocates nothing.
void PatchIndex::run() {
    platform::setLowPriority();
    keepRecent({});
    std::unique_lock lock(mutex_);
    for (;;) {
        work_.wait(lock, [this] { return stops_ || due_ || !played_.empty(); });
        const std::vector<Writing> writings = std::exchange(writings_, {});
        std::vector<PatchPlace> played = std::exchange(played_, {});
        const bool isDue = due_ && !stops_;
        if (stops_ && writings.empty() && played.empty()) return;
        again_ = false;
        lock.unlock();
        for (const Writing& writing : writings) writeNotes(writing);
        if (!played.empty()) keepRecent(std::move(played));
        if (isDue) scan();
        lock.lock();
        if (isDue && !again_) due_ = false;
    }
}

void PatchIndex::tellShortMemory() { messages_.post("Error", notEnoughMemory); }

void PatchIndex::keepRecent(std::vector<PatchPlace> played) try {
    const bool isNew = !played.empty();
    const std::vector<PatchPlace> all = joined(std::move(played), loadRecent());
    if (isNew) saveRecent(all);
    const std::lock_guard guard(mutex_);
    recent_ = joined(played_, all);
} catch (...) {
    tellShortMemory();
}

void PatchIndex::writeNotes(const Writing& writing) try {
    const std::string& category = writing.patch.category;
    if (changeNotes(notesPath(category), writing.patch, writing.notes)) return;
    const std::string own = ownNotesFolder();
    if (!own.empty() && platform::makeFolder(own) && changeNotes(own + category + notesExtension, writing.patch, writing.notes))
        return;
    messages_.post(notesPath(category), "The file can not be written.");
} catch (...) {
    tellShortMemory();
}

void PatchIndex::scan() try {
    std::vector<std::string> categories;
    const auto addCategory = [&](platform::FolderEntry&& entry) {
        if (entry.isFolder && !entry.name.starts_with('.')) categories.push_back(std::move(entry.name));
        return !isStopped();
    };
    platform::visitDataFolder(platform::belowSounds(), addCategory);
    std::vector<CataloguedPatch> patches;
    for (const std::string& category : categories)
        if (!scanCategory(category, patches)) return;
    markFavourites(patches);
    if (isStopped()) return;
    auto fresh = std::make_shared<const PatchCatalogue>(std::move(patches));
    const std::lock_guard guard(mutex_);
    catalogue_ = std::move(fresh);
    generation_.fetch_add(1, std::memory_order_release);
} catch (...) {
    tellShortMemory();
}

// False if the scan is to stop.
bool PatchIndex::scanCategory(const std::string& category, std::vector<CataloguedPatch>& patches) const {
    std::vector<std::string> names;
    const auto addPatch = [&](platform::FolderEntry&& entry) {
        if (!entry.isFolder && entry.name.size() > sizeof patchExtension - 1 && entry.name.ends_with(patchExtension) &&
            patches.size() + names.size() < mostPatches) {
            entry.name.resize(entry.name.size() - sizeof patchExtension + 1);
            names.push_back(std::move(entry.name));
        }
        return !isStopped();
    };
    platform::visitDataFolder(platform::belowSounds() + category, addPatch);
    if (isStopped()) return false;
    const Ratings ratings = loadRanks(category, names);
    const Notes notes = notesOf(category);
    const std::unordered_set<std::string> own = ownNamesIn(category);
    for (std::size_t i = 0; i < names.size(); ++i) {
        CataloguedPatch patch;
        patch.category = category;
        patch.stars = ratings[i];
        patch.isOwn = category == ownCategory || own.contains(names[i] + patchExtension);
        if (const auto note = notes.find(names[i]); note != notes.end()) {
            patch.tags = tagsOf(note->second.valueOf("tags"));
            patch.author = note->second.valueOf("author");
            patch.about = note->second.valueOf("about");
        }
        patch.name = std::move(names[i]);
        patches.push_back(std::move(patch));
    }
    return !isStopped();
}

}  // namespace vantoric
