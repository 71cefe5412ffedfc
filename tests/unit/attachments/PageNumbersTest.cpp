#include "attachments/reader/PageNumbers.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(PageNumbersTest, RunsAreTakenTogether)
{
    EXPECT_EQ(pageNumbers({}), QString());
    EXPECT_EQ(pageNumbers({5}), u"5"_s);
    EXPECT_EQ(pageNumbers({3, 7, 8, 9, 12, 11}), u"3, 7–9, 11–12"_s);
}

} // namespace
} // namespace morvane
