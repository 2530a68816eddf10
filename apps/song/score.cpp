#include "apps/song/score.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "apps/midi/midi_file.h"
#include "base/random.h"

namespace vantoric::song {

namespace {

constexpr int quarter = 480, whole = 4 * quarter;
constexpr int controlStep = quarter / 8;  // moving values are sent this often
constexpr int tempoStep = quarter / 2;

struct Word {
    std::string text;
    int line = 0;
};

// Carries the line at which a score makes no sense.
struct Trouble : std::runtime_error {
    Trouble(int at, const std::string& what) : std::runtime_error("line " + std::to_string(at) + ": " + what) {}
};

double number(const Word& word, const std::string& text) {
    double value = 0.0;
    const char* first = text.data() + (text.starts_with('+') ? 1 : 0);
    const auto [end, error] = std::from_chars(first, text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) throw Trouble(word.line, "\"" + text + "\" is not a number");
    return value;
}

int wholeNumber(const Word& word, const std::string& text, int low, int high) {
    const double value = number(word, text);
    if (value != static_cast<int>(value) || value < low || value > high)
        throw Trouble(word.line,
                      "\"" + text + "\" should be a whole number from " + std::to_string(low) + " to " + std::to_string(high));
    return static_cast<int>(value);
}

// "/4.", "/8t", "/1*3" and sums of them; the leading "/" already taken off.
std::int64_t lengthOf(const Word& word, const std::string& text) {
    std::int64_t total = 0;
    std::istringstream terms(text);
    for (std::string term; std::getline(terms, term, '+');) {
        int times = 1;
        if (const auto star = term.find('*'); star != std::string::npos) {
            times = wholeNumber(word, term.substr(star + 1), 1, 1000);
            term.resize(star);
        }
        int numerator = 1, denominator = 1;
        while (!term.empty() && (term.back() == '.' || term.back() == 't')) {
            numerator *= term.back() == '.' ? 3 : 2;
            denominator *= term.back() == '.' ? 2 : 3;
            term.pop_back();
        }
        const int part = wholeNumber(word, term, 1, 64);
        if (whole * numerator % (part * denominator) != 0)
            throw Trouble(word.line, "the length /" + text + " is no whole number of ticks");
        total += std::int64_t{whole} * numerator / (part * denominator) * times;
    }
    if (total <= 0) throw Trouble(word.line, "\"" + word.text + "\" has no length");
    return total;
}

// A value that stands or moves: "80" or "50-90/1*2", also with signs.
struct Motion {
    double from = 0.0, to = 0.0;
    std::int64_t length = 0;

    static Motion parse(const Word& word, const std::string& text) {
        const auto slash = text.find('/');
        if (slash == std::string::npos) {
            const double value = number(word, text);
            return {value, value, 0};
        }
        const auto dash = text.find('-', 1);
        if (dash == std::string::npos || dash > slash)
            throw Trouble(word.line, "\"" + word.text + "\" should move from one value to another");
        return {number(word, text.substr(0, dash)), number(word, text.substr(dash + 1, slash - dash - 1)),
                lengthOf(word, text.substr(slash + 1))};
    }
    double at(std::int64_t elapsed) const {
        if (elapsed >= length) return to;
        return from + (to - from) * static_cast<double>(elapsed) / static_cast<double>(length);
    }
    // Values stay between low and high.
    void check(const Word& word, double low, double high) const {
        if (std::min(from, to) < low || std::max(from, to) > high)
            throw Trouble(word.line, "\"" + word.text + "\" is out of range");
    }
};

// Key number of a note name, or nothing if it is none.
std::optional<int> keyOf(const std::string& name) {
    static const std::map<char, int> steps = {{'c', 0}, {'d', 2}, {'e', 4}, {'f', 5}, {'g', 7}, {'a', 9}, {'b', 11}};
    if (name.size() < 2 || !steps.contains(name[0])) return std::nullopt;
    std::size_t at = 1;
    int key = steps.at(name[0]);
    for (; at < name.size() && (name[at] == '#' || name[at] == 'b'); ++at) key += name[at] == '#' ? 1 : -1;
    if (at + 1 != name.size() || name[at] < '0' || name[at] > '9') return std::nullopt;
    return key + 12 * (name[at] - '0' + 1);
}

struct Score {
    std::string title;
    Advice advice;
    std::map<std::string, std::vector<Word>> phrases;
    std::vector<midi::TempoChange> tempos;
    std::vector<midi::MeterChange> meters;
    std::vector<midi::Track> tracks;
    std::int64_t length = 0;
};

// Plays the words of one part (or of the conductor) into the score.
class Player {
public:
    Player(Score& score, midi::Track* track, int channel) : score_(score), track_(track), channel_(channel) {}

