#include "editor/browser_view.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "editor/file_list.h"
#include "editor/overlay.h"

namespace vantoric {

using style::Face;
using VSTGUI::CPoint;
using VSTGUI::CRect;
using VSTGUI::VirtualKey;

namespace {

constexpr double sideWidth = 192, headHeight = 44, footHeight = 34;
constexpr double categoryHeight = 16.1, patchHeight = 23.6, columnWidth = 320, starPitch = 11, barWidth = 4;
constexpr int columns = 3;
constexpr double nameSize = 10.5;
constexpr unsigned caretRounds = 10;  // of `follow`: half a second
constexpr std::array chipLabels{"Favourites", "4 stars and up", "Recent", "Mine"};

// "2,010"
std::string counted(std::size_t number) {
    std::string text = std::to_string(number);
    for (int at = static_cast<int>(text.size()) - 3; at > 0; at -= 3) text.insert(static_cast<std::size_t>(at), 1, ',');
    return text;
}

// Whether what Tab makes of a query begins with it, but for capitals.
bool goesOn(const std::string& query, const std::string& completed) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return completed.size() >= query.size() &&
           std::equal(query.begin(), query.end(), completed.begin(), [&](char a, char b) { return lower(a) == lower(b); });
}

// What stands behind the query for it: its rest, or all of it if it begins otherwise.
std::string completionShown(const std::string& query, const std::string& completed) {
    return goesOn(query, completed) ? completed.substr(query.size()) : "  " + completed;
}

}  // namespace

BrowserView::BrowserView(const CRect& area, BrowserModel& model, std::function<void()> closed)
    : LayerView(area), model_(model), closed_(std::move(closed)) {
    setTransparency(true);
    panel_ = CRect(area).inset(10, 8);
    for (std::size_t chip = 0; chip < chips; ++chip) chipWidths_[chip] = chipWidth(chipLabels[chip]);
    model_.open();
    read();
    if (listed_ >= 0) categoriesBar_.reveal(categoryHeight * listed_, categoryHeight * (listed_ + 1));
    for (int row = 0; row < static_cast<int>(rows_.size()); ++row)
        if (isPlaying(rows_[static_cast<std::size_t>(row)])) selected_ = row;
    revealSelected();
}

// ---- what is shown

void BrowserView::read() {
    revision_ = model_.revision();
    categories_ = model_.categories();
    listed_ = model_.listedCategory();
    playing_ = model_.playing();
    hint_ = model_.hint();
    isReading_ = model_.isReading();
    rows_ = isSearching() ? model_.search(search_.text(), filters_) : model_.patches();
    selected_ = std::min(selected_, static_cast<int>(rows_.size()) - 1);
    scrollBars();
    invalid();
}

void BrowserView::setSearch() {
    rounds_ = 0;
    completed_ = search_.text().empty() ? "" : model_.complete(search_.text(), filters_);
    if (completed_.size() == search_.text().size() && goesOn(search_.text(), completed_)) completed_.clear();
    listBar_.scrollTo(0);
    selected_ = tried_ = -1;
    read();
    if (!isSearching()) {
        for (int row = 0; row < static_cast<int>(rows_.size()); ++row)
            if (isPlaying(rows_[static_cast<std::size_t>(row)])) selected_ = row;
        revealSelected();
    }
}

int BrowserView::rowsPerColumn() const {
    return std::max(1, static_cast<int>(std::lround(listRect().getHeight() / patchHeight)));
}

void BrowserView::scrollBars() {
    const CRect list = listRect(), side = categoriesRect();
    const int needed = (static_cast<int>(rows_.size()) + rowsPerColumn() - 1) / rowsPerColumn();
    listBar_.setPlace({list.left, list.bottom + 4, list.right, list.bottom + 4 + barWidth}, columnWidth * needed,
                      columnWidth * columns);
    categoriesBar_.setPlace({side.right + 1, side.top, side.right + 1 + barWidth, side.bottom},
                            categoryHeight * static_cast<double>(categories_.size()) + 3, side.getHeight());
}

bool BrowserView::isPlaying(const BrowserPatch& patch) const {
    return !playing_.name.empty() && patch.name == playing_.name && patch.category == playing_.category;
}

