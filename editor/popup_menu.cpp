#include "editor/popup_menu.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "editor/line_edit.h"
#include "editor/overlay.h"
#include "library/search_text.h"
#include "vstgui/lib/cframe.h"
#include "vstgui/lib/platform/platformfactory.h"

namespace vantoric {
namespace {

using VSTGUI::CPoint;
using VSTGUI::CRect;
using VSTGUI::VirtualKey;

constexpr double rowHeight = 18, separatorHeight = 7, padding = 4, textSize = 10;
constexpr double lowWindow = 300;  // below this height lists stand in columns

double heightOf(const MenuRow& row) { return row.isSeparator() ? separatorHeight : rowHeight; }

double widthOfRows(std::span<const MenuRow> rows) {
    double widest = 0;
    bool hasDots = false, hasMark = false;
    for (const MenuRow& row : rows) {
        widest = std::max(widest, measured(row.label, style::Face::medium, textSize));
        hasDots = hasDots || row.dot;
        hasMark = hasMark || row.isTicked || !row.submenu.empty();
    }
    return widest + 24 + (hasDots ? 12 : 0) + (hasMark ? 18 : 0);
}

// Letters compare as in the search, without their case; signs as they are.
bool beginsWith(const std::string& label, const std::string& typed) {
    if (label.starts_with(typed)) return true;
    const std::string letters = joinWords(searchWords(typed));
    return !letters.empty() && joinWords(searchWords(label)).starts_with(letters);
}

}  // namespace

PopupMenu::PopupMenu(const CRect& area, const CRect& anchor, std::vector<MenuRow> rows, Chosen chosen,
                     std::function<void()> closed)
    : LayerView(area), rows_(std::move(rows)), chosen_(std::move(chosen)), closed_(std::move(closed)) {
    setTransparency(true);
    panels_.push_back(layOut(rows_, anchor, false));
    for (int row = 0; row < static_cast<int>(rows_.size()); ++row)
        if (rows_[row].isTicked) panels_[0].highlighted = row;
    if (panels_[0].highlighted >= 0) scrollTo(panels_[0], panels_[0].highlighted);
}

// In a low window as many as it takes, each as wide as its own rows: equal ones would cut the longest labels.
std::vector<PopupMenu::Column> PopupMenu::columnsOf(const std::vector<MenuRow>& rows, double room, bool isLow) {
    std::vector<Column> columns{{}};
    for (int row = 0; row < static_cast<int>(rows.size()); ++row) {
        if (isLow && columns.back().height + heightOf(rows[row]) > room) {
            if (rows[row].isSeparator()) continue;
            columns.push_back({.first = row});
        }
        columns.back().height += heightOf(rows[row]);
        if (!rows[row].isSeparator()) columns.back().end = row + 1;
    }
    for (Column& column : columns)
        column.width = widthOfRows(
            std::span(rows).subspan(static_cast<std::size_t>(column.first), static_cast<std::size_t>(column.end - column.first)));
    return columns;
}

double PopupMenu::widthOf(const std::vector<Column>& columns) {
    double width = 0;
    for (const Column& column : columns) width += column.width;
    return width;
}

PopupMenu::Panel PopupMenu::layOut(const std::vector<MenuRow>& rows, const CRect& anchor, bool isSubmenu) const {
    const CRect area = CRect(getViewSize()).inset(2, 2);
    const double room = area.getHeight() - 2 * padding, widest = area.getWidth() - 2 * padding;
    Panel panel;
    panel.rows = &rows;
    panel.columns = columnsOf(rows, room, area.getHeight() < lowWindow);
    // What would be cut in columns scrolls in one, as in a high window.
    if (widthOf(panel.columns) > widest) panel.columns = columnsOf(rows, room, false);
    if (panel.columns.size() == 1 && !isSubmenu)
        panel.columns[0].width = std::max(panel.columns[0].width, anchor.getWidth() - 2 * padding);
    for (const Column& column : panel.columns) panel.contentHeight = std::max(panel.contentHeight, column.height);
    const double fit = std::min(1.0, widest / widthOf(panel.columns));
    double left = 0;
    for (Column& column : panel.columns) {
        column.width *= fit;
        column.left = std::exchange(left, left + column.width);
    }
    const double boxHeight = std::min(panel.contentHeight, room) + 2 * padding, boxWidth = left + 2 * padding;
    const double gap = anchor.isEmpty() ? 0 : 2;
    double x = isSubmenu ? anchor.right : anchor.left, y = isSubmenu ? anchor.top - padding : anchor.bottom + gap;
    if (isSubmenu && x + boxWidth > area.right) x = anchor.left - boxWidth;
    if (!isSubmenu && y + boxHeight > area.bottom && anchor.top - gap - boxHeight >= area.top) y = anchor.top - gap - boxHeight;
    x = std::clamp(x, area.left, std::max(area.left, area.right - boxWidth));
    y = std::clamp(y, area.top, std::max(area.top, area.bottom - boxHeight));
    panel.rect = {x, y, x + boxWidth, y + boxHeight};
    return panel;
}

int PopupMenu::columnOf(const Panel& panel, int row) {
    int column = static_cast<int>(panel.columns.size()) - 1;
    while (column > 0 && row < panel.columns[column].first) --column;
    return column;
}

CRect PopupMenu::rowRect(const Panel& panel, int row) const {
    const Column& column = panel.columns[columnOf(panel, row)];
    double y = panel.rect.top + padding - panel.scrolled;
    for (int above = column.first; above < row; ++above) y += heightOf((*panel.rows)[above]);
    const double x = panel.rect.left + padding + column.left;
    return {x, y, x + column.width, y + heightOf((*panel.rows)[row])};
}

std::optional<CRect> PopupMenu::rowWith(int result) const {
    for (const Panel& panel : panels_)
        for (int row = 0; row < static_cast<int>(panel.rows->size()); ++row)
            if ((*panel.rows)[row].isChoosable() && (*panel.rows)[row].result == result) return rowRect(panel, row);
    return std::nullopt;
}

PopupMenu::Hit PopupMenu::hit(CPoint where) const {
    for (int index = static_cast<int>(panels_.size()) - 1; index >= 0; --index) {
        const Panel& panel = panels_[index];
        if (!panel.rect.pointInside(where)) continue;
        for (int row = 0; row < static_cast<int>(panel.rows->size()); ++row)
            if (rowRect(panel, row).pointInside(where)) return {index, (*panel.rows)[row].isChoosable() ? row : -1};
        return {index, -1};
    }
    return {};
}

void PopupMenu::highlight(Hit target) {
    if (target.panel < 0) return;
    Panel& panel = panels_[target.panel];
    if (panel.highlighted == target.row && static_cast<int>(panels_.size()) <= target.panel + 2) return;
    panels_.resize(target.panel + 1);
    panels_[target.panel].highlighted = target.row;
    if (target.row >= 0 && !(*panels_[target.panel].rows)[target.row].submenu.empty()) openSubmenu(target.panel, target.row);
    invalid();
}

void PopupMenu::openSubmenu(int panel, int row) {
    const MenuRow& head = (*panels_[panel].rows)[row];
    panels_.push_back(layOut(head.submenu, rowRect(panels_[panel], row), true));
}

void PopupMenu::choose(Hit target) {
    if (target.panel < 0 || target.row < 0) return;
    const MenuRow& row = (*panels_[target.panel].rows)[target.row];
    if (!row.submenu.empty()) return;
    const Chosen chosen = std::move(chosen_);
    const int result = row.result;
    const auto alive = VSTGUI::shared(this);
    close();
    if (chosen) chosen(result);
}

void PopupMenu::close() {
    if (isClosed_) return;
    isClosed_ = true;
    const auto alive = VSTGUI::shared(this);
    if (const auto closed = std::move(closed_)) closed();
}

void PopupMenu::dismiss() {
    chosen_ = nullptr;
    close();
}

// ---- the pointer

void PopupMenu::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    const Hit target = hit(event.mousePosition);
    if (target.panel < 0) return dismiss();
    hasMoved_ = true;  // a press inside: its release chooses
    highlight(target);
}

