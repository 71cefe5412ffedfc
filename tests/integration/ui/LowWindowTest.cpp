#include "MainWindowFixture.h"

#include "ui/window/AttachmentChip.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/ComposerView.h"
#include "ui/window/StatusBarView.h"

#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A small screen with type twice as large.
class LowWindowTest : public MainWindowFixture {
protected:
    LowWindowTest()
    {
        QFont large = usual;
        large.setPointSize(2 * usual.pointSize());
        QApplication::setFont(large);
        restart();
        window->setMinimumSize(0, 0);
        window->resize(784, 440);
        show();
        edit = part<ComposerEdit>();
    }
    ~LowWindowTest() override
    {
        window.reset();
        QApplication::setFont(usual);
    }

    QRect place(const QWidget *widget) const
    {
        return {widget->mapTo(window.get(), QPoint()), widget->size()};
    }
    void writeLines(int count)
    {
        for (int line = 0; line < count; ++line) {
            QTest::keyClicks(edit, u"line"_s);
            QTest::keyClick(edit, Qt::Key_Return, Qt::ShiftModifier);
        }
        settle();
    }
    void attach(int count)
    {
        QList<QUrl> files;
        for (int i = 0; i < count; ++i)
            files.append(QUrl::fromLocalFile(u"/a rather long name of a file %1.txt"_s.arg(i)));
        part<ComposerView>()->handleFiles(files);
        settle();
    }
    /// The parts of the composer, from top to bottom, and what stands below them.
    void expectOneBelowTheOther() const
    {
        int bottom = 0;
        const auto *note = noteBelow();
        for (const QWidget *part :
             std::initializer_list<const QWidget *>{edit, note, part<StatusBarView>()}) {
            EXPECT_GE(place(part).top(), bottom) << part->metaObject()->className();
            bottom = place(part).bottom();
        }
        EXPECT_LT(bottom, window->height());
        EXPECT_TRUE(edit->viewport()->rect().contains(edit->cursorRect()));
        EXPECT_EQ(edit->visibleRegion().boundingRect(), edit->rect());
    }
    const QLabel *noteBelow() const
    {
        for (const QLabel *label : part<ComposerView>()->findChildren<QLabel *>())
            if (label->text() == u"Return to send · ⌘N for a new conversation"_s)
                return label;
        return nullptr;
    }

    const QFont usual = QApplication::font();
    ComposerEdit *edit = nullptr;
};

TEST_F(LowWindowTest, ALongMessageStaysInItsFieldAndTheFieldInTheWindow)
{
    writeLines(9);
    expectOneBelowTheOther();
    EXPECT_GE(edit->height(), edit->heightOfLines(3)) << "all of the room that there is";
    EXPECT_LT(edit->height(), edit->heightOfLines(8));
    window->resize(784, 900);
    settle();
    EXPECT_EQ(edit->height(), edit->heightOfLines(8));
}

TEST_F(LowWindowTest, WhatGoesAlongWithAMessageScrollsAndLeavesTheFieldTwoLines)
{
    writeLines(9);
    attachments.failing = {u"a rather long name of a file 3.txt"_s};
    attach(12);
    expectOneBelowTheOther();
    EXPECT_EQ(edit->height(), edit->heightOfLines(2));
    const AttachmentChip *chip = part<AttachmentChip>();
    EXPECT_EQ(chip->visibleRegion().boundingRect(), chip->rect());
}

TEST_F(LowWindowTest, AFileThatTheKeyboardComesToIsInSight)
{
    writeLines(9);
    attach(12);
    button(part<ComposerView>(), u"Attach a file or image"_s)->setFocus(Qt::TabFocusReason);
    for (int file = 11; file >= 0; --file) {
        QTest::keyClick(window->focusWidget(), Qt::Key_Tab, Qt::ShiftModifier);
        const QWidget *focused = window->focusWidget();
        EXPECT_EQ(focused->accessibleName(),
                  u"Remove attachment a rather long name of a file %1.txt"_s.arg(file));
        EXPECT_EQ(focused->visibleRegion().boundingRect(), focused->rect()) << file;
    }
}

} // namespace
} // namespace morvane
