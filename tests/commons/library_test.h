#pragma once

#include "tests/support/fixed_params.h"
#include "tests/support/recording_log.h"
#include "tests/support/support.h"

/// The ground of most tests here: a directory of the test's own, which is the product's root too, the
/// accounts of tests/support/accounts and a log that is recorded.
class LibraryTest : public testing::Test {
protected:
    test_support::TempDir dir;
    const test_support::FixedParams params{{{"PRODUCT_ROOT_D", dir.path()}, {"BSAADM", "bsaadm"}}};
    test_support::RecordingLog log;
};
