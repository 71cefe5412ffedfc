#include "browser/pages/PageReading.h"

#include "browser/pages/ScriptAnswer.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

QString read(const QString &answer)
{
    const auto reading = readPageAnswer(answer);
    return reading ? reading->text : QString("unreadable");
}

TEST(PageReadingTest, APageIsToldWithItsNumberedElements)
{
    const auto reading = readPageAnswer(QString(
        R"({"title": "T", "url": "http://h/", "text": "one\n\ntwo", "elements": [
            {"ref": "@e0", "role": "a", "name": "Home"}, {"ref": "@e1", "role": "button", "name": ""}]})"));
    ASSERT_TRUE(reading);
    EXPECT_EQ(reading->text,
              "Page: T\nURL: http://h/\n\nPage text:\none\n\ntwo\n"
              "\nClickable elements (use browser_click with the number; browser_type to fill a "
              "field):\n[1] a 'Home'\n[2] button\n");
    EXPECT_EQ(reading->refs, QStringList({"@e0", "@e1"}));
}

TEST(PageReadingTest, AnEmptyPageSaysThatNothingCanBeClicked)
{
    EXPECT_EQ(read(R"({"title": "", "url": "http://h/", "text": "", "elements": []})"),
              "Page: \nURL: http://h/\n\nPage text:\n\n\n(No clickable elements were found on this page.)");
}

TEST(PageReadingTest, WhatIsMissingOrOfAnotherKindReadsAsNothing)
{
    EXPECT_EQ(read("{}"),
              "Page: \nURL: \n\nPage text:\n\n\n(No clickable elements were found on this page.)");
    EXPECT_EQ(read(R"({"title": 5, "url": null, "text": [], "elements": {}})"), read("{}"));
    const auto reading =
        readPageAnswer(QString(R"({"elements": [{}, 7, {"name": "x", "role": 1}, {"ref": "@e9"}]})"));
    ASSERT_TRUE(reading);
    EXPECT_TRUE(reading->text.endsWith(":\n[1] element\n[2] element\n[3] element 'x'\n[4] element\n"));
    EXPECT_EQ(reading->refs, QStringList({"", "", "", "@e9"})) << "so that the numbers stay true";
}

TEST(PageReadingTest, NoObjectIsNoReading)
{
    for (const QVariant &answer : {QVariant(), QVariant(7), QVariant(""), QVariant("[]"), QVariant("null"),
                                   QVariant("{"), QVariant("{} {}"), QVariant(QByteArray("{}"))})
        EXPECT_FALSE(readPageAnswer(answer)) << answer.toString().toStdString();
}

TEST(PageReadingTest, HalfOfACharacterDoesNotMakeThePageUnreadable)
{
    const auto read =
        readScriptAnswer(QString(R"({"a": "x\ud83d", "b": "\\ud83d\uDE00y", "c": "\\\uD800"})"));
    ASSERT_TRUE(read);
    EXPECT_EQ(QString::fromUtf8(read->at("a").as_string().c_str()), QString("x") + QChar(0xFFFD));
    EXPECT_EQ(QString::fromUtf8(read->at("b").as_string().c_str()), QString("\\ud83d") + QChar(0xFFFD) + "y");
    EXPECT_EQ(QString::fromUtf8(read->at("c").as_string().c_str()), QString("\\") + QChar(0xFFFD));
    EXPECT_FALSE(readScriptAnswer(QString(R"({"a": "\ud8)")));
    EXPECT_FALSE(readScriptAnswer(QString("{\"a\": \"\\")));
}

TEST(PageReadingTest, RolesWithoutEndAreCut)
{
    const QString endless(400'000, 'x');
    EXPECT_TRUE(read(QString(R"({"elements": [{"role": "%1", "name": "n"}]})").arg(endless))
                    .endsWith("\n[1] " + endless.first(80) + " 'n'\n"));
}

TEST(PageReadingTest, HeadingsWithoutEndAreCut)
{
    const QString endless(400'000, 'x');
    EXPECT_LT(read(QString(R"({"title": "%1", "url": "%1"})").arg(endless)).size(), 4200);
    EXPECT_EQ(read(QString(R"({"title": "%1%1%1"})").arg(endless)), "unreadable");
}

} // namespace
} // namespace morvane
