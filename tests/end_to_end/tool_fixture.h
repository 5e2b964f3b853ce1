#pragma once

#include "tests/support/support.h"

namespace end_to_end {

using namespace test_support;

/// Runs a script with /bin/sh in which "$1" and so on are `arguments`; fails the test when it fails.
std::string shell(const std::string& script, const std::vector<std::string>& arguments = {});

/// The built program with a product tree of the test's own. The program's compiled-in configuration file,
/// which lies in the build tree, names that product tree for the time of the test; CTest never runs two of
/// these tests at once.
class ToolTest : public testing::Test {
protected:
    ToolTest();
    ~ToolTest() override;

    Outcome tool(const std::vector<std::string>& arguments, const Environment& env = {},
                 const std::string& input = {}) const;

    /// Runs the tool and expects `text` and a line end on standard output, nothing on standard error, and
    /// exit code 1.
    void expectFailure(const std::vector<std::string>& arguments, const std::string& text) const;
    /// Runs the tool and expects no output at all and exit code 0.
    void expectSilentSuccess(const std::vector<std::string>& arguments) const;

    std::string productPath(const std::string& name) const { return dir.path("product/" + name); }

    /// Puts a shell script in the place of the key pair's helper; the real one stays as "$REAL".
    void replaceHelper(const std::string& script) const;

    TempDir dir;

private:
    std::string savedConfiguration;
};

} // namespace end_to_end
