#pragma once
// Sets or unsets an environment variable for one test and puts the old value
// back when it goes. Not thread-safe: set before starting threads.

#include <cstdlib>
#include <optional>
#include <string>

namespace velarion::testing {

class ScopedEnvironment {
public:
    ScopedEnvironment(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
        if (const char* old = std::getenv(name_.c_str())) old_ = old;
        set(value);
    }
    ~ScopedEnvironment() { set(old_); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    void set(const std::optional<std::string>& value) {
        if (value) ::setenv(name_.c_str(), value->c_str(), 1);
        else ::unsetenv(name_.c_str());
    }
    std::string name_;
    std::optional<std::string> old_;
};

} // namespace velarion::testing
