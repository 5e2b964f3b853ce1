#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <string>

namespace test_support {

/// What `action` raised, which must be an E; its text. Anything else fails the test.
template <class E, class Action>
std::string thrownText(const Action& action) {
    try {
        action();
        ADD_FAILURE() << "nothing was raised";
    } catch (const E& e) {
        return e.what();
    } catch (const std::exception& e) {
        ADD_FAILURE() << "something else was raised: " << e.what();
    }
    return {};
}

} // namespace test_support
