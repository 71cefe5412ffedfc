#include "update/UpdatePolicy.h"

#include "support/FakeUpdateService.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(UpdatePolicyTest, VersionsAreComparedNumberByNumber)
{
    EXPECT_TRUE(isNewer(u"1.10"_s, u"1.9"_s));
    EXPECT_FALSE(isNewer(u"1.9"_s, u"1.10"_s));
    EXPECT_TRUE(isNewer(u"2"_s, u"1.99.99"_s));
    EXPECT_TRUE(isNewer(u"1.2.1"_s, u"1.2"_s));
    EXPECT_FALSE(isNewer(u"1.2"_s, u"1.2.1"_s));
}

TEST(UpdatePolicyTest, MissingNumbersAreZero)
{
    EXPECT_FALSE(isNewer(u"1.2"_s, u"1.2.0"_s));
    EXPECT_FALSE(isNewer(u"1.2.0"_s, u"1.2"_s));
    EXPECT_FALSE(isNewer(u""_s, u"0.0"_s));
    EXPECT_FALSE(isNewer(u"1..2"_s, u"1.2"_s));
    EXPECT_FALSE(isNewer(u"1.2"_s, u"1..2"_s));
}

TEST(UpdatePolicyTest, OnlyDigitsOfAPieceCount)
{
    EXPECT_FALSE(isNewer(u"1.2-beta3"_s, u"1.23"_s));
    EXPECT_FALSE(isNewer(u"1.23"_s, u"1.2-beta3"_s));
    EXPECT_TRUE(isNewer(u"1.2-beta3"_s, u"1.3"_s));
    EXPECT_FALSE(isNewer(u"v1.beta"_s, u"1.0"_s));
    EXPECT_TRUE(isNewer(u"version 2"_s, u"1"_s));
}

TEST(UpdatePolicyTest, WhatIsNoDecimalNumberIsZero)
{
    EXPECT_FALSE(isNewer(u"٣"_s, u"0"_s));
    EXPECT_FALSE(isNewer(u"1½"_s, u"0"_s));
    EXPECT_FALSE(isNewer(u"1\U0001D7CF"_s, u"0"_s)); // a digit outside of the basic plane
    EXPECT_FALSE(isNewer(QString(30, u'9'), u"0"_s));
    EXPECT_TRUE(isNewer(u"9223372036854775807"_s, u"9223372036854775806"_s));
    EXPECT_FALSE(isNewer(u"9223372036854775808"_s, u"0"_s));
}

TEST(UpdatePolicyTest, AHigherBuildOfTheSameVersionIsOnOffer)
{
    const ProgramVersion current{u"1.2"_s, 5};
    EXPECT_TRUE(isOnOffer(sampleUpdate(u"1.2"_s, 6), current));
    EXPECT_FALSE(isOnOffer(sampleUpdate(u"1.2"_s, 5), current));
    EXPECT_FALSE(isOnOffer(sampleUpdate(u"1.2"_s, 4), current));
    EXPECT_FALSE(isOnOffer(sampleUpdate(u"1.2"_s, -6), current));
}

TEST(UpdatePolicyTest, AnotherTextOfTheSameVersionIsNotOnOffer)
{
    EXPECT_FALSE(isOnOffer(sampleUpdate(u"1.2.0"_s, 6), {u"1.2"_s, 5}));
}

TEST(UpdatePolicyTest, AHigherBuildOfALowerVersionIsNotOnOffer)
{
    EXPECT_FALSE(isOnOffer(sampleUpdate(u"1.1"_s, 99), {u"1.2"_s, 5}));
    EXPECT_TRUE(isOnOffer(sampleUpdate(u"1.10"_s, 1), {u"1.9"_s, 5}));
}

TEST(UpdatePolicyTest, AListOfRequiredVersionsOverrulesTheFlag)
{
    UpdateInfo update = sampleUpdate(u"1.3"_s, 7);
    update.required = true;
    update.requiredVersions = {u"1.1"_s};
    EXPECT_FALSE(isUpdateRequired(update, {u"1.2"_s, 5}));
    EXPECT_TRUE(isUpdateRequired(update, {u"1.1"_s, 5}));
    EXPECT_FALSE(isUpdateRequired(update, {u"1.1.0"_s, 5})); // the exact text
    update.required = false;
    EXPECT_TRUE(isUpdateRequired(update, {u"1.1"_s, 5}));
}

TEST(UpdatePolicyTest, WithAnEmptyListTheFlagDecides)
{
    UpdateInfo update = sampleUpdate(u"1.3"_s, 7);
    EXPECT_FALSE(isUpdateRequired(update, {u"1.2"_s, 5}));
    update.required = true;
    EXPECT_TRUE(isUpdateRequired(update, {u"1.2"_s, 5}));
}

TEST(UpdatePolicyTest, AnOldManifestNeverLocksUpANewerProgram)
{
    UpdateInfo update = sampleUpdate(u"1.3"_s, 7);
    update.required = true;
    EXPECT_FALSE(isUpdateRequired(update, {u"1.4"_s, 1}));
    EXPECT_FALSE(isUpdateRequired(update, {u"1.3"_s, 7}));
    update.requiredVersions = {u"1.4"_s};
    EXPECT_FALSE(isUpdateRequired(update, {u"1.4"_s, 1}));
}

} // namespace
} // namespace morvane
