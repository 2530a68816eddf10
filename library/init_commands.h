// The commands that begin a new patch or reset a part of one.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "engine/instrument.h"
#include "library/command_log.h"
#include "library/on_show.h"
#include "library/patch_on_show.h"
#include "platform/dialogs.h"

namespace vantoric {

// What the rows "Create patch: ..." are named after, in their order.
inline constexpr std::array<const char*, 19> patchTemplates = {"SubtractivePoly",
                                                               "SubtractiveMono",
                                                               "SubtractivePad",
                                                               "AnalogPoly",
                                                               "AnalogMono",
                                                               "FM",
                                                               "Synced",
                                                               "SoftSync",
                                                               "Ultrasaw",
                                                               "Fractal",
                                                               "Wavetable",
                                                               "Sample",
                                                               "PhaseDistortion",
                                                               "Waveshaping",
                                                               "PWM",
                                                               "AM",
                                                               "303",
                                                               "PhysicalGuitar",
                                                               "PhysicalFlute"};

// The file that a template is loaded from.
std::string templatePath(const std::string& name);

// On the thread of the window. Each command takes its turn at the engine and lets everybody know that all values may be
// others. The layer on show is the one that layer commands work on.
class InitCommands {
public:
    // What the names of new patches are seeded with.
    using Clock = std::uint32_t (*)();

    // All outlive it. `clock`: null for the system's.
    InitCommands(Instrument& instrument, OnShow& onShow, PatchOnShow& patch, platform::Dialogs& dialogs, CommandLog& log,
                 Clock clock = nullptr);

    // A new patch: silence, no samples, every value at its start, layer 1 on show and a name of its own.
    void resetAll();
    void resetLayer();
    void resetArpeggiator();
    void resetMatrix();
    // Clears the matrix rows of all layers that have no source or no destination.
    void cleanMatrix();
    // A new patch of one of the templates. False, with the patch as it was and told, if its file cannot be loaded.
    bool createPatch(const std::string& name);

private:
    void releaseSamples(int firstLayer, int endOfLayers);
    void finish();
    void showNewPatch(const std::string& kind);
    int layer() const { return onShow_.layer; }

    Instrument& instrument_;
    OnShow& onShow_;
    PatchOnShow& patch_;
    platform::Dialogs& dialogs_;
    CommandLog& log_;
    Clock clock_;
};

}  // namespace vantoric
