// Samples by the mouse: loading, the markers in the display, the rows of their menus.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <utility>

#include <unistd.h>

#include "base/parameters.h"
#include "editor/model/menu_rows.h"
#include "editor/model/window_layout.h"
#include "tests/window/compare_pictures.h"
#include "tests/window/saved_patch.h"
#include "tests/window/window_rig.h"

using namespace testhost;
using vantoric::ControlEntry;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;

namespace {

constexpr float sampleType = 3.0f / 128, customWaveType = 4.0f / 128;

// What is loaded: a decaying sine that stands beside its middle, of a rate that none of the rows sets, so that each row has
// something to do.
constexpr std::uint32_t waveRate = 32000;
std::vector<std::int16_t> waveSamples() {
    constexpr std::uint32_t frames = 22050;
    constexpr double offset = 900;
    std::vector<std::int16_t> samples;
    for (std::uint32_t i = 0; i < frames; ++i)
        samples.push_back(static_cast<std::int16_t>(std::lround(offset + 2e4 * std::sin(0.0314 * i) * std::exp(-1e-4 * i))));
    return samples;
}

// 16 bits, one channel.
void writeWave(const std::filesystem::path& path) {
    const std::vector<std::int16_t> samples = waveSamples();
    const auto bytes = static_cast<std::uint32_t>(2 * samples.size());
    std::ofstream file(path, std::ios::binary);
    const auto number = [&](std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i) file.put(static_cast<char>(value >> (8 * i) & 255));
    };
    file << "RIFF";
    number(36 + bytes, 4);
    file << "WAVEfmt ";
    number(16, 4), number(1, 2), number(1, 2), number(waveRate, 4), number(2 * waveRate, 4), number(2, 2), number(16, 2);
    file << "data";
    number(bytes, 4);
    for (const std::int16_t sample : samples) number(static_cast<std::uint16_t>(sample - 1), 2);  // loading adds it
}

// The samples of a file of that kind, behind its 44 bytes.
std::vector<std::int16_t> samplesIn(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    file.seekg(44);
    std::vector<std::int16_t> samples;
    for (unsigned char word[2]; file.read(reinterpret_cast<char*>(word), 2);)
        samples.push_back(static_cast<std::int16_t>(word[0] | word[1] << 8));
    return samples;
}

class Samples : public testing::Test {
protected:
    void SetUp() override { rig.reset(); }
    void TearDown() override {
        rig.closeMenus();
        for (const auto& file : {wave, saved}) std::filesystem::remove(file);
    }

    // Through the button and the chooser, as a hand does.
    void loadWave(int oscillator = 0) {
        writeWave(wave);
        rig.set(typeOf(oscillator), sampleType);
        host.idle(150);
        rig.click(controlWithTag(tag::sampleLoad1 + 2 * oscillator));
        ASSERT_TRUE(rig.typePath(wave.string())) << "a chooser opens";
        host.idle(600);  // the file is read beside the window
        ASSERT_TRUE(host.until([&] { return rig.isCovered(); }, 10)) << "whether it is to be tuned";
        host.key("Return");  // to C
        ASSERT_TRUE(host.until([&] { return !sample(oscillator).samples.empty(); }, 10)) << "the sample is part of the patch";
        host.idle(150);
    }
    static const ControlEntry& typeOf(int oscillator) { return controlWithTag(parameter::SynType1 + oscillator); }
    SavedSample sample(int oscillator) { return SavedPatch(rig.plugin().chunk()).sample(oscillator); }
    std::vector<std::int16_t> customWave(int oscillator) { return SavedPatch(rig.plugin().chunk()).customWave(oscillator); }

    // The list, and the button beside it, that edit an oscillator's sample: both have the same tag and rows.
    static const ControlEntry& editControl(int oscillator, vantoric::WidgetKind kind) {
        for (int i = 0; i < vantoric::controlCount(); ++i)
            if (const ControlEntry& entry = vantoric::controlEntry(i);
                entry.tag == tag::sampleEdit1 + 2 * oscillator && entry.kind == kind)
                return entry;
        throw std::runtime_error("no such control");
    }
    bool chooseEdit(int row, int oscillator = 0, vantoric::WidgetKind kind = vantoric::WidgetKind::SmallList) {
        const auto menu = rig.openMenu(editControl(oscillator, kind));
        return menu && rig.choose(*menu, editLabels(), row);
    }
    static std::vector<std::string> editLabels() { return labelsOf(editControl(0, vantoric::WidgetKind::SmallList)); }
    static int editRow(const std::string& label) {
        const auto labels = editLabels();
        return static_cast<int>(std::ranges::find(labels, label) - labels.begin());
    }
    void undo() {
        rig.click(rig.at(hintLine.x + hintLine.width - 30, hintLine.y + hintLine.height / 2.0));
        host.idle(200);
    }
    // A point of the display, as a fraction of its width.
    Point inDisplay(double fraction) const {
        return rig.at(display.x + fraction * display.width, display.y + display.height / 2.0);
    }
    void dragMarkers(double from, double to, int button = 1) {
        const Point a = inDisplay(from), b = inDisplay(to);
        host.drag(a.x, a.y, b.x, b.y, button);
        host.idle(250);
    }

