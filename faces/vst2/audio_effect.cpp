#include "faces/vst2/audio_effect.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

#include "base/text.h"

namespace vantoric {

namespace {

AudioEffect* objectOf(AEffect* effect) { return effect ? static_cast<AudioEffect*>(effect->object) : nullptr; }

// Nothing that is thrown inside leaves an entry point: the host is not made for it. Then `failed()` answers.
template <class Work, class Failed>
auto withoutThrowing(Work&& work, Failed&& failed) noexcept {
    try {
        return work();
    } catch (...) {
        return failed();
    }
}

// True if all channels can be written; else silences those that can.
template <class Sample>
bool channelsWritable(Sample** outputs, std::int32_t count, std::int32_t frames) {
    if (!outputs || frames < 0) return false;
    bool complete = true;
    for (std::int32_t i = 0; i < count; ++i) complete = complete && outputs[i];
    if (complete) return true;
    for (std::int32_t i = 0; i < count; ++i)
        if (outputs[i]) std::fill_n(outputs[i], frames, Sample(0));
    return false;
}

template <class Sample>
void silence(Sample** outputs, std::int32_t count, std::int32_t frames) {
    for (std::int32_t i = 0; i < count; ++i) std::fill_n(outputs[i], frames, Sample(0));
}

template <class Sample>
bool channelsReadable(Sample** inputs, std::int32_t count) {
    if (count == 0) return true;
    return inputs && std::all_of(inputs, inputs + count, [](const Sample* channel) { return channel != nullptr; });
}

}  // namespace

void copyText(char* destination, const char* text, std::size_t maxCharacters) {
    constexpr std::size_t behind = 3;  // of a character that begins within the limit
    const std::string_view cut = cutText({text, strnlen(text, maxCharacters + behind)}, maxCharacters);
    cut.copy(destination, cut.size());
    destination[cut.size()] = 0;
}

AudioEffect::AudioEffect(HostCallback host, std::int32_t programs, std::int32_t parameters) : host_(host) {
    effect_.magic = effectMagic;
    effect_.dispatcher = dispatchEntry;
    effect_.process = processEntry;
    effect_.setParameter = setParameterEntry;
    effect_.getParameter = getParameterEntry;
    effect_.numPrograms = programs;
    effect_.numParams = parameters;
    effect_.ioRatio = 1.0f;
    effect_.object = this;
    effect_.version = 1;
    effect_.processReplacing = processReplacingEntry;
    effect_.processDoubleReplacing = processDoubleReplacingEntry;
}

AudioEffect::~AudioEffect() { std::free(chunkOfHost_.load()); }

void AudioEffect::setFlag(EffectFlag flag, bool on) { effect_.flags = on ? effect_.flags | flag : effect_.flags & ~flag; }

void AudioEffect::setEditor(std::unique_ptr<AEffEditor> editor) {
    closeEditor();
    editor_ = std::move(editor);
    setFlag(effectHasEditor, editor_ != nullptr);
}

std::intptr_t AudioEffect::callHost(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr, float opt) {
    return host_ ? host_(&effect_, opcode, index, value, ptr, opt) : 0;
}

void AudioEffect::setParameterAutomated(std::int32_t index, float value) {
    setParameter(index, value);
    callHost(hostAutomate, index, 0, nullptr, value);
}

std::int32_t AudioEffect::getChunk(void**, bool) { return 0; }

std::int32_t AudioEffect::setChunk(void*, std::int32_t, bool) { return 0; }

void AudioEffect::processDoubleReplacing(double**, double** outputs, std::int32_t frames) {
    for (std::int32_t i = 0; i < effect_.numOutputs; ++i) std::fill_n(outputs[i], frames, 0.0);
}

// Entry points: what the host calls through the record.

std::intptr_t AudioEffect::dispatchEntry(AEffect* effect, std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                         float opt) {
    AudioEffect* const self = objectOf(effect);
    if (!self) return 0;
    const auto operation = [&]() -> std::intptr_t {
        if (opcode != pluginClose) return self->dispatcher(opcode, index, value, ptr, opt);
        self->closeAndDelete();
        return 1;
    };
    return withoutThrowing(operation, [] { return std::intptr_t{0}; });
}

void AudioEffect::setParameterEntry(AEffect* effect, std::int32_t index, float value) {
    AudioEffect* const self = objectOf(effect);
    if (!self || !self->parameterExists(index)) return;
    withoutThrowing([&] { self->setParameter(index, value); }, [] {});
}

float AudioEffect::getParameterEntry(AEffect* effect, std::int32_t index) {
    AudioEffect* const self = objectOf(effect);
    if (!self || !self->parameterExists(index)) return 0.0f;
    return withoutThrowing([&] { return self->getParameter(index); }, [] { return 0.0f; });
}

// Adding to the outputs is gone from the interface: no sound is added.
void AudioEffect::processEntry(AEffect*, float**, float**, std::int32_t) {}

void AudioEffect::processReplacingEntry(AEffect* effect, float** inputs, float** outputs, std::int32_t frames) {
    AudioEffect* const self = objectOf(effect);
    if (!self || !channelsWritable(outputs, effect->numOutputs, frames)) return;
    if (!channelsReadable(inputs, effect->numInputs)) return;
    withoutThrowing([&] { self->processReplacing(inputs, outputs, frames); },
                    [&] { silence(outputs, effect->numOutputs, frames); });
}

void AudioEffect::processDoubleReplacingEntry(AEffect* effect, double** inputs, double** outputs, std::int32_t frames) {
    AudioEffect* const self = objectOf(effect);
    if (!self || !channelsWritable(outputs, effect->numOutputs, frames)) return;
    if (!channelsReadable(inputs, effect->numInputs)) return;
    withoutThrowing([&] { self->processDoubleReplacing(inputs, outputs, frames); },
                    [&] { silence(outputs, effect->numOutputs, frames); });
}

// Operations, each checked before the plug-in sees it.

std::intptr_t AudioEffect::dispatcher(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr, float opt) {
    switch (opcode) {
        case pluginOpen: open(); return 0;
        case pluginSetProgram:
            if (value >= 0 && value < effect_.numPrograms) setProgram(static_cast<std::int32_t>(value));
            return 0;
        case pluginGetProgram: return getProgram();
        case pluginSetProgramName: return takeProgramName(ptr);
        case pluginGetProgramName: return giveProgramName(ptr);
        case pluginGetParamLabel: return giveParameterText(index, ptr, &AudioEffect::getParameterLabel);
        case pluginGetParamDisplay: return giveParameterText(index, ptr, &AudioEffect::getParameterDisplay);
        case pluginGetParamName: return giveParameterText(index, ptr, &AudioEffect::getParameterName);
        case pluginSetSampleRate: takeSampleRate(opt); return 0;
        case pluginSetBlockSize: takeBlockSize(value); return 0;
        case pluginMainsChanged: value ? resume() : suspend(); return 0;
        case pluginEditGetRect: return editorRect(static_cast<ERect**>(ptr));
        case pluginEditOpen: return openEditor(ptr);
        case pluginEditClose: return closeEditor();
        case pluginEditIdle:
            if (editorOpen_) editor_->idle();
            return 0;
        case pluginIdentify: return identifyAnswer;
        case pluginGetChunk: return giveChunk(static_cast<void**>(ptr), index != 0);
        case pluginSetChunk: return takeChunk(ptr, value, index != 0);
        default: return 0;
    }
}

std::intptr_t AudioEffect::giveParameterText(std::int32_t index, void* ptr, ParameterText write) {
    giveText(ptr, parameterTextLength, [&](char* text) {
        if (parameterExists(index)) (this->*write)(index, text);
        return true;
    });
    return 0;
}

std::intptr_t AudioEffect::giveProgramName(void* ptr) {
    giveText(ptr, programNameLength, [this](char* text) {
        getProgramName(text);
        return true;
    });
    return 0;
}

std::intptr_t AudioEffect::takeProgramName(const void* ptr) {
    if (!ptr) return 0;
    char name[textBufferSize];
    copyText(name, static_cast<const char*>(ptr), textBufferSize - 1);
    setProgramName(name);
    return 0;
}

void AudioEffect::takeSampleRate(float rate) {
    if (std::isfinite(rate)) setSampleRate(rate);
}

void AudioEffect::takeBlockSize(std::intptr_t frames) {
    if (frames >= 1 && frames <= std::numeric_limits<std::int32_t>::max()) setBlockSize(static_cast<std::int32_t>(frames));
}

std::intptr_t AudioEffect::giveChunk(void** data, bool isPreset) {
    if (!data) return 0;
    void* chunk = nullptr;
    const std::int32_t size = getChunk(&chunk, isPreset);
    std::free(chunkOfHost_.exchange(chunk));
    *data = size > 0 ? chunk : nullptr;
    return chunk && size > 0 ? size : 0;
}

std::intptr_t AudioEffect::takeChunk(void* data, std::intptr_t size, bool isPreset) {
    if (!data || size < 0 || size > std::numeric_limits<std::int32_t>::max()) return 0;
    return setChunk(data, static_cast<std::int32_t>(size), isPreset);
}

std::intptr_t AudioEffect::editorRect(ERect** rect) {
    if (!rect) return 0;
    *rect = nullptr;
    return editor_ && editor_->getRect(rect);
}

std::intptr_t AudioEffect::openEditor(void* parent) {
    if (!editor_ || !parent) return 0;
    editorOpen_ = editor_->open(parent);
    return editorOpen_;
}

std::intptr_t AudioEffect::closeEditor() {
    if (editorOpen_) editor_->close();
    editorOpen_ = false;
    return 0;
}

void AudioEffect::closeAndDelete() {
    std::unique_ptr<AudioEffect> self(this);
    closeEditor();
    close();
}

}  // namespace vantoric
