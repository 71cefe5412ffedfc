#include "model/Reminder.h"

#include "base/Json.h"
#include "base/Uuid.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

const QUuid id = *uuidFromText(u"0A1B2C3D-0000-4000-8000-000000000001");

TEST(ReminderTest, TheStoredFormIsAnArrayOfRecords)
{
    const QByteArray json =
        remindersToJson({{.id = id, .message = "time \"to\" stretch", .fireDate = 785692800.5}});
    const auto array = parseJson(json).value().as_array();
    ASSERT_EQ(array.size(), 1U);
    const auto &record = array.front().as_object();
    EXPECT_EQ(record.size(), 3U);
    EXPECT_EQ(record.at("id").as_string(), "0A1B2C3D-0000-4000-8000-000000000001");
    EXPECT_EQ(record.at("message").as_string(), "time \"to\" stretch");
    EXPECT_EQ(record.at("fireDate").as_double(), 785692800.5);
}

TEST(ReminderTest, AListComesBackAsItWasStored)
{
    const QList<Reminder> reminders{{.id = newUuid(), .message = "a, \"b\"\n\U0001F642", .fireDate = 1.25},
                                    {.id = newUuid(), .message = "", .fireDate = -7.0}};
    EXPECT_EQ(remindersFromJson(remindersToJson(reminders)), reminders);
    EXPECT_EQ(remindersToJson({}), QByteArray("[]"));
    EXPECT_TRUE(remindersFromJson("[]").isEmpty());
}

TEST(ReminderTest, AWholeDateAndUnknownKeysAndALowerCaseIdAreRead)
{
    const QList<Reminder> expected{{.id = id, .message = "tea", .fireDate = 5}};
    EXPECT_EQ(remindersFromJson(R"([{"id":"0a1b2c3d-0000-4000-8000-000000000001","message":"tea",)"
                                R"("fireDate":5,"more":[1]}])"),
              expected);
}

TEST(ReminderTest, OneBadRecordSpoilsTheList)
{
    const QByteArray good = R"({"id":"0A1B2C3D-0000-4000-8000-000000000001","message":"tea","fireDate":5})";
    ASSERT_EQ(remindersFromJson('[' + good + ']').size(), 1);
    for (const char *bad : {"7", "null", "{}", R"({"id":"x","message":"tea","fireDate":5})",
                            R"({"id":"0A1B2C3D-0000-4000-8000-000000000001","fireDate":5})",
                            R"({"id":"0A1B2C3D-0000-4000-8000-000000000001","message":"tea","fireDate":"5"})",
                            R"({"id":"0A1B2C3D-0000-4000-8000-000000000001","message":5,"fireDate":5})"})
        EXPECT_TRUE(remindersFromJson('[' + good + ',' + bad + ']').isEmpty()) << bad;
}

TEST(ReminderTest, WhatIsNoListReadsAsEmpty)
{
    for (const char *bytes : {"", "x", "{}", "[", "[1e999]", "\xff\xfe", "null", "[[[["})
        EXPECT_TRUE(remindersFromJson(bytes).isEmpty()) << bytes;
}

} // namespace
} // namespace morvane
