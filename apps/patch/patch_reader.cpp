#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <set>

#include "apps/patch/patch_text.h"
#include "apps/patch/value_text.h"
#include "apps/patch/wave_text.h"
#include "base/numbers.h"
#include "base/text.h"
#include "parameters/parameter_table.h"
#include "parameters/parameter_text.h"

namespace vantoric::patch {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t mostTags = 16;
constexpr std::size_t mostPartials = 64;
constexpr double usualStruck = 2.0;  // seconds of a struck sample that does not say

// The JSON of a text; a key that stands twice in an object is an error too.
Json parse(std::string_view text) {
    std::vector<std::set<std::string>> open;
    const auto callback = [&open](int, Json::parse_event_t event, Json& parsed) {
        if (event == Json::parse_event_t::object_start) open.emplace_back();
        if (event == Json::parse_event_t::object_end) open.pop_back();
        if (event == Json::parse_event_t::key && !open.back().insert(parsed.get<std::string>()).second)
            throw PatchError(parsed.get<std::string>(), "stands twice in the same object");
        return true;
    };
    try {
        return Json::parse(text, callback);
    } catch (const Json::parse_error& error) {
        std::string what = error.what();
        if (const auto at = what.find("line "); at != what.npos) what = what.substr(at);
        throw PatchError("", what);
    }
}

std::string shown(const Json& value) {
    std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
    return text.size() > 40 ? std::string(cutText(text, 40)) + "..." : text;
}

// One key of the text, with the way to it.
struct Node {
    const Json& json;
    std::string where;

    [[noreturn]] void refuse(const std::string& what) const { throw PatchError(where, what); }
    Node at(const std::string& key) const { return {json.at(key), where.empty() ? key : where + "." + key}; }
    Node at(std::size_t index) const { return {json.at(index), where + "[" + std::to_string(index + 1) + "]"}; }
    bool has(const std::string& key) const { return json.contains(key); }

    void expectObject() const {
        if (!json.is_object()) refuse("should be an object, {...}, and is " + shown(json));
    }
    void expectList(std::size_t most) const {
        if (!json.is_array()) refuse("should be a list, [...], and is " + shown(json));
        if (json.size() > most)
            refuse("has " + std::to_string(json.size()) + " entries, at most " + std::to_string(most) + " are possible");
    }
    std::string text() const {
        if (!json.is_string()) refuse("should be a text, and is " + shown(json));
        return json.get<std::string>();
    }
    double number() const {
        if (!json.is_number()) refuse("should be a number, and is " + shown(json));
        return json.get<double>();
    }
    int whole(int low, int high) const {
        const double value = number();
        if (value < low || value > high || value != static_cast<int>(value))
            refuse("should be a whole number from " + std::to_string(low) + " to " + std::to_string(high) + ", and is " +
                   shown(json));
        return static_cast<int>(value);
    }
    // Every key of an object must be known.
    void expectKeys(const std::vector<std::string>& keys) const {
        expectObject();
        for (const auto& item : json.items())
            if (std::find(keys.begin(), keys.end(), item.key()) == keys.end())
                at(item.key()).refuse("unknown key; did you mean \"" + nearestText(item.key(), keys) + "\"?");
    }
};

class Reader {
public:
    Reader(const std::string& folder, const std::string& samples, Patch& patch)
        : folder_(folder), samples_(samples), patch_(patch) {}

    void readTop(const Node& top, const std::string& stem) {
        top.expectKeys({"format", "name", "author", "about", "tags", "global", "master", "layers"});
        if (!top.has("format")) top.refuse("\"format\": " + std::to_string(textFormat) + " is missing");
        if (const Node format = top.at("format"); format.number() != textFormat)
            format.refuse("should be " + std::to_string(textFormat) + ", and is " + shown(format.json));
        patch_.name = top.has("name") ? top.at("name").text() : stem;
        if (patch_.name.empty() || patch_.name.size() > longestName)
            throw PatchError("name", "\"" + patch_.name + "\" should have 1 to " + std::to_string(longestName) + " characters");
        if (top.has("author")) patch_.author = top.at("author").text();
        if (top.has("about")) patch_.about = top.at("about").text();
        if (top.has("tags")) readTags(top.at("tags"));
        if (top.has("global")) readGlobal(top.at("global"));
        if (top.has("master")) readSlot(top.at("master"), masterSlot);
        if (top.has("layers")) readLayers(top.at("layers"));
        cleanMatrix(patch_);
    }

private:
    // The browser keeps tags with commas between them.
    void readTags(const Node& tags) {
        tags.expectList(mostTags);
        for (std::size_t i = 0; i < tags.json.size(); ++i) {
            const std::string tag = tags.at(i).text();
            if (tag.empty() || tag.find(',') != std::string::npos) tags.at(i).refuse("a tag has letters and no comma");
            patch_.tags.push_back(tag);
        }
    }

