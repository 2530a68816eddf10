// The program from outside: what it says, its exit codes, what it leaves.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/version.h"
#include "tests/faces/standalone/program.h"

namespace {

using testhost::FileSizeLimit;
using testhost::Home;
using testhost::Program;
using testhost::run;

class ProgramTest : public testing::Test {
protected:
    ProgramTest() {
        setenv("JACK_NO_START_SERVER", "1", 1);
        setenv("JACK_DEFAULT_SERVER", "vantoric-test-none", 1);
        display_ = getenv("DISPLAY") != nullptr ? getenv("DISPLAY") : "";
        unsetenv("DISPLAY");
    }
    ~ProgramTest() override {
        if (!display_.empty()) setenv("DISPLAY", display_.c_str(), 1);
    }
    int start(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), PROGRAM);
        return run(arguments, output_);
    }
    bool said(const std::string& text) const { return output_.find(text) != std::string::npos; }

    // Where the installation lies, as it is noted for installers.
    std::string notedPath() const {
        std::ifstream settings(home_ / "config/Orvix/Vantoric/settings");
        std::string line;
        std::getline(settings, line);
        return line;
    }

    Home home_;
    std::string output_, display_;
};

TEST_F(ProgramTest, AnswersQuestions) {
    EXPECT_EQ(start({"--help"}), 0);
    for (const char* option : {"--no-window", "--sound", "--device", "--rate", "--period", "--patch", "--record", "--seconds",
                               "--list-devices", "--version", "Exit codes"})
        EXPECT_TRUE(said(option)) << option;
    EXPECT_EQ(start({"--version"}), 0);
    EXPECT_EQ(output_, std::string("vantoric ") + vantoric::versionText + "\n");
    EXPECT_EQ(start({"--list-devices"}), 0);
    EXPECT_TRUE(said("JACK: no server is running") || said("JACK: its library is not installed")) << output_;
}

TEST_F(ProgramTest, SaysWhatIsWrong) {
    EXPECT_EQ(start({"--loud"}), 2);
    EXPECT_EQ(start({"--sound", "tape"}), 2);
    EXPECT_EQ(start({"--rate", "5"}), 2);
    EXPECT_EQ(start({"--period", "many"}), 2);
    for (const char* seconds : {"0", "nan", "-nan", "inf", "1e999", "2e6", "1s", ""}) {
        EXPECT_EQ(start({"--no-window", "--sound", "none", "--seconds", seconds}), 2) << seconds;
        EXPECT_TRUE(said("--seconds: should be a number from 0.001 to 1000000")) << output_;
    }
    EXPECT_EQ(start({"song.mid"}), 2);
    EXPECT_EQ(start({"--no-window", "--sound", "jack"}), 3);
    EXPECT_TRUE(said("no sound: JACK: ")) << output_;
    EXPECT_EQ(start({"--no-window", "--device", "no such device"}), 3);
    EXPECT_TRUE(said("no sound: ALSA: device \"no such device\": No such file or directory")) << output_;
    EXPECT_EQ(start({"--sound", "none"}), 4);
    EXPECT_TRUE(said("there is no display. --no-window plays without one.")) << output_;
    EXPECT_EQ(start({"--probe"}), 4);
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--patch", "Nowhere/Nothing"}), 5);
    EXPECT_TRUE(said("Nowhere/Nothing: no such patch")) << output_;
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--patch", PROGRAM}), 5);  // a file, but no patch
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--record", home_ / "no folder/take.wav"}), 6);
}

// As where another library of JACK is the system's and finds no server.
TEST_F(ProgramTest, FindsPipeWiresOwnLibraryOfJack) {
    const std::filesystem::path folder = home_ / "lib/pipewire-0.3/jack";
    std::filesystem::create_directories(folder);
    std::filesystem::copy_file(FAKE_JACK, folder / "libjack.so.0");
    EXPECT_EQ(start({"--no-window", "--sound", "jack", "--seconds", "0.1"}), 3);
    setenv("LD_LIBRARY_PATH", (home_ / "lib").c_str(), 1);
    EXPECT_EQ(start({"--list-devices"}), 0);
    EXPECT_TRUE(said("JACK\n  a server is running")) << output_;
    Program program({PROGRAM, "--no-window", "--sound", "jack"});
    unsetenv("LD_LIBRARY_PATH");
    ASSERT_TRUE(program.waitFor("MIDI: ")) << program.output();
    EXPECT_NE(program.output().find("sound: JACK, 48000 Hz, 256 frames"), std::string::npos) << program.output();
    const bool hasSequencer = std::filesystem::exists("/dev/snd/seq");
    const char* const midi = hasSequencer ? "MIDI: ALSA sequencer" : "MIDI: JACK, port midi_in; no ALSA sequencer\n";
    EXPECT_NE(program.output().find(midi), std::string::npos) << program.output();
    program.signal(SIGTERM);
    EXPECT_EQ(program.finish(), 0) << program.output();
}

