#include "apps/render/report.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

namespace vantoric::render {

Meter::Meter(double rate) : state_(ebur128_init(2, static_cast<unsigned long>(rate), EBUR128_MODE_I)) {}
Meter::~Meter() = default;

void Meter::Free::operator()(ebur128_state* state) const { ebur128_destroy(&state); }

void Meter::hear(const float* samples, int frames) {
    for (int i = 0; i < 2 * frames; ++i) peak_ = std::max(peak_, static_cast<double>(std::fabs(samples[i])));
    if (state_) ebur128_add_frames_float(state_.get(), samples, static_cast<std::size_t>(frames));
}

double Meter::peakDecibels() const { return peak_ > 0.0 ? 20.0 * std::log10(peak_) : -std::numeric_limits<double>::infinity(); }

double Meter::loudness() const {
    double loudness = 0.0;
    if (!state_ || ebur128_loudness_global(state_.get(), &loudness) != EBUR128_SUCCESS)
        return -std::numeric_limits<double>::infinity();
    return loudness;
}

std::string clockText(double seconds) {
    const auto tenths = static_cast<long long>(std::floor(std::max(0.0, seconds) * 10.0 + 0.5));
    char text[40];
    std::snprintf(text, sizeof text, "%lld:%02lld.%lld", tenths / 600, tenths / 10 % 60, tenths % 10);
    return text;
}

std::string levelText(double decibels, const char* unit) {
    if (!std::isfinite(decibels)) return "silence";
    char text[64];
    std::snprintf(text, sizeof text, "%.1f %s", decibels, unit);
    return text;
}

ProgressLine::ProgressLine(bool wanted) : wanted_(wanted), terminal_(isatty(STDERR_FILENO) != 0) {}

ProgressLine::~ProgressLine() {
    if (shown_ && terminal_) std::fprintf(stderr, "\r%60s\r", "");
}

bool ProgressLine::isDue(bool& started) {
    const auto now = Clock::now();
    if (!std::exchange(started, true)) {
        start_ = now;
        next_ = now + std::chrono::seconds(2);
    }
    if (!wanted_ || now < next_) return false;
    next_ = now + (terminal_ ? std::chrono::milliseconds(200) : std::chrono::milliseconds(5000));
    return true;
}

void ProgressLine::show(const std::string& text) {
    shown_ = true;
    std::fprintf(stderr, "%s%s%s", terminal_ ? "\r" : "", text.c_str(), terminal_ ? "   " : "\n");
    std::fflush(stderr);
}

void ProgressLine::update(std::int64_t done, std::int64_t expected) {
    loading_ = false;
    if (!isDue(rendering_)) return;
    const double part =
        std::clamp(static_cast<double>(done) / static_cast<double>(std::max<std::int64_t>(1, expected)), 1e-6, 1.0);
    char text[64];
    std::snprintf(text, sizeof text, "rendering: %3.0f%%, ", 100.0 * part);
    show(text + clockText(elapsed() * (1.0 - part) / part) + " left");
}

void ProgressLine::loading() {
    rendering_ = false;
    if (isDue(loading_)) show("loading the plug-in: " + clockText(elapsed()));
}

}  // namespace vantoric::render
