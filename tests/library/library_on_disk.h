// A library of empty patch files, and a loader that only notes what it was asked for.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "library/patch_library.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/scratch_folder.h"

namespace vantoric::test {

struct LibraryOnDisk : ListedPatchLoader {
    LibraryOnDisk() {
        platform::setDataFolder(root.path());
        platform::makeFolder(platform::soundsFolder());
    }
    ~LibraryOnDisk() { platform::setDataFolder(""); }

    void put(const std::string& category, const std::vector<std::string>& patches) {
        EXPECT_TRUE(platform::makeFolder(platform::soundsFolder() + category));
        for (const std::string& patch : patches) putText(category + "/" + patch + ".fxp", "");
    }
    void putText(const std::string& path, const std::string& text) {
        std::ofstream file(platform::soundsFolder() + path, std::ios::binary);
        file << text;
        EXPECT_TRUE(file.good());
    }
    void vanish(const std::string& category) { std::filesystem::remove_all(platform::soundsFolder() + category); }
    int place(const std::string& category) const {
        const auto& names = library.categoryNames();
        return static_cast<int>(std::find(names.begin(), names.end(), category) - names.begin());
    }

    bool loadListed(const std::string& category, const std::string& name) override {
        loads.push_back(category + "/" + name);
        return succeeds;
    }

    platform::ScratchFolder root;
    PatchLibrary library{*this};
    std::vector<std::string> loads;
    bool succeeds = true;
};

}  // namespace vantoric::test