std::string BrowserView::emptyWords() const {
    if (isReading_ && isSearching()) return "Looking through the library \u2026";
    if (!search_.text().empty())
        return "Nothing fits \u201c" + shownName(search_.text()) + "\u201d. Fewer letters or filters find more.";
    if (filters_.any()) return "No patch fits these filters yet.";
    if (categories_.size() <= 1) return "There are no patch folders yet. Patches that you save make them.";
    if (listed_ >= 0 && categories_[static_cast<std::size_t>(listed_)].name == "Custom")
        return playing_.name.empty() ? "The patch in force is in no category. Choose one at the left."
                                     : "This stands for patches in no category. The one in force is in \u201c" +
                                           shownName(playing_.category) + "\u201d.";
    return "No patches are in this category yet.";
}

// ---- where

CRect BrowserView::searchRect() const { return {panel_.left + 204, panel_.top + 10, panel_.left + 534, panel_.top + 34}; }
CRect BrowserView::clearRect() const {
    return {searchRect().right - 24, searchRect().top, searchRect().right, searchRect().bottom};
}
CRect BrowserView::closeRect() const { return {panel_.right - 32, panel_.top + 10, panel_.right - 8, panel_.top + 34}; }
CRect BrowserView::categoriesRect() const { return {panel_.left + 6, panel_.top + 40, panel_.left + 185, panel_.bottom - 8}; }
CRect BrowserView::previousRect() const { return {panel_.right - 150, panel_.bottom - 28, panel_.right - 84, panel_.bottom - 8}; }
CRect BrowserView::tagsRect() const { return {panel_.right - 206, panel_.bottom - 28, panel_.right - 158, panel_.bottom - 8}; }
CRect BrowserView::nextRect() const { return {panel_.right - 76, panel_.bottom - 28, panel_.right - 10, panel_.bottom - 8}; }

CRect BrowserView::listRect() const {
    const double left = panel_.left + 204, top = panel_.top + headHeight;
    const double room = panel_.bottom - footHeight - 12 - top;
    return {left, top, left + columnWidth * columns - 8, top + std::floor(room / patchHeight) * patchHeight};
}

CRect BrowserView::chipRect(int chip) const {
    double left = panel_.left + 546;
    for (int before = 0; before < chip; ++before) left += chipWidths_[static_cast<std::size_t>(before)] + 6;
    return {left, panel_.top + 12, left + chipWidths_[static_cast<std::size_t>(chip)], panel_.top + 32};
}

CRect BrowserView::categoryRect(int row) const {
    const CRect side = categoriesRect();
    double top = side.top + categoryHeight * row - categoriesBar_.position();
    const auto favourites =
        std::ranges::find(categories_, std::string("Favourites"), &BrowserCategory::name) - categories_.begin();
    if (row >= favourites) top += 3;  // a line stands above the user's own
    return {side.left, top, side.right - (categoriesBar_.isNeeded() ? 2 : 0), top + categoryHeight - 0.5};
}

CRect BrowserView::rowRect(int row) const {
    const CRect list = listRect();
    const int perColumn = rowsPerColumn();
    const double left = list.left + columnWidth * (row / perColumn) - listBar_.position();
    const double top = list.top + patchHeight * (row % perColumn);
    return {left, top, left + columnWidth - 8, top + patchHeight - 1.6};
}

CRect BrowserView::starRect(int row, int star) const {
    const CRect area = rowRect(row);
    const double x = area.right - 56 + starPitch * (star - 1);
    return {x - starPitch / 2, area.top, x + starPitch / 2, area.bottom};
}

BrowserView::Hit BrowserView::hit(CPoint where) const {
    if (closeRect().pointInside(where)) return {Part::close};
    if (isSearching() && clearRect().pointInside(where)) return {Part::clear};
    if (searchRect().pointInside(where)) return {Part::search};
    if (tagsRect().pointInside(where)) return {Part::tags};
    if (previousRect().pointInside(where)) return {Part::previous};
    if (nextRect().pointInside(where)) return {Part::next};
    for (int chip = 0; chip < chips; ++chip)
        if (chipRect(chip).pointInside(where)) return {Part::chip, chip};
    if (categoriesRect().pointInside(where)) {
        for (int row = 0; row < static_cast<int>(categories_.size()); ++row)
            if (categoryRect(row).pointInside(where)) return {Part::category, row};
        return {};
    }
    if (!listRect().pointInside(where)) return {};
    const int column = static_cast<int>((where.x - listRect().left + listBar_.position()) / columnWidth);
    const int row = column * rowsPerColumn() + static_cast<int>((where.y - listRect().top) / patchHeight);
    if (row >= static_cast<int>(rows_.size()) || !rowRect(row).pointInside(where)) return {};
    for (int star = 1; star <= 5; ++star)
        if (starRect(row, star).pointInside(where)) return {Part::star, row, star};
    return {Part::patch, row};
}

