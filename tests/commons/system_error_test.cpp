#include "commons/system_error.h"

#include <gtest/gtest.h>
#include <openssl/err.h>

#include <cstring>

namespace {

using namespace brask;

TEST(SystemError, TextIsFormedOnceAndNamesTheCode) {
    const SystemError named("cannot read", ENOSPC);
    const char* first = named.what();
    EXPECT_STREQ(first, "cannot read: No space left on device");
    errno = EPERM;
    EXPECT_EQ(named.what(), first);
    EXPECT_STREQ(SystemError("", ENOENT).what(), std::strerror(ENOENT));
}

TEST(SystemError, FiveCodesCanBeToldByType) {
    EXPECT_THROW(throwSystemError("m", EPERM), ExSystemError<1>);
    EXPECT_THROW(throwSystemError("m", ENOENT), ExSystemError<2>);
    EXPECT_THROW(throwSystemError("m", EINTR), ExSystemError<4>);
    EXPECT_THROW(throwSystemError("m", ECHILD), ExSystemError<10>);
    EXPECT_THROW(throwSystemError("m", EAGAIN), ExSystemError<11>);
    try {
        throwSystemError("m", EIO);
    } catch (const SystemError& e) {
        EXPECT_EQ(typeid(e), typeid(SystemError));
        EXPECT_EQ(e.code, EIO);
    }
}

TEST(OpenSslException, TakesTheWholeQueueOldestFirst) {
    ERR_clear_error();
    ERR_raise(ERR_LIB_RSA, 101);
    ERR_raise(ERR_LIB_PEM, 102);
    const std::string text = OpenSslException(std::source_location::current(), "Unable").what();
    const auto rsa = text.find("rsa routines");
    const auto pem = text.find("PEM routines");
    EXPECT_EQ(text.rfind("Unable: OpenSSL error: error:", 0), 0U) << text;
    ASSERT_NE(rsa, std::string::npos) << text;
    ASSERT_NE(pem, std::string::npos) << text;
    EXPECT_LT(rsa, text.find('\n'));
    EXPECT_LT(text.find('\n'), pem);
    EXPECT_EQ(ERR_peek_error(), 0UL);
    EXPECT_STREQ(OpenSslException(std::source_location::current(), "Unable").what(),
                 "Unable: OpenSSL error: ");
}

} // namespace
