#include "commons/files/file_utils.h"
#include "commons/run/profiling.h"
#include "lib/process/lib/identity.h"
#include "tests/commons/library_test.h"

#include <regex>

#include <fcntl.h>
#include <sys/file.h>

namespace {

using namespace test_support;

/// The texts of an enumeration, and of one value beyond it.
template <class Enumeration>
std::string textsOf(int count) {
    std::string texts;
    for (int value = 0; value <= count; ++value) {
        texts += profilingText(static_cast<Enumeration>(value)) + "\n";
    }
    return texts;
}

TEST(Names, AreThoseThatReadersOfTheFilesKnow) {
    EXPECT_EQ(textsOf<ProfilingOperationType>(59) + textsOf<ProfilingAttribute>(16) +
                  textsOf<ProfilingMetricType>(4),
              readFile(SOURCE_FOLDER "/tests/data/profiling_names.txt"));
    std::string names;
    for (int id = 0; id <= 28; ++id) {
        names += objectDisplayName(id) + "\n";
    }
    for (const std::string& type : split("Server|Reseller|Customer|Domain|Subscription|Database|Database "
                                         "user|Email account|Mail list|domain")) {
        names += type + ": " + objectTypeDisplayName(type) + "\n";
    }
    EXPECT_EQ(names, readFile(SOURCE_FOLDER "/tests/data/object_names.txt"));
}

class Profiling : public LibraryTest {
protected:
    void profileCommand(std::vector<const char*> arguments) const {
        ProfilingContext context(path);
        const int argc = static_cast<int>(arguments.size());
        ProfilingCommand(argc, const_cast<char**>(arguments.data()), {}, &context, true);
    }

    /// The file's records with GUID and TIME in place of what varies.
    std::string records() const {
        const std::regex guid("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-8[0-9a-f]{3}-[0-9a-f]{12}");
        const std::regex time(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})");
        return std::regex_replace(std::regex_replace(readFile(path), guid, "GUID"), time, "TIME");
    }

    std::string path = dir.path("profile.log");
    ScopedEnv async{"BMM_PROFILE_ASYNC_RUN", std::nullopt};
    const std::string cancelled = "Unable to write the profile info, cancel profile logging: ";
};

TEST_F(Profiling, ACommandLeavesItsStartAndItsFinishInAFileOfThePanelsGroup) {
    const mode_t umaskBefore = umask(0);
    profileCommand({"/usr/bin/tool", "two words", "", "\"q\""});
    umask(umaskBefore);
    EXPECT_EQ(records(), R"({"attributes":{"process.command_line":"/usr/bin/tool two\\ words  \\\"q\\\"",)"
                         R"("process.runtime.name":"GNU C++"},"guid":"GUID","name":"tool two\\ words",)"
                         "\"start\":\"TIME\",\"type\":\"operation\"}\n{\"attributes\":{},\"finish\":\"TIME\","
                         "\"guid\":\"GUID\",\"type\":\"operation\"}\n");
    profileCommand({"tool"});
    EXPECT_THAT(records(), HasSubstr(",\"name\":\"tool\","));
    EXPECT_EQ(statFile(path).st_mode & 07777, 0660U);
    EXPECT_EQ(statFile(path).st_gid, groupId("bsaadm"));
}

TEST_F(Profiling, AnAsynchronousRunLeavesMetricsWithASpeedOnceThereIsEnoughToMeasure) {
    const ScopedEnv on("BMM_PROFILE_ASYNC_RUN", "1");
    profileCommand({});
    ProfilingContext context(path);
    ProfilingMetric metric(ProfilingMetricType::SpeedUpload, &context);
    metric.startTime = std::chrono::steady_clock::now() - std::chrono::seconds(2);
    metric.finish("/d/f", 1048575);
    EXPECT_EQ(records(),
              R"({"attributes":{"file.name":"f","file.path":"/d/f","file.size":1048575},)"
              "\"name\":\"backup.speed.upload\",\"time\":\"TIME\",\"type\":\"metric\",\"value\":0}\n");
    metric.finish("/d/f", 1048576);
    EXPECT_NEAR(std::stod(records().substr(records().rfind(':') + 1)), 524288, 50000);
    for (const auto type : {ProfilingMetricType::SpeedPack, ProfilingMetricType::SpeedUnpack}) {
        ProfilingMetric(type, &context).finish("/d/a", 7);
        EXPECT_THAT(records(), HasSubstr("archive.name\":\"a\",\"archive.path\":\"/d/a\",\"archive.size\":7},"
                                         "\"name\":\"" +
                                         profilingText(type)));
    }
    metric.start();
    metric.finish("/d/f", 1ULL << 40);
    EXPECT_THAT(records(), EndsWith("\"value\":0}\n"));
}

TEST_F(Profiling, AFileThatCannotBeOpenedAndTextThatIsNotUtf8AreNotedAndTheWorkGoesOn) {
    profileCommand({"tool", "\xff"});
    EXPECT_EQ(readFile(path), "");
    path += "/below";
    profileCommand({"tool"});
    EXPECT_THAT(log.lines.front(), StartsWith(cancelled + "[json"));
    EXPECT_THAT(log.lines.back(), StartsWith("Unable to open the log file '" + path + "', cancel profile"));
}

TEST_F(Profiling, ADiskThatFillsUpAfterTheStartCostsTheFinishAndOneNote) {
    const auto outcome = inChild([&] {
        ProfilingContext context(path);
        const ProfilingOperation outer(ProfilingOperationType::Restore, {}, &context);
        std::optional<FileSizeLimit> full(fs::file_size(path));
        { const ProfilingOperation inner(ProfilingOperationType::RestoreMail, {}, &context); }
        full.reset();
        puts(testing::PrintToString(log.lines).c_str());
        puts(flock(open(path.c_str(), O_RDONLY), LOCK_SH | LOCK_NB) == 0 ? "unlocked" : "locked");
    });
    EXPECT_EQ(outcome.out,
              "{ \"" + cancelled + "Failed to write the file " + path + ": File too large\" }\nunlocked\n");
    EXPECT_THAT(records(), EndsWith("\"start\":\"TIME\",\"type\":\"operation\"}\n"));
}

} // namespace
