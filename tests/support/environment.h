// Environment variables that a test sets or takes away, and puts back in the end.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>
#include <utility>

namespace corvane::test {

class EnvironmentVariable {
  public:
    /// Without a value the variable is taken away.
    EnvironmentVariable(std::string name, const std::optional<std::string>& value)
        : name_(std::move(name)) {
        if (const char* old = ::getenv(name_.c_str()); old != nullptr) {
            previous_ = old;
        }
        put(value);
    }
    ~EnvironmentVariable() { put(previous_); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
    EnvironmentVariable(EnvironmentVariable&&) = delete;
    EnvironmentVariable& operator=(EnvironmentVariable&&) = delete;

  private:
    void put(const std::optional<std::string>& value) const {
        if (value) {
            ::setenv(name_.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name_.c_str());
        }
    }

    std::string name_;
    std::optional<std::string> previous_;
};

}  // namespace corvane::test
