// The instrument as an LV2 host sees it: events, two outputs, and a control port for each parameter that may be automated.
//
// The host owns its control ports, and a plug-in cannot set them. So a port is heard only when it moves; the state holds,
// beside the patch, the values of the ports that the patch has already taken in, and after a restore only ports that differ
// from those are heard. With an open window, what moves inside is written to the ports.
#include <lv2/atom/atom.h>
#include <lv2/atom/util.h>
#include <lv2/core/lv2.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/midi/midi.h>
#include <lv2/state/state.h>
#include <lv2/time/time.h>
#include <lv2/ui/ui.h>
#include <lv2/urid/urid.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

#include "faces/common/block_events.h"
#include "faces/common/face_window.h"
#include "faces/common/host_calls.h"
#include "faces/common/host_news.h"
#include "faces/lv2/lv2_ports.h"

namespace vantoric::lv2_face {
namespace {

namespace hp = host_parameter;

constexpr float tolerance = 1e-5f;  // ports travel as decimal text

template <class T>
T* feature(const LV2_Feature* const* features, const char* uri) {
    for (; features != nullptr && *features != nullptr; ++features)
        if (std::strcmp((*features)->URI, uri) == 0) return static_cast<T*>((*features)->data);
    return nullptr;
}

// The numbers of what the plug-in reads and writes, as the host counts them.
struct Numbers {
    explicit Numbers(const LV2_URID_Map& map) {
        const auto number = [&map](const char* uri) { return map.map(map.handle, uri); };
        midi = number(LV2_MIDI__MidiEvent);
        object = number(LV2_ATOM__Object);
        blank = number(LV2_ATOM__Blank);
        chunk = number(LV2_ATOM__Chunk);
        floatType = number(LV2_ATOM__Float);
        doubleType = number(LV2_ATOM__Double);
        intType = number(LV2_ATOM__Int);
        longType = number(LV2_ATOM__Long);
        position = number(LV2_TIME__Position);
        tempo = number(LV2_TIME__beatsPerMinute);
        speed = number(LV2_TIME__speed);
        bar = number(LV2_TIME__bar);
        barBeat = number(LV2_TIME__barBeat);
        beatsPerBar = number(LV2_TIME__beatsPerBar);
        beatUnit = number(LV2_TIME__beatUnit);
        patch = number(patchUri);
        ports = number(portsUri);
        sequence = number(LV2_ATOM__Sequence);
        stateChanged = number(LV2_STATE__StateChanged);
    }
    LV2_URID midi, object, blank, chunk, floatType, doubleType, intType, longType;
    LV2_URID position, tempo, speed, bar, barBeat, beatsPerBar, beatUnit, patch, ports, sequence, stateChanged;
};

// The song as the host told it last, moved on by the blocks since.
class Song {
public:
    explicit Song(double rate) : rate_(rate) {}

    // What was told at a frame of the block.
    void take(const LV2_Atom_Object& told, std::int64_t frame, const Numbers& numbers) {
        moveTo(frame);
        const LV2_Atom *tempo = nullptr, *speed = nullptr, *bar = nullptr, *barBeat = nullptr, *beats = nullptr, *unit = nullptr;
        lv2_atom_object_get(&told, numbers.tempo, &tempo, numbers.speed, &speed, numbers.bar, &bar, numbers.barBeat, &barBeat,
                            numbers.beatsPerBar, &beats, numbers.beatUnit, &unit, 0);
        transport_.known = true;
        transport_.tempo = numberOf(tempo, transport_.tempo, numbers);
        speed_ = numberOf(speed, speed_, numbers);
        beatsPerBar_ = numberOf(beats, beatsPerBar_, numbers);
        beatUnit_ = numberOf(unit, beatUnit_, numbers);
        if (bar != nullptr && barBeat != nullptr && beatUnit_ > 0)  // beats of the signature, to quarter notes
            transport_.ppqPos =
                (numberOf(bar, 0, numbers) * beatsPerBar_ + numberOf(barBeat, 0, numbers)) * quartersOfWhole / beatUnit_;
    }
    const Transport& transport(bool isOffline) {
        transport_.offline = isOffline;
        return transport_;
    }
    // The block is over.
    void moveOn(std::uint32_t frames) {
        moveTo(frames);
        frame_ = 0;
    }

private:
    static constexpr double quartersOfWhole = 4;

