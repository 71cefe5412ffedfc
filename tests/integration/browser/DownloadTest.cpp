#include "EngineFixture.h"

#include "support/TemporaryHome.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QStandardPaths>
#include <QTest>
#include <QWidget>

namespace morvane {
namespace {

/// Files that sites hand over, whatever they are called.
class DownloadTest : public EngineFixture {
protected:
    DownloadTest() { show("<p>x"); }

    static HttpHeaders fileHeaders(const QByteArray &name)
    {
        HttpHeaders headers;
        headers.set("Content-Type", "application/octet-stream");
        headers.set("Content-Disposition", "attachment; filename=\"" + name + "\"");
        return headers;
    }
    /// What a file is offered as that its site calls so.
    QString offeredAs(const QByteArray &name)
    {
        server.answer("/file", rawHttpResponse(200, "x", fileHeaders(name)));
        window.destinations.clear();
        page().load(server.url("/file"));
        if (!waitUntil([&] { return window.destinations.size() == 1; }))
            return "nothing";
        const QString question = window.asked.last();
        window.destinations.last()({});
        manager->forgetRefusals();
        return question.sliced(QString("where to write ").size()).chopped(QString(" of 127.0.0.1").size());
    }

    /// Where the engine puts files by itself.
    const QDir m_usual{QStandardPaths::writableLocation(QStandardPaths::DownloadLocation)};
};

TEST_F(DownloadTest, ANameSaysToTheSavePanelWhatItSaysToTheUser)
{
    EXPECT_EQ(offeredAs(R"(photo\".bashrc)"), "photo'.bashrc");
    EXPECT_EQ(offeredAs(R"(report.pdf \"run.sh\")"), "report.pdf 'run.sh'");
    EXPECT_EQ(offeredAs("~root"), "root");
    EXPECT_EQ(offeredAs("~ . ~x.txt"), "x.txt");
    EXPECT_EQ(offeredAs("picture.png                    .sh"), "picture.png .sh");
    EXPECT_EQ(offeredAs("a ~ b.txt"), "a ~ b.txt");
}

TEST_F(DownloadTest, ANameWithoutEndKeepsItsBeginningAndItsKind)
{
    EXPECT_EQ(offeredAs(QByteArray(100'000, 'a') + ".txt"), QString(196, 'a') + ".txt");
}

TEST_F(DownloadTest, APageIsSavedFromItsMenu)
{
    show("<p>kingfisher");
    awaitInput();
    QTest::mouseClick(page().view()->focusProxy(), Qt::RightButton, {}, QPoint(50, 50));
    QMenu *menu = nullptr;
    ASSERT_TRUE(waitUntil(
        [&] { return (menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) != nullptr; }));
    for (QAction *entry : menu->actions())
        if (entry->text() == "Save page")
            entry->trigger();
    menu->close();
    ASSERT_TRUE(waitUntil([&] { return window.destinations.size() == 1; }));
    EXPECT_EQ(window.asked.last(), "where to write Page.mhtml of 127.0.0.1");
    const TemporaryHome home;
    window.destinations.last()(home.path("Page.mhtml"));
    EXPECT_TRUE(waitUntil([&] { return announcer.spoken.contains("Download complete."); }))
        << announcer.spoken.join('|').toStdString();
    EXPECT_TRUE(home.read("Page.mhtml").contains("kingfisher"));
}

TEST_F(DownloadTest, WhereNothingCanBeHeldNoFileIsWrittenUnasked)
{
    QDir ours(folder());
    ASSERT_TRUE(ours.rename("Downloads", "Gone"));
    window.destinations.clear();
    server.answer("/file", rawHttpResponse(200, "x", fileHeaders("a.txt")));
    page().load(server.url("/file"));
    EXPECT_TRUE(waitUntil([&] { return window.destinations.size() == 1; }));
    EXPECT_TRUE(ours.rename("Gone", "Downloads"));
    const TemporaryHome home;
    window.destinations.last()(home.path("a.txt"));
    EXPECT_TRUE(waitUntil(
        [&] { return announcer.spoken.contains("Download failed: The file could not be written."); }));
    EXPECT_FALSE(QFile::exists(home.path("a.txt")));
    EXPECT_FALSE(QFile::exists(m_usual.filePath("file"))) << "unasked";
}

} // namespace
} // namespace morvane
