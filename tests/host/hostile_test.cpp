// What a plug-in module must bear from a host that knows no manners. Run against each module of this house; the path
// of the module comes from the environment.
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>
#include <xmmintrin.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>
#include <thread>

#include "tests/host/audio_watch.h"
#include "tests/host/plugin_host.h"

using namespace testhost;

// The address sanitizer keeps freed memory for a while and counts itself what is in use; it alone has this function.
extern "C" [[gnu::weak]] size_t __sanitizer_get_current_allocated_bytes();

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinite = std::numeric_limits<float>::infinity();
constexpr int intMax = std::numeric_limits<int>::max();
constexpr int intMin = std::numeric_limits<int>::min();
constexpr float audible = 1e-3f;

std::string pluginPath() {
    const char* const path = std::getenv("VANTORIC_TEST_PLUGIN");
    return path ? path : DEFAULT_PLUGIN;
}

// How far samples may differ between block sizes, for a module whose current sound has parts that move by the block.
// By default not at all, to the bit.
float blockTolerance() {
    const char* const text = std::getenv("VANTORIC_BLOCK_TOLERANCE");
    return text ? std::strtof(text, nullptr) : 0.0f;
}

float largestDifference(const Sound& a, const Sound& b) {
    if (a.left.size() != b.left.size()) return infinite;
    float largest = 0.0f;
    for (std::size_t i = 0; i < a.left.size(); ++i)
        largest = std::max({largest, std::fabs(a.left[i] - b.left[i]), std::fabs(a.right[i] - b.right[i])});
    return largest;
}