    WindowRig& rig = sharedRig();
    WindowHost& host = rig.host();
    // Small letters only, as it is typed without Shift.
    const std::filesystem::path wave =
        std::filesystem::temp_directory_path() / ("vantoric-tone-" + std::to_string(getpid()) + ".wav");
    const std::filesystem::path saved =
        std::filesystem::temp_directory_path() / ("vantoric-out-" + std::to_string(getpid()) + ".wav");
    const ControlEntry& type = typeOf(0);
    const ControlEntry& display = controlNamed("WAVE 1");
    const vantoric::LayoutRect& hintLine = vantoric::windowPart(vantoric::WindowPart::HintLine).rect;
};

TEST_F(Samples, ADragInTheDisplaySetsTheLoopAndIsOneStepBack) {
    loadWave();
    const auto before = rig.plugin().chunk();
    dragMarkers(0.2, 0.7);
    const auto after = rig.plugin().chunk();
    EXPECT_NE(after, before);
    EXPECT_EQ(after.size(), before.size()) << "the sample itself stays";
    undo();
    EXPECT_EQ(rig.plugin().chunk(), before);
}

TEST_F(Samples, TheHintLineTellsTheLoopAsItIsDragged) {
    loadWave();
    dragMarkers(0.2, 0.7);
    const auto line = [&] {
        host.idle(150);
        const double u = rig.unit();
        return host.glance().part(static_cast<int>(hintLine.x * u), static_cast<int>(hintLine.y * u),
                                  static_cast<int>((hintLine.width - 90) * u), static_cast<int>(hintLine.height * u));
    };
    const auto areAlike = [](const Picture& a, const Picture& b) { return difference(a, b).largest <= tolerance; };
    host.move(inDisplay(0.3).x, inDisplay(0.3).y);
    const Picture before = line();
    host.press();
    host.move(inDisplay(0.5).x, inDisplay(0.5).y);
    const Picture held = line();
    EXPECT_FALSE(areAlike(held, before));
    host.move(inDisplay(0.9).x, inDisplay(0.9).y);
    EXPECT_FALSE(areAlike(line(), held));
    host.release();
    const Picture told = line();
    host.move(3, 400);
    EXPECT_FALSE(areAlike(line(), told));
    host.move(inDisplay(0.5).x, inDisplay(0.5).y);
    EXPECT_TRUE(areAlike(line(), told));
}

TEST_F(Samples, ArrowsMoveTheLoopOfTheFocusedDisplay) {
    loadWave();
    host.click(3, 400);
    host.idle(150);
    const auto around = [&] {
        const double u = rig.unit();
        return host.glance().part(static_cast<int>((display.x - 5) * u), static_cast<int>((display.y + display.height / 2.0) * u),
                                  static_cast<int>(4 * u), static_cast<int>(10 * u));
    };
    const Picture without = around();
    for (int i = 0; i < 200 && around() == without; ++i) {
        host.hostKey(0, 2);  // Tab
        host.idle(30);
    }
    const int start = vantoric::hostIndex(parameter::LoopSta1, rig.layer());
    for (int i = 0; i < 10; ++i) host.key("Up");  // there may be no loop yet
    host.idle(200);
    const float before = rig.plugin().parameter(start);
    for (int i = 0; i < 5; ++i) host.key("Right");
    EXPECT_TRUE(host.until([&] { return std::fabs(rig.plugin().parameter(start) - before - 0.05f) < 0.002f; }, 5));
    host.key("Escape");
}

TEST_F(Samples, MarkersThatCrossEachOtherSwap) {
    loadWave();
    const auto before = rig.plugin().chunk();
    dragMarkers(0.3, 0.8);
    const auto forward = rig.plugin().chunk();
    undo();
    ASSERT_EQ(rig.plugin().chunk(), before);
    dragMarkers(0.8, 0.3);
    EXPECT_EQ(rig.plugin().chunk(), forward);
}