    void moveTo(std::int64_t frame) {
        if (frame <= frame_) return;
        if (std::isfinite(speed_))
            transport_.ppqPos += static_cast<double>(frame - frame_) / rate_ * transport_.tempo / 60.0 * speed_;
        frame_ = frame;
    }

    static double numberOf(const LV2_Atom* atom, double otherwise, const Numbers& numbers) {
        if (atom == nullptr) return otherwise;
        if (atom->type == numbers.floatType) return static_cast<double>(reinterpret_cast<const LV2_Atom_Float*>(atom)->body);
        if (atom->type == numbers.doubleType) return reinterpret_cast<const LV2_Atom_Double*>(atom)->body;
        if (atom->type == numbers.intType) return reinterpret_cast<const LV2_Atom_Int*>(atom)->body;
        if (atom->type == numbers.longType) return static_cast<double>(reinterpret_cast<const LV2_Atom_Long*>(atom)->body);
        return otherwise;
    }

    const double rate_;
    Transport transport_;
    double speed_ = 0, beatsPerBar_ = 4, beatUnit_ = 4;
    std::int64_t frame_ = 0;  // of the block, that the position is of
};

// A control port. The audio thread reads it, restoring and the window write what is known of it.
struct ValuePort {
    int parameter = 0;
    const float* host = nullptr;
    std::atomic<float> known{0};      // what the instrument has taken in, plain
    std::atomic<float> heard{-1};     // the stored value that the port brought last
    std::atomic<float> written{NAN};  // what the window wrote last, plain
};

class Plugin;

// The window as one of the host's frames has it. Of several the one opened last has it.
struct Window {
    Plugin& plugin;
    LV2UI_Write_Function write;
    LV2UI_Controller controller;
    const LV2UI_Touch* touch;
    const LV2UI_Resize* resize;
};

class Plugin final : private HostPort {
public:
    Plugin(double rate, const LV2_URID_Map& map)
        : numbers_(map), song_(rate), plugged_(*this), told_(instrument_.parameters()), ports_(portParameters().size()) {
        for (std::size_t i = 0; i < ports_.size(); ++i) {
            ports_[i].parameter = portParameters()[i];
            ports_[i].known = static_cast<float>(hp::defaultValue(ports_[i].parameter));
        }
        instrument_.setSampleRate(static_cast<float>(rate));
        window_ = makeFaceWindow(plugged_, "");
    }
    ~Plugin() { window_.reset(); }

    void connect(std::uint32_t port, void* data) {
        if (port == eventsPort) events_ = static_cast<const LV2_Atom_Sequence*>(data);
        if (port == leftPort || port == rightPort) outputs_[port - leftPort] = static_cast<float*>(data);
        if (port == static_cast<std::uint32_t>(noticePort_)) notices_ = static_cast<LV2_Atom_Sequence*>(data);
        if (port == freeWheelPort) freeWheel_ = static_cast<const float*>(data);
        if (port >= firstValuePort && port - firstValuePort < ports_.size())
            ports_[port - firstValuePort].host = static_cast<const float*>(data);
    }
    void start() { instrument_.start(); }
    void stop() { instrument_.stop(); }
    void run(std::uint32_t frames) noexcept;
    LV2_State_Status save(LV2_State_Store_Function store, LV2_State_Handle handle);
    LV2_State_Status restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle);

    // ---- the window's thread
    FaceWindow* window() { return window_.get(); }
    // Which frame has the window; null for none.
    void setFrame(const Window* frame) { frame_ = frame; }
    const Window* frame() const { return frame_; }
    template <class Write, class Touch>
    void tellHost(Write write, Touch touch);

private:
    void editBegun(int index) override { gestures_.begin(index); }
    void editEnded(int index) override { gestures_.end(index); }
    void parameterEdited(int, float) override {}  // seen when the window idles
    void patchChanged() override { isPatchNew_.store(true, std::memory_order_release); }
    void latencyChanged(int) override {}  // none, ever
    bool sizeWanted(int width, int height) override {
        const LV2UI_Resize* const resize = frame_ != nullptr ? frame_->resize : nullptr;
        return resize != nullptr && resize->ui_resize(resize->handle, width, height) == 0;
    }
    void play(std::uint32_t frames);
    void collectPorts();
    void knowPorts(const std::vector<float>& values);
    void writeNotices();
    Transport collectEvents(bool isOffline);
    int portOf(int parameter) const {
        const auto& indices = portParameters();
        const auto at = std::lower_bound(indices.begin(), indices.end(), parameter);
        return at != indices.end() && *at == parameter ? static_cast<int>(at - indices.begin()) : -1;
    }

