#include "browser/window/ComingDocument.h"

#include "ui/controls/AccessibleEvents.h"

#include <utility>

namespace morvane {

ComingDocument::ComingDocument(std::function<bool()> hasKeyboard, std::chrono::milliseconds pause,
                               QObject *parent)
    : QObject(parent), m_hasKeyboard(std::move(hasKeyboard))
{
    m_looking.setInterval(pause);
    connect(&m_looking, &QTimer::timeout, this, &ComingDocument::look);
}

void ComingDocument::begun()
{
    const QAccessible::Id found = m_hasKeyboard() ? foundDocument() : 0;
    // While another one is awaited, what is found is not what is shown.
    m_settled = found == m_before ? 0 : found;
}

void ComingDocument::replaced()
{
    m_looking.stop();
    const QAccessible::Id found = m_hasKeyboard() ? foundDocument() : 0;
    const QAccessible::Id settled = std::exchange(m_settled, 0);
    // That of another process is handed over before it is known to have come.
    const bool isThere = settled != 0 && found != settled;
    m_before = isThere ? 0 : found;
}

void ComingDocument::loaded()
{
    m_looks = 0;
    m_looking.start();
    look();
}

void ComingDocument::forget()
{
    m_looking.stop();
    m_before = 0;
    m_settled = 0;
}

void ComingDocument::look()
{
    const bool isSeen = m_hasKeyboard();
    if (isSeen && m_before != 0 && foundDocument() == m_before && ++m_looks < mostLooks)
        return;
    m_looking.stop();
    m_before = 0;
    if (isSeen)
        Q_EMIT found();
}

} // namespace morvane
