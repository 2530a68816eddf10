#include "loading/quick_import.h"

#include <utility>

#include "base/numbers.h"
#include "base/parameters.h"
#include "platform/module_folder.h"
#include "samples/wave_file.h"
#include "sound/kernels.h"

namespace vantoric {

namespace par = parameter;

std::string QuickImport::sampleTemplate() { return platform::bankFolder() + "Quick_Sample.fxp"; }
std::string QuickImport::vocoderTemplate() { return platform::bankFolder() + "Quick_Vocoder.fxp"; }

bool QuickImport::importSample(const std::string& path) try {
    const EngineTurn turn(access_);
    std::optional<PreparedWave> left = loader_.prepareWave(path), right;
    if (left && isStereoFile(path)) {
        right = loader_.prepareWave(path, 1);
        if (!right) return false;
    }
    if (!left || !files_.loadPatchFile(sampleTemplate())) return false;
    prepareLayer();
    loader_.place(-1, 0, std::move(*left));
    if (right) spreadStereo(std::move(*right));
    program_.setProgramName(patchNameOfPath(path));
    return true;
} catch (...) {
    return failed();
}

bool QuickImport::importVocoder(const std::string& path) try {
    const EngineTurn turn(access_);
    std::optional<PreparedWave> wave = loader_.prepareWave(path);
    if (!wave || !files_.loadPatchFile(vocoderTemplate())) return false;
    loader_.place(-1, 0, std::move(*wave));
    program_.setProgramName(patchNameOfPath(path));
    return true;
} catch (...) {
    return failed();
}

bool QuickImport::failed() {
    messages_.post("Error", "Not enought memory.");
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
