// Vectors of the SFZ import.
#include <filesystem>
#include <stdexcept>

#include "base/numbers.h"
#include "base/parameters.h"
#include "bindings/samples_signals.h"
#include "library/import_commands.h"
#include "platform/files.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"
#include "samples/wave_file.h"
#include "voice/pitch.h"

namespace golden {

namespace {

namespace fs = std::filesystem;
namespace par = vantoric::parameter;
using namespace vantoric;

void noSleep(int) {}

// A folder with an SFZ file and its waves.
struct SfzFolder {
    explicit SfzFolder(const json& input) {
        const std::string text = input.at("text");
        platform::writeFile(path, text.data(), text.size());
        for (const auto& [name, length] : input.at("wave_lengths").items()) {
            const std::string file = sfzSamplePath(path, name);
            const auto bytes = waveFileBytes(Samples(length.get<std::size_t>(), 1000));
            platform::makeFolder(fs::path(file).parent_path().string());
            if (!platform::writeFile(file, bytes.data(), bytes.size())) throw std::runtime_error("cannot write " + file);
        }
    }
    platform::ScratchFolder folder;
    const std::string path = folder / "Case.sfz";
};

class QuietHost final : public PatchHost {
public:
    void allNotesOff() override {}
    void resetEngine() override {}
    void refreshAll() override {}
    void lookUpPatchName() override {}
    void setBusy(bool) override {}
};

struct ImportBench {
    ImportBench() {
        for (std::size_t i = 0; i < samples.size(); ++i) holders[i] = &samples[i];
    }
    float value(int number, int layer) const { return parameters.getParameter(hostIndex(number, layer)); }
    int row(int number, int layer) const { return parameters.getListIndex(hostIndex(number, layer)); }

