// The demo songs as the factory makes them: a stretch of each, rendered as a user would.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "apps/render/mix.h"
#include "platform/scratch_folder.h"
#include "tests/apps/run_program.h"

namespace vantoric::render {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> songs() {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(fs::path(MADE_FOLDER) / "songs"))
        if (entry.path().extension() == ".mix") paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    return paths;
}

class Song : public ::testing::TestWithParam<fs::path> {};

TEST_P(Song, NamesPatchesOfTheLibrary) {
    Mix mix;
    std::string problem;
    ASSERT_TRUE(parseMix(test::contentOf(GetParam()), mix, problem)) << problem;
    EXPECT_TRUE(fs::exists(GetParam().parent_path() / mix.song)) << mix.song;
    EXPECT_FALSE(mix.instruments.empty());
    for (const auto& instrument : mix.instruments)
        EXPECT_TRUE(fs::exists(fs::path(MADE_FOLDER) / "Vantoric_sounds" / (instrument.patch + ".fxp"))) << instrument.patch;
}

// What the program tells behind a word.
double told(const std::string& output, const std::string& word) {
    const std::size_t at = output.find(word);
    return at == std::string::npos ? NAN : std::strtod(output.c_str() + at + word.size(), nullptr);
}

TEST_P(Song, IsHeardAtItsLoudness) {
    const platform::ScratchFolder folder;
    std::string output, errors;
    const std::string arguments =
        "'" + GetParam().string() + "' " + (folder / "song.wav") + " --start 10 --end 14 --tail 2 --fail-on-silence";
    ASSERT_EQ(test::runProgram(RENDER_PROGRAM, arguments, folder.path(), output, errors), 0) << errors;
    EXPECT_NEAR(told(output, "loudness"), -16.0, 1.0) << output;
    EXPECT_LE(told(output, "true peak"), -1.0) << output;
}

INSTANTIATE_TEST_SUITE_P(All, Song, ::testing::ValuesIn(songs()), [](const auto& song) { return song.param.stem().string(); });

TEST(Songs, AreTenOrMore) { EXPECT_GE(songs().size(), 10u); }

}  // namespace
}  // namespace vantoric::render