    const Numbers numbers_;
    const int noticePort_ = noticePort();
    std::atomic<bool> isPatchNew_{false};  // and the host has not heard of it
    Song song_;
    Gestures gestures_;
    const Window* frame_ = nullptr;
    PluggedInstrument plugged_;
    Instrument& instrument_{plugged_.instrument()};
    ToldValues told_;  // the window's thread
    std::vector<ValuePort> ports_;
    BlockEvents block_;
    const LV2_Atom_Sequence* events_ = nullptr;
    LV2_Atom_Sequence* notices_ = nullptr;
    const float* freeWheel_ = nullptr;
    float* outputs_[2] = {};
    std::unique_ptr<FaceWindow> window_;
};

void Plugin::collectPorts() {
    for (ValuePort& port : ports_) {
        if (port.host == nullptr) continue;
        const float value = *port.host;
        if (!(std::fabs(value - port.known.load(std::memory_order_relaxed)) >= tolerance)) continue;
        port.known.store(value, std::memory_order_relaxed);
        if (std::fabs(value - port.written.load(std::memory_order_relaxed)) < tolerance) {
            port.written.store(NAN, std::memory_order_relaxed);  // the window's own, come back: once
            continue;
        }
        const float stored = hp::storedFor(instrument_, port.parameter, static_cast<double>(value));
        port.heard.store(stored, std::memory_order_relaxed);
        block_.addParameter(0, port.parameter, stored);
    }
}

// Answers with the transport of the block's begin.
Transport Plugin::collectEvents(bool isOffline) {
    Transport atBegin = song_.transport(isOffline);
    if (events_ == nullptr) return atBegin;
    LV2_ATOM_SEQUENCE_FOREACH(events_, event) {
        if (event->body.type == numbers_.midi && event->body.size >= 1 && event->body.size <= 3) {
            std::uint8_t bytes[3] = {};
            std::memcpy(bytes, event + 1, event->body.size);
            block_.addMidi(event->time.frames, bytes[0], bytes[1], bytes[2]);
        } else if (event->body.type == numbers_.object || event->body.type == numbers_.blank) {
            const auto& object = reinterpret_cast<const LV2_Atom_Object&>(event->body);
            if (object.body.otype != numbers_.position) continue;
            const std::int64_t frame = event->time.frames;
            song_.take(object, frame, numbers_);
            if (frame > 0)
                block_.addTransport(frame, song_.transport(isOffline));
            else
                atBegin = song_.transport(isOffline);
        }
    }
    return atBegin;
}

void Plugin::run(std::uint32_t frames) noexcept {
    if (!guarded([&] { return play(frames), true; }, false)) silence(outputs_, std::size(outputs_), frames);
}

void Plugin::play(std::uint32_t frames) {
    constexpr std::uint32_t most = 1u << 30;
    collectPorts();
    const Transport atBegin = collectEvents(freeWheel_ != nullptr && *freeWheel_ > 0.5f);
    block_.play(instrument_, outputs_[0], outputs_[1], static_cast<int>(std::min(frames, most)), atBegin);
    song_.moveOn(frames);
    writeNotices();
}

// A patch that came otherwise than by the host is to be saved with the session.
void Plugin::writeNotices() {
    if (notices_ == nullptr) return;
    struct Notice {
        LV2_Atom_Event event;
        LV2_Atom_Object_Body object;
    };
    const std::size_t room = notices_->atom.size;
    notices_->atom = {sizeof(LV2_Atom_Sequence_Body), numbers_.sequence};
    notices_->body = {};
    if (room < sizeof(LV2_Atom_Sequence_Body) + sizeof(Notice)) return;
    if (!isPatchNew_.exchange(false, std::memory_order_acq_rel)) return;
    Notice notice{};
    notice.event.body = {sizeof notice.object, numbers_.object};
    notice.object.otype = numbers_.stateChanged;
    std::memcpy(notices_ + 1, &notice, sizeof notice);
    notices_->atom.size += sizeof notice;
}

LV2_State_Status Plugin::save(LV2_State_Store_Function store, LV2_State_Handle handle) {
    std::vector<float> known;
    known.reserve(ports_.size());
    for (const ValuePort& port : ports_) known.push_back(port.known.load(std::memory_order_relaxed));
    const ChunkBytes bytes = plugged_.patch();
    if (bytes.size <= 0) return LV2_STATE_ERR_UNKNOWN;
    const LV2_State_Status stored =
        store(handle, numbers_.ports, known.data(), known.size() * sizeof(float), numbers_.chunk, LV2_STATE_IS_POD);
    if (stored != LV2_STATE_SUCCESS) return stored;
    return store(handle, numbers_.patch, bytes.data.get(), static_cast<std::size_t>(bytes.size), numbers_.chunk,
                 LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE);
}

// Values without a number are left as they are.
void Plugin::knowPorts(const std::vector<float>& values) {
    for (std::size_t i = 0; i < ports_.size(); ++i)
        if (std::isfinite(values[i])) ports_[i].known.store(values[i], std::memory_order_relaxed);
}

LV2_State_Status Plugin::restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle) {
    std::size_t size = 0;
    std::uint32_t type = 0, flags = 0;
    const void* patch = retrieve(handle, numbers_.patch, &size, &type, &flags);
    if (patch == nullptr) return LV2_STATE_ERR_NO_PROPERTY;
    if (type != numbers_.chunk) return LV2_STATE_ERR_BAD_TYPE;
    std::vector<float> before(ports_.size());
    for (std::size_t i = 0; i < ports_.size(); ++i) before[i] = ports_[i].known.load(std::memory_order_relaxed);
    std::size_t knownSize = 0;
    const void* known = retrieve(handle, numbers_.ports, &knownSize, &type, &flags);
    // First what the patch knew of the ports: a block in between must not take theirs for news.
    if (known != nullptr && type == numbers_.chunk && knownSize == ports_.size() * sizeof(float)) {
        std::vector<float> values(ports_.size());
        std::memcpy(values.data(), known, knownSize);
        knowPorts(values);
    }
    if (plugged_.restore(patch, size)) return LV2_STATE_SUCCESS;
    knowPorts(before);
    return LV2_STATE_ERR_BAD_TYPE;
}

