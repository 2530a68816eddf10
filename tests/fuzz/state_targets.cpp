#include <algorithm>
#include <cmath>
#include <memory>

#include "base/random.h"
#include "faces/lv2/lv2_ports.h"
#include "patch/chunk_layout.h"
#include "tests/formats/format_host.h"
#include "tests/fuzz/targets.h"

namespace vantoric::fuzz {

namespace {

using testhost::FormatHost;
using testhost::StreamFault;

constexpr std::size_t headBytes = 8;

// A plug-in, and a state that it always takes.
struct Bench {
    explicit Bench(std::unique_ptr<FormatHost> (*make)()) : host(make()) {
        host->start(48000, 64);
        sound = host->save(4096);
        require(!sound.empty(), "a fresh plug-in has a state");
    }
    std::unique_ptr<FormatHost> host;
    Bytes sound;
};

// As many values as there are ports, or a byte less, of any bits or with the exponents of small numbers; or none.
std::optional<Bytes> portsOf(std::uint8_t kind, std::uint8_t seed) {
    if (kind % 4 == 0) return {};
    if (kind % 4 == 1) return Bytes();
    LinearCongruence random{seed};
    Bytes ports(lv2_face::portParameters().size() * sizeof(float));
    for (std::size_t i = 0; i < ports.size(); ++i)
        ports[i] = i % 4 == 3 && kind < 128 ? 0x3f : static_cast<std::uint8_t>(random.next() >> 24);
    if (kind % 4 == 3) ports.pop_back();
    return ports;
}

StreamFault faultOf(const std::uint8_t* head) {
    StreamFault fault;
    fault.kind = static_cast<StreamFault::Kind>(head[0] % 5);
    fault.at = static_cast<std::size_t>(head[1] | head[2] << 8);
    fault.ports = portsOf(head[3], head[4]);
    fault.type = head[4];
    // Now and then every third piece is of one byte.
    fault.pieces = {head[5], 255, static_cast<std::uint8_t>(head[6] % 8 == 0 ? 0 : 255)};
    return fault;
}

// What is taken can be saved, and is taken again; what is refused has changed nothing; and it plays in any case. A save
// into a broken stream fails or is whole.
void state(Bench& bench, const std::uint8_t* data, std::size_t size) {
    if (size < headBytes) return;
    FormatHost& host = *bench.host;
    const Bytes before = host.save(4096);
    host.setFault(faultOf(data));
    const Bytes broken = host.save(4096);
    require(broken.empty() || broken == before, "what a save calls done is whole");
    const bool isTaken = host.load(chunkOf(data + headBytes, size - headBytes), 4096);
    host.setFault({});
    const Bytes after = host.save(4096);
    require(after.size() >= static_cast<std::size_t>(chunk::fixedSize), "a state can be saved at any time");
    require(isTaken || after == before, "a state that is refused changes nothing");
    require(host.render(64, {testhost::Event::note(3, 60)}).finite(), "it plays");
    require(!isTaken || host.load(after, 4096), "a saved state is taken");
    require(!isTaken || host.save(4096) == after, "a saved state comes back as it is");
    require(host.load(bench.sound, 4096), "a sound state is taken after any other");
}

}  // namespace

#ifdef CLAP_MODULE
void clapState(const std::uint8_t* data, std::size_t size) {
    static Bench bench(testhost::makeClapHost);
    state(bench, data, size);
}
#endif
#ifdef LV2_MODULE
void lv2State(const std::uint8_t* data, std::size_t size) {
    static Bench bench(testhost::makeLv2Host);
    state(bench, data, size);
}
#endif
#ifdef VST3_MODULE
void vst3State(const std::uint8_t* data, std::size_t size) {
    static Bench bench(testhost::makeVst3Host);
    state(bench, data, size);
}
#endif

// Each kind of fault before each of the chunk's own.
std::vector<Bytes> stateSeeds() {
    std::vector<Bytes> seeds;
    int fault = 0;
    for (const Bytes& script : chunkSeeds()) {
        if (script.size() >= 1000) continue;
        const auto kind = static_cast<std::uint8_t>(fault++);
        Bytes seed = {kind, 9, 0, static_cast<std::uint8_t>(kind + 2), 0x40, 70, kind, 0};
        seed.insert(seed.end(), script.begin(), script.end());
        seeds.push_back(seed);
    }
    return seeds;
}

}  // namespace vantoric::fuzz
