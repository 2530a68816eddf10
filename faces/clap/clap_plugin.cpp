#include "faces/clap/clap_plugin.h"

#include <clap/ext/audio-ports.h>
#include <clap/ext/gui.h>
#include <clap/ext/latency.h>
#include <clap/ext/note-ports.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/ext/timer-support.h>
#include <clap/plugin-features.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "base/numbers.h"
#include "base/text.h"
#include "base/version.h"
#include "faces/common/block_events.h"
#include "faces/common/face_window.h"
#include "faces/common/host_calls.h"
#include "faces/common/host_news.h"
#include "faces/common/host_parameters.h"
#include "faces/common/identity.h"

namespace vantoric::clap_face {

namespace {

namespace hp = host_parameter;

#ifdef _WIN32
constexpr const char* windowApi = CLAP_WINDOW_API_WIN32;
#else
constexpr const char* windowApi = CLAP_WINDOW_API_X11;
#endif

void writeText(char* to, std::size_t size, const std::string& text) {
    if (to == nullptr || size == 0) return;
    const std::string_view cut = cutText(text, size - 1);
    cut.copy(to, cut.size());
    to[cut.size()] = 0;
}

// Asks a host without timers for a turn on its main thread, over and over. Throws if there is no thread to be had.
class Pulse {
public:
    explicit Pulse(const clap_host_t* host)
        : thread_([host](const std::stop_token& ending) {
              while (!ending.stop_requested()) {
                  host->request_callback(host);
                  std::this_thread::sleep_for(std::chrono::milliseconds(idlePeriod));
              }
          }) {}

private:
    std::jthread thread_;
};

// A note of the host's, from its begin until no voice sounds its key any more.
struct HostNote {
    enum class State : std::uint8_t { none, down, released } state = State::none;
    std::int16_t port = 0;
    std::int32_t id = -1;
};

// One whose key another note has taken: no event names it any more.
struct DisplacedNote {
    HostNote note;
    std::size_t place;  // as of its key and channel
};

class Plugin final : private HostPort {
public:
    explicit Plugin(const clap_host_t* host) : host_(host), plugged_(*this), told_(instrument_.parameters()) {
        displaced_.reserve(BlockEvents::most);  // no block brings more
    }
    ~Plugin() {
        stopIdle();
        window_.reset();
    }

    const clap_plugin_t* record() const { return &record_; }

private:
    static Plugin& of(const clap_plugin_t* plugin) { return *static_cast<Plugin*>(plugin->plugin_data); }

