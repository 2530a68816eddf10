// What is told about a render: progress while it runs, figures at its end.
#pragma once

#include <ebur128.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace vantoric::render {

// Peak and loudness of a stereo signal.
class Meter {
public:
    explicit Meter(double rate);
    ~Meter();
    void hear(const float* samples, int frames);
    double peak() const { return peak_; }  // of full scale
    double peakDecibels() const;           // -inf for silence
    double loudness() const;               // LUFS over the whole (EBU R 128); -inf if too short or too quiet

private:
    struct Free {
        void operator()(ebur128_state* state) const;
    };
    std::unique_ptr<ebur128_state, Free> state_;
    double peak_ = 0.0;
};

// "1:05.2"
std::string clockText(double seconds);
// "-3.2 dBFS", "silence"
std::string levelText(double decibels, const char* unit);

// Shows on standard error how far a render is, once it has lasted two seconds from the first update, and that a plug-in
// is loading: on a terminal as one line that changes, elsewhere as a line every five seconds.
class ProgressLine {
public:
    explicit ProgressLine(bool wanted);
    ~ProgressLine();
    void update(std::int64_t done, std::int64_t expected);
    // While the plug-in loads; the time counts from the first call. The next `update` counts anew.
    void loading();

private:
    using Clock = std::chrono::steady_clock;
    // Whether it is time for a line; starts the clock of a stage.
    bool isDue(bool& started);
    double elapsed() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }
    void show(const std::string& text);

    const bool wanted_, terminal_;
    Clock::time_point start_, next_;  // of the stage's first call
    bool rendering_ = false, loading_ = false, shown_ = false;
};

}  // namespace vantoric::render
