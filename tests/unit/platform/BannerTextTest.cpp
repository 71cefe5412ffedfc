#include "platform/linux/notifications/BannerText.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(BannerTextTest, MarkupIsEscapedOnlyForDaemonsThatParseIt)
{
    const QString text = "<b>1 & 2</b> \"quoted\" &amp;";
    EXPECT_EQ(bannerBody(text, BodyMarkup::parsed), "&lt;b&gt;1 &amp; 2&lt;/b&gt; \"quoted\" &amp;amp;");
    EXPECT_EQ(bannerBody(text, BodyMarkup::shown), text);
}

TEST(BannerTextTest, LongTextsAreCutBeforeTheyAreEscaped)
{
    const QString body = bannerBody(QString(5000, u'<'), BodyMarkup::parsed);
    EXPECT_EQ(body, QString("&lt;").repeated(1000) + u'…');
    EXPECT_EQ(bannerBody(QString(1000, u'x'), BodyMarkup::shown), QString(1000, u'x'));
    EXPECT_LE(bannerTitle(QString(5000, u'x')).size(), 101);
}

TEST(BannerTextTest, ControlCharactersBecomeBlanksAndLineFeedsStay)
{
    const QString text = QString::fromUtf16(u"a\0b\tc\r\nd\x1b[31m\x7f", 14);
    EXPECT_EQ(bannerBody(text, BodyMarkup::shown), "a b c\nd [31m ");
    EXPECT_EQ(bannerTitle("two\nlines"), "two lines");
}

} // namespace
} // namespace morvane
