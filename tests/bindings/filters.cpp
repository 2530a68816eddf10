#include <algorithm>
#include <map>
#include <stdexcept>

#include "base/numbers.h"
#include "base/random.h"
#include "engine/denormals.h"
#include "golden_runner/golden.h"
#include "sound/filter_labels.h"
#include "sound/filter_response.h"
#include "sound/voice_filter.h"

namespace {

using golden::asFloat;
using golden::json;
using namespace vantoric;
using namespace vantoric::filters;

// --- What a case tells ---------------------------------------------------------------------------------

RandomSources randomOf(const json& input) {
    RandomSources random;
    if (!input.contains("random")) return random;
    const json& r = input["random"];
    random.congruence.state = r.value("congruence", 0u);
    random.hash.seed = r.value("hashSeed", random.hash.seed);
    random.hash.counter = r.value("hashFirst", 0u);
    return random;
}

int indexOf(int number) {
    if (number == -1) return 0;
    for (int i = 0; i < 64; ++i)
        if (filterNumber(i) == number) return i;
    throw std::runtime_error("no filter of number " + std::to_string(number));
}

std::vector<float> signalOf(const json& s, int length) {
    std::vector<float> x(static_cast<std::size_t>(length), 0.0f);
    const std::string kind = s.at("shape");
    const double amplitude = s.value("amplitude", 1.0);
    LinearCongruence noise{s.value("seed", 0u)};
    for (int i = 0; i < length; ++i) {
        double value = 0.0;
        if (kind == "impulse") {
            value = i == 0 ? amplitude : 0.0;
        } else if (kind == "sine") {
            value = amplitude * std::sin(2.0 * M_PI * i / s.at("period").get<double>());
        } else if (kind == "square") {
            const double period = s.at("period");
            value = std::fmod(i, period) < period / 2 ? amplitude : -amplitude;
        } else if (kind == "noise") {
            if (i < s.value("burst", length)) value = amplitude * (noise.next() * 4.656612873077393e-10 - 1.0);
        } else if (kind != "silence") {
            throw std::runtime_error("unknown signal " + kind);
        }
        x[static_cast<std::size_t>(i)] = static_cast<float>(value);
    }
    return x;
}

json keptOf(const json& kept, const std::vector<float>& samples) {
    const int head = kept.at("head"), stride = kept.at("stride"), length = kept.at("length");
    json values = json::array();
    for (int i = 0; i < length; i += i < head ? 1 : stride) {
        if (i > head && (i - head) % stride != 0) continue;
        values.push_back(samples.at(static_cast<std::size_t>(i)));
    }
    return values;
}

FilterSettings settingsOf(const json& input, int number) {
    FilterSettings settings;
    settings.sampleRate = asFloat(input.at("sampleRate"));
    settings.tickSamples = input.at("tickLength");
    settings.type = indexOf(number);
    return settings;
}

void runSetups(VoiceFilter& filter, const json& input) {
    FilterSettings settings = settingsOf(input, input.at("number"));
    for (const json& row : input.at("setups")) {
        settings.cutoff = asFloat(row[0]);
        settings.resonance = asFloat(row[1]);
        settings.analog = asFloat(row[2]);
        filter.setup(settings);
    }
}

// In stretches of a tick, as a voice does.
void runInTicks(VoiceFilter& filter, const json& input, std::vector<float>& samples) {
    const int tick = input.at("tickLength"), length = static_cast<int>(samples.size());
    for (int i = 0; i < length; i += tick) filter.run(samples.data() + i, std::min(tick, length - i));
}

// --- Coefficients --------------------------------------------------------------------------------------

template <class S>
json sectionOf(const S& s) {
    return {s.b0, s.b1, s.b2, s.a1, s.a2};
}

json biquadCoefficients(const VoiceFilter& filter, const json& input) {
    if (filter.number() == 107) {
        const auto& am = filter.loop<BiquadAm>();
        const json& last = input.at("setups").back();
        SetupMemory memory;
        const FilterInputs in{
            input.at("sampleRate"), 0, clampUnit(last[0].get<double>()), clampTo(last[1].get<double>(), 1e-5, 1.0), 0.0, memory};
        const AmLaw law = amLaw(in.fn(), in.r);
        return {{"section1", sectionOf(am.section1)},
                {"section2", sectionOf(am.section2)},
                {"rate", law.rate},
                {"depth", am.depth},
                {"gain", am.gain},
                {"scale", law.scale}};
    }
    if (filter.number() == 1 || filter.number() == 3) {
        const auto& one = filter.loop<BiquadOne>();
        return {{"section1", sectionOf(one.section1)}, {"gain", one.gain}};
    }
    const auto& two = filter.loop<BiquadTwo>();
    return {{"section1", sectionOf(two.section1)}, {"section2", sectionOf(two.section2)}, {"gain", two.gain}};
}

template <class S>
json svfOf(const S& s, int steps) {
    return {{"N", steps}, {"f", s.f}, {"drive", s.drive}, {"q", s.q}, {"gain", s.gain}};
}

json coefficients(const VoiceFilter& filter, const json& input) {
    const int number = filter.number();
    switch (number) {
        case 120:
        case 121:
        case 122: return svfOf(filter.loop<Svf12>(), stepsOf(filter.variant<Svf12>()));
        case 130:
        case 131:
        case 132: return svfOf(filter.loop<Svf18>(), 2);
        case 140:
        case 141:
        case 142: return svfOf(filter.loop<Svf24>(), 2);
        case 158: return svfOf(filter.loop<SvfShaped>(), filter.variant<SvfShaped>() == SvfShapedForm::twice ? 2 : 1);
        case 217: {
            const auto& o = filter.loop<Orvix>();
            return {{"f", o.f}, {"q", o.q}, {"drive", o.drive}, {"gain", o.gain}, {"A", o.A}, {"B", o.B}, {"C", o.C}, {"D", o.D}};
        }
        case 42: {
            const auto& l = filter.loop<Ladder>();
            return {{"pole", l.pole}, {"in", l.in}, {"fb", l.fb}, {"asym", l.asym}, {"mix", l.mix}, {"gain", l.gain}};
        }
        case 170: {
            const auto& b = filter.loop<Butter>();
            return {{"g", b.g}, {"m", b.m}, {"noise", b.noise}, {"gain", b.gain}};
        }
        case 234: {
            const auto& m = filter.loop<Ms20>();
            return {{"h", m.h}, {"D", m.D}, {"gain", m.gain}};
        }
        case 33:
        case 34: {
            const auto& c = filter.loop<Comb>();
            return {{"delay", c.glide.delay}, {"fb", c.fb}, {"gain", c.gain}};
        }
        case 160:
        case 161: {
            const auto& p = filter.loop<Phys>();
            return {{"delay", p.glide.delay}, {"sign", p.sign}, {"fb", p.fb}, {"damp", p.damp}, {"gain", p.gain}};
        }
        case 35: return {{"rate", filter.loop<Ringmod>().rate}, {"depth", filter.loop<Ringmod>().depth}};
        case 41: return {{"N", filter.loop<Aliaser>().N}};
        case 105: {
            const auto& v = filter.loop<VocalAm>();
            return {{"f", v.f}, {"q", v.q}, {"gain", v.gain}, {"rate", v.rate}};
        }
        case 157: return {{"cutoff", filter.loop<LpFm>().cutoff}};
        case 150: return {{"a", filter.loop<Phaser>().a}, {"stages", Phaser<float>::stages(filter.variant<Phaser>())}};
        default: break;
    }
    if (number >= 151 && number <= 156) return {{"f", filter.loop<Fractal>().f}};
    if (number >= 242 && number <= 249) {
        const auto& p = filter.loop<FeedbackPhaser>();
        return {{"a", p.a}, {"fbk", p.fbk}, {"wet", p.wet}};
    }
    return biquadCoefficients(filter, input);
}

// --- Operations ----------------------------------------------------------------------------------------

template <class Function>
json curve(const json& input, Function&& function) {
    json values = json::array();
    for (const json& x : input.at("x")) values.push_back(function(x));
    return {{"y", values}};
}

json generators(const json& input) {
    json u = json::array(), y = json::array();
    const int count = input.at("count");
    if (input.at("operation") == "congruence") {
        LinearCongruence source{input.at("seed").get<std::uint32_t>()};
        for (int i = 0; i < count; ++i) u.push_back(source.next());
        return {{"u", u}};
    }
    HashNoise source{input.at("hashFirst").get<std::uint32_t>(), input.at("hashSeed").get<std::uint32_t>()};
    HashNoise unit = source;
    for (int i = 0; i < count; ++i) {
        u.push_back(source.next());
        y.push_back(unit.unit());
    }
    return {{"u", u}, {"y", y}};
}

json filterList(const json& input) {
    json labels = json::array(), numbers = json::array();
    for (const json& index : input.at("index")) {
        labels.push_back(filterLabels[index.get<std::size_t>()]);
        numbers.push_back(filterNumber(index.get<int>()));
    }
    return {{"label", labels}, {"number", numbers}};
}

json cutoffs(const json& input) {
    json values = json::array();
    for (const json& row : input.at("rows"))
        values.push_back(voiceCutoff(row[0].get<double>(), asFloat(row[1]), asFloat(row[2]), asFloat(row[3]), asFloat(row[4])));
    return {{"cutoff", values}};
}

json setups(const json& input) {
    RandomSources random;
    VoiceFilter filter(random);
    runSetups(filter, input);
    return coefficients(filter, input);
}

json runs(const json& input) {
    RandomSources random = randomOf(input);
    const std::uint32_t firstDraw = random.hash.counter;
    VoiceFilter filter(random);
    runSetups(filter, input);
    std::vector<float> samples = signalOf(input.at("signal"), input.at("length"));
    runInTicks(filter, input, samples);
    json got = {{"congruence", random.congruence.state}, {"hashDraws", random.hash.counter - firstDraw}};
    if (input.contains("kept")) got["output"] = keptOf(input["kept"], samples);
    return got;
}

json ticks(const json& input) {
    RandomSources random = randomOf(input);
    VoiceFilter filter(random);
    int length = 0;
    for (const json& tick : input.at("ticks")) length += tick.at("samples").get<int>();
    std::vector<float> samples = signalOf(input.at("signal"), length);
    std::map<std::string, json> history;
    int at = 0;
    for (const json& tick : input.at("ticks")) {
        FilterSettings settings = settingsOf(input, tick.at("number"));
        if (tick.contains("sampleRate")) settings.sampleRate = asFloat(tick["sampleRate"]);
        settings.cutoff = asFloat(tick.at("cutoff"));
        settings.resonance = asFloat(tick.at("resonance"));
        settings.analog = asFloat(tick.at("analog"));
        filter.setup(settings);
        json row = {{"sampleRate", input.at("sampleRate")}, {"setups", {{settings.cutoff, settings.resonance, settings.analog}}}};
        const json now = coefficients(filter, row);
        for (const auto& [name, value] : now.items()) history[name].push_back(value);
        if (tick.value("reset", false)) filter.reset();
        const int count = tick.at("samples");
        filter.run(samples.data() + at, count);
        at += count;
    }
    json got = history;
    got["output"] = keptOf(input.at("kept"), samples);
    return got;
}

json response(const json& input) {
    FilterResponse measured(randomOf(input));
    FilterSettings settings = settingsOf(input, input.at("number"));
    const json& row = input.at("setups").back();
    settings.cutoff = asFloat(row[0]);
    settings.resonance = asFloat(row[1]);
    settings.analog = asFloat(row[2]);
    const auto& magnitude = measured.measure(settings);
    json values = json::array();
    for (const json& bin : input.at("bins")) values.push_back(magnitude.at(bin.get<std::size_t>()));
    return {{"magnitude", values}};
}

float peakOf(const float* from, const float* to) {
    float peak = 0.0f;
    for (; from != to; ++from) peak = std::max(peak, std::fabs(*from));
    return peak;
}

// Upward crossings of the mean, per sample between the first and the last one.
double cyclesPerSample(const std::vector<double>& tail) {
    double mean = 0.0;
    for (const double x : tail) mean += x / static_cast<double>(tail.size());
    double first = -1.0, last = -1.0;
    int crossings = 0;
    for (std::size_t i = 1; i < tail.size(); ++i) {
        const double before = tail[i - 1] - mean, now = tail[i] - mean;
        if (before >= 0.0 || now < 0.0) continue;
        last = static_cast<double>(i) - now / (now - before);
        if (crossings++ == 0) first = last;
    }
    return crossings > 1 ? (crossings - 1) / (last - first) : 0.0;
}

golden::Outcome bound(const golden::Case& c) {
    RandomSources random = randomOf(c.input);
    VoiceFilter filter(random);
    runSetups(filter, c.input);
    std::vector<float> samples = signalOf(c.input.at("signal"), c.input.at("length"));
    runInTicks(filter, c.input, samples);
    golden::Outcome outcome;
    if (!std::all_of(samples.begin(), samples.end(), [](float x) { return std::isfinite(x); })) outcome.fail("not finite");
    const float* end = samples.data() + samples.size();
    const std::vector<double> tail(samples.end() - c.input.at("tail").get<int>(), samples.end());
    const double peak = peakOf(samples.data(), end), tailPeak = peakOf(end - tail.size(), end);
    const auto below = [&](const char* name, double value, int sign) {
        if (c.expected.contains(name) && sign * value > sign * c.expected[name].get<double>())
            outcome.fail(std::string(name) + ": got " + std::to_string(value));
    };
    below("peakAtMost", peak, 1);
    below("peakAtLeast", peak, -1);
    below("tailAtMost", tailPeak, 1);
    double square = 0.0;
    for (const double x : tail) square += x * x / static_cast<double>(tail.size());
    json got = {{"tailRms", std::sqrt(square)}, {"tailCyclesPerSample", cyclesPerSample(tail)}}, expected = json::object();
    for (const char* name : {"tailRms", "tailCyclesPerSample"})
        if (c.expected.contains(name)) expected[name] = c.expected[name];
    golden::compareInto(outcome, expected, got, c.tolerance, "");
    return outcome;
}

json values(const golden::Case& c) {
    const json& input = c.input;
    const std::string operation = input.at("operation");
    if (operation == "fastExp") return curve(input, [](const json& x) { return fastExp(x.get<double>()); });
    if (operation == "softClip") return curve(input, [](const json& x) { return softClip(asFloat(x)); });
    if (operation == "svfSat") return curve(input, [](const json& x) { return svfSat(asFloat(x)); });
    if (operation == "sat") return curve(input, [](const json& x) { return sat(asFloat(x)); });
    if (operation == "th") return curve(input, [](const json& x) { return th(x.get<double>()); });
    if (operation == "shape") return curve(input, [](const json& x) { return shape(asFloat(x)); });
    if (operation == "congruence" || operation == "hashNoise") return generators(input);
    if (operation == "filterList") return filterList(input);
    if (operation == "voiceCutoff") return cutoffs(input);
    if (operation == "designBiquad") {
        const BiquadDesign d = designBiquad(input.at("kind"), input.at("c"), input.at("r"), input.at("sampleRate"));
        return {{"coefficients", sectionOf(d)}};
    }
    if (operation == "filterSetup") return setups(input);
    if (operation == "filterRun" || operation == "filterDraws") return runs(input);
    if (operation == "filterTicks") return ticks(input);
    if (operation == "filterResponse") return response(input);
    throw std::runtime_error("unknown operation " + operation);
}

// The label that a case gives must be one of its number.
void requireLabel(const json& input) {
    if (!input.contains("label")) return;
    for (std::size_t i = 0; i < filterLabels.size(); ++i)
        if (input["label"] == filterLabels[i] && filterNumber(static_cast<int>(i)) == input.at("number")) return;
    throw std::runtime_error("label " + input["label"].dump() + " is another filter");
}

golden::Outcome check(const golden::Case& c) {
    requireLabel(c.input);
    const DenormalsOff denormalsOff;
    if (c.input.at("operation") == "filterBound") return bound(c);
    return golden::compare(c.expected, values(c), c.tolerance);
}

const golden::Binding all("filters", "*", check);

}  // namespace
