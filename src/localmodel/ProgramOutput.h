#pragma once

#include "localmodel/TerminalText.h"

#include <QString>
#include <optional>

namespace morvane {

/// What the runtime's program prints, as text: the newest whole line, to be shown, and the last of all of it.
class ProgramOutput {
public:
    /// So many UTF-16 units of the output are kept at most; a list of models is far shorter.
    static constexpr qsizetype mostKept = 1024 * 1024;

    void append(QByteArrayView bytes);

    /// The newest line that is complete, trimmed and not empty; nothing if none has come since the last call,
    /// or while the program is in the middle of a frame.
    std::optional<QString> takeLine();

    const QString &text() const { return m_text; }

    /// The last three lines, trimmed, with at most 1,000 characters.
    QString tail() const;

private:
    TerminalText m_terminal;
    QString m_text;
    QString m_open; ///< The beginning of a line that has not ended.
    std::optional<QString> m_line;
};

} // namespace morvane
