#include "faces/standalone/jack_library.h"

#include <dlfcn.h>

#include <cstddef>
#include <string>
#include <vector>

namespace vantoric::standalone {
namespace {

void sayNothing(const char*) {}

// Finds one function after the other until one is missing.
class Finder {
public:
    explicit Finder(void* library) : library_(library) {}
    template <class Function>
    void find(Function& function, const char* name) {
        function = reinterpret_cast<Function>(dlsym(library_, (std::string("jack_") + name).c_str()));
        hasAll_ = hasAll_ && function != nullptr;
    }
    bool hasAll() const { return hasAll_; }

private:
    void* library_;
    bool hasAll_ = true;
};

void* open(const std::string& name) { return dlopen(name.c_str(), RTLD_NOW | RTLD_NODELETE); }

// The folders that the loader looks into.
std::vector<std::string> libraryFolders() {
    std::vector<std::string> folders;
    void* const program = dlopen(nullptr, RTLD_NOW);
    Dl_serinfo size;
    if (program == nullptr || dlinfo(program, RTLD_DI_SERINFOSIZE, &size) != 0) return folders;
    std::vector<std::max_align_t> memory(size.dls_size / sizeof(std::max_align_t) + 1);
    auto* const found = reinterpret_cast<Dl_serinfo*>(memory.data());
    *found = size;
    if (dlinfo(program, RTLD_DI_SERINFO, found) != 0) return folders;
    for (unsigned i = 0; i < found->dls_cnt; ++i) folders.emplace_back(found->dls_serpath[i].dls_name);
    return folders;
}

// Where PipeWire's own library is not the system's, it lies in a folder beside it that only `pw-jack` shows to the loader.
void* openOfPipeWire() {
    for (const std::string& folder : libraryFolders())
        if (void* const library = open(folder + "/pipewire-0.3/jack/libjack.so.0")) return library;
    return nullptr;
}

bool load(JackLibrary& jack, void* library) {
    if (library == nullptr) return false;
    Finder finder(library);
    finder.find(jack.client_open, "client_open");
    finder.find(jack.client_close, "client_close");
    finder.find(jack.activate, "activate");
    finder.find(jack.deactivate, "deactivate");
    finder.find(jack.on_shutdown, "on_shutdown");
    finder.find(jack.set_process_callback, "set_process_callback");
    finder.find(jack.set_xrun_callback, "set_xrun_callback");
    finder.find(jack.set_sample_rate_callback, "set_sample_rate_callback");
    finder.find(jack.set_freewheel_callback, "set_freewheel_callback");
    finder.find(jack.set_port_connect_callback, "set_port_connect_callback");
    finder.find(jack.port_by_id, "port_by_id");
    finder.find(jack.set_error_function, "set_error_function");
    finder.find(jack.set_info_function, "set_info_function");
    finder.find(jack.get_sample_rate, "get_sample_rate");
    finder.find(jack.get_buffer_size, "get_buffer_size");
    finder.find(jack.is_realtime, "is_realtime");
    finder.find(jack.port_register, "port_register");
    finder.find(jack.port_name, "port_name");
    finder.find(jack.port_by_name, "port_by_name");
    finder.find(jack.port_connected_to, "port_connected_to");
    finder.find(jack.port_get_aliases, "port_get_aliases");
    finder.find(jack.port_get_buffer, "port_get_buffer");
    finder.find(jack.get_ports, "get_ports");
    finder.find(jack.connect, "connect");
    finder.find(jack.disconnect, "disconnect");
    finder.find(jack.free, "free");
    finder.find(jack.midi_get_event_count, "midi_get_event_count");
    finder.find(jack.midi_event_get, "midi_event_get");
    if (!finder.hasAll()) return false;
    jack.set_error_function(&sayNothing);  // what goes wrong is said in words of the program's own
    jack.set_info_function(&sayNothing);
    return true;
}

}  // namespace

const JackLibrary* JackLibrary::shared() {
    static JackLibrary library{};
    static const bool isLoaded = load(library, open("libjack.so.0"));
    return isLoaded ? &library : nullptr;
}

const JackLibrary* JackLibrary::ofPipeWire() {
    static JackLibrary library{};
    static const bool isLoaded = load(library, openOfPipeWire());
    return isLoaded ? &library : nullptr;
}

}  // namespace vantoric::standalone
