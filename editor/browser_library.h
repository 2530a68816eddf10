// The instrument's library as the patch browser sees it.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "editor/browser_model.h"
#include "library/history.h"
#include "library/on_show.h"
#include "library/patch_browser.h"
#include "library/patch_index.h"
#include "library/patch_library.h"
#include "library/patch_on_show.h"

namespace vantoric {

// On the thread of the window. A patch that is played here is one of the index's recent ones.
class BrowserLibrary final : public BrowserModel {
public:
    // All outlive it. Without a history what was tried stays.
    BrowserLibrary(PatchLibrary& library, PatchBrowser& browser, PatchOnShow& patch, PatchIndex& index, const OnShow& onShow,
                   History* history = nullptr)
        : library_(library), browser_(browser), patch_(patch), index_(index), onShow_(onShow), history_(history) {}

    void open() override;
    void close() override;
    unsigned revision() override;
    std::vector<BrowserCategory> categories() override;
    int listedCategory() override;
    std::vector<BrowserPatch> patches() override;
    BrowserPatch playing() override;
    BrowserHint hint() override;

    void clickCategory(int row) override;
    void clickPatch(int row) override;
    void clickStar(int row, int star) override;
    void clickNext() override;
    void clickPrevious() override;
    void callOffLoad() override { browser_.callOffLoad(); }
    void takeBackTried() override;

    BrowserNotes notes(const BrowserPatch& patch) override;
    void writeNotes(const BrowserPatch& patch, const BrowserNotes& notes) override;
    std::vector<BrowserPatch> search(const std::string& query, const BrowserFilters& filters) override;
    std::string complete(const std::string& query, const BrowserFilters& filters) override;
    bool isReading() override { return index_.generation() == 0 && index_.isScanning(); }
    void playFound(const BrowserPatch& patch) override;
    void rateFound(const BrowserPatch& patch, int stars) override;
    void tryPatch(int row) override;
    void tryFound(const BrowserPatch& patch) override;
    void tryNext(bool forward) override;

private:
    using Place = std::pair<std::string, std::string>;  // category, name
    // What a change of shows.
    struct State {
        unsigned scans = 0, generation = 0, ratings = 0;
        std::size_t categories = 0;
        int listed = -1, loadTarget = 0;
        bool isReading = false;
        std::string category, name;
        bool operator==(const State&) const = default;
    };

    // The state of the patch before the first one was tried in a layer that waits.
    struct Tried {
        unsigned armed;  // see OnShow
        std::uint64_t before;
    };

    void noteTrial();
    std::string categoryName(int row) const;
    int rowOfCategory(const std::string& name) const;
    bool list(const std::string& category);
    void countPatches();
    void notePlayed();
    void forgetKnown();

    PatchLibrary& library_;
    PatchBrowser& browser_;
    PatchOnShow& patch_;
    PatchIndex& index_;
    const OnShow& onShow_;
    History* history_;
    std::optional<Tried> tried_;

    PatchSelection opened_;     // the selection when the browser came up
    std::string openedListed_;  // and the category that was listed
    State state_;
    unsigned revision_ = 0, ratingsGiven_ = 0;
    std::map<std::string, int> counts_;  // patches of each category, as catalogued
    unsigned counted_ = 0;               // the index's generation that they are of
    std::map<Place, int> rated_;         // given here since; the catalogue may not know them yet
    std::map<Place, BrowserNotes> noted_;
};

// Where one of the query's words, or all of it, stands in a name, letter case of A to Z aside: the first byte and the bytes;
// both 0 if none does.
std::pair<std::size_t, std::size_t> matchIn(const std::string& name, const std::string& query);

}  // namespace vantoric
