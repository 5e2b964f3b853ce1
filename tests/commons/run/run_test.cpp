#include "commons/files/file_utils.h"
#include "commons/run/debug_log.h"
#include "commons/run/locale_check.h"
#include "commons/run/session_log_file.h"
#include "commons/run/start_stop_logger.h"
#include "commons/run/xml_log.h"
#include "commons/session.h"
#include "lib/process/lib/identity.h"
#include "tests/commons/library_test.h"

#include <boost/algorithm/string/replace.hpp>
#include <log4cpp/Configurator.hh>

#include <regex>

namespace {

using namespace test_support;

using RunTest = LibraryTest;

TEST_F(RunTest, ABrokenLocaleBecomesTheCLocaleForChildren) {
    const ScopedEnv lang("LANG", "xx_YY.broken");
    for (const auto& [value, left] : {std::pair{"C.UTF-8", "C.UTF-8"}, {"", "C"}}) {
        const ScopedEnv all("LC_ALL", value);
        checkLocale();
        EXPECT_STREQ(getenv("LC_ALL"), left);
    }
    EXPECT_THAT(log.lines,
                ElementsAre(HasSubstr(" is invalid (LC_ALL=, LANG=xx_YY.broken), fall back to 'C'.")));
}

TEST_F(RunTest, TheStartLineIsTheCommandAsAShellReadsIt) {
    std::string arguments[] = {"", "-x 'y' \"z\"", "$HOME `id` \\ $(id) ~ *", "\x01\n\xff"};
    std::vector<char*> argv;
    std::string expected;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
        expected += argument + '\0';
    }
    StartStopLogger("tool", static_cast<int>(argv.size()), argv.data()).SetExitCode(-2);
    { const StartStopLogger bare("tool", 0, argv.data()); }
    EXPECT_THAT(log.lines, ElementsAre(StartsWith("tool started : "), "tool finished. Exit code: -2",
                                       "tool started : ", "tool finished.  (exit code is not reported)"));
    const std::string command = log.lines[0].substr(log.lines[0].find(':') + 2);
    EXPECT_EQ(runProgram({"/bin/sh", "-c", "printf '%s\\0' " + command}).out, expected);
}

/// log4cpp is configured once in a process, so each run under a debug log has a child process of its own.
class DebugLogTest : public testing::Test {
protected:
    void configure(const std::string& text) const { dir.write("BMM/log4cpp.properties", text); }

    static void writeUnder(bool verbose, bool debug) {
        const DebugLogLifetimeController log(verbose, debug);
        GetLogFacade()->Write(0, false, "went wrong", nullptr);
        logMessage(4, "a note");
        printf("%d%d ", GetLogFacade()->GetLevel(), currentDebugLog->IsVerbose());
    }

    TempDir dir;
    const FixedParams params{FixedParams::Values{{"PRODUCT_ROOT_D", dir.path()}}};
    const SessionLifetimeController controller{dir.path("session #1")};
    const std::string shipped = readFile(SOURCE_FOLDER "/product/BMM/log4cpp.properties");
};

TEST_F(DebugLogTest, TheOptionsReachTheFlagsTheLevelAndStandardError) {
    configure(shipped);
    EXPECT_EQ(inChild([] { writeUnder(true, false); }).out, "31 ");
    EXPECT_THAT(readFile(session->getLogFile()),
                MatchesRegex("[0-9-]+ [0-9:.]+ .* ERROR  went wrong\n.*a note\n"));
    configure(std::regex_replace(shipped, std::regex("(.*A1)=F.*"), "$&\n$1.append=false"));
    EXPECT_EQ(inChild([] { writeUnder(true, false); }).out, "31 ");
    EXPECT_THAT(readFile(session->getLogFile()), MatchesRegex("[0-9]{4}-[^\n]* went wrong\n[^\n]*a note\n"));
    const auto debug = inChild([] { writeUnder(true, true); });
    EXPECT_EQ(debug.out, "40 ");
    EXPECT_THAT(debug.err, MatchesRegex("\x1b\\[31m.* went wrong\n\x1b\\[0;39m\x1b\\[37m.*a note\n.*"));
}

TEST_F(DebugLogTest, AFailureLeavesNoLogAndASecondLogHasNoTarget) {
    const auto outcome = inChild([&] {
        configure("rootCategory=INFO,NONE\n");
        thrownText<log4cpp::ConfigureFailure>([] { writeUnder(false, true); });
        printf(GetLogFacade() == nullptr && currentDebugLog == nullptr ? "nothing " : "something ");
        configure("category.p=ERROR\n" + shipped);
        writeUnder(false, false);
        writeUnder(false, true);
    });
    EXPECT_EQ(outcome.out + outcome.err, "nothing 30 40 ");
    EXPECT_THAT(readFile(session->getLogFile()), MatchesRegex("[^\n]* ERROR  went wrong\n"));
}

