#include "localmodel/MacInfo.h"

#include "localmodel/MachineProfile.h"
#include "platform/MachineFacts.h"

#include <gtest/gtest.h>
#include <utility>

namespace morvane {
namespace {

class FakeFacts final : public MachineFacts {
public:
    QString modelIdentifier() const override
    {
        ++timesAsked;
        return model;
    }
    QString chip() const override { return chipName; }
    quint64 physicalMemory() const override { return memory; }
    QString osVersion() const override { return "Debian GNU/Linux 12 (bookworm)"; }
    bool isArm64() const override { return arm64; }

    QString model = "Mac16,1";
    QString chipName = "Apple M4";
    quint64 memory = 16ull << 30;
    bool arm64 = false;
    mutable int timesAsked = 0;
};

TEST(MacInfoTest, GathersTheFacts)
{
    const MacInfo info = MacInfo::read(FakeFacts());
    EXPECT_EQ(info.modelIdentifier, "Mac16,1");
    EXPECT_EQ(info.marketingName, "MacBook Pro (14-inch, M4, 2024)");
    EXPECT_EQ(info.chip, "Apple M4");
    EXPECT_EQ(info.ramGB, 16);
    EXPECT_EQ(info.osVersion, "Debian GNU/Linux 12 (bookworm)");
    EXPECT_TRUE(info.isAppleSilicon);
}

TEST(MacInfoTest, TheSummaryIsOneSentence)
{
    EXPECT_EQ(
        MacInfo::read(FakeFacts()).summary(),
        "MacBook Pro (14-inch, M4, 2024) with a Apple M4 chip, 16 GB of RAM, running Debian GNU/Linux 12 "
        "(bookworm).");
}

TEST(MacInfoTest, AnUnknownIdentifierStandsAsTheName)
{
    FakeFacts facts;
    facts.model = "Mac99,1";
    EXPECT_EQ(MacInfo::read(facts).marketingName, "Mac99,1");
}

TEST(MacInfoTest, AnUnknownChipIsNamedSo)
{
    FakeFacts facts;
    facts.model = "Standard PC";
    facts.chipName = "Unknown";
    EXPECT_TRUE(MacInfo::read(facts).summary().startsWith("Standard PC with a Unknown chip, "));
}

TEST(MacInfoTest, FactsAreNotTakenForPlaceholders)
{
    FakeFacts facts;
    facts.model = "%2";
    facts.chipName = "%3";
    EXPECT_TRUE(MacInfo::read(facts).summary().startsWith("%2 with a %3 chip, 16 GB"));
}

TEST(MacInfoTest, MemoryIsCutDownToWholeGibibytesAndIsAtLeastOne)
{
    FakeFacts facts;
    for (const auto &[bytes, expected] : {std::pair<quint64, int>{0, 1},
                                          {1, 1},
                                          {(1ull << 30) - 1, 1},
                                          {(2ull << 30) - 1, 1},
                                          {2ull << 30, 2},
                                          {(8ull << 30) - 4096, 7},
                                          {1ull << 40, 1024}}) {
        facts.memory = bytes;
        EXPECT_EQ(MacInfo::read(facts).ramGB, expected) << bytes;
    }
}

TEST(MacInfoTest, AppleSiliconIsAnArmProcessorOrAChipOfThatName)
{
    FakeFacts facts;
    facts.chipName = "Intel(R) Core(TM) i7";
    EXPECT_FALSE(MacInfo::read(facts).isAppleSilicon);
    facts.chipName = "some APPLE chip";
    EXPECT_TRUE(MacInfo::read(facts).isAppleSilicon);
    facts.chipName = "Unknown";
    facts.arm64 = true;
    EXPECT_TRUE(MacInfo::read(facts).isAppleSilicon);
}

TEST(MachineProfileTest, IsReadOnFirstUseAndNeverAgain)
{
    FakeFacts facts;
    const MachineProfile profile(facts);
    EXPECT_EQ(facts.timesAsked, 0);
    EXPECT_EQ(profile.current().modelIdentifier, "Mac16,1");
    facts.model = "Mac99,1";
    EXPECT_EQ(profile.current().modelIdentifier, "Mac16,1");
    EXPECT_EQ(facts.timesAsked, 1);
}

} // namespace
} // namespace morvane
