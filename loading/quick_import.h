// "Quick import": a patch made of one wave file.
#pragma once

#include <string>

#include "loading/sample_loader.h"
#include "parameters/parameter_model.h"
#include "patch/patch_file.h"
#include "patch/program_slot.h"

namespace vantoric {

// A wave file that has been read for a quick import.
struct QuickReading {
    std::string path;
    WaveReading left, right;  // the right one only of a stereo file, if both channels are wanted
    bool isStereo = false;
    bool isWhole() const { return left.wave && (!isStereo || right.wave); }
};

// Any thread but the audio thread: each import takes its turn. Throws nothing.
class QuickImport {
public:
    QuickImport(PatchFiles& files, ProgramSlot& program, ParameterModel& parameters, SampleLoader& loader, EngineAccess& access,
                Messages& messages)
        : files_(files), program_(program), parameters_(parameters), loader_(loader), access_(access), messages_(messages) {}

    // The templates "Quick_Sample.fxp" and "Quick_Vocoder.fxp" of the bank folder.
    static std::string sampleTemplate();
    static std::string vocoderTemplate();

    // Replaces the patch by the template and puts a wave file into oscillator 1 of the layer that the window shows; a stereo
    // file goes to oscillators 1 and 2, left and right through a filter each. The patch is then named after the file. The
    // wave is ready before the template is loaded: false, with the patch as it was, if the file was refused (with the
    // loader's message) or the template is missing (without) or is none (with its message).
    bool importSample(const std::string& path);

    // The same with the other template: the file goes into oscillator 1, the modulator of its vocoder.
    bool importVocoder(const std::string& path);

    // The two halves of both. The first is beside everything and tells nobody; `progress` may be null. The others put what it
    // read in its place, or tell why there is nothing.
    QuickReading readSample(const std::string& path, Progress* progress = nullptr) const;
    QuickReading readVocoder(const std::string& path, Progress* progress = nullptr) const;
    bool placeSample(QuickReading&& reading);
    bool placeVocoder(QuickReading&& reading);

private:
    void prepareLayer();
    void spreadStereo(PreparedWave&& right);
    void set(int number, float value);
    bool takes(const QuickReading& reading, const std::string& patch);
    bool failed();

    PatchFiles& files_;
    ProgramSlot& program_;
    ParameterModel& parameters_;
    SampleLoader& loader_;
    EngineAccess& access_;
    Messages& messages_;
};

}  // namespace vantoric
