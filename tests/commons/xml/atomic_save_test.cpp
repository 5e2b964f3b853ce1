#include "commons/files/file_utils.h"
#include "commons/files/temp_file.h"
#include "commons/panel/product_paths.h"
#include "commons/xml_parse.h"
#include "commons/xml_wrap.h"
#include "tests/commons/library_test.h"
#include "tests/support/file_size_limit.h"

namespace {

using namespace brask;
using namespace test_support;
using testing::MatchesRegex;
namespace fs = std::filesystem;

/// libxml2 would take this for an escaped name.
const std::string kDocument = "doc%41";

/// Every test saves kDocument, a whole document, and "node", one of its nodes, below the folder "out".
class AtomicSave : public LibraryTest {
protected:
    /// What was raised. The settings are read once in a process, so that each save runs in a child of its
    /// own.
    std::string save(const std::string& name, const char* account = "bsaadm", uid_t user = geteuid()) const {
        dir.write("admin/conf/panel.ini", "[bmm]\nlocalPauseBetweenAttempts = 1\n" + settings);
        fs::permissions(dir.path(), fs::perms(0755));
        fs::permissions(dir.path("out"), fs::perms(0777));
        const auto saveAs = [&] {
            const FixedParams own({{"PRODUCT_ROOT_D", dir.path()}, {"BSAADM", account}});
            tXmlBmmDocument document(std::string("<a><b/></a>"));
            document.initFileDoc("a");
            const XmlNode node(document.doc_.get(), document.root_->children);
            requireThat(setuid(user) == 0, "setuid");
            const FileSizeLimit disk(bytesFree);
            name == kDocument ? document.saveToFileAtomically(out + name)
                              : node.saveToFileAtomically(out + name);
        };
        return inChild(saveAs).err;
    }

    void expectFile(const std::string& name, const std::string& content, const std::string& owner) const {
        const struct stat info = statFile(out + name);
        EXPECT_EQ(readFile(out + name), content);
        EXPECT_EQ(fmtlib::format("{}:{} {:o}", info.st_uid, info.st_gid, info.st_mode & 0777), owner);
    }

    long filesLeft() const { return std::distance(fs::directory_iterator(dir.path("out")), {}); }

    const std::string out = fs::path(dir.write("out/" + kDocument, "old")).parent_path() / "";
    const std::string before = fmtlib::format("{}:{} 644", geteuid(), getegid());
    std::string settings;
    rlim_t bytesFree = RLIM_INFINITY;
};

TEST_F(AtomicSave, TheNewContentBelongsToThePanelsAccountAndItsPrimaryGroup) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    fs::create_directory(out + "node"); // the element's save takes it away
    for (const auto& [account, owner] : {std::pair{"worker", "54321:54322 600"}, {"nobody", "0:0 600"}}) {
        EXPECT_EQ(save(kDocument, account) + save("node", account), "");
        expectFile(kDocument, "<?xml version=\"1.0\"?>\n<a><b/></a>\n", owner);
        expectFile("node", "<b/>", owner);
    }
    EXPECT_EQ(filesLeft(), 2);
}

TEST_F(AtomicSave, AFailureKeepsTheOldContentWithTheNewOneBesideIt) {
    dir.write("out/node", "old");
    for (const auto& [name, work] :
         {std::pair{kDocument, "bmm-xp-stfa-doc%41-.*"}, {"node", "bmm-xw-stfa-node-.*"}}) {
        EXPECT_THAT(save(name, "worker", geteuid() == 0 ? 54323 : geteuid()),
                    MatchesRegex("Cannot take ownership of " + out + work + ": Operation not permitted"));
        expectFile(name, "old", before);
        bytesFree = 1;
        EXPECT_THAT(save(name), MatchesRegex("Cannot save the XML document to file '" + out + work + "'"));
        expectFile(name, "old", before);
        bytesFree = RLIM_INFINITY;
        fs::remove(out + name);
        dir.write("out/" + std::string(name) + "/occupied", "");
        EXPECT_THAT(save(name), MatchesRegex("Cannot rename " + out + work + " to " + out + name + ": .*"));
    }
    EXPECT_EQ(filesLeft(), 8);
}

TEST_F(AtomicSave, WithoutAttemptsADocumentIsNotRenamed) {
    settings = "localMaxFieIoAttempts = 0";
    EXPECT_EQ(save(kDocument), "");
    expectFile(kDocument, "old", before);
    EXPECT_EQ(filesLeft(), 2);
}

TEST(ParamSource, WhateverNeedsOneRaisesWithoutIt) {
    const TempDir dir;
    tXmlBmmDocument document(std::string("<a/>"));
    const XmlNode node(document.doc_.get(), document.root_);
    const std::pair<std::string, std::function<void()>> cases[] = {
        {"PRODUCT_ROOT_D", [] { getBmmDir(); }},
        {"PRODUCT_ROOT_D", [] { BMM_getTempFileName("", "x", false); }},
        {"BSAADM", [&] { document.saveToFileAtomically(dir.path("doc")); }},
        {"BSAADM", [&] { node.saveToFileAtomically(dir.path("node")); }},
    };
    for (const auto& [name, step] : cases) {
        EXPECT_EQ(thrownText<Error<&ParamError>>(step),
                  "Can't get param " + name + ": no parameter source is set");
    }
}

} // namespace
