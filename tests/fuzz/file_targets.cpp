#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "editor/model/window_files.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "sound/wave_store.h"
#include "tests/fuzz/targets.h"
#include "tests/patch/patch_bench.h"

namespace vantoric::fuzz {

namespace {

namespace fs = std::filesystem;

// An installation of this process's own, gone at its end.
struct Scratch {
    Scratch() : root((fs::temp_directory_path() / ("vantoric-fuzz-" + std::to_string(getpid()))).string()) {
        fs::create_directories(root + "/Vantoric_data");
        platform::setDataFolder(root);
    }
    ~Scratch() { fs::remove_all(root); }
    std::string root;
};
const Scratch& scratch() {
    static const Scratch one;
    return one;
}

}  // namespace

// A short input is the file's header, in front of a sound chunk with a sample.
void patchFile(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, data + size);
    if (size < 1000) {
        bytes.resize(std::min<std::size_t>(size, patchHeaderBytes));
        if (size >= patchHeaderBytes) {
            const Bytes rest = HandMadeChunk().header(2, {20, 0, 20, 44100}).data(20, 5).bytes;
            bytes.insert(bytes.end(), rest.begin(), rest.end());
        }
    }
    const std::string path = scratch().root + "/x.fxp";
    require(platform::writeFile(path, bytes.data(), bytes.size()), "the scratch file is written");
    PatchBench bench;
    const bool accepted = bench.files->loadPatchFile(path);
    require(!accepted || isPatchFile(bytes), "only patch files are loaded");
    require(accepted == (bench.program.getProgramName() == "x"), "a loaded patch has the file's name");
    require(chunkOfFile(bytes).size() <= bytes.size(), "a chunk lies within its file");
    bench.state.flags.engineLocked.clear();
    require(bench.files->savePatchFile(path), "whatever was loaded can be saved");
    require(bench.files->loadPatchFile(path), "and loads again");
    require(!bench.state.flags.engineLocked.isSet(), "and plays");
}

void controllerMap(const std::uint8_t* data, std::size_t size) {
    ControllerMap map;
    map.decode({data, size});
    const auto bytes = map.encode();
    const std::size_t whole = std::min<std::size_t>(size, 256) / 2 * 2;
    require(std::equal(data, data + whole, bytes.begin()), "entries come back");
    for (std::size_t k = whole; k < 256; ++k) require(bytes[k] == 0xff, "absent entries are empty");
    PatchBench bench;
    bench.ccMap.decode({data, size});
    for (int controller = 0; controller < 128; ++controller) bench.play(0xb0, static_cast<std::uint8_t>(controller), 100);
}

void sizeFile(const std::uint8_t* data, std::size_t size) {
    scratch();
    require(platform::writeFile(sizeFilePath(), data, size), "the scratch file is written");
    const std::optional<int> index = readSizeIndex();
    require(index.has_value() == (size > 0), "a file with a byte has a size");
    require(!index || (*index >= 0 && *index < editorSizeCount), "a size is one of the list");
}

// A short input is the file's header, in front of two frames of data.
void bankFile(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, data + size);
    if (size >= bankHeaderBytes && size < 1000) bytes.resize(size + 2 * bankFrameBytes, 0x11);
    const std::string path = scratch().root + "/x.va";
    require(platform::writeFile(path, bytes.data(), bytes.size()), "the scratch file is written");
    WaveStore store;
    const bool loaded = store.loadWaveFile(0, path, false) == WaveLoad::loaded;
    const BankWave* const wave = store.wave(0);
    require(loaded == (wave != nullptr), "a wave is there if its file was taken");
    if (!loaded) return;
    const std::size_t samples = static_cast<std::size_t>(wave->frames) * mipLevels * cycleSamples;
    require(wave->frames >= 1 && samples * 2 <= bytes.size(), "a wave has no more frames than its file");
    int sum = 0;
    for (int level = 0; level < mipLevels; ++level) sum += store.cycle(0, wave->frames - 1, level)[cycleSamples - 1];
    require(sum >= mipLevels * -32768, "the last frame can be read to its end");
}

std::vector<Bytes> bankFileSeeds() {
    Bytes header(bankHeaderBytes);
    header[16] = 16;  // size of the format chunk
    header[20] = 1;   // plain samples
    header[22] = 1;   // one channel
    header[34] = 16;  // bits
    chunk::writeLong(&header[40], bankFrameBytes);
    Bytes cut(header.begin(), header.end() - 1), huge = header, whole = header;
    chunk::writeLong(&huge[40], 0xffff8000u);
    chunk::writeLong(&huge[16], 0xffffffffu);
    whole.resize(header.size() + bankFrameBytes, 7);
    return {header, cut, huge, whole, {}};
}

std::vector<Bytes> patchFileSeeds() {
    const Bytes whole = HandMadeChunk().name("Inside").bytes;
    const PatchHeader header = makePatchHeader("Name", static_cast<std::int32_t>(whole.size()));
    Bytes file(header.begin(), header.end());
    std::vector<Bytes> seeds = {file};
    file[56] = 0x80;
    seeds.push_back(file);
    file[19] = 'X';
    seeds.push_back(file);
    seeds.push_back({'C', 'c'});
    Bytes long_(header.size() + whole.size());
    std::copy(whole.begin(), whole.end(), std::copy(header.begin(), header.end(), long_.begin()));
    seeds.push_back(long_);
    return seeds;
}

std::vector<Bytes> controllerMapSeeds() { return {Bytes(258, 0xff), Bytes(5, 0x01), Bytes()}; }

std::vector<Bytes> sizeFileSeeds() { return {{0}, {17}, {18}, {255}, {3, 4}, {}}; }

}  // namespace vantoric::fuzz
