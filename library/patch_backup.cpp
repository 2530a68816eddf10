#include "library/patch_backup.h"

#include <algorithm>

#include "platform/files.h"
#include "platform/own_files.h"

namespace vantoric {

namespace {

constexpr int synthesisTypeSample = 3;

// The samples of the patch in force that its chunk leaves out.
std::vector<std::pair<std::size_t, CopiedSample>> unsavedSamples(Instrument& instrument) {
    const PatchParts parts = partsOf(instrument);
    std::vector<std::pair<std::size_t, CopiedSample>> kept;
    for (std::size_t i = 0; i < parts.samples.size(); ++i) {
        const int layer = static_cast<int>(i) / oscillatorCount, oscillator = static_cast<int>(i) % oscillatorCount;
        const bool isSaved =
            parts.parameters.getListIndex(hostIndex(parameter::SynType1 + oscillator, layer)) == synthesisTypeSample;
        if (!isSaved && parts.samples[i]->length > 0) kept.emplace_back(i, copyOf(*parts.samples[i]));
    }
    return kept;
}

}  // namespace

PatchBackup::PatchBackup(Instrument& instrument, const std::string& fileName)
    : instrument_(instrument),
      path_(platform::userFolder() + fileName),
      name_(instrument.program().getProgramName()),
      chunk_(instrument.patchChunk().getChunk()) {
    platform::makeFolder(platform::userFolder());
    if (isKept()) isSaved_ = instrument.patchFiles().saveChunk(path_, chunk_);
}

bool PatchBackup::isOwnFile() const {
    std::vector<std::uint8_t> file;
    platform::readFile(path_, file);
    const auto bytes = chunkOfFile(file);
    return std::equal(bytes.begin(), bytes.end(), chunk_.data.get(), chunk_.data.get() + chunk_.size);
}

void PatchBackup::takeBack() {
    if (!isKept()) return;
    const auto samples = unsavedSamples(instrument_);
    if (!isSaved_ || !isOwnFile() || !instrument_.patchFiles().loadPatchFile(path_))
        instrument_.patchChunk().setCheckedChunk(chunk_.data.get(), chunk_.size);
    instrument_.program().setProgramName(name_);
    const PatchParts parts = partsOf(instrument_);
    for (const auto& [index, sample] : samples) putSample(parts, *parts.samples[index], sample);
    drop();
}

void PatchBackup::drop() {
    if (isSaved_) instrument_.patchFiles().removeTemporary(path_);
}

}  // namespace vantoric