void PopupMenu::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    event.consumed = true;
    if (!cameAt_) cameAt_ = event.mousePosition;
    if (std::hypot(event.mousePosition.x - cameAt_->x, event.mousePosition.y - cameAt_->y) > 6) hasMoved_ = true;
    const Hit target = hit(event.mousePosition);
    if (target.panel >= 0) highlight(target);
}

void PopupMenu::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    event.consumed = true;
    isByLeft_ = event.buttonState.isLeft();
    if (hasMoved_) choose(hit(event.mousePosition));
}

void PopupMenu::onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) {
    event.consumed = true;
    const Hit target = hit(event.mousePosition);
    if (target.panel < 0) return;
    Panel& panel = panels_[target.panel];
    const double hidden = std::max(0.0, panel.contentHeight + 2 * padding - panel.rect.getHeight());
    panel.scrolled = std::clamp(panel.scrolled - 3 * rowHeight * event.deltaY, 0.0, hidden);
    panels_.resize(target.panel + 1);
    panels_[target.panel].highlighted = hit(event.mousePosition).row;
    invalid();
}

// ---- keys

int PopupMenu::activePanel() const {
    const int top = static_cast<int>(panels_.size()) - 1;
    return top > 0 && panels_[top].highlighted < 0 ? top - 1 : top;
}