    std::int64_t play(const std::vector<Word>& words, std::int64_t start) {
        time_ = start;
        for (std::size_t at = 0; at < words.size();) at = step(words, at);
        return time_;
    }

private:
    // Plays the word at `at`; returns where the next one stands.
    std::size_t step(const std::vector<Word>& words, std::size_t at) {
        const Word& word = words[at];
        const std::string& text = word.text;
        if (text == "|") return checkBar(word), at + 1;
        if (text == "{") return together(words, at);
        if (text.ends_with("x(")) return repeat(words, at);
        if (text[0] == '@') return phrase(word), at + 1;
        if (text[0] == '[') return chord(words, at);
        if (const auto equals = text.find('='); equals != std::string::npos) {
            setting(word, text.substr(0, equals), text.substr(equals + 1));
            return at + 1;
        }
        const std::string name = text.substr(0, text.find_first_of("/'_!"));
        std::vector<int> keys;
        if (name != "r") keys.push_back(key(word, name));
        sound(word, keys, text.substr(name.size()));
        return at + 1;
    }

    int key(const Word& word, const std::string& name) const {
        const auto found = keyOf(name);
        if (!found) throw Trouble(word.line, "what is \"" + name + "\"?");
        const int result = *found + up_;
        if (result < 0 || result > 127) throw Trouble(word.line, "\"" + name + "\" is out of the range of keys");
        return result;
    }

    std::size_t chord(const std::vector<Word>& words, std::size_t at) {
        const Word& first = words[at];
        std::vector<int> keys;
        for (; at < words.size(); ++at) {
            std::string text = words[at].text;
            if (&words[at] == &first) text.erase(0, 1);
            const auto close = text.find(']');
            const std::string name = text.substr(0, close);
            if (!name.empty()) keys.push_back(key(words[at], name));
            if (close == std::string::npos) continue;
            text.erase(0, close + 1);
            sound(words[at], keys, text);
            return at + 1;
        }
        throw Trouble(first.line, "a chord without \"]\"");
    }

    // Keys together, for `length` ("/4." and marks, or marks alone, or nothing).
    void sound(const Word& word, const std::vector<int>& keys, std::string length) {
        double gate = gate_, louder = 0.0;
        for (; !length.empty() && std::string("'_!").find(length.back()) != std::string::npos; length.pop_back()) {
            if (length.back() == '\'') gate = 0.4;
            if (length.back() == '_') gate = 1.03;
            if (length.back() == '!') louder = 14.0;
        }
        if (!length.empty()) {
            if (length[0] != '/') throw Trouble(word.line, "\"" + word.text + "\" does not end like a note");
            length_ = lengthOf(word, length.substr(1));
        }
        for (const int key : keys) {
            const double stray =
                human_ > 0.0
                    ? human_ * (2.0 * hashMix(noteNumber_++ * 16 + static_cast<std::uint32_t>(channel_)) / 4294967295.0 - 1.0)
                    : 0.0;
            const double velocity = velocity_.at(time_ - velocityStart_) + louder + stray;
            cutShort(key);
            send(word, time_, 0x90, key, static_cast<int>(std::clamp(velocity + 0.5, 1.0, 127.0)));
            if (track_) lastEnd_[key] = track_->events.size();
            send(word, time_ + std::max<std::int64_t>(1, static_cast<std::int64_t>(static_cast<double>(length_) * gate)), 0x80,
                 key, 64);
        }
        time_ += length_;
    }

    // A note that still sounds ends where its key is struck again.
    void cutShort(int key) {
        if (const auto last = lastEnd_.find(key); last != lastEnd_.end()) {
            std::int64_t& end = track_->events[last->second].tick;
            end = std::min(end, std::max(time_, track_->events[last->second - 1].tick + 1));
        }
    }

