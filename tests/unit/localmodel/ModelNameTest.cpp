#include "localmodel/ModelName.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(ModelNameTest, LatestIsMeantWhereThereIsNoTag)
{
    EXPECT_TRUE(containsModel({u"qwen2.5:latest"_s}, u"qwen2.5"_s));
    EXPECT_TRUE(containsModel({u"qwen2.5"_s}, u"qwen2.5:latest"_s));
    EXPECT_TRUE(containsModel({u"llama3.1:8b"_s, u"qwen2.5"_s}, u"qwen2.5"_s));
    EXPECT_FALSE(containsModel({u"qwen2.5:3b"_s}, u"qwen2.5"_s));
    EXPECT_FALSE(containsModel({u"qwen2.5"_s}, u"qwen2.5:3b"_s));
    EXPECT_FALSE(containsModel({}, u"qwen2.5"_s));
}

TEST(ModelNameTest, TheListGivesTheNamesInItsOrder)
{
    EXPECT_EQ(modelsInList(u"NAME               ID              SIZE      MODIFIED\n"
                           "qwen2.5:latest     845dbda0ea48    4.7 GB    2 days ago\n"
                           "\n"
                           "  llama3.1:8b\t46e0c10c039e    4.9 GB    3 weeks ago\r\n"_s),
              QStringList({u"qwen2.5"_s, u"llama3.1:8b"_s}));
}

TEST(ModelNameTest, OnlyTheHeaderMeansNoModels)
{
    EXPECT_EQ(modelsInList(u"NAME    ID    SIZE    MODIFIED\n"_s), QStringList());
    EXPECT_EQ(modelsInList(QString()), QStringList());
}

} // namespace
} // namespace morvane
