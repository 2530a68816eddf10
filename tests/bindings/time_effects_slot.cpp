// The effect slot: its type table, texts and feeding.
#include <algorithm>

#include "base/numbers.h"
#include "effects/multieffect.h"
#include "effects/type_labels.h"
#include "golden_runner/golden.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using golden::Outcome;
using namespace vantoric;

json typeRow(int type) {
    const EffectType& row = effectType(type);
    return {{"type", type},
            {"menu", insertTypeLabels.at(static_cast<std::size_t>(type))},
            {"master_menu", masterTypeLabels.at(static_cast<std::size_t>(type))},
            {"name", row.name},
            {"family", static_cast<int>(row.family)},
            {"variant", row.variant},
            {"defaults", row.defaults}};
}

json typeTable(const Case& c) {
    if (c.input.contains("types")) {
        json rows = json::array();
        for (const json& type : c.input["types"]) rows.push_back(typeRow(type));
        return {{"rows", rows}};
    }
    RandomSources random;
    Multieffect slot(random);
    json names = json::array();
    char text[effectTextSize];
    for (const json& n : c.input.at("n")) {
        slot.setType(n);
        slot.getTypeName(text);
        names.push_back(text);
    }
    return {{"names", names}};
}

std::string displayed(Multieffect& slot, int index, float value) {
    char text[effectTextSize];
    slot.setParameter(index, value);
    slot.getParameterDisplay(index, text);
    return text;
}

// A null among the expected texts is not compared.
Outcome display(const Case& c) {
    RandomSources random;
    Multieffect slot(random);
    slot.setType(c.input.at("type"));
    Outcome outcome;
    const json& values = c.input.at("values");
    for (std::size_t k = 0; k < values.size(); ++k) {
        const json& row = c.expected.at("texts").at(k);
        const json wanted = row.is_array() ? row : json::array({row});
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            if (wanted[i].is_null()) continue;
            const int index = c.input.value("index", static_cast<int>(i));
            const std::string got = displayed(slot, index, asFloat(values[k]));
            if (got != wanted[i].get<std::string>())
                outcome.fail("index " + std::to_string(index) + ": got \"" + got + "\", expected " + wanted[i].dump());
        }
    }
    return outcome;
}

json parameterAccess(const Case& c) {
    RandomSources random;
    Multieffect slot(random);
    json names = json::array(), values = json::array();
    char text[effectTextSize];
    for (const json& index : c.input.at("name_index")) {
        slot.getParameterName(index, text);
        names.push_back(text);
    }
    for (const auto& [index, value] : c.input.at("set").items()) slot.setParameter(std::stoi(index), asFloat(value));
    for (const json& index : c.input.at("get")) values.push_back(slot.getParameter(index));
    return {{"names", names}, {"values", values}};
}

json readBack(const Case& c) {
    json out = {{"index", json::array()}, {"type", json::array()}, {"master_type", json::array()}};
    for (const json& value : c.input.at("value")) {
        out["index"].push_back(listIndex(asFloat(value)));
        out["type"].push_back(typeFromValue(asFloat(value)));
        out["master_type"].push_back(masterTypeFromValue(asFloat(value)));
    }
    return out;
}

json firstInsert(const Case& c) {
    json values = json::array();
    for (std::size_t k = 0; k < c.input.at("base").size(); ++k) {
        const float base = asFloat(c.input["base"][k]);
        float lowest = base, highest = base;
        for (const json& voice : c.input.at("voices").at(k)) {
            lowest = std::min(lowest, asFloat(voice));
            highest = std::max(highest, asFloat(voice));
        }
        values.push_back(extremeValue(base, lowest, highest));
    }
    return {{"value", values}};
}

const golden::Binding bindings[] = {
    {"time_effects", "slot_type_table", golden::checkValues<typeTable>},
    {"time_effects", "slot_display", display},
    {"time_effects", "slot_parameters", golden::checkValues<parameterAccess>},
    {"time_effects", "slot_type_read_back", golden::checkValues<readBack>},
    {"time_effects", "slot_first_insert", golden::checkValues<firstInsert>},
};

}  // namespace
