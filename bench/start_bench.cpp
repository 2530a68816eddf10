// What an instance costs before it has played anything: time to the first sound, and the memory of the first three
// instances of a process. bench-start [MODULE [RUNS]]; MODULE is the plug-in, without it the one in dist-data beside the
// program, whose folder holds the wave banks. Each run is a process of its own. Linux only: memory is what
// /proc/self/smaps tells. Behind the table stand the aims, and which are missed.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "apps/render/plugin.h"
#include "base/engine_state.h"
#include "effects/multieffect.h"
#include "platform/thread.h"
#include "sound/wave_store.h"
#include "voice/layer.h"

#include "thread_time.h"

namespace {

constexpr int instances = 3;
constexpr int blockFrames = 256;
constexpr double hostRate = 48000.0;
constexpr double soundAim = 60;                        // milliseconds to the first sound of the first instance
constexpr double firstMemoryAim = 60, memoryAim = 12;  // MiB before it sounds, of the first and of further ones
constexpr int settleMilliseconds = 700;                // after which the worker has long done what a start asks of it

double now() { return bench::seconds(CLOCK_MONOTONIC); }

long minorFaults() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_minflt;
}

// Resident memory in KiB by what it is mapped from.
struct Memory {
    long banks = 0, code = 0, own = 0;

    long all() const { return banks + code + own; }
    static Memory now() {
        Memory memory;
        long* kind = &memory.own;
        std::ifstream maps("/proc/self/smaps");
        for (std::string line; std::getline(maps, line);) {
            if (line.rfind("Rss:", 0) == 0) *kind += std::atol(line.c_str() + 4);
            const bool isHeading = line.find('-') < line.find(' ') && line.find(':') > line.find(' ');
            if (!isHeading) continue;
            const bool isFile = line.find('/') != std::string::npos;
            kind = !isFile ? &memory.own : line.ends_with(".va") ? &memory.banks : &memory.code;
        }
        return memory;
    }
    Memory operator-(const Memory& other) const { return {banks - other.banks, code - other.code, own - other.own}; }
};

// What one process saw.
struct Start {
    double milliseconds[instances];  // from the opening to the first sound
    long faults[instances];          // of the thread that renders, up to there
    Memory memory[instances], beforeSound[instances];
    bool sounded;
};

std::vector<vantoric::midi::Message> chord() { return {{0x90, 48, 100}, {0x90, 55, 100}, {0x90, 64, 100}}; }

// Plays until something is heard; false if nothing is for two seconds.
bool playUntilHeard(vantoric::render::PluginHost& host, long& faults) {
    std::vector<vantoric::render::BlockEvent> events;
    for (const auto& message : chord()) events.push_back({0, message});
    std::vector<float> left(blockFrames), right(blockFrames);
    vantoric::render::Transport transport;
    const long before = minorFaults();
    for (int block = 0; block < 2 * hostRate / blockFrames; ++block, events.clear()) {
        host.process(transport, events, blockFrames, left.data(), right.data());
        transport.samplePosition += blockFrames;
        for (const float sample : left)
            if (std::fabs(sample) > 1e-4f) return faults = minorFaults() - before, true;
    }
    return false;
}

Start startHere(const std::string& module) {
    Start start{};
    std::unique_ptr<vantoric::render::PluginHost> hosts[instances];
    start.sounded = true;
    for (int i = 0; i < instances; ++i) {
        const Memory before = Memory::now();
        std::string problem;
        const double opened = now();
        hosts[i] = vantoric::render::PluginHost::load(module, problem);
        if (!hosts[i]) {
            std::fprintf(stderr, "%s: %s\n", module.c_str(), problem.c_str());
            std::exit(1);
        }
        hosts[i]->prepare(hostRate, blockFrames);
        hosts[i]->switchOn();
        const double ready = now();
        vantoric::platform::sleepMilliseconds(settleMilliseconds);
        start.beforeSound[i] = Memory::now() - before;
        const double asked = now();
        start.sounded = playUntilHeard(*hosts[i], start.faults[i]) && start.sounded;
        start.milliseconds[i] = 1e3 * (now() - asked + ready - opened);
        start.memory[i] = Memory::now() - before;
    }
    return start;
}