TEST_F(ProgramTest, SaysThatADeviceIsNotUsed) {
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--device", "plughw:9", "--seconds", "0.1"}), 0);
    EXPECT_TRUE(said("vantoric: --device is of --sound alsa alone: \"plughw:9\" is not used\n")) << output_;
    EXPECT_EQ(start({"--no-window", "--sound", "jack", "--device", "plughw:9"}), 3);
    EXPECT_TRUE(said("\"plughw:9\" is not used\n")) << output_;
    EXPECT_EQ(start({"--no-window", "--sound", "alsa", "--device", "null", "--seconds", "0.1"}), 0);
    EXPECT_FALSE(said("not used")) << output_;
}

TEST_F(ProgramTest, SaysWhatIsNoPatch) {
    const std::string cut = home_ / "cut.fxp", empty = home_ / "empty.fxp";
    std::filesystem::copy_file(PATCH_FILE, cut);
    std::filesystem::resize_file(cut, 2000);
    std::ofstream{empty};
    for (const std::string& path : {std::string(PROGRAM), cut, empty}) {
        EXPECT_EQ(start({"--no-window", "--sound", "none", "--patch", path}), 5);
        EXPECT_TRUE(said(path + ": is no patch, or damaged")) << output_;
        EXPECT_FALSE(said("no such patch")) << output_;
    }
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--seconds", "0.1", "--patch", ""}), 2) << output_;
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--seconds", "0.1", "--record", ""}), 2) << output_;
}

// What is recorded by mistake over an older take would be lost.
TEST_F(ProgramTest, ARecordingThatDoesNotBeginLeavesTheFileThatIsThere) {
    const std::string take = home_ / "take.wav";
    std::ofstream(take) << "an evening's work";
    const auto content = [&] {
        std::ifstream file(take);
        return std::string{std::istreambuf_iterator<char>(file), {}};
    };
    EXPECT_EQ(start({"--no-window", "--sound", "jack", "--record", take}), 3) << output_;
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--patch", "Nowhere/Nothing", "--record", take}), 5) << output_;
    EXPECT_EQ(start({"--sound", "none", "--record", take}), 4) << output_;
    EXPECT_EQ(content(), "an evening's work");
    EXPECT_EQ(start({"--no-window", "--sound", "jack", "--record", home_ / "new.wav"}), 3);
    EXPECT_FALSE(std::filesystem::exists(home_ / "new.wav"));
}

TEST_F(ProgramTest, OneFileTakesOneRecordingAtATime) {
    const std::string take = home_ / "take.wav";
    Program first({PROGRAM, "--no-window", "--sound", "none", "--record", take});
    ASSERT_TRUE(first.waitFor("MIDI: ")) << first.output();
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--seconds", "0.1", "--record", take}), 6);
    EXPECT_TRUE(said(take + ": Device or resource busy")) << output_;
    testhost::pause(0.3);
    first.signal(SIGINT);
    EXPECT_EQ(first.finish(), 0) << first.output();
    EXPECT_GT(testhost::readRecording(take).frames(), 1000u);
}

TEST_F(ProgramTest, PlaysToNobodyAndRecordsIt) {
    ASSERT_EQ(start({"--no-window", "--device", "null", "--rate", "44100", "--period", "128", "--seconds", "0.5", "--record",
                     home_ / "take.wav"}),
              0)
        << output_;
    EXPECT_TRUE(said("sound: ALSA \"null\", 44100 Hz, 128 frames")) << output_;
    const auto take = testhost::readRecording(home_ / "take.wav");
    EXPECT_EQ(take.rate, 44100);
    EXPECT_GE(take.frames(), 22050u);
    EXPECT_LT(take.frames(), 5 * 44100u);
    EXPECT_LT(take.peak(), 1e-4f);  // nobody touched a key
}

TEST_F(ProgramTest, TakesAPatchByItsPlaceInTheLibrary) {
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--seconds", "0.1", "--patch", PATCH}), 0) << output_;
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--seconds", "0.1", "--patch", PATCH_FILE}), 0) << output_;
}

// As a package lays it out, and as dist/ does.
TEST_F(ProgramTest, FindsItsDataFromItsOwnPlace) {
    namespace fs = std::filesystem;
    for (const char* place : {"lib/vantoric", "Vantoric", "share/vantoric"}) {
        const vantoric::platform::ScratchFolder prefix;
        fs::create_directories(prefix / "bin");
        fs::create_directories(fs::path(prefix / place).parent_path());
        fs::copy_file(PROGRAM, prefix / "bin/vantoric");
        fs::create_directory_symlink(DATA_FOLDER, prefix / place);
        EXPECT_EQ(run({prefix / "bin/vantoric", "--no-window", "--sound", "none", "--seconds", "0.1", "--patch", PATCH}, output_),
                  0)
            << place << ": " << output_;
        EXPECT_TRUE(notedPath().ends_with(prefix / (std::string(place) + "/"))) << notedPath();
    }
}

