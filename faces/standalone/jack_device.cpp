#include "faces/standalone/jack_device.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

#include "faces/standalone/jack_library.h"

namespace vantoric::standalone {
namespace {

class JackDevice final : public SoundDevice, private MidiPort {
public:
    JackDevice(const JackLibrary& jack, Player& player, jack_client_t* client) : jack_(jack), player_(player), client_(client) {}
    ~JackDevice() override {
        if (!isLost_) jack_.deactivate(client_);
        jack_.client_close(client_);
        player_.releaseDevice();
        player_.setOffline(false);
    }

    // False with a reason if the server refuses.
    bool start(std::string& problem) {
        midiIn_ = jack_.port_register(client_, "midi_in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
        outputs_[0] = jack_.port_register(client_, "left", JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput | JackPortIsTerminal, 0);
        outputs_[1] = jack_.port_register(client_, "right", JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput | JackPortIsTerminal, 0);
        if (midiIn_ == nullptr || outputs_[0] == nullptr || outputs_[1] == nullptr)
            return problem = "JACK: the server has no ports left", false;
        rate_ = jack_.get_sample_rate(client_);
        player_.prepare(rate_);
        jack_.on_shutdown(client_, [](void* self) { static_cast<JackDevice*>(self)->isLost_ = true; }, this);
        jack_.set_process_callback(client_, &JackDevice::process, this);
        jack_.set_xrun_callback(client_, &JackDevice::onDropout, this);
        jack_.set_sample_rate_callback(client_, &JackDevice::onRate, this);
        jack_.set_freewheel_callback(client_, &JackDevice::onFreewheel, this);
        jack_.set_port_connect_callback(client_, &JackDevice::onConnection, this);
        if (jack_.activate(client_) != 0) return problem = "JACK: the server refuses to play", false;
        connectOutputs();
        return true;
    }

    std::string system() const override { return "JACK"; }
    int period() const override { return static_cast<int>(jack_.get_buffer_size(client_)); }
    std::string priority() const override {
        return jack_.is_realtime(client_) != 0 ? "real-time priority" : "no real-time priority";
    }
    bool isLost() const override { return isLost_; }
    MidiPort* midi() override { return this; }

private:
    static int process(jack_nframes_t frames, void* self) {
        static_cast<JackDevice*>(self)->playBlock(frames);
        return 0;
    }
    static int onDropout(void* self) {
        static_cast<JackDevice*>(self)->player_.noteDropout();
        return 0;
    }
    // Told at the beginning too. With another one the device ends and is opened anew.
    static int onRate(jack_nframes_t rate, void* self) {
        auto& device = *static_cast<JackDevice*>(self);
        if (rate != device.rate_) device.isLost_ = true;
        return 0;
    }

    static void onFreewheel(int isOn, void* self) { static_cast<JackDevice*>(self)->player_.setOffline(isOn != 0); }
    // Of a keyboard that is parted from the program or unplugged nothing else is heard.
    static void onConnection(jack_port_id_t, jack_port_id_t to, int isOn, void* self) {
        auto& device = *static_cast<JackDevice*>(self);
        if (isOn == 0 && device.jack_.port_by_id(device.client_, to) == device.midiIn_) device.player_.releaseDevice();
    }

    void playBlock(jack_nframes_t frames) {
        auto* const left = static_cast<float*>(jack_.port_get_buffer(outputs_[0], frames));
        auto* const right = static_cast<float*>(jack_.port_get_buffer(outputs_[1], frames));
        takeMessages(frames);
        player_.play(left, right, static_cast<int>(frames));
    }

    void takeMessages(jack_nframes_t frames) {
        void* const in = jack_.port_get_buffer(midiIn_, frames);
        const std::uint32_t count = jack_.midi_get_event_count(in);
        for (std::uint32_t i = 0; i < count; ++i) {
            jack_midi_event_t event;
            if (jack_.midi_event_get(&event, in, i) != 0 || event.size == 0 || event.size > 3) continue;
            ShortMessage message{event.buffer[0]};
            if (event.size > 1) message.data1 = event.buffer[1];
            if (event.size > 2) message.data2 = event.buffer[2];
            player_.receive(static_cast<int>(std::min(event.time, frames - 1)), message);
        }
    }

    // Names of ports, in the server's order.
    std::vector<std::string> ports(const char* type, unsigned long flags) const {
        std::vector<std::string> names;
        const char** const found = jack_.get_ports(client_, nullptr, type, flags);
        if (found == nullptr) return names;
        for (const char** name = found; *name != nullptr; ++name) names.emplace_back(*name);
        jack_.free(static_cast<void*>(found));
        return names;
    }

    void connectOutputs() {
        const auto speakers = ports(JACK_DEFAULT_AUDIO_TYPE, JackPortIsPhysical | JackPortIsInput);
        for (std::size_t i = 0; i < std::min(speakers.size(), outputs_.size()); ++i)
            jack_.connect(client_, jack_.port_name(outputs_[i]), speakers[i].c_str());
    }

    // A server names hardware by numbers; what it is called stands in an alias.
    std::string spokenName(const std::string& port) const {
        std::array<char, 1024> first{}, second{};
        std::array<char*, 2> aliases = {first.data(), second.data()};
        jack_port_t* const found = jack_.port_by_name(client_, port.c_str());
        const int count = found != nullptr ? jack_.port_get_aliases(found, aliases.data()) : 0;
        const std::string name = count > 0 ? aliases[static_cast<std::size_t>(count - 1)] : port;
        return name.empty() ? port : name;
    }

    std::vector<MidiInput> inputs() override {
        std::vector<MidiInput> all;
        if (isLost_) return all;
        for (const std::string& port : ports(JACK_DEFAULT_MIDI_TYPE, JackPortIsPhysical | JackPortIsOutput))
            all.push_back({port, spokenName(port), jack_.port_connected_to(midiIn_, port.c_str()) != 0});
        return all;
    }

    void connect(const std::string& id, bool wanted) override {
        if (isLost_) return;
        (wanted ? jack_.connect : jack_.disconnect)(client_, id.c_str(), jack_.port_name(midiIn_));
    }

    const JackLibrary& jack_;
    Player& player_;
    jack_client_t* client_;
    jack_port_t* midiIn_ = nullptr;
    std::array<jack_port_t*, 2> outputs_{};
    jack_nframes_t rate_ = 0;
    std::atomic<bool> isLost_{false};
};

}  // namespace

std::unique_ptr<SoundDevice> openJack(Player& player, std::string& problem) {
    problem = "JACK: its library is not installed";
    for (const auto library : {&JackLibrary::shared, &JackLibrary::ofPipeWire}) {
        const JackLibrary* const jack = library();
        if (jack == nullptr) continue;
        problem = "JACK: no server is running";
        jack_status_t status{};
        jack_client_t* const client = jack->client_open("Vantoric", JackNoStartServer, &status);
        if (client == nullptr) continue;
        auto device = std::make_unique<JackDevice>(*jack, player, client);
        problem.clear();
        if (!device->start(problem)) return nullptr;
        return device;
    }
    return nullptr;
}

}  // namespace vantoric::standalone