TEST_F(DebugLogTest, AFileThatTheLogMakesIsNeverSomebodyElses) {
    // The session's owner swaps the new log for a link while the configuration is being read.
    const std::string log = session->getLogFile();
    fs::create_directories(dir.path("BMM"));
    mkfifo(dir.path("BMM/log4cpp.properties").c_str(), 0600);
    for (const std::string& target : {std::string("nowhere"), dir.write("secret", "s")}) {
        const auto outcome = inChild([&] {
            if (fork() == 0) {
                std::ofstream properties(dir.path("BMM/log4cpp.properties")); // waits for the reader
                fs::remove(log);
                fs::create_symlink(target, log);
                properties << shipped << std::flush;
                _exit(0);
            }
            writeUnder(false, false);
        });
        EXPECT_EQ(outcome.out + outcome.err, "30 ");
        EXPECT_EQ(fs::read_symlink(log), target);
        fs::remove(log);
    }
    EXPECT_FALSE(fs::exists(dir.path("session #1/nowhere")));
    EXPECT_EQ(readFile(dir.path("secret")), "s");
}

TEST_F(DebugLogTest, NobodyElseReadsWhatItWritesAndALogThatIsNotUsedVanishes) {
    const ScopedEnv custom("CUSTOM_LOG", dir.path("custom.log"));
    const std::pair<std::string, std::string> cases[] = {
        {shipped, " 640 640 - -"},
        {std::regex_replace(shipped, std::regex("(appender\\.[A-Z0-9]+)=FileAppender"),
                            "$1=RollingFileAppender\n$1.maxFileSize=1"),
         " 640 640 640 640"},
        {"rootCategory=INFO,NONE\n" + shipped, " - 640 - -"},
        {std::regex_replace(shipped, std::regex("=\\$\\{LOG"), "=/.$${LOG"), " 640 640 - -"},
    };
    for (const auto& [text, modes] : cases) {
        configure(text);
        inChild([] {
            umask(0);
            writeUnder(false, false);
        });
        std::string seen;
        for (const std::string& name :
             split("session #1/migration.log|custom.log|session #1/migration.log.1|custom.log.1")) {
            const bool isThere = fs::exists(dir.path(name));
            seen += isThere ? fmtlib::format(" {:o}", statFile(dir.path(name)).st_mode & 07777) : " -";
            fs::remove(dir.path(name));
        }
        EXPECT_EQ(seen, modes);
    }
}

using Session = LibraryTest;

TEST_F(Session, ANewDirectoryItsParentsAndItsLogBelongToTheAdministrators) {
    const auto owner = [](const std::string& path) {
        const struct stat info = statFile(path);
        return fmtlib::format("{} {:o}", info.st_gid, info.st_mode & 07777);
    };
    EXPECT_THROW(DebugLogLifetimeController(false, false), Error<&AssertionFailed>) << "there is none yet";
    EXPECT_THROW(XmlLog("result"), Error<&AssertionFailed>);
    const std::string group = std::to_string(groupId("bsaadm"));
    const mode_t before = umask(0);
    const SessionLifetimeController controller(dir.path("a/b/"));
    SessionLogFile(session->getLogFile()).keep();
    umask(before);
    EXPECT_EQ(session->getLogFile() + session->getResultFile() + session->getStatusFile() +
                  session->getAgentDeploymentStatusFile() + session->getDumpFile() +
                  session->getRestoreFile() + session->getTaskStoppedFile(),
              boost::replace_all_copy<std::string>("|migration.log|migration.result|migration.status|agent-"
                                                   "deployment.status|dump.xml|restore.xml|task_stopped",
                                                   "|", dir.path("a/b/")));
    EXPECT_EQ(owner(dir.path("a")) + owner(dir.path("a/b")), group + " 750" + group + " 750");
    EXPECT_EQ(owner(dir.path()), std::to_string(getegid()) + " 700") << "it was there before";
    EXPECT_EQ(owner(dir.path("a/b/migration.log")), group + " 640");
    EXPECT_THROW(SessionFiles(dir.path(std::string(5000, 'x'))), fs::filesystem_error);
    session->remove();
    EXPECT_FALSE(fs::exists(dir.path("a/b")));

    const std::string old = dir.write("old.log", "");
    fs::permissions(old, fs::perms(0604));
    { const SessionLogFile untouched(old); }
    EXPECT_EQ(owner(old), std::to_string(getegid()) + " 604") << "a log that was there stays as it is";
    {
        const SessionLogFile used(dir.path("used.log"));
        const SessionLogFile taken(dir.path("taken.log"));
        dir.write("used.log", "x");
        fs::rename(old, dir.path("taken.log"));
    }
    EXPECT_TRUE(fs::exists(dir.path("used.log")) && fs::exists(dir.path("taken.log")));
}

} // namespace
