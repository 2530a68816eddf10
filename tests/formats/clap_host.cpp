#include <clap/entry.h>
#include <clap/ext/gui.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/ext/timer-support.h>
#include <clap/plugin-factory.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "tests/formats/format_host.h"

namespace testhost {
namespace {

// Events as bytes of their own, each aligned.
class EventList {
public:
    template <class Record>
    void add(Record record, std::uint16_t type, int frame) {
        record.header = {sizeof record, static_cast<std::uint32_t>(frame), CLAP_CORE_EVENT_SPACE_ID, type, 0};
        append(&record.header);
    }
    void append(const clap_event_header_t* event) {
        auto& words = events_.emplace_back((event->size + 7) / 8);
        std::memcpy(words.data(), event, event->size);
    }
    std::size_t size() const { return events_.size(); }
    const clap_event_header_t* at(std::size_t i) const { return reinterpret_cast<const clap_event_header_t*>(events_[i].data()); }
    const clap_input_events_t* in() const { return &in_; }
    const clap_output_events_t* out() const { return &out_; }

private:
    static EventList& of(void* context) { return *static_cast<EventList*>(context); }
    std::vector<std::vector<std::uint64_t>> events_;
    clap_input_events_t in_{
        this, [](const clap_input_events_t* list) { return static_cast<std::uint32_t>(of(list->ctx).size()); },
        [](const clap_input_events_t* list, std::uint32_t i) -> const clap_event_header_t* { return of(list->ctx).at(i); }};
    clap_output_events_t out_{this, [](const clap_output_events_t* list, const clap_event_header_t* event) {
                                  of(list->ctx).append(event);
                                  return true;
                              }};
};

class ClapHost final : public FormatHost {
public:
    explicit ClapHost(bool hasTimers) : offersTimers_(hasTimers) {
        const auto* entry = static_cast<const clap_plugin_entry_t*>(loadModule(CLAP_MODULE, "clap_entry"));
        entry->init(CLAP_MODULE);
        const auto* factory = static_cast<const clap_plugin_factory_t*>(entry->get_factory(CLAP_PLUGIN_FACTORY_ID));
        plugin_ = factory->create_plugin(factory, &host_, factory->get_plugin_descriptor(factory, 0)->id);
        if (plugin_ == nullptr || !plugin_->init(plugin_)) throw std::runtime_error("no CLAP instance");
    }
    ~ClapHost() override {
        stop();
        plugin_->destroy(plugin_);
    }
    void start(double rate, int mostFrames) override {
        stop();
        called([&] {
            isOn_ =
                plugin_->activate(plugin_, rate, 1, static_cast<std::uint32_t>(mostFrames)) && plugin_->start_processing(plugin_);
        });
    }
    bool takesRate(double rate) override {
        const bool isTaken = plugin_->activate(plugin_, rate, 1, 64);
        if (isTaken) plugin_->deactivate(plugin_);
        return isTaken;
    }
    bool makesAnother() override {
        const auto* entry = static_cast<const clap_plugin_entry_t*>(loadModule(CLAP_MODULE, "clap_entry"));
        const auto* factory = static_cast<const clap_plugin_factory_t*>(entry->get_factory(CLAP_PLUGIN_FACTORY_ID));
        const char* const id = factory->get_plugin_descriptor(factory, 0)->id;
        const clap_plugin_t* made = nullptr;
        bool isMade = false;
        called([&] { made = factory->create_plugin(factory, &host_, id); });
        if (made == nullptr) return false;
        called([&] { isMade = made->init(made); });
        called([&] { made->destroy(made); });
        return isMade;
    }
    void stop() override {
        if (!isOn_) return;
        called([this] {
            plugin_->stop_processing(plugin_);
            plugin_->deactivate(plugin_);
        });
        isOn_ = false;
    }
    Sound render(int frames, const std::vector<Event>& events, Outputs outputs) override {
        EventList in, out;
        for (std::size_t i = 1; i < song_.size(); ++i) in.add(transportOf(song_[i]), CLAP_EVENT_TRANSPORT, song_[i].frame);
        for (const Event& event : events) add(in, event);
        constexpr float unwritten = std::numeric_limits<float>::quiet_NaN();
        Sound sound;
        sound.left.assign(static_cast<std::size_t>(frames), unwritten);
        sound.right = sound.left;
        float* channels[] = {sound.left.data(), sound.right.data()};
        clap_audio_buffer_t buffer{channels, nullptr, outputs == left ? 1u : 2u, 0, 0};
        clap_process_t block{};
        block.steady_time = -1;
        block.frames_count = static_cast<std::uint32_t>(frames);
        block.audio_outputs = outputs == none ? nullptr : &buffer;
        block.audio_outputs_count = outputs == none ? 0 : 1;
        block.in_events = in.in();
        block.out_events = out.out();
        const clap_event_transport_t transport = transportOf(song_.empty() ? Song() : song_.front());
        block.transport = song_.empty() ? nullptr : &transport;
        called([&] { plugin_->process(plugin_, &block); });
        hear(out);
        return sound;
    }
    void reset() override {
        called([this] { plugin_->reset(plugin_); });
    }
    bool tellsOffline() const override { return false; }
    void loop() override {
        if (wantsFlush_.exchange(false) && !isOn_) flush({});
        if (wantsCallback_.exchange(false)) called([this] { plugin_->on_main_thread(plugin_); });
    }
    void setBesideBlocks(int index, double plain) override { flush({Event::set(0, index, plain)}); }
    int parameterCount() override { return static_cast<int>(extension<clap_plugin_params_t>(CLAP_EXT_PARAMS)->count(plugin_)); }
    std::optional<ParameterFacts> facts(int place) override {
        const auto* params = extension<clap_plugin_params_t>(CLAP_EXT_PARAMS);
        clap_param_info_t info{};
        if (!params->get_info(plugin_, static_cast<std::uint32_t>(place), &info) || info.min_value != 0) return {};
        ParameterFacts facts;
        facts.name = info.name;
        facts.group = info.module;
        facts.steps = (info.flags & CLAP_PARAM_IS_STEPPED) != 0 ? static_cast<int>(info.max_value) : 0;
        facts.largest = info.max_value;
        facts.defaultValue = info.default_value;
        facts.isAutomatable = (info.flags & CLAP_PARAM_IS_AUTOMATABLE) != 0;
        facts.isModulatable = (info.flags & CLAP_PARAM_IS_MODULATABLE) != 0;
        facts.isHidden = (info.flags & CLAP_PARAM_IS_HIDDEN) != 0;
        char text[256] = {};
        if (params->value_to_text(plugin_, info.id, info.default_value, text, sizeof text)) facts.textOfDefault = text;
        if (double value = 0; params->text_to_value(plugin_, info.id, text, &value)) facts.defaultByText = value;
        return facts;
    }
    bool hasText(std::uint32_t id) override {
        char text[256] = {};
        return extension<clap_plugin_params_t>(CLAP_EXT_PARAMS)->value_to_text(plugin_, id, 0, text, sizeof text);
    }
    Bytes save(std::size_t piece) override {
        struct Target {
            const StreamFault& fault;
            std::size_t piece;
            Bytes bytes;
            std::size_t turn = 0;
        } target{fault_, piece, {}};
        const clap_ostream_t stream{&target, [](const clap_ostream_t* s, const void* from, std::uint64_t size) -> std::int64_t {
                                        auto& to = *static_cast<Target*>(s->ctx);
                                        if (to.fault.hasBegun(to.bytes.size())) return wrong(to.fault, size);
                                        const auto taken = std::min<std::uint64_t>(size, to.fault.most(to.piece, to.turn++));
                                        const auto* bytes = static_cast<const std::uint8_t*>(from);
                                        to.bytes.insert(to.bytes.end(), bytes, bytes + taken);
                                        return static_cast<std::int64_t>(taken);
                                    }};
        bool isSaved = false;
        called([&] { isSaved = extension<clap_plugin_state_t>(CLAP_EXT_STATE)->save(plugin_, &stream); });
        return isSaved ? target.bytes : Bytes();
    }
    bool load(const Bytes& state, std::size_t piece) override {
        struct Source {
            const Bytes& bytes;
            std::size_t piece;
            const StreamFault& fault;
            std::size_t at = 0, turn = 0;
        } source{state, piece, fault_};
        const clap_istream_t stream{
            &source, [](const clap_istream_t* s, void* to, std::uint64_t size) -> std::int64_t {
                auto& from = *static_cast<Source*>(s->ctx);
                if (from.fault.hasBegun(from.at)) return wrong(from.fault, size);
                const auto given = std::min<std::size_t>(
                    {static_cast<std::size_t>(size), from.fault.most(from.piece, from.turn++), from.bytes.size() - from.at});
                std::copy_n(from.bytes.begin() + static_cast<std::ptrdiff_t>(from.at), given, static_cast<std::uint8_t*>(to));
                from.at += given;
                return static_cast<std::int64_t>(given);
            }};
        bool isLoaded = false;
        called([&] { isLoaded = extension<clap_plugin_state_t>(CLAP_EXT_STATE)->load(plugin_, &stream); });
        return isLoaded;
    }
    double parameter(int index) override {
        double value = -1;
        extension<clap_plugin_params_t>(CLAP_EXT_PARAMS)->get_value(plugin_, static_cast<clap_id>(index), &value);
        return value;
    }
    bool openWindow(std::uintptr_t parent) override {
        const auto* gui = extension<clap_plugin_gui_t>(CLAP_EXT_GUI);
        bool isMade = false;
        if (gui != nullptr) called([&] { isMade = gui->create(plugin_, CLAP_WINDOW_API_X11, false); });
        if (!isMade) return false;
        clap_window_t window{};
        window.api = CLAP_WINDOW_API_X11;
        window.x11 = parent;
        std::uint32_t width = 0, height = 0;
        bool isShown = false;
        called([&] {
            isShown =
                gui->get_size(plugin_, &width, &height) && width > 0 && gui->set_parent(plugin_, &window) && gui->show(plugin_);
        });
        if (!isShown) closeWindow();
        return isShown;
    }
    void idle() override {
        loop();
        const auto* timers = extension<clap_plugin_timer_support_t>(CLAP_EXT_TIMER_SUPPORT);
        if (hasTimer_) called([&] { timers->on_timer(plugin_, 1); });
    }
    void closeWindow() override {
        called([this] { extension<clap_plugin_gui_t>(CLAP_EXT_GUI)->destroy(plugin_); });
    }

private:
    // What a broken stream says that was asked to move so many bytes.
    static std::int64_t wrong(const StreamFault& fault, std::uint64_t size) {
        if (fault.kind == StreamFault::error) return -1;
        return fault.kind == StreamFault::tooMuch ? static_cast<std::int64_t>(size) + 1 : 0;
    }
    template <class Extension>
    const Extension* extension(const char* id) const {
        return static_cast<const Extension*>(plugin_->get_extension(plugin_, id));
    }
    static clap_event_transport_t transportOf(const Song& song) {
        clap_event_transport_t told{};
        told.header = {sizeof told, static_cast<std::uint32_t>(song.frame), CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_TRANSPORT, 0};
        told.flags = CLAP_TRANSPORT_HAS_TEMPO | CLAP_TRANSPORT_HAS_BEATS_TIMELINE | CLAP_TRANSPORT_IS_PLAYING;
        told.tempo = song.tempo;
        told.song_pos_beats = static_cast<clap_beattime>(std::llround(song.beats * static_cast<double>(CLAP_BEATTIME_FACTOR)));
        return told;
    }
    void hear(const EventList& out) {
        for (std::size_t i = 0; i < out.size(); ++i) {
            const clap_event_header_t* event = out.at(i);
            if (event->type == CLAP_EVENT_PARAM_VALUE) {
                const auto* told = reinterpret_cast<const clap_event_param_value_t*>(event);
                note({Told::value, static_cast<int>(told->param_id), told->value});
            } else if (event->type == CLAP_EVENT_PARAM_GESTURE_BEGIN || event->type == CLAP_EVENT_PARAM_GESTURE_END) {
                const auto* told = reinterpret_cast<const clap_event_param_gesture_t*>(event);
                const bool isBegin = event->type == CLAP_EVENT_PARAM_GESTURE_BEGIN;
                note({isBegin ? Told::begin : Told::end, static_cast<int>(told->param_id), 0});
            } else if (event->type == CLAP_EVENT_NOTE_END) {
                ends_.push_back(reinterpret_cast<const clap_event_note_t*>(event)->note_id);
            }
        }
    }
    void flush(const std::vector<Event>& events) {
        EventList in, out;
        for (const Event& event : events) add(in, event);
        called([&] { extension<clap_plugin_params_t>(CLAP_EXT_PARAMS)->flush(plugin_, in.in(), out.out()); });
        hear(out);
    }
    // Every second note in the format's own form, the others as MIDI.
    void add(EventList& list, const Event& event) {
        const bool isNote = event.kind == Event::midi && event.status < 0xa0;
        const bool isNumbered = event.noteId >= 0;
        if (isNote && (isNumbered || (asNote_ = !asNote_))) {
            clap_event_note_t note{};
            note.note_id = event.noteId;
            note.channel = static_cast<std::int16_t>(isNumbered && event.status < 0x90 ? -1 : event.status & 15);
            note.key = static_cast<std::int16_t>(isNumbered && event.status < 0x90 ? -1 : event.data1);
            note.velocity = event.data2 / 127.0;
            list.add(note, event.status < 0x90 ? CLAP_EVENT_NOTE_OFF : CLAP_EVENT_NOTE_ON, event.frame);
        } else if (event.kind == Event::ending) {
            clap_event_note_t note{};
            note.note_id = event.noteId;
            note.port_index = -1;
            note.channel = static_cast<std::int16_t>(event.channel);
            note.key = static_cast<std::int16_t>(event.key);
            list.add(note, event.isChoke ? CLAP_EVENT_NOTE_CHOKE : CLAP_EVENT_NOTE_OFF, event.frame);
        } else if (event.kind == Event::midi) {
            clap_event_midi_t midi{};
            midi.data[0] = event.status;
            midi.data[1] = event.data1;
            midi.data[2] = event.data2;
            list.add(midi, CLAP_EVENT_MIDI, event.frame);
        } else if (event.kind == Event::value) {
            clap_event_param_value_t value{};
            value.param_id = static_cast<clap_id>(event.index);
            value.note_id = value.port_index = value.channel = value.key = -1;
            value.value = event.plain;
            list.add(value, CLAP_EVENT_PARAM_VALUE, event.frame);
        } else {
            clap_event_param_mod_t mod{};
            mod.param_id = static_cast<clap_id>(event.index);
            mod.note_id = mod.port_index = mod.channel = mod.key = -1;
            mod.amount = event.plain;
            list.add(mod, CLAP_EVENT_PARAM_MOD, event.frame);
        }
    }

