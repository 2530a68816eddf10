#include "library/menu_commands.h"

#include <utility>

#include "base/text.h"
#include "base/version.h"
#include "library/show_messages.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"
#include "platform/web_page.h"
#include "samples/edit_commands.h"

namespace vantoric {

namespace {

// Rows of the menus.
constexpr int firstTemplateRow = 6;
const std::vector<std::string> waveCommands = {"Load Wave", "Save Wave", "Random Wave", "-"};

std::size_t placeOf(int layer, int oscillator) { return static_cast<std::size_t>(layer * oscillatorCount + oscillator); }

// Names of programs come from hosts too: one with a separator names no file.
bool isFileName(const std::string& name) { return name.find_first_of(std::string_view("/\\\0", 3)) == std::string::npos; }

// What a patch of that layer may be called: as long as a program's name at most.
std::string nameOfLayer(const std::string& patch, int layer) {
    const std::string ending = " layer " + std::to_string(layer + 1);
    std::string_view name = cutText(patch, ProgramSlot::longestName - ending.size());
    if (name.size() < patch.size()) name = name.substr(0, name.find_last_not_of(' ') + 1);
    return std::string(name) + ending;
}

}  // namespace

MenuCommands::MenuCommands(Instrument& instrument, OnShow& onShow, platform::Dialogs& dialogs, PageOpener openPage,
                           InitCommands::Clock clock)
    : instrument_(instrument),
      onShow_(onShow),
      dialogs_(dialogs),
      openPage_(openPage ? std::move(openPage) : PageOpener(platform::openWebPage)),
      log_(instrument),
      library_(*this),
      patch_(instrument, library_),
      browser_(library_, onShow),
      chooser_(dialogs),
      patches_(instrument.patchFiles(), instrument.messages(), dialogs, log_),
      layers_(instrument, onShow, patch_, dialogs, log_),
      inits_(instrument, onShow, patch_, dialogs, log_, clock),
      samples_(instrument.sampleLoader(), instrument.sampleEditor(), instrument.customWaveLoader(), chooser_,
               instrument.messages(), dialogs, log_),
      imports_(instrument.quickImport(), instrument.sfzImport(), chooser_, instrument.messages(), dialogs, log_) {}

// ---- patches

void MenuCommands::file(int row) {
    followLayer();
    const auto imported = [this](bool done) { showImported(done); };
    switch (row) {
        case 0: return loadPatch();
        case 1:
        case 2:
        case 3:
        case 4: return armLoad(row);
        case 6: return savePatchAs();
        case 7: return quickSave();
        case 8:
        case 9:
        case 10:
        case 11: return saveLayer(row - 8);
        case 13: return deletePatch();
        case 15: return imports_.importSample(imported);
        case 16: return imports_.importVocoder(imported);
        case 17: return imports_.importSfzDialog(imported);
        case 19: return open(WebPage::sounds);
        default: return;
    }
}

bool MenuCommands::loadListed(const std::string& category, const std::string& name) {
    const std::string path = patchPath(category, name);
    const int target = std::exchange(onShow_.loadTarget, 0);
    if (target >= 1 && target <= layerCount) return layers_.loadToLayer(path, target - 1);
    if (!patches_.loadPatchFile(path)) return false;
    patch_.showListed(category, name);
    return true;
}

bool MenuCommands::loadPatchFile(const std::string& path) {
    if (!patches_.loadPatchFile(path)) return false;
    onShow_.layer = 0;
    patch_.showFile(path);
    return true;
}

void MenuCommands::loadPatch() {
    patches_.loadPatch([this](const auto& path) {
        if (!path) return;
        onShow_.layer = 0;
        patch_.showFile(*path);
    });
}

void MenuCommands::savePatchAs() {
    patches_.savePatchAs(patch_.name(), [this](const auto& path) {
        if (!path) return;
        ++filesChanged_;
        patch_.showFile(*path);
    });
}

void MenuCommands::quickSave() {
    const std::string name = patch_.name();
    const std::string category = isFileName(name) ? patch_.category() : customCategory;
    if (!patches_.quickSavePatch(category, name)) return;
    ++filesChanged_;
    patch_.showFile(patchPath(category, name));
}

void MenuCommands::saveLayer(int layer) {
    patches_.askSavePath(nameOfLayer(patch_.name(), layer), [this, layer](const auto& path) {
        layers_.saveLayerAsPatch(layer, path);
        if (path) ++filesChanged_;
        library_.scanCategories();
        library_.scanPatches(-1);
    });
}

void MenuCommands::deletePatch() {
    const std::string category = patch_.category(), name = patch_.file();
    if (name.empty()) return dialogs_.message("Info", "This patch is in no list: there is no file to delete.");
    patches_.deletePatch(category, name, [this, category, name](bool isGone) { noteDeleted(category, name, isGone); });
}

// A patch whose file is gone plays on, and is in no list any more.
void MenuCommands::noteDeleted(const std::string& category, const std::string& name, bool isGone) {
    if (isGone) {
        ++filesChanged_;
        library_.noteDeleted(category, name);
    }
    library_.scanPatches(-1);
    if (isGone && patch_.category() == category && patch_.file() == name) patch_.showCustomHere();
}

// The next patch that is chosen goes to that layer; the same row again calls it off.
void MenuCommands::armLoad(int target) {
    onShow_.loadTarget = onShow_.loadTarget == target ? 0 : target;
    ++onShow_.armed;
}

void MenuCommands::importSfzFile(const std::string& path) {
    followLayer();
    imports_.importSfz(path, [this](bool done) { showImported(done); });
}

void MenuCommands::showImported(bool imported) {
    if (imported) patch_.showCustom();
}

void MenuCommands::setFavourite(bool on, Done done) {
    const std::string path = favouritePath(patch_.name());
    if (!isFileName(patch_.name())) return done(false);
    if (on) {
        platform::makeFolder(platform::favouritesFolder());
        const bool isSaved = instrument_.patchFiles().savePatchFile(path);
        if (isSaved) ++filesChanged_;
        library_.scanPatches(-1);
        showMessages(instrument_.messages(), dialogs_);
        return done(isSaved);
    }
    // Of a favourite itself its own file, of any other patch the copy.
    const std::string name = patch_.category() == "Favourites" ? patch_.file() : patchNameOfPath(path);
    patches_.deletePatch("Favourites", name, [this, name, done = std::move(done)](bool isGone) {
        noteDeleted("Favourites", name, isGone);
        done(isGone);
    });
}

bool MenuCommands::isFavourite() const {
    return patch_.category() == "Favourites" || (isFileName(patch_.name()) && platform::exists(favouritePath(patch_.name())));
}

// ---- layers

void MenuCommands::copy(int row) {
    if (const auto stacking = stackingOfRow(row)) {
        layers_.stackLayers(*stacking);
        onShow_.layer = 0;  // the one on show may be off now
        return;
    }
    switch (row) {
        case 0: return layers_.copyPatch();
        case 2: return layers_.copyLayerToFile();
        case 3:
        case 4:
        case 5: return layers_.copyOscillator(row - 3);
        case 6:
        case 7: return layers_.copySection();
        case 9: onShow_.multilayer = !onShow_.multilayer; return;
        default: return;
    }
}

void MenuCommands::paste(int row) {
    switch (row) {
        case 0: return armLoad(onShow_.layer + 1);
        case 2: return layers_.pastePatch();
        case 4: return layers_.pasteFromFile();
        case 5:
        case 6:
        case 7: return layers_.pasteOscillator(row - 5);
        case 8: return layers_.pasteSection(LayerSection::arpeggiator);
        case 9: return layers_.pasteSection(LayerSection::stepLfo);
        default: return;
    }
}

// ---- new patches

void MenuCommands::init(int row) {
    const int chosen = row - firstTemplateRow;
    if (chosen >= 0 && chosen < static_cast<int>(patchTemplates.size())) {
        inits_.createPatch(patchTemplates[static_cast<std::size_t>(chosen)]);
        return;
    }
    switch (row) {
        case 0: return inits_.resetAll();
        case 1: return inits_.resetLayer();
        case 2: return inits_.resetArpeggiator();
        case 3: return inits_.resetMatrix();
        case 4: return inits_.cleanMatrix();
        default: return;
    }
}

// ---- help

void MenuCommands::open(const std::string& address, const std::string& place) {
    pages_.push_back({openPage_(address), place});
    poll();
}

void MenuCommands::poll() {
    using State = platform::PageOpening::State;
    std::vector<Page> left;
    for (Page& page : std::exchange(pages_, {})) {
        const State state = page.opening.look();
        if (state == State::underWay)
            left.push_back(std::move(page));
        else if (state == State::failed)
            platform::showMessage(dialogs_, "Info",
                                  "No program that shows web pages could be started. This is where to look:\n%s",
                                  page.place.c_str());
    }
    pages_ = std::move(left);
}

void MenuCommands::open(WebPage page) { open(addressOf(page), addressOf(page)); }
void MenuCommands::visitShop() { open(WebPage::shop); }

void MenuCommands::help(int row) {
    switch (row) {
        case 4: return open(WebPage::home);
        case 5: return open(WebPage::sounds);
        case 8: return open(WebPage::tutorial);
        case 9: return open(addressOfManual(), placeOfManual());
        case 11: return showVersion();
        case 12: return open(WebPage::updates);
        default: return;
    }
}

void MenuCommands::showVersion() {
    const auto then = [this](bool yes) {
        if (yes) open(WebPage::updates);
    };
    platform::askQuestion(dialogs_, then, "Version info", "Vantoric %s\nDo you want to open the page with updates?", versionText);
}

// ---- samples and waves

void MenuCommands::loadSample(int oscillator) {
    followLayer();
    samples_.loadSampleDialog(oscillator, [](bool) {});
}

void MenuCommands::editSample(int oscillator, int row) {
    if (row < 0 || row >= editCommandCount || editCommands[static_cast<std::size_t>(row)].role == EditRole::separator) return;
    if (row != 0 && !instrument_.sampleEditor().hasSample(onShow_.layer, oscillator))
        return dialogs_.message("Info", "You must load a sample before you can edit it.");
    samples_.editSample(onShow_.layer, oscillator, row, [](bool) {});
}

std::vector<std::string> MenuCommands::waveRows() const {
    std::vector<std::string> rows = waveCommands;
    for (std::string& name : wavetableNames()) rows.push_back(std::move(name));
    return rows;
}

void MenuCommands::chooseWave(int oscillator, int row) {
    if (row < 0 || oscillator < 0 || oscillator >= oscillatorCount) return;
    if (row == 0)
        return samples_.resynthesizeDialog(onShow_.layer, oscillator, [this, layer = onShow_.layer, oscillator](bool made) {
            if (made) noteWave(layer, oscillator, "");
        });
    if (row == 1) return samples_.saveWaveDialog(onShow_.layer, oscillator, [](bool) {});
    const std::vector<std::string> names = wavetableNames();
    // The low bits of the congruence repeat soon.
    const std::size_t drawn = row == 2 && !names.empty() ? (instrument_.customWaveLoader().random.next() >> 8) % names.size() : 0;
    const std::size_t chosen = row == 2 ? drawn : static_cast<std::size_t>(row - firstWaveRow);
    if (row != firstWaveRow - 1 && chosen < names.size()) makeWave(oscillator, names[chosen]);
}

void MenuCommands::makeWave(int oscillator, const std::string& name) {
    if (samples_.resynthesize(onShow_.layer, oscillator, platform::dataPath(platform::belowWavetables() + name + ".wav")))
        noteWave(onShow_.layer, oscillator, name);
}

void MenuCommands::noteWave(int layer, int oscillator, const std::string& name) {
    waves_[placeOf(layer, oscillator)] = {name, instrument_.patchesLoaded()};
}

std::string MenuCommands::shownWave(int oscillator) const { return waveName(placeOf(onShow_.layer, oscillator)); }

WaveNames MenuCommands::waveNames() const {
    WaveNames names;
    for (std::size_t place = 0; place < names.size(); ++place) names[place] = waveName(place);
    return names;
}

void MenuCommands::showWaveNames(const WaveNames& names) {
    for (std::size_t place = 0; place < names.size(); ++place) waves_[place] = {names[place], instrument_.patchesLoaded()};
}

std::string MenuCommands::waveName(std::size_t place) const {
    const ShownWave& shown = waves_[place];
    return shown.loads == instrument_.patchesLoaded() ? shown.name : std::string();
}

}  // namespace vantoric
