#include "ComposerAttachmentsFixture.h"

#include "ui/controls/NoteLabel.h"
#include "ui/window/FileDialogFilters.h"
#include "ui/window/FileDropFilter.h"

#include <QBuffer>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::Contains;
using testing::ElementsAre;
using Service = FakeAIService;

class ComposerAttachmentsTest : public ComposerAttachmentsFixture {};

TEST_F(ComposerAttachmentsTest, EachFileIsAnnouncedAsItBeginsAndAsItEnds)
{
    attach({u"a.png"_s, u"b.txt"_s});
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Attaching a.png…"_s, u"Attaching b.txt…"_s,
                                              u"Attached a.png."_s, u"Attached b.txt."_s));
    EXPECT_THAT(pendingNames(), ElementsAre(u"a.png"_s, u"b.txt"_s));
}

TEST_F(ComposerAttachmentsTest, AnnouncementsAreMadeAlsoWithTheSettingOff)
{
    settings->setAnnounceResponses(false);
    attach({u"a.txt"_s});
    EXPECT_EQ(announcer.spoken.size(), 2);
}

TEST_F(ComposerAttachmentsTest, OneFailureDoesNotStopTheOthers)
{
    attachments.failing = {u"bad.pdf"_s};
    attach({u"bad.pdf"_s, u"good.txt"_s});
    EXPECT_THAT(pendingNames(), ElementsAre(u"good.txt"_s));
    EXPECT_THAT(announcer.spoken, Contains(u"Cannot attach bad.pdf."_s));
    EXPECT_EQ(view->attachments().processingCount(), 0);
}

TEST_F(ComposerAttachmentsTest, AFileForWhichTheSystemLacksSomethingIsToldToo)
{
    attachments.breaking = {u"a.txt"_s};
    attach({u"a.txt"_s});
    EXPECT_EQ(announcer.spoken.last(), u"Could not read \"a.txt\"."_s);
    EXPECT_TRUE(pendingNames().isEmpty());
    EXPECT_EQ(view->attachments().processingCount(), 0);
}

TEST_F(ComposerAttachmentsTest, SendingIsNotPossibleWhileAFileIsRead)
{
    attachments.holds = true;
    edit->setPlainText(u"text in the field"_s);
    attach({u"a.txt"_s, u"b.txt"_s});
    EXPECT_FALSE(view->canSend());
    EXPECT_FALSE(button(u"Send message"_s)->isEnabled());
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(view->draft(), u"text in the field"_s);
    attachments.release();
    settle();
    EXPECT_FALSE(view->canSend());
    attachments.release();
    settle();
    EXPECT_TRUE(view->canSend());
}

TEST_F(ComposerAttachmentsTest, FilesBeingReadAreCounted)
{
    attachments.holds = true;
    attach({u"a.txt"_s, u"b.txt"_s});
    EXPECT_NE(shownWidget(u"Processing 2 attachments"_s), nullptr);
    EXPECT_NE(shownWidget(u"Processing attachment"_s), nullptr);
    attachments.release();
    settle();
    EXPECT_NE(shownWidget(u"Processing 1 attachments"_s), nullptr);
    attachments.release();
    settle();
    EXPECT_EQ(shownWidget(u"Processing attachment"_s), nullptr);
}

TEST_F(ComposerAttachmentsTest, AttachmentAloneIsSentAndGone)
{
    service.willTurn(Service::answer(u"ok"_s));
    attach({u"a.txt"_s});
    ASSERT_TRUE(view->canSend());
    QTest::keyClick(edit, Qt::Key_Return);
    finishRun();
    EXPECT_EQ(model->messages().first().attachments.first().filename, u"a.txt"_s);
    EXPECT_TRUE(pendingNames().isEmpty());
    EXPECT_TRUE(chips().isEmpty());
}

TEST_F(ComposerAttachmentsTest, RefusedImageKeepsTheDraftUntilTheModelIsSwitched)
{
    settings->setProviderID(ProviderID::custom);
    settings->setModel(u"text-only"_s);
    edit->setPlainText(u"What is this?"_s);
    attach({u"a.png"_s});
    ASSERT_TRUE(view->canSend());
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(view->draft(), u"What is this?"_s);
    EXPECT_THAT(pendingNames(), ElementsAre(u"a.png"_s));

    settings->setModel(u"llava"_s);
    service.willTurn(Service::answer(u"A cat."_s));
    QTest::keyClick(edit, Qt::Key_Return);
    finishRun();
    EXPECT_EQ(model->messages().first().attachments.size(), 1);
    EXPECT_EQ(view->draft(), QString());
    EXPECT_TRUE(pendingNames().isEmpty());
}

