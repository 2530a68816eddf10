// The engine's boxes and questions on a terminal, and a sign of life while something takes long.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "platform/dialogs.h"

namespace vantoric::patch {

// Messages go to standard error, each a line "program: title: text". Questions are answered by what the
// command line said. Safe to call from several threads at once.
class Console final : public platform::Dialogs {
public:
    explicit Console(std::string program) : program_(std::move(program)) {}

    // The answer to every question.
    bool yes = true;

    // How many boxes there were; hints do not count and are not shown, since nobody clicks here.
    int messages() const;

    void message(const std::string& title, const std::string& text) override;
    // Shown with its answer.
    void question(const std::string& title, const std::string& text, platform::OnAnswer then) override;
    // Chooses none: the command line names every file.
    void choosePath(const platform::FileRequest&, platform::OnPath then) override { then({}); }

private:
    friend class Busy;
    void print(const std::string& line);
    void showBusy(const std::string& text);  // over the line before; empty clears it

    std::string program_;
    mutable std::mutex mutex_;
    int messages_ = 0;
    bool busyShown_ = false;
};

// While it stands and longer than `patience`: "text ... 3 s" on standard error, a running clock on a terminal, a
// line every ten seconds elsewhere.
class Busy {
public:
    Busy(Console& console, std::string text, std::chrono::milliseconds patience = std::chrono::seconds(2));
    ~Busy();
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    void run();

    Console& console_;
    std::string text_;
    std::chrono::milliseconds patience_;
    std::mutex mutex_;
    std::condition_variable ended_;
    bool isOver_ = false;
    std::thread thread_;
};

}  // namespace vantoric::patch