    void setting(const Word& word, const std::string& name, const std::string& value) {
        if (name == "v") {
            velocity_ = Motion::parse(word, value);
            velocity_.check(word, 1, 127);
            velocityStart_ = time_;
        } else if (name == "gate") {
            gate_ = wholeNumber(word, value, 1, 200) / 100.0;
        } else if (name == "human") {
            human_ = wholeNumber(word, value, 0, 40);
        } else if (name == "up") {
            up_ = wholeNumber(word, value, -60, 60);
        } else if (name == "program") {
            send(word, time_, 0xc0, wholeNumber(word, value, 0, 127), 0);
        } else if (name == "bend") {
            moving(word, value, -8192, 8191, controlStep, [&](std::int64_t tick, double v) {
                const int wheel = static_cast<int>(v + 8192.5);
                send(word, tick, 0xe0, wheel & 127, wheel >> 7);
            });
        } else if (name.starts_with("cc")) {
            const int controller = wholeNumber(word, name.substr(2), 0, 127);
            moving(word, value, 0, 127, controlStep,
                   [&](std::int64_t tick, double v) { send(word, tick, 0xb0, controller, static_cast<int>(v + 0.5)); });
        } else if (name == "tempo") {
            moving(word, value, 10, 400, tempoStep,
                   [this](std::int64_t tick, double v) { score_.tempos.push_back({tick, 60.0 / v}); });
        } else if (name == "meter") {
            const auto slash = value.find('/');
            if (slash == std::string::npos) throw Trouble(word.line, "a meter is written as 3/4");
            const int denominator = wholeNumber(word, value.substr(slash + 1), 1, 64);
            if (denominator & (denominator - 1)) throw Trouble(word.line, "a meter counts halves, quarters, eighths ...");
            score_.meters.push_back({time_, wholeNumber(word, value.substr(0, slash), 1, 64), denominator});
        } else {
            throw Trouble(word.line, "what is \"" + name + "=\"?");
        }
    }

    template <class Send>
    void moving(const Word& word, const std::string& value, double low, double high, int step, Send sendValue) {
        const Motion motion = Motion::parse(word, value);
        motion.check(word, low, high);
        for (std::int64_t elapsed = 0; elapsed < motion.length; elapsed += step) sendValue(time_ + elapsed, motion.at(elapsed));
        sendValue(time_ + motion.length, motion.to);
    }

    void send(const Word& word, std::int64_t tick, int kind, int data1, int data2) {
        if (!track_) throw Trouble(word.line, "\"" + word.text + "\" stands outside of a part");
        track_->events.push_back(
            {tick,
             {static_cast<std::uint8_t>(kind | channel_), static_cast<std::uint8_t>(data1), static_cast<std::uint8_t>(data2)}});
    }

    void checkBar(const Word& word) const {
        midi::MeterChange meter;
        for (const midi::MeterChange& change : score_.meters)
            if (change.tick <= time_) meter = change;
        const std::int64_t bar = std::int64_t{whole} * meter.numerator / meter.denominator;
        if (const std::int64_t over = (time_ - meter.tick) % bar; over != 0)
            throw Trouble(word.line, "this bar line comes " + std::to_string(static_cast<double>(over) / quarter) +
                                         " quarter notes into a bar");
    }

    // Where the bracket that opens at `at` is closed.
    static std::size_t closing(const std::vector<Word>& words, std::size_t at, const std::string& open,
                               const std::string& close) {
        int depth = 0;
        for (std::size_t i = at; i < words.size(); ++i) {
            if (words[i].text == open || (open == "x(" && words[i].text.ends_with("x("))) ++depth;
            if (words[i].text == close && --depth == 0) return i;
        }
        throw Trouble(words[at].line, "\"" + words[at].text + "\" is never closed");
    }

    std::size_t together(const std::vector<Word>& words, std::size_t at) {
        const std::size_t end = closing(words, at, "{", "}");
        const std::int64_t start = time_;
        std::optional<std::int64_t> finish;
        std::vector<Word> branch;
        int depth = 0;
        for (std::size_t i = at + 1; i <= end; ++i) {
            depth += words[i].text == "{" ? 1 : words[i].text == "}" ? -1 : 0;
            const bool divides = (words[i].text == "&" && depth == 0) || i == end;
            if (!divides) {
                branch.push_back(words[i]);
                continue;
            }
            const std::int64_t reached = play(branch, start);
            if (finish && *finish != reached) throw Trouble(words[i].line, "the branches of { & } are not equally long");
            finish = reached;
            branch.clear();
        }
        return end + 1;
    }

    std::size_t repeat(const std::vector<Word>& words, std::size_t at) {
        const std::size_t end = closing(words, at, "x(", ")");
        const int times = wholeNumber(words[at], words[at].text.substr(0, words[at].text.size() - 2), 1, 1000);
        const std::vector<Word> body(words.begin() + static_cast<std::ptrdiff_t>(at) + 1,
                                     words.begin() + static_cast<std::ptrdiff_t>(end));
        for (int i = 0; i < times; ++i) play(body, time_);
        return end + 1;
    }

