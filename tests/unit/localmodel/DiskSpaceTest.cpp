#include "localmodel/DiskSpace.h"

#include "localmodel/ByteString.h"
#include "localmodel/InstallError.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString refusal(qint64 bytes, const QString &what, qint64 free)
{
    try {
        requireFreeDiskSpace(bytes, what, free);
    } catch (const InstallError &error) {
        return error.message();
    }
    return {};
}

TEST(DiskSpaceTest, SizesAreWrittenInPowersOfTwo)
{
    EXPECT_EQ(byteString(1'500'000'000), u"1.4 GB"_s);
    EXPECT_EQ(byteString(500'000'000), u"477 MB"_s);
    EXPECT_EQ(byteString(0), u"0 MB"_s);
    EXPECT_EQ(byteString(1023LL << 20), u"1023 MB"_s);
    EXPECT_EQ(byteString(1024LL << 20), u"1.0 GB"_s);
}

TEST(DiskSpaceTest, TooLittleSpaceIsTold)
{
    EXPECT_EQ(refusal(1'500'000'000, u"install Ollama"_s, 1'400'000'000),
              u"Not enough free disk space to install Ollama. You need about 1.4 GB free, but only 1.3 GB is "
              "available."_s);
    EXPECT_EQ(refusal(1'500'000'000, u"install Ollama"_s, 1'499'999'999),
              u"Not enough free disk space to install Ollama. You need about 1.4 GB free, but only 1.4 GB is "
              "available."_s);
}

TEST(DiskSpaceTest, EnoughOrUnknownSpaceSuffices)
{
    EXPECT_EQ(refusal(1'500'000'000, u"install Ollama"_s, 1'500'000'000), QString());
    EXPECT_EQ(refusal(1'500'000'000, u"install Ollama"_s, -1), QString());
    EXPECT_EQ(refusal(1'500'000'000, u"install Ollama"_s, 0).isEmpty(), false);
}

TEST(DiskSpaceTest, TheHomeFolderHasSome)
{
    EXPECT_GT(freeDiskSpace(), 0);
}

} // namespace
} // namespace morvane
