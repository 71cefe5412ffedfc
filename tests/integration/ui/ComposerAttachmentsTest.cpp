#include "support/AppFixture.h"

#include "ui/window/AttachmentChip.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/ComposerView.h"
#include "ui/window/FileDialogFilters.h"
#include "ui/window/FileDropFilter.h"

#include <QAccessible>
#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QTest>
#include <QToolButton>

namespace morvane {
namespace {

using testing::Contains;
using testing::ElementsAre;
using Service = FakeAIService;

class ComposerAttachmentsTest : public AppFixture {
protected:
    ComposerAttachmentsTest() : view(std::make_unique<ComposerView>(*model))
    {
        settings->setProviderID(ProviderID::gemini);
        settings->setApiKey(QStringLiteral("key"));
        view->resize(600, 300);
        view->show();
        view->activateWindow();
        edit = view->findChild<ComposerEdit *>();
        view->focusDraft();
        announcer.spoken.clear();
    }
    ~ComposerAttachmentsTest() override { view.reset(); }

    static QUrl file(const QString &name) { return QUrl::fromLocalFile(QStringLiteral("/files/") + name); }
    void attach(const QStringList &names)
    {
        QList<QUrl> urls;
        for (const QString &name : names)
            urls.append(file(name));
        view->handleFiles(urls);
        settle();
    }
    QStringList pendingNames() const
    {
        QStringList names;
        for (const ChatAttachment &attachment : view->attachments().attachments())
            names.append(attachment.filename);
        return names;
    }
    template <class Widget> Widget *shown(const QString &accessibleName) const
    {
        for (auto *widget : view->findChildren<Widget *>()) {
            if (widget->isVisible() && nameOf(widget) == accessibleName)
                return widget;
        }
        return nullptr;
    }
    QWidget *shownWidget(const QString &accessibleName) const { return shown<QWidget>(accessibleName); }
    static QString nameOf(QWidget *widget)
    {
        QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(widget);
        return accessible ? accessible->text(QAccessible::Name) : QString();
    }
    QToolButton *button(const QString &name) const { return shown<QToolButton>(name); }
    QList<AttachmentChip *> chips() const
    {
        QList<AttachmentChip *> visible = view->findChildren<AttachmentChip *>();
        visible.removeIf([](const AttachmentChip *chip) { return !chip->isVisible(); });
        return visible;
    }
    void paste(QMimeData *data)
    {
        QApplication::clipboard()->setMimeData(data);
        edit->paste();
        settle();
    }
    bool warns() const
    {
        return shownWidget(QStringLiteral("Warning: the current model can't see images. Switch to a vision "
                                          "model to send them.")) != nullptr;
    }

    std::unique_ptr<ComposerView> view;
    ComposerEdit *edit = nullptr;
};

TEST_F(ComposerAttachmentsTest, EachFileIsAnnouncedAsItBeginsAndAsItEnds)
{
    attach({QStringLiteral("a.png"), QStringLiteral("b.txt")});
    EXPECT_THAT(announcer.spoken,
                ElementsAre(QStringLiteral("Attaching a.png…"), QStringLiteral("Attaching b.txt…"),
                            QStringLiteral("Attached a.png."), QStringLiteral("Attached b.txt.")));
    EXPECT_THAT(pendingNames(), ElementsAre(QStringLiteral("a.png"), QStringLiteral("b.txt")));
}

TEST_F(ComposerAttachmentsTest, AnnouncementsAreMadeAlsoWithTheSettingOff)
{
    settings->setAnnounceResponses(false);
    attach({QStringLiteral("a.txt")});
    EXPECT_EQ(announcer.spoken.size(), 2);
}

TEST_F(ComposerAttachmentsTest, OneFailureDoesNotStopTheOthers)
{
    attachments.failing = {QStringLiteral("bad.pdf")};
    attach({QStringLiteral("bad.pdf"), QStringLiteral("good.txt")});
    EXPECT_THAT(pendingNames(), ElementsAre(QStringLiteral("good.txt")));
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("Cannot attach bad.pdf.")));
    EXPECT_EQ(view->attachments().processingCount(), 0);
}

