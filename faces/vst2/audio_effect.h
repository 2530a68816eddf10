// The plug-in's side of the VST 2.4 boundary. A plug-in derives from AudioEffectX and overrides what it does; the
// entry points here check everything a host may get wrong before an operation is reached: null pointers, indices,
// sizes, order of calls. Text that a plug-in writes goes into a buffer of `textBufferSize` characters, and only as
// much of it as the interface grants goes on to the host.
#pragma once

#include <atomic>
#include <memory>

#include "faces/vst2/editor.h"
#include "faces/vst2/interface.h"

namespace vantoric {

// Size of every text buffer that an operation of AudioEffect or AudioEffectX is given, closing zero included.
constexpr std::size_t textBufferSize = 256;

// Copies at most `maxCharacters` bytes of `text`, which ends in a zero, and a closing zero: `destination` holds
// maxCharacters + 1. A character of several bytes (UTF-8) is copied whole or not at all.
void copyText(char* destination, const char* text, std::size_t maxCharacters);

class AudioEffect {
public:
    // `host` may be null: everything asked of it is then unanswered. Starts switched off, at 44100 Hz and 1024 frames,
    // without inputs, outputs or flags.
    AudioEffect(HostCallback host, std::int32_t programs, std::int32_t parameters);
    AudioEffect(const AudioEffect&) = delete;
    AudioEffect& operator=(const AudioEffect&) = delete;
    virtual ~AudioEffect();

    // The record handed to the host; valid as long as this object.
    AEffect* getAeffect() { return &effect_; }

    // One operation asked by the host: all but the last, pluginClose, which deletes this object. What an operation
    // throws is caught above. Unknown ones answer 0.
    virtual std::intptr_t dispatcher(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr, float opt);

    // First and last operation of a host, on its main thread. Neither is certain to come.
    virtual void open() {}
    virtual void close() {}
    // Switched off and on; any number of times in a row.
    virtual void suspend() {}
    virtual void resume() {}

    // Any finite number, also 0 and negative ones, switched on or off.
    virtual void setSampleRate(float rate) { sampleRate_.store(rate, std::memory_order_relaxed); }
    virtual float getSampleRate() { return sampleRate_.load(std::memory_order_relaxed); }
    // The largest block the host means to send (it may send larger ones); at least 1.
    virtual void setBlockSize(std::int32_t frames) { static_cast<void>(frames); }

    // One block, on the audio thread. `frames` is 0 or more, no output pointer is null; `inputs` may be null if there
    // are no inputs. Replaces what the outputs hold.
    virtual void processReplacing(float** inputs, float** outputs, std::int32_t frames) = 0;
    // The same in doubles; hosts call it if canDoubleReplacing was or setProcessPrecision agreed. The base clears
    // the outputs.
    virtual void processDoubleReplacing(double** inputs, double** outputs, std::int32_t frames);

    // From any thread; the host's calls come with an index that exists. Values may be anything, NaN included.
    virtual void setParameter(std::int32_t, float) {}
    virtual float getParameter(std::int32_t) { return 0.0f; }
    virtual void getParameterLabel(std::int32_t, char* text) { *text = 0; }
    virtual void getParameterDisplay(std::int32_t, char* text) { *text = 0; }
    virtual void getParameterName(std::int32_t, char* text) { *text = 0; }
    // Sets a parameter and tells the host, which may record it.
    virtual void setParameterAutomated(std::int32_t index, float value);

    // The host's calls come with a program that exists.
    virtual void setProgram(std::int32_t) {}
    virtual std::int32_t getProgram() { return 0; }
    // At most textBufferSize - 1 characters.
    virtual void setProgramName(const char*) {}
    virtual void getProgramName(char* text) { *text = 0; }

    // Stores in `data` a block made with std::malloc and returns its size in bytes; the caller owns it and releases it
    // with std::free. 0 or less for failure. What a host asked for is released here, at its next request or at the end.
    virtual std::int32_t getChunk(void** data, bool /*isPreset*/);
    // Loads `size` bytes (0 or more) at `data`, which is never null and stays the caller's. 0 for failure.
    virtual std::int32_t setChunk(void* data, std::int32_t size, bool isPreset);

    // The window, or null. Owned here; set it to null early if it must go before the plug-in's own members.
    void setEditor(std::unique_ptr<AEffEditor> editor);
    AEffEditor* getEditor() const { return editor_.get(); }
    // True from a successful open of the window to its close by the host.
    bool isEditorOpen() const { return editorOpen_; }

protected:
    void setUniqueID(std::int32_t id) { effect_.uniqueID = id; }
    void setVersion(std::int32_t version) { effect_.version = version; }
    void setNumInputs(std::int32_t count) { effect_.numInputs = count; }
    void setNumOutputs(std::int32_t count) { effect_.numOutputs = count; }
    void setInitialDelay(std::int32_t frames) { effect_.initialDelay = frames; }
    void canProcessReplacing() { setFlag(effectCanReplacing, true); }
    void canDoubleReplacing() { setFlag(effectCanDoubleReplacing, true); }
    void programsAreChunks() { setFlag(effectProgramChunks, true); }
    void setFlag(EffectFlag flag, bool on);
    bool hasFlag(EffectFlag flag) const { return (effect_.flags & flag) != 0; }

    // One operation asked of the host; 0 without a host.
    std::intptr_t callHost(std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0, void* ptr = nullptr,
                           float opt = 0.0f);
    bool parameterExists(std::int32_t index) const { return index >= 0 && index < effect_.numParams; }
    // Runs `write(buffer)` on a cleared text buffer and hands at most `maxCharacters` of it to the host's `ptr`.
    template <class Write>
    static bool giveText(void* ptr, std::size_t maxCharacters, Write write);

private:
    using ParameterText = void (AudioEffect::*)(std::int32_t, char*);

