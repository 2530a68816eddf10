// vantoric-golden [--quiet] [--only TEXT] DIR...: runs every vector file in the folders.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>

#include "golden_runner/golden.h"

namespace fs = std::filesystem;
using golden::json;

namespace {

struct Totals {
    int passed = 0, failed = 0;
};

void report(const std::string& file, const std::string& name, const golden::Outcome& outcome, bool quiet, Totals& totals) {
    (outcome.passed ? totals.passed : totals.failed)++;
    if (outcome.passed && quiet) return;
    std::printf("%s %s: %s, worst %.3g of its allowance%s%s\n", file.c_str(), name.c_str(), outcome.passed ? "pass" : "FAIL",
                outcome.worst, outcome.message.empty() ? "" : "; ", outcome.message.c_str());
}

std::string areaOf(const fs::path& folder) {
    for (fs::path at = fs::weakly_canonical(folder); at.has_filename(); at = at.parent_path())
        if (golden::isArea(at.filename().string())) return at.filename().string();
    return "";
}

golden::Outcome runCase(golden::Check check, const golden::Case& c) {
    if (check == nullptr) {
        golden::Outcome outcome;
        outcome.fail("unknown kind");
        return outcome;
    }
    try {
        golden::Outcome outcome = check(c);
        golden::requireAllRead(c, outcome);
        return outcome;
    } catch (const std::exception& error) {
        golden::Outcome outcome;
        outcome.fail(error.what());
        return outcome;
    }
}

void runFile(const fs::path& path, const std::string& area, const std::string& only, bool quiet, Totals& totals) {
    static const std::regex tail("_(part)?[0-9]+$");
    const std::string full = path.stem().string();
    // Names like chorus_02 end in digits of their own: the full stem is tried before the cut one.
    std::string stem = full;
    golden::Check check = golden::findCheck(area, stem);
    const std::string cut = std::regex_replace(full, tail, "");
    if (golden::Check other = golden::findCheck(area, cut);
        check == nullptr || (other != nullptr && cut != full && check == other)) {
        check = other;
        stem = cut;
    }
    json cases;
    try {
        std::ifstream stream(path);
        cases = json::parse(stream);
    } catch (const std::exception& error) {
        golden::Outcome outcome;
        outcome.fail(error.what());
        return report(path.filename().string(), "-", outcome, quiet, totals);
    }
    for (const json& j : cases) {
        golden::Case c;
        c.name = j.value("case", "");
        if (!only.empty() && (full + " " + c.name).find(only) == std::string::npos) continue;
        c.area = area;
        c.stem = stem;
        c.input = j.value("input", json::object());
        // Where both stand, "expected" is by another telling of the quick exponential.
        c.expected = j.contains("expected_law") ? j["expected_law"] : j.value("expected", json::object());
        c.tolerance = j.value("tolerance", json::object());
        c.whole = j;
        for (json* part : {&c.input, &c.expected, &c.tolerance}) golden::watch(*part);
        c.folder = path.parent_path().string();
        report(path.filename().string(), c.name, runCase(check, c), quiet, totals);
    }
}

}  // namespace

int main(int argc, char** argv) {
    bool quiet = false;
    std::string only;
    std::vector<fs::path> folders;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--quiet")
            quiet = true;
        else if (word == "--only" && i + 1 < argc)
            only = argv[++i];
        else
            folders.emplace_back(word);
    }
    if (folders.empty()) {
        std::fprintf(stderr, "usage: vantoric-golden [--quiet] [--only TEXT] DIR...\n");
        return 2;
    }
    Totals totals;
    for (const fs::path& folder : folders) {
        std::vector<fs::path> files;
        std::error_code error;
        for (const auto& entry : fs::recursive_directory_iterator(folder, error))
            if (entry.path().extension() == ".json") files.push_back(entry.path());
        if (error) {
            std::fprintf(stderr, "%s: %s\n", folder.c_str(), error.message().c_str());
            return 2;
        }
        std::sort(files.begin(), files.end());
        for (const fs::path& file : files) runFile(file, areaOf(file.parent_path()), only, quiet, totals);
    }
    std::printf("%d passed, %d failed\n", totals.passed, totals.failed);
    return totals.failed == 0 && totals.passed > 0 ? 0 : 1;
}
