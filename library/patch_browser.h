// What the patch browser does with a click, wherever it is drawn.
#pragma once

#include "library/category_hint.h"
#include "library/on_show.h"
#include "library/patch_library.h"
#include "library/rank_file.h"

namespace vantoric {

// On the thread of the window. Rows that are not in the lists are ignored. A failed load is told by the loader; the click
// selects its patch all the same.
class PatchBrowser {
public:
    // Library and record outlive it.
    PatchBrowser(PatchLibrary& library, OnShow& onShow) : library_(library), onShow_(onShow) {}

    // The browser is shown: reads the stars of the listed category.
    void open();

    // A click on a category: lists it and loads its first patch, if it has one, to the load target if one is set. All tell
    // whether a patch was loaded.
    bool clickCategory(int row);
    // A click on a patch: loads it, to the layer that is the load target if one is set.
    bool clickPatch(int row);
    // A click on star 1 to 5 of a patch, others are held to these: rates it and writes the stars of the category.
    void clickStar(int row, int star);
    // The arrows.
    bool clickNext();
    bool clickPrevious();
    // No patch is waited for any more that is to go to a layer.
    void callOffLoad() { onShow_.loadTarget = 0; }

    // One for each of the library's patch names.
    const Ratings& ratings();
    // For the listed category; while a load target is set, for that.
    CategoryHint hint() const;

    // While it stands, what loads to a layer leaves the load target set.
    class Trial {
    public:
        explicit Trial(PatchBrowser& browser) : browser_(browser), target_(browser.onShow_.loadTarget) {}
        ~Trial() { browser_.onShow_.loadTarget = target_; }
        Trial(const Trial&) = delete;
        Trial& operator=(const Trial&) = delete;

    private:
        PatchBrowser& browser_;
        int target_;
    };

private:
    std::string listedName() const;

    PatchLibrary& library_;
    OnShow& onShow_;
    Ratings ratings_;
    unsigned scanRated_ = 0;  // the library's scan that they belong to
};

}  // namespace vantoric
