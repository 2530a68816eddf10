// Chunks, patch files and the program's name.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "golden_runner/digest.h"
#include "golden_runner/golden.h"
#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "tests/patch/patch_bench.h"

namespace {

namespace fs = std::filesystem;
namespace chunk = vantoric::chunk;
using golden::Bytes;
using golden::Case;
using golden::json;
using vantoric::HandMadeChunk;
using vantoric::PatchBench;

// An engine filled by the formula of a chunk_write case.
void fill(PatchBench& bench, const json& input) {
    const std::int64_t mul = input.at("mul"), add = input.at("add"), modulus = input.at("modulus");
    for (int i = 0; i < vantoric::parameterCount; ++i) {
        const double value = static_cast<double>((i * mul + add) % modulus) / static_cast<double>(modulus - 1);
        bench.parameters.setParameter(i, static_cast<float>(value));
    }
    for (const json& row : input.value("overrides", json::array()))
        bench.parameters.setParameter(row[0], golden::asFloat(row[1]));
    bench.program.setProgramName(input.value("name", ""));
    for (int k = 0; k < chunk::waveCount; ++k) {
        vantoric::LinearCongruence noise{input.at("waveSeed").get<std::uint32_t>() + static_cast<std::uint32_t>(k)};
        for (auto& value : bench.customWaves[k]) value = static_cast<std::int16_t>(noise.next() >> 16);
    }
    for (const json& s : input.value("samples", json::array())) {
        const int index = s.at("layer").get<int>() * 3 + s.at("oscillator").get<int>();
        bench.putSample(index, s.at("length"), s.at("loopStart"), s.at("loopEnd"), s.at("rate"), s.at("seed"));
    }
}

// The input of a case of another file of the same folder.
json inputOfCase(const Case& c, const std::string& stem, const std::string& name) {
    for (const auto& entry : fs::directory_iterator(c.folder)) {
        const std::string file = entry.path().filename().string();
        if (file.compare(0, stem.size(), stem) != 0 || entry.path().extension() != ".json") continue;
        std::ifstream stream(entry.path());
        for (const json& other : json::parse(stream))
            if (other.value("case", "") == name) return other.at("input");
    }
    throw std::runtime_error("no case " + name + " in " + stem);
}

Bytes range(const Bytes& bytes, std::size_t from, std::size_t count) {
    from = std::min(from, bytes.size());
    return {bytes.begin() + static_cast<std::ptrdiff_t>(from),
            bytes.begin() + static_cast<std::ptrdiff_t>(std::min(bytes.size(), from + count))};
}

json runWrite(const Case& c) {
    PatchBench bench;
    fill(bench, c.input);
    const Bytes bytes = bench.save();
    // As many bytes from `offset` on as the case shows.
    const auto shown = [&](const char* field, std::size_t offset) {
        return golden::base64(range(bytes, offset, golden::fromBase64(c.expected.value(field, "")).size()));
    };
    const auto digest = [&](std::size_t from, std::size_t to) { return golden::sha256(range(bytes, from, to - from)); };
    const std::size_t lastCount = golden::fromBase64(c.expected.value("lastBytes", "")).size();
    json samples = json::array();
    for (const auto& s : bench.samples) samples.push_back({s.length, s.loopStart, s.loopEnd, s.sampleRate});
    return {{"size", bytes.size()},
            {"sha256", golden::sha256(bytes)},
            {"sha256Head", digest(0, chunk::parameterOffset)},
            {"sha256Parameters", digest(chunk::parameterOffset, chunk::customWaveOffset)},
            {"sha256Waves", digest(chunk::customWaveOffset, chunk::sampleHeaderOffset)},
            {"sha256Headers", digest(chunk::sampleHeaderOffset, chunk::sampleDataOffset)},
            {"sha256Data", digest(chunk::sampleDataOffset, bytes.size())},
            {"bytes0to48", shown("bytes0to48", 0)},
            {"parameters0to127", shown("parameters0to127", chunk::parameterOffset)},
            {"parameters1192to1223", shown("parameters1192to1223", chunk::parameterOffset + 4 * 1192)},
            {"firstWaveBytes", shown("firstWaveBytes", chunk::customWaveOffset)},
            {"headers", shown("headers", chunk::sampleHeaderOffset)},
            {"firstDataBytes", shown("firstDataBytes", chunk::sampleDataOffset)},
            {"lastBytes", golden::base64(range(bytes, bytes.size() - lastCount, lastCount))},
            {"boxes", bench.boxTexts()},
            {"samplesAfter", samples}};
}

// The chunk that a case describes byte by byte.
Bytes madeChunk(const json& input, const std::string& name, std::uint32_t seed) {
    HandMadeChunk made(input.value("version", 7));
    made.name(input.value("name", name));
    if (input.contains("nameBytes")) {
        const Bytes text = golden::fromBase64(input["nameBytes"]);
        made.name(std::string(text.begin(), text.end()));
    }
    for (const json& row : input.value("parameters", json::array())) made.parameter(row[0], golden::asFloat(row[1]));
    for (const json& h : input.value("headers", json::array())) {
        made.header(h[0],
                    {static_cast<std::int32_t>(h[1].get<std::int64_t>()), static_cast<std::int32_t>(h[2].get<std::int64_t>()),
                     static_cast<std::int32_t>(h[3].get<std::int64_t>()), static_cast<std::uint32_t>(h[4].get<std::int64_t>())});
    }
    made.data(input.value("dataSamples", 0), input.value("seed", seed));
    if (input.contains("cutTo")) made.bytes.resize(input["cutTo"].get<std::size_t>());
    return made.bytes;
}

// What a load left behind, in the words of all kinds of cases.
json stateAfter(const Case& c, PatchBench& bench, int returned) {
    json parameters = json::array(), samples = json::array();
    for (const json& row : c.expected.value("parameters", json::array())) {
        parameters.push_back({row[0], bench.parameters.getParameter(row[0])});
    }
    for (const json& row : c.expected.value("samples", json::array())) {
        const vantoric::Sample& s = bench.samples[row[0].get<int>()];
        json first = json::array(), last = json::array();
        const int firstCount = static_cast<int>(row.size() > 5 ? row[5].size() : 0);
        const int lastCount = static_cast<int>(row.size() > 6 ? row[6].size() : 0);
        for (int i = 0; i < firstCount && i < s.length; ++i) first.push_back(s.levels[0][i]);
        for (int i = std::max(0, s.length - lastCount); i < s.length; ++i) last.push_back(s.levels[0][i]);
        samples.push_back({row[0], s.length, s.loopStart, s.loopEnd, s.sampleRate, first, last});
    }
    return {{"returned", returned},
            {"boxes", bench.boxTexts()},
            {"warning", !bench.dialogs.boxes().empty()},
            {"engineLocked", bench.state.flags.engineLocked.isSet()},
            {"name", bench.program.getProgramName()},
            {"getProgramName", bench.program.getProgramName()},
            {"parameters", parameters},
            {"samples", samples},
            {"Cutoff1", bench.parameters.getParameter(vantoric::parameter::Cutoff1)},
            {"soundingVoices", bench.sounding.size()},
            {"heldNotes", bench.heldNotes()}};
}

json runRead(const Case& c) {
    PatchBench bench;
    Bytes bytes;
    if (c.input.contains("chunk_write")) {
        PatchBench writer;
        fill(writer, inputOfCase(c, "chunk_write", c.input["chunk_write"]));
        bytes = writer.save();
    } else {
        bytes = madeChunk(c.input, "Old one", 31);
    }
    json after = stateAfter(c, bench, bench.load(bytes));
    const Bytes again = bench.save();
    after["sha256Again"] = golden::sha256(again);
    after["sameBytes"] = again == bytes;
    return after;
}

json runVersions(const Case& c) {
    PatchBench bench;
    return stateAfter(c, bench, bench.load(madeChunk(c.input, "Old one", 31)));
}

json runMalformed(const Case& c) {
    PatchBench bench;
    bench.program.setProgramName("Before");
    bench.parameters.setParameter(vantoric::parameter::Cutoff1, 0.3f);
    bench.play(0x90, 60, 100);
    const Bytes bytes = madeChunk(c.input, "Old one", 9);
    json after = stateAfter(c, bench, bench.load(bytes));
    after["chunkSize"] = bytes.size();
    return after;
}

json runFile(const Case& c) {
    PatchBench bench;
    const vantoric::platform::ScratchFolder folder;
    const std::string path = folder / "x.fxp";
    if (c.input.contains("chunk_write")) {
        fill(bench, inputOfCase(c, "chunk_write", c.input["chunk_write"]));
        bench.files->savePatchFile(path);
        Bytes bytes;
        vantoric::platform::readFile(path, bytes);
        return {{"header", golden::base64(range(bytes, 0, vantoric::patchHeaderBytes))},
                {"size", bytes.size()},
                {"sha256", golden::sha256(bytes)}};
    }
    Bytes bytes = golden::fromBase64(c.input.at("header"));
    const Bytes chunkBytes = HandMadeChunk().bytes;
    bytes.insert(bytes.end(), chunkBytes.begin(), chunkBytes.end());
    vantoric::platform::writeFile(path, bytes.data(), bytes.size());
    return {{"accepted", bench.files->loadPatchFile(path)}};
}

json runName(const Case& c) {
    PatchBench bench;
    if (c.input.contains("seed")) {
        vantoric::LinearCongruence seed{c.input["seed"].get<std::uint32_t>()};
        json rows = json::array();
        for (std::size_t k = 0; k < c.expected.at("rows").size(); ++k) {
            const std::string name = vantoric::nextInitName(seed);
            rows.push_back({seed.state, name});
        }
        return {{"rows", rows}};
    }
    if (c.input.contains("index")) {
        std::string name;
        const bool result = bench.program.getProgramNameIndexed(0, c.input["index"], name);
        return {{"getProgram", bench.program.getProgram()}, {"result", result}, {"name", name}};
    }
    if (c.input.contains("path"))
        bench.program.setProgramName(vantoric::patchNameOfPath(c.input["path"]));
    else
        bench.program.setProgramName(c.input.at("text"));
    return {{"getProgramName", bench.program.getProgramName()}, {"warning", !bench.dialogs.boxes().empty()}};
}

const golden::Binding b1("events", "chunk_write", golden::checkValues<runWrite>);
const golden::Binding b2("events", "chunk_read", golden::checkValues<runRead>);
const golden::Binding b3("events", "chunk_versions", golden::checkValues<runVersions>);
const golden::Binding b4("events", "chunk_malformed", golden::checkValues<runMalformed>);
const golden::Binding b5("events", "patch_file", golden::checkValues<runFile>);
const golden::Binding b6("events", "program_name", golden::checkValues<runName>);

}  // namespace
