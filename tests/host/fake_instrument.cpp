// A small instrument behind the real boundary: a sine for each held key. It shows that the boundary holds against
// the hostile host, and that the host's tests can be passed.
#include <array>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "faces/vst2/entry.h"

namespace vantoric {

namespace {

constexpr int parameterCount = 16;
constexpr char chunkMark[4] = {'F', 'a', 'k', '1'};
constexpr double twoPi = 6.283185307179586;

struct Chunk {
    char mark[4];
    float values[parameterCount];
    char name[28];
};

class FakePlugin final : public AudioEffectX {
public:
    explicit FakePlugin(HostCallback host) : AudioEffectX(host, 1, parameterCount) {
        setNumOutputs(2);
        setUniqueID(fourCharacters('F', 'k', 'S', 'y'));
        setVersion(100);
        canProcessReplacing();
        programsAreChunks();
        isSynth();
        for (auto& value : values_) value = 0.5f;
    }

    bool setProcessPrecision(std::int32_t precision) override { return precision == 0 || precision == 1; }
    void suspend() override { clear(); }
    void resume() override { wantEvents(); }

    void setSampleRate(float rate) override {
        AudioEffectX::setSampleRate(rate);
        rate_ = rate > 1.0f ? rate : 0.0f;
    }

    void processReplacing(float**, float** outputs, std::int32_t frames) override { render(outputs, frames); }
    void processDoubleReplacing(double**, double** outputs, std::int32_t frames) override { render(outputs, frames); }

    void setParameter(std::int32_t index, float value) override {
        values_[static_cast<std::size_t>(index)] = value > 0.0f ? (value < 1.0f ? value : 1.0f) : 0.0f;
    }
    float getParameter(std::int32_t index) override { return values_[static_cast<std::size_t>(index)]; }
    void getParameterName(std::int32_t index, char* text) override {
        std::snprintf(text, textBufferSize, index == 0 ? "Volume" : "Spare%d", static_cast<int>(index));
    }
    void getParameterDisplay(std::int32_t index, char* text) override {
        std::snprintf(text, textBufferSize, "%.3f", static_cast<double>(getParameter(index)));
    }

    void setProgramName(const char* name) override { copyText(name_, name, sizeof name_ - 1); }
    void getProgramName(char* text) override { copyText(text, name_, sizeof name_ - 1); }
    bool getProgramNameIndexed(std::int32_t, std::int32_t index, char* text) override {
        if (index != 0) return false;
        getProgramName(text);
        return true;
    }

    std::int32_t getChunk(void** data, bool) override {
        auto* const chunk = static_cast<Chunk*>(std::calloc(1, sizeof(Chunk)));
        if (!chunk) return 0;
        std::memcpy(chunk->mark, chunkMark, sizeof chunkMark);
        for (int i = 0; i < parameterCount; ++i) chunk->values[i] = getParameter(i);
        std::memcpy(chunk->name, name_, sizeof name_);
        *data = chunk;
        return sizeof(Chunk);
    }

    std::int32_t setChunk(void* data, std::int32_t size, bool) override {
        Chunk chunk;
        if (size != sizeof chunk) return 0;
        std::memcpy(&chunk, data, sizeof chunk);
        if (std::memcmp(chunk.mark, chunkMark, sizeof chunkMark) != 0) return 0;
        for (int i = 0; i < parameterCount; ++i) setParameter(i, chunk.values[i]);
        chunk.name[sizeof chunk.name - 1] = 0;
        copyText(name_, chunk.name, sizeof name_ - 1);
        return 1;
    }

    std::int32_t processEvents(VstEvents* events) override {
        VstEvent* const* const list = events->events;
        for (std::int32_t i = 0; i < events->numEvents; ++i) {
            if (list[i]->type != midiEventType) continue;
            VstMidiEvent event;
            std::memcpy(&event, list[i], sizeof event);
            waiting_[waitingCount_ < waiting_.size() ? waitingCount_++ : 0] = event;
        }
        return 1;
    }

    bool getOutputProperties(std::int32_t index, VstPinProperties* properties) override {
        std::snprintf(properties->label, sizeof properties->label, "Fake Out %d", static_cast<int>(index) + 1);
        properties->flags = pinIsActive | pinIsStereo;
        return true;
    }
    bool getEffectName(char* text) override { return give(text, "Fake Sine"); }
    bool getProductString(char* text) override { return give(text, "Fake Sine"); }
    bool getVendorString(char* text) override { return give(text, "fake.example"); }
    std::int32_t getVendorVersion() override { return 100; }
    std::int32_t canDo(const char* text) override {
        return std::strcmp(text, "receiveVstEvents") == 0 || std::strcmp(text, "receiveVstMidiEvent") == 0 ? 1 : -1;
    }

private:
    static bool give(char* text, const char* name) {
        copyText(text, name, textBufferSize - 1);
        return true;
    }

    void clear() {
        held_.fill(false);
        phase_.fill(0.0);
        waitingCount_ = 0;
    }

    template <class Sample>
    void render(Sample** outputs, std::int32_t frames) {
        for (std::int32_t i = 0; i < frames; ++i) {
            takeEventsUpTo(i);
            const auto sample = static_cast<float>(nextSample());
            outputs[0][i] = outputs[1][i] = sample;
        }
        for (std::size_t i = 0; i < waitingCount_; ++i) {
            std::int32_t& delta = waiting_[i].deltaFrames;
            delta = delta > frames ? delta - frames : 0;
        }
    }

    void takeEventsUpTo(std::int32_t frame) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < waitingCount_; ++i) {
            if (waiting_[i].deltaFrames > frame)
                waiting_[kept++] = waiting_[i];
            else
                take(waiting_[i]);
        }
        waitingCount_ = kept;
    }

    void take(const VstMidiEvent& event) {
        const unsigned status = event.midiData[0] & 0xF0u;
        const std::size_t key = event.midiData[1] & 0x7Fu;
        if (status == 0x90 && event.midiData[2] > 0) held_[key] = true;
        if (status == 0x80 || (status == 0x90 && event.midiData[2] == 0)) held_[key] = false;
        if (status == 0xB0 && key == 123) held_.fill(false);
    }

    double nextSample() {
        if (rate_ <= 0.0) return 0.0;
        double sum = 0.0;
        for (std::size_t key = 0; key < held_.size(); ++key) {
            if (!held_[key]) continue;
            sum += std::sin(twoPi * phase_[key]);
            phase_[key] += 440.0 * std::exp2((static_cast<double>(key) - 69.0) / 12.0) / rate_;
            phase_[key] -= std::floor(phase_[key]);
        }
        return 0.2 * sum * static_cast<double>(values_[0].load(std::memory_order_relaxed));
    }

    std::array<std::atomic<float>, parameterCount> values_;
    char name_[28] = "Sine";
    std::array<bool, 128> held_{};
    std::array<double, 128> phase_{};
    std::array<VstMidiEvent, 256> waiting_{};
    std::size_t waitingCount_ = 0;
    std::atomic<double> rate_{44100.0};
};

}  // namespace

AudioEffect* createEffectInstance(HostCallback host) { return new FakePlugin(host); }

}  // namespace vantoric