// What the host's own ports brought is not written back.
template <class Write, class Touch>
void Plugin::tellHost(Write write, Touch touch) {
    const auto writePort = [&](int index, float stored) {
        const int place = portOf(index);
        if (place < 0) return true;
        ValuePort& port = ports_[static_cast<std::size_t>(place)];
        if (stored == port.heard.exchange(NAN, std::memory_order_relaxed)) return true;
        const auto plain = static_cast<float>(hp::plain(index, stored));
        port.written.store(plain, std::memory_order_relaxed);
        write(static_cast<std::uint32_t>(firstValuePort + place), plain);
        return true;
    };
    const auto touchPort = [&](int index, bool isBegin) {
        if (const int place = portOf(index); place >= 0) touch(static_cast<std::uint32_t>(firstValuePort + place), isBegin);
    };
    gestures_.take(touchPort, [&](int index) {
        writePort(index, instrument_.parameters().getParameter(index));
        told_.accept(index);
    });
    told_.take(ToldValues::Patches::told, writePort);
}

Plugin& pluginOf(LV2_Handle handle) { return *static_cast<Plugin*>(handle); }

const void* extensionData(const char* uri) {
    static const LV2_State_Interface state = {
        [](LV2_Handle handle, LV2_State_Store_Function store, LV2_State_Handle host, std::uint32_t, const LV2_Feature* const*) {
            return guarded([&] { return pluginOf(handle).save(store, host); }, LV2_STATE_ERR_UNKNOWN);
        },
        [](LV2_Handle handle, LV2_State_Retrieve_Function retrieve, LV2_State_Handle host, std::uint32_t,
           const LV2_Feature* const*) {
            return guarded([&] { return pluginOf(handle).restore(retrieve, host); }, LV2_STATE_ERR_UNKNOWN);
        }};
    return std::strcmp(uri, LV2_STATE__interface) == 0 ? &state : nullptr;
}

