// What a class under test has told its user so far.
#pragma once

#include <string>
#include <vector>

#include "base/messages.h"

namespace vantoric::test {

class Told {
public:
    explicit Told(Messages& messages) : messages_(messages) {}

    const std::vector<Message>& boxes() const {
        for (Message& message : messages_.take()) boxes_.push_back(std::move(message));
        return boxes_;
    }
    void clear() {
        messages_.take();
        boxes_.clear();
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> texts;
        for (const Message& message : boxes()) texts.push_back(message.text);
        return texts;
    }

private:
    Messages& messages_;
    mutable std::vector<Message> boxes_;
};

}  // namespace vantoric::test
