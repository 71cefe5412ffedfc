#include "support/AppFixture.h"

#include "ui/conversation/ChatScrollView.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/ComposerView.h"
#include "ui/window/ConversationListView.h"
#include "ui/window/MainWindow.h"
#include "ui/window/WelcomeView.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::ElementsAre;

/// The main window, with files dropped on it as the desktop drops them: on its window, at a place.
class FileDropTest : public AppFixture {
protected:
    FileDropTest()
        : window(std::make_unique<MainWindow>(*model, MainWindowServices{announcer, browserWindow,
                                                                         toolServerList.manager,
                                                                         *settingsServices, attachments}))
    {
        window->show();
        files.setUrls({QUrl::fromLocalFile(u"/files/a.txt"_s)});
    }
    ~FileDropTest() override { window.reset(); }

    /// Whether the files were taken.
    bool dropOn(QWidget *place)
    {
        const QPoint at = place->mapTo(window.get(), place->rect().center());
        QDragEnterEvent enter(at, Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window->windowHandle(), &enter);
        QDropEvent drop(at, Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window->windowHandle(), &drop);
        settle();
        return enter.isAccepted() && drop.isAccepted();
    }
    template <class Widget> Widget *part() const { return window->findChild<Widget *>(); }

    std::unique_ptr<MainWindow> window;
    QMimeData files;
};

TEST_F(FileDropTest, FilesAreTakenOnTheMessageField)
{
    EXPECT_TRUE(dropOn(part<ComposerEdit>()->viewport()));
    EXPECT_THAT(attachments.processed, ElementsAre(u"a.txt"_s));
    EXPECT_EQ(part<ComposerView>()->draft(), QString());
}

TEST_F(FileDropTest, FilesAreTakenOnTheWelcome)
{
    EXPECT_TRUE(dropOn(part<WelcomeView>()));
    EXPECT_THAT(attachments.processed, ElementsAre(u"a.txt"_s));
}

TEST_F(FileDropTest, FilesAreTakenOnTheConversation)
{
    service.willTurn(FakeAIService::answer(u"Hello."_s));
    sendAndFinish(u"Hi"_s);
    ASSERT_TRUE(part<ChatScrollView>()->isVisible());
    EXPECT_TRUE(dropOn(part<ChatScrollView>()->viewport()));
    EXPECT_THAT(attachments.processed, ElementsAre(u"a.txt"_s));
}

TEST_F(FileDropTest, FilesAreNotTakenOnTheListOfConversations)
{
    EXPECT_FALSE(dropOn(part<ConversationListView>()));
    EXPECT_TRUE(attachments.processed.isEmpty());
}

TEST_F(FileDropTest, TheProgramThatIsDraggedFromIsNotAskedWithEachMove)
{
    class Counted : public QMimeData {
    public:
        mutable int asked = 0;

    protected:
        QVariant retrieveData(const QString &format, QMetaType type) const override
        {
            ++asked;
            return QMimeData::retrieveData(format, type);
        }
    };
    for (const bool hasFiles : {true, false}) {
        Counted dragged;
        if (hasFiles)
            dragged.setUrls({QUrl::fromLocalFile(u"/files/a.txt"_s)});
        else
            dragged.setText(u"words"_s);
        QWidget *place = part<ComposerEdit>()->viewport();
        const QPoint at = place->mapTo(window.get(), place->rect().center());
        QDragEnterEvent enter(at, Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window->windowHandle(), &enter);
        const int before = dragged.asked;
        for (int move = 0; move < 50; ++move) {
            QDragMoveEvent event(at, Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(window->windowHandle(), &event);
            EXPECT_TRUE(event.isAccepted());
        }
        EXPECT_EQ(dragged.asked, before);
        QDragLeaveEvent leave;
        QApplication::sendEvent(window->windowHandle(), &leave);
    }
}

TEST_F(FileDropTest, TwoHundredFilesAreTaken)
{
    QList<QUrl> many;
    for (int i = 0; i < 200; ++i)
        many += QUrl::fromLocalFile(u"/files/%1.txt"_s.arg(i));
    many.insert(100, QUrl(u"https://example.com/"_s));
    files.setUrls(many);
    EXPECT_TRUE(dropOn(part<WelcomeView>()));
    EXPECT_EQ(attachments.processed.size(), 200);
    EXPECT_EQ(part<ComposerView>()->attachments().attachments().size(), 200);
    EXPECT_LT(part<ComposerView>()->height(), window->height() / 2);
}

TEST_F(FileDropTest, AddressesOfPagesAreNotTaken)
{
    files.setUrls({QUrl(u"https://example.com/"_s)});
    EXPECT_FALSE(dropOn(part<WelcomeView>()));
    EXPECT_TRUE(attachments.processed.isEmpty());
}

} // namespace
} // namespace morvane
