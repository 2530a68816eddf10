// "Quick import": a patch made of one wave file.
#pragma once

#include <string>

#include "loading/sample_loader.h"
#include "parameters/parameter_model.h"
#include "patch/patch_file.h"
#include "patch/program_slot.h"
#include "platform/dialogs.h"

namespace vantoric {

// Called by the thread of the SampleLoader.
class QuickImport {
public:
    QuickImport(PatchFiles& files, ProgramSlot& program, ParameterModel& parameters, SampleLoader& loader,
                platform::Dialogs& dialogs)
        : files_(files), program_(program), parameters_(parameters), loader_(loader), dialogs_(dialogs) {}

    // Loads the template "Quick_Sample.fxp" of the bank folder, lets the user choose a wave file and puts it
    // into oscillator 1 of the layer that the window shows; a stereo file goes to oscillators 1 and 2, left
    // and right through a filter each. The patch is then named after the file. False if the template is
    // missing, nothing was chosen, or the file was refused (with the loader's box).
    bool importSample();

    // Loads the template "Quick_Vocoder.fxp" of the bank folder, tells the user what to choose and puts the
    // chosen file into oscillator 1, the modulator of the template's vocoder. Name and result as above.
    bool importVocoder();

private:
    void prepareLayer();
    bool importStereo(const std::string& path);
    void set(int number, float value);

    PatchFiles& files_;
    ProgramSlot& program_;
    ParameterModel& parameters_;
    SampleLoader& loader_;
    platform::Dialogs& dialogs_;
};

}  // namespace vantoric