CRect BrowserView::areaOf(const Hit& hit) const {
    switch (hit.part) {
        case Part::none: return {};
        case Part::search:
        case Part::clear: return searchRect();
        case Part::chip: return chipRect(hit.row);
        case Part::close: return closeRect();
        case Part::category: return categoryRect(hit.row);
        case Part::patch:
        case Part::star: return rowRect(hit.row);
        case Part::tags: return tagsRect();
        case Part::previous: return previousRect();
        case Part::next: return nextRect();
    }
    return {};
}

void BrowserView::hover(const Hit& over) {
    if (over == hovered_) return;
    const Hit before = std::exchange(hovered_, over);
    for (const Hit& changed : {before, over})
        if (changed.part != Part::none) invalidRect(areaOf(changed).inset(-3, -3));
}

void BrowserView::revealSelected() {
    if (selected_ < 0) return;
    const double left = columnWidth * (selected_ / rowsPerColumn());
    listBar_.reveal(left, left + columnWidth);
    refresh();
}

// ---- what is done

void BrowserView::play(int row) {
    if (row < 0 || row >= static_cast<int>(rows_.size())) return;
    selected_ = row;
    const BrowserPatch patch = rows_[static_cast<std::size_t>(row)];
    if (hint_.isTarget && row == tried_)
        model_.callOffLoad();  // it is in its layer already
    else
        isSearching() ? model_.playFound(patch) : model_.clickPatch(row);
    tried_ = -1;
    read();
    revealSelected();
}

void BrowserView::tryOut(int row) {
    if (!hint_.isTarget) return play(row);
    selected_ = tried_ = row;
    const BrowserPatch patch = rows_[static_cast<std::size_t>(row)];
    isSearching() ? model_.tryFound(patch) : model_.tryPatch(row);
    read();
    revealSelected();
}

// Of a row, or of the patch in force if there is none.
void BrowserView::writeNotes(int row) {
    const bool isRow = row >= 0 && row < static_cast<int>(rows_.size());
    if (notesWanted_) notesWanted_(isRow ? rows_[static_cast<std::size_t>(row)] : playing_);
}

void BrowserView::rate(int row, int stars) {
    if (row < 0 || row >= static_cast<int>(rows_.size())) return;
    const BrowserPatch patch = rows_[static_cast<std::size_t>(row)];
    isSearching() ? model_.rateFound(patch, stars) : model_.clickStar(row, stars);
    read();
}

// The selected patch gets a star, or loses one.
void BrowserView::rateBy(int stars) {
    if (selected_ < 0 || selected_ >= static_cast<int>(rows_.size())) return;
    rate(selected_, std::clamp(rows_[static_cast<std::size_t>(selected_)].stars + stars, 1, 5));
}

void BrowserView::openCategory(int row) {
    if (row < 0 || row >= static_cast<int>(categories_.size())) return;
    search_.setText("");
    filters_ = {};
    model_.clickCategory(row);
    listBar_.scrollTo(0);
    setSearch();
    categoriesBar_.reveal(categoryHeight * row, categoryHeight * (row + 1) + 3);
}

void BrowserView::step(bool forward) {
    if (isSearching()) return moveTo(selected_ + (forward ? 1 : -1));
    if (hint_.isTarget)
        model_.tryNext(forward);
    else
        forward ? model_.clickNext() : model_.clickPrevious();
    setSearch();
    if (listed_ >= 0) categoriesBar_.reveal(categoryHeight * listed_, categoryHeight * (listed_ + 1) + 3);
}

