// Vectors of resynthesis and of the sample editing commands.
#include <algorithm>
#include <array>
#include <stdexcept>

#include "bindings/samples_signals.h"
#include "loading/custom_wave_loader.h"
#include "loading/sample_editor.h"
#include "platform/files.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"
#include "samples/sample_levels.h"
#include "samples/wave_file.h"

namespace golden {

namespace {

using namespace vantoric;

void noSleep(int) {}

struct ScratchFile {
    platform::ScratchFolder folder;
    const std::string path = folder / "x.wav";
};

Outcome resynthesizeCase(const Case& c) {
    const std::vector<std::uint8_t> file = fileOf(c.input.at("file"));
    const WaveLayout layout = parseWave(file);
    const Samples sound = convertWave(file, layout, 0, resynthesisFloatScale);
    std::array<std::int16_t, cycleSamples> cycle{}, again{};
    const CycleSource source = resynthesizeSound(sound, cycle);
    platform::RecordedDialogs dialogs;
    Outcome outcome;
    if (!resynthesizeWave(file, "x", again, dialogs) || again != cycle) outcome.fail("the file gives another cycle");
    json got{{"n", sound.size()}, {"at", c.expected.at("at")}, {"peak_before", source.peakBefore}};
    got["L"] = source.lag == 0 ? json() : json(source.lag);
    for (const json& at : c.expected.at("at")) got["s"].push_back(cycle.at(at));
    compareInto(outcome, c.expected, got, {{"s", c.tolerance}, {"peak_before", {{"abs", 1}, {"rel", 0}}}}, "");
    return outcome;
}

json resynthMessage(const Case& c) {
    const ScratchFile scratch;
    const std::vector<std::uint8_t> file = fileOf(c.input.at("file"));
    if (file.size() != c.input.at("file_bytes").get<std::size_t>()) throw std::runtime_error("the recipe gives another file");
    platform::writeFile(scratch.path, file.data(), file.size());
    platform::RecordedDialogs dialogs;
    EngineFlags flags;
    ParameterModel parameters;
    CustomWave wave;
    CustomWaveHolders waves{};
    waves.fill(&wave);
    CustomWaveLoader loader(flags, parameters, waves, dialogs, noSleep);
    json got{{"returns", loader.resynthesize(0, 0, scratch.path)}, {"message", nullptr}};
    for (const auto& box : dialogs.boxes())
        got["message"] = {{"text", box.text}, {"title", box.title == scratch.path ? "<path>" : box.title}};
    return got;
}

// One oscillator with a sample, as the menu finds it.
class EditBench {
public:
    explicit EditBench(const json& input) {
        const Samples samples = sampleSignal(input.at("samples"));
        sample.allocate(static_cast<std::int32_t>(samples.size()));
        std::copy(samples.begin(), samples.end(), sample.levels[0].get());
        sample.length = static_cast<std::int32_t>(samples.size());
        sample.loopStart = input.at("loopStart");
        sample.loopEnd = input.at("loopEnd");
        sample.sampleRate = input.at("sampleRate");
        for (int i = 0; i < parameterCount; ++i) parameters.writeRaw(i, 0.25f);
        holders[layer * oscillatorCount + oscillator] = &sample;
        editor.random.state = input.value("random_state", 0u);
    }

    void run(int command) { editor.editSample(layer, oscillator, command); }

    json state() const {
        json samples = json::array();
        for (int i = 0; i < sample.length; ++i) samples.push_back(sample.levels[0][i]);
        return {{"samples", samples},
                {"length", sample.length},
                {"loopStart", sample.loopStart},
                {"loopEnd", sample.loopEnd},
                {"sampleRate", sample.sampleRate}};
    }

    json parametersOf(const json& names) const {
        json got = json::object();
        for (const auto& [name, value] : names.items()) {
            const int number = numberNamed(name + std::to_string(oscillator + 1));
            got[name] = parameters.getParameter(hostIndex(number, layer));
        }
        return got;
    }

    // Whether the levels are those of a rebuild with that wrap.
    bool hasLevels(bool wrap) const {
        Sample again;
        again.allocate(sample.length);
        std::copy_n(sample.levels[0].get(), sample.length, again.levels[0].get());
        again.length = sample.length;
        buildLevels(again, wrap);
        for (int level = 1; level < sampleLevels; ++level)
            if (!std::equal(again.levels[level].get(), again.levels[level].get() + sample.length, sample.levels[level].get()))
                return false;
        return true;
    }

    static constexpr int layer = 2, oscillator = 1;
    EngineFlags flags;
    ParameterModel parameters;
    platform::RecordedDialogs dialogs;
    Sample sample;
    std::array<Sample, layerCount * oscillatorCount> others;
    SampleHolders holders = [this] {
        SampleHolders all;
        for (std::size_t i = 0; i < all.size(); ++i) all[i] = &others[i];
        all[layer * oscillatorCount + oscillator] = &sample;
        return all;
    }();
    SampleEditor editor{flags, parameters, holders, dialogs, noSleep};

private:
    static int numberNamed(const std::string& name) {
        for (int n = 0; n < layerParameterEnd; ++n)
            if (parameterInfo(n).name == name) return n;
        throw std::runtime_error("no parameter " + name);
    }
};

Outcome editCommand(const Case& c) {
    const ScratchFile scratch;
    EditBench bench(c.input);
    bench.dialogs.choosePathNext(scratch.path);
    bench.run(c.input.at("command"));
    json got = bench.state();
    got["state_after"] = bench.editor.random.state;
    if (c.expected.contains("parameters")) got["parameters"] = bench.parametersOf(c.expected["parameters"]);
    if (c.expected.contains("rebuild_wrap")) {
        const int wrap = c.expected["rebuild_wrap"];
        got["rebuild_wrap"] = bench.sample.length == 0 || bench.hasLevels(wrap != 0) ? wrap : 1 - wrap;
    }
    if (c.expected.contains("file_hex")) {
        std::vector<std::uint8_t> bytes;
        platform::readFile(scratch.path, bytes);
        got["file_hex"] = toHex(bytes, bytes.size());
    }
    return compare(c.expected, got, {{"samples", c.tolerance}});
}

json editSequence(const Case& c) {
    EditBench bench(c.input);
    json states = json::array();
    for (const json& command : c.input.at("commands")) {
        bench.run(command);
        states.push_back(bench.state());
    }
    return {{"after_each", states}};
}

json editLabels(const Case& c) {
    json got{{"entries", editCommands.size()}, {"separators", json::array()}};
    for (const json& index : c.input.at("index")) got["label"].push_back(editCommands.at(index).label);
    for (std::size_t i = 0; i < editCommands.size(); ++i)
        if (editCommands[i].role == EditRole::separator) got["separators"].push_back(i);
    return got;
}

const Binding bindings[] = {
    {"samples", "resynthesize", resynthesizeCase},       {"samples", "resynth_messages", checkValues<resynthMessage>},
    {"samples", "edit_commands", editCommand},           {"samples", "edit_sequences", checkValues<editSequence>},
    {"samples", "edit_labels", checkValues<editLabels>},
};

}  // namespace

}  // namespace golden
