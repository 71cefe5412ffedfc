#include "browser/pages/PageText.h"

#include "BrowserFixture.h"
#include "support/FakePageDownload.h"
#include "support/FakePagePermission.h"

namespace morvane {
namespace {

const QString rightToLeft(QChar(0x202E));

/// Each of them with what must be left of it in a line of ours.
const QList<std::pair<QString, QString>> &hostileTexts()
{
    static const QList<std::pair<QString, QString>> texts{
        {"gpj." + rightToLeft + "exe", "gpj.\\u202Eexe"},
        {QString("ring") + QChar(0x07) + "ring", "ring\\u0007ring"},
        {"one\ntwo\r\nthree" + QString(QChar(0x2028)) + "four", "one two three four"},
        {QString(1024 * 1024, 'x'), QString(longestPageText, 'x') + QChar(0x2026)},
    };
    return texts;
}

TEST(PageTextTest, ALineIsBoundedAndHidesNothing)
{
    for (const auto &[text, shown] : hostileTexts())
        EXPECT_EQ(pageText(text), shown);
    EXPECT_EQ(pageText("Plain & simple"), "Plain & simple");
    EXPECT_EQ(pageText("abcdef", 3), QString("abc") + QChar(0x2026));
}

TEST(PageTextTest, AQuestionKeepsItsLines)
{
    EXPECT_EQ(pageLines("one\ntwo" + rightToLeft), "one\ntwo\\u202E");
    EXPECT_EQ(pageLines(QString("a") + QChar(0x07) + "\rb"), "a\\u0007\\rb");
    EXPECT_EQ(pageLines(QString(1024 * 1024, 'x')), QString(labelLimit, 'x') + QChar(0x2026));
}

TEST(PageTextTest, APageWithoutATitleIsCalledByItsSite)
{
    EXPECT_EQ(pageName("", "a.test"), "a.test");
    EXPECT_EQ(pageName(" \n ", "a" + rightToLeft), "a\\u202E");
    EXPECT_EQ(pageName("Title", "a.test"), "Title");
}

/// What is spoken of pages goes to labels, too: that is how readers hear of it.
class SpokenPageTextTest : public BrowserFixture {};

TEST_F(SpokenPageTextTest, TitlesAreSpokenAsTheyAreShown)
{
    manager.makeWindowIfNeeded();
    for (const auto &[title, shown] : hostileTexts()) {
        spoken();
        visit(0, QString("https://a.test/%1").arg(title.size()), title);
        EXPECT_EQ(spoken().last(), "Loaded " + shown);
        manager.switchTab(tab().id());
        EXPECT_EQ(spoken(), QStringList("Switched to tab " + shown));
        manager.newTab();
        spoken();
        manager.closeTab(manager.tabs().front()->id());
        EXPECT_EQ(spoken(), QStringList("Closed tab " + shown + "."));
        pages.pages.removeFirst();
    }
}

TEST_F(SpokenPageTextTest, FilesAndSitesAreSpokenAsTheyAreShown)
{
    manager.makeWindowIfNeeded();
    for (const auto &[text, shown] : hostileTexts()) {
        manager.forgetRefusals();
        spoken();
        const auto file = std::make_shared<FakePageDownload>(text, "a.test");
        Q_EMIT page().downloadRequested(file);
        window.destinations.last()("/x");
        EXPECT_EQ(spoken(), QStringList("Download started: " + shown));
        Q_EMIT file->finished();
        for (int i = 0; i < RefusedSites::mostRefusals; ++i) {
            Q_EMIT page().downloadRequested(std::make_shared<FakePageDownload>("file", text));
            window.destinations.last()({});
            Q_EMIT page().permissionRequested(
                std::make_shared<FakePagePermission>(PagePermission::Kind::camera, text));
            window.permissionAnswers.last()(false);
        }
        const QStringList heard = spoken();
        EXPECT_TRUE(heard.contains("Files from " + shown + " are refused until an address is opened."));
        EXPECT_TRUE(heard.contains("Wishes of " + shown + " are refused until an address is opened."));
    }
}

} // namespace
} // namespace morvane