    void phrase(const Word& word) {
        const auto open = word.text.find('(');
        const std::string name = word.text.substr(1, open == std::string::npos ? open : open - 1);
        const auto found = score_.phrases.find(name);
        if (found == score_.phrases.end()) throw Trouble(word.line, "there is no phrase \"" + name + "\" above this line");
        if (++depth_ > 20) throw Trouble(word.line, "phrases within phrases without end");
        std::vector<std::string> arguments;
        if (open != std::string::npos) {
            if (word.text.back() != ')') throw Trouble(word.line, "\"" + word.text + "\" is not closed");
            std::istringstream list(word.text.substr(open + 1, word.text.size() - open - 2));
            for (std::string argument; std::getline(list, argument, ',');) arguments.push_back(argument);
        }
        std::vector<Word> words = found->second;
        for (Word& inner : words) {
            inner.line = word.line;
            for (std::size_t at; (at = inner.text.find('$')) != std::string::npos;) {
                const std::size_t which =
                    at + 1 < inner.text.size() ? static_cast<std::size_t>(inner.text[at + 1] - '1') : arguments.size();
                if (which >= arguments.size()) throw Trouble(word.line, "\"" + name + "\" wants more arguments");
                inner.text.replace(at, 2, arguments[which]);
            }
        }
        play(words, time_);
        --depth_;
    }

