// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace nimba::test {

// Sets an environment variable, or unsets it, for the length of its scope.
class ScopedVariable final {
  public:
    ScopedVariable(std::string name, const std::optional<std::string>& value)
        : name_{std::move(name)}
    {
        if (const char* text = std::getenv(name_.c_str())) {
            previous_ = text;
        }
        assign(value);
    }
    ~ScopedVariable() { assign(previous_); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

    void assign(const std::optional<std::string>& value) const
    {
        if (value) {
            ::setenv(name_.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name_.c_str());
        }
    }

  private:
    std::string name_;
    std::optional<std::string> previous_;
};

}  // namespace nimba::test
