#include "tests/window/installation.h"

#include <fstream>

namespace testhost {

namespace fs = std::filesystem;

Installation::Installation(const std::string& plugin) : folder_(scratch_.path()), module_(folder_ / fs::path(plugin).filename()) {
    const fs::path from = fs::canonical(plugin);
    fs::copy_file(from, module_);
    // Banks are large and stay as they are; what the plug-in writes lies beside them.
    fs::create_directory(folder_ / "Vantoric_data");
    for (const auto& entry : fs::directory_iterator(from.parent_path() / "Vantoric_data"))
        if (entry.path().extension() != ".cfg")
            fs::create_symlink(entry.path(), folder_ / "Vantoric_data" / entry.path().filename());
    for (const char* content : {"Vantoric_sounds", "Vantoric_wavetables"})
        if (fs::exists(from.parent_path() / content))
            fs::copy(from.parent_path() / content, folder_ / content, fs::copy_options::recursive);
    setSize(3);
    setTooltips(false);
}

std::string Installation::plugin() const { return module_.string(); }

void Installation::setSize(int index) const { std::ofstream(sizeFile(), std::ios::binary).put(static_cast<char>(index)); }

void Installation::setTooltips(bool areShown) const {
    if (areShown) {
        fs::remove(tooltipsFile());
    } else {
        std::ofstream(tooltipsFile()).put('1');
    }
}

}  // namespace testhost
