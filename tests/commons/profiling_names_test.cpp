#include "commons/object_display_names.h"
#include "commons/profiling_names.h"

#include <gtest/gtest.h>

namespace {

using namespace brask;

template <class Enum>
std::string textOf(int value) {
    return profilingText(static_cast<Enum>(value));
}

TEST(ProfilingNames, NumbersKeepTheirTexts) {
    const std::pair<int, const char*> operations[] = {
        {0, "disable_php_handlers"},    {11, "restore.database_users.privileges"},
        {19, "restore.email.messages"}, {25, "restore.fail2Ban_configuration"},
        {30, "restore.mail"},           {38, "restore.protected_directories"},
        {54, "restore.admin_aliases"},  {57, "restore.run_command"},
        {58, "unpack_archive"},         {59, "disable_php_handlers"},
        {-1, "disable_php_handlers"}};
    for (const auto& [value, text] : operations) {
        EXPECT_EQ(textOf<ProfilingOperationType>(value), text) << value;
    }
    EXPECT_EQ(textOf<ProfilingAttribute>(4), "process.command_line");
    EXPECT_EQ(textOf<ProfilingAttribute>(10), "process.runtime.name");
    EXPECT_EQ(textOf<ProfilingAttribute>(15), "user.name");
    EXPECT_EQ(textOf<ProfilingAttribute>(16), "application.name");
    EXPECT_EQ(textOf<ProfilingMetricType>(3), "backup.speed.upload");
    EXPECT_EQ(textOf<ProfilingMetricType>(4), "backup.speed.download");
}

TEST(ObjectDisplayNames, UnknownIdsAreUnspecifiedAndUnknownTypesStay) {
    for (const int id : {-1, 0, 28}) {
        EXPECT_EQ(objectDisplayName(id), "Unspecified") << id;
    }
    EXPECT_EQ(objectDisplayName(1), "Main");
    EXPECT_EQ(objectDisplayName(27), "Unpack CID");
    EXPECT_EQ(objectTypeDisplayName("Subscription"), "Restore domain");
    EXPECT_EQ(objectTypeDisplayName("Mail list"), "Restore maillist");
    EXPECT_EQ(objectTypeDisplayName("Database user"), "Restore database user");
    EXPECT_EQ(objectTypeDisplayName("database"), "database");
}

} // namespace