// Its paths are read by users, in questions and boxes.
TEST_F(ProgramTest, NamesItsDataByTheShortestPath) {
    namespace fs = std::filesystem;
    const vantoric::platform::ScratchFolder prefix;
    fs::create_directories(prefix / "app/bin");
    fs::copy_file(PROGRAM, prefix / "app/bin/vantoric");
    fs::create_directory_symlink(DATA_FOLDER, prefix / "app/Vantoric");
    fs::create_directories(prefix / "home/bin");
    fs::create_symlink("../../app/bin/vantoric", prefix / "home/bin/vantoric");
    fs::create_directory_symlink(prefix / "home", prefix / "elsewhere");
    for (const char* link : {"home/bin/vantoric", "elsewhere/bin/vantoric"}) {
        EXPECT_EQ(run({prefix / link, "--no-window", "--sound", "none", "--seconds", "0.1", "--patch", PATCH}, output_), 0)
            << link << ": " << output_;
        EXPECT_TRUE(notedPath().ends_with("=" + (fs::canonical(prefix / "app") / "Vantoric/").string())) << notedPath();
    }
}

TEST_F(ProgramTest, EndsByASignalAndCompletesItsRecording) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        Program program({PROGRAM, "--no-window", "--sound", "none", "--record", home_ / "take.wav"});
        ASSERT_TRUE(program.waitFor("MIDI: ")) << program.output();
        testhost::pause(0.3);
        program.signal(number);
        EXPECT_EQ(program.finish(), 0) << program.output();
        EXPECT_GT(testhost::readRecording(home_ / "take.wav").frames(), 1000u);
    }
}

TEST_F(ProgramTest, SaysThatTheFactorySoundsAreMissing) {
    const vantoric::platform::ScratchFolder prefix;
    std::filesystem::copy_file(PROGRAM, prefix / "vantoric");
    std::filesystem::create_directory(prefix / "Vantoric_data");
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(DATA_FOLDER) / "Vantoric_data"))
        std::filesystem::create_symlink(entry.path(), prefix / ("Vantoric_data/" + entry.path().filename().string()));
    EXPECT_EQ(run({prefix / "vantoric", "--no-window", "--sound", "none", "--seconds", "0.1"}, output_), 0);
    EXPECT_TRUE(said("The factory sounds are missing.")) << output_;
    EXPECT_EQ(output_.find("factory sounds"), output_.rfind("factory sounds")) << "twice: " << output_;
    EXPECT_EQ(run({prefix / "vantoric", "--list-devices"}, output_), 0);
    EXPECT_TRUE(said("The factory sounds are missing.")) << output_;
}

// Without a window nothing of the user's is written over.
TEST_F(ProgramTest, KeepsNothingWithoutAWindow) {
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--seconds", "0.1"}), 0);
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home_ / ""))
        if (entry.is_regular_file()) files.push_back(entry.path().lexically_relative(home_ / ""));
    EXPECT_EQ(files, std::vector<std::string>{"config/Orvix/Vantoric/settings"})
        << "where the installation is, as every format notes";
}

TEST_F(ProgramTest, SaysThatTheLastPatchCannotBeRead) {
    const std::string kept = home_.stateFile("standalone.patch");
    std::filesystem::create_directories(std::filesystem::path(kept).parent_path());
    std::ofstream(kept) << std::string(5000, 'x');
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--seconds", "0.1"}), 0);
    EXPECT_TRUE(said("The patch of the last time cannot be read.")) << output_;
    EXPECT_EQ(std::filesystem::file_size(kept), 5000u);
}

TEST_F(ProgramTest, SaysThatTheDiskIsFull) {
    Program program({PROGRAM, "--no-window", "--sound", "none", "--seconds", "3", "--record", "/dev/full"});
    const int code = program.finish();
    EXPECT_EQ(code, 6) << program.output();
    // Either the header did not get there, or what came after it.
    if (program.output().find("played") != std::string::npos) {
        EXPECT_NE(program.output().find("Recording ended: No space left on device"), std::string::npos) << program.output();
        EXPECT_NE(program.output().find("played 3"), std::string::npos) << program.output();  // to the end, all the same
    }
}

TEST_F(ProgramTest, PlaysOnWhenTheDiskIsFullInTheMiddle) {
    const FileSizeLimit full(300000);
    EXPECT_EQ(start({"--no-window", "--sound", "none", "--seconds", "3", "--record", home_ / "take.wav"}), 6) << output_;
    EXPECT_TRUE(said("Recording ended: File too large")) << output_;
    EXPECT_TRUE(said("played 3")) << output_;
    EXPECT_GT(testhost::readRecording(home_ / "take.wav").frames(), 30000u);
}

}  // namespace
