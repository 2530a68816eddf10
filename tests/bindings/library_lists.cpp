// The library's lists, steps through them, stars and the browser.
#include <stdexcept>

#include "bindings/library_folders.h"
#include "library/patch_browser.h"

namespace {

using namespace vantoric;
using golden::Case;
using golden::json;
using golden::LibraryFolders;
using golden::NotedLoads;
using golden::selectionOf;

// A library over the folders of a case, at its start.
struct Lists {
    explicit Lists(const Case& c) {
        folders.putCategories(c.input.at("categories"));
        library.scanCategories();
        if (c.input.contains("categoryNames") && json(library.categoryNames()) != c.input.at("categoryNames"))
            throw std::runtime_error("the categories stand in another order: " + json(library.categoryNames()).dump());
        if (c.input.contains("start")) library.select(selectionOf(c.input.at("start")));
    }

    LibraryFolders folders;
    NotedLoads loads;
    PatchLibrary library{loads};
};

json hints(const Case& c) {
    json rows = json::array();
    for (const json& row : c.expected.at("rows")) {
        const CategoryHint hint = categoryHint(row[0], row[1]);
        rows.push_back({row[0], row[1], hint.text, static_cast<int>(hint.kind)});
    }
    return {{"rows", rows}};
}
const golden::Binding hintBinding("events", "category_hint", golden::checkValues<hints>);

json sorted(const Case& c) {
    const LibraryFolders folders;
    NotedLoads loads;
    PatchLibrary library(loads);
    if (c.input.contains("files")) {
        for (const json& file : c.input.at("files")) folders.put("Vantoric_sounds/Bass/" + file.get<std::string>());
        library.scanCategories();
        library.scanPatches(0);
        return {{"patchNames", library.patchNames()}};
    }
    for (const json& entry : c.input.at("entries")) {
        const std::string path = "Vantoric_sounds/" + entry[0].get<std::string>();
        entry[1].get<bool>() ? folders.putFolder(path) : folders.put(path);
    }
    library.scanCategories();
    return {{"categoryNames", library.categoryNames()}};
}
const golden::Binding sortBinding("events", "library_sort", golden::checkValues<sorted>);

json walk(const Case& c, bool withFolder) {
    Lists lists(c);
    json steps = json::array();
    for (const char step : c.input.at("walk").get<std::string>()) {
        step == 'n' ? lists.library.nextPatch() : lists.library.previousPatch();
        const PatchSelection at = lists.library.selection();
        steps.push_back({at.category, at.patch, lists.loads.take(withFolder)});
    }
    return {{"steps", steps}};
}

json find(const Case& c) {
    Lists lists(c);
    json rows = json::array();
    for (const json& row : c.expected.at("rows")) {
        lists.library.findPatch(row[0]);
        rows.push_back({row[0], lists.library.selection().category, lists.library.selection().patch});
    }
    return {{"rows", rows}};
}

json walkOrFind(const Case& c) { return c.input.contains("walk") ? walk(c, false) : find(c); }
const golden::Binding walkBinding("events", "library_walk", golden::checkValues<walkOrFind>);

json steps(const Case& c) { return walk(c, true); }
const golden::Binding stepsBinding("editor", "library_steps", golden::checkValues<steps>);

json findOne(const Case& c) {
    Lists lists(c);
    std::optional<PatchLibrary::Loading> loading;
    if (c.input.at("loading").get<bool>()) loading.emplace(lists.library);
    lists.library.findPatch(c.input.at("name"));
    return {{"selection", {lists.library.selection().category, lists.library.selection().patch}}};
}
const golden::Binding findBinding("editor", "find_patch", golden::checkValues<findOne>);

// By the files on disk, as the browser reads and writes them.
json ranks(const Case& c) {
    const LibraryFolders folders;
    const auto names = c.input.at("patchNames").get<std::vector<std::string>>();
    if (c.input.contains("text")) {
        folders.put("Vantoric_sounds/Bass.rnk", c.input.at("text"));
        return {{"ratings", loadRanks("Bass", names)}};
    }
    saveRanks("Bass", names, c.input.at("ratings").get<Ratings>());
    return {{"text", folders.text("Vantoric_sounds/Bass.rnk")}};
}
golden::Outcome checkRanks(const Case& c) { return golden::compareAny(c, ranks(c)); }
const golden::Binding rankBinding("events", "rank_file", checkRanks);
const golden::Binding rankLinesBinding("editor", "rank_lines", checkRanks);

void click(PatchBrowser& browser, const json& event) {
    const std::string kind = event[0];
    if (kind == "category") return static_cast<void>(browser.clickCategory(event[1]));
    if (kind == "patch") return static_cast<void>(browser.clickPatch(event[1]));
    if (kind == "star") return browser.clickStar(event[1], event[2]);
    if (kind == "next") return static_cast<void>(browser.clickNext());
    if (kind == "previous") return static_cast<void>(browser.clickPrevious());
    throw std::runtime_error("an unknown click: " + kind);
}

// The text of the rank file that was written since it was made empty.
json writtenRanks(const LibraryFolders& folders, const std::string& category, const std::string& before) {
    const std::string path = "Vantoric_sounds/" + category + ".rnk";
    const std::string text = folders.text(path);
    return text == before ? json() : json(text);
}

json browse(const Case& c) {
    Lists lists(c);
    for (const auto& [category, text] : c.input.at("rankFiles").items())
        lists.folders.put("Vantoric_sounds/" + category + ".rnk", text);
    OnShow onShow;
    PatchBrowser browser(lists.library, onShow);
    browser.open();
    json all = json::array();
    for (const json& event : c.input.at("clicks")) {
        // A mark that any reader passes over shows whether the file was written.
        const std::string category = lists.library.selectedCategory();
        const std::string marked = lists.folders.text("Vantoric_sounds/" + category + ".rnk") + "\n";
        lists.folders.put("Vantoric_sounds/" + category + ".rnk", marked);
        click(browser, event);
        const PatchSelection at = lists.library.selection();
        all.push_back({{"selection", {at.category, at.patch}},
                       {"loaded", lists.loads.take(true)},
                       {"ratings", browser.ratings()},
                       {"rankFile", writtenRanks(lists.folders, category, marked)}});
    }
    return {{"steps", all}};
}

// Only a place that is null is not compared.
golden::Outcome checkBrowser(const Case& c) {
    json got = browse(c);
    const json& expected = c.whole.at("expected").at("steps");
    for (std::size_t i = 0; i < expected.size(); ++i) golden::passNull(got["steps"][i]["selection"], expected[i].at("selection"));
    return golden::compare(c.expected, got, c.tolerance);
}
const golden::Binding browserBinding("editor", "browser_clicks", checkBrowser);

}  // namespace