    void set(int n, const Node& node) {
        float value = 0.0f;
        try {
            if (node.json.is_number())
                value = readValue(n, node.json.get<double>());
            else if (node.json.is_boolean() && parameterInfo(n).kind == ControlKind::Switch)
                value = node.json.get<bool>() ? 1.0f : 0.0f;
            else
                value = readValue(n, node.text());
        } catch (const PatchError& error) {
            if (node.json.is_string() || node.json.is_number()) node.refuse(error.what());
            throw;
        }
        const int index = n < globalParameterCount ? n : hostIndex(n, layer_);
        patch_.parameters.setParameterQuiet(index, value);
        if (patch_.parameters.getParameter(index) != value)
            node.refuse("\"" + shown(node.json) + "\" lies beyond the end of its list");
    }

    void readGlobal(const Node& global) {
        global.expectObject();
        for (const auto& item : global.json.items()) {
            const Node node = global.at(item.key());
            const int n = parameterIndex(item.key(), 0);
            if (n >= parameter::Layer1On && n <= parameter::Layer4On) node.refuse("say \"on\" in the layer instead");
            if (n >= globalParameterCount) node.refuse("belongs into a layer");
            if (n < 0) node.refuse("no global parameter has this name; did you mean \"" + nearestName(item.key(), true) + "\"?");
            set(n, node);
        }
    }

    // A layer that is written is on unless it says otherwise.
    void readLayers(const Node& layers) {
        layers.expectList(layerCount);
        patch_.parameters.setParameterQuiet(parameter::Layer1On, 0.0f);
        for (std::size_t i = 0; i < layers.json.size(); ++i) {
            layer_ = static_cast<int>(i);
            const Node layer = layers.at(i);
            layer.expectObject();
            patch_.parameters.setParameterQuiet(parameter::Layer1On + layer_, 1.0f);
            if (layer.has("on")) set(parameter::Layer1On + layer_, layer.at("on"));
            readLayer(layer);
        }
    }

    void readLayer(const Node& layer) {
        for (const auto& item : layer.json.items()) {
            const Node node = layer.at(item.key());
            if (item.key() == "on") continue;
            if (readGroup(item.key(), node)) continue;
            const int index = parameterIndex(item.key(), layer_);
            if (index >= 0 && index < globalParameterCount) node.refuse("belongs into \"global\"");
            if (index < 0)
                node.refuse("no parameter of a layer has this name; did you mean \"" + nearestName(item.key(), false) + "\"?");
            set(numberOfParameter(index), node);
        }
    }

    bool readGroup(const std::string& key, const Node& node) {
        for (const SlotKeys& slot : insertSlots)
            if (key == slot.key) return readSlot(node, slot), true;
        for (int oscillator = 0; oscillator < oscillatorCount; ++oscillator) {
            const int index = layer_ * oscillatorCount + oscillator;
            const std::string number = std::to_string(oscillator + 1);
            if (key == "customWave" + number) return readCustomWave(node, index), true;
            if (key == "sample" + number) return readSample(node, index), true;
        }
        if (key == "matrix") return readMatrix(node), true;
        if (key == "arp") return readArp(node), true;
        if (key == "steps") return readSteps(node), true;
        return false;
    }

    void readSlot(const Node& slot, const SlotKeys& keys) {
        slot.expectKeys({"type", "mix", "par1", "par2", "par3", "par4"});
        const auto percent = [this, &slot](const char* key, int n) {
            if (!slot.has(key)) return;
            const Node node = slot.at(key);
            if (!node.json.is_number()) return set(n, node);
            const float value = readPercent(node.number(), false);
            if (!(value >= 0.0f && value <= 1.0f))
                node.refuse("should be a percentage from 0 to 100, and is " + shown(node.json));
            patch_.parameters.setParameterQuiet(n < globalParameterCount ? n : hostIndex(n, layer_), value);
        };
        if (slot.has("type")) set(keys.type, slot.at("type"));
        percent("mix", keys.mix);
        for (int k = 0; k < slotParameters; ++k) percent(("par" + std::to_string(k + 1)).c_str(), keys.first + k);
    }

    // Rows follow each other unless they say which "slot" they are.
    void readMatrix(const Node& matrix) {
        matrix.expectList(matrixRows);
        int row = -1;
        for (std::size_t i = 0; i < matrix.json.size(); ++i) {
            const Node node = matrix.at(i);
            node.expectKeys({"slot", "source", "destination", "amount"});
            row = node.has("slot") ? node.at("slot").whole(row + 2, matrixRows) - 1 : row + 1;
            if (row >= matrixRows) node.refuse("there are only " + std::to_string(matrixRows) + " slots");
            for (const char* key : {"source", "destination", "amount"})
                if (!node.has(key)) node.refuse("\"" + std::string(key) + "\" is missing");
            set(parameter::MatSrc1 + row, node.at("source"));
            set(parameter::MatDst1 + row, node.at("destination"));
            set(parameter::MatVal1 + row, node.at("amount"));
        }
    }

