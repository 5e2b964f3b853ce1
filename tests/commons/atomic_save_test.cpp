#include "commons/xml_parse.h"
#include "commons/xml_wrap.h"
#include "tests/support/child.h"
#include "tests/support/fixed_params.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace brask;
using test_support::ChildOutcome;
using test_support::FixedParams;
using test_support::inChild;
using test_support::readFile;
using test_support::TempDir;
using testing::MatchesRegex;

namespace fs = std::filesystem;

const std::string kDeclaration = "<?xml version=\"1.0\"?>\n";

/// Tells that it was written through the virtual operation.
struct MarkedDocument : tXmlBmmDocument {
    using tXmlBmmDocument::tXmlBmmDocument;

    void saveToFile(const std::string& path) override {
        setAttribute(root_, "saved", "here");
        tXmlBmmDocument::saveToFile(path);
    }
};

/// The settings are read once in a process, so each save runs in a child of its own.
class AtomicSave : public testing::Test {
protected:
    AtomicSave() {
        setSettings("localPauseBetweenAttempts = 1");
        fs::create_directory(dir.path("out"));
    }

    void setSettings(const std::string& lines) const {
        dir.write("admin/conf/panel.ini", "[bmm]\n" + lines + "\n");
    }

    /// Saves to `target` in a child; its output is what was raised.
    ChildOutcome saveDocument(
        const std::string& target, const std::function<void()>& prepare = [] {}) {
        return save(prepare, [&target] {
            MarkedDocument document(std::string("<a><b/></a>"));
            document.initFileDoc("a");
            document.saveToFileAtomically(target);
        });
    }

    ChildOutcome saveNode(
        const std::string& target, const std::function<void()>& prepare = [] {}) {
        return save(prepare, [&target] {
            tXmlBmmDocument document(std::string("<a><b>&amp;</b></a>"));
            document.initFileDoc("a");
            XmlNode(document.doc_.get(), document.root_).getNode("b").saveToFileAtomically(target);
        });
    }

    std::vector<std::string> namesIn(const std::string& folder) const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(dir.path(folder))) {
            names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    TempDir dir;
    const std::string target = dir.path("out/result.xml");
    std::string account = "worker"; // not the name of a group

private:
    ChildOutcome save(const std::function<void()>& prepare, const std::function<void()>& action) {
        return inChild([&] {
            const FixedParams params(
                {{"PRODUCT_ROOT_D", dir.path()}, {"DUMP_TMP_D", dir.path("dumps")}, {"BSAADM", account}});
            prepare();
            try {
                action();
            } catch (const IExTraceable& e) {
                fputs(e.what(), stdout);
            }
        });
    }
};

class AtomicSaveAsRoot : public AtomicSave {
protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "only root can give files away";
        }
    }
};

/// "uid:gid mode" of a file.
std::string ownership(const std::string& path) {
    struct stat info {};

    stat(path.c_str(), &info);
    char text[64];
    snprintf(text, sizeof text, "%u:%u %o", info.st_uid, info.st_gid, info.st_mode & 07777U);
    return text;
}

TEST_F(AtomicSaveAsRoot, TheNewContentBelongsToThePanelsAccountAndItsPrimaryGroup) {
    for (const bool existed : {false, true}) {
        EXPECT_EQ(saveDocument(target).out, "");
        EXPECT_EQ(readFile(target), kDeclaration + "<a saved=\"here\"><b/></a>\n") << existed;
        EXPECT_EQ(ownership(target), "54321:54322 600");
    }
    EXPECT_EQ(saveNode(target).out, "");
    EXPECT_EQ(readFile(target), "<b>&amp;</b>");
    EXPECT_EQ(ownership(target), "54321:54322 600");

    account = "nobody-here";
    EXPECT_EQ(saveNode(target).out, "");
    EXPECT_EQ(ownership(target), "0:0 600");
    EXPECT_EQ(namesIn("out"), std::vector<std::string>{"result.xml"});
}

TEST_F(AtomicSave, AFileThatCannotBeGivenAwayStaysBesideTheOldContent) {
    dir.write("out/result.xml", "old");
    ASSERT_EQ(chmod(dir.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(dir.path("out").c_str(), 0777), 0);
    const auto becomeOrdinaryUser = [] {
        if (geteuid() == 0 && setuid(54323) != 0) {
            throw std::runtime_error("setuid");
        }
    };
    EXPECT_THAT(saveDocument(target, becomeOrdinaryUser).out,
                MatchesRegex("Cannot take ownership of " + dir.path("out/bmm-xp-stfa-result.xml-......") +
                             ": Operation not permitted"));
    EXPECT_THAT(saveNode(target, becomeOrdinaryUser).out,
                MatchesRegex("Cannot take ownership of " + dir.path("out/bmm-xw-stfa-result.xml-......") +
                             ": Operation not permitted"));
    EXPECT_EQ(readFile(target), "old");
    const auto names = namesIn("out");
    ASSERT_EQ(names.size(), 3U);
    EXPECT_EQ(readFile(dir.path("out/" + names[0])), kDeclaration + "<a saved=\"here\"><b/></a>\n");
    EXPECT_EQ(readFile(dir.path("out/" + names[1])), "<b>&amp;</b>");
}

TEST_F(AtomicSaveAsRoot, ATargetThatCannotBeReplacedIsToldAndTheWorkStays) {
    dir.write("out/result.xml/occupied", "");
    EXPECT_THAT(saveDocument(target).out,
                MatchesRegex("Cannot rename " + dir.path("out/bmm-xp-stfa-result.xml-......") + " to " +
                             target + ": .*rename.*"));
    EXPECT_THAT(saveNode(target).out,
                MatchesRegex("Cannot rename " + dir.path("out/bmm-xw-stfa-result.xml-......") + " to " +
                             target + ": .*cannot remove.*not empty.*"));
    EXPECT_EQ(namesIn("out").size(), 3U);
}

TEST_F(AtomicSaveAsRoot, WithoutAttemptsTheTargetKeepsItsContent) {
    setSettings("localMaxFieIoAttempts = 0");
    dir.write("out/result.xml", "old");
    fs::create_directory(dir.path("dumps"));
    EXPECT_EQ(saveDocument(target).out, "");
    EXPECT_EQ(readFile(target), "old");
    EXPECT_EQ(namesIn("out").size(), 2U);

    // A bare name has no directory to put the work into.
    EXPECT_EQ(saveDocument("bare.xml", [this] { fs::current_path(dir.path("out")); }).out, "");
    EXPECT_THAT(namesIn("dumps"), testing::ElementsAre(MatchesRegex("bmm-xp-stfa-bare.xml-......")));
}

} // namespace
