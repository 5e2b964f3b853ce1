#include "commons/profiling.h"
#include "commons/profiling_record.h"
#include "tests/support/child.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/recording_log.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <optional>
#include <regex>
#include <vector>

#include <unistd.h>

namespace {

using namespace brask;
using test_support::FileSizeLimit;
using test_support::inChild;
using test_support::readFile;
using test_support::RecordingLog;
using test_support::ScopedEnv;
using test_support::TempDir;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kGuid = "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-8[0-9a-f]{3}-[0-9a-f]{12}";
constexpr const char* kTime = "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}";

class Profiling : public testing::Test {
protected:
    void SetUp() override {
        if (getuid() != 0) {
            GTEST_SKIP() << "the file is given to a group, and only root can give files away";
        }
    }

    /// Profiles a command whose arguments are `arguments`, up to its end.
    void profileCommand(std::vector<std::string> arguments, bool addRuntime = true) const {
        std::vector<char*> argv;
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        ProfilingContext context(path);
        ProfilingCommand(static_cast<int>(arguments.size()), argv.data(), {}, &context, addRuntime);
    }

    /// The records with GUID and TIME in place of what varies.
    static std::string withPlaceholders(const std::string& records) {
        const std::string guidsOut = std::regex_replace(records, std::regex(kGuid), "GUID");
        return std::regex_replace(guidsOut, std::regex(kTime), "TIME");
    }

    TempDir dir;
    std::string path = dir.path("profile.log");
    ScopedEnv async{"BMM_PROFILE_ASYNC_RUN", std::nullopt};
};

TEST_F(Profiling, ACommandLeavesItsStartAndItsFinishWithOneGuid) {
    profileCommand({"/usr/bin/tool", "two words", "", "\"q\""});
    const std::string records = readFile(path);
    EXPECT_EQ(withPlaceholders(records),
              R"({"attributes":{"process.command_line":"/usr/bin/tool two\\ words  \\\"q\\\"",)"
              R"("process.runtime.name":"GNU C++"},"guid":"GUID","name":"tool two\\ words","start":"TIME",)"
              R"("type":"operation"})"
              "\n"
              R"({"attributes":{},"finish":"TIME","guid":"GUID","type":"operation"})"
              "\n");
    const std::regex guid(kGuid);
    std::sregex_iterator match(records.begin(), records.end(), guid);
    const std::string first = match->str();
    EXPECT_EQ((++match)->str(), first);
}

TEST_F(Profiling, ACommandIsNamedByItsProgramAndFirstArgumentAlone) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{}, R"({"attributes":{"process.command_line":""},"guid":"GUID","name":"")"},
        {{"./tool"}, R"({"attributes":{"process.command_line":"./tool"},"guid":"GUID","name":"tool")"},
        {{"/a b/tool", "x", "y"},
         R"({"attributes":{"process.command_line":"/a\\ b/tool x y"},"guid":"GUID","name":"tool x")"}};
    for (const auto& [arguments, start] : cases) {
        std::filesystem::remove(path);
        profileCommand(arguments, false);
        EXPECT_THAT(withPlaceholders(readFile(path)), StartsWith(start));
    }
}

TEST_F(Profiling, TheFinishTellsWhatWasLearntAfterTheStart) {
    ProfilingContext context(path);
    EXPECT_EQ(ProfilingContext::current(), &context);
    {
        ProfilingOperation operation(
            ProfilingOperationType::RestoreDatabase,
            {{ProfilingAttribute::DbName, "d"}, {ProfilingAttribute::ArchivePath, "/ä"}}, &context);
        operation.attributes[ProfilingAttribute::UserLogin] = "u";
    }
    EXPECT_EQ(withPlaceholders(readFile(path)),
              R"({"attributes":{"archive.path":"/ä","db.name":"d"},"guid":"GUID","name":"restore.database",)"
              R"("start":"TIME","type":"operation"})"
              "\n"
              R"({"attributes":{"user.login":"u"},"finish":"TIME","guid":"GUID","type":"operation"})"
              "\n");
    EXPECT_NO_THROW(ProfilingOperation(ProfilingOperationType::Restore, {}, nullptr));
}

TEST_F(Profiling, TimesAreLocalWithMilliseconds) {
    const ScopedEnv zone("TZ", "UTC-3");
    tzset();
    const auto when = std::chrono::system_clock::from_time_t(1709251199) + std::chrono::milliseconds(7);
    EXPECT_THAT(profilingFinishRecord("g", {}, when), HasSubstr(R"("finish":"2024-03-01 02:59:59.007")"));
}

