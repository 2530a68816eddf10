// The instrument as a VST 2.4 plug-in: what the host asks for goes to the instrument, what the instrument asks for goes
// to the host. Nothing else happens here.
#pragma once

#include <array>
#include <atomic>
#include <string>

#include "faces/common/plugged_instrument.h"
#include "faces/vst2/audio_effect.h"
#include "platform/dialogs.h"

namespace vantoric {

// Whether a host may automate a parameter: those that the instrument offers. A host whose product string is "Orion" may
// automate all, even indices that do not exist. A null string counts as empty.
bool canParameterBeAutomated(std::int32_t index, const char* hostProduct);

class Q7Audio final : public AudioEffectX, private HostPort {
public:
    // What the instrument has to tell is shown by `dialogs`, which must outlive the object, at the end of the call in question.
    // See Instrument for what it may throw.
    explicit Q7Audio(HostCallback host, platform::Dialogs& dialogs = platform::desktopDialogs());
    ~Q7Audio() override;

    // Tells the host of a new patch at the end of a call that hosts make on the thread of their own window.
    std::intptr_t dispatcher(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr, float opt) override;

    // What the host asks for; see AudioEffect for threads and bounds.
    void suspend() override;
    void resume() override;
    void setSampleRate(float rate) override;
    // The internal rate in Hz, which every reader of a rate in the instrument gets.
    float getSampleRate() override;
    void processReplacing(float** inputs, float** outputs, std::int32_t frames) override;
    void processDoubleReplacing(double** inputs, double** outputs, std::int32_t frames) override;
    void setParameter(std::int32_t index, float value) override;
    float getParameter(std::int32_t index) override;
    void getParameterLabel(std::int32_t index, char* text) override;
    void getParameterDisplay(std::int32_t index, char* text) override;
    void getParameterName(std::int32_t index, char* text) override;
    bool canParameterBeAutomated(std::int32_t index) override;
    void setProgram(std::int32_t index) override;
    std::int32_t getProgram() override;
    void setProgramName(const char* text) override;
    void getProgramName(char* text) override;
    bool getProgramNameIndexed(std::int32_t category, std::int32_t index, char* text) override;
    std::int32_t getChunk(void** data, bool isPreset) override;
    std::int32_t setChunk(void* data, std::int32_t size, bool isPreset) override;
    bool getOutputProperties(std::int32_t index, VstPinProperties* properties) override;
    // One program, the patch in force, on every channel.
    std::int32_t getMidiProgramName(std::int32_t channel, MidiProgramName* program) override;
    std::int32_t getCurrentMidiProgram(std::int32_t channel, MidiProgramName* program) override;
    bool hasMidiProgramsChanged(std::int32_t channel) override;
    std::int32_t processEvents(VstEvents* events) override;
    bool getEffectName(char* text) override;
    bool getVendorString(char* text) override;
    bool getProductString(char* text) override;
    std::int32_t getVendorVersion() override;
    std::int32_t canDo(const char* text) override;
    PlugCategory getPlugCategory() override;
    bool setProcessPrecision(std::int32_t precision) override;

    Instrument& instrument() { return instrument_; }
    PluggedInstrument& plugged() { return plugged_; }

private:
    void editBegun(int index) override;
    void parameterEdited(int index, float value) override;
    void editEnded(int index) override;
    void patchChanged() override;
    void latencyChanged(int frames) override;
    bool sizeWanted(int width, int height) override;

    void describeToHost();
    Transport askTransport();

    PluggedInstrument plugged_;
    Instrument& instrument_{plugged_.instrument()};
    std::atomic<bool> isPatchNew_{false};
    std::array<std::string, 16> namesTold_;  // of the MIDI program, when the host last asked whether it changed, by channel
};

}  // namespace vantoric
