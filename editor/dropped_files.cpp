#include "editor/dropped_files.h"

#include <algorithm>
#include <cctype>

#include "base/parameters.h"
#include "library/beside.h"
#include "vstgui/lib/crect.h"

namespace vantoric {
namespace {

using VSTGUI::CPoint;
using VSTGUI::CRect;

// The row of an oscillator, 0 to 2.
CRect rowOf(int oscillator) { return CRect(CPoint(68, 136 + 94.0 * oscillator), CPoint(528, 88)); }

// What a dropped file is, by its extension in any letter case.
enum class DropKind { none, patch, sfz, wave };

DropKind dropKindOf(const std::string& path) {
    constexpr std::size_t length = 4;
    if (path.size() <= length) return DropKind::none;
    std::string end = path.substr(path.size() - length);
    for (char& c : end) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return end == ".fxp" ? DropKind::patch : end == ".sfz" ? DropKind::sfz : end == ".wav" ? DropKind::wave : DropKind::none;
}

std::string takeWave(Q7Editor& editor, const std::string& path, CPoint where) {
    for (int i = 0; i < oscillatorCount; ++i) {
        if (!rowOf(i).pointInside(where)) continue;
        editor.commands().samples().loadChosen(editor.onShow().layer, i, path, true, [](bool) {});
        return "";
    }
    return "Drop a wave on the row of an oscillator.";
}

}  // namespace

std::string takeDropped(Q7Editor& editor, const std::vector<std::string>& paths, CPoint where) {
    const auto file = std::ranges::find_if(paths, [](const std::string& path) { return dropKindOf(path) != DropKind::none; });
    if (file == paths.end()) return "Patches (.fxp), waves (.wav) and .sfz files can be dropped here.";
    std::string told;
    switch (dropKindOf(*file)) {
        case DropKind::patch: editor.commands().loadPatchFile(*file); break;
        case DropKind::sfz: editor.commands().importSfzFile(*file); break;
        default: told = takeWave(editor, *file, where); break;
    }
    if (!told.empty() || paths.size() == 1) return told;
    told.append("'").append(fileNameOf(*file)).append("' was taken of ").append(std::to_string(paths.size()));
    return told.append(" files: one at a time, please.");
}

}  // namespace vantoric
