#include "commons/file_utils.h"
#include "commons/profiling.h"
#include "commons/profiling_record.h"
#include "tests/commons/library_test.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/scoped_env.h"

#include <iostream>
#include <regex>

namespace {

using namespace brask;
using namespace test_support;
using testing::StartsWith;

class Profiling : public RootTest {
protected:
    void profileCommand(std::vector<std::string> arguments) const {
        std::vector<char*> argv;
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        ProfilingContext context(path);
        ProfilingCommand(static_cast<int>(argv.size()), argv.data(), {}, &context, true);
    }

    /// The file's records with TIME in place of what varies, and GUID in place of one and the same text.
    std::string records() const {
        std::string text = readFile(path);
        std::smatch guid;
        const std::regex form("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-8[0-9a-f]{3}-[0-9a-f]{12}");
        if (std::regex_search(text, guid, form)) {
            text = std::regex_replace(text, std::regex(guid.str()), "GUID");
        }
        return std::regex_replace(text, std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})"), "TIME");
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
                         R"("start":"TIME","type":"operation"})"
                         "\n"
                         R"({"attributes":{},"finish":"TIME","guid":"GUID","type":"operation"})"
                         "\n");
    EXPECT_EQ(statFile(path).st_mode & 07777, 0660U);
    EXPECT_EQ(statFile(path).st_gid, 54330U);
}

TEST_F(Profiling, AnAsynchronousRunLeavesMetricsOnly) {
    const ScopedEnv on("BMM_PROFILE_ASYNC_RUN", "1");
    profileCommand({"tool"});
    ProfilingContext context(path);
    ProfilingMetric metric(ProfilingMetricType::SpeedUpload, &context);
    metric.start();
    metric.finish("/dir/part", 5);
    EXPECT_EQ(records(), R"({"attributes":{"file.name":"part","file.path":"/dir/part","file.size":5},)"
                         R"("name":"backup.speed.upload","time":"TIME","type":"metric","value":0})"
                         "\n");
}

TEST_F(Profiling, SpeedIsBytesASecondOnceThereIsEnoughToMeasure) {
    const std::tuple<std::uint64_t, int, std::uint64_t> cases[] = {
        {1048575, 2000, 0}, {1048576, 2000, 524288}, {1ULL << 40, 900, 0}};
    for (const auto& [size, milliseconds, speed] : cases) {
        dir.write("profile.log", "");
        ProfilingContext context(path);
        ProfilingMetric metric(ProfilingMetricType::SpeedPack, &context);
        metric.startTime = std::chrono::steady_clock::now() - std::chrono::milliseconds(milliseconds);
        metric.finish("/a/dump.tar", size);
        const double measured = std::stod(records().substr(records().find("\"value\":") + 8));
        EXPECT_NEAR(measured, static_cast<double>(speed), static_cast<double>(speed) / 20);
    }
}

TEST_F(Profiling, AFileThatCannotBeOpenedAndTextThatIsNotUtf8AreNotedAndTheWorkGoesOn) {
    profileCommand({"tool", "\xff"});
    EXPECT_EQ(readFile(path), "");
    path += "/below";
    profileCommand({"tool"});
    const std::string unopened = "Unable to open the log file '" + path + "', cancel profile logging: ";
    EXPECT_THAT(log.lines, testing::ElementsAre(StartsWith(cancelled + "[json"), StartsWith(unopened)));
}

TEST_F(Profiling, ADiskThatFillsUpAfterTheStartCostsTheFinishAndOneNote) {
    const auto outcome = inChild([&] {
        ProfilingContext context(path);
        const ProfilingOperation outer(ProfilingOperationType::Restore, {}, &context);
        const FileSizeLimit full(std::filesystem::file_size(path));
        { const ProfilingOperation inner(ProfilingOperationType::RestoreMail, {}, &context); }
        full.lift();
        std::cout << testing::PrintToString(log.lines) << std::flush;
    });
    EXPECT_EQ(outcome.out, "{ \"" + cancelled + "Failed to write the file " + path + ": File too large\" }");
    EXPECT_THAT(records(), testing::EndsWith("\"start\":\"TIME\",\"type\":\"operation\"}\n"));
}

TEST(ProfilingRecord, TimesAreLocalWithMilliseconds) {
    const ScopedEnv zone("TZ", "UTC-3");
    tzset();
    const auto when = std::chrono::system_clock::from_time_t(1709251199) + std::chrono::milliseconds(7);
    EXPECT_THAT(profilingFinishRecord("g", {}, when), testing::HasSubstr("\"2024-03-01 02:59:59.007\""));
}

TEST(ProfilingNames, NumbersKeepTheirTexts) {
    EXPECT_EQ(profilingText(static_cast<ProfilingOperationType>(38)), "restore.protected_directories");
    EXPECT_EQ(profilingText(static_cast<ProfilingOperationType>(58)), "unpack_archive");
    EXPECT_EQ(profilingText(static_cast<ProfilingOperationType>(59)), "disable_php_handlers");
    EXPECT_EQ(profilingText(static_cast<ProfilingAttribute>(16)), "application.name");
    EXPECT_EQ(profilingText(static_cast<ProfilingMetricType>(4)), "backup.speed.download");
    EXPECT_EQ(objectDisplayName(27), "Unpack CID");
    EXPECT_EQ(objectDisplayName(28), "Unspecified");
    EXPECT_EQ(objectTypeDisplayName("Mail list"), "Restore maillist");
    EXPECT_EQ(objectTypeDisplayName("database"), "database");
}

} // namespace
