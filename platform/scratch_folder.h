// A folder of one's own for tools and tests, in the system's folder for temporary files.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace vantoric::platform {

// Is made empty, for this user alone, and goes with everything in it. Throws std::runtime_error if it cannot be made.
class ScratchFolder {
public:
    ScratchFolder() {
        // mkdtemp puts letters of its own in place of the last six.
        std::string pattern = (std::filesystem::temp_directory_path() / "vantoric-").string() + std::string(6, 'X');
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder can be made as " + pattern);
        path_ = pattern + "/";
    }
    ~ScratchFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& path() const { return path_; }  // ends in a separator
    std::string operator/(const std::string& name) const { return path_ + name; }

private:
    std::string path_;
};

}  // namespace vantoric::platform
