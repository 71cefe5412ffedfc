#pragma once

#include "ui/window/ComposerEdit.h"

#include <QApplication>
#include <QClipboard>
#include <QTest>
#include <gtest/gtest.h>

namespace morvane {

/// The message field alone, shown and with the focus, and a text that it folds.
class ComposerEditFixture : public testing::Test {
protected:
    ComposerEditFixture()
    {
        edit.resize(400, 100);
        edit.show();
        edit.activateWindow();
        edit.setFocus();
    }

    void paste(const QString &text)
    {
        QApplication::clipboard()->setText(text);
        edit.paste();
    }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(&edit, static_cast<Qt::Key>(key), modifiers);
    }
    int caret() const { return edit.textCursor().position(); }

    ComposerEdit edit;
    const QString word = QString(70'000, QLatin1Char('x'));
    const QString label = QStringLiteral("[Pasted text, 70,000 characters]");
    const int labelSize = static_cast<int>(label.size());
};

} // namespace morvane
