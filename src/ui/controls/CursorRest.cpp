#include "ui/controls/CursorRest.h"

#include <QApplication>
#include <QEvent>
#include <utility>

namespace morvane {

CursorRest::CursorRest(std::chrono::milliseconds patience, QObject *parent) : QObject(parent)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, &CursorRest::rest);
    m_patience.start();
    QCoreApplication::instance()->installEventFilter(this);
}

CursorRest::~CursorRest()
{
    blink();
}

bool CursorRest::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::InputMethod:
    case QEvent::MouseButtonPress:
    case QEvent::FocusIn:
        blink();
        m_patience.start();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void CursorRest::rest()
{
    m_flashTime = QApplication::cursorFlashTime();
    QApplication::setCursorFlashTime(0);
}

void CursorRest::blink()
{
    if (const int flashTime = std::exchange(m_flashTime, 0); flashTime > 0)
        QApplication::setCursorFlashTime(flashTime);
}

} // namespace morvane
