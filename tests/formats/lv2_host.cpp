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
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <stdexcept>

#include "faces/lv2/lv2_ports.h"
#include "tests/formats/format_host.h"

namespace testhost {
namespace {

namespace lv2 = vantoric::lv2_face;

LV2_URID numberOf(LV2_URID_Map_Handle, const char* uri) {
    static std::mutex mutex;
    const std::lock_guard guard(mutex);
    static std::map<std::string, LV2_URID> numbers;
    return numbers.try_emplace(uri, static_cast<LV2_URID>(numbers.size() + 1)).first->second;
}

class Lv2Host final : public FormatHost {
public:
    Lv2Host() { make(48000); }
    ~Lv2Host() override { drop(); }

    // The rate of this format is for life: another one means another instance, with the state of the first.
    void start(double rate, int) override {
        if (rate != rate_) {
            const Bytes state = save(0);
            drop();
            make(rate);
            load(state, 0);
        }
        called([this] { descriptor_->activate(handle_); });
    }
    bool takesRate(double rate) override {
        LV2_Handle made = nullptr;
        called([&] { made = descriptor_->instantiate(descriptor_, rate, "", features_); });
        if (made != nullptr) called([&] { descriptor_->cleanup(made); });
        return made != nullptr;
    }
    bool makesAnother() override { return takesRate(rate_); }
    void stop() override {
        called([this] { descriptor_->deactivate(handle_); });
    }

    Sound render(int frames, const std::vector<Event>& events, Outputs outputs) override {
        std::vector<std::uint64_t> sequence = sequenceOf(events);
        constexpr float unwritten = std::numeric_limits<float>::quiet_NaN();
        Sound sound;
        sound.left.assign(static_cast<std::size_t>(frames), unwritten);
        sound.right = sound.left;
        connect(lv2::eventsPort, outputs == none ? nullptr : sequence.data());
        connect(lv2::leftPort, outputs == none ? nullptr : sound.left.data());
        connect(lv2::rightPort, outputs == both ? sound.right.data() : nullptr);
        connect(lv2::freeWheelPort, &freeWheel_);
        freeWheel_ = isOffline_ ? 1.0f : 0.0f;
        notices_[0] = 0;
        reinterpret_cast<LV2_Atom*>(notices_.data())->size = static_cast<std::uint32_t>(notices_.size() * 8 - sizeof(LV2_Atom));
        connect(lv2::noticePort(), notices_.data());
        called([&] { descriptor_->run(handle_, static_cast<std::uint32_t>(frames)); });
        hearNotices();
        return sound;
    }

    Bytes save(std::size_t) override {
        properties_.clear();
        const auto store = [](LV2_State_Handle host, std::uint32_t key, const void* value, std::size_t size, std::uint32_t,
                              std::uint32_t) {
            auto& self = *static_cast<Lv2Host*>(host);
            if (self.fault_.kind == StreamFault::error) return LV2_STATE_ERR_UNKNOWN;
            const auto* bytes = static_cast<const std::uint8_t*>(value);
            self.properties_[key] = Bytes(bytes, bytes + size);
            return LV2_STATE_SUCCESS;
        };
        LV2_State_Status answer = LV2_STATE_ERR_UNKNOWN;
        called([&] { answer = state()->save(handle_, store, this, 0, features_); });
        if (answer != LV2_STATE_SUCCESS) return {};
        return properties_[numberOf(nullptr, lv2::patchUri)];
    }
    bool load(const Bytes& state_, std::size_t) override {
        Bytes& patch = properties_[numberOf(nullptr, lv2::patchUri)] = state_;
        if (fault_.kind == StreamFault::early) patch.resize(std::min(patch.size(), fault_.at));
        if (fault_.ports) properties_[numberOf(nullptr, lv2::portsUri)] = *fault_.ports;
        const auto retrieve = [](LV2_State_Handle host, std::uint32_t key, std::size_t* size, std::uint32_t* type,
                                 std::uint32_t* flags) -> const void* {
            const auto& self = *static_cast<Lv2Host*>(host);
            const auto& properties = self.properties_;
            const auto found = properties.find(key);
            *size = found == properties.end() ? std::numeric_limits<std::size_t>::max() : found->second.size();
            *type = typeOf(key, self.fault_);
            *flags = LV2_STATE_IS_POD;
            return found == properties.end() || self.fault_.kind == StreamFault::error ? nullptr : found->second.data();
        };
        LV2_State_Status answer = LV2_STATE_ERR_UNKNOWN;
        called([&] { answer = state()->restore(handle_, retrieve, this, 0, features_); });
        return answer == LV2_STATE_SUCCESS;
    }

