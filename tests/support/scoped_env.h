#pragma once

#include <optional>
#include <string>

#include <stdlib.h>

namespace test_support {

/// Sets (or, without a value, unsets) an environment variable while it lives, and puts back what was there.
class ScopedEnv {
public:
    ScopedEnv(std::string name, const std::optional<std::string>& value) : name(std::move(name)) {
        const char* const old = getenv(this->name.c_str());
        previous = old != nullptr ? std::optional<std::string>(old) : std::nullopt;
        assign(value);
    }

    ScopedEnv(const ScopedEnv&) = delete;

    ~ScopedEnv() { assign(previous); }

private:
    void assign(const std::optional<std::string>& value) const {
        value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    }

    std::string name;
    std::optional<std::string> previous;
};

} // namespace test_support
