#include "ui/conversation/SelectionCopy.h"

#include <QGuiApplication>
#include <utility>

namespace morvane {

namespace {

/// Letters that are put together in one go.
constexpr qsizetype pieceLetters = 30'000;

} // namespace

SelectionCopy::SelectionCopy(QClipboard::Mode mode) : m_mode(mode)
{
    m_timer.setInterval(0);
    connect(&m_timer, &QTimer::timeout, this, &SelectionCopy::goOn);
}

void SelectionCopy::copy(QList<SelectedRow> rows)
{
    m_reader = SelectionReader(std::move(rows));
    m_timer.start();
    goOn();
}

void SelectionCopy::goOn()
{
    m_reader.read(pieceLetters);
    if (!m_reader.isAtEnd())
        return;
    m_timer.stop();
    QGuiApplication::clipboard()->setText(std::exchange(m_reader, SelectionReader()).text(), m_mode);
}

} // namespace morvane
