// A variable of the environment that is another while this stands.
#pragma once

#include <cstdlib>
#include <string>

namespace vantoric::platform {

class Environment {
public:
    // Null takes the variable away.
    Environment(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) before_ = before, wasSet_ = true;
        value != nullptr ? setenv(name, value, 1) : unsetenv(name);
    }
    ~Environment() { wasSet_ ? setenv(name_, before_.c_str(), 1) : unsetenv(name_); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    const char* name_;
    std::string before_;
    bool wasSet_ = false;
};

}  // namespace vantoric::platform
