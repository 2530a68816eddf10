#include <nlohmann/json.hpp>

#include <set>

#include "apps/patch/patch_text.h"
#include "apps/patch/value_text.h"
#include "apps/patch/wave_text.h"
#include "base/numbers.h"
#include "parameters/parameter_table.h"

namespace vantoric::patch {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t lineLength = 110;

class Writer {
public:
    Writer(const Patch& patch, const std::function<std::string(int)>& saveSample) : patch_(patch), saveSample_(saveSample) {}

    Json top() {
        Json json;
        json["format"] = textFormat;
        json["name"] = patch_.name;
        if (!patch_.author.empty()) json["author"] = patch_.author;
        if (!patch_.about.empty()) json["about"] = patch_.about;
        if (!patch_.tags.empty()) json["tags"] = patch_.tags;
        Json master = slot(masterSlot);
        Json global = Json::object();
        for (int n = 0; n < globalParameterCount; ++n)
            if (!isGrouped(n) && differs(n)) global[nameOf(n)] = text(n);
        if (!global.empty()) json["global"] = global;
        if (!master.empty()) json["master"] = master;
        json["layers"] = layers();
        return json;
    }

private:
    int index(int n) const { return n < globalParameterCount ? n : hostIndex(n, layer_); }
    float value(int n) const { return patch_.parameters.getParameter(index(n)); }
    bool differs(int n) const { return value(n) != init_.parameters.getParameter(index(n)); }
    bool differs(int first, int count) const {
        for (int n = first; n < first + count; ++n)
            if (differs(n)) return true;
        return false;
    }
    static std::string nameOf(int n) {
        const std::string name = parameterInfo(n).name;
        return name == "-" ? std::string("#").append(std::to_string(n)) : name;
    }
    std::string text(int n) const {
        const bool isLfo = n >= parameter::LfoSpd1 && n < parameter::LfoSpd1 + 3;
        const int mode = isLfo ? listIndex(value(n - parameter::LfoSpd1 + parameter::LfoMode1)) : 0;
        return writeValue(n, value(n), mode);
    }
    // A plain number for what is plainly percent, else the text.
    Json amount(int n, bool bipolar) const {
        double percent = 0.0;
        if (!writePercent(value(n), bipolar, percent)) return text(n);
        if (percent == static_cast<int>(percent)) return static_cast<int>(percent);
        return percent;
    }

    static bool within(int n, int first, int count) { return n >= first && n < first + count; }
    // Numbers that are written under a key of their own.
    static bool isGrouped(int n) {
        for (const SlotKeys& keys : {insertSlots[0], insertSlots[1], masterSlot})
            if (n == keys.type || n == keys.mix || within(n, keys.first, slotParameters)) return true;
        return within(n, parameter::Layer1On, layerCount) || within(n, parameter::MatSrc1, matrixRows) ||
               within(n, parameter::MatDst1, matrixRows) || within(n, parameter::MatVal1, matrixRows) ||
               within(n, parameter::ArpStp1, arpSteps) || within(n, parameter::ArpVol1, arpSteps) ||
               within(n, parameter::Step1, stepCount);
    }

    Json slot(const SlotKeys& keys) const {
        Json json = Json::object();
        if (differs(keys.type)) json["type"] = text(keys.type);
        if (differs(keys.mix)) json["mix"] = amount(keys.mix, false);
        for (int k = 0; k < slotParameters; ++k)
            if (differs(keys.first + k)) json["par" + std::to_string(k + 1)] = amount(keys.first + k, false);
        return json;
    }

    Json matrix() const {
        Json rows = Json::array();
        int expected = 0;
        for (int row = 0; row < matrixRows; ++row) {
            if (!differs(parameter::MatSrc1 + row) && !differs(parameter::MatDst1 + row) && !differs(parameter::MatVal1 + row))
                continue;
            Json json;
            if (row != expected) json["slot"] = row + 1;
            json["source"] = text(parameter::MatSrc1 + row);
            json["destination"] = text(parameter::MatDst1 + row);
            // The last slot has no control and so no unit.
            const int n = parameter::MatVal1 + row;
            json["amount"] = isBipolar(parameterInfo(n)) ? amount(n, true) : Json(text(n));
            rows.push_back(json);
            expected = row + 1;
        }
        return rows;
    }

