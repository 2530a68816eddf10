// The patch browser as it lies over the window, below the band.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "editor/browser_model.h"
#include "editor/layer_view.h"
#include "editor/line_edit.h"
#include "editor/panel_parts.h"

namespace vantoric {

// Categories at the left, the patches of one in columns, each with its stars; a click loads and leaves the browser open. What
// is typed finds patches of all categories.
//
// Keys: arrows go through the patches, each sounding at once - where a layer waits for its patch each in that layer, until
// Enter keeps the one that sounds; Enter loads again else; "+" and "-" rate; F2 writes tags; "[" and "]" step;
// letters and "/" search, where Tab completes; Tab goes to the next part; Escape clears the search, then closes; a layer
// that still waits is as it was before the first patch that was tried there. Space is left to the host.
class BrowserView : public LayerView {
public:
    // The model outlives it. `closed` is called once, with the view still there.
    BrowserView(const VSTGUI::CRect& area, BrowserModel& model, std::function<void()> closed);
    // Who shows where tags and author of a patch are written.
    void setNotesWanted(std::function<void(const BrowserPatch& patch)> wanted) { notesWanted_ = std::move(wanted); }

    void onKey(VSTGUI::KeyboardEvent& event) override;
    void dismiss() override;
    void follow() override;

    void draw(VSTGUI::CDrawContext* context) override;
    void onMouseDownEvent(VSTGUI::MouseDownEvent& event) override;
    void onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) override;
    void onMouseExitEvent(VSTGUI::MouseExitEvent& event) override;
    void onMouseUpEvent(VSTGUI::MouseUpEvent& event) override;
    void onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) override;
    void onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) override;

    // For tests.
    const std::vector<BrowserPatch>& rows() const { return rows_; }
    const std::string& query() const { return search_.text(); }
    // What stands where a list is empty.
    std::string emptyWords() const;
    int selected() const { return selected_; }
    bool isSearching() const { return !search_.text().empty() || filters_.any(); }
    VSTGUI::CRect rowRect(int row) const;
    VSTGUI::CRect starRect(int row, int star) const;
    VSTGUI::CRect categoryRect(int row) const;
    VSTGUI::CRect chipRect(int chip) const;
    VSTGUI::CRect previousRect() const, nextRect() const, tagsRect() const;

    CLASS_METHODS_NOCOPY(BrowserView, VSTGUI::CView)

private:
    static constexpr int chips = 4;
    enum class Part { none, search, clear, chip, close, category, patch, star, tags, previous, next };
    struct Hit {
        Part part = Part::none;
        int row = -1, star = 0;
        friend bool operator==(const Hit&, const Hit&) = default;
    };
    // What keys go to: the search line, the list, the categories, a filter.
    enum class Focus { search, list, categories, chip };

    // ---- what is shown
    void read();
    void setSearch();
    void scrollBars();
    int rowsPerColumn() const;
    bool isPlaying(const BrowserPatch& patch) const;

    // ---- where
    VSTGUI::CRect searchRect() const, closeRect() const, clearRect() const, listRect() const, categoriesRect() const;
    Hit hit(VSTGUI::CPoint where) const;
    VSTGUI::CRect areaOf(const Hit& hit) const;
    void hover(const Hit& over);
    void revealSelected();

    // ---- what is done
    void act(const Hit& target);
    void play(int row);
    void tryOut(int row);
    void writeNotes(int row);
    void rate(int row, int stars);
    void rateBy(int stars);
    void openCategory(int row);
    void step(bool forward);
    void toggle(int chip);
    bool& filter(int chip);
    void clearSearch();
    void leave();
    void setFocus(Focus focus, int chip = 0);
    void focusNext(bool forward);
    void moveTo(int row);
    void onSearchKey(VSTGUI::KeyboardEvent& event);
    void onListKey(VSTGUI::KeyboardEvent& event);
    void onCategoriesKey(VSTGUI::KeyboardEvent& event);
    void onCharacter(VSTGUI::KeyboardEvent& event);
    void complete();

    // ---- drawing
    void drawHead(Pen& pen) const;
    void drawCategories(Pen& pen) const;
    void drawCategory(Pen& pen, int row, const VSTGUI::CRect& area) const;
    void drawPatches(Pen& pen) const;
    void drawPatch(Pen& pen, int row, const VSTGUI::CRect& area) const;
    void drawStars(Pen& pen, int row, const VSTGUI::CRect& area, const Color& ground) const;
    void drawFoot(Pen& pen) const;
    void drawStep(Pen& pen, const VSTGUI::CRect& area, bool forward) const;
    void drawTagsButton(Pen& pen) const;
    bool hasCaret() const;
    void refresh() { invalidRect(panel_); }

    BrowserModel& model_;
    std::function<void()> closed_;
    std::function<void(const BrowserPatch&)> notesWanted_;
    VSTGUI::CRect panel_;

    unsigned revision_ = 0;
    std::vector<BrowserCategory> categories_;
    std::vector<BrowserPatch> rows_;  // of the category, or what was found
    BrowserPatch playing_;
    BrowserHint hint_;
    int listed_ = -1, selected_ = -1;
    int tried_ = -1;  // the row that sounds on trial in the layer that waits
    bool isReading_ = false;

    LineEdit search_{120};
    std::string completed_;  // what Tab makes of the query
    BrowserFilters filters_;
    std::array<double, chips> chipWidths_{};

    Focus focus_ = Focus::list;
    int focusedChip_ = 0;
    bool isByKeys_ = false;  // the focus shows only then
    ScrollBar listBar_, categoriesBar_;
    Hit hovered_, pressed_;
    unsigned rounds_ = 0;
};

}  // namespace vantoric