    bool openWindow(std::uintptr_t parent) override {
        using Entry = const LV2UI_Descriptor* (*)(std::uint32_t);
        window_ = reinterpret_cast<Entry>(loadModule(LV2_MODULE, "lv2ui_descriptor"))(0);
        const LV2_Feature access{LV2_INSTANCE_ACCESS_URI, handle_}, inside{LV2_UI__parent, reinterpret_cast<void*>(parent)};
        resize_ = {this, [](LV2UI_Feature_Handle host, int width, int height) {
                       static_cast<Lv2Host*>(host)->sizes_.emplace_back(width, height);
                       return 0;
                   }};
        touch_ = {this, [](LV2UI_Feature_Handle host, std::uint32_t port, bool isBegin) {
                      static_cast<Lv2Host*>(host)->note({isBegin ? Told::begin : Told::end, parameterOf(port), 0});
                  }};
        const LV2_Feature resize{LV2_UI__resize, &resize_}, touch{LV2_UI__touch, &touch_};
        const LV2_Feature* features[] = {&mapFeature_, &access, &inside, &resize, &touch, nullptr};
        LV2UI_Widget widget = nullptr;
        LV2UI_Handle opened = nullptr;
        called([&] { opened = window_->instantiate(window_, lv2::pluginUri, "", writePort, this, &widget, features); });
        if (opened != nullptr) windows_.push_back(opened);
        return opened != nullptr && widget != nullptr;
    }
    void idle() override {
        const auto* clock = static_cast<const LV2UI_Idle_Interface*>(window_->extension_data(LV2_UI__idleInterface));
        for (const LV2UI_Handle window : windows_) called([&] { clock->idle(window); });
    }
    bool mayOpenTwice() const override { return true; }
    void closeWindow() override {
        called([this] { window_->cleanup(windows_.front()); });
        windows_.erase(windows_.begin());
    }

private:
    // Of one of the two properties, or of both, the wrong one.
    static LV2_URID typeOf(LV2_URID key, const StreamFault& fault) {
        static constexpr const char* types[] = {LV2_ATOM__Int, LV2_ATOM__Path, LV2_ATOM__String, LV2_ATOM__Vector};
        const bool isRight = fault.type % 3 == (key == numberOf(nullptr, lv2::patchUri) ? 1 : 2);
        if (fault.kind != StreamFault::badType || isRight) return numberOf(nullptr, LV2_ATOM__Chunk);
        return numberOf(nullptr, types[fault.type / 3 % 4]);
    }
    static int parameterOf(std::uint32_t port) { return lv2::portParameters()[port - lv2::firstValuePort]; }
    // As hosts do: what the window writes goes to the port.
    static void writePort(LV2UI_Controller host, std::uint32_t port, std::uint32_t, std::uint32_t, const void* value) {
        auto& self = *static_cast<Lv2Host*>(host);
        const float plain = *static_cast<const float*>(value);
        self.values_[port - lv2::firstValuePort] = plain;
        self.note({Told::value, parameterOf(port), static_cast<double>(plain)});
    }
    void hearNotices() {
        const auto* sequence = reinterpret_cast<const LV2_Atom_Sequence*>(notices_.data());
        LV2_ATOM_SEQUENCE_FOREACH(sequence, event) {
            const auto& object = reinterpret_cast<const LV2_Atom_Object&>(event->body);
            if (object.body.otype == numberOf(nullptr, LV2_STATE__StateChanged)) noteDirty();
        }
    }
    // Words behind each other, as atoms lie.
    static void append(std::vector<std::uint64_t>& words, const void* bytes, std::size_t size) {
        const std::size_t at = words.size();
        words.resize(at + (size + 7) / 8);
        std::memcpy(&words[at], bytes, size);
    }
    template <class Number>
    static void appendProperty(std::vector<std::uint64_t>& words, const char* key, const char* type, Number value) {
        const std::uint32_t head[] = {numberOf(nullptr, key), 0, sizeof value, numberOf(nullptr, type)};
        append(words, head, sizeof head);
        append(words, &value, sizeof value);
    }
    static void appendPosition(std::vector<std::uint64_t>& words, const Song& song) {
        const double bar = std::floor(song.beats / 4);
        std::vector<std::uint64_t> body;
        const std::uint32_t object[] = {0, numberOf(nullptr, LV2_TIME__Position)};
        append(body, object, sizeof object);
        appendProperty(body, LV2_TIME__beatsPerMinute, LV2_ATOM__Double, song.tempo);
        appendProperty(body, LV2_TIME__speed, LV2_ATOM__Float, 1.0f);
        appendProperty(body, LV2_TIME__bar, LV2_ATOM__Long, static_cast<std::int64_t>(bar));
        appendProperty(body, LV2_TIME__barBeat, LV2_ATOM__Double, song.beats - 4 * bar);
        appendProperty(body, LV2_TIME__beatUnit, LV2_ATOM__Int, std::int32_t{4});
        LV2_Atom_Event record{};
        record.time.frames = song.frame;
        record.body = {static_cast<std::uint32_t>(body.size() * 8), numberOf(nullptr, LV2_ATOM__Object)};
        append(words, &record, sizeof record);
        words.insert(words.end(), body.begin(), body.end());
    }

