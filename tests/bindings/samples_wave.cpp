// Vectors of wave files: reading, reduction, loop, tuning by name, writing.
#include <stdexcept>

#include "bindings/samples_signals.h"
#include "loading/sample_loader.h"
#include "platform/files.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"
#include "samples/resynthesis.h"
#include "samples/wave_file.h"
#include "voice/pitch.h"

namespace golden {

namespace {

using namespace vantoric;

void noSleep(int) {}

std::string put(const platform::ScratchFolder& scratch, const std::string& name, const std::vector<std::uint8_t>& bytes) {
    std::string path = scratch / name;
    if (!platform::writeFile(path, bytes.data(), bytes.size())) throw std::runtime_error("cannot write " + path);
    return path;
}

// Hears what is written to parameters.
class Writes {
public:
    explicit Writes(const ParameterModel& model) : model_(model), reader_(model.changes()) {}
    json values() {
        json written = json::object();
        const auto news = reader_.take();
        for (int i = 0; i < parameterCount; ++i)
            if (news.changed.test(static_cast<std::size_t>(i))) written[std::to_string(i)] = model_.getParameter(i);
        return written;
    }

private:
    const ParameterModel& model_;
    ParameterChanges::Reader reader_;
};

// The samples of a sound, or of the first part of it.
json firstOf(const std::int16_t* samples, std::size_t available, std::size_t count) {
    json list = json::array();
    for (std::size_t i = 0; i < count && i < available; ++i) list.push_back(samples[i]);
    return list;
}

FirRow rowOf(const json& half) {
    FirRow row{};
    for (int k = 0; k <= firCentre; ++k) row[firCentre - k] = row[firCentre + k] = half.at(static_cast<std::size_t>(k));
    return row;
}

// Values at the listed indices. With a row of the file's own the sound is reduced by it, else by the loader.
json level0At(const Case& c, const Sample& sample, const std::vector<std::uint8_t>& file) {
    WaveSound sound;
    const bool ownRow = c.input.contains("row_half");
    if (ownRow) {
        const WaveLayout layout = parseWave(file);
        sound.samples = convertWave(file, layout, c.input.value("channel", 0));
        reduceSound(sound, rowOf(c.input["row_half"]));
    }
    json list = json::array();
    for (const json& index : c.expected.at("level0_at")) {
        const std::size_t at = index;
        list.push_back(ownRow ? sound.samples.at(at) : sample.levels[0][at]);
    }
    return list;
}

Outcome checkLoad(const Case& c) {
    const platform::ScratchFolder scratch;
    const std::vector<std::uint8_t> file = fileOf(c.input.at("file"));
    const std::string path = put(scratch, c.input.at("name"), file);
    EngineFlags flags;
    ParameterModel parameters;
    for (int i = 0; i < parameterCount; ++i) parameters.writeRaw(i, 0.5f);
    Writes writes(parameters);
    platform::RecordedDialogs dialogs;
    std::array<Sample, 12> samples;
    SampleHolders holders;
    for (std::size_t i = 0; i < samples.size(); ++i) holders[i] = &samples[i];
    SampleLoader loader(flags, parameters, holders, dialogs, noSleep);
    const int layer = c.input.at("layer"), oscillator = c.input.at("oscillator");
    Sample* const holder = holderOf(holders, layer < 0 ? loader.currentLayer : layer, oscillator);
    if (holder == nullptr) throw std::runtime_error("no such oscillator");
    Sample& sample = *holder;
    sample.allocate(4321);
    sample.length = 4321;

    json got;
    if (c.input.contains("channel"))
        got["returns"] =
            loader.loadSampleChannel(layer, oscillator, path, c.input.value("keepTuning", false), c.input["channel"]);
    else
        got["returns"] = loader.loadSample(layer, oscillator, path, c.input.value("silent", false));
    Outcome outcome;
    if (file.size() != c.input.at("file_bytes").get<std::size_t>()) outcome.fail("the recipe gives another file");
    json expected = c.expected;
    got["messages"] = json::array();
    for (const auto& box : dialogs.boxes()) {
        const std::size_t k = got["messages"].size();
        const bool compared = k >= expected["messages"].size() || !expected["messages"][k]["title"].is_null();
        got["messages"].push_back(
            {{"text", box.text}, {"title", !compared ? json() : json(box.title == path ? "<path>" : box.title)}});
    }
    if (expected.at("length") == "unchanged") expected["length"] = 4321;
    got["length"] = sample.length;
    got["loopStart"] = sample.loopStart;
    got["loopEnd"] = sample.loopEnd;
    got["sampleRate"] = sample.sampleRate;
    got["writes"] = writes.values();
    if (expected.contains("level0_from_0"))
        got["level0_from_0"] =
            firstOf(sample.levels[0].get(), static_cast<std::size_t>(sample.length), expected["level0_from_0"].size());
    json tolerance = c.tolerance;
    if (expected.contains("level0_at")) {
        got["level0_at"] = expected["level0_at"];
        got["level0"] = level0At(c, sample, file);
        tolerance = {{"level0", c.tolerance}, {"writes", {{"abs", 1e-6}, {"rel", 0}}}};
    } else {
        tolerance = {{"writes", {{"abs", 1e-6}, {"rel", 0}}}};
    }
    compareInto(outcome, expected, got, tolerance, "");
    if (expected.contains("writes") && got["writes"].size() != expected["writes"].size())
        outcome.fail("other parameters were written");
    return outcome;
}

Outcome checkHeader(const Case& c) {
    if (!c.input.contains("files")) return checkLoad(c);
    const platform::ScratchFolder scratch;
    json results = json::array();
    for (const json& entry : c.input["files"]) {
        const json parts = entry.is_array() ? entry : json::array({entry});
        results.push_back(isStereoFile(put(scratch, "x.wav", fileOf(parts))));
    }
    return compare(c.expected, {{"results", results}}, c.tolerance);
}

json convert(const Case& c) {
    const int bits = c.input.at("bits");
    const bool resynthesis = c.input.value("path", "") == "resynthesize";
    WaveLayout layout;
    layout.bits = bits;
    layout.isFloat = bits == 32 && c.input.at("tag") == 3;
    layout.frames = 1;
    json samples = json::array();
    for (const json& hex : c.input.at("bytes")) {
        const auto bytes = fromHex(hex);
        samples.push_back(convertWave(bytes, layout, 0, resynthesis ? resynthesisFloatScale : sampleFloatScale).at(0));
    }
    return {{"samples", samples}};
}

json tuning(const Case& c) {
    json got;
    for (const json& name : c.input.at("names")) {
        const auto found = fileNameTuning("some/folder C4/" + name.get<std::string>());
        got["note"].push_back(found ? json(found->note) : json());
        got["octave"].push_back(found ? json(found->octave) : json());
        got["Oct"].push_back(found ? json(found->oct) : json());
        got["Semi"].push_back(found ? json(found->semi) : json());
        got["Oct_list"].push_back(found ? json(stepOf(octFactor, found->oct)) : json());
        got["Semi_list"].push_back(found ? json(stepOf(semiFactor, found->semi)) : json());
    }
    return got;
}

json write(const Case& c) {
    const platform::ScratchFolder scratch;
    platform::RecordedDialogs dialogs;
    const auto written = [&](const Samples& samples) {
        std::vector<std::uint8_t> bytes;
        if (!writeWave(samples, scratch / "out.wav", dialogs) || !platform::readFile(scratch / "out.wav", bytes))
            throw std::runtime_error("not written");
        return bytes;
    };
    if (!c.input.contains("counts")) {
        const auto bytes = written(c.input.at("samples").get<Samples>());
        return {{"hex", toHex(bytes, bytes.size())}};
    }
    json got{{"hex", json::array()}, {"file_bytes", json::array()}};
    for (const json& count : c.input["counts"]) {
        const auto bytes = written(Samples(count.get<std::size_t>(), 5));
        got["hex"].push_back(toHex(bytes, 44));
        got["file_bytes"].push_back(bytes.size());
    }
    return got;
}

const Binding bindings[] = {
    {"samples", "wave_convert", checkValues<convert>},
    {"samples", "wave_header", checkHeader},
    {"samples", "wave_loop", checkLoad},
    {"samples", "wave_reduce", checkLoad},
    {"samples", "wave_tuning", checkValues<tuning>},
    {"samples", "wave_write", checkValues<write>},
};

}  // namespace

}  // namespace golden
