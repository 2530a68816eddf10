#include "editor/model/window_files.h"

#include <cstdint>
#include <cstring>
#include <vector>

#include "base/numbers.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"

namespace vantoric {

namespace {

void showWriteError(platform::Dialogs& dialogs) {
    platform::showMessage(
        dialogs, "Error", "%s",
        "File write error. The configuration could not be stored because the plugin directory is write protected!");
}

std::string belowData() { return std::string("Vantoric_data") + platform::pathSeparator; }

}  // namespace

std::string sizeFilePath() { return platform::ownPath(belowData() + "VantoriSize.cfg"); }
std::string tooltipsFilePath() { return platform::ownPath(belowData() + "VantoriTooltips.cfg"); }
std::string hideEditorFilePath() { return platform::dataPath(belowData() + "VantoriHideEditor.cfg"); }
std::string deallocFilePath() { return platform::dataPath(belowData() + "VantoriDealloc.cfg"); }

std::optional<int> readSizeIndex() {
    std::vector<std::uint8_t> bytes;
    if (!platform::readFile(sizeFilePath(), bytes, 65536) || bytes.empty()) return {};
    return clampTo<int>(bytes[0], 0, editorSizeCount - 1);
}

int sizeIndexForScreen(int screenWidth, int screenHeight, const char* hostProduct) {
    struct Rule {
        int wider, higher, size;
        bool onlyGlaigail;
    };
    // Two base sizes, times 1, 1.25, 1.33 and 2, truncated. Later rules win.
    static constexpr Rule rules[] = {
        {2000, 1400, 3, false}, {1900, 1050, 3, true}, {2500, 1750, 6, false}, {2660, 1862, 7, false}, {3800, 2100, 11, true},
    };
    const bool isGlaigail = hostProduct != nullptr && std::strcmp(hostProduct, "Glaigail") == 0;
    int size = 0;
    for (const Rule& rule : rules)
        if (screenWidth > rule.wider && screenHeight > rule.higher && (isGlaigail || !rule.onlyGlaigail)) size = rule.size;
    return size;
}

int startSizeIndex(int screenWidth, int screenHeight, const char* hostProduct) {
    return readSizeIndex().value_or(sizeIndexForScreen(screenWidth, screenHeight, hostProduct));
}

bool writeSizeIndex(int index, platform::Dialogs& dialogs) {
    const auto byte = static_cast<std::uint8_t>(clampTo(index, 0, editorSizeCount - 1));
    if (platform::writeFile(sizeFilePath(), &byte, 1)) return true;
    showWriteError(dialogs);
    return false;
}

bool tooltipsHidden() { return platform::exists(tooltipsFilePath()); }

void toggleTooltips(platform::Dialogs& dialogs) {
    const bool wereHidden = tooltipsHidden();
    if (wereHidden ? !platform::removeFile(tooltipsFilePath()) : !platform::writeFile(tooltipsFilePath(), nullptr, 0))
        return showWriteError(dialogs);
    platform::showMessage(dialogs, "Info",
                          "Tooltips will be %s. You need to close and open the plugin to make the changes take effect.",
                          wereHidden ? "shown" : "hidden");
}

bool hideEditorRequested() { return platform::exists(hideEditorFilePath()); }
bool deallocRequested() { return platform::exists(deallocFilePath()); }

}  // namespace vantoric