    void readArp(const Node& arp) {
        arp.expectList(arpSteps);
        int step = -1;
        for (std::size_t i = 0; i < arp.json.size(); ++i) {
            const Node node = arp.at(i);
            node.expectKeys({"step", "note", "velocity"});
            step = node.has("step") ? node.at("step").whole(step + 2, arpSteps) - 1 : step + 1;
            if (step >= arpSteps) node.refuse("there are only " + std::to_string(arpSteps) + " steps");
            if (node.has("note")) set(parameter::ArpStp1 + step, node.at("note"));
            if (node.has("velocity")) set(parameter::ArpVol1 + step, node.at("velocity"));
        }
    }

    void readSteps(const Node& steps) {
        steps.expectList(stepCount);
        for (std::size_t i = 0; i < steps.json.size(); ++i) set(parameter::Step1 + static_cast<int>(i), steps.at(i));
    }

    void readCustomWave(const Node& wave, int index) {
        wave.expectKeys({"harmonics", "base64"});
        if (wave.json.size() != 1) wave.refuse("should have either \"harmonics\" or \"base64\"");
        Cycle& cycle = patch_.customWaves[static_cast<std::size_t>(index)];
        if (wave.has("harmonics")) {
            const Node list = wave.at("harmonics");
            list.expectList(chunk::waveSamples / 2);
            std::vector<double> amplitudes;
            for (std::size_t i = 0; i < list.json.size(); ++i) amplitudes.push_back(list.at(i).number());
            cycle = cycleOfHarmonics(amplitudes);
            return;
        }
        const Node node = wave.at("base64");
        try {
            cycle = readCycle(node.text());
        } catch (const PatchError& error) {
            node.refuse(error.what());
        }
    }

    // What fails behind the text gets the way to the key.
    template <class Action>
    static auto explained(const Node& node, const Action& action) {
        try {
            return action();
        } catch (const PatchError& error) {
            node.refuse(error.what());
        }
    }

    void readSample(const Node& node, int index) {
        node.expectKeys({"file", "partials", "seconds", "loop", "rate"});
        if (!node.has("file") && !node.has("partials")) node.refuse("\"file\" is missing");
        if (node.has("file") && (node.has("partials") || node.has("seconds")))
            node.refuse("should have either \"file\" or \"partials\"");
        const SampleFile sample = node.has("file") ? readFile(node) : readPartials(node);
        // A struck sound is played to its end.
        int loop[2] = {sample.loop[0], node.has("file") ? sample.loop[1] : static_cast<int>(sample.frames.size())};
        if (node.has("loop")) {
            const Node range = node.at("loop");
            if (!range.json.is_array() || range.json.size() != 2) range.refuse("should be [start, end] in samples");
            for (std::size_t k = 0; k < 2; ++k) loop[k] = range.at(k).whole(0, maxSampleLength);
        }
        const std::uint32_t rate =
            node.has("rate") ? static_cast<std::uint32_t>(node.at("rate").whole(0, maxSampleRate)) : sample.rate;
        explained(node, [&] { setSample(patch_, index, sample.frames, rate, loop[0], loop[1]); });
    }

    SampleFile readFile(const Node& node) const {
        const std::string path = node.at("file").text();
        return explained(node, [&] { return readSampleFile(placeOf(path)); });
    }

    std::string placeOf(const std::string& path) const {
        if (path.starts_with('/')) return path;
        const bool made = !samples_.empty() && !std::filesystem::exists(folder_ + path);
        return made ? samples_ + '/' + path : folder_ + path;
    }

    static SampleFile readPartials(const Node& node) {
        const Node list = node.at("partials");
        list.expectList(mostPartials);
        std::vector<Partial> partials;
        for (std::size_t i = 0; i < list.json.size(); ++i) {
            const Node row = list.at(i);
            if (!row.json.is_array() || row.json.size() != 3) row.refuse("should be [ratio, level, seconds]");
            const Partial partial{row.at(0).number(), row.at(1).number(), row.at(2).number()};
            if (!(partial.ratio > 0.0 && partial.seconds > 0.0)) row.refuse("ratio and seconds should be above 0");
            if (!(std::fabs(partial.level) <= 1.0)) row.refuse("the level should be from -1 to 1");
            partials.push_back(partial);
        }
        const double seconds = node.has("seconds") ? node.at("seconds").number() : usualStruck;
        if (!(seconds > 0.0 && seconds <= longestStruck)) node.at("seconds").refuse("should be above 0, at most 10");
        return {struckSample(partials, seconds), struckRate};
    }

    std::string folder_, samples_;
    Patch& patch_;
    int layer_ = 0;
};

}  // namespace

void readText(std::string_view text, const std::string& folder, const std::string& stem, Patch& patch,
              const std::string& samples) {
    const Json json = parse(text);
    Reader(folder, samples, patch).readTop({json, ""}, stem);
}

}  // namespace vantoric::patch