// In a process of its own, so that every run begins with nothing loaded.
bool measure(const std::string& module, Start& start) {
    int ends[2];
    if (pipe(ends) != 0) return false;
    const pid_t child = fork();
    if (child == 0) {
        const Start seen = startHere(module);
        _exit(write(ends[1], &seen, sizeof seen) == sizeof seen ? 0 : 1);
    }
    close(ends[1]);
    const bool read = child > 0 && ::read(ends[0], &start, sizeof start) == sizeof start;
    close(ends[0]);
    if (child > 0) waitpid(child, nullptr, 0);
    return read;
}

double mib(long kib) { return static_cast<double>(kib) / 1024.0; }

// Resident memory that making `count` of something takes, in KiB each.
template <class Make>
void part(const char* name, int count, Make make) {
    std::vector<decltype(make())> made;
    made.reserve(static_cast<std::size_t>(count));
    const Memory before = Memory::now();
    for (int i = 0; i < count; ++i) made.push_back(make());
    std::printf("%-32s %8.2f MiB\n", name, mib((Memory::now() - before).all()) / count);
}

void aim(const char* what, double value, double most, const char* unit) {
    std::printf("%-44s %7.1f   %4.0f %s %s\n", what, value, most, unit, value <= most ? "" : "missed");
}

void aims(const Start& best) {
    std::puts("\nAims                                        measured    aim");
    aim("first sound of the first instance", best.milliseconds[0], soundAim, "ms");
    aim("memory of the first before it sounds", mib(best.beforeSound[0].all()), firstMemoryAim, "MiB");
    for (int i = 1; i < instances; ++i)
        aim("memory of a further one before it sounds", mib(best.beforeSound[i].all()), memoryAim, "MiB");
}

void parts() {
    using namespace vantoric;
    const EngineState engine;
    RandomSources random;
    WaveStore waves;
    std::puts("\nParts as constructed, resident each");
    part("a layer, all in it", 4, [&] { return std::make_unique<Layer>(0, engine, random, waves, platform::sleepMilliseconds); });
    part("  its voice bank", 4, [&] { return std::make_unique<VoiceBank>(random); });
    part("  an effect slot (9 in all)", 9, [&] { return std::make_unique<Multieffect>(random); });
}

}  // namespace

int main(int argc, char** argv) {
    const std::string program = argv[0];
    const std::string beside = program.substr(0, program.find_last_of('/') + 1) + "dist-data/Vantoric.so";
    const std::string module = argc > 1 ? argv[1] : beside;
    const int runs = argc > 2 ? std::atoi(argv[2]) : 5;
    Start best{};
    for (int run = 0; run < runs; ++run) {
        Start start{};
        if (!measure(module, start)) return 1;
        if (!start.sounded) std::puts("an instance stayed silent");
        if (run == 0) best = start;
        for (int i = 0; i < instances; ++i)
            if (start.milliseconds[i] < best.milliseconds[i]) best.milliseconds[i] = start.milliseconds[i];
    }
    std::puts("Instance  first sound  faults    resident before it sounds / after   (banks, code, own memory)");
    for (int i = 0; i < instances; ++i) {
        const Memory &a = best.beforeSound[i], &b = best.memory[i];
        std::printf("%5d %10.1f ms %7ld %11.1f MiB (%.1f %.1f %.1f) / %.1f MiB (%.1f %.1f %.1f)\n", i + 1, best.milliseconds[i],
                    best.faults[i], mib(a.all()), mib(a.banks), mib(a.code), mib(a.own), mib(b.all()), mib(b.banks), mib(b.code),
                    mib(b.own));
    }
    aims(best);
    parts();
}
