#pragma once

#include "commons/param_source.h"

#include <string>
#include <utility>

namespace test_support {

/// While it lives, every parameter has the value given: a product root of the test's own.
class FixedProductRoot : public brask::ParamSourceStrategy {
public:
    explicit FixedProductRoot(std::string root) : root(std::move(root)) { brask::paramSource = this; }

    ~FixedProductRoot() override { brask::paramSource = previous; }

    std::string getParam(const char*) const override { return root; }

private:
    std::string root;
    brask::ParamSourceStrategy* previous = brask::paramSource;
};

} // namespace test_support
