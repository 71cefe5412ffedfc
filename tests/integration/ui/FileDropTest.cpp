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

TEST_F(FileDropTest, AddressesOfPagesAreNotTaken)
{
    files.setUrls({QUrl(u"https://example.com/"_s)});
    EXPECT_FALSE(dropOn(part<WelcomeView>()));
    EXPECT_TRUE(attachments.processed.isEmpty());
}

} // namespace
} // namespace morvane
