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

// The texts in quotes of a folder's sources: what views and messages show.
std::string quotedTexts(const std::string& folder) {
    std::string all;
    for (const auto& entry : fs::recursive_directory_iterator(documents / folder))
        if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h") all += textOf(entry.path());
    return all;
}

// What stands in the window and the program of its own beside the controls of the table.
TEST(Manual, EveryButtonOfTheLibraryAndOfTheProgramIsNamed) {
    const auto expectShownAndNamed = [](const char* chapterName, const char* folder, const std::vector<std::string>& buttons) {
        const auto names = namesIn(chapter(chapterName));
        const std::string sources = quotedTexts(folder);
        for (const std::string& button : buttons) {
            EXPECT_TRUE(names.contains(button)) << chapterName << ": " << button;
            EXPECT_NE(sources.find("\"" + button + "\""), std::string::npos) << folder << ": " << button;
        }
    };
    expectShownAndNamed("14-library.md", "editor",
                        {"Previous", "Next", "Favourites", "4 stars and up", "Recent", "Mine", "Tags", "Author", "About"});
    EXPECT_TRUE(namesIn(chapter("14-library.md")).contains("Tags \u2026"));
    EXPECT_NE(quotedTexts("editor").find("\"Tags \\u2026\""), std::string::npos);
    for (const char* key : {"F2", "Ctrl+T"}) EXPECT_TRUE(namesIn(chapter("14-library.md")).contains(key)) << key;
    expectShownAndNamed("18-programs-and-hosts.md", "faces/standalone",
                        {"Record", "Keys", "Pedal", "Panic", "Tempo", "Load", "System", "Automatic", "None", "Device", "Rate",
                         "Period", "Keyboards"});
}

// From "### heading" to the next heading.
std::string sectionOf(const std::string& text, const std::string& heading) {
    const std::size_t begin = text.find("\n" + heading + "\n");
    EXPECT_NE(begin, std::string::npos) << heading;
    return text.substr(begin + 1, text.find("\n#", begin + 1) - begin);
}

// What the first column of a table names, "1 to 8" as each of them.
std::set<std::string> fieldsOf(const std::string& section) {
    std::set<std::string> fields;
    std::istringstream lines(section);
    const std::regex field(R"(\*\*([^*]+)\*\*(?: to \*\*([^*]+)\*\*)?)");
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("| **")) continue;
        const std::string cell = line.substr(0, line.find('|', 1));
        for (std::sregex_iterator at(cell.begin(), cell.end(), field), end; at != end; ++at) {
            const std::string name = std::regex_replace((*at)[1].str(), std::regex(R"(\\\\)"), R"(\)");
            if (!(*at)[2].matched) {
                fields.insert(name);
                continue;
            }
            const std::size_t digits = name.find_first_of("0123456789"), toDigits = (*at)[2].str().find_first_of("0123456789");
            for (int i = std::stoi(name.substr(digits)); i <= std::stoi((*at)[2].str().substr(toDigits)); ++i)
                fields.insert(name.substr(0, digits) + std::to_string(i));
        }
    }
    return fields;
}

TEST(Manual, TheStepsOfTheArpeggiatorAreThoseThatThereAre) {
    const std::string text = chapter("09-arpeggiator.md");
    const auto expectTheSame = [&](const char* heading, LabelList labels) {
        std::set<std::string> there(labels.begin(), labels.end());
        there.erase("-");
        EXPECT_EQ(fieldsOf(sectionOf(text, heading)), there) << heading;
    };
    expectTheSame("### Vel", arpStepVolumeLabels);
    expectTheSame("### Note", arpStepNoteLabels);
}

void add(std::set<std::string>& known, const LabelList& labels) {
    for (const char* label : labels) known.insert(trimmed(label));
}

