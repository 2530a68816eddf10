// An installation of the plug-in that a test may spoil.
#pragma once

#include <filesystem>
#include <string>

namespace testhost {

// A new empty folder. Throws std::runtime_error if there can be none.
std::filesystem::path newFolder();

// A copy of the plug-in with the content beside it, which tests may spoil. Tooltips are off and the window is of size 3
// unless said otherwise.
class Installation {
public:
    // Of the plug-in at that path.
    explicit Installation(const std::string& plugin);
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;
    ~Installation();

    std::string plugin() const;
    const std::filesystem::path& folder() const { return folder_; }
    std::filesystem::path sizeFile() const { return folder_ / "Vantoric_data" / "VantoriSize.cfg"; }
    std::filesystem::path tooltipsFile() const { return folder_ / "Vantoric_data" / "VantoriTooltips.cfg"; }
    void setSize(int index) const;
    void setTooltips(bool areShown) const;

private:
    std::filesystem::path folder_, module_;
};

}  // namespace testhost
