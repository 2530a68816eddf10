// A library on disk as a case describes it.
#pragma once

#include <string>
#include <vector>

#include "golden_runner/golden.h"
#include "library/patch_library.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/scratch_folder.h"

namespace golden {

// Serves as the installation while it stands.
class LibraryFolders {
public:
    LibraryFolders() {
        vantoric::platform::setDataFolder(root.path());
        vantoric::platform::makeFolder(vantoric::platform::soundsFolder());
    }
    ~LibraryFolders() { vantoric::platform::setDataFolder(""); }

    void put(const std::string& path, const std::string& text = "") const {
        const std::size_t slash = path.rfind('/');
        if (slash != std::string::npos) vantoric::platform::makeFolder(root / path.substr(0, slash));
        vantoric::platform::writeFile(root / path, text.data(), text.size());
    }
    void putFolder(const std::string& path) const { vantoric::platform::makeFolder(root / path); }
    // {"Bass": ["Deep.fxp"]}
    void putCategories(const json& categories) const {
        for (const auto& [folder, files] : categories.items()) {
            putFolder("Vantoric_sounds/" + folder);
            for (const json& file : files) put("Vantoric_sounds/" + folder + "/" + file.get<std::string>());
        }
    }
    std::string text(const std::string& path) const {
        std::vector<std::uint8_t> bytes;
        vantoric::platform::readFile(root / path, bytes);
        return {bytes.begin(), bytes.end()};
    }

    vantoric::platform::ScratchFolder root;
};

// Notes what would be loaded.
struct NotedLoads : vantoric::ListedPatchLoader {
    bool loadListed(const std::string& category, const std::string& name) override {
        category_ = category;
        name_ = name;
        return true;
    }
    // The load since the last call, null for none: the name, or folder/name.
    json take(bool withFolder) {
        if (name_.empty()) return nullptr;
        const json taken = withFolder ? category_ + "/" + name_ : name_;
        name_.clear();
        return taken;
    }

private:
    std::string category_, name_;
};

// Takes null where null is expected, for fields that are not compared then.
inline void passNull(json& got, const json& expected) {
    if (expected.is_null()) {
        got = nullptr;
    } else if (expected.is_array() && got.is_array() && got.size() == expected.size()) {
        for (std::size_t i = 0; i < got.size(); ++i) passNull(got[i], expected[i]);
    } else if (expected.is_object() && got.is_object()) {
        for (auto& [key, value] : got.items())
            if (expected.contains(key)) passNull(value, expected.at(key));
    }
}

// Compares with what is expected and then with what counts as right too.
inline Outcome compareAny(const Case& c, const json& got) {
    Outcome outcome = compare(c.expected, got, c.tolerance);
    for (const json& other : c.whole.value("alsoAccepted", json::array()))
        if (!outcome.passed) outcome = compare(other, got, c.tolerance);
    return outcome;
}

inline vantoric::PatchSelection selectionOf(const json& j) { return {j.at(0).get<int>(), j.at(1).get<int>()}; }

}  // namespace golden