    Json arp() const {
        Json steps = Json::array();
        for (int step = 0; step < arpSteps; ++step) {
            const int note = parameter::ArpStp1 + step, velocity = parameter::ArpVol1 + step;
            if (!differs(note) && !differs(velocity)) continue;
            Json json;
            json["step"] = step + 1;
            if (differs(note)) json["note"] = text(note);
            if (differs(velocity)) json["velocity"] = text(velocity);
            steps.push_back(json);
        }
        return steps;
    }

    void addWaves(Json& json) const {
        for (int oscillator = 0; oscillator < oscillatorCount; ++oscillator) {
            const int wave = layer_ * oscillatorCount + oscillator;
            const auto at = static_cast<std::size_t>(wave);
            const std::string number = std::to_string(oscillator + 1);
            if (patch_.customWaves[at] != initCycle())
                json["customWave" + number] = {{"base64", writeCycle(patch_.customWaves[at])}};
            const Sample& sample = patch_.samples[at];
            if (sample.length == 0 || !playsSample(patch_, wave)) continue;
            const std::string file = saveSample_(wave);
            if (file.empty()) continue;
            Json entry = {{"file", file}};
            if (sample.loopStart != 0 || sample.loopEnd != 0) entry["loop"] = {sample.loopStart, sample.loopEnd};
            if (sample.sampleRate == 0) entry["rate"] = 0;
            json["sample" + number] = entry;
        }
    }

    Json layer() const {
        Json json = Json::object();
        const float on = value(parameter::Layer1On + layer_);
        if (on != 1.0f) json["on"] = text(parameter::Layer1On + layer_);
        for (int n = globalParameterCount; n < layerParameterEnd; ++n)
            if (!isGrouped(n) && differs(n)) json[nameOf(n)] = text(n);
        addWaves(json);
        if (const Json rows = matrix(); !rows.empty()) json["matrix"] = rows;
        if (const Json steps = arp(); !steps.empty()) json["arp"] = steps;
        if (differs(parameter::Step1, stepCount)) {
            for (int step = 0; step < stepCount; ++step) json["steps"].push_back(amount(parameter::Step1 + step, false));
        }
        for (const SlotKeys& keys : insertSlots)
            if (const Json effect = slot(keys); !effect.empty()) json[keys.key] = effect;
        return json;
    }

    // The layers up to the last one that is on or holds anything.
    Json layers() {
        std::vector<Json> all;
        std::size_t used = 0;
        for (layer_ = 0; layer_ < layerCount; ++layer_) {
            all.push_back(layer());
            const Json& json = all.back();
            if (json.size() != 1 || !json.contains("on") || json["on"] != "Off") used = all.size();
        }
        layer_ = 0;
        Json list = Json::array();
        for (std::size_t i = 0; i < used; ++i) list.push_back(all[i]);
        return list;
    }

    const Patch& patch_;
    const Patch init_;
    const std::function<std::string(int)>& saveSample_;
    int layer_ = 0;
};

std::string onOneLine(const Json& json) {
    std::string text;
    if (!json.is_structured()) return json.dump(-1, ' ', false, Json::error_handler_t::replace);
    for (const auto& item : json.items()) {
        if (!text.empty()) text += ", ";
        if (json.is_object()) text += Json(item.key()).dump() + ": ";
        text += onOneLine(item.value());
    }
    return json.is_object() ? "{" + text + "}" : "[" + text + "]";
}

bool isFlat(const Json& json) {
    for (const auto& item : json.items())
        if (item.value().is_structured()) return false;
    return true;
}

// What fits on a line and holds no further lists stands on one.
void print(const Json& json, const std::string& indent, std::string& out) {
    if (!json.is_structured() || json.empty() || isFlat(json)) {
        if (std::string line = onOneLine(json); !json.is_structured() || line.size() + indent.size() < lineLength) {
            out += line;
            return;
        }
    }
    const std::string inner = indent + "  ";
    out += json.is_object() ? "{\n" : "[\n";
    std::size_t left = json.size();
    for (const auto& item : json.items()) {
        out += inner;
        if (json.is_object()) out += Json(item.key()).dump() + ": ";
        print(item.value(), inner, out);
        out += --left > 0 ? ",\n" : "\n";
    }
    out += indent + (json.is_object() ? "}" : "]");
}

}  // namespace

std::string writeText(const Patch& patch, const std::function<std::string(int)>& saveSample) {
    std::string text;
    print(Writer(patch, saveSample).top(), "", text);
    return text + "\n";
}

}  // namespace vantoric::patch
