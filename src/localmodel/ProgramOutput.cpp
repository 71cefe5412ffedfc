#include "localmodel/ProgramOutput.h"

#include "base/Text.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// A longer line is shown cut anyway. In UTF-16 units.
constexpr qsizetype longestShownLine = 4096;

} // namespace

void ProgramOutput::append(QByteArrayView bytes)
{
    const QString text = m_terminal.append(bytes);
    for (const QChar letter : text) {
        if (!TerminalText::isLineEnd(letter)) {
            if (m_open.size() < longestShownLine)
                m_open += letter;
            continue;
        }
        if (QString line = trimmed(m_open); !line.isEmpty())
            m_line = std::move(line);
        m_open.clear();
    }
    m_text += text;
    if (m_text.size() > 2 * mostKept)
        m_text = m_text.last(mostKept);
}

std::optional<QString> ProgramOutput::takeLine()
{
    if (m_terminal.isInFrame())
        return std::nullopt;
    return std::exchange(m_line, std::nullopt);
}

QString ProgramOutput::tail() const
{
    constexpr qsizetype lineCount = 3;
    constexpr qsizetype longestTail = 1000;
    // The tail is shown, so no more of it counts than can be.
    constexpr qsizetype lookedAt = 64 * 1024;
    QString end = m_text.last(std::min(m_text.size(), lookedAt));
    const QStringList lines = end.replace(u'\r', u'\n').split(u'\n', Qt::SkipEmptyParts);
    return firstCharacters(trimmed(lines.mid(std::max<qsizetype>(lines.size() - lineCount, 0)).join(u'\n')),
                           longestTail);
}

} // namespace morvane
