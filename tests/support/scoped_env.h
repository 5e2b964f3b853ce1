#pragma once

#include <optional>
#include <string>

#include <stdlib.h>

namespace test_support {

/// Sets (or, without a value, unsets) an environment variable while it lives, and puts back what was there.
class ScopedEnv {
public:
    ScopedEnv(std::string name, const std::optional<std::string>& value) : name(std::move(name)) {
        if (const char* old = getenv(this->name.c_str())) {
            previous = old;
        }
        assign(value);
    }

    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

    ~ScopedEnv() { assign(previous); }

private:
    void assign(const std::optional<std::string>& value) const {
        if (value) {
            setenv(name.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name.c_str());
        }
    }

    std::string name;
    std::optional<std::string> previous;
};

} // namespace test_support
