// The end of a command whose user answers at once.
#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "library/done.h"

namespace vantoric::test {

// Takes what a command ends with: `Ended end; commands.loadPatch(end); EXPECT_TRUE(end.result())`, or shorter with `ended`.
class Ended {
public:
    operator Done() {
        return [this](bool result) {
            EXPECT_FALSE(result_) << "a command ends once";
            result_ = result;
        };
    }
    bool result() const {
        EXPECT_TRUE(result_) << "the command has not ended";
        return result_.value_or(false);
    }

private:
    std::optional<bool> result_;
};

// What a member function of `commands` ends with, called with the arguments and what takes its end.
template <class Commands, class... Taken, class... Given>
bool ended(Commands& commands, void (Commands::*command)(Taken...), Given&&... given) {
    Ended end;
    (commands.*command)(std::forward<Given>(given)..., end);
    return end.result();
}

}  // namespace vantoric::test