const LV2_Descriptor descriptor = {
    pluginUri,
    [](const LV2_Descriptor*, double rate, const char*, const LV2_Feature* const* features) -> LV2_Handle {
        const auto* map = feature<LV2_URID_Map>(features, LV2_URID__map);
        if (map == nullptr || !isSampleRate(rate)) return nullptr;
        return guarded([&]() -> LV2_Handle { return std::make_unique<Plugin>(rate, *map).release(); }, LV2_Handle{});
    },
    [](LV2_Handle handle, std::uint32_t port, void* data) { pluginOf(handle).connect(port, data); },
    [](LV2_Handle handle) { guarded([&] { return pluginOf(handle).start(), true; }, false); },
    [](LV2_Handle handle, std::uint32_t frames) { pluginOf(handle).run(frames); },
    [](LV2_Handle handle) { guarded([&] { return pluginOf(handle).stop(), true; }, false); },
    [](LV2_Handle handle) { delete &pluginOf(handle); },
    extensionData};

// ---- the window: it takes the instrument itself, as a patch is more than ports can say -------------------------------

LV2UI_Handle openWindow(LV2UI_Write_Function write, LV2UI_Controller controller, LV2UI_Widget* widget,
                        const LV2_Feature* const* features) {
    auto* const plugin = static_cast<Plugin*>(feature<void>(features, LV2_INSTANCE_ACCESS_URI));
    void* const parent = feature<void>(features, LV2_UI__parent);
    if (plugin == nullptr || parent == nullptr || plugin->window() == nullptr) return nullptr;
    FaceWindow& window = *plugin->window();
    const auto* resize = feature<LV2UI_Resize>(features, LV2_UI__resize);
    std::unique_ptr<Window> frame(new Window{*plugin, write, controller, feature<LV2UI_Touch>(features, LV2_UI__touch), resize});
    plugin->setFrame(nullptr);
    if (!window.open(reinterpret_cast<std::uintptr_t>(parent))) return nullptr;
    const FaceWindow::Size size = window.size();
    if (resize != nullptr) resize->ui_resize(resize->handle, size.width, size.height);
    plugin->setFrame(frame.get());
    // Hosts take the size from this window; from the one around it they would get their own.
    if (widget != nullptr) *widget = reinterpret_cast<LV2UI_Widget>(window.ownWindow());
    return frame.release();
}

void tellHost(const Window& window) {
    window.plugin.tellHost(
        [&](std::uint32_t port, float value) {
            if (window.write != nullptr) window.write(window.controller, port, sizeof value, 0, &value);
        },
        [&](std::uint32_t port, bool isBegin) {
            if (window.touch != nullptr) window.touch->touch(window.touch->handle, port, isBegin);
        });
}

int idleWindow(LV2UI_Handle handle) {
    const Window& window = *static_cast<Window*>(handle);
    constexpr int isOver = 1, goesOn = 0;
    if (window.plugin.frame() != &window) return isOver;
    window.plugin.window()->idle();
    // What could not be told is told by the next call.
    guarded([&] { return tellHost(window), true; }, false);
    return goesOn;
}

const LV2UI_Descriptor windowDescriptor = {
    windowUri,
    [](const LV2UI_Descriptor*, const char*, const char*, LV2UI_Write_Function write, LV2UI_Controller controller,
       LV2UI_Widget* widget, const LV2_Feature* const* features) {
        return guarded([&] { return openWindow(write, controller, widget, features); }, LV2UI_Handle{});
    },
    [](LV2UI_Handle handle) {
        const std::unique_ptr<Window> window(static_cast<Window*>(handle));
        if (window->plugin.frame() != window.get()) return;
        window->plugin.setFrame(nullptr);
        window->plugin.window()->close();
    },
    nullptr,
    [](const char* uri) -> const void* {
        static const LV2UI_Idle_Interface idle = {idleWindow};
        return std::strcmp(uri, LV2_UI__idleInterface) == 0 ? &idle : nullptr;
    }};

}  // namespace
}  // namespace vantoric::lv2_face

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(std::uint32_t index) {
    return index == 0 ? &vantoric::lv2_face::descriptor : nullptr;
}

LV2_SYMBOL_EXPORT const LV2UI_Descriptor* lv2ui_descriptor(std::uint32_t index) {
    return index == 0 ? &vantoric::lv2_face::windowDescriptor : nullptr;
}
