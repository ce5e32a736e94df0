// Sets or unsets an environment variable for the lifetime of the object.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace support {

class EnvironmentVariable {
  public:
    // `value` null unsets the variable.
    EnvironmentVariable(char const* name, char const* value) : name_(name) {
        if (char const* const old = std::getenv(name))
            old_ = old;
        set(value);
    }
    ~EnvironmentVariable() { set(old_ ? old_->c_str() : nullptr); }
    EnvironmentVariable(EnvironmentVariable const&) = delete;
    EnvironmentVariable& operator=(EnvironmentVariable const&) = delete;

  private:
    void set(char const* value) const {
        if (value == nullptr)
            unsetenv(name_.c_str());
        else
            setenv(name_.c_str(), value, 1);
    }

    std::string name_;
    std::optional<std::string> old_;
};

} // namespace support
