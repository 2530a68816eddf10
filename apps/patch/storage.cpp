#include "apps/patch/storage.h"

#include <algorithm>
#include <cstdio>

#include "apps/patch/patch_text.h"
#include "apps/patch/wave_text.h"
#include "library/text_sections.h"
#include "platform/files.h"

namespace vantoric::patch {

namespace fs = std::filesystem;

namespace {

void makeFolderOf(const fs::path& path) {
    if (!path.parent_path().empty() && !platform::makeFolder(path.parent_path().string()))
        throw PatchError(path.parent_path().string(), "this folder cannot be made");
}

void writeWhole(const fs::path& path, const void* bytes, std::size_t size) {
    makeFolderOf(path);
    if (!platform::writeFile(path.string(), bytes, size)) throw PatchError(path.string(), "cannot be written");
}

// The name of the file that holds a sample beside the text `out`.
std::string sampleName(const fs::path& out, int wave) {
    return out.stem().string() + "-layer" + std::to_string(wave / oscillatorCount + 1) + "-osc" +
           std::to_string(wave % oscillatorCount + 1) + ".wav";
}

}  // namespace

bool isText(const fs::path& path) { return path.extension() == ".json"; }

std::size_t load(const fs::path& path, Patch& patch, const std::string& samples) {
    std::vector<std::uint8_t> bytes;
    if (!platform::readFile(path.string(), bytes)) throw PatchError("", "cannot be read");
    if (isText(path)) {
        const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        readText(text, (path.parent_path() / "").string(), path.stem().string(), patch, samples);
    } else {
        fromPatchFile(bytes, patch);
    }
    return bytes.size();
}

std::size_t savePatchFile(const fs::path& path, Patch& patch) {
    const std::vector<std::uint8_t> file = toPatchFile(patch);
    writeWhole(path, file.data(), file.size());
    return file.size();
}

void saveNotes(const fs::path& path, const Patch& patch) {
    if (patch.author.empty() && patch.about.empty() && patch.tags.empty()) return;
    const fs::path notes = path.parent_path().string() + ".tags";
    TextSections sections = loadSections(notes.string());
    const std::string name = path.stem().string();
    auto section = std::find_if(sections.begin(), sections.end(), [&](const TextSection& s) { return s.name == name; });
    if (section == sections.end()) section = sections.insert(sections.end(), TextSection{name, {}});
    std::string tags;
    for (const std::string& tag : patch.tags) tags += (tags.empty() ? "" : ", ") + tag;
    section->set("tags", tags);
    section->set("author", patch.author);
    section->set("about", patch.about);
    if (!saveSections(notes.string(), sections)) throw PatchError(notes.string(), "cannot be written");
}

void saveText(const fs::path& path, const Patch& patch, bool withSamples) {
    makeFolderOf(path);
    const std::string text = writeText(patch, [&](int wave) {
        if (!withSamples) return std::string();
        const std::string file = sampleName(path, wave);
        writeSampleFile((path.parent_path() / file).string(), patch.samples[static_cast<std::size_t>(wave)]);
        return file;
    });
    writeWhole(path, text.data(), text.size());
}

void printText(const Patch& patch, bool withSamples) {
    bool left = false;
    const std::string text = writeText(patch, [&](int) {
        left = true;
        return std::string();
    });
    if (left && withSamples) std::fprintf(stderr, "vantoric-patch: the samples are left out; name an output file to keep them\n");
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void save(const fs::path& path, Patch& patch) {
    if (isText(path))
        saveText(path, patch, true);
    else
        savePatchFile(path, patch);
}

int complain(const fs::path& path, const PatchError& error) {
    std::fprintf(stderr, "vantoric-patch: %s: %s\n", path.c_str(), error.what());
    return fileTrouble;
}

}  // namespace vantoric::patch
