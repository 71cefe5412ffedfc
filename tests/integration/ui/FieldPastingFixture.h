#pragma once

#include "support/AppFixture.h"
#include "support/FakePasteSource.h"
#include "ui/controls/FieldPasting.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/ComposerView.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QTest>

namespace morvane {

/// Another program owns the clipboard, and answers when the test says so.
class FieldPastingFixture : public AppFixture {
protected:
    FieldPastingFixture()
    {
        // The screen that nobody sees takes whatever is on its clipboard for another program's.
        QApplication::clipboard()->setText(QStringLiteral("never asked for"));
        announcer.spoken.clear();
        line.show();
        view.show();
        view.activateWindow();
        edit->setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&view));
        settle();
    }

    void paste() { QTest::keyClick(edit, Qt::Key_V, Qt::ControlModifier); }
    void pasteInLine() { QTest::keyClick(&line, Qt::Key_V, Qt::ControlModifier); }
    void type(const QString &text) { QTest::keyClicks(edit, text); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(edit, key, modifiers);
    }
    void answer(const QString &text, int question = 0)
    {
        source.answerText(text, question);
        settle();
    }
    void fail(PasteFailure failure = PasteFailure::silent)
    {
        source.answer(std::unexpected(failure));
        settle();
    }
    QStringList sent() const
    {
        QStringList texts;
        for (const ChatMessage &message : model->messages())
            if (message.role == Role::user)
                texts.append(message.text);
        return texts;
    }

    FakePasteSource source;
    FieldPasting pasting{scheduler, source, announcer};
    ComposerView view{*model, model->updates(), &pasting};
    ComposerEdit *edit = view.findChild<ComposerEdit *>();
    QLineEdit line;
};

} // namespace morvane