bool& BrowserView::filter(int chip) {
    const std::array all{&filters_.favourites, &filters_.fourStars, &filters_.recent, &filters_.mine};
    return *all[static_cast<std::size_t>(chip)];
}

void BrowserView::toggle(int chip) {
    filter(chip) = !filter(chip);
    setSearch();
}

void BrowserView::clearSearch() {
    search_.setText("");
    filters_ = {};
    setSearch();
}

void BrowserView::dismiss() {
    const auto alive = VSTGUI::shared(this);
    if (const auto closed = std::exchange(closed_, nullptr)) closed();
}

void BrowserView::follow() {
    if (++rounds_ % caretRounds == 0 && focus_ == Focus::search) invalidRect(searchRect());
    if (model_.revision() != revision_) read();
}

void BrowserView::leave() {
    if (isSearching()) return clearSearch();
    if (hint_.isTarget) model_.takeBackTried();
    dismiss();
}

void BrowserView::act(const Hit& target) {
    switch (target.part) {
        case Part::close: return dismiss();
        case Part::clear: return clearSearch();
        case Part::chip: return toggle(target.row);
        case Part::category: return openCategory(target.row);
        case Part::patch: return play(target.row);
        case Part::star: return rate(target.row, target.star);
        case Part::tags: return writeNotes(selected_);
        case Part::previous: return step(false);
        case Part::next: return step(true);
        default: return;
    }
}

// ---- the pointer

void BrowserView::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    isByKeys_ = false;
    if (listBar_.press(event.mousePosition) || categoriesBar_.press(event.mousePosition)) return refresh();
    if (event.buttonState.isRight()) {
        const Hit over = hit(event.mousePosition);
        if (over.part == Part::patch || over.part == Part::star) writeNotes(over.row);
    }
    if (!event.buttonState.isLeft()) return;
    pressed_ = hit(event.mousePosition);
    setFocus(pressed_.part == Part::search ? Focus::search : pressed_.part == Part::category ? Focus::categories : Focus::list);
    // Patches sound at the press; buttons wait for the release.
    if (pressed_.part == Part::patch || pressed_.part == Part::star || pressed_.part == Part::category)
        act(std::exchange(pressed_, {}));
}

void BrowserView::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    event.consumed = true;
    if (listBar_.isHeld() || categoriesBar_.isHeld()) {
        listBar_.drag(event.mousePosition);
        categoriesBar_.drag(event.mousePosition);
        return refresh();
    }
    hover(hit(event.mousePosition));
}

void BrowserView::onMouseExitEvent(VSTGUI::MouseExitEvent&) { hover({}); }

void BrowserView::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    event.consumed = true;
    if (listBar_.isHeld()) listBar_.scrollTo(std::round(listBar_.position() / columnWidth) * columnWidth);
    listBar_.release();
    categoriesBar_.release();
    const Hit pressed = std::exchange(pressed_, {});
    refresh();
    if (pressed.part != Part::none && hit(event.mousePosition) == pressed) act(pressed);
}

void BrowserView::onMouseCancelEvent(VSTGUI::MouseCancelEvent& event) {
    event.consumed = true;
    listBar_.release();
    categoriesBar_.release();
    pressed_ = {};
    refresh();
}

void BrowserView::onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) {
    event.consumed = true;
    if (categoriesRect().pointInside(event.mousePosition)) {
        categoriesBar_.scrollBy(-3 * categoryHeight * event.deltaY);
    } else {
        const double turned = event.deltaY + event.deltaX;
        const double columnsOn = turned > 0   ? -std::max(1.0, std::round(turned))
                                 : turned < 0 ? std::max(1.0, std::round(-turned))
                                              : 0;
        listBar_.scrollBy(columnWidth * columnsOn);
    }
    hovered_ = hit(event.mousePosition);
    refresh();
}

// ---- keys

void BrowserView::setFocus(Focus focus, int chip) {
    focus_ = focus;
    focusedChip_ = chip;
    rounds_ = 0;
    refresh();
}

void BrowserView::focusNext(bool forward) {
    constexpr int last = 2 + chips;  // search, filters, list, categories
    const int at = focus_ == Focus::search ? 0
                   : focus_ == Focus::chip ? 1 + focusedChip_
                   : focus_ == Focus::list ? 1 + chips
                                           : last;
    const int next = forward ? (at == last ? 0 : at + 1) : (at == 0 ? last : at - 1);
    if (next == 0) return setFocus(Focus::search);
    if (next <= chips) return setFocus(Focus::chip, next - 1);
    setFocus(next == last ? Focus::categories : Focus::list);
}

