// write_description FOLDER: writes the description of the LV2 plug-in, manifest.ttl and Vantoric.ttl, from the table of
// parameters.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "base/version.h"
#include "faces/common/identity.h"
#include "faces/lv2/lv2_ports.h"

namespace {

using namespace vantoric;
using namespace vantoric::lv2_face;
namespace hp = host_parameter;

constexpr char prefixes[] =
    "@prefix atom: <http://lv2plug.in/ns/ext/atom#> .\n"
    "@prefix doap: <http://usefulinc.com/ns/doap#> .\n"
    "@prefix foaf: <http://xmlns.com/foaf/0.1/> .\n"
    "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
    "@prefix midi: <http://lv2plug.in/ns/ext/midi#> .\n"
    "@prefix pg: <http://lv2plug.in/ns/ext/port-groups#> .\n"
    "@prefix pprops: <http://lv2plug.in/ns/ext/port-props#> .\n"
    "@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .\n"
    "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n"
    "@prefix state: <http://lv2plug.in/ns/ext/state#> .\n"
    "@prefix time: <http://lv2plug.in/ns/ext/time#> .\n"
    "@prefix ui: <http://lv2plug.in/ns/extensions/ui#> .\n"
    "@prefix urid: <http://lv2plug.in/ns/ext/urid#> .\n\n";

std::string inAngles(const std::string& uri) { return "<" + uri + ">"; }

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

// A name that the language of symbols allows, unlike every other.
std::string symbolOf(int index) {
    const int layer = ParameterModel::parameterLayer(index);
    const std::string name = hp::name(index);
    const std::string bare = layer == 0 ? name : name.substr(name.find(':') + 1);
    std::string symbol = layer == 0 ? bare : "layer" + std::to_string(layer) + "_" + bare;
    for (char& c : symbol)
        if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
    return symbol;
}

std::string groupUri(const std::string& group) {
    std::string name = group;
    std::erase(name, ' ');
    return std::string(pluginUri) + "#" + name;
}

// In the notation that every parser takes, whatever the process's locale.
std::string decimal(double value) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << value;
    return text.str();
}

std::string stepTexts(int index) {
    std::string texts;
    for (int step = 0; step <= hp::steps(index); ++step)
        texts += std::string(step == 0 ? "" : " , ") + "[ rdfs:label " + quoted(hp::stepText(index, step)) + " ; rdf:value " +
                 std::to_string(step) + " ]";
    return texts;
}

std::string valuePort(int port, int index) {
    const int steps = hp::steps(index);
    std::string text = " , [\n        a lv2:InputPort , lv2:ControlPort ;\n        lv2:index " + std::to_string(port) +
                       " ;\n        lv2:symbol \"" + symbolOf(index) + "\" ;\n        lv2:name " + quoted(hp::name(index)) +
                       " ;\n        lv2:default " + decimal(hp::defaultValue(index)) + " ;\n        lv2:minimum 0.0 ;\n" +
                       "        lv2:maximum " + decimal(hp::largest(index)) + " ;\n        pg:group " +
                       inAngles(groupUri(hp::group(index))) + " ;\n";
    if (steps == 1) text += "        lv2:portProperty lv2:toggled ;\n";
    if (steps > 1)
        text += "        lv2:portProperty lv2:integer , lv2:enumeration ;\n        lv2:scalePoint " + stepTexts(index) + " ;\n";
    return text + "    ]";
}

// LV2 counts minor and micro, and an even micro version is a release: 3.3.0 is 3 and 60.
constexpr int minorOf(int version) { return version / 1000; }
constexpr int microOf(int version) { return version / 10 % 100 * 2; }
static_assert(minorOf(3300) == 3 && microOf(3300) == 60 && microOf(3310) == 62 && microOf(3400) == 80 && microOf(4000) == 0);

std::string soundPort(int port, const char* symbol, const char* name) {
    return std::string(" , [\n        a lv2:OutputPort , lv2:AudioPort ;\n        lv2:index ") + std::to_string(port) +
           " ;\n        lv2:symbol \"" + symbol + "\" ;\n        lv2:name \"" + name + "\" ;\n    ]";
}

