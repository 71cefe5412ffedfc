#include "ui/controls/AccessibleEvents.h"

#include <QLineEdit>
#include <QScrollBar>
#include <QTest>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class AccessibleEventsTest : public testing::Test {
protected:
    AccessibleEventsTest()
    {
        part->hide();
        window.show();
    }

    static bool isTold(QWidget *widget, QAccessible::Event what)
    {
        return isToldToReaders(QAccessibleEvent(widget, what));
    }

    QWidget window;
    QWidget *part = new QWidget(&window);
    QLineEdit *field = new QLineEdit(part);
};

TEST_F(AccessibleEventsTest, HiddenWidgetsTellNothing)
{
    EXPECT_FALSE(isTold(field, QAccessible::NameChanged));
    EXPECT_FALSE(isToldToReaders(QAccessibleTextInsertEvent(field, 0, u"text"_s)));
    part->show();
    EXPECT_TRUE(isTold(field, QAccessible::NameChanged));
    EXPECT_TRUE(isToldToReaders(QAccessibleTextInsertEvent(field, 0, u"text"_s)));
}

TEST_F(AccessibleEventsTest, WhatIsHiddenIsToldOfOnceAsAWhole)
{
    part->show();
    part->hide();
    EXPECT_TRUE(isTold(part, QAccessible::ObjectHide));
    EXPECT_FALSE(isTold(field, QAccessible::ObjectHide));
}

TEST_F(AccessibleEventsTest, AScrollBarSpeaksOnlyWhileItIsHeld)
{
    auto *bar = new QScrollBar(&window);
    bar->show();
    bar->setValue(50);
    EXPECT_FALSE(isToldToReaders(QAccessibleValueChangeEvent(bar, 50)));
    EXPECT_FALSE(isTold(bar, QAccessible::ObjectShow));
    bar->setSliderDown(true);
    EXPECT_TRUE(isToldToReaders(QAccessibleValueChangeEvent(bar, 50)));
}

TEST_F(AccessibleEventsTest, AFocusThatIsGoneAgainIsNotTold)
{
    auto *other = new QLineEdit(part);
    part->show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    field->setFocus();
    EXPECT_TRUE(isTold(field, QAccessible::Focus));
    EXPECT_FALSE(isTold(other, QAccessible::Focus));
}

TEST_F(AccessibleEventsTest, SilenceHoldsForAllPartsAndEnds)
{
    part->show();
    {
        const AccessibleSilence silence(part);
        EXPECT_FALSE(isTold(part, QAccessible::ObjectShow));
        EXPECT_FALSE(isTold(field, QAccessible::ObjectShow));
        EXPECT_TRUE(isTold(&window, QAccessible::ObjectShow));
    }
    EXPECT_TRUE(isTold(field, QAccessible::ObjectShow));
}

TEST_F(AccessibleEventsTest, ASilentWindowStillTellsOfItself)
{
    part->show();
    const AccessibleSilence silence(&window);
    EXPECT_TRUE(isTold(&window, QAccessible::ObjectShow));
    EXPECT_FALSE(isTold(field, QAccessible::ObjectShow));
}

TEST_F(AccessibleEventsTest, RenewedWidgetsAreOtherObjects)
{
    part->show();
    const auto known = QAccessible::uniqueId(QAccessible::queryAccessibleInterface(field));
    renewAccessibility(part);
    EXPECT_NE(QAccessible::uniqueId(QAccessible::queryAccessibleInterface(field)), known);
}

} // namespace
} // namespace morvane
