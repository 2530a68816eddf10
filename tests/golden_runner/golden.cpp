#include "golden_runner/golden.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>
#include <utility>

namespace golden {

namespace {

struct Entry {
    std::string area, stem;
    Check check;
};

std::vector<Entry>& table() {
    static std::vector<Entry> entries;
    return entries;
}

// Length of the match of `pattern` on `stem`, -1 for none.
int matchLength(const std::string& pattern, const std::string& stem) {
    if (!pattern.empty() && pattern.back() == '*') {
        const std::string prefix = pattern.substr(0, pattern.size() - 1);
        return stem.compare(0, prefix.size(), prefix) == 0 ? static_cast<int>(prefix.size()) : -1;
    }
    return pattern == stem ? static_cast<int>(stem.size()) + 1000 : -1;
}

// What stands in a case for its reader only.
struct Commentary {
    const char* part;  // of the case
    const char* area;  // "": all
    const char* key;
};
constexpr Commentary commentary[] = {
    {"input", "", "note"},
    {"input", "", "about"},
    {"input", "", "formula"},
    {"input", "", "optional"},  // may be missed by a program with other integer types
    {"input", "drive_master", "uses_fastExp"},
    {"input", "drive_master", "other_order"},
    {"input", "drive_master", "name"},  // of a gate's pattern
    {"input", "samples", "label"},      // of a test tone
    {"expected", "", "note"},
    {"expected", "drive_master", "left_rising"},  // by another order of the four points
    {"expected", "drive_master", "right_rising"},
    {"expected", "oscillators", "kind"},   // what is special about a row
    {"expected", "oscillators", "steps"},  // for diagnosis
    {"expected", "oscillators", "outputOtherGroupFirst"},
    {"expected", "oscillators", "outputOneDrawPerSample"},
    {"expected", "samples", "margin"},  // to the next best
    {"expected", "samples", "ratio_of_the_model"},
    {"expected", "time_effects", "rms"},   // to find a fault
    {"expected", "time_effects", "nine"},  // by another telling of the quick exponential
    {"expected", "time_effects", "Dmp_nine"},
    {"tolerance", "", "note"},
    {"tolerance", "", "abs"},  // of texts and integers nothing asks for them
    {"tolerance", "", "rel"},
    {"tolerance", "", "fields"},
    {"tolerance", "time_effects", "admits"},
};

bool isCommentary(const std::string& part, const std::string& area, const std::string& way) {
    const std::string key = way.substr(way.find_last_of('.') + 1);
    return std::any_of(std::begin(commentary), std::end(commentary), [&](const Commentary& row) {
        return part == row.part && key == row.key && (*row.area == '\0' || area.empty() || area == row.area);
    });
}

bool isTolerance(const json& t) { return t.is_object() && (t.contains("abs") || t.contains("rel")); }

}  // namespace

Binding::Binding(const char* area, const char* stem, Check check) { table().push_back({area, stem, check}); }

Check findCheck(const std::string& area, const std::string& stem) {
    Check best = nullptr;
    int length = -1;
    for (const Entry& entry : table()) {
        if (!area.empty() && entry.area != area) continue;
        const int match = matchLength(entry.stem, stem);
        if (match > length) {
            length = match;
            best = entry.check;
        }
    }
    return best;
}

bool isArea(const std::string& name) {
    for (const Entry& entry : table())
        if (entry.area == name) return true;
    return false;
}

void Outcome::number(double got, double expected, double abs, double rel, const std::string& where) {
    const double allowed = abs + rel * std::fabs(expected);
    const double deviation = std::fabs(got - expected);
    if (got == expected) return;
    const double ratio = allowed > 0 ? deviation / allowed : 1e300;
    if (!(ratio <= worst)) worst = std::isfinite(ratio) ? ratio : 1e300;
    if (!(deviation <= allowed))
        fail(where + ": got " + std::to_string(got) + ", expected " + std::to_string(expected) + " (off by " +
             json(deviation).dump() + ", allowed " + json(allowed).dump() + ")");
}

void compareInto(Outcome& outcome, const json& expected, const json& got, const json& tolerance, const std::string& where) {
    if (expected.is_object()) {
        if (!got.is_object()) return outcome.fail(where + ": not an object");
        for (const auto& [key, unused] : expected.items()) {
            const json& value = expected.at(key);
            if (!got.contains(key)) {
                outcome.fail(where + "." + key + ": missing");
                continue;
            }
            const bool own = !isTolerance(tolerance) && tolerance.is_object() && tolerance.contains(key);
            compareInto(outcome, value, got[key], own ? tolerance[key] : tolerance, where + "." + key);
        }
    } else if (expected.is_array()) {
        if (!got.is_array() || got.size() != expected.size())
            return outcome.fail(where + ": got " + std::to_string(got.size()) + " values, expected " +
                                std::to_string(expected.size()));
        for (std::size_t i = 0; i < expected.size(); ++i)
            compareInto(outcome, expected[i], got[i], tolerance, where + "[" + std::to_string(i) + "]");
    } else if (expected.is_number()) {
        if (!got.is_number()) return outcome.fail(where + ": got " + got.dump() + ", expected " + expected.dump());
        const double abs = isTolerance(tolerance) ? tolerance.value("abs", 0.0) : 0.0;
        const double rel = isTolerance(tolerance) ? tolerance.value("rel", 0.0) : 0.0;
        outcome.number(got.get<double>(), expected.get<double>(), abs, rel, where);
    } else if (expected != got) {
        outcome.fail(where + ": got " + got.dump() + ", expected " + expected.dump());
    }
}

void requireAllRead(const Case& c, Outcome& outcome) {
    for (const auto& [part, value] : {std::pair{"input", &c.input}, {"expected", &c.expected}, {"tolerance", &c.tolerance}})
        for (const std::string& way : unreadKeys(*value))
            if (!isCommentary(part, c.area, way)) outcome.fail(std::string(part) + "." + way + " is not read");
    static const std::set<std::string> known = {"case",      "about",   "input",        "expected", "expected_law",
                                                "tolerance", "reading", "alsoAccepted", "note"};
    for (const auto& [key, value] : c.whole.items())
        if (!known.contains(key)) outcome.fail(key + " is not known");
}

Outcome compare(const json& expected, const json& got, const json& tolerance) {
    Outcome outcome;
    compareInto(outcome, expected, got, tolerance, "");
    return outcome;
}

}  // namespace golden
