#include "ui/markdown/LayoutCost.h"

#include <QList>
#include <QString>
#include <gtest/gtest.h>
#include <unicode/uchar.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What a character costs by its properties, one by one.
qsizetype costOf(char32_t character)
{
    if (character < 0x300)
        return 1;
    const bool isSymbol = character >= 0x2000 && (character <= 0x32ff || character > 0xffff);
    const auto point = static_cast<UChar32>(character);
    if (character == 0x20e3 || (isSymbol && u_hasBinaryProperty(point, UCHAR_EMOJI)))
        return QChar::requiresSurrogates(character) ? 82 : 80;
    if (QChar::requiresSurrogates(character))
        return 4;
    return QChar::isMark(character) ? 5 : 2;
}

TEST(LayoutCostTest, EveryCharacterCostsWhatItsPropertiesTell)
{
    for (char32_t character = 0; character <= QChar::LastValidCodePoint; ++character)
        ASSERT_EQ(layoutCost(QChar::fromUcs4(character)), costOf(character))
            << "U+" << std::hex << int(character);
}

TEST(LayoutCostTest, ATextCostsWhatItsCharactersCost)
{
    const QString text =
        u"plain, ünlaut, \u05d0\u0301, 漢, ✅, 👩‍👩‍👧‍👦 and half a pair "_s +
        QChar(0xd83d);
    for (const qsizetype before : {0, 1, 255, 256, 257, 5'000}) {
        const QString whole = QString(before, u'x') + text;
        qsizetype cost = 1 + before; // half a pair costs like another letter
        for (const char32_t character : text.chopped(1).toUcs4())
            cost += costOf(character);
        EXPECT_EQ(layoutCost(whole), cost + 1);
    }
}

TEST(LayoutCostTest, LettersOfTwoScriptsSideBySideCostMore)
{
    EXPECT_EQ(layoutCost(u"b\u05d0"_s), 1 + 2 + 6);
    EXPECT_EQ(layoutCost(u"\u05d0b"_s), 2 + 1 + 6);
    EXPECT_EQ(layoutCost(u"b漢"_s), 1 + 2 + 6);
    EXPECT_EQ(layoutCost(u"b \u05d0"_s), 1 + 1 + 2);
    EXPECT_EQ(layoutCost(u"漢字かな"_s), layoutCost(u"漢字"_s) + layoutCost(u"かな"_s));
    EXPECT_EQ(layoutCost(u"b1\u00e9."_s), 4);
    const QString text = u"b\u05d0漢 1\u0301✅"_s.repeated(50);
    for (qsizetype at = 1; at < text.size(); ++at)
        EXPECT_EQ(layoutCost(text), layoutCost(text.first(at)) + layoutCost(text.sliced(at)) +
                                        seamCost(text[at - 1], text[at]));
}

TEST(LayoutCostTest, WhatIsAffordableCostsNoMoreAndTheNextUnitWould)
{
    const QString text = QString(700, u'x') + u"\u05d0b✅👩\u0301"_s.repeated(300);
    for (const qsizetype budget : {1, 2, 699, 700, 701, 702, 800, 2'000, 6'000}) {
        const qsizetype length = affordableLength(text, budget);
        EXPECT_LE(layoutCost(text.first(length)), budget);
        EXPECT_GT(layoutCost(text.first(length + 2)), budget);
    }
    EXPECT_EQ(affordableLength(text, 1'000'000), text.size());
    EXPECT_EQ(affordableLength(u"✅"_s, 1), 1);
    EXPECT_EQ(affordableLength(u"x"_s, 0), 1);
    EXPECT_EQ(affordableLength({}, 10), 0);
}

} // namespace
} // namespace morvane