// Holds a note until it is heard; false if it is not within half a minute.
bool awaitSound(PluginHost& host) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < end) {
        host.midi(0x90, 60, 100);
        if (host.renderLong(12000, 512).peak() > audible) return true;
        host.midi(0x80, 60, 0);
        host.render(512);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

testing::AssertionResult sane(const Sound& sound) {
    if (!sound.intact) return testing::AssertionFailure() << "wrote outside its buffers";
    if (!sound.finite()) return testing::AssertionFailure() << "left samples unwritten, or NaN or infinite";
    return testing::AssertionSuccess();
}

// Everything a host could ask by number but the end, with empty hands.
void everyOperation(PluginHost& host) {
    for (int op = -1; op <= 100; ++op)
        if (op != wire::opClose) host.call(op);
}

// The same with odd arguments and a real buffer. Two operations stay out: the window (the buffer is none) and the
// chunk, which has a test of its own.
void everyOperationWithNonsense(PluginHost& host, std::mt19937& random) {
    std::vector<int> ops;
    for (int op = -1; op <= 100; ++op)
        if (op != wire::opClose && op != wire::opEditOpen && op != wire::opSetChunk) ops.push_back(op);
    std::shuffle(ops.begin(), ops.end(), random);
    for (int op : ops) {
        for (int index : {-1, 1224, intMax, intMin}) {
            alignas(16) char scratch[4096] = {};
            host.call(op, index, index, scratch, notANumber);
            host.call(op, index, index, nullptr, -infinite);
        }
    }
}

long bytesInUse() {
    if (__sanitizer_get_current_allocated_bytes) return static_cast<long>(__sanitizer_get_current_allocated_bytes());
    std::ifstream statm("/proc/self/statm");
    long total = 0, resident = 0;
    statm >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

class Hostile : public ::testing::Test {
protected:
    const std::string path = pluginPath();
};

// With another instance alive and heard, so that what instances share is loaded.
class Sounding : public Hostile {
protected:
    static void SetUpTestSuite() {
        keeper = new PluginHost(pluginPath());
        keeper->start();
        keeperSounds = awaitSound(*keeper);
    }
    static void TearDownTestSuite() {
        delete keeper;
        keeper = nullptr;
    }
    void SetUp() override { ASSERT_TRUE(keeperSounds) << "no sound from a plain chord"; }
    // Made and started, with time for its threads to come up; nothing is rendered yet.
    std::unique_ptr<PluginHost> fresh(HostAnswers answers = {}) {
        auto host = std::make_unique<PluginHost>(path, std::move(answers));
        host->start();
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        return host;
    }

    static PluginHost* keeper;
    static bool keeperSounds;
};

PluginHost* Sounding::keeper = nullptr;
bool Sounding::keeperSounds = false;

}  // namespace

TEST_F(Hostile, ExportsItsTwoEntryPointsAndNothingElse) {
    EXPECT_EQ(exportedSymbols(path), (std::vector<std::string>{"VSTPluginMain", "main"}));
}

TEST_F(Hostile, MakesNoInstanceWithoutAHost) {
    const Module module(path);
    EXPECT_EQ(module.entry("VSTPluginMain")(nullptr), nullptr);
    EXPECT_EQ(module.entry("main")(nullptr), nullptr);
}

TEST_F(Hostile, IsAStereoInstrumentByEitherEntryPoint) {
    for (const char* entry : {"VSTPluginMain", "main"}) {
        PluginHost host(path, {}, entry);
        const wire::Effect& effect = *host.effect();
        EXPECT_EQ(effect.magic, wire::magic);
        EXPECT_EQ(effect.inputs, 0);
        EXPECT_EQ(effect.outputs, 2);
        EXPECT_EQ(effect.programs, 1);
        EXPECT_GT(effect.parameters, 0);
        const int wanted = wire::synth | wire::canReplace | wire::chunks;
        EXPECT_EQ(effect.flags & ~wire::hasEditor, wanted);
        EXPECT_NE(effect.identifier, 0);
        EXPECT_EQ(effect.latency, 0);
        EXPECT_NE(effect.accumulate, nullptr);
        EXPECT_EQ(host.call(wire::opInterfaceVersion), 2400);
        EXPECT_EQ(host.call(wire::opCategory), 2);
        EXPECT_NE(host.text(wire::opEffectName), "");
        EXPECT_NE(host.text(wire::opVendor), "");
        EXPECT_NE(host.text(wire::opProduct), "");
        char events[] = "receiveVstMidiEvent", unknown[] = "playTheTuba";
        EXPECT_EQ(host.call(wire::opCanDo, 0, 0, events), 1);
        EXPECT_NE(host.call(wire::opCanDo, 0, 0, unknown), 1);
    }
}

TEST_F(Hostile, TextsStayWithinTheirLength) {
    PluginHost host(path);
    host.open();
    for (int i = 0; i < host.effect()->parameters; ++i) {
        EXPECT_LE(host.text(wire::opParameterName, i).size(), 8u) << i;
        EXPECT_LE(host.text(wire::opParameterDisplay, i).size(), 8u) << i;
        EXPECT_LE(host.text(wire::opParameterLabel, i).size(), 8u) << i;
    }
    std::string longName(200, 'n');
    host.call(wire::opSetProgramName, 0, 0, longName.data());
    EXPECT_LE(host.text(wire::opProgramName).size(), 27u);
    EXPECT_LE(host.text(wire::opIndexedName).size(), 27u);
    EXPECT_LE(host.text(wire::opEffectName).size(), 32u);
    EXPECT_LE(host.text(wire::opVendor).size(), 64u);
    EXPECT_LE(host.text(wire::opProduct).size(), 64u);
}

TEST_F(Hostile, OutputsAreDescribedAndNoOthers) {
    PluginHost host(path);
    wire::Pin pin{};
    for (int i : {0, 1}) {
        EXPECT_EQ(host.call(wire::opOutput, i, 0, &pin), 1);
        EXPECT_EQ(pin.flags, 3);
        EXPECT_NE(std::string(pin.label, strnlen(pin.label, sizeof pin.label)), "");
    }
    for (int i : {-1, 2, intMax}) EXPECT_EQ(host.call(wire::opOutput, i, 0, &pin), 0);
    EXPECT_EQ(host.call(wire::opInput, 0, 0, &pin), 0);
}

TEST_F(Hostile, AsksForEventsWhenSwitchedOn) {
    PluginHost host(path);
    host.open();
    const int before = host.timesEventsWanted();
    host.on();
    EXPECT_GT(host.timesEventsWanted(), before);
}

TEST_F(Hostile, OperationsInAnyOrderAndState) {
    std::mt19937 random(1);
    PluginHost host(path);
    everyOperation(host);  // before it is opened
    everyOperationWithNonsense(host, random);
    host.open();
    everyOperation(host);
    host.on();
    everyOperation(host);
    EXPECT_TRUE(sane(host.render(256)));
    everyOperationWithNonsense(host, random);
    host.off();
    everyOperation(host);
    EXPECT_TRUE(sane(host.render(256))) << "a block while switched off";
    host.call(wire::opEditClose);
    everyOperation(host);
    host.open();  // a second time
    host.on();
    host.on();
    EXPECT_TRUE(sane(host.render(256)));
    host.off();
    host.off();
}

TEST_F(Hostile, ClosedWithoutBeingOpened) {
    for (int i = 0; i < 3; ++i) PluginHost host(path);
}

TEST_F(Hostile, BlocksOfAnySize) {
    PluginHost host(path);
    host.start();
    host.midi(0x90, 60, 100);
    for (int frames : {0, 1, 0, 2, 3, 7, 64, 63, 65, 0, 1023, 4096, 4097, 12345, 1, 32767, 32768, 5, 128})
        EXPECT_TRUE(sane(host.render(frames))) << frames;
    std::mt19937 random(2);
    for (int i = 0; i < 60; ++i) {
        const int frames = static_cast<int>(random() % (i % 10 == 0 ? 32769 : 700));
        host.midi(i % 2 ? 0x80 : 0x90, 40 + i % 40, 100, frames ? static_cast<int>(random() % frames) : 0);
        EXPECT_TRUE(sane(host.render(frames))) << frames;
    }
}

TEST_F(Hostile, AnyRateSensibleOrNot) {
    PluginHost host(path);
    host.start();
    const float rates[] = {44100,      8000,  11025,    192000, 48001,     96000,  0,     -1,    499, 500,   -48000,
                           notANumber, 48000, infinite, 1e9f,   -infinite, 1e-30f, 1e38f, 88200, 1,   22050, 32000};
    for (const bool switchedOff : {true, false}) {
        for (const float rate : rates) {
            if (switchedOff) host.off();
            host.setRate(rate);
            if (switchedOff) host.on();
            host.midi(0x90, 60, 100);
            for (int frames : {1, 512, 2000}) EXPECT_TRUE(sane(host.render(frames))) << rate << " Hz, " << frames;
            host.midi(0x80, 60, 0);
        }
    }
}

TEST_F(Hostile, EventsWithWildOffsetsAndOrder) {
    PluginHost host(path);
    host.start();
    for (int offset : {-1, intMin, 512, 513, 100000, intMax, 511, 0, 300, 7}) {
        host.midi(0x90, 60 + offset % 12, 100, offset);
        host.midi(0x80, 60 + offset % 12, 0, -(offset / 2));
    }
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(sane(host.render(512)));
}

TEST_F(Hostile, HundredsOfEventsInOneBlock) {
    PluginHost host(path);
    host.start();
    for (int count : {256, 257, 300, 2000}) {
        for (int i = 0; i < count; ++i) host.midi(i % 2 ? 0x80 : 0x90, i % 128, 90, i % 512);
        EXPECT_TRUE(sane(host.render(512))) << count;
        EXPECT_TRUE(sane(host.render(512))) << count;
    }
}

TEST_F(Hostile, RandomMidiBytes) {
    PluginHost host(path);
    host.start();
    std::mt19937 random(3);
    for (int block = 0; block < 40; ++block) {
        for (int i = 0; i < 50; ++i) {
            const unsigned bits = random();
            host.midi(bits & 0xFF, bits >> 8 & 0xFF, bits >> 16 & 0xFF, static_cast<int>(bits >> 24));
        }
        EXPECT_TRUE(sane(host.render(256)));
    }
}

TEST_F(Hostile, SysexUnknownKindsNullsAndEmptyLists) {
    PluginHost host(path);
    host.start();
    char dump[] = "\xF0\x7E\x7F\x09\x01\xF7";
    wire::SysEx full, empty, negative;
    full.dumpBytes = 6;
    full.dump = dump;
    negative.dumpBytes = -6;
    wire::Midi note, unknown, shortOne;
    note.data[0] = 0x90;
    note.data[1] = 60;
    note.data[2] = 100;
    unknown.kind = 99;
    shortOne.bytes = -1;
    host.sendEvents({&full, nullptr, &note, &empty, &unknown, nullptr, &negative, &shortOne});
    EXPECT_TRUE(sane(host.render(256)));
    host.sendEvents({});
    host.sendEvents({nullptr, nullptr});
    host.sendEvents({&note}, 0);
    host.sendEvents({&note}, -1);
    host.sendEvents({&note}, intMin);
    host.call(wire::opEvents);
    EXPECT_TRUE(sane(host.render(256)));
}

TEST_F(Hostile, ParametersAndValuesOutOfRange) {
    PluginHost host(path);
    host.start();
    const int count = host.effect()->parameters;
    for (int index : {-1, intMin, count, count + 1, 1224, intMax}) {
        host.setParameter(index, 0.5f);
        if (index < 0 || index >= count) {
            EXPECT_EQ(host.parameter(index), 0.0f);
        }
        for (wire::i32 op : {wire::opParameterName, wire::opParameterLabel, wire::opParameterDisplay, wire::opAutomatable})
            host.text(op, index);
    }
    for (int i = 0; i < count; ++i) {
        for (float value : {notANumber, infinite, -infinite, 2.0f, -1.0f, 1e38f, 1e-40f}) {
            host.setParameter(i, value);
            const float kept = host.parameter(i);
            EXPECT_TRUE(kept >= 0.0f && kept <= 1.0f) << i << " given " << value << " holds " << kept;
        }
        host.text(wire::opParameterDisplay, i);
    }
    host.midi(0x90, 60, 100);
    EXPECT_TRUE(sane(host.renderLong(4096, 512)));
}

TEST_F(Hostile, RandomParametersStayFinite) {
    PluginHost host(path);
    host.start();
    std::mt19937 random(4);
    std::uniform_real_distribution<float> value(0.0f, 1.0f);
    for (int round = 0; round < 6; ++round) {
        for (int i = 0; i < host.effect()->parameters; ++i) host.setParameter(i, value(random));
        for (int key : {36, 60, 84}) host.midi(0x90, key, 120);
        EXPECT_TRUE(sane(host.renderLong(6000, 500))) << "round " << round;
        for (int key : {36, 60, 84}) host.midi(0x80, key, 0);
        EXPECT_TRUE(sane(host.render(500)));
    }
}

TEST_F(Hostile, NullAndNegativeBlocks) {
    PluginHost host(path);
    host.start();
    wire::Effect* const effect = host.effect();
    effect->render(effect, nullptr, nullptr, 64);
    effect->renderDouble(effect, nullptr, nullptr, 64);
    effect->accumulate(effect, nullptr, nullptr, 64);
    const GuardedBuffer<float> left(64);
    float* onlyLeft[2] = {left.data(), nullptr};
    effect->render(effect, nullptr, onlyLeft, 64);
    float* both[2] = {left.data(), left.data()};
    for (int frames : {-1, intMin}) effect->render(effect, nullptr, both, frames);
    effect->render(effect, nullptr, both, 64);
    EXPECT_TRUE(std::isfinite(left.data()[63]));
    EXPECT_TRUE(left.fenceIntact());
}

TEST_F(Hostile, LeavesTheFloatingPointModeAsItWas) {
    PluginHost host(path);
    host.start();
    host.midi(0x90, 60, 100);
    const unsigned before = _mm_getcsr();
    host.render(2048);
    constexpr unsigned stickyFlags = 0x3F;
    EXPECT_EQ(_mm_getcsr() & ~stickyFlags, before & ~stickyFlags);
}

TEST_F(Hostile, AHostThatAnswersNothingOrNonsense) {
    HostAnswers silent;
    silent.silent = true;
    PluginHost mute(path, silent);
    mute.start();
    mute.midi(0x90, 60, 100);
    EXPECT_TRUE(sane(mute.renderLong(4096, 512)));

    PluginHost host(path);
    host.start();
    const double odd[] = {notANumber, infinite, -infinite, -1.0, 0.0, 1e300, -1e300, 1e-300};
    for (double tempo : odd) {
        for (double quarters : odd) {
            host.answers().time.tempo = tempo;
            host.answers().time.quarters = quarters;
            host.midi(0x90, 60, 100);
            EXPECT_TRUE(sane(host.render(600))) << tempo << " " << quarters;
        }
    }
    host.answers().time.flags = 0;
    EXPECT_TRUE(sane(host.render(512)));
}

TEST_F(Hostile, AnEditorIsThereOrSaidNotToBe) {
    PluginHost host(path);
    host.open();
    wire::Rect* rect = nullptr;
    const wire::word answer = host.call(wire::opEditRect, 0, 0, &rect);
    EXPECT_EQ(host.call(wire::opEditOpen, 0, 0, nullptr), 0) << "no parent window";
    if (host.effect()->flags & wire::hasEditor) {
        ASSERT_NE(rect, nullptr);
        EXPECT_GT(rect->right, rect->left);
        EXPECT_GT(rect->bottom, rect->top);
    } else {
        EXPECT_EQ(answer, 0);
        int window = 0;
        EXPECT_EQ(host.call(wire::opEditOpen, 0, 0, &window), 0);
    }
    host.call(wire::opEditIdle);
    host.call(wire::opEditClose);
}

TEST_F(Hostile, OpenedAndClosedAHundredTimes) {
    const auto once = [this] {
        PluginHost host(path);
        host.start();
        host.midi(0x90, 60, 100);
        host.render(256);
        host.chunk();
        host.off();
    };
    for (int i = 0; i < 20; ++i) once();
    const long before = bytesInUse();
    for (int i = 0; i < 80; ++i) once();
    EXPECT_LT(bytesInUse() - before, 16L << 20) << "memory grows from instance to instance";
}

TEST_F(Sounding, CorruptChunksLeaveItAliveAndAGoodOneRestoresIt) {
    const auto host = fresh();
    const std::vector<unsigned char> good = host->chunk();
    ASSERT_FALSE(good.empty());
    std::mt19937 random(5);
    const auto tryChunk = [&](const std::vector<unsigned char>& data) {
        host->setChunk(data, random() & 1);
        host->midi(0x90, 60, 100);
        EXPECT_TRUE(sane(host->renderLong(2048, 512)));
    };
    alignas(16) char bytes[16] = {};
    host->call(wire::opSetChunk, 1, 55169, nullptr);
    host->call(wire::opSetChunk, 1, -1, bytes);
    host->call(wire::opSetChunk, 1, wire::word(1) << 40, bytes);
    host->call(wire::opGetChunk, 1, 0, nullptr);
    EXPECT_TRUE(sane(host->render(512)));

    for (std::size_t size : {std::size_t(1), good.size() / 2, good.size() - 1}) tryChunk({good.begin(), good.begin() + size});
    for (int i = 0; i < 3; ++i) {
        std::vector<unsigned char> noise(good.size() + static_cast<std::size_t>(i) * 1000);
        for (unsigned char& byte : noise) byte = static_cast<unsigned char>(random());
        tryChunk(noise);
    }
    for (int i = 0; i < 12; ++i) {
        std::vector<unsigned char> spoilt = good;
        const std::size_t changes = i < 6 ? 20 : spoilt.size() / 2;
        for (std::size_t n = 0; n < changes; ++n) spoilt[random() % spoilt.size()] = static_cast<unsigned char>(random());
        tryChunk(spoilt);
    }
    std::vector<unsigned char> longer = good;
    longer.resize(good.size() + 100000, 0xFF);
    tryChunk(longer);
    tryChunk(std::vector<unsigned char>(good.size(), 0xFF));
    tryChunk(std::vector<unsigned char>(good.size(), 0x00));

    host->setChunk(good);
    EXPECT_EQ(host->chunk().size(), good.size());
    EXPECT_TRUE(awaitSound(*host)) << "still dumb after a good chunk";
}

TEST_F(Sounding, AChunkCarriesTheParameters) {
    const auto first = fresh(), second = fresh();
    std::mt19937 random(6);
    for (int i = 0; i < first->effect()->parameters; ++i) first->setParameter(i, static_cast<float>(random() % 1000) / 1000.0f);
    first->setChunk(first->chunk());  // settles what a patch does not keep, such as half a matrix row
    second->setChunk(first->chunk());
    for (int i = 0; i < first->effect()->parameters; ++i) EXPECT_EQ(second->parameter(i), first->parameter(i)) << i;
}

TEST_F(Sounding, SoundReturnsAfterNonsense) {
    const auto host = fresh();
    for (float rate : {0.0f, -1.0f, notANumber, 1e9f}) {
        host->setRate(rate);
        host->render(1000);
        host->setRate(48000.0f);
        EXPECT_TRUE(awaitSound(*host)) << "after a rate of " << rate;
    }
    host->off();
    host->on();
    EXPECT_TRUE(awaitSound(*host));
}

TEST_F(Sounding, TheSameSoundWhateverTheBlockSize) {
    constexpr int frames = 30000;
    const float tolerance = blockTolerance();
    Sound reference;
    for (int blockSize : {512, 1, 64, 333, 1024, frames}) {
        const auto host = fresh();
        host->midi(0x90, 60, 100);
        host->midi(0x90, 67, 80);
        const Sound sound = host->renderLong(frames, blockSize);
        EXPECT_GT(sound.peak(), audible);
        if (reference.left.empty()) reference = sound;
        if (tolerance > 0.0f)
            EXPECT_LE(largestDifference(sound, reference), tolerance) << "blocks of " << blockSize;
        else
            EXPECT_TRUE(sound == reference) << "blocks of " << blockSize;
    }
}

TEST_F(Sounding, DoubleBlocksHoldTheFloatOnes) {
    const auto single = fresh(), twofold = fresh();
    for (PluginHost* host : {single.get(), twofold.get()}) host->midi(0x90, 60, 100);
    EXPECT_EQ(twofold->call(wire::opPrecision, 0, 1), 1);
    for (int block = 0; block < 20; ++block) {
        const Sound a = single->render(512);
        const DoubleSound b = twofold->renderDouble(512);
        EXPECT_TRUE(b.intact);
        for (std::size_t i = 0; i < 512; ++i) {
            ASSERT_EQ(static_cast<double>(a.left[i]), b.left[i]) << block << ":" << i;
            ASSERT_EQ(static_cast<double>(a.right[i]), b.right[i]) << block << ":" << i;
        }
    }
}

TEST_F(Sounding, TwoInstancesDoNotHearEachOther) {
    const auto alone = fresh();
    alone->midi(0x90, 60, 100);
    const Sound wanted = alone->renderLong(10000, 500);
    const auto one = fresh();
    auto other = fresh();
    one->midi(0x90, 60, 100);
    Sound sound;
    for (int block = 0; block < 20; ++block) {
        if (other) {
            other->midi(0x90, 30 + block, 120);
            other->setParameter(block % other->effect()->parameters, 0.9f);
            other->render(77);
        }
        if (block == 10) other.reset();
        sound.append(one->render(500));
    }
    EXPECT_TRUE(sound == wanted);
    EXPECT_GT(wanted.peak(), audible);
}

TEST_F(Sounding, ThreadsAtOnce) {
    const auto host = fresh();
    const std::vector<unsigned char> good = host->chunk();
    std::atomic<bool> done{false};
    std::atomic<int> blocks{0};
    bool allSane = true;
    std::thread audio([&] {
        for (int i = 0; !done; ++i) {
            host->midi(i % 3 ? 0x90 : 0x80, 40 + i % 40, 100, i % 100);
            allSane = static_cast<bool>(sane(host->render(1 + i * 37 % 700))) && allSane;
            ++blocks;
        }
    });
    std::thread automation([&] {
        std::mt19937 random(7);
        while (!done) {
            const int index = static_cast<int>(random() % static_cast<unsigned>(host->effect()->parameters));
            host->setParameter(index, static_cast<float>(random() % 1001) / 1000.0f);
            host->parameter(index);
        }
    });
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(1500);
    for (int i = 0; std::chrono::steady_clock::now() < end; ++i) {
        EXPECT_EQ(host->chunk().empty(), false);
        if (i % 5 == 0) host->setChunk(good);
        host->text(wire::opProgramName);
        host->text(wire::opParameterDisplay, i % host->effect()->parameters);
        host->text(wire::opParameterName, i % host->effect()->parameters);
        host->call(wire::opEditIdle);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    done = true;
    audio.join();
    automation.join();
    EXPECT_TRUE(allSane);
    EXPECT_GT(blocks, 10);
}

TEST_F(Sounding, TheAudioThreadTakesNoMemoryNoLockAndMakesNoSystemCall) {
    if (!AudioWatch::available()) GTEST_SKIP() << "sanitizers bring their own allocator";
    if (!AudioWatch::seesSystemCalls()) GTEST_LOG_(WARNING) << "this kernel does not show system calls";
    const auto host = fresh();
    wire::Effect* const effect = host->effect();
    const GuardedBuffer<float> left(4096), right(4096);
    const GuardedBuffer<double> wideLeft(4096), wideRight(4096);
    float* outputs[2] = {left.data(), right.data()};
    double* wideOutputs[2] = {wideLeft.data(), wideRight.data()};
    host->render(64);  // what the loader binds at first use is bound
    AudioWatch::clearCounts();
    std::mt19937 random(8);
    for (int block = 0; block < 150; ++block) {
        struct {
            std::int64_t count = 3, nothing = 0;
            void* events[3];
        } list;
        wire::Midi events[3];
        for (int i = 0; i < 3; ++i) {
            const unsigned bits = random();
            events[i].data[0] = static_cast<unsigned char>(bits % 2 ? 0x90 : 0x80 + (bits >> 4) % 7 * 16);
            events[i].data[1] = bits >> 8 & 0x7F;
            events[i].data[2] = bits >> 16 & 0x7F;
            events[i].offset = static_cast<int>(bits >> 24);
            list.events[i] = &events[i];
        }
        const int frames = static_cast<int>(random() % 2000);
        const AudioWatch watch;
        effect->dispatch(effect, wire::opEvents, 0, 0, &list, 0.0f);
        for (int i = 0; i < 5; ++i) effect->setParameter(effect, block * 5 + i, 0.3f);
        if (block % 10 == 9)
            effect->renderDouble(effect, nullptr, wideOutputs, frames);
        else
            effect->render(effect, nullptr, outputs, frames);
    }
    EXPECT_EQ(AudioWatch::allocations(), 0);
    EXPECT_EQ(AudioWatch::releases(), 0);
    EXPECT_EQ(AudioWatch::locks(), 0);
    EXPECT_EQ(AudioWatch::systemCalls(), 0) << "the last was number " << AudioWatch::lastSystemCall();
}

// That the watch sees what it is to see.
TEST(Watch, SeesMemoryLocksAndSystemCalls) {
    if (!AudioWatch::available()) GTEST_SKIP() << "sanitizers bring their own allocator";
    const bool seesCalls = AudioWatch::seesSystemCalls();
    AudioWatch::clearCounts();
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    long parent = 0;
    {
        const AudioWatch watch;
        int* volatile memory = new int(1);
        delete memory;
        pthread_mutex_lock(&mutex);
        pthread_mutex_unlock(&mutex);
        parent = getppid();
    }
    EXPECT_EQ(AudioWatch::allocations(), 1);
    EXPECT_EQ(AudioWatch::releases(), 1);
    EXPECT_EQ(AudioWatch::locks(), 1);
    EXPECT_EQ(parent, getppid());
    EXPECT_EQ(AudioWatch::systemCalls(), seesCalls ? 1 : 0);
    AudioWatch::clearCounts();
    free(malloc(1));
    EXPECT_EQ(AudioWatch::allocations(), 0) << "nothing is counted without a watch";
}