    // ---- what the window and the library ask of the host
    void editBegun(int index) override { gesture(index, &Gestures::begin); }
    void editEnded(int index) override { gesture(index, &Gestures::end); }
    void gesture(int index, void (Gestures::*what)(int)) {
        (gestures_.*what)(index);
        askFlush();
    }
    void parameterEdited(int, float) override { askFlush(); }
    void patchChanged() override {
        isPatchNew_.store(true, std::memory_order_release);
        host_->request_callback(host_);
    }
    void latencyChanged(int) override {}  // none, ever
    bool sizeWanted(int width, int height) override {
        return hostGui_ != nullptr &&
               hostGui_->request_resize(host_, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
    }
    void askFlush() {
        if (hostParams_ != nullptr) hostParams_->request_flush(host_);
    }

    // ---- life
    bool init();
    void activate(double rate);
    void reset();
    void onMainThread();
    void idle();

    // ---- the audio thread
    clap_process_status process(const clap_process_t& block) noexcept;
    clap_process_status play(const clap_process_t& block);
    void collect(const clap_input_events_t* events);
    void collect(const clap_event_header_t& event);
    void beginNote(const clap_event_note_t& note);
    void releaseNotes(const clap_event_note_t& note);
    void releaseNote(int channel, int key, std::uint32_t frame, double velocity);
    void express(const clap_event_note_expression_t& expression);
    void displace(std::size_t place, std::int32_t newId);
    static void tellEnd(const clap_output_events_t* events, const HostNote& note, std::size_t place, std::uint32_t frame);
    void tellEnds(const clap_output_events_t* events, std::uint32_t lastFrame);
    static std::size_t placeOf(int channel, int key) { return static_cast<std::size_t>(channel * keys + key); }
    HostNote& noteAt(int channel, int key) { return notes_[placeOf(channel, key)]; }
    void accept(const clap_input_events_t* events);
    void flush(const clap_input_events_t* in, const clap_output_events_t* out);
    void tellHost(const clap_output_events_t* events);
    bool tellValue(const clap_output_events_t* events, int index, float value, std::uint32_t flags);

    // ---- the main thread
    bool parameterInfo(std::uint32_t place, clap_param_info_t& info) const;
    bool save(const clap_ostream_t* stream);
    bool load(const clap_istream_t* stream);
    bool createWindow(const char* api, bool isFloating);
    void destroyWindow();
    void startIdle();
    void stopIdle();
    bool showWindow(bool isShown);

    static const void* extension(const clap_plugin_t* plugin, const char* id);
    static const clap_plugin_audio_ports_t audioPorts;
    static const clap_plugin_note_ports_t notePorts;
    static const clap_plugin_params_t params;
    static const clap_plugin_state_t state;
    static const clap_plugin_latency_t latency;
    static const clap_plugin_gui_t gui;
    static const clap_plugin_timer_support_t timerSupport;

    static Transport transportOf(const clap_event_transport_t* told);
    static bool isParameter(clap_id id) { return id < parameterCount; }
    static constexpr int channels = 16, keys = 128;

    const clap_host_t* const host_;
    const clap_host_params_t* hostParams_ = nullptr;
    const clap_host_gui_t* hostGui_ = nullptr;
    const clap_host_state_t* hostState_ = nullptr;
    const clap_host_timer_support_t* hostTimer_ = nullptr;
    std::optional<Pulse> pulse_;  // where the host has no timers
    clap_id timer_ = CLAP_INVALID_ID;
    Gestures gestures_;
    std::atomic<bool> isPatchNew_{false};
    PluggedInstrument plugged_;
    Instrument& instrument_{plugged_.instrument()};
    ToldValues told_;  // in process and flush, of which the host runs one at a time
    BlockEvents events_;
    std::array<HostNote, channels * keys> notes_{};
    bool isAnyReleased_ = false;            // of the notes
    std::vector<DisplacedNote> displaced_;  // until the block's end; never beyond what is reserved
    std::unique_ptr<FaceWindow> window_;
    clap_plugin_t record_ = {
        &descriptor(),
        this,
        [](const clap_plugin_t* p) { return guarded([&] { return of(p).init(); }, false); },
        [](const clap_plugin_t* p) { delete &of(p); },
        [](const clap_plugin_t* p, double rate, std::uint32_t, std::uint32_t) {
            return isSampleRate(rate) && guarded([&] { return of(p).activate(rate), true; }, false);
        },
        [](const clap_plugin_t* p) { guarded([&] { return of(p).instrument_.stop(), true; }, false); },
        [](const clap_plugin_t*) { return true; },
        [](const clap_plugin_t*) {},
        [](const clap_plugin_t* p) { guarded([&] { return of(p).reset(), true; }, false); },
        [](const clap_plugin_t* p, const clap_process_t* block) -> clap_process_status {
            return block != nullptr ? of(p).process(*block) : static_cast<clap_process_status>(CLAP_PROCESS_ERROR);
        },
        extension,
        [](const clap_plugin_t* p) { guarded([&] { return of(p).onMainThread(), true; }, false); },
    };
};

// ---- life ----------------------------------------------------------------------------------------------------

bool Plugin::init() {
    const auto ask = [this](const char* id) { return host_->get_extension(host_, id); };
    hostParams_ = static_cast<const clap_host_params_t*>(ask(CLAP_EXT_PARAMS));
    hostGui_ = static_cast<const clap_host_gui_t*>(ask(CLAP_EXT_GUI));
    hostState_ = static_cast<const clap_host_state_t*>(ask(CLAP_EXT_STATE));
    hostTimer_ = static_cast<const clap_host_timer_support_t*>(ask(CLAP_EXT_TIMER_SUPPORT));
    window_ = makeFaceWindow(plugged_, host_->name != nullptr ? host_->name : "");
    return true;
}

void Plugin::activate(double rate) {
    instrument_.parameters().clearModulation();
    instrument_.setSampleRate(static_cast<float>(rate));
    instrument_.start();
}

// On the audio thread, between blocks.
void Plugin::reset() {
    instrument_.parameters().clearModulation();
    events_.clear();
    notes_.fill({});
    displaced_.clear();
    instrument_.silenceNextBlock();
}

void Plugin::onMainThread() {
    if (isPatchNew_.exchange(false, std::memory_order_acq_rel)) {
        if (hostParams_ != nullptr) hostParams_->rescan(host_, CLAP_PARAM_RESCAN_VALUES | CLAP_PARAM_RESCAN_TEXT);
        if (hostState_ != nullptr) hostState_->mark_dirty(host_);
    }
    if (pulse_) idle();
}

void Plugin::idle() {
    if (window_) window_->idle();
}

// ---- the audio thread ------------------------------------------------------------------------------------------

Transport Plugin::transportOf(const clap_event_transport_t* told) {
    Transport transport;
    if (told == nullptr) return transport;
    transport.known = true;
    if ((told->flags & CLAP_TRANSPORT_HAS_TEMPO) != 0) transport.tempo = told->tempo;
    if ((told->flags & CLAP_TRANSPORT_HAS_BEATS_TIMELINE) != 0)
        transport.ppqPos = static_cast<double>(told->song_pos_beats) / static_cast<double>(CLAP_BEATTIME_FACTOR);
    return transport;
}

// A host throws away what comes with an error. One that does not hears silence.
clap_process_status Plugin::process(const clap_process_t& block) noexcept {
    constexpr clap_process_status failed = CLAP_PROCESS_ERROR;
    const clap_process_status status = guarded([&] { return play(block); }, failed);
    if (status == failed && block.audio_outputs_count > 0 && block.audio_outputs != nullptr)
        silence(block.audio_outputs[0].data32, block.audio_outputs[0].channel_count, block.frames_count);
    return status;
}

clap_process_status Plugin::play(const clap_process_t& block) {
    const bool hasOutput = block.audio_outputs_count > 0 && block.audio_outputs != nullptr &&
                           block.audio_outputs[0].data32 != nullptr && block.audio_outputs[0].channel_count > 0;
    float* left = hasOutput ? block.audio_outputs[0].data32[0] : nullptr;
    float* right = hasOutput && block.audio_outputs[0].channel_count > 1 ? block.audio_outputs[0].data32[1] : nullptr;
    collect(block.in_events);
    constexpr std::uint32_t most = 1u << 30;
    events_.play(instrument_, left, right, static_cast<int>(std::min(block.frames_count, most)), transportOf(block.transport));
    if (hasOutput) block.audio_outputs[0].constant_mask = 0;
    accept(block.in_events);
    tellHost(block.out_events);
    tellEnds(block.out_events, std::max(block.frames_count, 1u) - 1);
    return CLAP_PROCESS_CONTINUE;  // arpeggiators and tails go on without a note
}

void Plugin::collect(const clap_input_events_t* events) {
    const std::uint32_t count = events != nullptr ? events->size(events) : 0;
    for (std::uint32_t i = 0; i < count; ++i)
        if (const clap_event_header_t* event = events->get(events, i)) collect(*event);
}

// No parameter has a value for each note, and none offers it: what is meant for one note is not for the patch.
template <class ParameterEvent>
bool isOfOneNote(const ParameterEvent& event) {
    return event.note_id >= 0 || event.key >= 0;
}

void Plugin::collect(const clap_event_header_t& event) {
    if (event.space_id != CLAP_CORE_EVENT_SPACE_ID) return;
    switch (event.type) {
        case CLAP_EVENT_NOTE_ON: return beginNote(reinterpret_cast<const clap_event_note_t&>(event));
        case CLAP_EVENT_NOTE_OFF:
        case CLAP_EVENT_NOTE_CHOKE: return releaseNotes(reinterpret_cast<const clap_event_note_t&>(event));
        case CLAP_EVENT_NOTE_EXPRESSION: return express(reinterpret_cast<const clap_event_note_expression_t&>(event));
        case CLAP_EVENT_TRANSPORT:
            return events_.addTransport(event.time, transportOf(&reinterpret_cast<const clap_event_transport_t&>(event)));
        case CLAP_EVENT_MIDI: {
            const auto& midi = reinterpret_cast<const clap_event_midi_t&>(event);
            return events_.addMidi(event.time, midi.data[0], midi.data[1], midi.data[2]);
        }
        case CLAP_EVENT_PARAM_VALUE: {
            const auto& value = reinterpret_cast<const clap_event_param_value_t&>(event);
            if (!isParameter(value.param_id) || isOfOneNote(value)) return;
            const int index = static_cast<int>(value.param_id);
            return events_.addParameter(event.time, index, hp::storedFor(instrument_, index, value.value));
        }
        case CLAP_EVENT_PARAM_MOD: {
            const auto& mod = reinterpret_cast<const clap_event_param_mod_t&>(event);
            const int index = static_cast<int>(mod.param_id);
            if (isParameter(mod.param_id) && !isOfOneNote(mod) && hp::isModulatable(index))
                events_.addModulation(event.time, index, static_cast<float>(mod.amount));
            return;
        }
        default: return;
    }
}

void Plugin::beginNote(const clap_event_note_t& note) {
    if (note.key < 0 || note.key >= keys) return;
    constexpr std::uint8_t on = 0x90;
    const int channel = clampTo<int>(note.channel, 0, channels - 1);
    displace(placeOf(channel, note.key), note.note_id);
    noteAt(channel, note.key) = {HostNote::State::down, note.port_index, note.note_id};
    events_.addMidi(note.header.time, static_cast<std::uint8_t>(on | channel), static_cast<std::uint8_t>(note.key),
                    std::max<std::uint8_t>(midiByte(note.velocity), 1));
}

// The end of a note without a number, or of the same, is that of the one which takes its key.
void Plugin::displace(std::size_t place, std::int32_t newId) {
    const HostNote& earlier = notes_[place];
    if (earlier.state == HostNote::State::none || earlier.id < 0 || earlier.id == newId) return;
    if (displaced_.size() < displaced_.capacity()) displaced_.push_back({earlier, place});
}

void Plugin::releaseNote(int channel, int key, std::uint32_t frame, double velocity) {
    constexpr std::uint8_t off = 0x80;
    if (HostNote& note = noteAt(channel, key); note.state == HostNote::State::down) {
        note.state = HostNote::State::released;
        isAnyReleased_ = true;
    }
    events_.addMidi(frame, static_cast<std::uint8_t>(off | channel), static_cast<std::uint8_t>(key), midiByte(velocity));
}

// Number, channel and key -1 stand for all. A note that began as MIDI, or that nobody began, is ended by its channel and key.
void Plugin::releaseNotes(const clap_event_note_t& named) {
    bool isFound = false;
    for (int channel = 0; channel < channels; ++channel) {
        if (named.channel >= 0 && named.channel != channel) continue;
        for (int key = std::max<int>(named.key, 0); key < (named.key < 0 ? keys : std::min(named.key + 1, keys)); ++key) {
            const HostNote& note = noteAt(channel, key);
            if (note.state != HostNote::State::down || (named.note_id >= 0 && note.id >= 0 && named.note_id != note.id)) continue;
            releaseNote(channel, key, named.header.time, named.velocity);
            isFound = true;
        }
    }
    constexpr std::uint8_t controller = 0xb0, allNotesOff = 123;
    const int channel = clampTo<int>(named.channel, 0, channels - 1);
    if (named.key >= 0 && named.key < keys) {
        const bool isAnotherDown = named.note_id >= 0 && noteAt(channel, named.key).state == HostNote::State::down;
        if (!isFound && !isAnotherDown) releaseNote(channel, named.key, named.header.time, named.velocity);
    } else if (named.key == -1 && named.note_id < 0) {
        if (named.channel < 0) return events_.addMidi(named.header.time, controller, allNotesOff, 0);
        for (int key = 0; key < keys; ++key) releaseNote(channel, key, named.header.time, named.velocity);
    }
}

// The pressure of a key goes on as the MIDI message that it is. The others have no place in the instrument, whose voices share
// one tuning wheel, one volume and one place a layer.
void Plugin::express(const clap_event_note_expression_t& expression) {
    if (expression.expression_id != CLAP_NOTE_EXPRESSION_PRESSURE || expression.key < 0 || expression.key >= keys) return;
    constexpr std::uint8_t keyPressure = 0xa0;
    const int channel = clampTo<int>(expression.channel, 0, channels - 1);
    events_.addMidi(expression.header.time, static_cast<std::uint8_t>(keyPressure | channel),
                    static_cast<std::uint8_t>(expression.key), midiByte(expression.value));
}

void Plugin::tellEnd(const clap_output_events_t* events, const HostNote& note, std::size_t place, std::uint32_t frame) {
    clap_event_note_t end{};
    end.header = {sizeof end, frame, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_NOTE_END, 0};
    end.note_id = note.id;
    end.port_index = note.port;
    end.channel = static_cast<std::int16_t>(place / keys);
    end.key = static_cast<std::int16_t>(place % keys);
    events->try_push(events, &end.header);
}

// A note is over once no voice sounds its key, or another has taken it. What arpeggiators make of it has keys of its own, and
// is not waited for.
void Plugin::tellEnds(const clap_output_events_t* events, std::uint32_t lastFrame) {
    if (events == nullptr) return;
    for (const DisplacedNote& displaced : displaced_) tellEnd(events, displaced.note, displaced.place, lastFrame);
    displaced_.clear();
    if (!isAnyReleased_) return;
    const std::bitset<128> sounding = instrument_.keysSounding();
    isAnyReleased_ = false;
    for (std::size_t place = 0; place < notes_.size(); ++place) {
        if (notes_[place].state != HostNote::State::released) continue;
        if (sounding.test(place % keys)) {
            isAnyReleased_ = true;
        } else {
            tellEnd(events, notes_[place], place, lastFrame);
            notes_[place] = {};
        }
    }
}

// What the host has set it knows.
void Plugin::accept(const clap_input_events_t* events) {
    const std::uint32_t count = events != nullptr ? events->size(events) : 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        const clap_event_header_t* event = events->get(events, i);
        if (event == nullptr || event->space_id != CLAP_CORE_EVENT_SPACE_ID || event->type != CLAP_EVENT_PARAM_VALUE) continue;
        const auto& value = *reinterpret_cast<const clap_event_param_value_t*>(event);
        if (isParameter(value.param_id) && !isOfOneNote(value)) told_.accept(static_cast<int>(value.param_id));
    }
}

void Plugin::flush(const clap_input_events_t* in, const clap_output_events_t* out) {
    const std::uint32_t count = in != nullptr ? in->size(in) : 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        const clap_event_header_t* event = in->get(in, i);
        if (event == nullptr || event->space_id != CLAP_CORE_EVENT_SPACE_ID) continue;
        if (event->type == CLAP_EVENT_PARAM_VALUE) {
            const auto& value = *reinterpret_cast<const clap_event_param_value_t*>(event);
            const int index = static_cast<int>(value.param_id);
            if (isParameter(value.param_id) && !isOfOneNote(value))
                instrument_.setParameter(index, hp::storedFor(instrument_, index, value.value));
        } else if (event->type == CLAP_EVENT_PARAM_MOD) {
            const auto& mod = *reinterpret_cast<const clap_event_param_mod_t*>(event);
            const int index = static_cast<int>(mod.param_id);
            if (isParameter(mod.param_id) && !isOfOneNote(mod) && hp::isModulatable(index))
                instrument_.parameters().setModulation(index, static_cast<float>(mod.amount));
        }
    }
    accept(in);
    tellHost(out);
}

bool Plugin::tellValue(const clap_output_events_t* events, int index, float value, std::uint32_t flags) {
    clap_event_param_value_t event{};
    event.header = {sizeof event, 0, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_PARAM_VALUE, flags};
    event.param_id = static_cast<clap_id>(index);
    event.note_id = event.port_index = event.channel = event.key = -1;
    event.value = hp::plain(index, value);
    return events->try_push(events, &event.header);
}

// Hands in the window are told with their gesture. What learnt controllers move is told too, but not to be recorded: the
// controller is.
void Plugin::tellHost(const clap_output_events_t* events) {
    if (events == nullptr) return;
    const auto tellGesture = [&](int index, bool isBegin) {
        clap_event_param_gesture_t event{};
        const auto type = static_cast<std::uint16_t>(isBegin ? CLAP_EVENT_PARAM_GESTURE_BEGIN : CLAP_EVENT_PARAM_GESTURE_END);
        event.header = {sizeof event, 0, CLAP_CORE_EVENT_SPACE_ID, type, CLAP_EVENT_IS_LIVE};
        event.param_id = static_cast<clap_id>(index);
        events->try_push(events, &event.header);
    };
    const auto tellMove = [&](int index) {
        if (tellValue(events, index, instrument_.parameters().getParameter(index), CLAP_EVENT_IS_LIVE)) told_.accept(index);
    };
    gestures_.take(tellGesture, tellMove);
    told_.take(ToldValues::Patches::known, [&](int index, float value) {
        const std::uint32_t flags = gestures_.isHeld(index) ? CLAP_EVENT_IS_LIVE : CLAP_EVENT_IS_LIVE | CLAP_EVENT_DONT_RECORD;
        return tellValue(events, index, value, flags);
    });
}

// ---- ports -------------------------------------------------------------------------------------------------------

const clap_plugin_audio_ports_t Plugin::audioPorts = {
    [](const clap_plugin_t*, bool isInput) { return std::uint32_t{isInput ? 0u : 1u}; },
    [](const clap_plugin_t*, std::uint32_t index, bool isInput, clap_audio_port_info_t* info) {
        if (isInput || index != 0 || info == nullptr) return false;
        *info = {};
        writeText(info->name, sizeof info->name, "Out");
        info->flags = CLAP_AUDIO_PORT_IS_MAIN;
        info->channel_count = 2;
        info->port_type = CLAP_PORT_STEREO;
        info->in_place_pair = CLAP_INVALID_ID;
        return true;
    }};

const clap_plugin_note_ports_t Plugin::notePorts = {
    [](const clap_plugin_t*, bool isInput) { return std::uint32_t{isInput ? 1u : 0u}; },
    [](const clap_plugin_t*, std::uint32_t index, bool isInput, clap_note_port_info_t* info) {
        if (!isInput || index != 0 || info == nullptr) return false;
        *info = {};
        info->supported_dialects = CLAP_NOTE_DIALECT_MIDI | CLAP_NOTE_DIALECT_CLAP;
        info->preferred_dialect = CLAP_NOTE_DIALECT_MIDI;  // controllers, wheels and programs come as they are
        writeText(info->name, sizeof info->name, "Notes");
        return true;
    }};

const clap_plugin_latency_t Plugin::latency = {[](const clap_plugin_t*) { return std::uint32_t{0}; }};

// ---- parameters --------------------------------------------------------------------------------------------------

bool Plugin::parameterInfo(std::uint32_t place, clap_param_info_t& info) const {
    if (!isParameter(place)) return false;
    const int index = static_cast<int>(place);
    info = {};
    info.id = place;
    if (hp::isAutomatable(index)) info.flags |= CLAP_PARAM_IS_AUTOMATABLE;
    if (hp::isModulatable(index)) info.flags |= CLAP_PARAM_IS_MODULATABLE;
    if (hp::steps(index) > 0) info.flags |= CLAP_PARAM_IS_STEPPED;
    if (!hp::isShown(index)) info.flags |= CLAP_PARAM_IS_HIDDEN;
    writeText(info.name, sizeof info.name, hp::name(index));
    writeText(info.module, sizeof info.module, hp::group(index));
    info.max_value = hp::largest(index);
    info.default_value = hp::defaultValue(index);
    return true;
}

const clap_plugin_params_t Plugin::params = {
    [](const clap_plugin_t*) { return std::uint32_t{parameterCount}; },
    [](const clap_plugin_t* p, std::uint32_t place, clap_param_info_t* info) {
        return info != nullptr && guarded([&] { return of(p).parameterInfo(place, *info); }, false);
    },
    [](const clap_plugin_t* p, clap_id id, double* value) {
        if (!isParameter(id) || value == nullptr) return false;
        *value = hp::plain(static_cast<int>(id), of(p).instrument_.parameters().getParameter(static_cast<int>(id)));
        return true;
    },
    [](const clap_plugin_t* p, clap_id id, double value, char* text, std::uint32_t size) {
        if (!isParameter(id) || text == nullptr || size == 0) return false;
        return guarded(
            [&] {
                const int index = static_cast<int>(id);
                const std::string unit = hp::unit(of(p).instrument_, index);
                writeText(text, size, hp::text(of(p).instrument_, index, value) + (unit.empty() ? "" : " " + unit));
                return true;
            },
            false);
    },
    [](const clap_plugin_t* p, clap_id id, const char* text, double* value) {
        if (!isParameter(id) || text == nullptr || value == nullptr) return false;
        return guarded(
            [&] {
                const auto meant = hp::valueOfText(of(p).instrument_, static_cast<int>(id), text);
                if (meant) *value = *meant;
                return meant.has_value();
            },
            false);
    },
    [](const clap_plugin_t* p, const clap_input_events_t* in, const clap_output_events_t* out) {
        guarded([&] { return of(p).flush(in, out), true; }, false);
    }};

// ---- state -------------------------------------------------------------------------------------------------------

bool Plugin::save(const clap_ostream_t* stream) {
    return writeState(plugged_.patch(),
                      [stream](const void* from, std::size_t size) { return stream->write(stream, from, size); });
}

bool Plugin::load(const clap_istream_t* stream) {
    const auto bytes = readState([stream](void* to, std::size_t size) { return stream->read(stream, to, size); });
    if (!bytes || !plugged_.restore(bytes->data(), bytes->size())) return false;
    if (hostParams_ != nullptr) hostParams_->rescan(host_, CLAP_PARAM_RESCAN_VALUES | CLAP_PARAM_RESCAN_TEXT);
    return true;
}

const clap_plugin_state_t Plugin::state = {[](const clap_plugin_t* p, const clap_ostream_t* stream) {
                                               return stream != nullptr && guarded([&] { return of(p).save(stream); }, false);
                                           },
                                           [](const clap_plugin_t* p, const clap_istream_t* stream) {
                                               return stream != nullptr && guarded([&] { return of(p).load(stream); }, false);
                                           }};

// ---- the window --------------------------------------------------------------------------------------------------

bool isWindowApi(const char* api, bool isFloating) { return api != nullptr && !isFloating && std::strcmp(api, windowApi) == 0; }

bool Plugin::createWindow(const char* api, bool isFloating) {
    if (!window_ || !isWindowApi(api, isFloating)) return false;
    return guarded([this] { return startIdle(), true; }, false);
}

void Plugin::startIdle() {
    if (timer_ != CLAP_INVALID_ID || pulse_) return;
    if (hostTimer_ != nullptr && hostTimer_->register_timer(host_, idlePeriod, &timer_)) return;
    timer_ = CLAP_INVALID_ID;
    pulse_.emplace(host_);
}

void Plugin::stopIdle() {
    if (hostTimer_ != nullptr && timer_ != CLAP_INVALID_ID) hostTimer_->unregister_timer(host_, timer_);
    timer_ = CLAP_INVALID_ID;
    pulse_.reset();
}

void Plugin::destroyWindow() {
    stopIdle();
    if (window_) window_->close();
}

bool Plugin::showWindow(bool isShown) {
    if (!window_ || !window_->isOpen()) return false;
    window_->show(isShown);
    return true;
}

// The window has the sizes of its menu: it asks the host for one, and the host's hand cannot pull it to another.
const clap_plugin_gui_t Plugin::gui = {
    [](const clap_plugin_t* p, const char* api, bool isFloating) { return of(p).window_ && isWindowApi(api, isFloating); },
    [](const clap_plugin_t*, const char** api, bool* isFloating) {
        if (api == nullptr || isFloating == nullptr) return false;
        *api = windowApi;
        *isFloating = false;
        return true;
    },
    [](const clap_plugin_t* p, const char* api, bool isFloating) { return of(p).createWindow(api, isFloating); },
    [](const clap_plugin_t* p) { of(p).destroyWindow(); },
    [](const clap_plugin_t*, double) { return false; },
    [](const clap_plugin_t* p, std::uint32_t* width, std::uint32_t* height) {
        if (!of(p).window_ || width == nullptr || height == nullptr) return false;
        const FaceWindow::Size size = of(p).window_->size();
        *width = static_cast<std::uint32_t>(size.width);
        *height = static_cast<std::uint32_t>(size.height);
        return true;
    },
    [](const clap_plugin_t*) { return false; },
    [](const clap_plugin_t*, clap_gui_resize_hints_t*) { return false; },
    [](const clap_plugin_t* p, std::uint32_t* width, std::uint32_t* height) { return gui.get_size(p, width, height); },
    [](const clap_plugin_t* p, std::uint32_t width, std::uint32_t height) {
        std::uint32_t ownWidth = 0, ownHeight = 0;
        return gui.get_size(p, &ownWidth, &ownHeight) && width == ownWidth && height == ownHeight;
    },
    [](const clap_plugin_t* p, const clap_window_t* parent) {
        return of(p).window_ && parent != nullptr && isWindowApi(parent->api, false) && of(p).window_->open(parent->uptr);
    },
    [](const clap_plugin_t*, const clap_window_t*) { return false; },
    [](const clap_plugin_t*, const char*) {},
    [](const clap_plugin_t* p) { return of(p).showWindow(true); },
    [](const clap_plugin_t* p) { return of(p).showWindow(false); }};

const clap_plugin_timer_support_t Plugin::timerSupport = {[](const clap_plugin_t* p, clap_id) { of(p).idle(); }};

const void* Plugin::extension(const clap_plugin_t* plugin, const char* id) {
    if (id == nullptr) return nullptr;
    const auto is = [id](const char* known) { return std::strcmp(id, known) == 0; };
    if (is(CLAP_EXT_AUDIO_PORTS)) return &audioPorts;
    if (is(CLAP_EXT_NOTE_PORTS)) return &notePorts;
    if (is(CLAP_EXT_PARAMS)) return &params;
    if (is(CLAP_EXT_STATE)) return &state;
    if (is(CLAP_EXT_LATENCY)) return &latency;
    if (is(CLAP_EXT_TIMER_SUPPORT)) return &timerSupport;
    if (is(CLAP_EXT_GUI)) return of(plugin).window_ ? &gui : nullptr;
    return nullptr;
}

}  // namespace

const clap_plugin_descriptor_t& descriptor() {
    static const char* features[] = {CLAP_PLUGIN_FEATURE_INSTRUMENT, CLAP_PLUGIN_FEATURE_SYNTHESIZER, CLAP_PLUGIN_FEATURE_SAMPLER,
                                     CLAP_PLUGIN_FEATURE_STEREO, nullptr};
    static const clap_plugin_descriptor_t made = {
        CLAP_VERSION_INIT, "example.vantoric.vantoric", identity::name, identity::vendor, identity::homePage, "", "",
        versionText,       identity::description,       features};
    return made;
}

const clap_plugin_t* makePlugin(const clap_host_t* host) noexcept {
    if (!clap_version_is_compatible(host->clap_version)) return nullptr;
    return guarded([&] { return std::make_unique<Plugin>(host).release()->record(); },
                   static_cast<const clap_plugin_t*>(nullptr));
}

}  // namespace vantoric::clap_face