void BrowserView::moveTo(int row) {
    if (rows_.empty()) return;
    const int target = std::clamp(row, 0, static_cast<int>(rows_.size()) - 1);
    if (target != selected_) tryOut(target);
}

void BrowserView::complete() {
    search_.setText(completed_);
    setSearch();
}

void BrowserView::onKey(VSTGUI::KeyboardEvent& event) {
    event.consumed = true;
    if (event.type != VSTGUI::EventType::KeyDown) return;
    isByKeys_ = true;
    if (event.virt == VirtualKey::Escape) return leave();
    if (event.virt == VirtualKey::F2) return writeNotes(selected_);
    if (event.virt == VirtualKey::Tab) {
        const bool isBack = event.modifiers.has(VSTGUI::ModifierKey::Shift);
        if (focus_ == Focus::search && !isBack && !completed_.empty()) return complete();
        return focusNext(!isBack);
    }
    switch (focus_) {
        case Focus::search: return onSearchKey(event);
        case Focus::list: return onListKey(event);
        case Focus::categories: return onCategoriesKey(event);
        case Focus::chip: break;
    }
    switch (event.virt) {
        case VirtualKey::Space:
        case VirtualKey::Return:
        case VirtualKey::Enter: return toggle(focusedChip_);
        case VirtualKey::Left: return setFocus(Focus::chip, std::max(0, focusedChip_ - 1));
        case VirtualKey::Right: return setFocus(Focus::chip, std::min(chips - 1, focusedChip_ + 1));
        case VirtualKey::Down: return setFocus(Focus::list);
        default: onCharacter(event);
    }
}

void BrowserView::onSearchKey(VSTGUI::KeyboardEvent& event) {
    switch (event.virt) {
        case VirtualKey::Up:
        case VirtualKey::Down:
        case VirtualKey::PageUp:
        case VirtualKey::PageDown: setFocus(Focus::list); return onListKey(event);
        case VirtualKey::Return:
        case VirtualKey::Enter:
            if (rows_.empty()) return;  // found so far: Enter again once there is something
            setFocus(Focus::list);
            return play(std::max(0, selected_));
        default: break;
    }
    const std::string before = search_.text();
    if (search_.onKey(event) && search_.text() != before) return setSearch();
    rounds_ = 0;
    refresh();
}

void BrowserView::onListKey(VSTGUI::KeyboardEvent& event) {
    const int perColumn = rowsPerColumn(), page = perColumn * columns;
    switch (event.virt) {
        case VirtualKey::Up: return moveTo(selected_ - 1);
        case VirtualKey::Down: return moveTo(selected_ + 1);
        case VirtualKey::Left: return selected_ < perColumn ? setFocus(Focus::categories) : moveTo(selected_ - perColumn);
        case VirtualKey::Right: return moveTo(selected_ + perColumn);
        case VirtualKey::PageUp: return moveTo(selected_ - page);
        case VirtualKey::PageDown: return moveTo(selected_ + page);
        case VirtualKey::Home: return moveTo(0);
        case VirtualKey::End: return moveTo(static_cast<int>(rows_.size()) - 1);
        case VirtualKey::Return:
        case VirtualKey::Enter: return play(selected_);
        default: onCharacter(event);
    }
}

void BrowserView::onCategoriesKey(VSTGUI::KeyboardEvent& event) {
    const int last = static_cast<int>(categories_.size()) - 1;
    switch (event.virt) {
        case VirtualKey::Up: return openCategory(std::max(0, listed_ - 1));
        case VirtualKey::Down: return openCategory(std::min(last, listed_ + 1));
        case VirtualKey::Home: return openCategory(0);
        case VirtualKey::End: return openCategory(last);
        case VirtualKey::Right:
        case VirtualKey::Return:
        case VirtualKey::Enter: return setFocus(Focus::list);
        default: onCharacter(event);
    }
}

