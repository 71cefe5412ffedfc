#include "ui/window/FileDropFilter.h"

#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QTimer>
#include <QWidget>
#include <gtest/gtest.h>

namespace morvane {
namespace {

/// Needs a desktop, since nothing is dragged without one.
TEST(DraggedOutTest, WhatAPageOfOurOwnCallsAFileOfTheUsersIsNone)
{
    QWidget page;
    QWidget place;
    auto *filter = new FileDropFilter(&place);
    QList<QUrl> files;
    QObject::connect(filter, &FileDropFilter::filesDropped, [&](const QList<QUrl> &urls) { files += urls; });
    auto *dragged = new QMimeData;
    dragged->setUrls({QUrl::fromLocalFile("/etc/passwd")});
    const auto drop = [&] {
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, dragged, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&place, &enter);
        QDropEvent event(QPoint(5, 5), Qt::CopyAction, dragged, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&place, &event);
    };
    drop();
    EXPECT_EQ(files, dragged->urls()) << "as of another program";
    files.clear();

    auto *drag = new QDrag(&page);
    drag->setMimeData(dragged);
    bool wasDropped = false;
    QTimer::singleShot(0, &page, [&] {
        drop();
        wasDropped = true;
        QDrag::cancel();
    });
    page.show();
    drag->exec(Qt::CopyAction);
    EXPECT_TRUE(wasDropped);
    EXPECT_TRUE(files.isEmpty());
}

} // namespace
} // namespace morvane
