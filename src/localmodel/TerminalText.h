#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace morvane {

/// Makes plain text of what a program prints for a terminal, however its bytes are cut. Control sequences and
/// control characters are left out, as is what is no UTF-8; what moves the cursor or wipes a line ends the
/// line, with a carriage return. Keeps no text, so that nothing a program prints can fill the memory.
class TerminalText {
public:
    /// The text of the next bytes. An incomplete character or sequence is gone on with at the next call.
    QString append(QByteArrayView bytes);

    static bool isLineEnd(QChar letter) { return letter == u'\n' || letter == u'\r'; }

    /// Whether the program is in the middle of a frame, which it shows as a whole at its end.
    bool isInFrame() const { return m_inFrame; }

private:
    enum class State { text, escape, escapeIntermediate, sequence, string, stringEscape };

    void take(QChar letter, QString &text);
    void takeText(QChar letter, QString &text);
    void takeEscape(QChar letter, QString &text);
    void takeSequence(QChar letter, QString &text);
    void takeString(QChar letter, QString &text);
    void endSequence(QChar letter, QString &text);

    QByteArray m_incomplete; ///< The first bytes of a character.
    State m_state = State::text;
    QString m_parameters; ///< Of the sequence, as far as a known one can be long.
    bool m_inFrame = false;
};

} // namespace morvane
