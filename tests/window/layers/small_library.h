// A library of a few patches in memory, as the browser sees one.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "editor/browser_model.h"

namespace vantoric {

class SmallLibrary final : public BrowserModel {
public:
    struct Category {
        std::string name;
        std::vector<BrowserPatch> patches;
    };
    std::vector<Category> all;
    int listed = 0, opened = 0;
    BrowserPatch inForce;
    BrowserHint shownHint{"These sounds are suitable for melodies and chords. You can use the Modwheel to alter the sound"};
    bool reads = false;
    unsigned changes = 0;
    std::vector<std::string> done;  // what was asked of it
    std::map<std::string, BrowserNotes> written;

    void add(const std::string& category, const std::vector<std::string>& names) {
        Category added{category, {}};
        int stars = 0;
        for (const std::string& name : names) added.patches.push_back({category, name, 1 + (stars++ * 7 + 2) % 5, 0, 0});
        all.push_back(added);
    }

    void open() override { ++opened; }
    void close() override { done.emplace_back("close"); }
    unsigned revision() override { return changes; }
    std::vector<BrowserCategory> categories() override {
        std::vector<BrowserCategory> result;
        for (const Category& category : all) result.push_back({category.name, static_cast<int>(category.patches.size())});
        return result;
    }
    int listedCategory() override { return listed; }
    std::vector<BrowserPatch> patches() override {
        return listed >= 0 ? all[index(listed)].patches : std::vector<BrowserPatch>();
    }
    BrowserPatch playing() override { return inForce; }
    BrowserHint hint() override { return shownHint; }
    void clickCategory(int row) override {
        listed = row;
        done.push_back("category " + all[index(row)].name);
        if (!all[index(row)].patches.empty()) play(all[index(row)].patches.front());
    }
    void clickPatch(int row) override { play(all[index(listed)].patches[index(row)]); }
    void clickStar(int row, int star) override { rateFound(all[index(listed)].patches[index(row)], star); }
    void clickNext() override { done.emplace_back("next"); }
    void clickPrevious() override { done.emplace_back("previous"); }
    void callOffLoad() override { done.emplace_back("call off"); }
    void takeBackTried() override { done.emplace_back("take back"); }
    BrowserNotes notes(const BrowserPatch& patch) override { return written[patch.category + "/" + patch.name]; }
    void writeNotes(const BrowserPatch& patch, const BrowserNotes& notes) override {
        written[patch.category + "/" + patch.name] = notes;
    }
    std::vector<BrowserPatch> search(const std::string& query, const BrowserFilters& filters) override {
        std::vector<BrowserPatch> found;
        for (const Category& category : all)
            for (BrowserPatch patch : category.patches) {
                patch.matchFrom = patch.name.find(query);
                if (patch.matchFrom == std::string::npos || (filters.fourStars && patch.stars < 4)) continue;
                patch.matched = query.size();
                found.push_back(patch);
            }
        return found;
    }
    std::string complete(const std::string& query, const BrowserFilters&) override {
        return query == "Glass" ? "Glass Harbour" : "";
    }
    bool isReading() override { return reads; }
    void playFound(const BrowserPatch& patch) override { play(patch); }
    void rateFound(const BrowserPatch& patch, int stars) override {
        for (Category& category : all)
            for (BrowserPatch& each : category.patches)
                if (each.category == patch.category && each.name == patch.name) each.stars = stars;
        done.push_back("rate " + patch.name + " " + std::to_string(stars));
    }
    void tryPatch(int row) override { tryFound(all[index(listed)].patches[index(row)]); }
    void tryFound(const BrowserPatch& patch) override { done.push_back("try " + patch.name); }
    void tryNext(bool forward) override { done.emplace_back(forward ? "try next" : "try previous"); }

private:
    static std::size_t index(int row) { return static_cast<std::size_t>(row); }
    void play(const BrowserPatch& patch) {
        inForce = patch;
        done.push_back("play " + patch.name);
    }
};

// As large as a library that comes with the instrument.
inline SmallLibrary shippedLibrary() {
    SmallLibrary library;
    for (const char* name : {"ArpMultiLayer", "ArpRhythm", "ArpSequence", "ArpSingleLayer", "Atmo1", "Atmo2", "Bass", "Brass",
                             "Chip", "DroidWobble", "Drum", "Drumline", "Effect", "Gate"})
        library.add(name, {"Amber Tines", "Glass Wing", "Zinc"});
    library.add("Keys",
                {"Amber Tines",     "Attic Upright",  "Barefoot",           "Bell Ceramic",  "Blue Hour",   "Bone Harp",
                 "Brittle Light",   "Cathode Keys",   "Cloud Hammer",       "Copper Reed",   "Damper Down", "Dry Felt",
                 "Electric Meadow", "Glass Harbour",  "Glass Harbour Dark", "Glassine",      "Half Pedal",  "Harbour Lights",
                 "Hollow Oak",      "Ice Lattice",    "Iron Lullaby",       "Kalimba Rain",  "Lantern",     "Late Train",
                 "Linen",           "Low Tide Grand", "Marble Run",         "Milk Tooth",    "Moth Wing",   "Music Box 9",
                 "Night Ferry",     "Nylon Ghost",    "Old Projector",      "Paper Piano",   "Pearl Diver", "Pocket Organ",
                 "Porcelain",       "Quiet Engine",   "Rust Tines",         "Salt Flats",    "Seven Bells", "Slow Mallet",
                 "Snow Globe",      "Soft Circuit",   "Stone Garden",       "Tin Cathedral", "Toy Orbit",   "Velvet Hammer",
                 "Warm Static",     "Wax Cylinder",   "Winter Rowan",       "Zinc"});
    for (const char* name : {"Lead", "Organ", "Pad", "Percussive", "Semireal", "Stacked", "SynthModern", "SynthVintage", "Vocal",
                             "Vocoder", "Favourites", "User"})
        library.add(name, {"Blue Hour", "Glass Ladder"});
    library.add("Custom", {});
    library.listed = 14;
    library.inForce = library.all[14].patches[13];
    return library;
}

}  // namespace vantoric
