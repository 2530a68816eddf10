// An installation of the plug-in that a test may spoil.
#pragma once

#include <filesystem>
#include <string>

#include "platform/scratch_folder.h"

namespace testhost {

// A copy of the plug-in with the content beside it, which tests may spoil. Tooltips are off and the window is of size 3
// unless said otherwise.
class Installation {
public:
    // Of the plug-in at that path.
    explicit Installation(const std::string& plugin);
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;

    std::string plugin() const;
    const std::filesystem::path& folder() const { return folder_; }
    std::filesystem::path sizeFile() const { return folder_ / "Vantoric_data" / "VantoriSize.cfg"; }
    std::filesystem::path tooltipsFile() const { return folder_ / "Vantoric_data" / "VantoriTooltips.cfg"; }
    void setSize(int index) const;
    void setTooltips(bool areShown) const;

private:
    vantoric::platform::ScratchFolder scratch_;
    std::filesystem::path folder_, module_;
};

}  // namespace testhost
