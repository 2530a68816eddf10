// The client library of JACK, which PipeWire serves too, opened while the program runs: it starts where there is none.
#pragma once

#include <jack/jack.h>
#include <jack/midiport.h>

namespace vantoric::standalone {

// Each member is the function of its name. All threads, once it is open.
struct JackLibrary {
    // Null where the library isn't installed or lacks a function. Stays loaded.
    static const JackLibrary* shared();
    // PipeWire's own where it is not the one above, or null: for where that one finds no server.
    static const JackLibrary* ofPipeWire();

    decltype(&::jack_client_open) client_open;
    decltype(&::jack_client_close) client_close;
    decltype(&::jack_activate) activate;
    decltype(&::jack_deactivate) deactivate;
    decltype(&::jack_on_shutdown) on_shutdown;
    decltype(&::jack_set_process_callback) set_process_callback;
    decltype(&::jack_set_xrun_callback) set_xrun_callback;
    decltype(&::jack_set_sample_rate_callback) set_sample_rate_callback;
    decltype(&::jack_set_freewheel_callback) set_freewheel_callback;
    decltype(&::jack_set_port_connect_callback) set_port_connect_callback;
    decltype(&::jack_port_by_id) port_by_id;
    decltype(&::jack_set_error_function) set_error_function;
    decltype(&::jack_set_info_function) set_info_function;
    decltype(&::jack_get_sample_rate) get_sample_rate;
    decltype(&::jack_get_buffer_size) get_buffer_size;
    decltype(&::jack_is_realtime) is_realtime;
    decltype(&::jack_port_register) port_register;
    decltype(&::jack_port_name) port_name;
    decltype(&::jack_port_by_name) port_by_name;
    decltype(&::jack_port_connected_to) port_connected_to;
    decltype(&::jack_port_get_aliases) port_get_aliases;
    decltype(&::jack_port_get_buffer) port_get_buffer;
    decltype(&::jack_get_ports) get_ports;
    decltype(&::jack_connect) connect;
    decltype(&::jack_disconnect) disconnect;
    decltype(&::jack_free) free;
    decltype(&::jack_midi_get_event_count) midi_get_event_count;
    decltype(&::jack_midi_event_get) midi_event_get;
};

}  // namespace vantoric::standalone