    static ClapHost& of(const clap_host_t* host) { return *static_cast<ClapHost*>(host->host_data); }
    static const void* answer(const clap_host_t* asking, const char* id) {
        static const clap_host_params_t params = {[](const clap_host_t*, clap_param_rescan_flags) {},
                                                  [](const clap_host_t*, clap_id, clap_param_clear_flags) {},
                                                  [](const clap_host_t* host) { of(host).wantsFlush_ = true; }};
        static const clap_host_state_t state = {[](const clap_host_t* host) { of(host).noteDirty(); }};
        static const clap_host_gui_t gui = {[](const clap_host_t*) {},
                                            [](const clap_host_t* host, std::uint32_t width, std::uint32_t height) {
                                                of(host).sizes_.emplace_back(width, height);
                                                return true;
                                            },
                                            [](const clap_host_t*) { return true; }, [](const clap_host_t*) { return true; },
                                            [](const clap_host_t*, bool) {}};
        static const clap_host_timer_support_t timer = {[](const clap_host_t* host, std::uint32_t, clap_id* timerId) {
                                                            *timerId = 1;
                                                            return (of(host).hasTimer_ = true);
                                                        },
                                                        [](const clap_host_t* host, clap_id) {
                                                            of(host).hasTimer_ = false;
                                                            return true;
                                                        }};
        if (std::strcmp(id, CLAP_EXT_PARAMS) == 0) return &params;
        if (std::strcmp(id, CLAP_EXT_STATE) == 0) return &state;
        if (std::strcmp(id, CLAP_EXT_GUI) == 0) return &gui;
        return std::strcmp(id, CLAP_EXT_TIMER_SUPPORT) == 0 && of(asking).offersTimers_ ? &timer : nullptr;
    }

    clap_host_t host_{CLAP_VERSION_INIT,
                      this,
                      "Test host",
                      "Vantoric tests",
                      "",
                      "1",
                      answer,
                      [](const clap_host_t*) {},
                      [](const clap_host_t*) {},
                      [](const clap_host_t* host) { of(host).wantsCallback_ = true; }};
    const clap_plugin_t* plugin_ = nullptr;
    std::atomic<bool> wantsFlush_{false}, wantsCallback_{false};
    std::atomic<bool> isOn_{false};
    bool offersTimers_, asNote_ = false, hasTimer_ = false;
};

}  // namespace

std::unique_ptr<FormatHost> makeClapHost() { return std::make_unique<ClapHost>(true); }
std::unique_ptr<FormatHost> makeClapHostWithoutTimers() { return std::make_unique<ClapHost>(false); }

}  // namespace testhost
