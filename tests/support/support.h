#pragma once

// What nearly every test needs.
#include "tests/support/child.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"
#include "tests/support/thrown_text.h"

#include <gmock/gmock.h>

namespace test_support {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

} // namespace test_support