TEST_F(ComposerAttachmentsTest, WarningFollowsProviderModelAndAttachments)
{
    EXPECT_FALSE(warns());
    attach({u"a.png"_s, u"b.txt"_s});
    EXPECT_FALSE(warns());
    settings->setProviderID(ProviderID::groq);
    settings->setModel(u"text-only"_s);
    EXPECT_TRUE(warns());
    settings->setModel(u"some-vision-model"_s);
    EXPECT_FALSE(warns());
    settings->setModel(u"text-only"_s);
    EXPECT_TRUE(warns());
    settings->setProviderID(ProviderID::gemini);
    EXPECT_FALSE(warns());
    settings->setProviderID(ProviderID::groq);
    settings->setModel(u"text-only"_s);
    ASSERT_TRUE(warns());
    button(u"Remove attachment a.png"_s)->click();
    EXPECT_FALSE(warns());
}

TEST_F(ComposerAttachmentsTest, WarningSaysWhatToDo)
{
    settings->setProviderID(ProviderID::groq);
    settings->setModel(u"text-only"_s);
    attach({u"a.png"_s});
    const auto labels = view->findChildren<QLabel *>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [](const QLabel *label) {
        return label->isVisible() && label->text() == u"The current model can't see images — "
                                                      "switch to a vision model to send them."_s;
    }));
}

TEST_F(ComposerAttachmentsTest, SendButtonNoLongerAsksForAnAttachment)
{
    EXPECT_NE(button(u"Send message. Add a message or an attachment first."_s), nullptr);
    attach({u"a.txt"_s});
    EXPECT_NE(button(u"Send message"_s), nullptr);
}

TEST_F(ComposerAttachmentsTest, PastedFilesAreAttached)
{
    auto *data = new QMimeData;
    data->setUrls({file(u"a.txt"_s), file(u"b.png"_s)});
    paste(data);
    EXPECT_THAT(pendingNames(), ElementsAre(u"a.txt"_s, u"b.png"_s));
    EXPECT_EQ(view->draft(), QString());
}

TEST_F(ComposerAttachmentsTest, PastedAddressOfAPageIsText)
{
    auto *data = new QMimeData;
    data->setUrls({QUrl(u"https://example.com/a.png"_s)});
    data->setText(u"https://example.com/a.png"_s);
    paste(data);
    EXPECT_TRUE(pendingNames().isEmpty());
    EXPECT_EQ(view->draft(), u"https://example.com/a.png"_s);
}

TEST_F(ComposerAttachmentsTest, PastedPictureIsAttachedWithItsBytes)
{
    auto *data = new QMimeData;
    data->setData(u"image/png"_s, "the bytes");
    paste(data);
    EXPECT_THAT(pendingNames(), ElementsAre(u"Pasted image.png"_s));
    EXPECT_THAT(attachments.images, ElementsAre(QByteArray("the bytes")));
}

TEST_F(ComposerAttachmentsTest, PastedPictureOfThisProgramBecomesAPng)
{
    QImage image(4, 3, QImage::Format_RGB32);
    image.fill(Qt::red);
    auto *data = new QMimeData;
    data->setImageData(image);
    paste(data);
    ASSERT_TRUE(waitUntil([this] { return !pendingNames().isEmpty(); }));
    EXPECT_THAT(pendingNames(), ElementsAre(u"Pasted image.png"_s));
    EXPECT_EQ(QImage::fromData(attachments.images.constFirst(), "png").size(), QSize(4, 3));
}

TEST_F(ComposerAttachmentsTest, TextThatAlsoComesAsAPictureIsPastedAsText)
{
    auto *data = new QMimeData;
    data->setText(u"a cell"_s);
    data->setData(u"image/png"_s, "the cell as a picture");
    paste(data);
    EXPECT_EQ(view->draft(), u"a cell"_s);
    EXPECT_TRUE(pendingNames().isEmpty());
}

