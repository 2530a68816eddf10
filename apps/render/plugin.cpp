#include "apps/render/plugin.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>

namespace vantoric::render {

namespace {

// The host that a plug-in belongs to while it cannot say so itself: during its construction.
thread_local PluginHost* constructing = nullptr;

constexpr std::size_t textRoom = 512;  // far more than any text is allowed to be

#ifdef _WIN32

void* openModule(const std::filesystem::path& path, std::string& problem) {
    void* const module = LoadLibraryW(path.c_str());
    if (!module) problem = "Windows does not load it: error " + std::to_string(GetLastError());
    return module;
}

void* symbolOf(void* module, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void closeModule(void* module) { FreeLibrary(static_cast<HMODULE>(module)); }

#else

void* openModule(const std::filesystem::path& path, std::string& problem) {
    void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module) problem = dlerror();
    return module;
}

void* symbolOf(void* module, const char* name) { return dlsym(module, name); }

void closeModule(void* module) { dlclose(module); }

#endif

bool hostCan(const char* feature) {
    static constexpr const char* features[] = {"sendVstEvents", "sendVstMidiEvent", "sendVstTimeInfo", "offline"};
    return std::any_of(std::begin(features), std::end(features), [=](const char* known) { return !std::strcmp(known, feature); });
}

}  // namespace

std::unique_ptr<PluginHost> PluginHost::load(const std::string& path, std::string& problem) {
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) return problem = "no such file", nullptr;
    std::unique_ptr<PluginHost> host(new PluginHost);
    // A name without a slash would be looked for in the system's folders.
    host->module_ = openModule(std::filesystem::absolute(path), problem);
    if (!host->module_) return nullptr;
    void* entry = nullptr;
    for (const char* name : vst2::entryNames)
        if (!entry) entry = symbolOf(host->module_, name);
    if (!entry) return problem = "not a VST 2 plug-in: it has no VSTPluginMain", nullptr;

    constructing = host.get();
    vst2::Plugin* plugin = reinterpret_cast<vst2::EntryPoint>(entry)(&PluginHost::callback);
    constructing = nullptr;
    if (!plugin || plugin->magic != vst2::pluginMagic || !plugin->dispatch)
        return problem = "its VSTPluginMain gave no plug-in", nullptr;
    host->plugin_ = plugin;
    plugin->hostData[0] = reinterpret_cast<std::intptr_t>(host.get());
    host->call(vst2::callOpen);
    if (!(plugin->flags & vst2::flagReplacing) || !plugin->processReplacing || plugin->outputs < 1)
        return problem = "it renders no audio", nullptr;
    return host;
}

PluginHost::~PluginHost() {
    if (plugin_) {
        switchOff();
        call(vst2::callClose);
    }
    if (module_) closeModule(module_);
}

std::string PluginHost::name() { return text(vst2::callEffectName, 0); }
std::string PluginHost::vendor() { return text(vst2::callVendor, 0); }

std::string PluginHost::text(std::int32_t opcode, int index) {
    std::array<char, textRoom> room{};
    call(opcode, index, 0, room.data());
    room.back() = '\0';
    return room.data();
}

bool PluginHost::setChunk(std::span<const std::uint8_t> chunk) {
    if (!takesChunks()) return false;
    std::vector<std::uint8_t> copy(chunk.begin(), chunk.end());
    return call(vst2::callSetChunk, 1, static_cast<std::intptr_t>(copy.size()), copy.data()) != 0;
}

void PluginHost::prepare(double rate, int maxBlock) {
    rate_ = rate;
    maxBlock_ = maxBlock;
    call(vst2::callSampleRate, 0, 0, nullptr, static_cast<float>(rate));
    call(vst2::callBlockSize, 0, maxBlock);
    const auto inputs = static_cast<std::size_t>(std::max(0, plugin_->inputs)),
               outputs = static_cast<std::size_t>(plugin_->outputs);
    buffers_.assign(inputs + outputs, std::vector<float>(static_cast<std::size_t>(maxBlock)));
    inputs_.clear();
    outputs_.clear();
    for (std::size_t i = 0; i < buffers_.size(); ++i) (i < inputs ? inputs_ : outputs_).push_back(buffers_[i].data());
}

