#include "ui/conversation/SelectionCopy.h"

#include "base/Overloaded.h"
#include "ui/conversation/MessageParts.h"

#include <QGuiApplication>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Letters that are put together in one go.
constexpr qsizetype pieceLetters = 30'000;

QString textOf(const SelectedRow &row)
{
    return std::visit(Overloaded{
                          [](const QString &text) { return text; },
                          [](const ChatMessage &message) { return wholeText(message); },
                      },
                      row);
}

} // namespace

QString textOf(const QList<SelectedRow> &rows)
{
    QStringList texts;
    for (const SelectedRow &row : rows)
        if (const QString text = textOf(row); !text.isEmpty())
            texts += text;
    return texts.join(u"\n\n"_s);
}

SelectionCopy::SelectionCopy(QClipboard::Mode mode) : m_mode(mode)
{
    m_timer.setInterval(0);
    connect(&m_timer, &QTimer::timeout, this, &SelectionCopy::goOn);
}

void SelectionCopy::copy(QList<SelectedRow> rows)
{
    m_rows = std::move(rows);
    m_next = 0;
    m_texts.clear();
    m_timer.start();
    goOn();
}

void SelectionCopy::goOn()
{
    qsizetype letters = 0;
    while (m_next < m_rows.size() && letters < pieceLetters) {
        const QString text = textOf(m_rows.at(m_next++));
        letters += text.size();
        if (!text.isEmpty())
            m_texts += text;
    }
    if (m_next < m_rows.size())
        return;
    m_timer.stop();
    m_rows.clear();
    QGuiApplication::clipboard()->setText(std::exchange(m_texts, {}).join(u"\n\n"_s), m_mode);
}

} // namespace morvane
