#include "editor/popup_menu.h"
#include "editor/model/control_table.h"
#include "editor/model/window_layout.h"
#include "editor/overlay.h"
#include "layer_picture.h"

#include <gtest/gtest.h>

#include <set>

namespace vantoric {
namespace {

constexpr double lowHeight = 128;

std::vector<MenuRow> rowsOf(const ControlEntry& entry) {
    std::vector<MenuRow> rows;
    for (int row = 0; row < static_cast<int>(entry.labels.size()); ++row)
        rows.push_back({std::string(entry.labels[row]), row, row == 1, {}, {}});
    return rows;
}

// Every list that a window of two panels shows, opened at its place.
template <class Look>
void forEachLowList(const Look& look) {
    const WithGui gui;
    for (int i = 0; i < controlCount(); ++i) {
        const ControlEntry& entry = controlEntry(i);
        if (entry.page != page::always || entry.labels.empty() || entry.y > lowHeight) continue;
        const LayoutRect r = controlRect(entry);
        const auto menu = VSTGUI::makeOwned<PopupMenu>(
            VSTGUI::CRect(0, 0, 1200, lowHeight), VSTGUI::CRect(r.x, r.y, r.x + r.width, r.y + r.height), rowsOf(entry),
            [](int) {}, [] {});
        look(entry, *menu);
    }
}

TEST(PopupMenu, NoLabelIsCutInALowWindow) {
    int seen = 0;
    forEachLowList([&](const ControlEntry& entry, const PopupMenu& menu) {
        for (int row = 0; row < static_cast<int>(entry.labels.size()); ++row) {
            const auto place = menu.rowWith(row);
            if (!place) continue;
            const double room = place->getWidth() - 8 - (row == 1 ? 22 : 6);
            EXPECT_GE(room, measured(entry.labels[row], style::Face::medium, 10)) << entry.name << ": " << entry.labels[row];
            EXPECT_GE(place->left, 0);
            EXPECT_LE(place->right, 1200);
            EXPECT_LE(place->bottom, lowHeight) << entry.name << ": " << entry.labels[row];
            ++seen;
        }
    });
    EXPECT_GT(seen, 60);
}

TEST(PopupMenu, ColumnsStandBesideEachOther) {
    forEachLowList([](const ControlEntry& entry, const PopupMenu& menu) {
        std::set<std::pair<double, double>> columns;
        for (int row = 0; row < static_cast<int>(entry.labels.size()); ++row)
            if (const auto place = menu.rowWith(row)) columns.insert({place->left, place->right});
        for (auto next = columns.begin(), column = next == columns.end() ? next : next++; next != columns.end(); column = next++)
            EXPECT_NEAR(column->second, next->first, 1e-9) << entry.name;
    });
}

// As many patches as a library has, in both low windows with and without their effects.
TEST(PopupMenu, AListTooLongForColumnsScrollsWithItsLabelsWhole) {
    const WithGui gui;
    for (const double width : {802.0, 1200.0}) {
        for (const int count : {12, 60, 300}) {
            std::vector<MenuRow> rows;
            for (int row = 0; row < count; ++row)
                rows.push_back({"My own patch of pads " + std::to_string(1000 + row), row, false, {}, {}});
            const auto menu = VSTGUI::makeOwned<PopupMenu>(
                VSTGUI::CRect(0, 0, width, lowHeight), VSTGUI::CRect(300, 20, 420, 36), rows, [](int) {}, [] {});
            std::set<double> columns;
            for (int row = 0; row < count; ++row) {
                const auto place = menu->rowWith(row);
                ASSERT_TRUE(place);
                columns.insert(place->left);
                EXPECT_GE(place->getWidth() - 14, measured(rows[row].label, style::Face::medium, 10)) << count << " in " << width;
                EXPECT_LE(place->right, width);
            }
            EXPECT_EQ(columns.size() > 1, count == 12) << count << " in " << width;
            VSTGUI::KeyboardEvent end;
            end.virt = VSTGUI::VirtualKey::End;
            menu->onKey(end);
            EXPECT_LE(menu->rowWith(count - 1)->bottom, lowHeight) << "the last one comes into sight";
            EXPECT_GE(menu->rowWith(count - 1)->top, 0);
        }
    }
}

}  // namespace
}  // namespace vantoric
