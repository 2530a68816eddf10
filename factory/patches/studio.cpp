#include "factory/patches/studio.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <numbers>

#include "apps/render/report.h"
#include "base/fft.h"
#include "base/math.h"
#include "platform/module_folder.h"
#include "platform/thread.h"

namespace vantoric::factory {

namespace {

namespace fs = std::filesystem;

constexpr int block = 512;
constexpr double silentLevel = 0.00025;  // -72 dBFS
constexpr int noteOn = 0x90, noteOff = 0x80, controller = 0xb0, modulationWheel = 1;
constexpr double tempo = 120.0;        // quarter notes a minute
constexpr double quietSeconds = 0.75;  // longer than the pauses between the echoes of any patch

// An installation in a folder of its own: the banks are links, so that configuration files of the instrument end
// here and go with it.
void makeInstallation(const fs::path& folder) {
    setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    fs::create_directory(folder / "Vantoric_data");
    fs::create_directory_symlink(fs::path(MADE_FOLDER) / "Vantoric_sounds", folder / "Vantoric_sounds");
    for (const auto& bank : fs::directory_iterator(fs::path(MADE_FOLDER) / "Vantoric_data"))
        if (bank.path().extension() == ".va") fs::create_symlink(bank.path(), folder / "Vantoric_data" / bank.path().filename());
}

double loudest(const Take& take) {
    constexpr std::size_t window = studioRate * 2 / 5, step = studioRate / 10;
    double highest = -100.0;
    for (std::size_t at = 0; at + window <= take.left.size(); at += step) {
        render::Meter meter(studioRate);
        for (std::size_t i = at; i < at + window; ++i) {
            const float pair[] = {take.left[i], take.right[i]};
            meter.hear(pair, 1);
        }
        highest = std::max(highest, meter.loudness());
    }
    return highest;
}

}  // namespace

Studio::Studio() {
    makeInstallation(folder_.path());
    platform::setDataFolder(folder_.path());
    makeInstrument();
}

Studio::~Studio() {
    engine_.reset();
    platform::setDataFolder("");
}

// The worker takes up a request within some milliseconds; the first one waits for the banks as well.
void Studio::waitForWaves() {
    EngineFlags& flags = engine_->flags();
    for (int i = 0; i < 20000; ++i) {
        if (!flags.bootPending.isSet() && !flags.audioMuted.isSet() && !flags.rebuildRequested.isSet() &&
            !flags.rebuildRunning.isSet())
            break;
        platform::sleepMilliseconds(1);
    }
}

// The earlier one goes last, so that the banks stay.
void Studio::makeInstrument() {
    auto made = std::make_unique<Instrument>();
    engine_.swap(made);
    engine_->setSampleRate(studioRate);
    engine_->start();
    waitForWaves();
}

bool Studio::load(const std::string& path) {
    makeInstrument();
    const bool taken = engine_->patchFiles().loadPatchFile(path);
    setChance(0);
    setWheel(0);
    waitForWaves();
    // A new master volume takes a block to arrive.
    Take silence;
    render(silence, 0.05);
    return taken;
}

void Studio::setChance(std::uint32_t number) {
    constexpr std::uint32_t apart = 1u << 24;  // more draws than a take has
    chance_ = {};
    chance_.congruence.skip(number * apart);
    chance_.hash.counter += number * apart;
}

void Studio::turn(int index, float value) {
    engine_->setParameter(index, value);
    waitForWaves();
}

void Studio::send(int status, int data1, int data2) {
    const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
    engine_->receive({0, byte(status), byte(data1), byte(data2)});
}

void Studio::render(Take& take, double seconds) {
    const std::clock_t before = std::clock();
    for (auto blocks = std::max(1L, std::lround(seconds * studioRate / block)); blocks > 0; --blocks) {
        const std::size_t at = take.left.size();
        take.left.resize(at + block);
        take.right.resize(at + block);
        engine_->render(take.left.data() + at, take.right.data() + at, block, {true, tempo, ppqPos_, false});
        ppqPos_ += block * tempo / (60.0 * studioRate);
    }
    take.spent += static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
}

// Until nothing has been heard for a while.
void Studio::renderTail(Take& take, double seconds) {
    const std::size_t end = take.left.size() + static_cast<std::size_t>(seconds * studioRate);
    std::size_t heard = take.left.size();
    while (take.left.size() < end && take.left.size() - heard < static_cast<std::size_t>(quietSeconds * studioRate)) {
        const std::size_t from = take.left.size();
        render(take, static_cast<double>(block) / studioRate);
        for (std::size_t i = from; i < take.left.size(); ++i)
            if (std::max(std::fabs(take.left[i]), std::fabs(take.right[i])) > silentLevel) heard = i;
    }
}

Take Studio::play(const std::vector<int>& keys, int velocity, double held, double tail) {
    engine_->stop();
    engine_->start();
    engine_->random() = chance_;
    ppqPos_ = 0.0;
    Take take;
    send(controller, modulationWheel, wheel_);
    for (const int key : keys) send(noteOn, key, velocity);
    render(take, held);
    const std::size_t released = take.left.size();
    for (const int key : keys) send(noteOff, key, 0);
    renderTail(take, tail);

    take.loudness = loudest(take);
    double sums[2] = {0.0, 0.0};
    const std::size_t end = take.left.size(), last = end - std::min<std::size_t>(end, studioRate / 2);
    std::size_t heard = released;
    for (std::size_t i = 0; i < end; ++i) {
        const float pair[] = {take.left[i], take.right[i]};
        take.finite = take.finite && std::isfinite(pair[0]) && std::isfinite(pair[1]);
        const double size = std::max(std::fabs(pair[0]), std::fabs(pair[1]));
        take.peak = std::max(take.peak, size);
        if (size > silentLevel) heard = std::max(heard, i);
        if (i >= last) take.endPeak = std::max(take.endPeak, size);
        if (i >= released) continue;
        for (int side = 0; side < 2; ++side) sums[side] += static_cast<double>(pair[side]);
    }
    take.offset = std::max(std::fabs(sums[0]), std::fabs(sums[1])) / static_cast<double>(std::max<std::size_t>(1, released));
    take.tailSeconds = static_cast<double>(heard - released) / studioRate;
    return take;
}

// Power of a windowed stretch at single frequencies; the best is refined by ever smaller steps.
std::vector<double> thirdOctaves(const Take& take, int columns, double seconds) {
    constexpr int points = 4096;
    constexpr double lowest = 50.0;  // Hz
    RealFft fft(points);
    std::vector<double> signal(points), re(points / 2 + 1), im(points / 2 + 1), powers;
    const auto bin = [](int edge) { return static_cast<std::size_t>(lowest * std::exp2(edge / 3.0) * points / studioRate); };
    for (int column = 0; column < columns; ++column) {
        const auto start = static_cast<std::size_t>(column * seconds / columns * studioRate);
        for (std::size_t i = 0; i < points; ++i) {
            const double window = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(i) / points);
            const bool there = start + i < take.left.size();
            signal[i] = there ? window * static_cast<double>(take.left[start + i] + take.right[start + i]) : 0.0;
        }
        fft.forward(signal.data(), re.data(), im.data());
        for (int band = 0; band < bandsOfColumn; ++band) {
            const std::size_t from = bin(band), to = std::max(from + 1, bin(band + 1));
            double power = 1e-12;
            for (std::size_t k = from; k < to; ++k) power += re[k] * re[k] + im[k] * im[k];
            powers.push_back(power);
        }
    }
    return powers;
}

