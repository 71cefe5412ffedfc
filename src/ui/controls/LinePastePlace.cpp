#include "ui/controls/LinePastePlace.h"

#include <QLineEdit>
#include <algorithm>
#include <utility>

namespace morvane {

LinePastePlace::LinePastePlace(QLineEdit &line)
    : LinePastePlace(line, line.hasSelectedText() ? line.selectionStart() : line.cursorPosition())
{
    m_selected = line.selectedText().size();
}

LinePastePlace::LinePastePlace(QLineEdit &line, int at)
    : m_line(&line), m_name(line.accessibleName()), m_text(line.text()),
      m_at(std::clamp<qsizetype>(at, 0, m_text.size()))
{
    // Of a change by the user both are told, in this order.
    connect(&line, &QLineEdit::textEdited, this, [this] { m_isTyping = true; });
    connect(&line, &QLineEdit::textChanged, this, &LinePastePlace::follow);
}

void LinePastePlace::follow(const QString &text)
{
    m_isLost |= !std::exchange(m_isTyping, false);
    const auto [before, after] = std::mismatch(m_text.begin(), m_text.end(), text.begin(), text.end());
    const qsizetype common = before - m_text.begin();
    qsizetype rest = 0;
    while (rest < std::min(m_text.size(), text.size()) - common &&
           m_text[m_text.size() - 1 - rest] == text[text.size() - 1 - rest])
        ++rest;
    if (m_at > m_text.size() - rest)
        m_at += text.size() - m_text.size();
    else
        m_at = std::min(m_at, common);
    m_text = text;
    m_selected = 0;
}

QWidget *LinePastePlace::field() const
{
    const bool isThere = m_line && !m_isLost && m_line->accessibleName() == m_name && m_line->isVisible() &&
                         m_line->isEnabled() && !m_line->isReadOnly();
    return isThere ? m_line.data() : nullptr;
}

void LinePastePlace::insert(const PasteContent &content)
{
    if (content.text.isEmpty())
        return;
    QLineEdit &line = *m_line;
    disconnect(&line, nullptr, this, nullptr);
    const int caret = line.cursorPosition();
    const bool isElsewhere = m_selected == 0 && caret != m_at;
    if (m_selected > 0)
        line.setSelection(static_cast<int>(m_at), static_cast<int>(m_selected));
    else
        line.setCursorPosition(static_cast<int>(m_at));
    line.insert(content.text);
    if (isElsewhere)
        line.setCursorPosition(caret < m_at ? caret
                                            : caret + static_cast<int>(line.text().size() - m_text.size()));
}

} // namespace morvane
