#pragma once

// What nearly every test needs.
#include "tests/support/child.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_text.h"

#include <boost/algorithm/string/split.hpp>
#include <gmock/gmock.h>

namespace brask {}

namespace test_support {

using namespace brask;
namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

/// The parts of a text between its bars.
inline std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    return boost::split(parts, text, [](char c) { return c == '|'; });
}

} // namespace test_support