TEST_F(ComposerAttachmentsTest, DroppedFilesAreTakenFromTheWholeWindowAndNeverMoved)
{
    QWidget window;
    auto *filter = new FileDropFilter(&window);
    QList<QUrl> dropped;
    QList<bool> hovering;
    QObject::connect(filter, &FileDropFilter::filesDropped, [&](const QList<QUrl> &urls) { dropped = urls; });
    QObject::connect(filter, &FileDropFilter::hoveringChanged, [&](bool is) { hovering.append(is); });
    QMimeData data;
    data.setUrls({file(u"a.txt"_s), QUrl(u"https://example.com/"_s)});
    QDragEnterEvent enter({5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop({5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &drop);
    EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
    EXPECT_THAT(dropped, ElementsAre(file(u"a.txt"_s)));
    EXPECT_THAT(hovering, ElementsAre(true, false));
}

TEST_F(ComposerAttachmentsTest, FieldLeavesDroppedFilesToTheWindow)
{
    QMimeData files;
    files.setUrls({file(u"a.txt"_s)});
    QDragEnterEvent enterFiles({5, 5}, Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(edit->viewport(), &enterFiles);
    EXPECT_FALSE(enterFiles.isAccepted());
    QMimeData text;
    text.setText(u"words"_s);
    QDragEnterEvent enterText({5, 5}, Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(edit->viewport(), &enterText);
    EXPECT_TRUE(enterText.isAccepted());
}

TEST_F(ComposerAttachmentsTest, PaperclipOpensOneDialogForSeveralFiles)
{
    auto *paperclip = button(u"Attach a file or image"_s);
    ASSERT_NE(paperclip, nullptr);
    EXPECT_EQ(paperclip->accessibleDescription(),
              u"Adds images, PDFs, or text files to your next message."_s);
    paperclip->click();
    paperclip->click();
    const auto dialogs = view->findChildren<QFileDialog *>();
    ASSERT_EQ(dialogs.size(), 1);
    EXPECT_EQ(dialogs.first()->fileMode(), QFileDialog::ExistingFiles);
    EXPECT_EQ(dialogs.first()->nameFilters(), fileDialogFilters());
    dialogs.first()->reject();
    EXPECT_EQ(view->focusWidget(), edit);
}

TEST_F(ComposerAttachmentsTest, TheDialogLeavesTheKeyboardInTheField)
{
    auto *paperclip = button(u"Attach a file or image"_s);
    paperclip->setFocus(Qt::TabFocusReason);
    paperclip->click();
    auto *dialog = view->findChild<QFileDialog *>();
    ASSERT_NE(dialog, nullptr);
    dialog->reject();
    settle();
    EXPECT_EQ(view->focusWidget(), edit);
}

TEST_F(ComposerAttachmentsTest, FilesChosenInTheDialogAreAttached)
{
    const QString first = home.write(u"a.txt"_s, "a");
    const QString second = home.write(u"b.txt"_s, "b");
    button(u"Attach a file or image"_s)->click();
    auto *dialog = view->findChild<QFileDialog *>();
    ASSERT_NE(dialog, nullptr);
    auto *name = dialog->findChild<QLineEdit *>();
    name->setText(u'"' + first + u"\" \""_s + second + u'"');
    QTest::keyClick(name, Qt::Key_Return);
    settle();
    EXPECT_EQ(view->findChild<QFileDialog *>(), nullptr);
    EXPECT_THAT(pendingNames(), ElementsAre(u"a.txt"_s, u"b.txt"_s));
}

TEST_F(ComposerAttachmentsTest, ClosedComposerEndsTheReadingOfItsFiles)
{
    attachments.holds = true;
    attach({u"a.txt"_s});
    view.reset();
    attachments.release();
    settle();
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Attaching a.txt…"_s));
}

TEST_F(ComposerAttachmentsTest, AFailureIsSeenUntilFilesAreChosenAgain)
{
    attachments.failing = {u"bad.pdf"_s, u"worse.pdf"_s};
    const auto seen = [this] {
        QStringList texts;
        for (const NoteLabel *note : view->findChildren<NoteLabel *>())
            if (note->isVisible())
                texts += note->text();
        return texts.join(u'\n');
    };
    attach({u"bad.pdf"_s, u"good.txt"_s, u"worse.pdf"_s});
    EXPECT_TRUE(seen().contains(u"Cannot attach bad.pdf.\nCannot attach worse.pdf."_s))
        << seen().toStdString();
    EXPECT_EQ(pendingNames(), QStringList{u"good.txt"_s});
    attach({u"better.txt"_s});
    EXPECT_FALSE(seen().contains(u"Cannot attach"_s)) << seen().toStdString();
    attach({u"bad.pdf"_s, u"bad.pdf"_s, u"worse.pdf"_s, u"bad.pdf"_s, u"worse.pdf"_s});
    EXPECT_EQ(seen().count(u"Cannot attach"_s), 3);
    EXPECT_TRUE(seen().contains(u"2 more files were not attached."_s)) << seen().toStdString();
    attach({u"bad.pdf"_s, u"bad.pdf"_s, u"bad.pdf"_s, u"bad.pdf"_s});
    EXPECT_TRUE(seen().contains(u"1 more file was not attached."_s)) << seen().toStdString();
    attach({u"bad.pdf"_s});
    EXPECT_FALSE(seen().contains(u"more file"_s)) << seen().toStdString();
}

} // namespace
} // namespace morvane