void PopupMenu::onKey(VSTGUI::KeyboardEvent& event) {
    isByLeft_ = true;
    event.consumed = true;
    if (event.type != VSTGUI::EventType::KeyDown) return;
    const int top = static_cast<int>(panels_.size()) - 1, active = activePanel();
    switch (event.virt) {
        case VirtualKey::Escape: return dismiss();
        case VirtualKey::Up: return move(-1);
        case VirtualKey::Down: return move(1);
        case VirtualKey::Home: return moveTo(0, 1);
        case VirtualKey::End: return moveTo(rowCount(active) - 1, -1);
        case VirtualKey::PageUp: return moveTo(std::max(panels_[active].highlighted - pageRows(panels_[active]), 0), 1);
        case VirtualKey::PageDown:
            return moveTo(std::min(panels_[active].highlighted + pageRows(panels_[active]), rowCount(active) - 1), -1);
        case VirtualKey::Right: return top > active ? move(1) : moveToColumn(1);
        case VirtualKey::Left:
            if (active == 0) return moveToColumn(-1);
            panels_[active].highlighted = -1;
            return invalid();
        case VirtualKey::Return:
        case VirtualKey::Enter: return choose({active, panels_[active].highlighted});
        case VirtualKey::Space: return typed(U' ');
        default: break;
    }
    if (event.character != 0) typed(event.character);
}

void PopupMenu::move(int direction) {
    const int top = static_cast<int>(panels_.size()) - 1;
    const bool entersSubmenu = top > 0 && panels_[top].highlighted < 0 && direction > 0;
    const int active = top > 0 && panels_[top].highlighted < 0 && !entersSubmenu ? top - 1 : top;
    Panel& panel = panels_[active];
    const int count = static_cast<int>(panel.rows->size());
    int row = panel.highlighted < 0 && direction < 0 ? count : panel.highlighted;
    for (int tried = 0; tried < count; ++tried) {
        row = (row + direction + count) % count;
        if (!(*panel.rows)[row].isChoosable()) continue;
        scrollTo(panel, row);
        return highlight({active, row});
    }
}

int PopupMenu::rowCount(int panel) const { return static_cast<int>(panels_[panel].rows->size()); }

int PopupMenu::pageRows(const Panel& panel) {
    return std::max(2, static_cast<int>((panel.rect.getHeight() - 2 * padding) / rowHeight) - 1);
}

void PopupMenu::moveTo(int row, int direction) {
    const int active = activePanel();
    for (; row >= 0 && row < rowCount(active); row += direction) {
        if (!(*panels_[active].rows)[row].isChoosable()) continue;
        scrollTo(panels_[active], row);
        return highlight({active, row});
    }
}

void PopupMenu::moveToColumn(int direction) {
    const int active = activePanel();
    const Panel& panel = panels_[active];
    if (panel.columns.size() == 1 || panel.highlighted < 0) return;
    const int beside = columnOf(panel, panel.highlighted) + direction;
    const CPoint from = rowRect(panel, panel.highlighted).getCenter();
    int nearest = -1;
    double distance = panel.rect.getHeight();
    for (int row = 0; row < rowCount(active); ++row) {
        const CPoint at = rowRect(panel, row).getCenter();
        if (columnOf(panel, row) != beside || !(*panel.rows)[row].isChoosable() || std::abs(at.y - from.y) >= distance) continue;
        nearest = row;
        distance = std::abs(at.y - from.y);
    }
    if (nearest >= 0) highlight({active, nearest});
}

