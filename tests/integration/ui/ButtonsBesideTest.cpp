#include "ui/settings/ButtonsBeside.h"

#include <QCoreApplication>
#include <QPointer>
#include <QPushButton>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The sanitizers see whether it looks at itself behind its end, as it did when a row was removed.
TEST(ButtonsBesideTest, EndsInItsOwnEvent)
{
    auto *wide = new QHBoxLayout;
    auto *buttons = new QHBoxLayout;
    const QPointer<ButtonsBeside> row = new ButtonsBeside;
    row->setParts(wide, buttons);
    wide->addWidget(new QPushButton(u"A wide part"_s));
    buttons->addWidget(new QPushButton(u"Remove"_s));
    row->show();
    row->deleteLater();
    QCoreApplication::sendPostedEvents(row, QEvent::DeferredDelete);
    EXPECT_TRUE(row.isNull());
}

} // namespace
} // namespace morvane
