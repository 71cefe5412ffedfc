#include "update/UpdateInfo.h"

#include "base/Json.h"
#include "support/FakeUpdateService.h"

#include <gmock/gmock.h>
#include <limits>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

boost::json::object manifest()
{
    return {{"version", "1.3"},     {"build", 7},
            {"date", "2026-11-22"}, {"dmg", "https://updates.example/downloads/Morvane.tar.zst"},
            {"sha256", "ABCDEF"},   {"notes", {"Faster.", "Safer."}}};
}

std::optional<UpdateInfo> readWith(std::string_view key, const boost::json::value &value)
{
    boost::json::object object = manifest();
    object[key] = value;
    return UpdateInfo::fromJson(serializeJson(object));
}

TEST(UpdateInfoTest, AManifestIsReadWithAndWithoutItsOptionalKeys)
{
    boost::json::object object = manifest();
    UpdateInfo update{u"1.3"_s,
                      7,
                      u"2026-11-22"_s,
                      u"https://updates.example/downloads/Morvane.tar.zst"_s,
                      u"ABCDEF"_s,
                      {u"Faster."_s, u"Safer."_s},
                      {},
                      false,
                      {}};
    EXPECT_EQ(UpdateInfo::fromJson(serializeJson(object)), update);
    object["requiredVersions"] = {"1.1", "1.2"};
    object["required"] = true;
    object["signature"] = "00ff";
    object["something"] = "else";
    update.requiredVersions = {u"1.1"_s, u"1.2"_s};
    update.required = true;
    update.signature = u"00ff"_s;
    EXPECT_EQ(UpdateInfo::fromJson(serializeJson(object)), update);
}

TEST(UpdateInfoTest, AMissingRequiredKeyFailsTheWhole)
{
    for (const std::string_view key : {"version", "build", "date", "dmg", "sha256", "notes"}) {
        boost::json::object object = manifest();
        object.erase(key);
        EXPECT_EQ(UpdateInfo::fromJson(serializeJson(object)), std::nullopt) << key;
    }
}

TEST(UpdateInfoTest, AWrongTypeFailsTheWhole)
{
    for (const std::string_view key :
         {"version", "date", "dmg", "sha256", "notes", "requiredVersions", "required", "signature"})
        EXPECT_EQ(readWith(key, 5), std::nullopt) << key;
    EXPECT_EQ(readWith("build", "7"), std::nullopt);
    EXPECT_EQ(readWith("build", 7.5), std::nullopt);
    EXPECT_EQ(readWith("notes", boost::json::array{"one", 2}), std::nullopt);
    EXPECT_EQ(readWith("requiredVersions", boost::json::array{1.1}), std::nullopt);
    EXPECT_EQ(UpdateInfo::fromJson("[]"), std::nullopt);
    EXPECT_EQ(UpdateInfo::fromJson(""), std::nullopt);
    EXPECT_EQ(UpdateInfo::fromJson("<html>"), std::nullopt);
}

TEST(UpdateInfoTest, ABuildIsANumberOf64Bits)
{
    const auto readBuild = [](const QByteArray &digits) {
        const QByteArray json = serializeJson(manifest()).replace("\"build\":7", "\"build\":" + digits);
        const auto update = UpdateInfo::fromJson(json);
        return update ? std::optional(update->build) : std::nullopt;
    };
    EXPECT_EQ(readBuild("9223372036854775807"), std::numeric_limits<qint64>::max());
    EXPECT_EQ(readBuild("-9223372036854775808"), std::numeric_limits<qint64>::min());
    for (const char *digits :
         {"9223372036854775808", "18446744073709551615", "18446744073709551616", "9.223372036854775808e18",
          "-9223372036854775809", "1e400", "-1e400", "1e19", "0x7", "NaN"})
        EXPECT_EQ(readBuild(digits), std::nullopt) << digits;
    EXPECT_EQ(readBuild(QByteArray(100'000, '9')), std::nullopt);
}

TEST(UpdateInfoTest, NullIsAbsentWhereAKeyIsOptional)
{
    EXPECT_TRUE(readWith("required", nullptr));
    EXPECT_TRUE(readWith("requiredVersions", nullptr));
    EXPECT_EQ(readWith("version", nullptr), std::nullopt);
}

TEST(UpdateInfoTest, AVersionThatIsNoShortLineIsNone)
{
    EXPECT_TRUE(readWith("version", boost::json::string(100, '1')));
    EXPECT_EQ(readWith("version", boost::json::string(101, '1')), std::nullopt);
    EXPECT_EQ(readWith("version", "1.3\n7"), std::nullopt);
    EXPECT_EQ(readWith("version", "1.\xE2\x80\xAE"), std::nullopt);
}

TEST(UpdateInfoTest, OnlyAWebAddressIsAnImages)
{
    for (const char *address : {"", "image.tar.zst", "file:///etc/passwd", "ftp://host/x", "https:///x",
                                "https://host/a b", "javascript:alert(1)"})
        EXPECT_EQ(readWith("dmg", address), std::nullopt) << address;
}

TEST(UpdateInfoTest, AnAddressWithAQueryKeepsItAndGetsTheVersionBehindIt)
{
    UpdateInfo update = sampleUpdate();
    update.dmg = u"https://updates.example/image?channel=main"_s;
    EXPECT_EQ(update.cacheBustedDownloadURL(),
              QUrl(u"https://updates.example/image?channel=main&v=1.3-build7"_s));
}

TEST(UpdateInfoTest, AnAddressWithoutAQueryGetsTheVersionAsItsQuery)
{
    EXPECT_EQ(sampleUpdate().cacheBustedDownloadURL(),
              QUrl(u"https://updates.example/downloads/image.tar.zst?v=1.3-build7"_s));
}

TEST(UpdateInfoTest, WhereTheVersionMakesNoAddressThePlainOneIsTaken)
{
    UpdateInfo update = sampleUpdate();
    update.version = u"1.3 <beta>"_s;
    EXPECT_EQ(update.cacheBustedDownloadURL(), update.url());
}

} // namespace
} // namespace morvane