TEST_F(ComposerAttachmentsTest, SendingIsNotPossibleWhileAFileIsRead)
{
    attachments.holds = true;
    edit->setPlainText(QStringLiteral("text in the field"));
    attach({QStringLiteral("a.txt"), QStringLiteral("b.txt")});
    EXPECT_FALSE(view->canSend());
    EXPECT_FALSE(button(QStringLiteral("Send message"))->isEnabled());
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(view->draft(), QStringLiteral("text in the field"));
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
    attach({QStringLiteral("a.txt"), QStringLiteral("b.txt")});
    EXPECT_NE(shownWidget(QStringLiteral("Processing 2 attachments")), nullptr);
    EXPECT_NE(shownWidget(QStringLiteral("Processing attachment")), nullptr);
    attachments.release();
    settle();
    EXPECT_NE(shownWidget(QStringLiteral("Processing 1 attachments")), nullptr);
    attachments.release();
    settle();
    EXPECT_EQ(shownWidget(QStringLiteral("Processing attachment")), nullptr);
}

TEST_F(ComposerAttachmentsTest, AttachmentAloneIsSentAndGone)
{
    service.willTurn(Service::answer(QStringLiteral("ok")));
    attach({QStringLiteral("a.txt")});
    ASSERT_TRUE(view->canSend());
    QTest::keyClick(edit, Qt::Key_Return);
    finishRun();
    EXPECT_EQ(model->messages().first().attachments.first().filename, QStringLiteral("a.txt"));
    EXPECT_TRUE(pendingNames().isEmpty());
    EXPECT_TRUE(chips().isEmpty());
}

TEST_F(ComposerAttachmentsTest, RefusedImageKeepsTheDraftUntilTheModelIsSwitched)
{
    settings->setProviderID(ProviderID::custom);
    settings->setModel(QStringLiteral("text-only"));
    edit->setPlainText(QStringLiteral("What is this?"));
    attach({QStringLiteral("a.png")});
    ASSERT_TRUE(view->canSend());
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(view->draft(), QStringLiteral("What is this?"));
    EXPECT_THAT(pendingNames(), ElementsAre(QStringLiteral("a.png")));

    settings->setModel(QStringLiteral("llava"));
    service.willTurn(Service::answer(QStringLiteral("A cat.")));
    QTest::keyClick(edit, Qt::Key_Return);
    finishRun();
    EXPECT_EQ(model->messages().first().attachments.size(), 1);
    EXPECT_EQ(view->draft(), QString());
    EXPECT_TRUE(pendingNames().isEmpty());
}

TEST_F(ComposerAttachmentsTest, WarningFollowsProviderModelAndAttachments)
{
    EXPECT_FALSE(warns());
    attach({QStringLiteral("a.png"), QStringLiteral("b.txt")});
    EXPECT_FALSE(warns());
    settings->setProviderID(ProviderID::groq);
    settings->setModel(QStringLiteral("text-only"));
    EXPECT_TRUE(warns());
    settings->setModel(QStringLiteral("some-vision-model"));
    EXPECT_FALSE(warns());
    settings->setModel(QStringLiteral("text-only"));
    EXPECT_TRUE(warns());
    settings->setProviderID(ProviderID::gemini);
    EXPECT_FALSE(warns());
    settings->setProviderID(ProviderID::groq);
    settings->setModel(QStringLiteral("text-only"));
    ASSERT_TRUE(warns());
    button(QStringLiteral("Remove attachment a.png"))->click();
    EXPECT_FALSE(warns());
}

TEST_F(ComposerAttachmentsTest, WarningSaysWhatToDo)
{
    settings->setProviderID(ProviderID::groq);
    settings->setModel(QStringLiteral("text-only"));
    attach({QStringLiteral("a.png")});
    const auto labels = view->findChildren<QLabel *>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [](const QLabel *label) {
        return label->isVisible() &&
               label->text() == QStringLiteral("The current model can't see images — "
                                               "switch to a vision model to send them.");
    }));
}

TEST_F(ComposerAttachmentsTest, ChipsTellTheirFilesAndTheirNumber)
{
    attach({QStringLiteral("a.png")});
    EXPECT_NE(shownWidget(QStringLiteral("1 pending attachment")), nullptr);
    attach({QStringLiteral("b.pdf"), QStringLiteral("c.txt")});
    EXPECT_NE(shownWidget(QStringLiteral("3 pending attachments")), nullptr);
    QStringList names;
    for (AttachmentChip *chip : chips())
        names.append(nameOf(chip));
    EXPECT_THAT(names, ElementsAre(QStringLiteral("Attachment a.png, image"),
                                   QStringLiteral("Attachment b.pdf, PDF"),
                                   QStringLiteral("Attachment c.txt, text")));
}

