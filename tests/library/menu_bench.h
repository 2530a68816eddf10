// An instrument with a library on disk and menus to choose from.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "library/menu_commands.h"
#include "library/spare_patch.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"
#include "platform/recorded_dialogs.h"
#include "tests/engine/engine_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric::test {

// Notes which commands changed the patch.
struct NotedCommands : CommandListener {
    void commandBegins(const std::string& name) override { names.push_back(name); }
    void commandEnded() override { ++ended; }
    void patchLoaded() override { ++loaded; }
    void patchSaved() override { ++saved; }
    std::vector<std::string> names;
    int ended = 0, loaded = 0, saved = 0;
};

struct MenuBench {
    MenuBench() {
        for (const std::string& folder : {platform::userFolder(), platform::favouritesFolder(), platform::bankFolder()})
            platform::makeFolder(folder);
        audio.messages().take();  // of a start without factory sounds
        rig.clearParameters();
        audio.program().setProgramName("Mine");
        menus.patch().keep();
        menus.log().setListener(&commands);
    }
    ~MenuBench() {
        for (const std::string& folder : {platform::soundsFolder(), platform::bankFolder(), platform::wavetableFolder()})
            std::filesystem::remove_all(folder);
    }

    // A patch file whose parameters all hold `value`, without samples.
    std::string putPatch(const std::string& category, const std::string& name, float value = 0.25f) {
        const std::string path = patchPath(category, name);
        putPatchFile(path, value);
        return path;
    }
    void putPatchFile(const std::string& path, float value = 0.25f) {
        const auto patch = std::make_unique<SparePatch>(audio.messages());
        for (int i = 0; i < parameterCount; ++i) patch->parameters().setParameter(i, value);
        EXPECT_TRUE(platform::makeFolder(folderOfPath(path)));
        EXPECT_TRUE(patch->files().savePatchFile(path));
    }
    // One that no instrument takes.
    std::string putBadPatch(const std::string& category, const std::string& name) {
        const std::string path = patchPath(category, name);
        platform::makeFolder(folderOfPath(path));
        EXPECT_TRUE(platform::writeFile(path, "CcnK", 4));
        return path;
    }
    void putSound(int layer, int oscillator, int length, std::int16_t value) {
        CopiedSample sound;
        sound.samples.assign(static_cast<std::size_t>(length), value);
        EXPECT_TRUE(putSample(partsOf(audio), audio.layer(layer).sample(oscillator), sound));
    }
    void setCut(int layer, float value) { rig.set(par::Cutoff1, value, layer); }
    float cut(int layer) const { return value(hostIndex(par::Cutoff1, layer)); }
    float value(int index) const { return audio.parameters().getParameter(index); }
    std::string name() const { return audio.program().getProgramName(); }
    std::vector<float> values() const {
        std::vector<float> all;
        for (int i = 0; i < parameterCount; ++i) all.push_back(value(i));
        return all;
    }
    // The boxes and questions since the last call, "title: text".
    std::vector<std::string> shown() {
        std::vector<std::string> all;
        for (const auto& box : dialogs.boxes()) all.push_back(box.title + ": " + box.text);
        dialogs.clear();
        return all;
    }
    std::vector<std::string> userFiles() const {
        std::vector<platform::FolderEntry> entries;
        platform::listFolder(platform::userFolder(), entries);
        std::vector<std::string> names;
        for (const auto& entry : entries) names.push_back(entry.name);
        return names;
    }

    EngineRig rig;
    Instrument& audio = rig.audio;
    OnShow onShow;
    platform::RecordedDialogs dialogs;
    std::vector<std::string> pages;
    bool hasOpener = true;
    NotedCommands commands;
    MenuCommands menus{audio, onShow, dialogs, [this](const std::string& address) {
                           pages.push_back(address);
                           return hasOpener ? platform::PageOpening::opened() : platform::PageOpening::failed();
                       }};
};

}  // namespace vantoric::test