TEST_F(Samples, EscapeCallsADragOfAMarkerOff) {
    loadWave();
    dragMarkers(0.2, 0.7);
    const auto before = rig.plugin().chunk();
    for (const int button : {1, 3}) {
        host.move(inDisplay(0.4).x, inDisplay(0.4).y);
        host.press(button);
        host.move(inDisplay(0.5).x, inDisplay(0.5).y);
        host.key("Escape");
        host.release(button);
        host.idle(250);
        EXPECT_EQ(rig.plugin().chunk(), before) << "button " << button;
    }
    dragMarkers(0.4, 0.5, 2);
    EXPECT_EQ(rig.plugin().chunk(), before) << "the middle button drags nothing";
}

TEST_F(Samples, TheRightButtonSetsTheStart) {
    loadWave();
    const int start = vantoric::hostIndex(parameter::Start1, rig.layer());
    dragMarkers(0.1, 0.5, 3);
    EXPECT_NEAR(rig.plugin().parameter(start), 0.5f, 0.02f);
    dragMarkers(0.25, 0.25, 3);
    EXPECT_NEAR(rig.plugin().parameter(start), 0.25f, 0.02f);
}

TEST_F(Samples, ADisplayOfAWaveTakesNoDrag) {
    rig.set(type, 0);
    host.idle(150);
    const auto before = rig.plugin().chunk();
    dragMarkers(0.2, 0.7);
    EXPECT_EQ(rig.plugin().chunk(), before);
}

// ---- the rows of the edit menu

// What a row changes of a sample with a part marked: the wave between its marks, or all of the wave; its length, its loop,
// its rate; whether it loops, where it starts, its tuning. And nothing else.
struct EditRow {
    const char *label, *changes;
};
constexpr EditRow editRows[] = {
    {"Clear all", "length loop rate "},
    {"Autoloop 75%", "all loop mode start "},
    {"Autoloop 66%", "all loop mode start "},
    {"Autoloop 50%", "all loop mode start "},
    {"Loop all", "loop mode start "},
    {"Loop 50%", "loop mode start "},
    {"Loop 33%", "loop mode start "},
    {"Reverse", "marked "},
    {"Autotune", "rate "},
    {"Tune C5 44kHz", "rate tuning "},
    {"Tune C5 96kHz", "rate tuning "},
    {"Trim", "length loop "},
    {"Cut", "length loop "},
    {"Maximize", "marked "},
    {"Volume -6dB", "marked "},
    {"Volume +6dB", "marked "},
    {"Fade in", "marked "},
    {"Fade out", "marked "},
    {"Silence", "marked "},
    {"Remove DC", "all "},
    {"Tube saturate", "marked "},
    {"Rectify", "marked "},
    {"Differenciate", "marked "},
    {"Sinoid shaper", "marked "},
    {"Soft selfsync", "marked "},
    {"Crush 8bit", "marked "},
    {"Crush 4bit", "marked "},
    {"Crush 2bit", "marked "},
    {"Alias 4", "marked "},
    {"Alias 16", "marked "},
    {"Alias 64", "marked "},
    {"Noisify 1", "marked "},
    {"Noisify 2", "marked "},
    {"Phase shifter", "marked "},
    {"Invert", "marked "},
    {"Fold", "marked "},
    {"Quadrature", "marked "},
};

class EditedSamples : public Samples {
protected:
    struct State {
        SavedSample sample;
        float mode, start;
        std::vector<float> tuning;
    };
    State state() {
        State now{sample(0), value(parameter::LoopMod1), value(parameter::Start1), {}};
        for (const int number : tuningNumbers) now.tuning.push_back(value(number));
        return now;
    }
    float value(int number) { return rig.plugin().parameter(vantoric::hostIndex(number, rig.layer())); }
    void set(int number, float value) { rig.plugin().setParameter(vantoric::hostIndex(number, rig.layer()), value); }

    // In the words of the table.
    static std::string changes(const State& before, const State& after) {
        const SavedSample &a = before.sample, &b = after.sample;
        std::string words;
        const auto add = [&](bool isChanged, const char* word) { words += isChanged ? word : ""; };
        const bool hasLength = a.samples.size() == b.samples.size();
        const auto equal = [&](int from, int to) {
            return std::equal(a.samples.begin() + from, a.samples.begin() + to, b.samples.begin() + from);
        };
        const int length = static_cast<int>(a.samples.size());
        add(!hasLength, "length ");
        if (hasLength && a.samples != b.samples) words += equal(0, a.loopStart) && equal(a.loopEnd, length) ? "marked " : "all ";
        add(a.loopStart != b.loopStart || a.loopEnd != b.loopEnd, "loop ");
        add(a.rate != b.rate, "rate ");
        add(before.mode != after.mode, "mode ");
        add(before.start != after.start, "start ");
        add(before.tuning != after.tuning, "tuning ");
        return words;
    }

