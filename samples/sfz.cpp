#include "samples/sfz.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include "base/math.h"
#include "base/numbers.h"
#include "base/thread_check.h"

namespace vantoric {

namespace {

using Text = std::string_view;

constexpr bool isBlank(char c) { return c == ' ' || c == '\t'; }
constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

Text trimmed(Text text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

// What follows the first place of `word`, if it is there.
std::optional<Text> behind(Text line, Text word) {
    const std::size_t at = line.find(word);
    if (at == Text::npos) return std::nullopt;
    return line.substr(at + word.size());
}

// Up to the next blank.
Text firstWord(Text value) {
    while (!value.empty() && isBlank(value.front())) value.remove_prefix(1);
    return value.substr(0, std::min(value.size(), value.find_first_of(" \t")));
}

std::optional<double> numberOf(Text value) {
    value = firstWord(value);
    if (value.starts_with('+')) value.remove_prefix(1);
    double number = 0.0;
    const auto result = std::from_chars(value.data(), value.data() + value.size(), number);
    if (result.ec != std::errc() || !std::isfinite(number)) return std::nullopt;
    return number;
}

std::int32_t wholeOf(double number, std::int32_t low) { return truncateTo(number, low, 0x7fffffff); }

// ---- opcodes ------------------------------------------------------------------------------------------------

// The path of a sample ends with ".wav", so that blanks in it survive; any other at the next opcode.
Text samplePathOf(Text value) {
    constexpr Text ending = ".wav";
    std::size_t end = Text::npos;
    for (std::size_t at = 0; at + ending.size() <= value.size(); ++at) {
        if (!std::equal(ending.begin(), ending.end(), value.begin() + static_cast<std::ptrdiff_t>(at),
                        [](char a, char b) { return a == lowered(b); }))
            continue;
        const std::size_t behindIt = at + ending.size();
        const bool isEnd = behindIt == value.size() || isBlank(value[behindIt]);
        if (end == Text::npos || isEnd) end = behindIt;
        if (isEnd) break;
    }
    if (end == Text::npos) {
        const std::size_t next = value.find('=');
        if (next != Text::npos) end = value.find_last_of(" \t", next);
    }
    return trimmed(value.substr(0, end));
}

struct Opcode {
    Text word;
    void (*read)(SfzRegion&, Text value);
};

template <auto member>
void readKey(SfzRegion& region, Text value) {
    if (const auto key = sfzKey(firstWord(value))) region.*member = *key;
}

template <auto member>
void readNumber(SfzRegion& region, Text value) {
    if (const auto number = numberOf(value)) region.*member = double{*number};
}

// Of several lines the first that has it.
template <auto member>
void readFirstNumber(SfzRegion& region, Text value) {
    if (!(region.*member)) readNumber<member>(region, value);
}

template <auto member>
void readPosition(SfzRegion& region, Text value) {
    if (const auto number = numberOf(value)) region.*member = wholeOf(*number, 0);
}

void readAllKeys(SfzRegion& region, Text value) {
    if (const auto key = sfzKey(firstWord(value))) region.lokey = region.hikey = region.keyCenter = *key;
}

// Any place of a region that names another round drops it; what its group says counts until the region says it.
void readSequence(SfzRegion& region, Text value) {
    bool isLater = region.isRoundGiven && region.isLaterRound;
    for (std::optional<Text> place = value; place; place = behind(*place, "seq_position="))
        isLater = isLater || firstWord(*place) != "1";
    region.isLaterRound = isLater;
    region.isRoundGiven = true;
}

void readHighVelocity(SfzRegion& region, Text value) {
    if (const auto number = numberOf(value)) region.isLowerLayer = *number < 127.0;
}

void readLowVelocity(SfzRegion& region, Text value) {
    if (const auto number = numberOf(value)) region.lovel = truncateTo(*number, 0, 127);
}

void readPolyphony(SfzRegion& region, Text value) {
    if (const auto number = numberOf(value); number && *number >= 1.0) region.polyphony = wholeOf(*number, 1);
}

template <SfzLoop loop>
void setLoop(SfzRegion& region, Text) {
    region.loop = loop;
}

void setReleaseSound(SfzRegion& region, Text) { region.isReleaseSound = true; }

// In the order in which a line is searched: " key=" before what may correct it.
constexpr Opcode opcodes[] = {
    {"seq_position=", readSequence},
    {"trigger=release", setReleaseSound},
    {"hivel=", readHighVelocity},
    {"lovel=", readLowVelocity},
    {" key=", readAllKeys},
    {"pitch_keycenter=", readKey<&SfzRegion::keyCenter>},
    {"lokey=", readKey<&SfzRegion::lokey>},
    {"hikey=", readKey<&SfzRegion::hikey>},
    {"tune=", readNumber<&SfzRegion::tune>},
    {"volume=", readNumber<&SfzRegion::volume>},
    {"loop_start=", readPosition<&SfzRegion::loopStart>},
    {"loop_end=", readPosition<&SfzRegion::loopEnd>},
    {"offset=", readPosition<&SfzRegion::offset>},
    {"amp_veltrack=", readNumber<&SfzRegion::veltrack>},
    {"ampeg_attack=", readFirstNumber<&SfzRegion::attack>},
    {"ampeg_hold=", readFirstNumber<&SfzRegion::hold>},
    {"ampeg_decay=", readFirstNumber<&SfzRegion::decay>},
    {"ampeg_sustain=", readFirstNumber<&SfzRegion::sustain>},
    {"ampeg_release=", readFirstNumber<&SfzRegion::release>},
    {"loop_mode=no_loop", setLoop<SfzLoop::off>},
    {"loop_mode=one_shot", setLoop<SfzLoop::off>},
    {"loop_mode=loop_continuous", setLoop<SfzLoop::on>},
    {"loop_mode=loop_sustain", setLoop<SfzLoop::on>},
    {"loop_mode=sustain", setLoop<SfzLoop::on>},
    {"polyphony=", readPolyphony},
};

// ---- lines --------------------------------------------------------------------------------------------------

// Calls `take` with each line that is not too long, without its comment and its end.
template <class Take>
void forEachLine(Text text, Take take) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.size(), text.find_first_of("\r\n"));
        const Text line = text.substr(0, end);
        text.remove_prefix(std::min(text.size(), end + 1));
        if (line.size() <= maxSfzLine) take(line.substr(0, std::min(line.size(), line.find("//"))));
    }
}