    void make(double rate) {
        using Entry = const LV2_Descriptor* (*)(std::uint32_t);
        descriptor_ = reinterpret_cast<Entry>(loadModule(LV2_MODULE, "lv2_descriptor"))(0);
        rate_ = rate;
        handle_ = descriptor_->instantiate(descriptor_, rate, "", features_);
        if (handle_ == nullptr) throw std::runtime_error("no LV2 instance");
        values_.clear();
        for (const int index : lv2::portParameters())
            values_.push_back(static_cast<float>(vantoric::host_parameter::defaultValue(index)));
        for (std::size_t i = 0; i < values_.size(); ++i) connect(lv2::firstValuePort + static_cast<int>(i), &values_[i]);
    }
    void drop() { descriptor_->cleanup(handle_); }
    void connect(int port, void* data) { descriptor_->connect_port(handle_, static_cast<std::uint32_t>(port), data); }
    const LV2_State_Interface* state() const {
        return static_cast<const LV2_State_Interface*>(descriptor_->extension_data(LV2_STATE__interface));
    }
    // Notes as a sequence; values go to their ports.
    std::vector<std::uint64_t> sequenceOf(const std::vector<Event>& events) {
        std::vector<std::uint64_t> words(sizeof(LV2_Atom_Sequence) / 8);
        for (const Song& song : song_) appendPosition(words, song);
        for (const Event& event : events) {
            if (event.kind == Event::value) {
                const auto& indices = lv2::portParameters();
                const auto at = std::find(indices.begin(), indices.end(), event.index);
                if (at != indices.end())
                    values_[static_cast<std::size_t>(at - indices.begin())] = static_cast<float>(event.plain);
            }
            if (event.kind != Event::midi) continue;
            LV2_Atom_Event record{};
            record.time.frames = event.frame;
            record.body.size = 3;
            record.body.type = numberOf(nullptr, LV2_MIDI__MidiEvent);
            const std::uint8_t bytes[] = {event.status, event.data1, event.data2};
            append(words, &record, sizeof record);
            append(words, bytes, sizeof bytes);
        }
        LV2_Atom_Sequence head{};
        head.atom.type = numberOf(nullptr, LV2_ATOM__Sequence);
        head.atom.size = static_cast<std::uint32_t>(words.size() * 8 - sizeof(LV2_Atom));
        std::memcpy(words.data(), &head, sizeof head);
        return words;
    }

    LV2_URID_Map map_{nullptr, numberOf};
    LV2_Feature mapFeature_{LV2_URID__map, &map_};
    const LV2_Feature* features_[2] = {&mapFeature_, nullptr};
    const LV2_Descriptor* descriptor_ = nullptr;
    LV2_Handle handle_ = nullptr;
    const LV2UI_Descriptor* window_ = nullptr;
    std::vector<LV2UI_Handle> windows_;
    LV2UI_Resize resize_{};
    LV2UI_Touch touch_{};
    float freeWheel_ = 0;
    std::array<std::uint64_t, 32> notices_{};
    double rate_ = 0;
    std::vector<float> values_;
    std::map<std::uint32_t, Bytes> properties_;
};

}  // namespace

std::unique_ptr<FormatHost> makeLv2Host() { return std::make_unique<Lv2Host>(); }

}  // namespace testhost
