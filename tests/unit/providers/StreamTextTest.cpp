#include "providers/StreamText.h"

#include <QStringList>
#include <gtest/gtest.h>
#include <random>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString joined(const std::vector<std::string> &pieces)
{
    StreamText text;
    QString given;
    for (const std::string &piece : pieces)
        given += text.add(piece);
    given += text.end();
    EXPECT_EQ(given, text.text());
    return given;
}

TEST(StreamText, CharactersThatAreCutAreWhole)
{
    EXPECT_EQ(joined({"a\xC3", "\xA9"}), u"aé"_s);
    EXPECT_EQ(joined({"\xF0", "\x9F", "\x98", "\x80"}), u"😀"_s);
    EXPECT_EQ(joined({"\xE2\x82", "\xAC", ""}), u"€"_s);
}

TEST(StreamText, WhatIsNoUtf8IsReplaced)
{
    EXPECT_EQ(joined({"a\xff"
                      "b"}),
              u"a\uFFFDb"_s);
    EXPECT_EQ(joined({"a\x80", "\x80"
                               "b"}),
              u"a\uFFFD\uFFFDb"_s);
    EXPECT_EQ(joined({"a\xE2\x82"}), u"a\uFFFD"_s);
    EXPECT_EQ(joined({"a\xE9", "b"}), u"a\uFFFDb"_s);
}

TEST(StreamText, HalvesOfACharacterFindEachOther)
{
    EXPECT_EQ(joined({"a\xED\xA0\xBD", "\xED\xB8\x80"
                                       "b"}),
              u"a😀b"_s);
    EXPECT_EQ(joined({"\xED\xA0\xBD\xED\xB8\x80"}), u"😀"_s);
    EXPECT_EQ(joined({"\xED\xA0\xBD", "", "\xED\xB8\x80"}), u"😀"_s);
}

TEST(StreamText, HalfWithoutItsOtherIsReplaced)
{
    EXPECT_EQ(joined({"a\xED\xA0\xBD", "b"}), u"a\uFFFDb"_s);
    EXPECT_EQ(joined({"a\xED\xB8\x80"
                      "b"}),
              u"a\uFFFDb"_s);
    EXPECT_EQ(joined({"\xED\xA0\xBD\xED\xA0\xBD\xED\xB8\x80"}), u"\uFFFD😀"_s);
    EXPECT_EQ(joined({"\xED\xA0\xBD"}), u"\uFFFD"_s);
    EXPECT_EQ(joined({"\xED\x9F\xBF\xED\x9E\xA3"}), u"퟿힣"_s);
}

TEST(StreamText, EveryCutOfAnyTextGivesTheText)
{
    std::mt19937 random(7);
    const QString alphabet = u"aé€😀한ᄀ\uD7FF\u0000"_s;
    for (int round = 0; round < 300; ++round) {
        QString text;
        for (int i = 0; i < 20; ++i)
            text += alphabet[static_cast<qsizetype>(random() % static_cast<unsigned>(alphabet.size()))];
        text = QString::fromUtf8(text.toUtf8()); // halves that chance put there are question marks now
        const std::string bytes = text.toStdString();
        std::vector<std::string> pieces;
        for (std::size_t at = 0; at < bytes.size();) {
            pieces.push_back(bytes.substr(at, random() % 4));
            at += pieces.back().size();
        }
        ASSERT_EQ(joined(pieces), text);
    }
}

} // namespace
} // namespace morvane