// With its last separator; empty without one.
std::string defaultPathOf(Text text) {
    std::string path;
    bool isFound = false;
    forEachLine(text, [&](Text line) {
        std::optional<Text> value = behind(line, "default_path=");
        if (isFound || !value) return;
        isFound = true;
        const std::size_t header = value->find('<');
        const Text whole = trimmed(value->substr(0, std::min(value->size(), header)));
        const std::size_t last = whole.find_last_of("\\/");
        if (last != Text::npos) path = whole.substr(0, last + 1);
    });
    return path;
}

// Collects regions from headers and the settings that follow them; each header begins with the settings of
// those above it.
class Collector {
public:
    Collector(SfzFile& file, std::string defaultPath) : file_(file), defaultPath_(std::move(defaultPath)) {}

    void line(Text text) {
        if (trimmed(text).empty()) return;
        ++file_.lines;
        while (!text.empty()) {
            const std::size_t next = text.starts_with('<') ? text.find('<', 1) : text.find('<');
            settings(header(text.substr(0, std::min(text.size(), next))));
            text.remove_prefix(std::min(text.size(), next));
        }
    }

    // Takes the region that is being read, if it is one.
    void finish() {
        const SfzRegion& region = levels_[level_];
        if (level_ != regionLevel || region.sample.empty() || file_.regions.size() >= maxSfzRegions) return;
        if (region.isLaterRound || region.isReleaseSound || region.isLowerLayer) return;
        file_.regions.push_back(region);
        file_.regions.back().sample = defaultPath_ + region.sample;
    }

private:
    enum Level : std::size_t { globalLevel, masterLevel, groupLevel, regionLevel, otherLevel, levelCount };

    // Acts on a header in front and returns what is behind it.
    Text header(Text text) {
        static constexpr struct {
            Text name;
            Level level;
        } headers[] = {{"<global>", globalLevel}, {"<master>", masterLevel}, {"<group>", groupLevel}, {"<region>", regionLevel}};
        if (!text.starts_with('<')) return text;
        for (const auto& known : headers) {
            if (!text.starts_with(known.name)) continue;
            begin(known.level);
            return text.substr(known.name.size());
        }
        begin(otherLevel);  // of no interest: what follows belongs to nothing that sounds
        return text.substr(std::min(text.size(), text.find('>')));
    }

