// Dialogs that nobody sees: they keep what they were asked to show and answer by script. For tests and for
// programs that report boxes themselves.
#pragma once

#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/dialogs.h"

namespace vantoric::platform {

// Safe to call from several threads at once.
class RecordedDialogs : public Dialogs {
public:
    struct Box {
        std::string title, text;
        bool isQuestion;
    };

    // Answers to the next questions and choosers, in turn, given within the call. Without one a question answers No and no
    // path is chosen; an empty path is a user who goes back.
    void answerNext(bool yes) {
        const std::lock_guard guard(mutex_);
        answers_.push_back(yes);
    }
    // Of a choice: the user goes back from it.
    void callOffNext() {
        const std::lock_guard guard(mutex_);
        answers_.push_back({});
    }
    void choosePathNext(const std::string& path) {
        const std::lock_guard guard(mutex_);
        paths_.push_back(path);
    }

    // What was shown so far.
    std::vector<Box> boxes() const {
        const std::lock_guard guard(mutex_);
        return boxes_;
    }
    std::vector<FileRequest> requests() const {
        const std::lock_guard guard(mutex_);
        return requests_;
    }
    // Forgets boxes and requests; answers stay.
    void clear() {
        const std::lock_guard guard(mutex_);
        boxes_.clear();
        requests_.clear();
    }

    void message(const std::string& title, const std::string& text) override {
        const std::lock_guard guard(mutex_);
        boxes_.push_back({title, text, false});
    }
    void question(const std::string& title, const std::string& text, OnAnswer then) override {
        then(answerTo(title, text).value_or(false));
    }
    void choice(const std::string& title, const std::string& text, OnChoice then) override { then(answerTo(title, text)); }
    void choosePath(const FileRequest& request, OnPath then) override {
        const std::string path = pathFor(request);
        path.empty() ? then({}) : then(path);
    }

private:
    std::optional<bool> answerTo(const std::string& title, const std::string& text) {
        const std::lock_guard guard(mutex_);
        boxes_.push_back({title, text, true});
        return take(answers_, std::optional(false));
    }
    std::string pathFor(const FileRequest& request) {
        const std::lock_guard guard(mutex_);
        requests_.push_back(request);
        return take(paths_, std::string());
    }
    template <class T>
    static T take(std::deque<T>& script, T otherwise) {
        if (script.empty()) return otherwise;
        T first = script.front();
        script.pop_front();
        return first;
    }

    mutable std::mutex mutex_;
    std::vector<Box> boxes_;
    std::vector<FileRequest> requests_;
    std::deque<std::optional<bool>> answers_;
    std::deque<std::string> paths_;
};

}  // namespace vantoric::platform