// "+" and "-" rate, brackets step, and all else begins or goes on with the search.
void BrowserView::onCharacter(VSTGUI::KeyboardEvent& event) {
    if (event.virt == VirtualKey::Space) {
        event.consumed = false;
        return;
    }
    if (event.character == U'+' || event.character == U'-') return rateBy(event.character == U'+' ? 1 : -1);
    if (event.character == U'[' || event.character == U']') return step(event.character == U']');
    if (event.character == U'/') return setFocus(Focus::search);
    const bool edits = event.virt == VirtualKey::Back && !search_.text().empty();
    if (event.character == 0 && !edits) return;
    setFocus(Focus::search);
    onSearchKey(event);
}

// ---- drawing

bool BrowserView::hasCaret() const { return rounds_ / caretRounds % 2 == 0; }

void BrowserView::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    drawVeil(pen, getViewSize());
    drawPanel(pen, panel_, 8, style::panel);
    pen.rect(panel_.left + sideWidth, panel_.top + 1, pen.hair(), panel_.getHeight() - 2, style::line);
    if (isDrawn(pen, {panel_.left, panel_.top, panel_.right, panel_.top + headHeight})) drawHead(pen);
    drawCategories(pen);
    drawPatches(pen);
    if (isDrawn(pen, {panel_.left, panel_.bottom - footHeight, panel_.right, panel_.bottom})) drawFoot(pen);
    setDirty(false);
}

void BrowserView::drawHead(Pen& pen) const {
    pen.text(panel_.left + 14, panel_.top + 26, "Library", Face::title, 10.5, style::output);
    const CRect place = searchRect();
    const bool isActive = focus_ == Focus::search;
    drawTypingPlace(pen, place, isActive || hovered_.part == Part::search);
    drawLens(pen, {place.left + 15, place.getCenter().y}, isActive ? style::text : style::text2);
    const double x = place.left + 28, y = place.top + 16;
    double end = place.right - 10;
    if (isSearching()) {
        const CPoint middle = clearRect().getCenter();
        const Color ink = hovered_.part == Part::clear ? style::white : style::text3;
        pen.line({{middle.x - 3, middle.y - 3}, {middle.x + 3, middle.y + 3}}, ink, 1.3);
        pen.line({{middle.x + 3, middle.y - 3}, {middle.x - 3, middle.y + 3}}, ink, 1.3);
        end = clearRect().left - 2;
    }
    if (isActive && !completed_.empty())
        end -= pen.text(end, y, "Tab completes", Face::medium, 9, style::text3, Align::right) + 8;
    if (search_.text().empty() && !isActive) pen.text(x, y, "Search names, categories and tags", Face::medium, 11, style::text3);
    search_.draw(pen, x, y, end - x, Face::medium, 11, style::text, isActive, hasCaret());
    const double typed = pen.textWidth(search_.text(), Face::medium, 11);
    if (isActive && !completed_.empty() && x + typed + 20 < end)
        pen.text(x + typed, y, completionShown(search_.text(), completed_), Face::medium, 11, style::text3, Align::left,
                 end - x - typed - 4);
    for (int chip = 0; chip < chips; ++chip) {
        const std::array isOn{filters_.favourites, filters_.fourStars, filters_.recent, filters_.mine};
        drawChip(pen, chipRect(chip), chipLabels[static_cast<std::size_t>(chip)], isOn[static_cast<std::size_t>(chip)],
                 hovered_ == Hit{Part::chip, chip}, isByKeys_ && focus_ == Focus::chip && focusedChip_ == chip);
    }
    if (isSearching())
        pen.text(chipRect(chips - 1).right + 14, panel_.top + 25.6,
                 counted(rows_.size()) + (isReading_ ? " found so far" : " found"), Face::medium, 9.5, style::text2);
    pen.text(closeRect().left - 4, panel_.top + 25.6,
             isSearching()    ? "Esc clears"
             : hint_.isTarget ? "Esc calls it off"
                              : "Esc closes",
             Face::medium, 9, style::text3, Align::right);
    drawCross(pen, closeRect().getCenter(), hovered_.part == Part::close ? style::white : style::text2);
}

