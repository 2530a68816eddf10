// Rows of the file, init and help menus and of the sample and wave menus.
#include "bindings/library_bench.h"
#include "samples/wave_maker.h"

namespace {

using namespace vantoric;
using golden::asFloat;
using golden::Case;
using golden::json;
using golden::MenuBench;

constexpr int loadRow = 0, saveRow = 6, quickSaveRow = 7, deleteRow = 13;  // of the file menu
constexpr int firstTemplateRow = 6;                                        // of the init menu

int rowOfReset(const std::string& command) {
    static constexpr const char* rows[] = {"Reset all", "Reset synth layer", "Reset synth arpeggiator", "Reset synth matrix",
                                           "Clean matrix"};
    for (int i = 0; i < 5; ++i)
        if (command == rows[i]) return i;
    throw std::runtime_error("an unknown command: " + command);
}

golden::Outcome checkReset(const Case& c) {
    MenuBench bench;
    const std::int64_t mul = c.input.at("mul"), modulus = c.input.at("modulus");
    for (int i = 0; i < parameterCount; ++i)
        bench.rig.set(i, static_cast<float>(static_cast<double>((i * mul) % modulus) / static_cast<double>(modulus)));
    std::vector<float> before;
    for (int i = 0; i < parameterCount; ++i) before.push_back(bench.value(i));
    bench.onShow.layer = c.input.at("layer");
    bench.menus.init(rowOfReset(c.input.at("command")));
    json unchanged = json::array();
    for (const json& index : c.expected.at("unchanged"))
        if (bench.value(index) == before[index.get<std::size_t>()]) unchanged.push_back(index);
    json got{{"rows", bench.valuesLike(c.expected.at("rows"))},
             {"unchanged", unchanged},
             {"layer", bench.onShow.layer},
             {"category", bench.menus.patch().category()}};
    golden::passNull(got["category"], c.expected.at("category"));
    return golden::compare(c.expected, got, c.tolerance);
}
const golden::Binding resetBinding("editor", "reset_commands", checkReset);

std::uint32_t clockOfCase = 0;
std::uint32_t readClock() { return clockOfCase; }

int rowOfTemplate(const std::string& name) {
    for (std::size_t i = 0; i < patchTemplates.size(); ++i)
        if (name == patchTemplates[i]) return firstTemplateRow + static_cast<int>(i);
    throw std::runtime_error("an unknown template: " + name);
}

golden::Outcome checkName(const Case& c) {
    clockOfCase = c.input.at("seed");
    MenuBench bench(readClock);
    if (c.input.at("template").is_null()) {
        bench.menus.init(0);
    } else {
        const std::string name = c.input.at("template");
        bench.putPatch(templatePath(name));
        patchNameSeed().state = c.input.at("seed");
        bench.menus.init(rowOfTemplate(name));
    }
    return golden::compareAny(c, {{"seedAfter", patchNameSeed().state}, {"name", bench.rig.audio.program().getProgramName()}});
}
const golden::Binding nameBinding("editor", "new_patch_name", checkName);

json nameNumbers(const Case& c) {
    json rows = json::array();
    for (const json& seed : c.input.at("seeds")) {
        LinearCongruence random{seed.get<std::uint32_t>()};
        const std::string name = nextInitName(random);
        rows.push_back({seed, random.state, std::stoi(name.substr(name.rfind(' ') + 1))});
    }
    return {{"rows", rows}};
}
const golden::Binding numbersBinding("editor", "name_numbers", golden::checkValues<nameNumbers>);

json templateFiles(const Case& c) {
    MenuBench bench;
    json rows = json::array();
    for (const json& row : c.input.at("rows")) {
        bench.files.clear();
        bench.menus.init(row);
        rows.push_back({row, bench.lastFile("read")});
    }
    return {{"rows", rows}};
}
const golden::Binding templateBinding("editor", "template_file", golden::checkValues<templateFiles>);

// Brings a patch of the lists on show; of "Custom" only its name.
void show(MenuBench& bench, const std::string& category, const std::string& name) {
    if (category == customCategory) {
        bench.rig.audio.program().setProgramName(name);
    } else {
        bench.putPatch(patchPath(category, name));
        bench.menus.library().findPatch(name);
        bench.menus.library().loadSelectedPatch();
    }
    bench.files.clear();
}

json quickSave(const Case& c) {
    MenuBench bench;
    const std::string category = c.input.at("category"), name = c.input.at("name");
    show(bench, category, name);
    if (!c.input.at("exists").get<bool>()) platform::removeFile(patchPath(category, name));
    bench.menus.file(quickSaveRow);
    return {{"file", bench.lastFile("write")}, {"boxes", bench.takeBoxes()}};
}
const golden::Binding quickSaveBinding("editor", "quick_save", golden::checkValues<quickSave>);

golden::Outcome checkDelete(const Case& c) {
    MenuBench bench;
    const std::string category = c.input.at("category"), name = c.input.at("name"), path = patchPath(category, name);
    show(bench, category, name);
    if (!c.input.at("removable").get<bool>()) {
        platform::removeFile(path);
        platform::makeFolder(path);  // what stands there is no file any more
    }
    bench.dialogs.answerNext(c.input.at("answer"));
    bench.menus.file(deleteRow);
    const json removed = platform::exists(path) ? json() : json(MenuBench::belowData(path));
    return golden::compareAny(c, {{"boxes", bench.takeBoxes()}, {"removed", removed}});
}
const golden::Binding deleteBinding("editor", "delete_patch", checkDelete);

void replace(std::string& text, const std::string& what, const std::string& by) {
    if (const std::size_t at = text.find(what); at != std::string::npos) text.replace(at, what.size(), by);
}

golden::Outcome checkFileDialogs(const Case& c) {
    MenuBench bench;
    const platform::ScratchFolder tmp;
    const std::string tmpName = tmp.path().substr(0, tmp.path().size() - 1);
    const auto shown = [&](std::string path) {
        replace(path, tmpName, "<tmp>");
        replace(path, MenuBench::data(), "<data>");
        return path;
    };
    bench.onShow.layer = c.input.at("layer");
    bench.rig.audio.program().setProgramName(c.input.at("name"));
    json steps = json::array();
    for (const json& step : c.input.at("steps")) {
        const bool isLoad = step[0] == "load";
        std::string path = step[1].is_null() ? "" : step[1].get<std::string>();
        replace(path, "<tmp>", tmpName);
        if (!path.empty()) platform::makeFolder(folderOfPath(path));
        if (!path.empty() && step[2].get<bool>()) bench.putPatch(path);
        bench.files.clear();
        bench.dialogs.choosePathNext(path);
        const bool answer = step[3].get<bool>();
        if (!isLoad && platform::exists(path)) bench.dialogs.answerNext(answer);
        bench.menus.file(isLoad ? loadRow : saveRow);
        const auto request = bench.dialogs.requests().at(0);
        const json written = bench.lastFile("write");
        steps.push_back({{"title", request.title},
                         {"start", shown(request.startFolder)},
                         {"boxes", bench.takeBoxes()},
                         {"written", written.is_null() ? written : json(shown(written))},
                         {"name", bench.rig.audio.program().getProgramName()},
                         {"layer", bench.onShow.layer}});
    }
    const json& expected = c.whole.at("expected").at("steps");
    for (std::size_t i = 0; i < expected.size(); ++i) golden::passNull(steps[i]["start"], expected[i].at("start"));
    return golden::compare(c.expected, {{"steps", steps}}, c.tolerance);
}
const golden::Binding fileDialogsBinding("editor", "file_dialogs", checkFileDialogs);

json favouriteFile(const Case& c) {
    MenuBench bench;
    bench.rig.audio.program().setProgramName(c.input.at("name"));
    platform::makeFolder(platform::favouritesFolder());
    bench.menus.setFavourite(true, [](bool) {});
    return {{"file", bench.lastFile("write")}};
}
const golden::Binding favouriteBinding("editor", "favourite_file", golden::checkValues<favouriteFile>);

json editBoxes(const Case& c) {
    MenuBench bench;
    const int oscillator = c.input.at("oscillator"), length = c.input.at("length");
    const PatchParts parts = partsOf(bench.rig.audio);
    CopiedSample sound;
    sound.samples.assign(static_cast<std::size_t>(length), 1000);
    sound.loopEnd = length;
    putSample(parts, *holderOf(parts.samples, bench.onShow.layer, oscillator), sound);
    bench.menus.editSample(oscillator, c.input.at("row"));
    return {{"boxes", bench.takeBoxes()}};
}
const golden::Binding editBinding("editor", "sample_edit_box", golden::checkValues<editBoxes>);

json waveMenu(const Case& c) {
    MenuBench bench;
    test::WaveMaker maker;
    const auto wave = maker.putFrames(600, [](int i) { return i % 100 < 50 ? 9000 : -9000; }).file();
    platform::makeFolder(platform::wavetableFolder());
    for (const json& file : c.input.at("files"))
        platform::writeFile(platform::wavetableFolder() + file.get<std::string>(), wave.data(), wave.size());
    if (!c.input.contains("row")) return {{"rows", bench.menus.waveRows()}};
    bench.menus.chooseWave(0, c.input.at("row"));
    return {{"file", MenuBench::belowData(platform::wavetableFolder() + bench.menus.shownWave(0) + ".wav")}};
}
const golden::Binding waveBinding("editor", "wave_menu", golden::checkValues<waveMenu>);

golden::Outcome checkHelp(const Case& c) {
    MenuBench bench;
    bench.dialogs.answerNext(c.input.at("answer"));
    bench.menus.help(c.input.at("row"));
    json got{{"boxes", bench.takeBoxes()}};
    golden::passNull(got["boxes"], c.expected.at("boxes"));
    return golden::compare(c.expected, got, c.tolerance);
}
const golden::Binding helpBinding("editor", "help_box", checkHelp);

}  // namespace