    static constexpr int tuningNumbers[] = {parameter::Oct1, parameter::Semi1, parameter::Interv1, parameter::Detune1};
};

TEST_F(EditedSamples, EveryRowDoesToTheSampleWhatItIsFor) {
    loadWave();
    dragMarkers(0.2, 0.7);
    set(parameter::LoopMod1, 0);  // and nothing stands where a row would put it
    set(parameter::Start1, 0.25f);
    for (const int number : tuningNumbers) set(number, 0.7f);
    host.idle(150);
    const State before = state();
    ASSERT_GT(before.sample.loopStart, 0);
    ASSERT_LT(before.sample.loopEnd, static_cast<int>(before.sample.samples.size()));
    const auto patch = rig.plugin().chunk();
    for (const auto& [label, wanted] : editRows) {
        ASSERT_TRUE(chooseEdit(editRow(label))) << label;
        EXPECT_FALSE(rig.isCovered()) << label;
        EXPECT_TRUE(host.until([&] { return changes(before, state()) == wanted; }, 5))
            << label << " changes: " << changes(before, state());
        undo();
        ASSERT_TRUE(host.until([&] { return rig.plugin().chunk() == patch; }, 5)) << label << " is not taken back";
    }
}

TEST_F(EditedSamples, TrimKeepsWhatIsMarkedAndCutTheRest) {
    loadWave();
    dragMarkers(0.2, 0.7);
    const SavedSample before = sample(0);
    const auto first = before.samples.begin() + before.loopStart, last = before.samples.begin() + before.loopEnd;
    std::vector<std::int16_t> rest(before.samples.begin(), first);
    rest.insert(rest.end(), last, before.samples.end());
    const std::pair<const char*, std::vector<std::int16_t>> rows[] = {{"Trim", {first, last}}, {"Cut", rest}};
    for (const auto& [label, left] : rows) {
        ASSERT_TRUE(chooseEdit(editRow(label)));
        EXPECT_TRUE(host.until([&] { return sample(0).samples == left; }, 5)) << label;
        EXPECT_EQ(sample(0).loopStart, 0) << label;
        EXPECT_EQ(sample(0).loopEnd, static_cast<int>(left.size())) << label;
        undo();
        ASSERT_TRUE(host.until([&] { return sample(0) == before; }, 5));
    }
    undo();  // of the marks: all of the sample is meant now
    ASSERT_TRUE(host.until([&] { return sample(0).loopStart != before.loopStart; }, 5));
    const SavedSample unmarked = sample(0);
    ASSERT_TRUE(chooseEdit(editRow("Trim")));
    host.idle(300);
    EXPECT_EQ(sample(0), unmarked) << "there is nothing to trim";
}

TEST_F(EditedSamples, TheTableAboveHasEveryRow) {
    std::vector<std::string> rows, others{"Undo/Redo", "Export as wav", "-"};
    for (const std::string& label : editLabels())
        if (std::ranges::find(others, label) == others.end()) rows.push_back(label);
    EXPECT_TRUE(std::ranges::equal(rows, editRows, {}, {}, &EditRow::label)) << testing::PrintToString(rows);
}

TEST_F(EditedSamples, TheFirstRowTakesTheLastOneBackAndForth) {
    loadWave();
    const SavedSample before = sample(0);
    ASSERT_TRUE(chooseEdit(editRow("Clear all")));
    ASSERT_TRUE(host.until([&] { return sample(0).samples.empty(); }, 5));
    for (const bool isThere : {true, false, true}) {
        ASSERT_TRUE(chooseEdit(editRow("Undo/Redo")));
        EXPECT_TRUE(host.until([&] { return isThere ? sample(0) == before : sample(0).samples.empty(); }, 5));
    }
}

TEST_F(EditedSamples, ASampleIsExportedAsItIs) {
    loadWave();
    ASSERT_TRUE(chooseEdit(editRow("Export as wav")));
    ASSERT_TRUE(rig.typePath(saved.string()));
    EXPECT_TRUE(host.until([&] { return samplesIn(saved) == waveSamples(); }, 5));
    EXPECT_EQ(sample(0).samples, waveSamples()) << "and stays";
}

// ---- each oscillator has controls of its own

