#include "apps/render/mix.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>
#include <sstream>

namespace vantoric::render {

namespace {

bool inRange(const std::string& text, double low, double high, double& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() && value >= low && value <= high;
}

bool instrumentFrom(std::istringstream& words, MixInstrument& instrument, std::string& problem) {
    for (std::string word; words >> word;) {
        const auto equals = word.find('=');
        if (equals == std::string::npos) {
            std::string rest;
            std::getline(words, rest);
            rest.erase(rest.find_last_not_of(" \t\r") + 1);
            instrument.patch = word + rest;
            return true;
        }
        const std::string what = word.substr(0, equals), value = word.substr(equals + 1);
        double number = 0.0;
        bool good = true;
        if (what == "level")
            good = inRange(value, -120.0, 60.0, instrument.level);
        else if (what == "pan")
            good = inRange(value, -100.0, 100.0, instrument.pan);
        else if (what == "track" && (good = inRange(value, 0.0, 65535.0, number)))
            instrument.tracks.push_back(static_cast<int>(number));
        else if (what == "set")
            instrument.settings.push_back(value);
        else if (what != "track")
            good = false;
        if (!good) return problem = "what is \"" + word + "\"?", false;
    }
    return problem = "an instrument without a patch", false;
}

bool take(const std::string& line, Mix& mix, std::string& problem) {
    std::istringstream words(line);
    std::string first, rest;
    if (!(words >> first) || first[0] == ';') return true;
    if (first == "instrument") return instrumentFrom(words, mix.instruments.emplace_back(), problem);
    std::getline(words >> std::ws, rest);
    rest.erase(rest.find_last_not_of(" \t\r") + 1);
    if (first == "song") {
        mix.song = rest;
    } else if (first == "loudness") {
        if (!inRange(rest, -60.0, 0.0, mix.loudness.emplace()))
            return problem = "a loudness is a number of LUFS from -60 to 0", false;
    } else {
        return problem = "what is \"" + first + "\"?", false;
    }
    return true;
}

}  // namespace

bool parseMix(const std::string& text, Mix& mix, std::string& problem) {
    mix = {};
    std::istringstream lines(text);
    std::string line;
    for (int at = 1; std::getline(lines, line); ++at)
        if (!take(line, mix, problem)) return problem = "line " + std::to_string(at) + ": " + problem, false;
    if (mix.song.empty()) return problem = "it names no song", false;
    if (mix.instruments.empty()) return problem = "it names no instrument", false;
    return true;
}

midi::File withTracks(const midi::File& file, const std::vector<int>& tracks) {
    midi::File result = file;
    if (!tracks.empty())
        std::erase_if(result.events, [&](const midi::Event& event) {
            return std::find(tracks.begin(), tracks.end(), event.track) == tracks.end();
        });
    return result;
}

void MixBuffer::add(std::size_t frame, const float* samples, int frames, double level, double pan) {
    const double angle = (pan / 100.0 + 1.0) * std::numbers::pi / 4.0, gain = std::pow(10.0, level / 20.0) * std::numbers::sqrt2;
    const double sides[2] = {gain * std::cos(angle), gain * std::sin(angle)};
    samples_.resize(std::max(samples_.size(), 2 * (frame + static_cast<std::size_t>(frames))));
    double* to = samples_.data() + 2 * frame;
    for (int i = 0; i < 2 * frames; ++i) to[i] += sides[i % 2] * static_cast<double>(samples[i]);
}

}  // namespace vantoric::render
