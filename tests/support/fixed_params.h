#pragma once

#include "commons/panel/param_source.h"

#include <map>
#include <string>
#include <utility>

namespace test_support {

/// Answers the library's parameters from a map while it lives, and puts back the source that was there.
class FixedParams : public brask::ParamSourceStrategy {
public:
    using Values = std::map<std::string, std::string>;

    explicit FixedParams(Values values)
        : values(std::move(values)), previous(std::exchange(brask::paramSource, this)) {}

    ~FixedParams() override { brask::paramSource = previous; }

    std::string getParam(const char* name) const override {
        const auto found = values.find(name);
        if (found == values.end()) {
            BRASK_THROW(brask::ParamError, name, "the test has no such parameter");
        }
        return found->second;
    }

private:
    Values values;
    brask::ParamSourceStrategy* previous;
};

} // namespace test_support
