#include "commons/qa_status.h"
#include "tests/support/fixed_params.h"
#include "tests/support/temp_dir.h"

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <gtest/gtest.h>

namespace {

using namespace brask;

TEST(QaStatusSwitch, ReadsTheUtilitysElement) {
    const test_support::TempDir dir;
    const test_support::FixedParams params({{"PRODUCT_ROOT_D", dir.path()}});
    EXPECT_FALSE(readQaStatus("u").found) << "there is no file yet";

    const struct {
        const char* elements;
        QaStatus expected;
    } cases[] = {
        {"<util name='u' severity='error' errcode='-7'>text</util>", {true, -7, 40, "text"}},
        {"<util name='u' severity='warning' errcode='+7'/>", {true, 7, 30, "QA test message"}},
        {"<util name='u' severity='info' errcode='0'/>", {true, 0, 20, "QA test message"}},
        {"<util name='u' severity='odd' errcode='0'/>", {true, 0, 10, "QA test message"}},
        {"<util name='u'/><util name='u' severity='error' errcode='1'/>", {true, 0, 10, "QA test message"}},
        {"<util name='other' severity='error' errcode='1'/>", {}},
        {"<util name='u' severity='' errcode='1'/>", {}},
        {"<util name='u' severity='error'/>", {}},
    };

    for (const auto& [elements, expected] : cases) {
        dir.write("BMM/qa-status-test.cfg", std::string("<log>") + elements + "</log>");
        const QaStatus status = readQaStatus("u");
        EXPECT_EQ(status.found, expected.found) << elements;
        EXPECT_EQ(status.errcode, expected.errcode) << elements;
        EXPECT_EQ(status.severity, expected.severity) << elements;
        EXPECT_EQ(status.message, expected.message) << elements;
    }
    dir.write("BMM/qa-status-test.cfg", "<log><util name='u' severity='info' errcode=' 7'/></log>");
    EXPECT_THROW(readQaStatus("u"), boost::bad_lexical_cast);
}

} // namespace
