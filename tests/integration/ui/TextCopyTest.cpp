#include "ui/window/TextCopy.h"

#include "ui/window/ComposerEdit.h"

#include "support/WaitUntil.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QMimeData>
#include <QTest>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

const QMimeData &copied()
{
    return *QApplication::clipboard()->mimeData();
}

/// Texts of any length on their way to the clipboard.
class TextCopyTest : public testing::Test {
protected:
    TextCopyTest() { QApplication::clipboard()->setText(u"before"_s); }

    TextCopy copy;
    // Each slice ends within a character.
    const QStringList pieces{u"x"_s, u"\U0001F642"_s.repeated(700'000), u"\u00fc"_s.repeated(300'000),
                             u"end"_s};
};

TEST_F(TextCopyTest, AShortTextIsThereAtOnce)
{
    copy.copy({u"one "_s, u"two"_s});
    EXPECT_EQ(copied().text(), u"one two"_s);
    EXPECT_EQ(copied().data(u"text/plain"_s), "one two");
}

TEST_F(TextCopyTest, ALongTextComesInSlicesAndWhole)
{
    copy.copy(pieces);
    EXPECT_EQ(copied().text(), u"before"_s);
    ASSERT_TRUE(waitUntil([] { return copied().text() != u"before"_s; }));
    EXPECT_TRUE(copied().text() == pieces.join(QString()));
    EXPECT_TRUE(copied().data(u"text/plain"_s) == pieces.join(QString()).toUtf8());
    // Nobody makes them anew.
    EXPECT_EQ(copied().data(u"text/plain"_s).constData(), copied().data(u"text/plain"_s).constData());
}

TEST_F(TextCopyTest, WhatIsCopiedMeanwhileStays)
{
    copy.copy(pieces);
    QApplication::clipboard()->setText(u"newer"_s);
    QTimer end;
    end.setInterval(0);
    int turns = 0;
    QObject::connect(&end, &QTimer::timeout, [&turns] { ++turns; });
    end.start();
    ASSERT_TRUE(waitUntil([&turns] { return turns > 20; }));
    EXPECT_EQ(copied().text(), u"newer"_s);
    copy.copy(pieces);
    copy.copy({u"newest"_s});
    EXPECT_EQ(copied().text(), u"newest"_s);
    turns = 0;
    ASSERT_TRUE(waitUntil([&turns] { return turns > 20; }));
    EXPECT_EQ(copied().text(), u"newest"_s);
}

TEST_F(TextCopyTest, TheMessageFieldCopiesLikeThatByKeyAndByMenu)
{
    ComposerEdit edit;
    edit.show();
    const QString text = QString(1'000'000, u'y');
    const auto takes = [&](const auto &command) {
        QApplication::clipboard()->setText(u"before"_s);
        edit.setDraft(text);
        edit.selectAll();
        command();
        EXPECT_EQ(copied().text(), u"before"_s);
        EXPECT_TRUE(waitUntil([] { return copied().text() != u"before"_s; }));
        EXPECT_TRUE(copied().text() == text);
        return edit.draft().isEmpty() ? "cut" : "copied";
    };
    const auto choose = [&edit](const QString &name) {
        QTest::keyClick(&edit, Qt::Key_F10, Qt::ShiftModifier);
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        menu->findChild<QAction *>(name)->trigger();
        menu->close();
    };
    EXPECT_STREQ(takes([&] { QTest::keyClick(&edit, Qt::Key_C, Qt::ControlModifier); }), "copied");
    EXPECT_STREQ(takes([&] { QTest::keyClick(&edit, Qt::Key_X, Qt::ControlModifier); }), "cut");
    EXPECT_STREQ(takes([&] { choose(u"edit-copy"_s); }), "copied");
    EXPECT_STREQ(takes([&] { choose(u"edit-cut"_s); }), "cut");
    EXPECT_STREQ(takes([&] { QMetaObject::invokeMethod(&edit, "copy"); }), "copied");
}

} // namespace
} // namespace morvane