std::string manifest(bool hasWindow) {
    const std::string files = "    lv2:binary <Vantoric.so> ;\n    rdfs:seeAlso <Vantoric.ttl> .\n";
    std::string text = prefixes + inAngles(pluginUri) + "\n    a lv2:Plugin , lv2:InstrumentPlugin ;\n" + files;
    if (hasWindow) text += "\n" + inAngles(windowUri) + "\n    a ui:X11UI ;\n" + files;
    return text;
}

std::string plugin(bool hasWindow) {
    std::string text = prefixes;
    for (const char* group : {"Global", "Layer 1", "Layer 2", "Layer 3", "Layer 4"}) {
        std::string symbol = group;
        std::erase(symbol, ' ');
        text += inAngles(groupUri(group)) + "\n    a pg:InputGroup ;\n    lv2:symbol \"" + symbol + "\" ;\n    lv2:name \"" +
                group + "\" .\n\n";
    }
    text += inAngles(pluginUri) + "\n    a lv2:Plugin , lv2:InstrumentPlugin , doap:Project ;\n    doap:name \"" +
            identity::name +
            "\" ;\n    doap:license <https://spdx.org/licenses/GPL-3.0-or-later> ;\n    doap:maintainer [ foaf:name \"" +
            identity::vendor + "\" ; foaf:homepage <" + identity::homePage + "> ] ;\n    rdfs:comment \"" +
            identity::description + "\" ;\n    lv2:minorVersion " + std::to_string(minorOf(versionNumber)) +
            " ;\n    lv2:microVersion " + std::to_string(microOf(versionNumber)) +
            " ;\n    lv2:requiredFeature urid:map ;\n    lv2:optionalFeature lv2:hardRTCapable , state:threadSafeRestore ;\n"
            "    lv2:extensionData state:interface ;\n";
    if (hasWindow) text += "    ui:ui " + inAngles(windowUri) + " ;\n";
    text +=
        "    lv2:port [\n        a lv2:InputPort , atom:AtomPort ;\n        atom:bufferType atom:Sequence ;\n"
        "        atom:supports midi:MidiEvent , time:Position ;\n        lv2:designation lv2:control ;\n        lv2:index 0 ;\n"
        "        lv2:symbol \"events\" ;\n        lv2:name \"Events\" ;\n    ]";
    text += soundPort(leftPort, "left", "Left") + soundPort(rightPort, "right", "Right");
    text += " , [\n        a lv2:InputPort , lv2:ControlPort ;\n        lv2:index " + std::to_string(freeWheelPort) +
            " ;\n        lv2:symbol \"freeWheeling\" ;\n        lv2:name \"Free wheeling\" ;\n"
            "        lv2:designation lv2:freeWheeling ;\n        lv2:portProperty lv2:toggled , pprops:notOnGUI ;\n"
            "        lv2:default 0.0 ;\n        lv2:minimum 0.0 ;\n        lv2:maximum 1.0 ;\n    ]";
    const std::vector<int>& indices = portParameters();
    for (std::size_t i = 0; i < indices.size(); ++i) text += valuePort(firstValuePort + static_cast<int>(i), indices[i]);
    text += " , [\n        a lv2:OutputPort , atom:AtomPort ;\n        atom:bufferType atom:Sequence ;\n        lv2:index " +
            std::to_string(noticePort()) +
            " ;\n        lv2:symbol \"notices\" ;\n        lv2:name \"Notices\" ;\n"
            "        lv2:portProperty lv2:connectionOptional ;\n    ]";
    text += " .\n";
    if (hasWindow)
        text += "\n" + inAngles(windowUri) +
                "\n    lv2:requiredFeature ui:idleInterface , ui:parent , <http://lv2plug.in/ns/ext/instance-access> ;\n"
                "    lv2:optionalFeature ui:resize , ui:touch , ui:noUserResize ;\n    lv2:extensionData ui:idleInterface .\n";
    return text;
}

bool write(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    return !file.fail();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return std::fprintf(stderr, "usage: %s FOLDER [--no-window]\n", argv[0]), 2;
    const bool hasWindow = argc < 3 || std::strcmp(argv[2], "--no-window") != 0;
    const std::string folder = std::string(argv[1]) + "/";
    if (write(folder + "manifest.ttl", manifest(hasWindow)) && write(folder + "Vantoric.ttl", plugin(hasWindow))) return 0;
    return std::fprintf(stderr, "%s: cannot be written\n", argv[1]), 1;
}
