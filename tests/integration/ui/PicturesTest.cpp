#include "MainWindowFixture.h"

#include "ui/conversation/ChatScrollView.h"
#include "ui/window/PictureView.h"

#include <QAccessible>
#include <QLabel>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Pictures that were sent. The fake service paints the colour that their bytes name.
class PicturesTest : public MainWindowFixture {
protected:
    static ChatAttachment picture(const QString &name, const QByteArray &bytes)
    {
        ChatAttachment attachment;
        attachment.id = QUuid::createUuid();
        attachment.filename = name;
        attachment.kind = AttachmentKind::image;
        attachment.mimeType = u"image/png"_s;
        attachment.data = bytes;
        return attachment;
    }
    void open(const QList<ChatAttachment> &pictures, const QString &text = u"Look."_s)
    {
        ChatMessage asked = message(Role::user, text);
        asked.attachments = pictures;
        save(u"A"_s, {asked, message(Role::assistant, u"I see."_s)});
        showNewest();
        ASSERT_TRUE(QTest::qWaitFor([this] { return view()->isSettled(); }));
        settle();
    }
    ChatScrollView *view() const { return part<ChatScrollView>(); }
    QList<QToolButton *> buttons() const { return view()->buttons(); }
    static QColor colorOf(const QToolButton *button)
    {
        const QImage image = button->icon().pixmap(64, 48).toImage();
        return image.pixelColor(image.rect().center());
    }
};

TEST_F(PicturesTest, SentPicturesAreSeenInTheirMessage)
{
    open({picture(u"rose.png"_s, "red"), picture(u"sky.png"_s, "blue")});
    ASSERT_EQ(buttons().size(), 2);
    EXPECT_EQ(colorOf(buttons()[0]), QColor(Qt::red));
    EXPECT_EQ(colorOf(buttons()[1]), QColor(Qt::blue));
    const QRect row = view()->rowRect(0);
    for (const QToolButton *button : buttons())
        EXPECT_TRUE(row.contains(button->geometry())) << button->accessibleName().toStdString();
    EXPECT_FALSE(buttons()[0]->geometry().intersects(buttons()[1]->geometry()));
    EXPECT_EQ(attachments.pictures.size(), 2);
}

TEST_F(PicturesTest, APictureIsOpenedByAPressAndClosedByEscape)
{
    open({picture(u"rose.png"_s, "red")});
    ASSERT_EQ(buttons().size(), 1);
    EXPECT_EQ(buttons()[0]->accessibleName(), u"Picture rose.png"_s);
    QTest::mouseClick(buttons()[0], Qt::LeftButton);
    settle();
    auto *shown = part<PictureView>();
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->windowTitle(), u"rose.png"_s);
    const auto *label = shown->findChild<QLabel *>();
    EXPECT_EQ(label->pixmap().toImage().pixelColor(5, 5), QColor(Qt::red));
    EXPECT_EQ(label->accessibleName(), u"Picture rose.png"_s);
    QTest::keyClick(shown, Qt::Key_Escape);
    EXPECT_TRUE(QTest::qWaitFor([this] { return part<PictureView>() == nullptr; }));
}

TEST_F(PicturesTest, TheKeyboardReachesThePicturesOfItsRow)
{
    open({picture(u"rose.png"_s, "red")});
    view()->setFocus(Qt::TabFocusReason);
    view()->setCurrentRow(0);
    QTest::keyClick(view(), Qt::Key_Tab);
    ASSERT_TRUE(buttons()[0]->hasFocus());
    QTest::keyClick(buttons()[0], Qt::Key_Return);
    QTest::keyClick(buttons()[0], Qt::Key_Space);
    EXPECT_NE(part<PictureView>(), nullptr);
    view()->setCurrentRow(1);
    EXPECT_EQ(buttons()[0]->focusPolicy(), Qt::NoFocus);
    auto *list = QAccessible::queryAccessibleInterface(view());
    EXPECT_EQ(list->child(list->childCount() - 1)->object(), buttons()[0]);
}

TEST_F(PicturesTest, WhatCannotBeReadIsASymbolAndNotTriedAgain)
{
    open({picture(u"broken.png"_s, "no picture")});
    ASSERT_EQ(buttons().size(), 1);
    EXPECT_FALSE(buttons()[0]->icon().isNull());
    for (int i = 0; i < 5; ++i) {
        view()->resize(view()->size() - QSize(1, 0));
        settle();
    }
    EXPECT_EQ(attachments.pictures.size(), 1);
    buttons()[0]->click();
    settle();
    EXPECT_EQ(part<PictureView>()->findChild<QLabel *>()->text(), u"The picture cannot be read."_s);
}

TEST_F(PicturesTest, NoMoreThanTwentyAreShown)
{
    QList<ChatAttachment> pictures;
    for (int i = 0; i < 100; ++i)
        pictures += picture(u"%1.png"_s.arg(i), "red");
    open(pictures, QString());
    view()->setCurrentRow(0);
    EXPECT_LE(buttons().size(), 20);
    EXPECT_GT(buttons().size(), 0);
    EXPECT_LE(attachments.pictures.size(), 20);
}

} // namespace
} // namespace morvane
