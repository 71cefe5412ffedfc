#include "base/Log.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <system_error>

namespace morvane {
namespace {

TEST(LogTest, IsSilentUntilARuleNamesIt)
{
    QLoggingCategory::setFilterRules({});
    const FolderLog log("morvane.test");
    EXPECT_FALSE(log.isDebugEnabled());
    EXPECT_FALSE(log.isInfoEnabled());
    EXPECT_FALSE(log.isWarningEnabled());
    EXPECT_FALSE(log.isCriticalEnabled());
    QLoggingCategory::setFilterRules("morvane.test=true");
    EXPECT_TRUE(log.isInfoEnabled());
    EXPECT_TRUE(log.isWarningEnabled());
    EXPECT_FALSE(baseLog().isWarningEnabled());
    QLoggingCategory::setFilterRules({});
}

TEST(LogTest, AFailureIsToldByItsKindAndNotByItsText)
{
    EXPECT_EQ(kindOfFailure(std::runtime_error("/home/jane/secret")), "std::runtime_error");
    EXPECT_EQ(kindOfFailure(std::system_error(std::make_error_code(std::errc::no_such_file_or_directory),
                                              "/home/jane")),
              "std::system_error 2");
    EXPECT_EQ(kindOfFailure(std::make_exception_ptr(std::logic_error("secret"))), "std::logic_error");
    EXPECT_EQ(kindOfFailure(std::make_exception_ptr(7)), "no std::exception");
    try {
        throw std::bad_alloc();
    } catch (...) {
        EXPECT_EQ(kindOfCurrentFailure(), "std::bad_alloc");
    }
}

} // namespace
} // namespace morvane
