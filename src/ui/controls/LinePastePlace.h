#pragma once

#include "ui/controls/PastePlace.h"

#include <QObject>
#include <QPointer>
#include <QString>

class QLineEdit;

namespace morvane {

/// A place in a line of text: its caret, or what it has selected.
class LinePastePlace final : public QObject, public PastePlace {
public:
    explicit LinePastePlace(QLineEdit &line);
    /// A position in it.
    LinePastePlace(QLineEdit &line, int at);

    QWidget *field() const override;
    void insert(const PasteContent &content) override;

private:
    void follow(const QString &text);

    QPointer<QLineEdit> m_line;
    const QString m_name;     ///< Of the line; with another it is another field, such as for another's key.
    QString m_text;           ///< Of the line, when it was looked at last.
    qsizetype m_at;           ///< In it.
    qsizetype m_selected = 0; ///< Characters behind it that go; none any more once the user has typed.
    bool m_isTyping = false;  ///< The next change comes from the user.
    bool m_isLost = false;    ///< Another text was put into the line.
};

} // namespace morvane