void PopupMenu::scrollTo(Panel& panel, int row) const {
    const CRect place = rowRect(panel, row);
    const double above = panel.rect.top + padding - place.top, below = place.bottom - (panel.rect.bottom - padding);
    if (above > 0) panel.scrolled -= above;
    if (below > 0) panel.scrolled += below;
}

void PopupMenu::typed(char32_t character) {
    constexpr std::uint64_t pause = 1000;  // milliseconds after which a word begins anew
    const std::uint64_t now = VSTGUI::getPlatformFactory().getTicks();
    if (now - typedTicks_ > pause) typed_.clear();
    typedTicks_ = now;
    const std::string letter = utf8Of(character);
    if (letter.empty()) return;
    typed_ += letter;
    const int active = activePanel();
    Panel& panel = panels_[active];
    const int count = static_cast<int>(panel.rows->size());
    // A letter alone goes on to the next row that begins with it.
    const int from = typed_ == letter ? panel.highlighted + 1 : std::max(panel.highlighted, 0);
    for (int tried = 0; tried < count; ++tried) {
        const int row = (from + tried) % count;
        if (!(*panel.rows)[row].isChoosable() || !beginsWith((*panel.rows)[row].label, typed_)) continue;
        scrollTo(panel, row);
        return highlight({active, row});
    }
}

// ---- drawing

void PopupMenu::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    for (const Panel& panel : panels_) drawPanel(pen, panel);
    setDirty(false);
}

void PopupMenu::drawPanel(Pen& pen, const Panel& panel) const {
    const CRect& r = panel.rect;
    for (int i = 3; i >= 1; --i)
        pen.round(r.left - i, r.top - i + 2, r.getWidth() + 2 * i, r.getHeight() + 2 * i, 6 + i, fade(style::black, 0.14));
    pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 5, style::menu);
    pen.roundLine(r.left, r.top, r.getWidth(), r.getHeight(), 5, style::menuEdge);
    {
        const Pen::Clip clip(pen, r.left + 1, r.top + padding, r.getWidth() - 2, r.getHeight() - 2 * padding);
        for (int row = 0; row < static_cast<int>(panel.rows->size()); ++row) drawRow(pen, panel, row);
    }
    const double shown = r.getHeight() - 2 * padding;
    if (panel.contentHeight <= shown + 0.5) return;
    const double length = std::max(18.0, shown * shown / panel.contentHeight);
    const double y = r.top + padding + (shown - length) * panel.scrolled / (panel.contentHeight - shown);
    pen.round(r.right - 3.5, y, 2, length, 1, fade(style::text2, 0.5));  // beside the rows
}

void PopupMenu::drawRow(Pen& pen, const Panel& panel, int index) const {
    const MenuRow& row = (*panel.rows)[index];
    const CRect place = rowRect(panel, index);
    if (place.bottom < panel.rect.top || place.top > panel.rect.bottom) return;
    const double middle = (place.top + place.bottom) / 2;
    if (index >= panel.columns[columnOf(panel, index)].end) return;  // the column's end parts as well
    if (row.isSeparator()) return pen.rect(place.left + 6, middle, place.getWidth() - 12, pen.hair(), style::menuEdge);
    if (index == panel.highlighted) pen.round(place.left, place.top, place.getWidth(), place.getHeight(), 3, style::hover);
    double x = place.left + 8;
    if (row.dot) {
        pen.dot(x + 3, middle, 2.6, *row.dot);
        x += 12;
    }
    const bool hasMark = row.isTicked || !row.submenu.empty();
    pen.text(x, middle + 3.5, row.label, style::Face::medium, textSize, style::text, Align::left,
             place.right - x - (hasMark ? 22 : 6));
    if (row.isTicked) pen.tick(place.right - 13, middle, style::text);
    if (!row.submenu.empty()) pen.chevron(place.right - 11, middle, Pointing::right, 3, style::text2);
}

}  // namespace vantoric
