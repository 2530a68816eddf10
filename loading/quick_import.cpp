#include "loading/quick_import.h"

#include <utility>

#include "base/numbers.h"
#include "base/outcome.h"
#include "base/parameters.h"
#include "platform/module_folder.h"
#include "samples/wave_file.h"
#include "sound/kernels.h"

namespace vantoric {

namespace par = parameter;

namespace {
QuickReading shortOfMemory() {
    QuickReading reading;
    reading.left.refused = Outcome::failure("Error", notEnoughMemory);
    return reading;
}
}  // namespace

std::string QuickImport::sampleTemplate() { return platform::bankFolder() + "Quick_Sample.fxp"; }
std::string QuickImport::vocoderTemplate() { return platform::bankFolder() + "Quick_Vocoder.fxp"; }

bool QuickImport::importSample(const std::string& path) {
    const EngineTurn turn(access_);
    return placeSample(readSample(path));
}

bool QuickImport::importVocoder(const std::string& path) {
    const EngineTurn turn(access_);
    return placeVocoder(readVocoder(path));
}

QuickReading QuickImport::readSample(const std::string& path, Progress* progress) const try {
    QuickReading reading{path, {}, {}, isStereoFile(path)};
    if (progress != nullptr && reading.isStereo) progress->setStretch(0, 0.5);
    reading.left = loader_.readWave(path, 0, progress);
    if (!reading.left.wave || !reading.isStereo) return reading;
    if (progress != nullptr) progress->setStretch(0.5, 1);
    reading.right = loader_.readWave(path, 1, progress);
    return reading;
} catch (...) {
    return shortOfMemory();
}

QuickReading QuickImport::readVocoder(const std::string& path, Progress* progress) const try {
    return {path, loader_.readWave(path, 0, progress), {}, false};
} catch (...) {
    return shortOfMemory();
}

// Whether the patch is the template now and waits for the waves.
bool QuickImport::takes(const QuickReading& reading, const std::string& patch) {
    if (reading.isWhole()) return files_.loadPatchFile(patch);
    messages_.post(reading.left.wave ? reading.right.refused : reading.left.refused);
    return false;
}

bool QuickImport::placeSample(QuickReading&& reading) try {
    const EngineTurn turn(access_);
    if (!takes(reading, sampleTemplate()) || !reading.left.wave) return false;
    prepareLayer();
    loader_.place(-1, 0, std::move(*reading.left.wave));
    if (reading.right.wave) spreadStereo(std::move(*reading.right.wave));
    program_.setProgramName(patchNameOfPath(reading.path));
    return true;
} catch (...) {
    return failed();
}

bool QuickImport::placeVocoder(QuickReading&& reading) try {
    const EngineTurn turn(access_);
    if (!takes(reading, vocoderTemplate()) || !reading.left.wave) return false;
    loader_.place(-1, 0, std::move(*reading.left.wave));
    program_.setProgramName(patchNameOfPath(reading.path));
    return true;
} catch (...) {
    return failed();
}

bool QuickImport::failed() {
    messages_.post("Error", notEnoughMemory);
    return false;
}

// The sound as it was recorded: no filter at work, one oscillator that plays a sample, on a layer that sounds.
void QuickImport::prepareLayer() {
    parameters_.setParameter(par::Layer1On + loader_.currentLayer, 1.0f);
    for (int i = 0; i < filterCount; ++i) {
        set(par::FilType1 + i, 0.0f);
        set(par::Cutoff1 + i, 0.5f);
    }
    set(par::SynType1, listValue(sampleType));
    set(par::On1, 1.0f);
}

void QuickImport::spreadStereo(PreparedWave&& right) {
    loader_.place(-1, 1, std::move(right));
    set(par::SynType1 + 1, listValue(sampleType));
    set(par::On1 + 1, 1.0f);
    set(par::FilPan1, 0.0f);
    set(par::FilPan1 + 1, 1.0f);
    set(par::FiltMix1 + 1, 1.0f);
    set(par::Oct1 + 1, parameters_.getParameter(hostIndex(par::Oct1, loader_.currentLayer)));
}

void QuickImport::set(int number, float value) { parameters_.setParameter(hostIndex(number, loader_.currentLayer), value); }

}  // namespace vantoric
