#include "attachments/reader/LogicalOrder.h"

#include <gtest/gtest.h>
#include <unicode/ubidi.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A line as it is seen from left to right, by the algorithm for showing text.
QString shown(const QString &logical, UBiDiLevel direction)
{
    UErrorCode status = U_ZERO_ERROR;
    UBiDi *bidi = ubidi_open();
    ubidi_setPara(bidi, reinterpret_cast<const UChar *>(logical.utf16()),
                  static_cast<int32_t>(logical.size()), direction, nullptr, &status);
    QString visual(logical.size(), Qt::Uninitialized);
    ubidi_writeReordered(bidi, reinterpret_cast<UChar *>(visual.data()), static_cast<int32_t>(visual.size()),
                         UBIDI_DO_MIRRORING | UBIDI_KEEP_BASE_COMBINING, &status);
    ubidi_close(bidi);
    return visual;
}

void expectRead(const QStringList &logical, UBiDiLevel direction)
{
    QStringList visual;
    for (const QString &line : logical)
        visual.append(shown(line, direction));
    const QStringList read = inLogicalOrder(visual);
    ASSERT_EQ(read.size(), logical.size());
    for (qsizetype line = 0; line < read.size(); ++line)
        EXPECT_EQ(read.at(line), logical.at(line));
}

TEST(LogicalOrderTest, LettersComeInTheOrderInWhichTheyAreRead)
{
    EXPECT_EQ(inLogicalOrder({u"םלוע םולש"_s}), QStringList(u"שלום עולם"_s));
    EXPECT_EQ(inLogicalOrder({u"ملاعلاب ابحرم"_s}), QStringList(u"مرحبا بالعالم"_s));
}

TEST(LogicalOrderTest, LinesOfOtherLettersStay)
{
    const QStringList lines{u"Hello, World (1)"_s, QString(), u"привет 42 €"_s};
    EXPECT_EQ(inLogicalOrder(lines), lines);
}

TEST(LogicalOrderTest, NumbersKeepTheirDigits)
{
    expectRead({u"בשנת 1948 היו 3.5 מיליון"_s, u"טלפון: 03-1234567"_s, u"מחיר 12,500.75 ש\"ח"_s,
                u"25/12/2024 הוא התאריך"_s},
               UBIDI_RTL);
    expectRead({u"عام 2024 وعام ١٩٤٨"_s}, UBIDI_RTL);
}

TEST(LogicalOrderTest, LatinWordsStandInTheirPlaceInALine)
{
    expectRead(
        {u"התוכנה Visual Studio Code רצה על Linux היום"_s, u"זה עוד משפט ארוך בעברית כדי שהדף יהיה בעברית"_s},
        UBIDI_RTL);
    expectRead({u"The word שלום means peace"_s, u"and עולם means world."_s}, UBIDI_LTR);
}

TEST(LogicalOrderTest, BracketsAndStopsBelongToTheirWords)
{
    expectRead({u"ראה (סעיף 3) להלן."_s, u"מה? [כך] נאמר!"_s}, UBIDI_RTL);
}

TEST(LogicalOrderTest, LineOfOneLanguageIsReadInItsDirectionOnAPageOfAnother)
{
    const QStringList read =
        inLogicalOrder({u"A long English text that fills most of the page"_s, u".םולש"_s});
    EXPECT_EQ(read.at(1), u"שלום."_s);
}

TEST(LogicalOrderTest, PointsStayWithTheirLetters)
{
    expectRead({u"שָׁלוֹם עֲלֵיכֶם"_s}, UBIDI_RTL);
}

TEST(LogicalOrderTest, ShapesOfArabicLettersBecomeTheLetters)
{
    // The shapes of "سلام" as they are seen, its second and third letter joined.
    EXPECT_EQ(inLogicalOrder({u"\uFEE1\uFEFC\uFEB3"_s}), QStringList(u"سلام"_s));
}

TEST(LogicalOrderTest, MarksOfDirectionAndEmptyTextsDoNoHarm)
{
    EXPECT_EQ(inLogicalOrder({}), QStringList());
    EXPECT_FALSE(inLogicalOrder({u"\u202Eםולש\u202C\u2067x\u2069"_s}).constFirst().isEmpty());
    const QString broken = u"ש"_s + QChar(0xD800) + u"ל"_s;
    EXPECT_EQ(inLogicalOrder({broken}).constFirst().size(), 3);
}

} // namespace
} // namespace morvane
