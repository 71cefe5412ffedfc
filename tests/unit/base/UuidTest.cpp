#include "base/Uuid.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(UuidTest, TextIsUpperCaseWithoutBraces)
{
    const QUuid uuid(u"{0a1b2c3d-4e5f-4a6b-8c9d-0e1f2a3b4c5d}"_s);
    EXPECT_EQ(uuidText(uuid), u"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D"_s);
}

TEST(UuidTest, ReadsBothCases)
{
    const auto upper = uuidFromText(u"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D");
    ASSERT_TRUE(upper.has_value());
    EXPECT_EQ(upper, uuidFromText(u"0a1b2c3d-4e5f-4a6b-8c9d-0e1f2a3b4c5d"));
    EXPECT_EQ(uuidText(*upper), u"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D"_s);
}

TEST(UuidTest, ReadsTheIdentifierOfZeros)
{
    EXPECT_EQ(uuidFromText(u"00000000-0000-0000-0000-000000000000"), QUuid());
}

TEST(UuidTest, RefusesEveryOtherForm)
{
    for (const QStringView text :
         {u"", u"x", u"{0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5D}", u"0A1B2C3D4E5F4A6B8C9D0E1F2A3B4C5D",
          u"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5", u"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5DE",
          u"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5G", u"0A1B2C3D_4E5F-4A6B-8C9D-0E1F2A3B4C5D",
          u" 0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5", u"0A1B2C3D-4E5F-4A6B-8C9D-0E1F2A3B4C5\u0660"})
        EXPECT_EQ(uuidFromText(text), std::nullopt) << text.toString().toStdString();
}

TEST(UuidTest, NewIdentifiersDiffer)
{
    EXPECT_NE(newUuid(), newUuid());
    EXPECT_TRUE(uuidFromText(uuidText(newUuid())).has_value());
}

} // namespace
} // namespace morvane
