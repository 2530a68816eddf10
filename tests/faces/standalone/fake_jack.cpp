// A library of JACK with a server that is always there and never plays.
#include <jack/jack.h>
#include <jack/midiport.h>

extern "C" {

jack_client_t* jack_client_open(const char*, jack_options_t, jack_status_t*, ...) {
    static int client;
    return reinterpret_cast<jack_client_t*>(&client);
}
int jack_client_close(jack_client_t*) { return 0; }
int jack_activate(jack_client_t*) { return 0; }
int jack_deactivate(jack_client_t*) { return 0; }
void jack_on_shutdown(jack_client_t*, JackShutdownCallback, void*) {}
int jack_set_process_callback(jack_client_t*, JackProcessCallback, void*) { return 0; }
int jack_set_xrun_callback(jack_client_t*, JackXRunCallback, void*) { return 0; }
int jack_set_sample_rate_callback(jack_client_t*, JackSampleRateCallback, void*) { return 0; }
int jack_set_freewheel_callback(jack_client_t*, JackFreewheelCallback, void*) { return 0; }
int jack_set_port_connect_callback(jack_client_t*, JackPortConnectCallback, void*) { return 0; }
jack_port_t* jack_port_by_id(jack_client_t*, jack_port_id_t) { return nullptr; }
void jack_set_error_function(void (*)(const char*)) {}
void jack_set_info_function(void (*)(const char*)) {}
jack_nframes_t jack_get_sample_rate(jack_client_t*) { return 48000; }
jack_nframes_t jack_get_buffer_size(jack_client_t*) { return 256; }
int jack_is_realtime(jack_client_t*) { return 0; }
jack_port_t* jack_port_register(jack_client_t* client, const char*, const char*, unsigned long, unsigned long) {
    return reinterpret_cast<jack_port_t*>(client);
}
const char* jack_port_name(const jack_port_t*) { return "port"; }
jack_port_t* jack_port_by_name(jack_client_t*, const char*) { return nullptr; }
int jack_port_connected_to(const jack_port_t*, const char*) { return 0; }
int jack_port_get_aliases(const jack_port_t*, char* const*) { return 0; }
void* jack_port_get_buffer(jack_port_t*, jack_nframes_t) { return nullptr; }
const char** jack_get_ports(jack_client_t*, const char*, const char*, unsigned long) { return nullptr; }
int jack_connect(jack_client_t*, const char*, const char*) { return 0; }
int jack_disconnect(jack_client_t*, const char*, const char*) { return 0; }
void jack_free(void*) {}
uint32_t jack_midi_get_event_count(void*) { return 0; }
int jack_midi_event_get(jack_midi_event_t*, void*, uint32_t) { return 1; }
}
