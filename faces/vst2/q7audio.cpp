#include "faces/vst2/q7audio.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "base/version.h"
#include "faces/common/identity.h"

namespace vantoric {

namespace {

constexpr std::int32_t uniqueId = fourCharacters('Q', '7', 'D', 'I');
constexpr std::intptr_t offlineLevel = 4;  // the host's answer while it renders to a file

// What hosts ask for names and to draw, never while they render.
bool isOfTheWindowsThread(std::int32_t opcode) {
    switch (opcode) {
        case pluginEditIdle:
        case pluginEditOpen:
        case pluginGetProgram:
        case pluginGetProgramName:
        case pluginGetProgramNameIndexed: return true;
        default: return false;
    }
}

void writeText(char* text, const std::string& source) { copyText(text, source.c_str(), textBufferSize - 1); }

}  // namespace

bool canParameterBeAutomated(std::int32_t index, const char* hostProduct) {
    if (hostProduct != nullptr && std::strcmp(hostProduct, "Orion") == 0) return true;
    return ParameterModel::isAutomatable(index);
}

Q7Audio::Q7Audio(HostCallback host, platform::Dialogs& dialogs)
    : AudioEffectX(host, 1, parameterCount), plugged_(*this, dialogs) {
    describeToHost();
}

Q7Audio::~Q7Audio() { setEditor(nullptr); }

std::intptr_t Q7Audio::dispatcher(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr, float opt) {
    const std::intptr_t answer = AudioEffectX::dispatcher(opcode, index, value, ptr, opt);
    if (isOfTheWindowsThread(opcode) && isPatchNew_.exchange(false, std::memory_order_acquire)) updateDisplay();
    return answer;
}

void Q7Audio::describeToHost() {
    setNumInputs(0);
    setNumOutputs(2);
    setUniqueID(uniqueId);
    setVersion(versionNumber);
    canProcessReplacing();
    programsAreChunks();
    isSynth();
}

// ---- the host's side ----------------------------------------------------------------------------------------

void Q7Audio::editBegun(int index) { beginEdit(index); }
void Q7Audio::parameterEdited(int index, float value) { callHost(hostAutomate, index, 0, nullptr, value); }
void Q7Audio::editEnded(int index) { endEdit(index); }
// The library loads on a thread of its own, on which hosts do not expect to be called.
void Q7Audio::patchChanged() { isPatchNew_.store(true, std::memory_order_release); }

void Q7Audio::latencyChanged(int frames) {
    setInitialDelay(frames);
    callHost(hostIoChanged);
}

bool Q7Audio::sizeWanted(int width, int height) { return sizeWindow(width, height); }

// ---- sound --------------------------------------------------------------------------------------------------

void Q7Audio::suspend() { instrument_.stop(); }

void Q7Audio::resume() {
    instrument_.start();
    wantEvents();
}

void Q7Audio::setSampleRate(float rate) {
    AudioEffectX::setSampleRate(rate);
    instrument_.setSampleRate(rate);
}

float Q7Audio::getSampleRate() { return instrument_.internalRate(); }

Transport Q7Audio::askTransport() {
    Transport transport;
    transport.offline = callHost(hostGetCurrentProcessLevel) == offlineLevel;
    if (const VstTimeInfo* info = getTimeInfo(timeTempoValid | timePpqPosValid)) {
        transport.known = true;
        transport.tempo = info->tempo;
        transport.ppqPos = info->ppqPos;
    }
    return transport;
}

void Q7Audio::processReplacing(float**, float** outputs, std::int32_t frames) {
    instrument_.render(outputs[0], outputs[1], frames, askTransport());
}

// Doubles are the widened floats, so the instrument does not advertise them, but renders them to a host that asks.
void Q7Audio::processDoubleReplacing(double**, double** outputs, std::int32_t frames) {
    instrument_.render(outputs[0], outputs[1], frames, askTransport());
}

bool Q7Audio::setProcessPrecision(std::int32_t precision) { return precision == 0 || precision == 1; }

std::int32_t Q7Audio::processEvents(VstEvents* events) {
    for (int i = 0; i < events->numEvents; ++i) {
        if (events->events[i]->type != midiEventType) continue;
        auto* event = reinterpret_cast<VstMidiEvent*>(events->events[i]);
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(event->midiData);
        instrument_.receive({event->deltaFrames, bytes[0], bytes[1], bytes[2]});
    }
    return 1;
}

// ---- parameters and programs --------------------------------------------------------------------------------

void Q7Audio::setParameter(std::int32_t index, float value) { instrument_.setParameter(index, value); }
float Q7Audio::getParameter(std::int32_t index) { return instrument_.parameters().getParameter(index); }
void Q7Audio::getParameterLabel(std::int32_t index, char* text) { instrument_.parameters().getParameterLabel(index, text); }
void Q7Audio::getParameterDisplay(std::int32_t index, char* text) { instrument_.parameters().getParameterDisplay(index, text); }
void Q7Audio::getParameterName(std::int32_t index, char* text) { instrument_.parameters().getParameterName(index, text); }

bool Q7Audio::canParameterBeAutomated(std::int32_t index) {
    char product[textBufferSize] = {};
    getHostProductString(product);
    return vantoric::canParameterBeAutomated(index, product);
}

void Q7Audio::setProgram(std::int32_t index) { instrument_.program().setProgram(index); }
std::int32_t Q7Audio::getProgram() { return instrument_.program().getProgram(); }
void Q7Audio::setProgramName(const char* text) {
    instrument_.program().setProgramName(text);
    plugged_.showMessages();
}

void Q7Audio::getProgramName(char* text) { writeText(text, instrument_.program().getProgramName()); }

bool Q7Audio::getProgramNameIndexed(std::int32_t category, std::int32_t index, char* text) {
    std::string name;
    if (!instrument_.program().getProgramNameIndexed(category, index, name)) return false;
    writeText(text, name);
    return true;
}

std::int32_t Q7Audio::getMidiProgramName(std::int32_t, MidiProgramName* program) {
    if (program->thisProgramIndex != 0) return 0;
    copyText(program->name, instrument_.program().getProgramName().c_str(), sizeof program->name - 1);
    program->midiProgram = program->midiBankMsb = program->midiBankLsb = -1;  // no program change names it for good
    program->parentCategoryIndex = -1;
    return 1;
}

std::int32_t Q7Audio::getCurrentMidiProgram(std::int32_t channel, MidiProgramName* program) {
    program->thisProgramIndex = 0;
    getMidiProgramName(channel, program);
    return 0;
}

// All channels play the one program; each is told of a change.
bool Q7Audio::hasMidiProgramsChanged(std::int32_t channel) {
    const std::string name = instrument_.program().getProgramName();
    return std::exchange(namesTold_[static_cast<std::size_t>(channel & 15)], name) != name;
}

std::int32_t Q7Audio::getChunk(void** data, bool) {
    const ChunkBytes bytes = plugged_.patch();
    if (bytes.size <= 0) return 0;
    *data = std::malloc(static_cast<std::size_t>(bytes.size));
    if (*data == nullptr) return 0;
    std::memcpy(*data, bytes.data.get(), static_cast<std::size_t>(bytes.size));
    return bytes.size;
}

std::int32_t Q7Audio::setChunk(void* data, std::int32_t size, bool) {
    return plugged_.setPatch(data, static_cast<std::size_t>(size)) ? 1 : 0;
}

// ---- what it is ---------------------------------------------------------------------------------------------

bool Q7Audio::getOutputProperties(std::int32_t index, VstPinProperties* properties) {
    if (index < 0 || index > 1) return false;
    copyText(properties->label, index == 0 ? "Vantoric Out 1" : "Vantoric Out 2", sizeof properties->label - 1);
    // Fills its eight bytes; the cleared ones behind it end it.
    static_assert(sizeof identity::name - 1 == sizeof properties->shortLabel);
    std::memcpy(properties->shortLabel, identity::name, sizeof properties->shortLabel);
    properties->flags = pinIsActive | pinIsStereo;
    return true;
}

bool Q7Audio::getEffectName(char* text) {
    writeText(text, identity::name);
    return true;
}
bool Q7Audio::getVendorString(char* text) {
    writeText(text, identity::vendor);
    return true;
}
bool Q7Audio::getProductString(char* text) { return getEffectName(text); }
std::int32_t Q7Audio::getVendorVersion() { return versionNumber; }
PlugCategory Q7Audio::getPlugCategory() { return categorySynth; }

std::int32_t Q7Audio::canDo(const char* text) {
    for (const char* known : {"receiveVstEvents", "receiveVstMidiEvent", "midiProgramNames", "receiveVstTimeInfo"})
        if (std::strcmp(text, known) == 0) return 1;
    return -1;
}

}  // namespace vantoric
