#include "EngineFixture.h"

#include "browser/window/PageFinder.h"

namespace morvane {
namespace {

using Direction = PageFinder::Direction;

/// Words that are looked for in a page of the real engine.
class FindInPageTest : public EngineFixture {
protected:
    void show(const QByteArray &body)
    {
        server.page("/page", "<!doctype html><title>Page</title>" + body);
        open("/page");
        announcer.spoken.clear();
    }
    void look(const QString &words, int matches)
    {
        finder.setQuery(words, &page());
        EXPECT_TRUE(waitUntil([&] { return finder.count() == matches; })) << finder.count();
    }
    /// Goes to a match and waits until that is spoken.
    void go(Direction direction)
    {
        announcer.spoken.clear();
        finder.findNext(&page(), direction);
        EXPECT_TRUE(waitUntil([this] { return !announcer.spoken.isEmpty(); }));
    }
    QString selected() { return value("getSelection().toString()").toString(); }
    double scrolled() { return value("scrollY").toDouble(); }

    PageFinder finder{scheduler, announcer};
};

TEST_F(FindInPageTest, TheMatchesAreCountedAndShownOneAfterTheOther)
{
    show(
        "<p>A kingfisher.<p style='margin-top: 4000px'>Another KINGFISHER.<p style='margin-top: 4000px'>end");
    look("Kingfisher", 2);
    go(Direction::forwards);
    EXPECT_EQ(selected(), "kingfisher");
    EXPECT_EQ(scrolled(), 0);
    go(Direction::forwards);
    EXPECT_EQ(selected(), "KINGFISHER");
    EXPECT_GT(scrolled(), 2000);
    EXPECT_EQ(announcer.spoken, QStringList("2 matches for Kingfisher"));
    go(Direction::forwards);
    EXPECT_EQ(selected(), "kingfisher") << "behind the last comes the first";
    go(Direction::backwards);
    EXPECT_EQ(selected(), "KINGFISHER");
}

TEST_F(FindInPageTest, WordsAreFoundWhateverStandsInThem)
{
    show("<p>it's \\ \"me\" &lt;b&gt; ${1} \xC3\xBC");
    const QString words = QString::fromUtf8("it's \\ \"me\" <b> ${1} \xC3\xBC");
    look(words, 1);
    go(Direction::forwards);
    EXPECT_EQ(selected(), words);
}

TEST_F(FindInPageTest, WhatIsNotThereMovesNothing)
{
    show("<p>A kingfisher.");
    look("heron", 0);
    go(Direction::forwards);
    EXPECT_EQ(selected(), "");
    EXPECT_EQ(announcer.spoken, QStringList("No matches for heron"));
}

} // namespace
} // namespace morvane