    static std::intptr_t dispatchEntry(AEffect*, std::int32_t, std::int32_t, std::intptr_t, void*, float);
    static void setParameterEntry(AEffect*, std::int32_t, float);
    static float getParameterEntry(AEffect*, std::int32_t);
    static void processEntry(AEffect*, float**, float**, std::int32_t);
    static void processReplacingEntry(AEffect*, float**, float**, std::int32_t);
    static void processDoubleReplacingEntry(AEffect*, double**, double**, std::int32_t);

    std::intptr_t giveParameterText(std::int32_t index, void* ptr, ParameterText write);
    std::intptr_t giveProgramName(void* ptr);
    std::intptr_t takeProgramName(const void* ptr);
    void takeSampleRate(float rate);
    void takeBlockSize(std::intptr_t frames);
    std::intptr_t giveChunk(void** data, bool isPreset);
    std::intptr_t takeChunk(void* data, std::intptr_t size, bool isPreset);
    std::intptr_t editorRect(ERect** rect);
    std::intptr_t openEditor(void* parent);
    std::intptr_t closeEditor();
    void closeAndDelete();

    AEffect effect_{};
    HostCallback host_;
    std::atomic<float> sampleRate_{44100.0f};
    std::unique_ptr<AEffEditor> editor_;
    std::atomic<bool> editorOpen_{false};
    std::atomic<void*> chunkOfHost_{nullptr};
};

template <class Write>
bool AudioEffect::giveText(void* ptr, std::size_t maxCharacters, Write write) {
    if (!ptr) return false;
    char text[textBufferSize] = {};
    const bool written = write(static_cast<char*>(text));
    copyText(static_cast<char*>(ptr), written ? text : "", maxCharacters);
    return written;
}

class AudioEffectX : public AudioEffect {
public:
    using AudioEffect::AudioEffect;

    std::intptr_t dispatcher(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr, float opt) override;

    // Events of the block that follows, on the audio thread. `events` holds at least 1 and no null pointer; offsets,
    // types and order may be anything.
    virtual std::int32_t processEvents(VstEvents*) { return 0; }

    // The index is that of a parameter.
    virtual bool canParameterBeAutomated(std::int32_t) { return true; }
    // Category -1 means none. Any index.
    virtual bool getProgramNameIndexed(std::int32_t /*category*/, std::int32_t /*index*/, char*) { return false; }
    // The record comes cleared, the index is that of an input or output. False if nothing is known.
    virtual bool getInputProperties(std::int32_t, VstPinProperties*) { return false; }
    virtual bool getOutputProperties(std::int32_t, VstPinProperties*) { return false; }

    // Programs of a MIDI channel (0 to 15). The record holds the index that the host asks for and else zeros; a name is
    // at most 63 characters. Returns how many programs the channel has; 0 leaves the record as it is.
    virtual std::int32_t getMidiProgramName(std::int32_t /*channel*/, MidiProgramName*) { return 0; }
    // The same for the program in force; returns its index, -1 for none.
    virtual std::int32_t getCurrentMidiProgram(std::int32_t /*channel*/, MidiProgramName*) { return -1; }
    // Whether names or the program in force have changed since the last question.
    virtual bool hasMidiProgramsChanged(std::int32_t /*channel*/) { return false; }

    virtual bool getEffectName(char*) { return false; }
    virtual bool getVendorString(char*) { return false; }
    virtual bool getProductString(char*) { return false; }
    virtual std::int32_t getVendorVersion() { return 0; }
    // 1 yes, 0 unknown, -1 no. `text` is never null.
    virtual std::int32_t canDo(const char*) { return 0; }
    virtual PlugCategory getPlugCategory();
    // Samples of sound after the last input: 0 unknown, 1 none.
    virtual std::int32_t getTailSize() { return 0; }
    // 0 single, 1 double; true if blocks of that kind can be processed.
    virtual bool setProcessPrecision(std::int32_t precision);
    virtual void startProcess() {}
    virtual void stopProcess() {}

    // Asks for MIDI events; hosts want to hear it at each resume.
    void wantEvents();
    // Time with the parts of `filter` (VstTimeInfoFlag) filled in, or null. On the audio thread, inside a block only;
    // the record stays the host's. Its numbers are the host's too, unchecked.
    VstTimeInfo* getTimeInfo(std::int32_t filter);
    // A user's gesture on a parameter begins and ends; GUI thread.
    bool beginEdit(std::int32_t index);
    bool endEdit(std::int32_t index);
    // The host is to read names and values anew.
    bool updateDisplay();
    // Asks for another size of the window; false if the host refused.
    bool sizeWindow(std::int32_t width, std::int32_t height);
    // At most 64 characters into `text`, which holds 65; "" and false without an answer.
    bool getHostVendorString(char* text);
    bool getHostProductString(char* text);
    std::int32_t getHostVendorVersion();
    // 1 yes, 0 unknown, -1 no.
    std::int32_t canHostDo(const char* text);

protected:
    void isSynth() { setFlag(effectIsSynth, true); }

private:
    using PinProperties = bool (AudioEffectX::*)(std::int32_t, VstPinProperties*);

    std::intptr_t takeEvents(VstEvents* events);
    std::intptr_t eventsWithoutNulls(const VstEvents& events);
    std::intptr_t giveMidiProgram(std::int32_t channel, void* ptr, bool current);
    std::intptr_t givePinProperties(std::int32_t index, std::int32_t count, void* ptr, PinProperties write);
    bool hostText(HostOpcode opcode, char* text);
};

}  // namespace vantoric
