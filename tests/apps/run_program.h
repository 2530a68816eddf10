// Runs one of the programs as a shell does.
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vantoric::test {

inline std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The exit code of `program arguments`, -1 if it ended otherwise; what it printed goes to `output` and
// `errors`, by way of two files in `folder`.
inline int runProgram(const std::string& program, const std::string& arguments, const std::filesystem::path& folder,
                      std::string& output, std::string& errors) {
    const std::string out = folder / "stdout", err = folder / "stderr";
    const int status = std::system((program + " " + arguments + " >" + out + " 2>" + err).c_str());
    output = contentOf(out);
    errors = contentOf(err);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace vantoric::test
