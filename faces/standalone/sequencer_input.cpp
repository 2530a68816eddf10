#include "faces/standalone/sequencer_input.h"

#include <poll.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <exception>

#include "faces/standalone/alsa_device.h"

namespace vantoric::standalone {
namespace {

constexpr int wakeEvery = 100;  // milliseconds, to look whether the program ends

bool isKeyboard(const snd_seq_port_info_t* port) {
    constexpr unsigned readable = SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ;
    return (snd_seq_port_info_get_capability(port) & readable) == readable &&
           (snd_seq_port_info_get_type(port) & SND_SEQ_PORT_TYPE_HARDWARE) != 0;
}

}  // namespace

std::unique_ptr<SequencerInput> SequencerInput::open(Player& player, std::string& problem) {
    const auto refuse = [&problem](int error) {
        problem = snd_strerror(error);
        return nullptr;
    };
    quietenAlsa();
    snd_seq_t* opened = nullptr;
    if (const int error = snd_seq_open(&opened, "default", SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK); error < 0)
        return refuse(error);
    std::unique_ptr<SequencerInput> input(new SequencerInput(player));
    input->sequencer_.reset(opened);
    snd_seq_set_client_name(opened, "Vantoric");
    input->port_ = snd_seq_create_simple_port(
        opened, "MIDI in", SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE,
        SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_SYNTHESIZER | SND_SEQ_PORT_TYPE_APPLICATION);
    if (input->port_ < 0) return refuse(input->port_);
    snd_midi_event_t* decoder = nullptr;
    if (const int error = snd_midi_event_new(16, &decoder); error < 0) return refuse(error);
    input->decoder_.reset(decoder);
    snd_midi_event_no_status(decoder, 1);
    try {
        input->thread_ = std::thread([self = input.get()] { self->run(); });
    } catch (const std::exception& error) {  // no more threads
        problem = error.what();
        return nullptr;
    }
    return input;
}

SequencerInput::~SequencerInput() {
    isEnding_ = true;
    if (thread_.joinable()) thread_.join();
}

std::string SequencerInput::description() const {
    return "ALSA sequencer, port " + std::to_string(snd_seq_client_id(sequencer_.get())) + ":" + std::to_string(port_);
}

std::vector<MidiInput> SequencerInput::inputs() {
    std::vector<MidiInput> all;
    snd_seq_client_info_t* client = nullptr;
    snd_seq_client_info_alloca(&client);
    snd_seq_port_info_t* port = nullptr;
    snd_seq_port_info_alloca(&port);
    snd_seq_client_info_set_client(client, -1);
    while (snd_seq_query_next_client(sequencer_.get(), client) >= 0) {
        const int number = snd_seq_client_info_get_client(client);
        if (number == SND_SEQ_CLIENT_SYSTEM || number == snd_seq_client_id(sequencer_.get())) continue;
        snd_seq_port_info_set_client(port, number);
        snd_seq_port_info_set_port(port, -1);
        while (snd_seq_query_next_port(sequencer_.get(), port) >= 0) {
            if (!isKeyboard(port)) continue;
            const int index = snd_seq_port_info_get_port(port);
            all.push_back({std::to_string(number) + ":" + std::to_string(index), snd_seq_port_info_get_name(port),
                           isConnected(number, index)});
        }
    }
    return all;
}

bool SequencerInput::isConnected(int client, int port) const {
    snd_seq_port_subscribe_t* connection = nullptr;
    snd_seq_port_subscribe_alloca(&connection);
    const snd_seq_addr_t sender{static_cast<unsigned char>(client), static_cast<unsigned char>(port)};
    const snd_seq_addr_t receiver{static_cast<unsigned char>(snd_seq_client_id(sequencer_.get())),
                                  static_cast<unsigned char>(port_)};
    snd_seq_port_subscribe_set_sender(connection, &sender);
    snd_seq_port_subscribe_set_dest(connection, &receiver);
    return snd_seq_get_port_subscription(sequencer_.get(), connection) == 0;
}

void SequencerInput::connect(const std::string& id, bool wanted) {
    int client = 0, port = 0;
    if (std::sscanf(id.c_str(), "%d:%d", &client, &port) != 2) return;
    (wanted ? snd_seq_connect_from : snd_seq_disconnect_from)(sequencer_.get(), port_, client, port);
}

// ---- the thread that waits for messages

void SequencerInput::run() {
    std::array<pollfd, 8> waiting{};
    const int count = snd_seq_poll_descriptors(sequencer_.get(), waiting.data(), waiting.size(), POLLIN);
    while (!isEnding_) {
        if (poll(waiting.data(), static_cast<nfds_t>(count), wakeEvery) <= 0) continue;
        snd_seq_event_t* event = nullptr;
        int result = 0;
        while ((result = snd_seq_event_input(sequencer_.get(), &event)) >= 0 && event != nullptr) take(*event);
        if (result == -ENOSPC)  // some were lost, ends of notes maybe
            senders_.leaveAll([this](const ShortMessage& message) { receive(message); });
    }
    senders_.leaveAll([this](const ShortMessage& message) { receive(message); });
}

// The system tells the port itself of a keyboard that was parted from it or unplugged.
void SequencerInput::take(const snd_seq_event_t& event) {
    if (event.type == SND_SEQ_EVENT_PORT_UNSUBSCRIBED) {
        const snd_seq_addr_t sender = event.data.connect.sender;
        return senders_.leave({sender.client, sender.port}, [this](const ShortMessage& message) { receive(message); });
    }
    std::array<std::uint8_t, 16> bytes{};
    const long size = snd_midi_event_decode(decoder_.get(), bytes.data(), bytes.size(), &event);
    if (size < 1 || size > 3) return;
    const ShortMessage message{bytes[0], bytes[1], bytes[2]};
    if (senders_.follow({event.source.client, event.source.port}, message)) receive(message);
}

}  // namespace vantoric::standalone
