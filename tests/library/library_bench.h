// An instrument with a user who answers as told.
#pragma once

#include "library/import_commands.h"
#include "library/sample_commands.h"
#include "platform/files.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"
#include "tests/engine/engine_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric::test {

struct LibraryBench {
    LibraryBench() { audio.messages().take(); }  // of a start without factory sounds

    std::string put(const std::string& name, const Bytes& bytes) {
        EXPECT_TRUE(platform::writeFile(folder / name, bytes.data(), bytes.size()));
        return folder / name;
    }
    std::string wave(const std::string& name, int frames = 60, int channels = 1) {
        WaveMaker maker;
        maker.channels = channels;
        return put(name, maker.putFrames(frames, [](int i) { return i % 100 < 50 ? 9000 : -9000; }).file());
    }
    const Sample& sample(int oscillator) { return audio.layer(0).sample(oscillator); }
    // The boxes and questions, "title: text".
    std::vector<std::string> shown() const {
        std::vector<std::string> all;
        for (const auto& box : dialogs.boxes()) all.push_back(box.title + ": " + box.text);
        return all;
    }

    EngineRig rig;
    Instrument& audio = rig.audio;
    platform::ScratchFolder folder;
    platform::RecordedDialogs dialogs;
    CommandLog log;
    WaveChooser chooser{dialogs};
    SampleCommands samples{
        audio.sampleLoader(), audio.sampleEditor(), audio.customWaveLoader(), chooser, audio.messages(), dialogs, log};
    ImportCommands imports{audio.quickImport(), audio.sfzImport(), chooser, audio.messages(), dialogs, log};
};

}  // namespace vantoric::test
