// Layers on their way: the clipboard, stacking, patches to layers and layers to patches.
#include "bindings/library_bench.h"

namespace {

using namespace vantoric;
using golden::asFloat;
using golden::Bytes;
using golden::Case;
using golden::json;
using golden::MenuBench;
namespace par = vantoric::parameter;

constexpr int firstNumber = 24;

// ---- the clipboard alone

json pasteOneOscillator(const Case& c) {
    MenuBench bench;
    ParameterModel& parameters = bench.rig.audio.parameters();
    for (int i = firstNumber; i < parameterCount; ++i) parameters.writeRaw(i, static_cast<float>((i % 997) / 1000.0));
    std::vector<float> before;
    for (int i = 0; i < parameterCount; ++i) before.push_back(bench.value(i));
    const int target = c.input.at("target");
    LayerClipboard clipboard;
    clipboard.copyLayer(partsOf(bench.rig.audio), c.input.at("source"));
    clipboard.chooseOscillator(c.input.at("clipOscillator"));
    ParameterChanges::Reader reader(parameters.changes());
    clipboard.pasteOscillator(partsOf(bench.rig.audio), target, c.input.at("o"));
    const auto news = reader.take();
    json numbers = json::array(), changed = json::array();
    for (int i = 0; i < parameterCount; ++i) {
        if (news.has(i)) numbers.push_back(i - hostIndex(0, target));
        if (bench.value(i) != before[static_cast<std::size_t>(i)]) changed.push_back({i, bench.value(i)});
    }
    return {{"numbers", numbers}, {"changed", changed}};
}

json pasteWholeLayer(const Case& c) {
    MenuBench bench;
    ParameterModel& parameters = bench.rig.audio.parameters();
    for (int i = firstNumber; i < parameterCount; ++i) parameters.setParameter(i, static_cast<float>((i % 991) / 1000.0));
    const int target = c.input.at("target");
    LayerClipboard clipboard;
    clipboard.copyLayer(partsOf(bench.rig.audio), c.input.at("source"));
    clipboard.pasteLayer(partsOf(bench.rig.audio), target);
    return {{"sha256", golden::digestOf(parameters, hostIndex(firstNumber, target), hostIndex(323, target))},
            {"number322", bench.value(hostIndex(322, target))},
            {"number323", bench.value(hostIndex(323, target))}};
}

json paste(const Case& c) { return c.input.contains("clipOscillator") ? pasteOneOscillator(c) : pasteWholeLayer(c); }
const golden::Binding pasteBinding("events", "paste_oscillator", golden::checkValues<paste>);

json stack(const Case& c) {
    MenuBench bench;
    for (const json& row : c.input.at("set")) bench.rig.set(row[1], asFloat(row[2]));
    bench.menus.layers().stackLayers({c.input.at("count"), c.input.at("stereo"), asFloat(c.input.at("amount"))});
    json layers = json::array(), on = json::array(), rest = json::array();
    for (int layer = 0; layer < layerCount; ++layer) {
        json values = json::array();
        for (const int number :
             {par::Detune1 + 0, par::Detune1 + 1, par::Detune1 + 2, par::FilPan1 + 0, par::FilPan1 + 1, par::Cutoff1 + 0})
            values.push_back(bench.value(hostIndex(number, layer)));
        layers.push_back(values);
        on.push_back(bench.value(par::Layer1On + layer));
        rest.push_back(bench.value(hostIndex(323, layer)));
    }
    return {{"layers", layers}, {"on", on}, {"number323", rest}};
}
const golden::Binding stackBinding("events", "stack_layers", golden::checkValues<stack>);

json stackRows(const Case& c) {
    json rows = json::array();
    for (const json& row : c.input.at("rows")) {
        const auto stacking = stackingOfRow(row);
        if (stacking) rows.push_back({row, stacking->count, stacking->isStereo, stacking->amount});
    }
    return {{"rows", rows}};
}
const golden::Binding stackRowsBinding("editor", "stack_rows", golden::checkValues<stackRows>);

// ---- through files

json loadToLayer(const Case& c) {
    MenuBench bench;
    const std::string category = c.input.at("category"), name = c.input.at("name");
    bench.putPatch(patchPath(category, name), c.input.at("chosen"));
    golden::fillPattern(bench.rig.audio.parameters(), c.input.at("running"));
    PatchLibrary& library = bench.menus.library();
    library.findPatch(name);
    bench.onShow.loadTarget = c.input.at("target");
    library.loadSelectedPatch();
    return {{"files", bench.files},
            {"sha256", bench.digest()},
            {"some", bench.valuesLike(c.expected.value("some", json::array()))},
            {"target", bench.onShow.loadTarget},
            {"name", bench.rig.audio.program().getProgramName()}};
}
golden::Outcome checkLoadToLayer(const Case& c) {
    json got = loadToLayer(c);
    golden::passNull(got["name"], c.expected.at("name"));
    return golden::compare(c.expected, got, c.tolerance);
}
const golden::Binding loadBinding("editor", "load_to_layer", checkLoadToLayer);

// Layer 1 and some globals of a patch file; null where it is missing.
json layerOneOf(const std::string& path) {
    std::vector<std::uint8_t> file;
    if (!platform::readFile(path, file)) return nullptr;
    const auto bytes = chunkOfFile(file);
    const auto at = bytes.begin() + chunk::parameterOffset;
    return golden::sha256(Bytes(at + 4 * firstNumber, at + 4 * 323));
}
json globalsOf(const std::string& path, const json& like) {
    std::vector<std::uint8_t> file;
    if (!platform::readFile(path, file)) return nullptr;
    json globals = json::array();
    for (const json& row : like)
        globals.push_back(
            {row[0], chunk::readBigFloat(chunkOfFile(file).data() + chunk::parameterOffset + 4 * row[0].get<int>())});
    return globals;
}

json copyToFile(const Case& c) {
    MenuBench bench;
    golden::fillPattern(bench.rig.audio.parameters(), c.input.at("running"));
    bench.onShow.layer = c.input.at("layer");
    bench.menus.copy(2);
    const std::string path = platform::userFolder() + "CopyLayer.fxp";
    return {{"files", bench.files},
            {"engine", bench.digest()},
            {"layer1", layerOneOf(path)},
            {"globals", globalsOf(path, c.expected.at("globals"))},
            {"layer", bench.onShow.layer}};
}
const golden::Binding copyBinding("editor", "copy_layer_file", golden::checkValues<copyToFile>);

json pasteFromFile(const Case& c) {
    MenuBench bench;
    ParameterModel& parameters = bench.rig.audio.parameters();
    if (!c.input.at("copied").is_null()) {
        golden::fillPattern(parameters, c.input.at("copied"));
        bench.onShow.layer = c.input.at("copiedLayer");
        bench.menus.copy(2);
    } else {
        c.input.at("copiedLayer").get<int>();
    }
    golden::fillPattern(parameters, c.input.at("running"));
    bench.onShow.layer = c.input.at("layer");
    bench.files.clear();
    bench.menus.paste(4);
    return {{"files", bench.files},
            {"sha256", bench.digest()},
            {"some", bench.valuesLike(c.expected.value("some", json::array()))},
            {"layer", bench.onShow.layer}};
}
const golden::Binding pasteFileBinding("editor", "paste_layer_file", golden::checkValues<pasteFromFile>);

json saveLayer(const Case& c) {
    MenuBench bench;
    golden::fillPattern(bench.rig.audio.parameters(), c.input.at("running"));
    bench.onShow.layer = c.input.at("layer");
    const json& name = c.input.at("name");
    const std::string path = platform::userFolder() + (name.is_null() ? "none" : name.get<std::string>());
    if (!name.is_null()) bench.dialogs.choosePathNext(path);
    constexpr int rowBeforeFirst = 7;
    bench.menus.file(rowBeforeFirst + c.input.at("t").get<int>());
    return {{"files", bench.files},
            {"engine", bench.digest()},
            {"layer1", layerOneOf(path + ".fxp")},
            {"globals", globalsOf(path + ".fxp", c.expected.at("globals"))}};
}
const golden::Binding saveBinding("editor", "save_layer", golden::checkValues<saveLayer>);

// ---- rows of the menus

json clipboardSteps(const Case& c) {
    MenuBench bench;
    ParameterModel& parameters = bench.rig.audio.parameters();
    golden::fillPattern(parameters, c.input.at("patch"));
    std::vector<float> before;
    for (int i = 0; i < parameterCount; ++i) before.push_back(bench.value(i));
    for (const json& step : c.input.at("steps")) {
        const std::string kind = step[0];
        if (kind == "layer") bench.onShow.layer = step[1];
        if (kind == "set") {
            parameters.setParameter(step[1], asFloat(step[2]));
        }
        if (kind == "copy") bench.menus.copy(step[1]);
        if (kind == "paste") bench.menus.paste(step[1]);
    }
    std::vector<bool> isFree(parameterCount);
    for (const json& index : c.expected.at("free")) isFree[index.get<std::size_t>()] = true;
    json changed = json::array();
    for (int i = 0; i < parameterCount; ++i)
        if (!isFree[static_cast<std::size_t>(i)] && bench.value(i) != before[static_cast<std::size_t>(i)])
            changed.push_back({i, bench.value(i)});
    return {{"hints", bench.takeBoxes()}, {"changed", changed}, {"free", c.expected.at("free")}};
}
const golden::Binding clipboardBinding("editor", "clipboard_steps", golden::checkValues<clipboardSteps>);

}  // namespace