    EngineFlags flags;
    EngineAccess access{flags, noSleep};
    ParameterModel parameters;
    Messages messages;
    platform::RecordedDialogs dialogs;
    ProgramSlot program{messages};
    std::array<Sample, layerCount * oscillatorCount> samples;
    SampleHolders holders{};
    QuietHost host;
};

json oscillatorState(const ImportBench& bench, std::size_t k, const SfzOscillator& planned, const json& expected) {
    const int layer = static_cast<int>(k) / oscillatorCount, oscillator = static_cast<int>(k) % oscillatorCount;
    const Sample& sample = bench.samples[k];
    json got{{"layer", layer},
             {"oscillator", oscillator},
             {"path", planned.sample},
             {"KeyStar", bench.row(par::KeyStar1 + oscillator, layer)},
             {"KeyEnd", bench.row(par::KeyEnd1 + oscillator, layer)},
             {"LoopMod", bench.row(par::LoopMod1 + oscillator, layer)},
             {"Oct", bench.value(par::Oct1 + oscillator, layer)},
             {"Semi", bench.value(par::Semi1 + oscillator, layer)},
             {"Detune", bench.value(par::Detune1 + oscillator, layer)},
             {"Vol", bench.value(par::Vol1 + oscillator, layer)},
             {"Start", bench.value(par::Start1 + oscillator, layer)},
             {"length", sample.length},
             {"loopStart", sample.loopStart},
             {"loopEnd", sample.loopEnd}};
    for (const char* end : {"KeyStar", "KeyEnd"})
        if (expected.contains(end) && expected[end].is_null()) got[end] = nullptr;
    return got;
}

Outcome importCase(const Case& c) {
    const SfzFolder folder(c.input);
    ImportBench bench;
    SampleLoader loader(bench.access, bench.parameters, bench.holders, bench.messages);
    SfzImport import(bench.access, bench.parameters, bench.program, bench.holders, loader, bench.host, bench.messages);
    PatchChunk chunk(bench.access, bench.parameters, bench.program, {}, bench.host, bench.messages);
    PatchFiles files(chunk, bench.program, bench.host, bench.messages);
    QuickImport quick(files, bench.program, bench.parameters, loader, bench.access, bench.messages);
    WaveChooser chooser(bench.dialogs);
    CommandLog log;
    ImportCommands commands(quick, import, chooser, bench.messages, bench.dialogs, log);
    const bool merge = c.input.value("merge_groups", false);
    bench.dialogs.answerNext(merge);
    bool returns = false;
    commands.importSfz(folder.path, [&](bool done) { returns = done; });
    json got{{"returns", returns}, {"messages", json::array()}, {"oscillators", json::array()}};
    for (const auto& box : bench.dialogs.boxes()) got["messages"].push_back(box.text);

    const SfzFile file = parseSfz(c.input.at("text").get<std::string>());
    const SfzPlan plan = planSfz(file, file.groups > 1 && !merge);
    got["regions"] = plan.regions;
    got["chosen"] = json::array();
    for (const SfzOscillator& oscillator : plan.oscillators) got["chosen"].push_back(oscillator.region);
    for (int layer = 0; layer < layerCount; ++layer)
        got["layersOn"].push_back(switchOn(bench.parameters.getParameter(par::Layer1On + layer)) ? 1 : 0);
    const json expected = c.expected.value("oscillators", json::array());
    for (std::size_t k = 0; k < plan.oscillators.size(); ++k)
        got["oscillators"].push_back(
            oscillatorState(bench, k, plan.oscillators[k], k < expected.size() ? expected[k] : json::object()));
    got["envelope"] = {{"AttVol", bench.value(par::AttVol, 0)},
                       {"HoldVol", bench.value(par::HoldVol, 0)},
                       {"DecVol", bench.value(par::DecVol, 0)},
                       {"SusVol", bench.value(par::SusVol, 0)},
                       {"RelVol", bench.value(par::RelVol, 0)}};
    for (const char* remark : {"note", "envelope_tolerance"})
        if (c.expected.contains(remark)) got[remark] = c.expected[remark];
    const json envelopeTolerance{{"abs", c.expected.value("envelope_tolerance", 0.0)}, {"rel", 0}};
    return compare(c.expected, got, {{"oscillators", c.tolerance}, {"envelope", envelopeTolerance}});
}

json choice(const Case& c) {
    json chosen = json::array();
    for (const json& n : c.input.at("n")) chosen.push_back(chooseRegions(n));
    return {{"chosen", chosen}};
}

json widen(const Case& c) {
    std::vector<KeyRange> ranges;
    for (std::size_t k = 0; k < c.input.at("lokey").size(); ++k)
        ranges.push_back({c.input["lokey"][k], c.input.at("hikey").at(k)});
    widenKeys(ranges);
    json got;
    for (std::size_t k = 0; k < ranges.size(); ++k) {
        got["KeyStar"].push_back(c.expected.at("KeyStar").at(k).is_null() ? json() : json(ranges[k].low));
        got["KeyEnd"].push_back(c.expected.at("KeyEnd").at(k).is_null() ? json() : json(ranges[k].high));
    }
    return got;
}

json values(const Case& c) {
    json got = json::object();
    for (const json& key : c.input.value("keyCenter", json::array())) {
        got["Oct"].push_back(octOfKey(key));
        got["Semi"].push_back(semiOfKey(key));
        got["Oct_list"].push_back(stepOf(octFactor, octOfKey(key)));
        got["Semi_list"].push_back(stepOf(semiFactor, semiOfKey(key)));
    }
    for (const json& seconds : c.input.value("seconds", json::array())) got["parameter"].push_back(envelopeOfSeconds(seconds));
    return got;
}

const Binding bindings[] = {
    {"samples", "sfz_import", importCase},
    {"samples", "sfz_choice", checkValues<choice>},
    {"samples", "sfz_widen", checkValues<widen>},
    {"samples", "sfz_values", checkValues<values>},
};

}  // namespace

}  // namespace golden
