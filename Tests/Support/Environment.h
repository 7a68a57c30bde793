#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace quillmere::testing {

// Sets or removes an environment variable; the previous value returns afterwards.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* const previous = std::getenv(name)) previous_ = previous;
        assign(value);
    }
    ~EnvironmentVariable() { assign(previous_); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    void assign(const std::optional<std::string>& value) {
        if (value) {
            ::setenv(name_, value->c_str(), 1);
        } else {
            ::unsetenv(name_);
        }
    }

    const char* name_;
    std::optional<std::string> previous_;
};

}  // namespace quillmere::testing