    Score& score_;
    midi::Track* track_;
    int channel_;
    std::int64_t time_ = 0, length_ = quarter, velocityStart_ = 0;
    Motion velocity_{80, 80, 0};
    double gate_ = 0.95, human_ = 0.0;
    int up_ = 0, depth_ = 0;
    std::uint32_t noteNumber_ = 0;
    std::map<int, std::size_t> lastEnd_;  // by key: the event that ends its last note
};

std::vector<Word> wordsOf(const std::string& line, int number) {
    std::vector<Word> words;
    std::istringstream stream(line);
    for (std::string text; stream >> text && text[0] != ';';) words.push_back({text, number});
    return words;
}

// A part or the conductor, with the lines that belong to it.
struct Section {
    bool conductor = false;
    std::string name, instrument;
    int channel = 0;
    std::vector<Word> words;
};

// "part NAME", then "channel N", "on INSTRUMENT" or both.
Section openPart(std::vector<Word> words) {
    Section section;
    const int line = words[0].line;
    bool said = false;
    auto take = [&](const char* what, auto use) {
        if (words.size() < 4 || words[words.size() - 2].text != what) return;
        use(words.back().text);
        words.resize(words.size() - 2);
        said = true;
    };
    take("on", [&](const std::string& name) { section.instrument = name; });
    take("channel", [&](const std::string& number) { section.channel = wholeNumber(words[0], number, 1, 16) - 1; });
    if (!said) throw Trouble(line, "a part is opened by: part NAME channel N, or part NAME on INSTRUMENT");
    for (std::size_t i = 1; i < words.size(); ++i) section.name += (i > 1 ? " " : "") + words[i].text;
    return section;
}

// The words behind the first.
std::string restOf(const std::vector<Word>& words) {
    std::string text;
    for (std::size_t i = 1; i < words.size(); ++i) text += (i > 1 ? " " : "") + words[i].text;
    return text;
}

double decibels(const Word& word, const std::string& text, double low, double high) {
    const double value = number(word, text);
    if (!(value >= low && value <= high)) throw Trouble(word.line, "\"" + text + "\" is out of range");
    return value;
}

// "instrument NAME = CATEGORY/NAME", then settings.
Instrument instrumentOf(const std::vector<Word>& words) {
    if (words.size() < 4 || words[2].text != "=")
        throw Trouble(words[0].line, "an instrument is written as: instrument NAME = CATEGORY/PATCH level=-6 pan=20");
    Instrument instrument;
    instrument.name = words[1].text;
    for (std::size_t i = 3; i < words.size(); ++i) {
        const std::string& text = words[i].text;
        const auto equals = text.find('=');
        const std::string what = text.substr(0, equals), value = equals == std::string::npos ? "" : text.substr(equals + 1);
        if (equals == std::string::npos)
            instrument.patch += (instrument.patch.empty() ? "" : " ") + text;
        else if (what == "level")
            instrument.level = decibels(words[i], value, -60, 24);
        else if (what == "pan")
            instrument.pan = decibels(words[i], value, -100, 100);
        else if (what == "set" && value.find('=') != std::string::npos)
            instrument.settings.push_back(value);
        else
            throw Trouble(words[i].line, "what is \"" + text + "\"?");
    }
    if (instrument.patch.empty()) throw Trouble(words[0].line, "the instrument \"" + instrument.name + "\" has no patch");
    return instrument;
}

// Tells every instrument which track of the file it plays. The parts of a score with instruments all name one.
void assign(const Section& section, int track, std::vector<Instrument>& instruments) {
    if (section.instrument.empty() && instruments.empty()) return;
    const int line = section.words.empty() ? 1 : section.words[0].line;
    const auto player = std::find_if(instruments.begin(), instruments.end(),
                                     [&](const Instrument& instrument) { return instrument.name == section.instrument; });
    if (player == instruments.end())
        throw Trouble(line, section.instrument.empty()
                                ? "the part \"" + section.name + "\" is on no instrument"
                                : "there is no instrument \"" + section.instrument + "\" for the part \"" + section.name + "\"");
    player->tracks.push_back(track);
}

std::vector<Section> sectionsOf(const std::string& text, Score& score) {
    std::vector<Section> sections;
    std::istringstream lines(text);
    std::string line;
    for (int at = 1; std::getline(lines, line); ++at) {
        const std::vector<Word> words = wordsOf(line, at);
        if (words.empty()) continue;
        const std::string& first = words[0].text;
        if (first == "title") {
            score.title = restOf(words);
        } else if (first == "patch") {
            score.advice.patch = restOf(words);
        } else if (first == "level") {
            score.advice.level = wholeNumber(words[0], words.back().text, -60, 60);
        } else if (first == "about") {
            if (words.size() < 2) throw Trouble(at, "about what?");
        } else if (first == "loudness") {
            score.advice.loudness = decibels(words[0], words.back().text, -40, -6);
        } else if (first == "instrument") {
            score.advice.instruments.push_back(instrumentOf(words));
        } else if (first == "let") {
            if (words.size() < 4 || words[2].text != "=") throw Trouble(at, "a phrase is written as: let NAME = WORDS");
            score.phrases[words[1].text].assign(words.begin() + 3, words.end());
        } else if (first == "conductor") {
            sections.push_back({true, "", "", 0, {}});
        } else if (first == "part") {
            sections.push_back(openPart(words));
        } else if (sections.empty()) {
            throw Trouble(at, "music before the first part");
        } else {
            sections.back().words.insert(sections.back().words.end(), words.begin(), words.end());
        }
    }
    return sections;
}

}  // namespace

bool compile(const std::string& text, std::vector<std::uint8_t>& midi, std::string& problem, Advice* advice) {
    try {
        Score score;
        const std::vector<Section> sections = sectionsOf(text, score);
        for (const bool conductor : {true, false})
            for (const Section& section : sections) {
                if (section.conductor != conductor) continue;
                midi::Track track{section.name, {}};
                Player player(score, conductor ? nullptr : &track, section.channel);
                score.length = std::max(score.length, player.play(section.words, 0));
                if (conductor) continue;
                score.tracks.push_back(std::move(track));
                assign(section, static_cast<int>(score.tracks.size()), score.advice.instruments);
            }
        if (score.tracks.empty()) throw Trouble(1, "a score without a part");
        // At one time a note ends before the next begins.
        for (midi::Track& track : score.tracks)
            std::stable_sort(track.events.begin(), track.events.end(), [](const midi::Event& a, const midi::Event& b) {
                return a.tick != b.tick ? a.tick < b.tick : a.message.endsNote() && !b.message.endsNote();
            });
        if (score.advice.patch.empty() && !score.advice.instruments.empty())
            score.advice.patch = score.advice.instruments[0].patch;
        if (advice != nullptr) *advice = score.advice;
        midi = midi::write(quarter, score.title, score.tempos, score.meters, score.tracks, score.length);
        return true;
    } catch (const Trouble& trouble) {
        problem = trouble.what();
        return false;
    }
}

std::string mixText(const Advice& advice, const std::string& song) {
    std::ostringstream text;
    text << "song " << song << '\n';
    if (advice.loudness) text << "loudness " << *advice.loudness << '\n';
    std::vector<Instrument> instruments = advice.instruments;
    if (instruments.empty() && !advice.patch.empty()) instruments.push_back({"", advice.patch, advice.level, 0.0, {}, {}});
    for (const Instrument& instrument : instruments) {
        text << "instrument level=" << instrument.level << " pan=" << instrument.pan;
        for (const int track : instrument.tracks) text << " track=" << track;
        for (const std::string& setting : instrument.settings) text << " set=" << setting;
        text << ' ' << instrument.patch << '\n';
    }
    return text.str();
}

}  // namespace vantoric::song
