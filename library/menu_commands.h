// What the rows of the menus and the buttons beside them do. Whoever draws a menu tells which row was chosen.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "engine/instrument.h"
#include "library/command_log.h"
#include "library/import_commands.h"
#include "library/init_commands.h"
#include "library/layer_commands.h"
#include "library/on_show.h"
#include "library/patch_browser.h"
#include "library/patch_commands.h"
#include "library/patch_library.h"
#include "library/patch_on_show.h"
#include "library/patch_state.h"
#include "library/sample_commands.h"
#include "library/web_pages.h"
#include "platform/dialogs.h"

namespace vantoric {

// On the thread of the window. Rows count from 0 with the separators; separators and rows that there are none of do nothing.
// Oscillators are 0 to 2, of the layer on show. Every command tells the user what there is to tell; one that fails or that
// the user leaves ends with the patch that was there before. Outlives the questions of the dialogs.
class MenuCommands : private ListedPatchLoader {
public:
    // All outlive it. `openPage`: empty for the desktop's opener.
    MenuCommands(Instrument& instrument, OnShow& onShow, platform::Dialogs& dialogs, PageOpener openPage = {},
                 InitCommands::Clock clock = nullptr);

    // The menus "FILE", "COPY", "PASTE", "INIT A NEW PATCH" and "HELP". Of the last, rows 0 (tooltips), 2 (controllers) and
    // 7 (credits) are the window's own.
    void file(int row);
    void copy(int row);
    void paste(int row);
    void init(int row);
    void help(int row);
    // "VISIT THE SHOP".
    void visitShop();
    // Tells of pages whose opener has failed since. In idle rounds of the window.
    void poll();

    // The buttons that load a sample.
    void loadSample(int oscillator);
    // The 45 rows of a sample's "EDIT" menu.
    void editSample(int oscillator, int row);
    // The rows of an oscillator's wave menu: its commands, then the wavetables, scanned at each call; and what a row does.
    static constexpr int firstWaveRow = 4;
    std::vector<std::string> waveRows() const;
    void chooseWave(int oscillator, int row);
    // The wavetable that the custom wave of an oscillator was made of since the patch was loaded; empty for none.
    std::string shownWave(int oscillator) const;
    // The same of all layers; and what they are of a patch that was just taken back, for whoever kept them.
    WaveNames waveNames() const;
    void showWaveNames(const WaveNames& names);

    // The favourite switch. Switched on, the patch in force is saved among the favourites; switched off, its file there
    // goes if the user agrees. `done` hears whether the switch stands as it was set.
    void setFavourite(bool on, Done done);
    bool isFavourite() const;

    // A file that was dropped on the window or chosen elsewhere: a patch.
    bool loadPatchFile(const std::string& path);
    // An SFZ file, as the row "Import *.sfz".
    void importSfzFile(const std::string& path);
    // No patch is waited for any more that is to go to a layer.
    void callOffLoad() { onShow_.loadTarget = 0; }

    // Counts what was saved to the library or deleted from it here, so that who searches it knows when to look again.
    unsigned filesChanged() const { return filesChanged_; }

    PatchLibrary& library() { return library_; }
    PatchBrowser& browser() { return browser_; }
    PatchOnShow& patch() { return patch_; }
    CommandLog& log() { return log_; }
    LayerCommands& layers() { return layers_; }
    SampleCommands& samples() { return samples_; }
    ImportCommands& imports() { return imports_; }

private:
    bool loadListed(const std::string& category, const std::string& name) override;
    void loadPatch();
    void savePatchAs();
    void quickSave();
    void saveLayer(int layer);
    void deletePatch();
    void noteDeleted(const std::string& category, const std::string& name, bool isGone);
    void armLoad(int target);
    void showImported(bool imported);
    std::string waveName(std::size_t place) const;
    void noteWave(int layer, int oscillator, const std::string& name);
    void makeWave(int oscillator, const std::string& name);
    void showVersion();
    void open(WebPage page);
    void open(const std::string& address, const std::string& place);
    void followLayer() { instrument_.sampleLoader().currentLayer = onShow_.layer; }

    // A page that was asked for, and where a user finds it.
    struct Page {
        platform::PageOpening opening;
        std::string place;
    };

    // The wavetable that a custom wave was made of, and the count of loads at that time.
    struct ShownWave {
        std::string name;
        std::uint32_t loads = 0;
    };

    Instrument& instrument_;
    OnShow& onShow_;
    platform::Dialogs& dialogs_;
    PageOpener openPage_;
    std::vector<Page> pages_;  // under way
    CommandLog log_;
    PatchLibrary library_;
    PatchOnShow patch_;
    PatchBrowser browser_;
    WaveChooser chooser_;
    PatchCommands patches_;
    LayerCommands layers_;
    InitCommands inits_;
    SampleCommands samples_;
    ImportCommands imports_;
    std::array<ShownWave, layerCount * oscillatorCount> waves_;
    unsigned filesChanged_ = 0;
};

}  // namespace vantoric
