// An instrument whose menus are chosen from, with a note of the patch files that this reads and writes.
#pragma once

#include <filesystem>
#include <string>

#include "bindings/library_folders.h"
#include "engine/engine_rig.h"
#include "golden_runner/digest.h"
#include "library/menu_commands.h"
#include "library/spare_patch.h"
#include "platform/files.h"
#include "platform/own_files.h"
#include "platform/recorded_dialogs.h"

namespace golden {

// Fills parameters by the pattern of a case, no oscillator in sample mode.
inline void fillPattern(vantoric::ParameterModel& parameters, const json& pattern) {
    const std::int64_t mul = pattern.at("mul"), add = pattern.at("add"), modulus = pattern.at("modulus");
    for (int i = 0; i < vantoric::parameterCount; ++i)
        parameters.setParameter(
            i, static_cast<float>(static_cast<double>((i * mul + add) % modulus) / static_cast<double>(modulus - 1)));
    for (int layer = 0; layer < vantoric::layerCount; ++layer)
        for (int o = 0; o < vantoric::oscillatorCount; ++o) {
            const int index = vantoric::hostIndex(vantoric::parameter::SynType1 + o, layer);
            if (parameters.getListIndex(index) == 3) parameters.setParameter(index, 0.0f);
        }
    for (const json& row : pattern.value("set", json::array())) parameters.setParameter(row[0], asFloat(row[1]));
}

inline void appendFloat(Bytes& bytes, float value) {
    bytes.resize(bytes.size() + 4);
    vantoric::chunk::writeBigFloat(&bytes[bytes.size() - 4], value);
}

// Of some host indices' values, big-endian.
inline std::string digestOf(const vantoric::ParameterModel& parameters, int first, int last) {
    Bytes bytes;
    for (int i = first; i <= last; ++i) appendFloat(bytes, parameters.getParameter(i));
    return sha256(bytes);
}

struct MenuBench : vantoric::PatchFileListener {
    explicit MenuBench(vantoric::InitCommands::Clock clock = nullptr) : menus(rig.audio, onShow, dialogs, opener(), clock) {
        vantoric::platform::makeFolder(vantoric::platform::userFolder());
        vantoric::platform::makeFolder(vantoric::platform::bankFolder());
        rig.audio.messages().take();  // of a start without factory sounds
        rig.clearParameters();
        menus.patch().keep();
        rig.audio.patchFiles().setListener(this);
    }
    // The installation is for the next case as it was.
    ~MenuBench() {
        for (const std::string& folder : {vantoric::platform::soundsFolder(), vantoric::platform::wavetableFolder()})
            std::filesystem::remove_all(folder);
    }

    void patchFile(vantoric::FileAction action, const std::string& path) override {
        static constexpr const char* names[] = {"read", "write", "remove"};
        const std::string name = path.starts_with(root()) ? path.substr(root().size()) : path;
        files.push_back({names[static_cast<int>(action)], name});
    }
    static std::string root() { return vantoric::platform::soundsFolder(); }
    static std::string data() { return vantoric::platform::dataFolder(); }
    // The file of the last such action below the data folder since the notes were cleared; null for none.
    json lastFile(const std::string& action) const {
        for (auto file = files.rbegin(); file != files.rend(); ++file)
            if ((*file)[0] == action) return belowData((*file)[1]);
        return nullptr;
    }
    static std::string belowData(const std::string& file) {
        if (file.starts_with(data())) return file.substr(data().size());
        return file.starts_with('/') ? file : root().substr(data().size()) + file;
    }
    // Boxes since the last call, with the data folder as the cases write it.
    json takeBoxes() {
        json boxes = json::array();
        for (const auto& box : dialogs.boxes()) {
            std::string text = box.text;
            if (const std::size_t at = text.find(data()); at != std::string::npos) text.replace(at, data().size(), "<data>");
            boxes.push_back({box.isQuestion ? "question" : "message", box.title, text});
        }
        dialogs.clear();
        return boxes;
    }
    // Writes a patch file of that pattern, or of zeros, at a path.
    void putPatch(const std::string& path, const json& pattern = nullptr) {
        const auto patch = std::make_unique<vantoric::SparePatch>(rig.audio.messages());
        if (!pattern.is_null()) fillPattern(patch->parameters(), pattern);
        vantoric::platform::makeFolder(vantoric::folderOfPath(path));
        patch->files().savePatchFile(path);
    }
    float value(int index) const { return rig.audio.parameters().getParameter(index); }
    json valuesLike(const json& rows) const {
        json got = json::array();
        for (const json& row : rows) got.push_back({row[0], value(row[0])});
        return got;
    }
    std::string digest() const { return digestOf(rig.audio.parameters(), 0, vantoric::parameterCount - 1); }

    vantoric::test::EngineRig rig;
    vantoric::OnShow onShow;
    vantoric::platform::RecordedDialogs dialogs;
    json files = json::array(), pages = json::array();
    vantoric::MenuCommands menus;

private:
    vantoric::PageOpener opener() {
        return [this](const std::string& address) {
            pages.push_back(address);
            return vantoric::platform::PageOpening::opened();
        };
    }
};

}  // namespace golden
