#pragma once

#include "model/ChatMessage.h"

#include <QClipboard>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>
#include <variant>

namespace morvane {

/// A row of what is selected: its text, or the message of which everything is.
using SelectedRow = std::variant<QString, ChatMessage>;

/// The text of such rows, with an empty line between them.
QString textOf(const QList<SelectedRow> &rows);

/// Puts what is selected on a clipboard: at once where it is little, and otherwise in pieces that hold nobody
/// up. The rows are as they were when copying began, whatever becomes of the conversation.
class SelectionCopy : public QObject {
    Q_OBJECT
public:
    explicit SelectionCopy(QClipboard::Mode mode);

    /// Takes the place of what is still being copied.
    void copy(QList<SelectedRow> rows);

private:
    void goOn();

    QClipboard::Mode m_mode;
    QTimer m_timer;
    QList<SelectedRow> m_rows;
    qsizetype m_next = 0;
    QStringList m_texts;
};

} // namespace morvane