void BrowserView::drawCategories(Pen& pen) const {
    const CRect side = categoriesRect();
    {
        const Pen::Clip clip(pen, side.left - 2, side.top, side.getWidth() + 4, side.getHeight());
        for (int row = 0; row < static_cast<int>(categories_.size()); ++row) {
            const CRect area = categoryRect(row);
            if (isDrawn(pen, area)) drawCategory(pen, row, area);
        }
    }
    categoriesBar_.draw(pen, style::panel);
}

void BrowserView::drawCategory(Pen& pen, int row, const CRect& area) const {
    const BrowserCategory& category = categories_[static_cast<std::size_t>(row)];
    const bool isFavourites = category.name == "Favourites", isListed = row == listed_;
    const bool isHovered = hovered_ == Hit{Part::category, row};
    if (isFavourites) pen.rect(area.left + 4, area.top - 2, area.getWidth() - 8, pen.hair(), style::line);
    // While a search shows patches of all categories, none of them is the one on show.
    const bool isShown = isListed && !isSearching();
    if (isShown || isHovered)
        pen.round(area.left, area.top, area.getWidth(), area.getHeight(), 3, fade(style::white, isShown ? 0.12 : 0.06));
    if (isShown) pen.round(area.left, area.top + 2, 2.4, area.getHeight() - 4, 1.2, style::oscillators);
    if (isListed && isByKeys_ && focus_ == Focus::categories)
        pen.roundLine(area.left, area.top, area.getWidth(), area.getHeight(), 3, style::white, 1.2);
    double x = area.left + 8;
    if (isFavourites) {
        pen.star(x + 4, area.top + 8, 4.2, style::oscillators, true);
        x += 13;
    }
    const std::string count = category.count > 0 ? counted(static_cast<std::size_t>(category.count)) : "";
    const double width =
        pen.text(area.right - 8, area.top + 11.4, count, Face::medium, 9, isShown ? style::text2 : style::text3, Align::right);
    pen.text(x, area.top + 11.4, shownName(category.name), isShown ? Face::semibold : Face::medium, 10,
             isShown || isHovered ? style::text : style::text2, Align::left, area.right - 16 - width - x);
}

void BrowserView::drawPatches(Pen& pen) const {
    const CRect list = listRect();
    if (rows_.empty())
        pen.text(list.getCenter().x, list.top + 120, emptyWords(), Face::medium, 11, style::text2, Align::centre,
                 list.getWidth() - 40);
    {
        const Pen::Clip clip(pen, list.left - 2, list.top - 2, list.getWidth() + 4, list.getHeight() + 4);
        const int first = static_cast<int>(listBar_.position() / columnWidth) * rowsPerColumn();
        for (int row = first; row < static_cast<int>(rows_.size()); ++row) {
            const CRect area = rowRect(row);
            if (area.left > list.right) break;
            if (isDrawn(pen, area)) drawPatch(pen, row, area);
        }
    }
    listBar_.draw(pen, style::panel);
}

void BrowserView::drawPatch(Pen& pen, int row, const CRect& area) const {
    const BrowserPatch& patch = rows_[static_cast<std::size_t>(row)];
    const bool plays = isPlaying(patch);
    const bool isHovered = (hovered_.part == Part::patch || hovered_.part == Part::star) && hovered_.row == row;
    Color ground = style::panel;
    if (plays) ground = mix(style::panel, style::oscillators, isHovered ? 0.25 : 0.2);
    if (!plays && isHovered) ground = mix(style::panel, style::white, 0.07);
    if (plays || isHovered) pen.round(area.left, area.top, area.getWidth(), area.getHeight(), 4, ground);
    if (plays) pen.round(area.left, area.top + 3, 2.6, area.getHeight() - 6, 1.3, style::oscillators);
    if (row == selected_ && isByKeys_ && focus_ == Focus::list)
        pen.roundLine(area.left, area.top, area.getWidth(), area.getHeight(), 4, style::white, 1.2);
    drawStars(pen, row, area, ground);
    const double base = area.top + 14.8;
    double x = area.left + 12, end = area.right - 70;
    if (plays) end -= pen.text(end, base, "playing", Face::medium, 9, style::oscillators, Align::right) + 8;
    if (isSearching())
        end -= pen.text(end, base, shownName(patch.category), Face::medium, 9, plays ? style::text2 : style::text3, Align::right,
                        90) +
               8;
    const Face face = plays ? Face::semibold : Face::medium;
    const Color ink = plays || isHovered ? style::white : style::text;
    const std::string name = shownName(patch.name);
    const std::size_t from = patch.matchFrom, to = from + patch.matched;
    if (patch.matched == 0 || to > name.size()) {
        pen.text(x, base, name, face, nameSize, ink, Align::left, end - x);
        return;
    }
    const std::string before = name.substr(0, from), match = name.substr(from, patch.matched);
    const double left = x, width = pen.textWidth(match, Face::semibold, nameSize);
    x += pen.textWidth(before, face, nameSize);
    pen.round(x - 1.5, area.top + 4, std::min(width, end - x) + 3, 14, 2, mix(ground, style::oscillators, 0.32));
    pen.text(left, base, before, face, nameSize, ink);  // over the mark, which reaches under its last letter
    pen.text(x, base, match, Face::semibold, nameSize, style::white, Align::left, end - x);
    x += width;
    if (x < end) pen.text(x, base, name.substr(to), face, nameSize, ink, Align::left, end - x);
}

