// The instrument as a VST 2.4 plug-in: what the host asks for goes to the instrument, what the instrument asks for goes
// to the host. Nothing else happens here.
#pragma once

#include "engine/host_port.h"
#include "engine/instrument.h"
#include "faces/vst2/audio_effect.h"

namespace vantoric {

// Whether a host may automate a parameter: those that the instrument offers. A host whose product string is "Orion" may
// automate all, even indices that do not exist. A null string counts as empty.
bool canParameterBeAutomated(std::int32_t index, const char* hostProduct);

class Q7Audio final : public AudioEffectX, private HostPort {
public:
    // Boxes go to `dialogs`, which must outlive the object. See Instrument for what it may throw.
    explicit Q7Audio(HostCallback host, platform::Dialogs& dialogs = platform::desktopDialogs());
    ~Q7Audio() override;

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
    std::int32_t processEvents(VstEvents* events) override;
    bool getEffectName(char* text) override;
    bool getVendorString(char* text) override;
    bool getProductString(char* text) override;
    std::int32_t getVendorVersion() override;
    std::int32_t canDo(const char* text) override;
    PlugCategory getPlugCategory() override;
    bool setProcessPrecision(std::int32_t precision) override;

    Instrument& instrument() { return instrument_; }

private:
    void editBegun(int index) override;
    void parameterEdited(int index, float value) override;
    void editEnded(int index) override;
    void patchChanged() override;
    void latencyChanged(int frames) override;
    bool sizeWanted(int width, int height) override;

    void describeToHost();
    Transport askTransport();

    Instrument instrument_;
};

}  // namespace vantoric
