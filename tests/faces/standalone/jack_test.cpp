// On a JACK server: a song played from outside, and what becomes of the program when the server goes.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "apps/render/patch_file.h"
#include "apps/render/render.h"
#include "faces/standalone/jack_library.h"
#include "tests/faces/standalone/program.h"

namespace {

using testhost::Home;
using testhost::Program;
using testhost::Recording;
using vantoric::standalone::JackLibrary;

constexpr int rate = 48000, period = 1024, firstFrame = 100, lastFrame = 96000;

// A server without a card, of a name of its own.
class Server {
public:
    Server() : name_("vantoric-test-" + std::to_string(getpid())) {
        setenv("JACK_DEFAULT_SERVER", name_.c_str(), 1);
        setenv("JACK_NO_START_SERVER", "1", 1);
        start();
    }
    void start() {
        // Synchronous, and patient: a loaded machine loses nothing.
        program_ =
            std::make_unique<Program>(std::vector<std::string>{"jackd", "-n", name_, "-r", "-S", "-t", "60000", "-d", "dummy",
                                                               "-r", std::to_string(rate), "-p", std::to_string(period)});
    }
    bool isThere() { return program_->waitFor("driver is running", 10) || program_->isRunning(); }
    void stop() {
        program_->signal(SIGTERM);
        program_->finish();
    }
    void kill() {
        program_->signal(SIGKILL);
        program_->finish();
    }

private:
    std::string name_;
    std::unique_ptr<Program> program_;
};

bool hasServer() { return std::system("command -v jackd >/dev/null 2>&1") == 0 && JackLibrary::shared() != nullptr; }

// A few bars: chords, a pedal, bends, at frames that fall anywhere in blocks and ticks.
vantoric::midi::File song(std::int64_t leadIn) {
    vantoric::midi::File file;
    file.ticksPerQuarter = rate / 2;  // at 120 a minute a tick is a frame
    const auto add = [&](std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
        file.events.push_back({leadIn + frame, {status, data1, data2}});
    };
    add(0, 0x90, 48, 100);
    add(1, 0x90, 60, 80);
    add(4801, 0xb0, 1, 64);
    add(9607, 0x90, 67, 127);
    add(12000, 0x80, 48, 0);
    add(15555, 0xe0, 0, 90);
    add(20000, 0xb0, 64, 127);
    add(24001, 0x80, 60, 0);
    add(24002, 0x80, 67, 0);
    add(30000, 0x91, 72, 1);
    add(44444, 0xb0, 64, 0);
    add(48000, 0x81, 72, 0);
    add(55555, 0x90, 36, 110);
    add(lastFrame, 0x80, 36, 0);
    file.length = leadIn + lastFrame;
    return file;
}

// A client that plays such a song into the program, from the start of a block on.
class Pianist {
public:
    explicit Pianist(vantoric::midi::File file) : jack_(*JackLibrary::shared()), file_(std::move(file)) {
        void* const library = dlopen("libjack.so.0", RTLD_NOW);
        clear_ = reinterpret_cast<decltype(clear_)>(dlsym(library, "jack_midi_clear_buffer"));
        reserve_ = reinterpret_cast<decltype(reserve_)>(dlsym(library, "jack_midi_event_reserve"));
    }
    ~Pianist() {
        if (client_ != nullptr) jack_.client_close(client_);
    }
    // Once the program is there to be played.
    bool play(double seconds) {
        jack_status_t status{};
        client_ = jack_.client_open("pianist", JackNoStartServer, &status);
        if (client_ == nullptr) return false;
        port_ = jack_.port_register(client_, "out", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
        jack_.set_process_callback(client_, &Pianist::process, this);
        if (jack_.activate(client_) != 0) return false;
        if (jack_.connect(client_, jack_.port_name(port_), "Vantoric:midi_in") != 0) return false;
        testhost::pause(0.3);
        position_ = 0;
        return testhost::within(seconds, [this] { return position_ > file_.length; });
    }

private:
    static int process(jack_nframes_t frames, void* self) {
        static_cast<Pianist*>(self)->send(frames);
        return 0;
    }
    void send(jack_nframes_t frames) {
        void* const buffer = jack_.port_get_buffer(port_, frames);
        clear_(buffer);
        if (position_ < 0) return;
        const std::int64_t from = position_;
        for (; next_ < file_.events.size() && file_.events[next_].tick < from + frames; ++next_) {
            const auto& event = file_.events[next_];
            if (jack_midi_data_t* const bytes = reserve_(buffer, static_cast<jack_nframes_t>(event.tick - from), 3)) {
                bytes[0] = event.message.status;
                bytes[1] = event.message.data1;
                bytes[2] = event.message.data2;
            }
        }
        position_ = from + frames;
    }

    const JackLibrary& jack_;
    vantoric::midi::File file_;
    jack_client_t* client_ = nullptr;
    jack_port_t* port_ = nullptr;
    decltype(&jack_midi_clear_buffer) clear_ = nullptr;
    decltype(&jack_midi_event_reserve) reserve_ = nullptr;
    std::atomic<std::int64_t> position_{-1};
    std::size_t next_ = 0;
};

// The same by the player of songs, as it renders the plug-in.
std::vector<float> rendered(const vantoric::midi::File& file) {
    using namespace vantoric::render;
    std::string problem;
    const auto plugin = PluginHost::load(PLUGIN, problem);
    EXPECT_TRUE(plugin) << problem;
    std::vector<std::uint8_t> chunk;
    EXPECT_TRUE(loadPatch(PATCH_FILE, plugin->uniqueId(), chunk, problem)) << problem;
    EXPECT_TRUE(plugin->setChunk(chunk));
    RenderSettings settings;
    settings.rate = rate;
    settings.block = period;
    settings.tail = 1;
    std::vector<float> samples;
    render(
        *plugin, Song(file), settings, 20,
        [&](const float* block, int frames) {
            samples.insert(samples.end(), block, block + 2 * frames);
            return true;
        },
        [](std::int64_t, std::int64_t) {});
    return samples;
}

class JackTest : public testing::Test {
protected:
    void SetUp() override {
        if (!hasServer()) GTEST_SKIP() << "no jackd here";
        server_ = std::make_unique<Server>();
        ASSERT_TRUE(server_->isThere());
        testhost::pause(0.5);
    }
    Home home_;
    std::unique_ptr<Server> server_;
};

TEST_F(JackTest, ASongSoundsAsItIsRenderedSampleBySample) {
    Program program({PROGRAM, "--no-window", "--sound", "jack", "--patch", PATCH_FILE, "--record", home_ / "take.wav"});
    ASSERT_TRUE(program.waitFor("MIDI: ")) << program.output();
    EXPECT_NE(program.output().find("sound: JACK, 48000 Hz, 1024 frames"), std::string::npos) << program.output();
    {
        Pianist pianist(song(firstFrame));
        ASSERT_TRUE(pianist.play(60));
        testhost::pause(0.5);
    }
    program.signal(SIGTERM);
    EXPECT_EQ(program.finish(), 0) << program.output();
    EXPECT_NE(program.output().find(" 14 MIDI messages"), std::string::npos) << program.output();

    const Recording take = testhost::readRecording(home_ / "take.wav");
    ASSERT_GT(take.frames(), static_cast<std::size_t>(rate));
    ASSERT_GT(take.peak(), 0.01f);
    // The song began with a block of the recording: which one, its first note tells.
    Recording reference{rate, rendered(song(firstFrame))};
    const double blocks = (static_cast<double>(take.onset()) - static_cast<double>(reference.onset())) / period;
    const auto leadIn = std::lround(blocks) * period;
    const std::vector<float> expected = rendered(song(leadIn + firstFrame));
    // Where the last note ends the renderer cuts its blocks in another way, which whispers.
    const auto compared = 2 * static_cast<std::size_t>(leadIn + lastFrame);
    ASSERT_GE(take.samples.size(), compared);
    ASSERT_GE(expected.size(), compared);
    const auto same =
        std::mismatch(take.samples.begin(), take.samples.begin() + static_cast<std::ptrdiff_t>(compared), expected.begin());
    EXPECT_EQ(static_cast<std::size_t>(same.first - take.samples.begin()), compared) << "a lead-in of " << leadIn;
}

TEST_F(JackTest, AServerThatGoesLeavesItSilentUntilItIsBack) {
    Program program({PROGRAM, "--no-window", "--sound", "jack"});
    ASSERT_TRUE(program.waitFor("MIDI: ")) << program.output();
    server_->kill();
    ASSERT_TRUE(program.waitFor("JACK has gone: it goes on silently until sound is back.")) << program.output();
    testhost::pause(1.5);
    EXPECT_TRUE(program.isRunning());
    server_->start();
    ASSERT_TRUE(program.waitFor("Sound is back: JACK, 48000 Hz, 1024 frames")) << program.output();
    server_->stop();  // in good order this time
    ASSERT_TRUE(testhost::within(30, [&] {
        const std::string said = program.output();
        return said.find("JACK has gone", said.find("Sound is back")) != std::string::npos;
    })) << program.output();
    program.signal(SIGTERM);
    EXPECT_EQ(program.finish(), 0) << program.output();
}

}  // namespace
