#include "commons/file_utils.h"
#include "commons/xml_parse.h"
#include "commons/xml_wrap.h"
#include "tests/commons/library_test.h"

namespace {

using namespace brask;
using namespace test_support;
using testing::MatchesRegex;
namespace fs = std::filesystem;

class AtomicSave : public RootTest {
protected:
    /// Saves a document to out/doc and a node to out/node; what was raised, a line each. The settings are
    /// read once in a process, so that each save runs in a child of its own.
    std::string save(const std::string& account, const std::string& settings, uid_t user) const {
        dir.write("admin/conf/panel.ini", "[bmm]\nlocalPauseBetweenAttempts = 1\n" + settings);
        fs::permissions(dir.path(), fs::perms(0755));
        fs::permissions(out, fs::perms(0777));
        const auto saveBoth = [&] {
            const FixedParams own({{"PRODUCT_ROOT_D", dir.path()}, {"BSAADM", account}});
            tXmlBmmDocument document(std::string("<a><b>&amp;</b></a>"));
            document.initFileDoc("a");
            const auto attempt = [](const std::function<void()>& action) {
                try {
                    action();
                } catch (const IExTraceable& e) {
                    puts(e.what());
                }
            };
            requireThat(setuid(user) == 0, "setuid");
            attempt([&] { document.saveToFileAtomically(out + "/doc"); });
            attempt([&] {
                XmlNode(document.doc_.get(), document.root_).getNode("b").saveToFileAtomically(out + "/node");
            });
        };
        return inChild(saveBoth).out;
    }

    /// The content of both files, with what is known of their owner.
    void expectFiles(const std::string& document, const std::string& node, uid_t uid, gid_t gid) const {
        EXPECT_EQ(readFile(out + "/doc") + readFile(out + "/node"), document + node);
        for (const char* name : {"/doc", "/node"}) {
            EXPECT_EQ(statFile(out + name).st_uid, uid) << name;
            EXPECT_EQ(statFile(out + name).st_gid, gid) << name;
        }
    }

    long filesLeft() const { return std::distance(fs::directory_iterator(out), {}); }

    const std::string out = fs::path(dir.write("out/doc", "old")).parent_path();
    const std::string newDocument = "<?xml version=\"1.0\"?>\n<a><b>&amp;</b></a>\n";
    const std::string newNode = "<b>&amp;</b>";
    const std::string leftDocument = out + "/bmm-xp-stfa-doc-......";
    const std::string leftNode = out + "/bmm-xw-stfa-node-......";
};

TEST_F(AtomicSave, TheNewContentBelongsToThePanelsAccountAndItsPrimaryGroup) {
    EXPECT_EQ(save("worker", "", 0), "");
    expectFiles(newDocument, newNode, 54321, 54322);
    EXPECT_EQ(statFile(out + "/doc").st_mode & 07777, 0600U);
    EXPECT_EQ(save("nobody-here", "", 0), "");
    expectFiles(newDocument, newNode, 0, 0);
    EXPECT_EQ(filesLeft(), 2);
}

TEST_F(AtomicSave, AFailureKeepsTheOldContentWithTheNewOneBesideIt) {
    dir.write("out/node", "old");
    EXPECT_THAT(save("worker", "", 54323),
                MatchesRegex("Cannot take ownership of " + leftDocument +
                             ": Operation not permitted\nCannot take ownership of " + leftNode +
                             ": Operation not permitted\n"));
    expectFiles("old", "old", 0, 0);
    EXPECT_EQ(filesLeft(), 4);
    EXPECT_EQ(save("worker", "localMaxFieIoAttempts = 0", 0), "");
    EXPECT_EQ(readFile(out + "/doc"), "old") << "without attempts a document is not renamed";
}

TEST_F(AtomicSave, ATargetThatCannotBeReplacedIsTold) {
    fs::remove(out + "/doc");
    dir.write("out/doc/occupied", "");
    dir.write("out/node/occupied", "");
    EXPECT_THAT(save("worker", "", 0),
                MatchesRegex("Cannot rename " + leftDocument + " to " + out + "/doc: .*\nCannot rename " +
                             leftNode + " to " + out + "/node: .*\n"));
    EXPECT_EQ(filesLeft(), 4);
}

} // namespace