    void begin(Level level) {
        finish();
        level_ = level;
        if (level == groupLevel) ++file_.groups;
        if (level == otherLevel) return;
        for (std::size_t k = level; k < otherLevel; ++k) levels_[k] = k == globalLevel ? SfzRegion() : levels_[k - 1];
        levels_[level].group = file_.groups;
        levels_[level].isRoundGiven = false;
    }

    void settings(Text text) {
        if (level_ == otherLevel) return;
        std::string line = ' ' + std::string(text);
        std::replace(line.begin(), line.end(), '\t', ' ');
        SfzRegion& region = levels_[level_];
        if (const auto value = behind(line, "sample=")) region.sample = samplePathOf(*value);
        for (const Opcode& opcode : opcodes)
            if (const auto value = behind(line, opcode.word)) opcode.read(region, *value);
        for (std::size_t k = level_ + 1; k < otherLevel; ++k) levels_[k] = region;
    }

    SfzFile& file_;
    std::string defaultPath_;
    std::array<SfzRegion, levelCount> levels_;
    Level level_ = globalLevel;
};

// The first region's that has one.
template <class T>
std::optional<T> firstOf(const std::vector<const SfzRegion*>& regions, std::optional<T> SfzRegion::* member) {
    for (const SfzRegion* region : regions)
        if (region->*member) return region->*member;
    return std::nullopt;
}

std::optional<float> timeOf(const std::vector<const SfzRegion*>& regions, std::optional<double> SfzRegion::* member) {
    const std::optional<double> seconds = firstOf(regions, member);
    if (!seconds) return std::nullopt;
    return envelopeOfSeconds(*seconds);
}

double gainOf(const SfzRegion& region) { return math::pow(10.0, clampTo(region.volume, -200.0, 200.0) / 20.0); }

bool lacksKeys(const SfzRegion* region) {
    return region->lokey == sfzKeyNotGiven || region->hikey == sfzKeyNotGiven || region->keyCenter == sfzKeyNotGiven;
}

SfzOscillator oscillatorOf(const SfzRegion& region, std::size_t index, double loudest) {
    const int center = region.keyCenter == sfzKeyNotGiven ? 60 : region.keyCenter;
    SfzOscillator oscillator{};
    oscillator.region = index;
    oscillator.sample = region.sample;
    oscillator.keys = {region.lokey == sfzKeyNotGiven ? 0 : region.lokey, region.hikey == sfzKeyNotGiven ? 127 : region.hikey};
    oscillator.oct = octOfKey(center);
    oscillator.semi = semiOfKey(center);
    oscillator.detune = static_cast<float>(clampUnit(region.tune * 0.005 + 0.5));
    oscillator.vol = static_cast<float>(clampUnit(gainOf(region) / loudest));
    oscillator.offset = region.offset;
    oscillator.loopStart = region.loopStart;
    oscillator.loopEnd = region.loopEnd;
    oscillator.loop = region.loop;
    return oscillator;
}

void chooseOscillators(const std::vector<const SfzRegion*>& regions, SfzPlan& plan) {
    const std::vector<std::size_t> chosen = chooseRegions(regions.size());
    double loudest = 0.0;
    for (const std::size_t index : chosen) loudest = std::max(loudest, gainOf(*regions[index]));
    for (const std::size_t index : chosen) plan.oscillators.push_back(oscillatorOf(*regions[index], index, loudest));
    if (chosen.size() == regions.size()) return;
    std::vector<KeyRange> ranges;
    ranges.reserve(plan.oscillators.size());
    for (const SfzOscillator& oscillator : plan.oscillators) ranges.push_back(oscillator.keys);
    widenKeys(ranges);
    for (std::size_t k = 0; k < ranges.size(); ++k) plan.oscillators[k].keys = ranges[k];
}

}  // namespace

SfzFile parseSfz(Text text) {
    notInsideAnyBlock();
    SfzFile file;
    Collector collector(file, defaultPathOf(text));
    forEachLine(text, [&](Text line) { collector.line(line); });
    collector.finish();
    return file;
}

