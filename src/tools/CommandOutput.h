#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace morvane {

/// What a command has printed on one stream, as far as it can still reach the answer: all is checked for
/// being UTF-8, but only the first mebibyte is kept, and the blanks in front of it apart.
class CommandOutput {
public:
    void append(QByteArrayView bytes);

    /// Tells that the stream is at its end.
    void finish();

    /// The text without blanks in front; empty if anything in the whole stream is no UTF-8. Before the end of
    /// the stream, an unfinished character is none yet and left out. Text that was not kept is stood for by
    /// one letter, far behind what an answer can hold, so that blanks before it are not taken for the end.
    QString text() const;

    /// The blanks in front of the text, as many as an answer can hold.
    QString blanksInFront() const { return QString::fromLatin1(m_leadingBlanks); }

private:
    void check(QByteArrayView bytes);
    void keep(QByteArrayView bytes);

    QByteArray m_kept;
    QByteArray m_leadingBlanks;
    QByteArray m_unfinished; ///< The first bytes of a character whose last have not come yet.
    bool m_isUtf8 = true;
    bool m_droppedText = false;
};

} // namespace morvane
