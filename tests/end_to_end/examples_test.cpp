#include "tests/end_to_end/tool_fixture.h"

#include <gmock/gmock.h>

#include <unistd.h>

namespace {

using namespace end_to_end;
using testing::HasSubstr;

class ExamplesTest : public ToolTest {
protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "only root may give files to the panel's account";
        }
    }
};

TEST_F(ExamplesTest, RecordRunPrintsTheMergedDocument) {
    const std::string other = dir.write(
        "other.xml",
        "<execution-result status='error'><object name='db' type='database'><message code='' "
        "severity='error'><description>Dump is gone</description></message></object></execution-result>");
    const Outcome outcome = runProgram({EXAMPLE_RECORD_RUN, dir.path("session"), other});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(shell("xmllint --format - | tail -n +2 <<EOF\n" + outcome.out + "EOF\n"),
              R"(<execution-result status="error">
  <object name="example.com" type="domain">
    <message code="DatabaseIsTooOld" severity="warning">
      <description>The database server 10.3 cannot take a dump of version 11.4</description>
    </message>
    <object name="info@example.com" type="mailname">
      <message code="" severity="info">
        <description>The mailbox was restored</description>
      </message>
    </object>
  </object>
  <object name="db" type="database">
    <message code="" severity="error">
      <description>Dump is gone</description>
    </message>
  </object>
</execution-result>
)");
}

TEST_F(ExamplesTest, RunCommandShowsWhatTheCommandPrintedAndItsProfile) {
    const std::string profile = dir.path("profile.log");
    const Outcome good = runProgram({EXAMPLE_RUN_COMMAND, profile, "/bin/echo", "two words"});
    EXPECT_EQ(good.status, 0);
    EXPECT_THAT(good.out, testing::StartsWith(
                              "two words\n--- " + profile +
                              "\n{\"attributes\":{\"process.command_line\":\"/bin/echo two\\\\ words\"}"));
    const Outcome bad = runProgram({EXAMPLE_RUN_COMMAND, profile, "/bin/false"});
    EXPECT_EQ(bad.status, 1);
    EXPECT_THAT(bad.out, HasSubstr("Execution of /bin/false failed with return code 1.\n"));
    EXPECT_EQ(shell("wc -l <\"$1\"", {profile}), "4\n");
}

} // namespace
