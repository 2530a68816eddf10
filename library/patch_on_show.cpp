#include "library/patch_on_show.h"

#include <filesystem>

#include "patch/patch_file.h"
#include "platform/module_folder.h"
#include "platform/native_path.h"

namespace vantoric {

void PatchOnShow::follow() {
    if (looked_ && seen_ == instrument_.patchesLoaded()) return;
    library_.findPatch(instrument_.program().getProgramName());
    show(library_.selectedCategory(), library_.selectedPatch());
}

void PatchOnShow::show(const std::string& category, const std::string& name) {
    keep();
    category_ = category;
    file_ = name;
    programName_ = instrument_.program().getProgramName();
}

void PatchOnShow::showListed(const std::string& category, const std::string& name) { show(category, name); }

void PatchOnShow::showAgain(const std::string& category, const std::string& file, const std::string& name) {
    if (file.empty() || !library_.selectPatch(category, file)) {
        library_.findPatch(name);
        return show(customCategory, "");
    }
    show(category, file);
    if (name != file) programName_ = file;  // it was given that name since it was loaded
}

void PatchOnShow::select() {
    if (file_.empty() || !library_.selectPatch(category_, file_)) library_.findPatch(name());
}

void PatchOnShow::showFile(const std::string& path) {
    const std::string name = patchNameOfPath(path);
    const std::filesystem::path file = platform::nativePath(path).lexically_normal();
    library_.scanCategories();
    const int folders = static_cast<int>(library_.categoryNames().size()) - 1;
    for (int i = 0; i < folders; ++i) {
        const std::string& category = library_.categoryNames()[static_cast<std::size_t>(i)];
        if (platform::nativePath(patchPath(category, name)).lexically_normal() != file) continue;
        library_.select({i, 0});
        library_.selectPatch(name);
        return show(category, name);
    }
    library_.findPatch(name);
    show(customCategory, "");
}

void PatchOnShow::showCustom() {
    library_.selectNone();
    show(customCategory, "");
}

void PatchOnShow::showCustomHere() { show(customCategory, ""); }

void PatchOnShow::keep() {
    looked_ = true;
    seen_ = instrument_.patchesLoaded();
}

std::string PatchOnShow::name() const {
    const std::string program = instrument_.program().getProgramName();
    return !file_.empty() && program == programName_ ? file_ : program;
}

}  // namespace vantoric