double apart(const std::vector<double>& one, const std::vector<double>& other) {
    const double floor =
        1e-4 * std::max(*std::max_element(one.begin(), one.end()), *std::max_element(other.begin(), other.end()));
    double decibels = 0.0, heard = 0.0;
    for (std::size_t i = 0; i < one.size(); ++i) {
        if (std::max(one[i], other[i]) < floor) continue;
        decibels += std::fabs(10.0 * std::log10(std::max(one[i], floor) / std::max(other[i], floor)));
        heard += 1.0;
    }
    return decibels / heard;
}

double fundamental(const std::vector<float>& samples, double start, double seconds, double expected) {
    const auto first = static_cast<std::size_t>(start * studioRate);
    const auto count = static_cast<std::size_t>(seconds * studioRate);
    if (first + count > samples.size()) return 0.0;
    const auto power = [&](double hertz) {
        double re = 0.0, im = 0.0;
        for (std::size_t i = 0; i < count; ++i) {
            const double window = 0.5 - 0.5 * math::cos(2.0 * math::pi * static_cast<double>(i) / static_cast<double>(count));
            const double angle = 2.0 * math::pi * hertz * static_cast<double>(i) / studioRate;
            const double x = window * static_cast<double>(samples[first + i]);
            re += x * math::cos(angle);
            im += x * math::sin(angle);
        }
        return re * re + im * im;
    };
    double best = expected, strongest = power(expected);
    for (double step = 25.0; step >= 0.5; step *= 0.5) {  // cents
        const double centre = best;
        for (int k = -4; k <= 4; ++k) {
            const double hertz = centre * math::exp(k * step / 1731.234);
            if (const double here = power(hertz); here > strongest) strongest = here, best = hertz;
        }
    }
    return strongest > 1e-9 * static_cast<double>(count) * static_cast<double>(count) ? best : 0.0;
}

}  // namespace vantoric::factory