TEST_F(Profiling, AnAsynchronousRunLeavesMetricsOnly) {
    for (const auto& [value, suppressed] :
         {std::pair{"1", true}, {"2", false}, {"true", false}, {"", false}}) {
        const ScopedEnv async("BMM_PROFILE_ASYNC_RUN", value);
        std::filesystem::remove(path);
        profileCommand({"tool"});
        EXPECT_EQ(readFile(path).empty(), suppressed) << value;
    }
    const ScopedEnv async("BMM_PROFILE_ASYNC_RUN", "1");
    std::filesystem::remove(path);
    ProfilingContext context(path);
    ProfilingMetric metric(ProfilingMetricType::SpeedUpload, &context);
    metric.start();
    metric.finish("/dir/part", 5);
    EXPECT_EQ(withPlaceholders(readFile(path)),
              R"({"attributes":{"file.name":"part","file.path":"/dir/part","file.size":5},)"
              R"("name":"backup.speed.upload","time":"TIME","type":"metric","value":0})"
              "\n");
}

TEST_F(Profiling, SpeedIsBytesASecondOnceThereIsEnoughToMeasure) {
    struct Case {
        std::uint64_t size;
        std::chrono::milliseconds elapsed;
        std::uint64_t leastSpeed;
        std::uint64_t mostSpeed;
    };

    using std::chrono::milliseconds;
    // The clock goes on between the case's start and its finish, so a speed may come out a little lower.
    const Case cases[] = {{1048575, milliseconds(2000), 0, 0},
                          {1048576, milliseconds(2000), 500000, 524288},
                          {1ULL << 40, milliseconds(900), 0, 0},
                          {1ULL << 50, milliseconds(1000), 1ULL << 49, 1ULL << 50}};
    for (const Case& c : cases) {
        std::filesystem::remove(path);
        ProfilingContext context(path);
        ProfilingMetric metric(ProfilingMetricType::SpeedPack, &context);
        metric.startTime = std::chrono::steady_clock::now() - c.elapsed;
        metric.finish("/a/dump.tar", c.size);
        const std::string record = readFile(path);
        EXPECT_THAT(record, HasSubstr(R"("archive.name":"dump.tar")"));
        const std::uint64_t speed = std::stoull(record.substr(record.find("\"value\":") + 8));
        EXPECT_GE(speed, c.leastSpeed) << record;
        EXPECT_LE(speed, c.mostSpeed) << record;
    }
}

TEST_F(Profiling, AFileThatCannotBeOpenedIsNotedAndTheWorkGoesOn) {
    path = dir.path("none/profile.log");
    const RecordingLog log;
    profileCommand({"tool"});
    EXPECT_THAT(log.lines, ElementsAre("Unable to open the log file '" + path +
                                       "', cancel profile logging: Failed to open the file " + path +
                                       ": No such file or directory"));
    path = "";
    profileCommand({"tool"});
    EXPECT_EQ(log.lines.size(), 1U);
}

TEST_F(Profiling, TextThatIsNotUtf8EndsTheProfiling) {
    const RecordingLog log;
    profileCommand({"tool", "\xff"});
    EXPECT_EQ(readFile(path), "");
    EXPECT_THAT(log.lines,
                ElementsAre(StartsWith("Unable to write the profile info, cancel profile logging: [json")));
}

TEST_F(Profiling, ADiskThatFillsUpAfterTheStartCostsTheFinishAndOneNote) {
    const auto outcome = inChild([&] {
        std::optional<FileSizeLimit> full;
        const RecordingLog log;
        ProfilingContext context(path);
        {
            const ProfilingOperation outer(ProfilingOperationType::Restore, {}, &context);
            full.emplace(std::filesystem::file_size(path));
            const ProfilingOperation inner(ProfilingOperationType::RestoreMail, {}, &context);
        }
        full->lift();
        for (const std::string& line : log.lines) {
            std::cout << line << std::endl;
        }
    });
    EXPECT_EQ(outcome.out,
              "Unable to write the profile info, cancel profile logging: Failed to write the file " + path +
                  ": File too large\n");
    EXPECT_THAT(withPlaceholders(readFile(path)),
                testing::EndsWith("\"start\":\"TIME\",\"type\":\"operation\"}\n"));
}

TEST(ProfileLogPath, StandsBesideTheCustomLog) {
    const std::pair<std::optional<std::string>, const char*> cases[] = {
        {std::nullopt, ""},
        {"/x/y/custom.log", "/x/y/profile.log"},
        {"name", "profile.log"},
        {"/name", "/profile.log"}};
    for (const auto& [customLog, expected] : cases) {
        const ScopedEnv variable("CUSTOM_LOG", customLog);
        EXPECT_EQ(profileLogPath(), expected);
    }
}

} // namespace
