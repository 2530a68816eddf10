// The manual says what the instrument says: it names everything that can be chosen as the window shows it, and its links lead
// somewhere.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "base/version.h"
#include "editor/model/control_table.h"
#include "editor/model/control_texts.h"
#include "editor/model/menu_rows.h"
#include "effects/effect_texts.h"
#include "effects/type_labels.h"
#include "parameters/label_lists.h"

namespace vantoric {
namespace {

namespace fs = std::filesystem;

const fs::path documents = VANTORIC_DOCUMENTS;

std::string textOf(const fs::path& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<fs::path> chapters() {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(documents / "docs/manual"))
        if (entry.path().extension() == ".md") paths.push_back(entry.path());
    std::ranges::sort(paths);
    return paths;
}

std::string chapter(const std::string& name) {
    const std::string text = textOf(documents / "docs/manual" / name);
    EXPECT_FALSE(text.empty()) << name;
    return text;
}

std::string manual() {
    std::string text;
    for (const fs::path& path : chapters()) text += textOf(path);
    return text;
}

std::string trimmed(std::string text) {
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

// What stands in bold letters: the names that the window shows. A name that is broken by the end of a line counts as one.
std::set<std::string> namesIn(std::string text) {
    std::ranges::replace(text, '\n', ' ');
    std::set<std::string> names;
    for (std::size_t at = text.find("**"); at != std::string::npos; at = text.find("**", at)) {
        const std::size_t end = text.find("**", at + 2);
        if (end == std::string::npos) break;
        std::string name;
        for (std::size_t i = at + 2; i < end; ++i)
            if (text[i] != '\\' || text[i + 1] == '\\') name += text[i];
        names.insert(name);
        at = end + 2;
    }
    return names;
}

template <class Labels>
void expectNamed(const std::set<std::string>& names, const Labels& labels, const char* what) {
    for (const auto& label : labels) {
        const bool isSeparator = std::string(label) == "-";
        EXPECT_TRUE(isSeparator || names.contains(trimmed(label))) << what << ": " << label;
    }
}

TEST(Manual, EveryFilterAndDistortionHasItsLine) {
    const auto names = namesIn(chapter("05-filters.md"));
    expectNamed(names, filterTypeLabels, "filter");
    expectNamed(names, distortionTypeLabels, "distortion");
}

TEST(Manual, EveryOscillatorKindAndWaveHasItsLine) {
    const auto names = namesIn(chapter("04-oscillators.md"));
    expectNamed(names, synthesisTypeLabels, "kind");
    expectNamed(names, wavetableWaveLabels, "wavetable");
    expectNamed(names, superWaveLabels, "hypersaw");
    expectNamed(names, noiseTypeLabels, "noise");
    expectNamed(names, analogWaveLabels, "analog wave");
    expectNamed(names, qualityLabels, "quality");
    expectNamed(names, intervalLabels, "interval");
}

TEST(Manual, EverySourceAndDestinationIsExplained) {
    const auto names = namesIn(chapter("08-modulation.md"));
    expectNamed(names, matrixSourceLabels, "source");
    expectNamed(names, matrixDestinationLabels, "destination");
    constexpr int aKnob = parameter::Cutoff1;
    expectNamed(names, knobMenuRows(aKnob, MidiLearn::noController), "row of a knob's menu");
}

TEST(Manual, EveryListOfALayerIsExplained) {
    const auto layers = namesIn(chapter("03-layers.md"));
    expectNamed(layers, playModeLabels, "play mode");
    expectNamed(layers, keySplitLabels, "split");
    expectNamed(layers, velocityRangeLabels, "velocity range");
    const auto lfos = namesIn(chapter("07-lfos.md"));
    expectNamed(lfos, lfoWaveLabels, "LFO wave");
    expectNamed(lfos, lfoModeLabels, "LFO mode");
    expectNamed(lfos, stepShapeLabels, "step shape");
    expectNamed(lfos, stepModeLabels, "step mode");
    const auto arpeggiator = namesIn(chapter("09-arpeggiator.md"));
    expectNamed(arpeggiator, arpTypeLabels, "arpeggiator type");
    expectNamed(arpeggiator, arpSpeedLabels, "arpeggiator speed");
    expectNamed(arpeggiator, arpChordLabels, "chord");
    expectNamed(arpeggiator, arpRetriggerLabels, "start");
}

TEST(Manual, EveryListOfTheWholePatchIsExplained) {
    expectNamed(namesIn(chapter("12-master.md")), soundModeLabels, "sound mode");
    const auto pitch = namesIn(chapter("10-pitch.md"));
    expectNamed(pitch, microtuneLabels, "microtuning");
    expectNamed(pitch, pitchRangeLabels, "wheel range");
}

// The words of a parameter's text without its value: "Low Damp 35%".
std::string nameOfEffectParameter(int type, int index) {
    char text[effectTextSize] = "";
    effectParameterText(type, index, 0.5f, text);
    const std::string shown = text;
    std::string name;
    std::istringstream words(shown);
    for (std::string word; words >> word;) {
        if (std::isdigit(static_cast<unsigned char>(word[0])) || word[0] == '-' || word[0] == '+') break;
        name += (name.empty() ? "" : " ") + word;
    }
    return name;
}

TEST(Manual, EveryEffectHasItsLineWithItsParameters) {
    const std::string text = chapter("11-effects.md");
    expectNamed(namesIn(text), insertTypeLabels, "effect");
    // Whose text is an entry of a list and has no name.
    const std::set<std::pair<int, int>> lists{{9, 3}, {17, 1}, {21, 1}, {76, 2}};
    for (int type = 1; type < effectTypeCount; ++type) {
        const std::string label = trimmed(insertTypeLabels[static_cast<std::size_t>(type)]);
        if (label == "-") continue;
        const std::size_t begin = text.find("| **" + label + "** |");
        ASSERT_NE(begin, std::string::npos) << label;
        const std::string line = text.substr(begin, text.find('\n', begin) - begin);
        for (int index = 1; index <= 4; ++index)
            if (!lists.contains({type, index})) {
                EXPECT_NE(line.find(nameOfEffectParameter(type, index)), std::string::npos)
                    << label << ": " << nameOfEffectParameter(type, index);
            }
    }
}

TEST(Manual, EveryRowOfTheMenusIsExplained) {
    const auto rows = namesIn(chapter("19-menus.md"));
    for (const int menu : {tag::fileMenu, tag::copyMenu, tag::pasteMenu, tag::initMenu, tag::editorMenu, tag::helpMenu})
        expectNamed(rows, menuRows(menu), "menu row");
    const auto samples = namesIn(chapter("13-samples.md"));
    expectNamed(samples, menuRows(tag::sampleEdit1), "sample command");
    expectNamed(samples, loopModeLabels, "loop");
}

TEST(Manual, EveryKnobAndButtonIsNamed) {
    const auto names = namesIn(manual());
    for (int i = 0; i < controlCount(); ++i) {
        const ControlEntry& entry = controlEntry(i);
        const std::string caption = entry.caption;
        const bool isSign = caption == "On" || std::ranges::all_of(caption, [](unsigned char c) { return std::isdigit(c) != 0; });
        EXPECT_TRUE(isSign || names.contains(caption)) << entry.name << ": " << caption;
    }
}

// As the page's builder makes the anchor of a heading.
std::string anchorOf(const std::string& heading) {
    std::string anchor;
    for (const char c : heading) {
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' || c == '.')
            anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        else if (c == ' ')
            anchor += '-';
    }
    return anchor;
}

TEST(Manual, ItsLinksAndPicturesLeadSomewhere) {
    const std::string text = manual();
    std::set<std::string> anchors;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with('#')) {
            const auto [found, isNew] = anchors.insert(anchorOf(line.substr(line.find(' ') + 1)));
            EXPECT_TRUE(isNew || line.starts_with("##")) << line;
        }
    const std::regex link(R"(\]\(([^)]*)\))");
    std::set<std::string> pictures;
    for (std::sregex_iterator at(text.begin(), text.end(), link), end; at != end; ++at) {
        const std::string target = (*at)[1];
        if (target.starts_with('#')) {
            EXPECT_TRUE(anchors.contains(target.substr(1))) << target;
        } else {
            EXPECT_TRUE(fs::exists(documents / "docs/manual" / target)) << target;
            pictures.insert(fs::path(target).filename());
        }
    }
    for (const auto& entry : fs::directory_iterator(documents / "docs/manual/pictures"))
        EXPECT_TRUE(pictures.contains(entry.path().filename())) << entry.path() << " is in no chapter";
}

TEST(Changes, TheNewestEntryIsTheVersion) {
    const std::string text = textOf(documents / "CHANGELOG.md");
    const std::size_t at = text.find("\n## [");
    ASSERT_NE(at, std::string::npos);
    EXPECT_EQ(text.substr(at + 5, text.find(']', at) - at - 5), versionText);
}

}  // namespace
}  // namespace vantoric
