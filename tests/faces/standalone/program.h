// The program as a user starts it, beside the test.
#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/scratch_folder.h"

namespace testhost {

// A user's home folder and what is kept in it, used by every program started after it. Goes with its files.
class Home {
public:
    Home();
    std::string stateFile(const std::string& name) const { return folder_ / ("state/vantoric/" + name); }
    std::string operator/(const std::string& name) const { return folder_ / name; }

private:
    vantoric::platform::ScratchFolder folder_;
};

// A program that runs until it ends by itself or is told to.
class Program {
public:
    // What it prints is kept; the first of the arguments is the program.
    explicit Program(const std::vector<std::string>& arguments);
    // Kills it if it still runs.
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    bool isRunning();
    // Until it has printed a text. False if it ends before, or that takes longer than `seconds`.
    bool waitFor(const std::string& text, double seconds = 60);
    void signal(int number) const;
    // Its exit code, -1 if it ended otherwise or had to be killed after `seconds`.
    int finish(double seconds = 60);
    // Both outputs so far.
    std::string output() const;

private:
    vantoric::platform::ScratchFolder folder_;
    pid_t process_ = -1;
    int status_ = 0;
};

// Stands for a disk's end: while it lives, no file of this process, nor of programs started by it, grows beyond `bytes`.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before_{};
    void (*signalBefore_)(int);
};

// Runs it to its end: its exit code, and what it printed.
int run(const std::vector<std::string>& arguments, std::string& output);

// Until a condition holds. False if that takes longer.
template <class Condition>
bool within(double seconds, Condition&& condition);

void pause(double seconds);

template <class Condition>
bool within(double seconds, Condition&& condition) {
    for (double waited = 0; waited < seconds; waited += 0.02) {
        if (condition()) return true;
        pause(0.02);
    }
    return condition();
}

// A WAV file's samples, left and right in turn; empty if it is none.
struct Recording {
    int rate = 0;
    std::vector<float> samples;
    std::size_t frames() const { return samples.size() / 2; }
    // Of the largest sample from a frame on.
    float peak(std::size_t from = 0) const;
    // The first frame that can be heard; frames() if none.
    std::size_t onset() const;
};
Recording readRecording(const std::string& path);

}  // namespace testhost
