// What the patch browser shows and does, apart from how it looks.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vantoric {

struct BrowserCategory {
    std::string name;
    int count = -1;  // of its patches; -1: not counted yet
    friend bool operator==(const BrowserCategory&, const BrowserCategory&) = default;
};

struct BrowserPatch {
    std::string category, name;
    int stars = 3;                           // 1 to 5
    std::size_t matchFrom = 0, matched = 0;  // the bytes of the name that were searched for
    friend bool operator==(const BrowserPatch&, const BrowserPatch&) = default;
};

// What a user writes about a patch.
struct BrowserNotes {
    std::string tags;  // parted by commas
    std::string author, about;
    friend bool operator==(const BrowserNotes&, const BrowserNotes&) = default;
};

struct BrowserFilters {
    bool favourites = false, fourStars = false, recent = false, mine = false;
    bool any() const { return favourites || fourStars || recent || mine; }
    friend bool operator==(const BrowserFilters&, const BrowserFilters&) = default;
};

struct BrowserHint {
    std::string text;
    bool isTarget = false;  // it tells the layer that the next patch goes to
    friend bool operator==(const BrowserHint&, const BrowserHint&) = default;
};

// On the thread of the window. Rows beyond the lists are ignored. Nothing here waits for a disk longer than one folder takes.
class BrowserModel {
public:
    virtual ~BrowserModel() = default;

    // The browser comes up: categories and stars are read anew.
    virtual void open() = 0;
    // The browser goes away: where a category was chosen that nothing could be loaded from, the lists go back to the patch in
    // force.
    virtual void close() = 0;
    // Another number whenever anything that is told here may have changed, by whomever. Asked some twenty times a second.
    virtual unsigned revision() = 0;

    // The categories in order, "Custom" last, and the row of the one that is listed; -1 for none.
    virtual std::vector<BrowserCategory> categories() = 0;
    virtual int listedCategory() = 0;
    // The patches of the listed category, in order.
    virtual std::vector<BrowserPatch> patches() = 0;
    // The patch in force, if it is one of the library's; an empty name otherwise.
    virtual BrowserPatch playing() = 0;
    virtual BrowserHint hint() = 0;

    // Clicks on a category, a patch of the listed category and one of its stars, 1 to 5; the two arrows.
    virtual void clickCategory(int row) = 0;
    virtual void clickPatch(int row) = 0;
    virtual void clickStar(int row, int star) = 0;
    virtual void clickNext() = 0;
    virtual void clickPrevious() = 0;

    // What is written about a patch, and that something else is: the search knows it at once.
    virtual BrowserNotes notes(const BrowserPatch& patch) = 0;
    virtual void writeNotes(const BrowserPatch& patch, const BrowserNotes& notes) = 0;
    // A patch that was to go to a layer is not waited for any more. What was tried there since the browser came up stays, or
    // is taken back.
    virtual void callOffLoad() = 0;
    virtual void takeBackTried() = 0;

    // Patches of all categories that fit the words and the filters, the best first. An empty query fits all.
    virtual std::vector<BrowserPatch> search(const std::string& query, const BrowserFilters& filters) = 0;
    // What the user is most likely typing: the query made whole, as the first patch of the search has it; empty if there is
    // nothing.
    virtual std::string complete(const std::string& query, const BrowserFilters& filters) = 0;
    // Whether the library is still being read for the search.
    virtual bool isReading() = 0;
    // Loads and rates a patch that was found.
    virtual void playFound(const BrowserPatch& patch) = 0;
    virtual void rateFound(const BrowserPatch& patch, int stars) = 0;

    // Load as a click, the search and the arrows do, but a layer that waits for its patch goes on waiting: a user who goes
    // through patches for a layer hears each of them there.
    virtual void tryPatch(int row) = 0;
    virtual void tryFound(const BrowserPatch& patch) = 0;
    virtual void tryNext(bool forward) = 0;
};

}  // namespace vantoric
