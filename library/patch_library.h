// The lists of categories and patches that a user chooses from, and where in them the user stands.
#pragma once

#include <string>
#include <vector>

namespace vantoric {

// Brings a patch of the lists into the engine.
class ListedPatchLoader {
public:
    // Loads a patch of a category (its folder's name). False, with the patch in force as it was, if it could not be loaded;
    // the user has been told.
    virtual bool loadListed(const std::string& category, const std::string& name) = 0;

protected:
    ~ListedPatchLoader() = default;
};

// The name of the category after all others: it stands for patches that are in no list.
inline constexpr char customCategory[] = "Custom";

// A place in the lists; -2: none. A patch of -1 stands before the first. Where the patch that was selected is gone, its
// place is that of the one that followed it.
struct PatchSelection {
    static constexpr int none = -2;
    int category = none, patch = none;
    bool isGone = false;
    bool operator==(const PatchSelection&) const = default;
};

// The folders below the sounds folder and their patches, scanned when asked for and not watched. On one thread, that of the
// window. Folders may vanish, names may hold any bytes: a missing folder is an empty list.
class PatchLibrary {
public:
    static constexpr std::size_t mostCategories = 250;  // that a name is looked up in
    static constexpr std::size_t mostPatches = 2047;    // of a list

    // The loader must outlive it. No list is scanned yet.
    explicit PatchLibrary(ListedPatchLoader& loader) : loader_(loader) {}

    // All categories in order, "Custom" last. The category of the selection stays by its name. Returns their number.
    int scanCategories();
    // The patches of a category; -1: of the one that is listed. The selection stays by its name, and by its place where the
    // patch is gone.
    void scanPatches(int category);
    // Selects the first patch of exactly this name, in the order of the categories; none if there is no such patch. Does
    // nothing while a patch of the lists is being loaded.
    void findPatch(const std::string& name);
    // Loads the selected patch. False if there is none at the place, or it could not be loaded.
    bool loadSelectedPatch();
    // Loads a patch of the listed category that is beyond the most that a list shows; steps go on from the list's end. False
    // if there is no such file, or it could not be loaded.
    bool loadBeyondList(const std::string& name);

    // To the next or previous patch and, past the ends of a list, category; from no selection or "Custom" to the first
    // patch of all. An empty category is stepped to all the same. Return whether a patch was loaded.
    bool nextPatch();
    bool previousPatch();

    // As scanned last. Categories end with "Custom".
    const std::vector<std::string>& categoryNames() const { return categories_; }
    const std::vector<std::string>& patchNames() const { return patches_; }
    PatchSelection selection() const { return selection_; }
    // The category whose patches are listed; -2: none.
    int listedCategory() const { return listed_; }
    // Counts the scans of patches, so that a follower of the list knows when to look again.
    unsigned patchScans() const { return scans_; }
    // Selects places, in or beyond the lists, and lists the category's patches.
    void select(PatchSelection selection);
    // Selects a patch of the listed category, by its place or its name (its first one if there is none of the name).
    void selectPatch(int patch);
    void selectPatch(const std::string& name);
    // Selects a patch of a category, also one that is beyond the list. False, with the selection as it was, if there is none.
    bool selectPatch(const std::string& category, const std::string& name);
    // The file of a patch was deleted: if it was the selected one, the step to the next goes to the one that followed it.
    // Before the list is scanned anew.
    void noteDeleted(const std::string& category, const std::string& name);
    // The patch in force is in no list.
    void selectNone() { selection_ = {}; }

    // Names of the selection: "Custom" and an empty text for none.
    std::string selectedCategory() const;
    std::string selectedPatch() const;

    // While it stands, findPatch does nothing: who loads a patch by its place knows where it is.
    class Loading {
    public:
        explicit Loading(PatchLibrary& library) : library_(library) { ++library_.loading_; }
        ~Loading() { --library_.loading_; }
        Loading(const Loading&) = delete;
        Loading& operator=(const Loading&) = delete;

    private:
        PatchLibrary& library_;
    };

private:
    int placeOf(const std::string& patch) const;
    std::string categoryName(int category) const;
    bool isCustom(int category) const;
    bool loadFirst(int category, bool last);

    ListedPatchLoader& loader_;
    std::vector<std::string> categories_, patches_;
    PatchSelection selection_;
    int listed_ = PatchSelection::none;
    int loading_ = 0;
    unsigned scans_ = 0;
};

// The single cycles of the wavetable folder, in order, without ".wav".
std::vector<std::string> wavetableNames();

}  // namespace vantoric