class OscillatorSamples : public Samples, public testing::WithParamInterface<int> {
protected:
    bool othersHaveNone() {
        for (int other = 0; other < 3; ++other)
            if (other != GetParam() && !sample(other).samples.empty()) return false;
        return true;
    }
};

TEST_P(OscillatorSamples, TheButtonLoadsAWaveIntoThatOscillator) {
    loadWave(GetParam());
    const SavedSample loaded = sample(GetParam());
    EXPECT_EQ(loaded.samples, waveSamples());
    EXPECT_EQ(loaded.rate, waveRate);
    EXPECT_TRUE(othersHaveNone());
}

TEST_P(OscillatorSamples, TheListAndTheButtonEditTheSampleOfThatOscillator) {
    using enum vantoric::WidgetKind;
    rig.set(typeOf(GetParam()), sampleType);
    for (const auto kind : {SmallList, SampleButton}) {
        const auto before = rig.plugin().chunk();
        ASSERT_TRUE(chooseEdit(editRow("Reverse"), GetParam(), kind));
        EXPECT_TRUE(host.until([&] { return rig.isCovered(); }, 5)) << "there is no sample, which is told";
        rig.closeMenus();
        EXPECT_EQ(rig.plugin().chunk(), before);
    }
    loadWave(GetParam());
    std::vector<std::int16_t> wanted = waveSamples();
    for (const auto kind : {SmallList, SampleButton}) {
        ASSERT_TRUE(chooseEdit(editRow("Reverse"), GetParam(), kind));
        std::ranges::reverse(wanted);
        EXPECT_TRUE(host.until([&] { return sample(GetParam()).samples == wanted; }, 5));
    }
    EXPECT_TRUE(othersHaveNone());
}

TEST_P(OscillatorSamples, TheWaveMenuMakesSavesAndShowsTheWaveOfThatOscillator) {
    using namespace vantoric::wave_row;
    const ControlEntry& list = controlWithTag(tag::waveMenu1 + GetParam());
    const std::vector<std::string> firstRows{"Load Wave", "Save Wave", "Random Wave", "-", "a wave"};
    const auto choose = [&](int row) {
        const auto menu = rig.openMenu(list);
        ASSERT_TRUE(menu);
        rig.click(rig.rowPlace(*menu, firstRows, row));
        host.move(3, 400);
    };
    const auto shown = [&] { return rig.pictureOf(list); };
    const auto isAlike = [&](const Picture& other) { return difference(shown(), other).largest <= tolerance; };
    rig.set(typeOf(GetParam()), customWaveType);
    host.move(3, 400);
    host.idle(300);
    const Picture plain = shown();
    std::vector<std::vector<std::int16_t>> before;
    for (int i = 0; i < 3; ++i) before.push_back(customWave(i));

    choose(firstFile);
    EXPECT_TRUE(host.until([&] { return customWave(GetParam()) != before[static_cast<std::size_t>(GetParam())]; }, 5));
    EXPECT_TRUE(host.until([&] { return !isAlike(plain); }, 5)) << "its name stands in the list";
    const auto made = customWave(GetParam());
    choose(save);
    ASSERT_TRUE(rig.typePath(saved.string()));
    EXPECT_TRUE(host.until([&] { return samplesIn(saved) == made; }, 5));
    writeWave(wave);
    choose(load);
    ASSERT_TRUE(rig.typePath(wave.string()));
    EXPECT_TRUE(host.until([&] { return customWave(GetParam()) != made; }, 5));
    EXPECT_TRUE(host.until([&] { return isAlike(plain); }, 5)) << "it is no wave of the list any more";
    for (int i = 0; i < 3; ++i) {
        if (i == GetParam()) continue;
        EXPECT_EQ(customWave(i), before[static_cast<std::size_t>(i)]) << "the others keep theirs";
    }
}

INSTANTIATE_TEST_SUITE_P(Window, OscillatorSamples, testing::Range(0, 3));

TEST_F(Samples, AWaveByChanceAndOneOfTheListAreChosenByTheMouse) {
    rig.set(type, customWaveType);
    host.idle(150);
    const std::vector<std::string> firstRows{"Load Wave", "Save Wave", "Random Wave", "-", "a wave"};
    for (const int row : {2, 4}) {
        const auto before = rig.plugin().chunk();
        const auto menu = rig.openMenu(controlWithTag(tag::waveMenu1));
        ASSERT_TRUE(menu);
        rig.click(rig.rowPlace(*menu, firstRows, row));
        EXPECT_TRUE(host.until([&] { return rig.plugin().chunk() != before; }, 5)) << firstRows[static_cast<std::size_t>(row)];
    }
}

}  // namespace
