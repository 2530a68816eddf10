// Dialogs whose user has not answered yet.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/dialogs.h"

namespace vantoric::test {

struct SlowDialogs : platform::Dialogs {
    void message(const std::string& title, const std::string& text) override { messages.push_back(title + ": " + text); }
    void question(const std::string&, const std::string&, platform::OnAnswer then) override {
        answers.push_back(std::move(then));
    }
    void choosePath(const platform::FileRequest&, platform::OnPath then) override { paths.push_back(std::move(then)); }

    std::vector<std::string> messages;
    std::vector<platform::OnAnswer> answers;
    std::vector<platform::OnPath> paths;
};

}  // namespace vantoric::test
