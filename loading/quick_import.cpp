#include "loading/quick_import.h"

#include "base/numbers.h"
#include "base/parameters.h"
#include "platform/module_folder.h"
#include "samples/wave_file.h"
#include "sound/kernels.h"

namespace vantoric {

namespace par = parameter;

bool QuickImport::importSample() {
    if (!files_.loadPatchFile(platform::bankFolder() + "Quick_Sample.fxp")) return false;
    prepareLayer();
    std::string path;
    if (!loader_.askWaveFile(path)) return false;
    if (!(isStereoFile(path) ? importStereo(path) : loader_.loadSample(-1, 0, path))) return false;
    program_.setProgramName(patchNameOfPath(path));
    return true;
}

bool QuickImport::importVocoder() {
    if (!files_.loadPatchFile(platform::bankFolder() + "Quick_Vocoder.fxp")) return false;
    dialogs_.message("Hint", "Now select a speech sample or a drumline...");
    std::string path;
    if (!loader_.askWaveFile(path) || !loader_.loadSample(-1, 0, path)) return false;
    program_.setProgramName(patchNameOfPath(path));
    return true;
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

bool QuickImport::importStereo(const std::string& path) {
    if (!loader_.loadSampleChannel(-1, 0, path, false, 0) || !loader_.loadSampleChannel(-1, 1, path, false, 1)) return false;
    set(par::SynType1 + 1, listValue(sampleType));
    set(par::On1 + 1, 1.0f);
    set(par::FilPan1, 0.0f);
    set(par::FilPan1 + 1, 1.0f);
    set(par::FiltMix1 + 1, 1.0f);
    set(par::Oct1 + 1, parameters_.getParameter(hostIndex(par::Oct1, loader_.currentLayer)));
    return true;
}

void QuickImport::set(int number, float value) { parameters_.setParameter(hostIndex(number, loader_.currentLayer), value); }

}  // namespace vantoric
