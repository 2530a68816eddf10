// The table of the window's controls, and the texts and rows that it leads to.
#include <algorithm>
#include <map>

#include "editor/model/control_table.h"
#include "editor/model/menu_rows.h"
#include "golden_runner/golden.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using vantoric::ControlEntry;
using vantoric::controlEntry;

const ControlEntry& entryNamed(const std::string& name) { return controlEntry(vantoric::controlIndexForName(name.c_str())); }

json rowsOf(const std::map<int, int>& counts) {
    json rows = json::array();
    for (const auto& [key, count] : counts) rows.push_back({key, count});
    return rows;
}

// The counts of those kinds or pages that the case names.
json countsAsked(const json& asked, std::map<int, int> counts) {
    std::map<int, int> named;
    for (const json& row : asked) named[row[0]] = counts[row[0]];
    return rowsOf(named);
}

json runCounts(const Case& c) {
    (void)c.input.at("what");
    std::map<int, int> kinds, pages;
    for (int i = 0; i < vantoric::controlCount(); ++i) {
        ++kinds[static_cast<int>(controlEntry(i).kind)];
        ++pages[controlEntry(i).page];
    }
    json result{{"controlCount", vantoric::controlCount()}};
    if (c.expected.contains("kinds")) result["kinds"] = countsAsked(c.expected.at("kinds"), kinds);
    if (c.expected.contains("pages")) result["pages"] = countsAsked(c.expected.at("pages"), pages);
    return result;
}

// `got` with null wherever `expected` is null: not compared.
json withoutUncompared(const json& expected, const json& got) {
    json row = got;
    for (std::size_t i = 0; i < std::min(row.size(), expected.size()); ++i)
        if (expected[i].is_null()) row[i] = nullptr;
    return row;
}

// A row's kinds are those that count as right: one of them is given back as the whole list.
json runRows(const Case& c) {
    (void)c.input.at("first"), (void)c.input.at("last");
    json rows = json::array();
    std::size_t next = 0;
    for (const json& index : c.input.at("indices")) {
        const ControlEntry& entry = controlEntry(index);
        const json& expected = c.expected.at("rows")[next++];
        json kinds = json::array({static_cast<int>(entry.kind)});
        for (const json& right : expected[2])
            if (right == static_cast<int>(entry.kind)) kinds = expected[2];
        const json row = {index, entry.name, kinds, entry.tag, entry.page, entry.defaultValue, entry.labels.size()};
        rows.push_back(withoutUncompared(expected, row));
    }
    return {{"rows", rows}};
}

json runLabels(const Case& c) {
    const auto labels = controlEntry(c.input.at("index")).labels;
    return {{"labels", std::vector<std::string>(labels.begin(), labels.end())}};
}

json runTooltips(const Case& c) { return {{"tooltip", entryNamed(c.input.at("name")).tooltip}}; }

json runTooltipFacts(const Case& c) {
    if (c.expected.contains("ends")) {
        const std::string end = c.expected.at("ends");
        for (const json& name : c.input.at("names")) {
            const std::string& tooltip = entryNamed(name).tooltip;
            if (!tooltip.ends_with(end)) return {{"ends", tooltip}};
        }
        return {{"ends", end}};
    }
    json rows = json::array();
    for (const json& pair : c.input.at("names")) {
        const bool same = entryNamed(pair[0]).tooltip == entryNamed(pair[1]).tooltip;
        rows.push_back({pair[0], pair[1], same});
    }
    return {{"rows", rows}};
}

json runTagIndex(const Case& c) {
    json rows = json::array();
    for (const json& tag : c.input.at("tags")) rows.push_back({tag, vantoric::controlIndexForTag(tag)});
    return {{"rows", rows}};
}

json runTagParameter(const Case& c) {
    json rows = json::array();
    for (const json& tag : c.input.at("tags")) rows.push_back({tag, vantoric::hostIndexOfTag(tag, c.input.at("layer"))});
    return {{"rows", rows}};
}

json runValueFieldTexts(const Case& c) {
    const auto format = entryNamed(c.input.at("name")).format;
    json rows = json::array();
    for (const json& value : c.input.at("values")) rows.push_back({value, format(asFloat(value))});
    return {{"rows", rows}};
}

json runMenuRows(const Case& c) {
    const auto rows = vantoric::menuRows(c.input.at("tag"));
    return {{"rows", withoutUncompared(c.expected.at("rows"), std::vector<std::string>(rows.begin(), rows.end()))}};
}

const golden::Binding bindings[] = {
    {"editor", "control_counts", golden::checkValues<runCounts>},
    {"editor", "control_rows", golden::checkValues<runRows>},
    {"editor", "control_labels", golden::checkValues<runLabels>},
    {"editor", "control_tooltips", golden::checkValues<runTooltips>},
    {"editor", "tooltip_facts", golden::checkValues<runTooltipFacts>},
    {"editor", "tag_index", golden::checkValues<runTagIndex>},
    {"editor", "tag_parameter", golden::checkValues<runTagParameter>},
    {"editor", "value_field_texts", golden::checkValues<runValueFieldTexts>},
    {"editor", "menu_rows", golden::checkValues<runMenuRows>},
};

}  // namespace
