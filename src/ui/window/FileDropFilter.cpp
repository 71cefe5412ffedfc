#include "ui/window/FileDropFilter.h"

#include <QDropEvent>
#include <QMimeData>
#include <QWidget>

namespace morvane {

namespace {

/// A page of the browser may say of all that is dragged out of it that it is a file of the user's.
bool isOfThisProgram(const QDropEvent &drop)
{
    return drop.source() != nullptr;
}

} // namespace

FileDropFilter::FileDropFilter(QWidget *target) : QObject(target)
{
    target->setAcceptDrops(true);
    target->installEventFilter(this);
}

QList<QUrl> FileDropFilter::filesOf(const QMimeData *data)
{
    QList<QUrl> files = data->urls();
    files.removeIf([](const QUrl &url) { return !url.isLocalFile(); });
    return files;
}

bool FileDropFilter::eventFilter(QObject *object, QEvent *event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop: {
        auto *drop = static_cast<QDropEvent *>(event);
        // Each question goes to the program that is dragged from, which may take its time with each move.
        if (event->type() == QEvent::DragEnter)
            m_files = isOfThisProgram(*drop) ? QList<QUrl>() : filesOf(drop->mimeData());
        const QList<QUrl> files = m_files;
        if (files.isEmpty())
            return false;
        // Never moved: a file manager would delete what was attached.
        drop->setDropAction(Qt::CopyAction);
        drop->accept();
        Q_EMIT hoveringChanged(event->type() != QEvent::Drop);
        if (event->type() == QEvent::Drop)
            Q_EMIT filesDropped(files);
        return true;
    }
    case QEvent::DragLeave:
        Q_EMIT hoveringChanged(false);
        return false;
    default:
        return QObject::eventFilter(object, event);
    }
}

} // namespace morvane
