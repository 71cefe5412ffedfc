#include "platform/linux/LinuxUrlOpener.h"

#include "support/TemporaryHome.h"
#include "support/UrlHandler.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class LinuxUrlOpenerTest : public testing::Test {
protected:
    UrlHandler desktop;
    LinuxUrlOpener urls;
    TemporaryHome home;
};

TEST_F(LinuxUrlOpenerTest, PagesOfTheWebAreOpenedAndNothingElse)
{
    EXPECT_TRUE(urls.open(QUrl(u"https://a.test/x?y#z"_s)));
    EXPECT_TRUE(urls.open(QUrl(u"http://a.test/"_s)));
    for (const QString &other : {u"file:///etc/passwd"_s, u"mailto:a@b.test?attach=/etc/passwd"_s,
                                 u"smb://a.test/x"_s, u"ftp://a.test/"_s, u"/etc/passwd"_s, QString()})
        EXPECT_FALSE(urls.open(QUrl(other))) << qPrintable(other);
    EXPECT_EQ(desktop.opened, (QList<QUrl>{QUrl(u"https://a.test/x?y#z"_s), QUrl(u"http://a.test/"_s)}));
}

TEST_F(LinuxUrlOpenerTest, APageOfTheProgramIsOpenedIfItIsThere)
{
    const QString page = home.write(u"a b#1.html"_s, "<p>help");
    EXPECT_TRUE(urls.openOwnPage(page));
    EXPECT_EQ(desktop.opened, QList<QUrl>{QUrl::fromLocalFile(page)});
    EXPECT_EQ(desktop.opened.first().toLocalFile(), page);
    EXPECT_FALSE(urls.openOwnPage(page + u'x'));
}

TEST_F(LinuxUrlOpenerTest, AMessageHasItsTextAndNothingThatTheTextAdds)
{
    const QString text = u"https://a.test/?x=1&attach=/etc/passwd#y + \u00FC"_s;
    EXPECT_TRUE(urls.beginMail(text));
    EXPECT_EQ(desktop.opened.value(0).toEncoded(),
              "mailto:?body=https%3A%2F%2Fa.test%2F%3Fx%3D1%26attach%3D%2Fetc%2Fpasswd%23y%20%2B%20%C3%BC");
}

} // namespace
} // namespace morvane
