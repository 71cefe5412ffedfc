#include "ComposerAttachmentsFixture.h"

#include <QTest>

using namespace Qt::StringLiterals;

using testing::ElementsAre;

namespace morvane {
namespace {

class AttachmentChipsTest : public ComposerAttachmentsFixture {};

TEST_F(AttachmentChipsTest, ChipsTellTheirFilesAndTheirNumber)
{
    attach({u"a.png"_s});
    EXPECT_NE(shownWidget(u"1 pending attachment"_s), nullptr);
    attach({u"b.pdf"_s, u"c.txt"_s});
    EXPECT_NE(shownWidget(u"3 pending attachments"_s), nullptr);
    QStringList names;
    for (AttachmentChip *chip : chips())
        names.append(nameOf(chip));
    EXPECT_THAT(names, ElementsAre(u"Attachment a.png, image"_s, u"Attachment b.pdf, PDF"_s,
                                   u"Attachment c.txt, text"_s));
}

TEST_F(AttachmentChipsTest, RemovedAttachmentIsAnnounced)
{
    attach({u"a.png"_s, u"b.txt"_s});
    announcer.spoken.clear();
    button(u"Remove attachment a.png"_s)->click();
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Removed attachment a.png"_s));
    EXPECT_THAT(pendingNames(), ElementsAre(u"b.txt"_s));
    EXPECT_NE(shownWidget(u"1 pending attachment"_s), nullptr);
}

TEST_F(AttachmentChipsTest, FocusGoesToTheNextChipAndAtLastToTheField)
{
    attach({u"a.txt"_s, u"b.txt"_s, u"c.txt"_s});
    const auto remove = [this](const QString &name) {
        auto *target = button(u"Remove attachment "_s + name);
        target->setFocus();
        QTest::keyClick(target, Qt::Key_Space);
        settle();
    };
    remove(u"a.txt"_s);
    EXPECT_EQ(view->focusWidget(), button(u"Remove attachment b.txt"_s));
    remove(u"c.txt"_s);
    EXPECT_EQ(view->focusWidget(), button(u"Remove attachment b.txt"_s));
    remove(u"b.txt"_s);
    EXPECT_EQ(view->focusWidget(), edit);
}

TEST_F(AttachmentChipsTest, ChipsAreReachedWithTheKeyboard)
{
    attach({u"a.txt"_s});
    QSet<QString> reached;
    for (int step = 0; step < 8; ++step) {
        QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
        reached.insert(nameOf(view->focusWidget()));
    }
    EXPECT_TRUE(reached.contains(u"Remove attachment a.txt"_s));
    EXPECT_TRUE(reached.contains(u"Attach a file or image"_s));
}

TEST_F(AttachmentChipsTest, LongNameIsElidedAndHeardWhole)
{
    const QString name = QString(300, u'n') + u".txt"_s;
    attach({name});
    ASSERT_EQ(chips().size(), 1);
    AttachmentChip *chip = chips().constFirst();
    EXPECT_LT(chip->width(), view->width() / 2);
    EXPECT_EQ(nameOf(chip), u"Attachment "_s + name + u", text"_s);
    EXPECT_EQ(chip->toolTip(), name);
}

TEST_F(AttachmentChipsTest, TabReachesTheChipsBeforeTheFieldAndTheSendButton)
{
    QWidget window;
    auto *before = new QToolButton(&window);
    before->setAccessibleName(u"Before"_s);
    before->setFocusPolicy(Qt::TabFocus);
    view->setParent(&window);
    window.show();
    view->show();
    attach({u"a.txt"_s, u"b.txt"_s});
    QStringList stops;
    for (QWidget *stop = before; stops.isEmpty() || stop != before; stop = stop->nextInFocusChain())
        if (stop->isVisible() && (stop->focusPolicy() & Qt::TabFocus))
            stops.append(nameOf(stop));
    EXPECT_THAT(stops, ElementsAre(u"Before"_s, u"Remove attachment a.txt"_s, u"Remove attachment b.txt"_s,
                                   u"Attach a file or image"_s, u"Message Morvane"_s, u"Send message"_s));
    view->setParent(nullptr);
}

TEST_F(AttachmentChipsTest, NameIsNeverTakenForMarkup)
{
    attach({u"<b>bold<b>.txt"_s});
    EXPECT_FALSE(chips().constFirst()->toolTip().contains(u'<'));
}

TEST_F(AttachmentChipsTest, ManyChipsWrapAndScrollInsteadOfFillingTheWindow)
{
    QStringList names;
    for (int number = 0; number < 40; ++number)
        names.append(u"file number %1.txt"_s.arg(number));
    attach(names);
    const QList<AttachmentChip *> all = chips();
    ASSERT_EQ(all.size(), 40);
    EXPECT_GT(all.at(10)->y(), all.at(0)->y());
    EXPECT_LT(view->sizeHint().height(), 320);
    auto *last = button(u"Remove attachment file number 39.txt"_s);
    button(u"Remove attachment file number 38.txt"_s)->setFocus();
    QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(view->focusWidget(), last);
    EXPECT_FALSE(last->visibleRegion().isEmpty());
}

TEST_F(AttachmentChipsTest, SymbolsGrowWithTheFont)
{
    attach({u"a.txt"_s});
    auto *paperclip = button(u"Attach a file or image"_s);
    const int small = paperclip->iconSize().height();
    const int smallChip = chips().constFirst()->height();
    QFont large = view->font();
    large.setPointSize(large.pointSize() * 3);
    view->setFont(large);
    settle();
    EXPECT_GT(paperclip->iconSize().height(), small);
    EXPECT_GT(chips().constFirst()->height(), smallChip);
}

} // namespace
} // namespace morvane