// The names of all that can be chosen, seen or pressed.
std::set<std::string> knownNames() {
    std::set<std::string> known;
    for (const LabelList& labels :
         {soundModeLabels,         microtuneLabels,      qualityLabels,     pitchRangeLabels, synthesisTypeLabels,
          wavetableWaveLabels,     superWaveLabels,      noiseTypeLabels,   analogWaveLabels, loopModeLabels,
          playModeLabels,          velocityRangeLabels,  keySplitLabels,    lfoWaveLabels,    lfoModeLabels,
          stepShapeLabels,         stepModeLabels,       arpTypeLabels,     arpSpeedLabels,   arpChordLabels,
          arpRetriggerLabels,      arpStepVolumeLabels,  arpStepNoteLabels, filterTypeLabels, matrixSourceLabels,
          matrixDestinationLabels, octaveLabels,         intervalLabels,    tempoLabels,      insertTypeMenuLabels,
          masterTypeMenuLabels,    distortionTypeLabels, midiChannelLabels})
        add(known, labels);
    for (const char* label : insertTypeLabels) known.insert(trimmed(label));
    for (const int menu :
         {tag::fileMenu, tag::copyMenu, tag::pasteMenu, tag::initMenu, tag::editorMenu, tag::helpMenu, tag::sampleEdit1})
        add(known, menuRows(menu));
    for (int i = 0; i < controlCount(); ++i) known.insert(controlEntry(i).caption);
    return known;
}

// Keys of the computer, alone or with others held; parts of names; what is another program's; the ways to install.
bool isOfAnotherKind(const std::string& name) {
    static const std::set<std::string> others{"Alt",
                                              "Backspace",
                                              "Delete",
                                              "Enter",
                                              "Escape",
                                              "F2",
                                              "F5",
                                              "Page Down",
                                              "Page Up",
                                              "Shift",
                                              "Shift+Tab",
                                              "Space",
                                              "Tab",
                                              "Home",
                                              "End",
                                              "Up",
                                              "Down",
                                              "Left",
                                              "Right",
                                              "L R",
                                              "2x",
                                              "4x",
                                              "light",
                                              "medium",
                                              "heavy",
                                              "stereo",
                                              "2048",
                                              "0Welcome",
                                              "By hand",
                                              "The archive",
                                              "The Debian package",
                                              "The chord",
                                              "The order",
                                              "The speed",
                                              "The start",
                                              "Options",
                                              "Plugin Manager",
                                              "Plugins",
                                              "Preferences",
                                              "Rescan",
                                              "VST",
                                              "View",
                                              "Window",
                                              "+-",
                                              "Tags \u2026",
                                              "Midi learn-> remove CC",
                                              "No sound device",
                                              "The keyboard does not play",
                                              "A note comes late, or it crackles"};
    const bool isHead = name.ends_with('.') || name.ends_with(':');
    return isHead || name.starts_with("Ctrl+") || name.size() == 1 || others.contains(name);
}

// The other way round: nothing is named that is not there.
TEST(Manual, WhatItNamesIsThere) {
    const auto known = knownNames();
    const std::string sources = quotedTexts("editor") + quotedTexts("library") + quotedTexts("parameters") +
                                quotedTexts("effects") + quotedTexts("faces/standalone");
    for (const fs::path& path : chapters())
        for (const std::string& name : namesIn(textOf(path))) {
            const bool isQuoted =
                sources.find("\"" + name + "\"") != std::string::npos || sources.find("\"" + name + " ") != std::string::npos;
            EXPECT_TRUE(isQuoted || known.contains(name) || isOfAnotherKind(name)) << path.filename() << ": " << name;
        }
}

// Off and the dividing lines of the menu are none.
TEST(Manual, UsersAreToldOfAsManyEffectsAsThereAre) {
    const auto isNone = [](const std::string& label) { return label == "-" || label == "off"; };
    long count = 0;
    for (const char* label : insertTypeLabels) count += isNone(trimmed(label)) ? 0 : 1;
    const std::string told = std::to_string(count) + " effects";
    for (const char* path : {"README.md", "CHANGELOG.md", "packaging/metainfo.xml.in", "packaging/CMakeLists.txt"})
        EXPECT_NE(textOf(documents / path).find(told), std::string::npos) << path << ": " << told;
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