void BrowserView::drawStars(Pen& pen, int row, const CRect& area, const Color& ground) const {
    const bool isAimed = hovered_.part == Part::star && hovered_.row == row;
    const int filled = isAimed ? hovered_.star : rows_[static_cast<std::size_t>(row)].stars;
    for (int star = 1; star <= 5; ++star) {
        const CPoint at(starRect(row, star).getCenter().x, area.top + 11);
        if (star <= filled) {
            pen.star(at.x, at.y, 4.3, isAimed ? style::white : style::oscillators, true);
        } else {
            pen.star(at.x, at.y, 4, mix(ground, style::white, 0.3), false);
        }
    }
}

void BrowserView::drawStep(Pen& pen, const CRect& area, bool forward) const {
    const Part part = forward ? Part::next : Part::previous;
    pen.round(area.left, area.top, area.getWidth(), area.getHeight(), 4,
              pressed_.part == part   ? style::inset
              : hovered_.part == part ? style::hover
                                      : style::raised);
    const double middle = area.getCenter().y;
    pen.chevron(forward ? area.right - 10 : area.left + 10, middle, forward ? Pointing::right : Pointing::left, 3.2, style::text2,
                1.5);
    pen.text(area.getCenter().x + (forward ? -5 : 5), middle + 3.6, forward ? "Next" : "Previous", Face::medium, 9.5, style::text,
             Align::centre);
}

void BrowserView::drawTagsButton(Pen& pen) const {
    const CRect area = tagsRect();
    pen.round(area.left, area.top, area.getWidth(), area.getHeight(), 4,
              pressed_.part == Part::tags   ? style::inset
              : hovered_.part == Part::tags ? style::hover
                                            : style::raised);
    pen.text(area.getCenter().x, area.getCenter().y + 3.6, "Tags \u2026", Face::medium, 9.5, style::text, Align::centre);
}

void BrowserView::drawFoot(Pen& pen) const {
    const double left = panel_.left + 204, top = panel_.bottom - footHeight, base = panel_.bottom - 14.4;
    pen.rect(panel_.left + sideWidth, top, panel_.getWidth() - sideWidth - 1, pen.hair(), style::line);
    const double end = tagsRect().left - 14;
    if (hint_.isTarget) {
        const Color ground = mix(style::panel, style::multilayer, 0.18);
        pen.round(left - 2, panel_.bottom - 28, end - left, 20, 4, ground);
        pen.round(left - 2, panel_.bottom - 28, 3, 20, 1.5, style::multilayer);
        pen.text(left + 10, base, hint_.text, Face::semibold, 10, style::text, Align::left, end - left - 20);
    } else {
        const std::string category = listed_ >= 0 ? shownName(categories_[static_cast<std::size_t>(listed_)].name) : "";
        double x = left;
        if (!category.empty()) x += pen.text(x, base, category, Face::semibold, 10, style::text, Align::left, 150) + 10;
        pen.text(x, base, hint_.text, Face::medium, 10, style::text2, Align::left, end - x);
    }
    drawTagsButton(pen);
    drawStep(pen, previousRect(), false);
    drawStep(pen, nextRect(), true);
}

}  // namespace vantoric