std::optional<int> sfzKey(Text value) {
    if (value.empty()) return std::nullopt;
    if (isDigit(value.front())) {
        const std::optional<double> number = numberOf(value);
        if (!number || *number > 127.0) return std::nullopt;
        return static_cast<int>(*number);
    }
    static constexpr int steps[] = {9, 11, 0, 2, 4, 5, 7};  // a to g
    const char letter = lowered(value.front());
    if (letter < 'a' || letter > 'g') return std::nullopt;
    int key = steps[letter - 'a'];
    value.remove_prefix(1);
    if (!value.empty() && (value.front() == '#' || lowered(value.front()) == 'b')) {
        key += value.front() == '#' ? 1 : -1;
        value.remove_prefix(1);
    }
    if (value.starts_with('_')) value.remove_prefix(1);
    const bool isLowest = value.starts_with("-1");
    if (value.starts_with('-')) value.remove_prefix(1);
    if (value.empty() || !isDigit(value.front())) return std::nullopt;
    key += 12 * (isLowest ? 0 : value.front() - '0' + 1);
    if (key < 0 || key > 127) return std::nullopt;
    return key;
}

std::vector<std::size_t> chooseRegions(std::size_t count) {
    constexpr std::size_t most = importedOscillators;
    const std::size_t step = count < 2 * most ? 1 : std::min<std::size_t>(count / most, 10);
    const std::size_t chosen = std::min(count, most);
    const std::size_t start = count <= most ? 0 : (count - most * step) / 2 + step / 2;
    std::vector<std::size_t> indices;
    indices.reserve(chosen);
    for (std::size_t k = 0; k < chosen; ++k) indices.push_back(start + k * step);
    return indices;
}

void widenKeys(std::span<KeyRange> ranges) {
    if (ranges.empty()) return;
    for (std::size_t k = 0; k + 1 < ranges.size(); ++k) {
        const int boundary = (ranges[k + 1].low + ranges[k].high) / 2;
        ranges[k].high = std::max(boundary - 1, 0);
        ranges[k + 1].low = boundary;
    }
    ranges.front().low = 0;
    ranges.back().high = 127;
}

float octOfKey(int key) { return static_cast<float>(clampUnit(1.0 - key / 12 * 0.11123471)); }
float semiOfKey(int key) { return static_cast<float>(clampUnit(1.0 - key % 12 * 0.0769823)); }

float envelopeOfSeconds(double seconds) {
    if (!(seconds > 0.0)) return 0.0f;
    return clampUnit(-0.1f * math::log(0.001f / static_cast<float>(clampTo(seconds, 1e-6, 1e6))));
}

int playModeOf(int voices) {
    static constexpr int limits[] = {2, 3, 4, 6, 8, 12, 16, 24, 32, 48};  // from row 2 on
    if (voices <= 1) return 13;
    return 2 +
           static_cast<int>(std::distance(std::begin(limits), std::lower_bound(std::begin(limits), std::end(limits), voices)));
}

SfzPlan planSfz(const SfzFile& file, bool onlyFirstGroup) {
    std::vector<const SfzRegion*> regions;
    for (const SfzRegion& region : file.regions)
        if (!onlyFirstGroup || region.group <= 1) regions.push_back(&region);
    SfzPlan plan;
    plan.regions = regions.size();
    plan.keyInfoMissing = std::any_of(regions.begin(), regions.end(), lacksKeys);
    chooseOscillators(regions, plan);
    plan.attack = timeOf(regions, &SfzRegion::attack);
    plan.hold = timeOf(regions, &SfzRegion::hold);
    plan.decay = timeOf(regions, &SfzRegion::decay);
    plan.release = timeOf(regions, &SfzRegion::release);
    if (const auto sustain = firstOf(regions, &SfzRegion::sustain)) plan.sustain = static_cast<float>(clampUnit(*sustain * 0.01));
    if (const auto depth = firstOf(regions, &SfzRegion::veltrack))
        plan.velocityDepth = static_cast<float>(clampUnit(*depth * 0.01));
    if (const auto voices = firstOf(regions, &SfzRegion::polyphony)) plan.playMode = playModeOf(*voices);
    return plan;
}

}  // namespace vantoric