TEST_F(ComposerAttachmentsTest, RemovedAttachmentIsAnnounced)
{
    attach({QStringLiteral("a.png"), QStringLiteral("b.txt")});
    announcer.spoken.clear();
    button(QStringLiteral("Remove attachment a.png"))->click();
    EXPECT_THAT(announcer.spoken, ElementsAre(QStringLiteral("Removed attachment a.png")));
    EXPECT_THAT(pendingNames(), ElementsAre(QStringLiteral("b.txt")));
    EXPECT_NE(shownWidget(QStringLiteral("1 pending attachment")), nullptr);
}

TEST_F(ComposerAttachmentsTest, FocusGoesToTheNextChipAndAtLastToTheField)
{
    attach({QStringLiteral("a.txt"), QStringLiteral("b.txt"), QStringLiteral("c.txt")});
    const auto remove = [this](const QString &name) {
        auto *target = button(QStringLiteral("Remove attachment ") + name);
        target->setFocus();
        QTest::keyClick(target, Qt::Key_Space);
        settle();
    };
    remove(QStringLiteral("a.txt"));
    EXPECT_EQ(view->focusWidget(), button(QStringLiteral("Remove attachment b.txt")));
    remove(QStringLiteral("c.txt"));
    EXPECT_EQ(view->focusWidget(), button(QStringLiteral("Remove attachment b.txt")));
    remove(QStringLiteral("b.txt"));
    EXPECT_EQ(view->focusWidget(), edit);
}

TEST_F(ComposerAttachmentsTest, ChipsAreReachedWithTheKeyboard)
{
    attach({QStringLiteral("a.txt")});
    QSet<QString> reached;
    for (int step = 0; step < 8; ++step) {
        QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
        reached.insert(nameOf(view->focusWidget()));
    }
    EXPECT_TRUE(reached.contains(QStringLiteral("Remove attachment a.txt")));
    EXPECT_TRUE(reached.contains(QStringLiteral("Attach a file or image")));
}

TEST_F(ComposerAttachmentsTest, LongNameIsElidedAndHeardWhole)
{
    const QString name = QString(300, QLatin1Char('n')) + QStringLiteral(".txt");
    attach({name});
    ASSERT_EQ(chips().size(), 1);
    AttachmentChip *chip = chips().constFirst();
    EXPECT_LT(chip->width(), view->width() / 2);
    EXPECT_EQ(nameOf(chip), QStringLiteral("Attachment ") + name + QStringLiteral(", text"));
    EXPECT_EQ(chip->toolTip(), name);
}

TEST_F(ComposerAttachmentsTest, NameIsNeverTakenForMarkup)
{
    attach({QStringLiteral("<b>bold<b>.txt")});
    EXPECT_FALSE(chips().constFirst()->toolTip().contains(QLatin1Char('<')));
}

TEST_F(ComposerAttachmentsTest, ManyChipsWrapAndScrollInsteadOfFillingTheWindow)
{
    QStringList names;
    for (int number = 0; number < 40; ++number)
        names.append(QStringLiteral("file number %1.txt").arg(number));
    attach(names);
    const QList<AttachmentChip *> all = chips();
    ASSERT_EQ(all.size(), 40);
    EXPECT_GT(all.at(10)->y(), all.at(0)->y());
    EXPECT_LT(view->sizeHint().height(), 320);
    auto *last = button(QStringLiteral("Remove attachment file number 39.txt"));
    button(QStringLiteral("Remove attachment file number 38.txt"))->setFocus();
    QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(view->focusWidget(), last);
    EXPECT_FALSE(last->visibleRegion().isEmpty());
}

TEST_F(ComposerAttachmentsTest, SymbolsGrowWithTheFont)
{
    attach({QStringLiteral("a.txt")});
    auto *paperclip = button(QStringLiteral("Attach a file or image"));
    const int small = paperclip->iconSize().height();
    const int smallChip = chips().constFirst()->height();
    QFont large = view->font();
    large.setPointSize(large.pointSize() * 3);
    view->setFont(large);
    settle();
    EXPECT_GT(paperclip->iconSize().height(), small);
    EXPECT_GT(chips().constFirst()->height(), smallChip);
}

TEST_F(ComposerAttachmentsTest, SendButtonNoLongerAsksForAnAttachment)
{
    EXPECT_NE(button(QStringLiteral("Send message. Add a message or an attachment first.")), nullptr);
    attach({QStringLiteral("a.txt")});
    EXPECT_NE(button(QStringLiteral("Send message")), nullptr);
}

TEST_F(ComposerAttachmentsTest, PastedFilesAreAttached)
{
    auto *data = new QMimeData;
    data->setUrls({file(QStringLiteral("a.txt")), file(QStringLiteral("b.png"))});
    paste(data);
    EXPECT_THAT(pendingNames(), ElementsAre(QStringLiteral("a.txt"), QStringLiteral("b.png")));
    EXPECT_EQ(view->draft(), QString());
}