void PluginHost::switchOn() {
    if (on_) return;
    call(vst2::callSwitch, 0, 1);
    call(vst2::callStartProcess);
    on_ = true;
}

void PluginHost::switchOff() {
    if (!on_) return;
    call(vst2::callStopProcess);
    call(vst2::callSwitch, 0, 0);
    on_ = false;
}

void PluginHost::sendEvents(std::span<const BlockEvent> events) {
    events_.clear();
    for (const BlockEvent& event : events) {
        vst2::MidiEvent& record = events_.emplace_back();
        record.frame = event.frame;
        record.data[0] = event.message.status;
        record.data[1] = event.message.data1;
        record.data[2] = event.message.data2;
    }
    eventList_.assign(2 + std::max<std::size_t>(2, events_.size()), 0);
    auto* list = reinterpret_cast<vst2::EventList*>(eventList_.data());
    list->count = static_cast<std::int32_t>(events_.size());
    for (std::size_t i = 0; i < events_.size(); ++i) eventList_[2 + i] = reinterpret_cast<std::intptr_t>(&events_[i]);
    call(vst2::callEvents, 0, 0, list);
}

void PluginHost::process(const Transport& transport, std::span<const BlockEvent> events, int frames, float* left, float* right) {
    time_ = {};
    time_.samplePosition = transport.samplePosition;
    time_.sampleRate = rate_;
    time_.ppqPosition = transport.ppq;
    time_.tempo = transport.tempo;
    time_.barStart = transport.barStart;
    time_.meterNumerator = transport.numerator;
    time_.meterDenominator = transport.denominator;
    time_.flags = vst2::timePlaying | vst2::timePpqValid | vst2::timeTempoValid | vst2::timeBarsValid | vst2::timeMeterValid |
                  (transport.changed ? vst2::timeChanged : 0);
    processing_ = true;
    if (!events.empty()) sendEvents(events);
    for (auto& buffer : buffers_) std::fill_n(buffer.begin(), frames, 0.0f);
    plugin_->processReplacing(plugin_, inputs_.data(), outputs_.data(), frames);
    processing_ = false;
    std::copy_n(outputs_[0], frames, left);
    std::copy_n(outputs_.size() > 1 ? outputs_[1] : outputs_[0], frames, right);
}

std::intptr_t PluginHost::callback(vst2::Plugin* plugin, std::int32_t opcode, std::int32_t, std::intptr_t, void* pointer, float) {
    PluginHost* host = plugin && plugin->hostData[0] ? reinterpret_cast<PluginHost*>(plugin->hostData[0]) : constructing;
    if (opcode == vst2::hostVersionAsked) return vst2::hostVersion;
    return host ? host->answer(opcode, pointer) : 0;
}

std::intptr_t PluginHost::answer(std::int32_t opcode, void* pointer) {
    auto reply = [pointer](const char* words) {
        if (pointer) std::strcpy(static_cast<char*>(pointer), words);
        return std::intptr_t{1};
    };
    switch (opcode) {
        case vst2::hostTime: return processing_ ? reinterpret_cast<std::intptr_t>(&time_) : 0;
        case vst2::hostSampleRate: return static_cast<std::intptr_t>(rate_);
        case vst2::hostBlockSize: return maxBlock_;
        case vst2::hostProcessLevel: return 4;
        case vst2::hostVendor: return reply("Vantoric");
        case vst2::hostProduct: return reply("vantoric-render");
        case vst2::hostVendorVersion: return 1;
        case vst2::hostCanDo: return pointer && hostCan(static_cast<const char*>(pointer)) ? 1 : 0;
        case vst2::hostLanguage: return 1;
        case vst2::hostWantEvents: return 1;
        default: return 0;
    }
}

}  // namespace vantoric::render
