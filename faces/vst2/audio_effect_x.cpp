#include <algorithm>
#include <cstring>

#include "faces/vst2/audio_effect.h"

namespace vantoric {

namespace {

// Key operations carry the character as index, the virtual key as value and the modifiers as a number in `opt`.
VstKeyCode keyCode(std::int32_t character, std::intptr_t virtualKey, float modifiers) {
    const bool sensible = modifiers >= 0.0f && modifiers < 256.0f;
    return {character, static_cast<unsigned char>(virtualKey), static_cast<unsigned char>(sensible ? modifiers : 0.0f)};
}

}  // namespace

std::intptr_t AudioEffectX::dispatcher(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr, float opt) {
    switch (opcode) {
        case pluginProcessEvents: return takeEvents(static_cast<VstEvents*>(ptr));
        case pluginCanBeAutomated: return parameterExists(index) && canParameterBeAutomated(index);
        case pluginGetProgramNameIndexed:
            return giveText(ptr, programNameLength,
                            [&](char* text) { return getProgramNameIndexed(static_cast<std::int32_t>(value), index, text); });
        case pluginGetInputProperties:
            return givePinProperties(index, getAeffect()->numInputs, ptr, &AudioEffectX::getInputProperties);
        case pluginGetOutputProperties:
            return givePinProperties(index, getAeffect()->numOutputs, ptr, &AudioEffectX::getOutputProperties);
        case pluginGetPlugCategory: return getPlugCategory();
        case pluginSetBlockSizeAndSampleRate:
            AudioEffect::dispatcher(pluginSetSampleRate, 0, 0, nullptr, opt);
            return AudioEffect::dispatcher(pluginSetBlockSize, 0, value, nullptr, 0.0f);
        case pluginGetEffectName: return giveText(ptr, effectNameLength, [this](char* text) { return getEffectName(text); });
        case pluginGetVendorString: return giveText(ptr, vendorTextLength, [this](char* text) { return getVendorString(text); });
        case pluginGetProductString:
            return giveText(ptr, productTextLength, [this](char* text) { return getProductString(text); });
        case pluginGetVendorVersion: return getVendorVersion();
        case pluginCanDo: return ptr ? canDo(static_cast<const char*>(ptr)) : 0;
        case pluginGetTailSize: return getTailSize();
        case pluginGetVstVersion: return interfaceVersion;
        case pluginEditKeyDown: return isEditorOpen() && getEditor()->onKeyDown(keyCode(index, value, opt));
        case pluginEditKeyUp: return isEditorOpen() && getEditor()->onKeyUp(keyCode(index, value, opt));
        case pluginSetEditKnobMode: return getEditor() && getEditor()->setKnobMode(static_cast<std::int32_t>(value));
        case pluginStartProcess: startProcess(); return 0;
        case pluginStopProcess: stopProcess(); return 0;
        case pluginSetProcessPrecision: return setProcessPrecision(static_cast<std::int32_t>(value));
        // Nothing to tell: texts are not turned into values, no own properties, key names or private operations.
        case pluginStringToParameter:
        case pluginGetParameterProperties:
        case pluginGetMidiKeyName:
        case pluginVendorSpecific:
        case pluginBeginSetProgram:
        case pluginEndSetProgram: return 0;
        default: return AudioEffect::dispatcher(opcode, index, value, ptr, opt);
    }
}

PlugCategory AudioEffectX::getPlugCategory() { return hasFlag(effectIsSynth) ? categorySynth : categoryUnknown; }

bool AudioEffectX::setProcessPrecision(std::int32_t precision) {
    return precision == 0 || (precision == 1 && hasFlag(effectCanDoubleReplacing));
}

std::intptr_t AudioEffectX::takeEvents(VstEvents* events) {
    if (!events) return 0;
    if (events->numEvents < 1) return 1;
    VstEvent* const* const first = events->events;
    VstEvent* const* const last = first + events->numEvents;
    return std::find(first, last, nullptr) == last ? processEvents(events) : eventsWithoutNulls(*events);
}

// Hands on the events that are there, in their order, a batch at a time.
std::intptr_t AudioEffectX::eventsWithoutNulls(const VstEvents& events) {
    constexpr std::int32_t batchSize = 64;
    struct Batch {
        std::int32_t numEvents = 0;
        std::intptr_t reserved = 0;
        VstEvent* events[batchSize];
    } batch;
    static_assert(offsetof(Batch, events) == offsetof(VstEvents, events));
    std::intptr_t answer = 1;
    const auto flush = [&] {
        if (batch.numEvents > 0) answer = processEvents(reinterpret_cast<VstEvents*>(&batch));
        batch.numEvents = 0;
    };
    VstEvent* const* const list = events.events;
    for (std::int32_t i = 0; i < events.numEvents; ++i) {
        if (!list[i]) continue;
        batch.events[batch.numEvents++] = list[i];
        if (batch.numEvents == batchSize) flush();
    }
    flush();
    return answer;
}

std::intptr_t AudioEffectX::givePinProperties(std::int32_t index, std::int32_t count, void* ptr, PinProperties write) {
    if (!ptr || index < 0 || index >= count) return 0;
    VstPinProperties properties{};
    if (!(this->*write)(index, &properties)) return 0;
    std::memcpy(ptr, &properties, sizeof properties);
    return 1;
}

void AudioEffectX::wantEvents() { callHost(hostWantMidi, 0, 1); }

VstTimeInfo* AudioEffectX::getTimeInfo(std::int32_t filter) {
    return reinterpret_cast<VstTimeInfo*>(callHost(hostGetTime, 0, filter));
}

bool AudioEffectX::beginEdit(std::int32_t index) { return callHost(hostBeginEdit, index) != 0; }

bool AudioEffectX::endEdit(std::int32_t index) { return callHost(hostEndEdit, index) != 0; }

bool AudioEffectX::updateDisplay() { return callHost(hostUpdateDisplay) != 0; }

bool AudioEffectX::sizeWindow(std::int32_t width, std::int32_t height) { return callHost(hostSizeWindow, width, height) != 0; }

bool AudioEffectX::hostText(HostOpcode opcode, char* text) {
    char answer[textBufferSize] = {};
    const bool answered = callHost(opcode, 0, 0, answer) != 0;
    answer[textBufferSize - 1] = 0;
    copyText(text, answered ? answer : "", vendorTextLength);
    return answered;
}

bool AudioEffectX::getHostVendorString(char* text) { return hostText(hostGetVendorString, text); }

bool AudioEffectX::getHostProductString(char* text) { return hostText(hostGetProductString, text); }

std::int32_t AudioEffectX::getHostVendorVersion() { return static_cast<std::int32_t>(callHost(hostGetVendorVersion)); }

std::int32_t AudioEffectX::canHostDo(const char* text) {
    return static_cast<std::int32_t>(callHost(hostCanDo, 0, 0, const_cast<char*>(text)));
}

}  // namespace vantoric