TEST_F(ComposerAttachmentsTest, PastedAddressOfAPageIsText)
{
    auto *data = new QMimeData;
    data->setUrls({QUrl(QStringLiteral("https://example.com/a.png"))});
    data->setText(QStringLiteral("https://example.com/a.png"));
    paste(data);
    EXPECT_TRUE(pendingNames().isEmpty());
    EXPECT_EQ(view->draft(), QStringLiteral("https://example.com/a.png"));
}

TEST_F(ComposerAttachmentsTest, PastedPictureIsAttachedWithItsBytes)
{
    auto *data = new QMimeData;
    data->setData(QStringLiteral("image/png"), "the bytes");
    paste(data);
    EXPECT_THAT(pendingNames(), ElementsAre(QStringLiteral("Pasted image.png")));
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
    EXPECT_THAT(pendingNames(), ElementsAre(QStringLiteral("Pasted image.png")));
    EXPECT_EQ(QImage::fromData(attachments.images.constFirst(), "png").size(), QSize(4, 3));
}

TEST_F(ComposerAttachmentsTest, TextThatAlsoComesAsAPictureIsPastedAsText)
{
    auto *data = new QMimeData;
    data->setText(QStringLiteral("a cell"));
    data->setData(QStringLiteral("image/png"), "the cell as a picture");
    paste(data);
    EXPECT_EQ(view->draft(), QStringLiteral("a cell"));
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
    data.setUrls({file(QStringLiteral("a.txt")), QUrl(QStringLiteral("https://example.com/"))});
    QDragEnterEvent enter({5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop({5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &drop);
    EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
    EXPECT_THAT(dropped, ElementsAre(file(QStringLiteral("a.txt"))));
    EXPECT_THAT(hovering, ElementsAre(true, false));
}

TEST_F(ComposerAttachmentsTest, FieldLeavesDroppedFilesToTheWindow)
{
    QMimeData files;
    files.setUrls({file(QStringLiteral("a.txt"))});
    QDragEnterEvent enterFiles({5, 5}, Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(edit->viewport(), &enterFiles);
    EXPECT_FALSE(enterFiles.isAccepted());
    QMimeData text;
    text.setText(QStringLiteral("words"));
    QDragEnterEvent enterText({5, 5}, Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(edit->viewport(), &enterText);
    EXPECT_TRUE(enterText.isAccepted());
}

TEST_F(ComposerAttachmentsTest, PaperclipOpensOneDialogForSeveralFiles)
{
    auto *paperclip = button(QStringLiteral("Attach a file or image"));
    ASSERT_NE(paperclip, nullptr);
    EXPECT_EQ(paperclip->accessibleDescription(),
              QStringLiteral("Adds images, PDFs, or text files to your next message."));
    paperclip->click();
    paperclip->click();
    const auto dialogs = view->findChildren<QFileDialog *>();
    ASSERT_EQ(dialogs.size(), 1);
    EXPECT_EQ(dialogs.first()->fileMode(), QFileDialog::ExistingFiles);
    EXPECT_EQ(dialogs.first()->nameFilters(), fileDialogFilters());
    dialogs.first()->reject();
    EXPECT_EQ(view->focusWidget(), edit);
}

TEST_F(ComposerAttachmentsTest, FilesChosenInTheDialogAreAttached)
{
    const QString first = home.write(QStringLiteral("a.txt"), "a");
    const QString second = home.write(QStringLiteral("b.txt"), "b");
    button(QStringLiteral("Attach a file or image"))->click();
    auto *dialog = view->findChild<QFileDialog *>();
    ASSERT_NE(dialog, nullptr);
    auto *name = dialog->findChild<QLineEdit *>();
    name->setText(QLatin1Char('"') + first + QStringLiteral("\" \"") + second + QLatin1Char('"'));
    QTest::keyClick(name, Qt::Key_Return);
    settle();
    EXPECT_EQ(view->findChild<QFileDialog *>(), nullptr);
    EXPECT_THAT(pendingNames(), ElementsAre(QStringLiteral("a.txt"), QStringLiteral("b.txt")));
}

TEST_F(ComposerAttachmentsTest, ClosedComposerEndsTheReadingOfItsFiles)
{
    attachments.holds = true;
    attach({QStringLiteral("a.txt")});
    view.reset();
    attachments.release();
    settle();
    EXPECT_THAT(announcer.spoken, ElementsAre(QStringLiteral("Attaching a.txt…")));
}

} // namespace
} // namespace morvane
