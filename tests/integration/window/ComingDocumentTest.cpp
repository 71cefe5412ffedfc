#include "browser/window/ComingDocument.h"

#include "support/WaitUntil.h"
#include "ui/controls/AccessibleRole.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace morvane {
namespace {

class ComingDocumentTest : public testing::Test {
protected:
    ComingDocumentTest()
    {
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        old->setFocus();
    }
    /// Another one begins to look later, and has found the new document.
    void findInAnother()
    {
        ComingDocument other([] { return true; });
        const QSignalSpy otherFound(&other, &ComingDocument::found);
        other.replaced();
        other.loaded();
        next->setFocus();
        EXPECT_TRUE(waitUntil([&] { return !otherFound.isEmpty(); }));
    }

    QWidget window;
    QLineEdit *old = new QLineEdit(&window);
    QLineEdit *next = new QLineEdit(&window);
    bool hasKeyboard = true;
    ComingDocument document{[this] { return hasKeyboard; }};
    QSignalSpy found{&document, &ComingDocument::found};
};

TEST_F(ComingDocumentTest, WhatIsFoundOfTheOldDocumentIsNotTakenForTheNewOne)
{
    document.replaced();
    document.loaded();
    EXPECT_TRUE(found.isEmpty());
    next->setFocus();
    EXPECT_TRUE(waitUntil([this] { return !found.isEmpty(); }));
    EXPECT_EQ(found.size(), 1);
}

TEST_F(ComingDocumentTest, OneThatIsThereWhenItHasLoadedIsFoundAtOnce)
{
    document.replaced();
    next->setFocus();
    document.loaded();
    EXPECT_EQ(found.size(), 1);
}

TEST_F(ComingDocumentTest, WhereNothingCameTheOldOneIsFoundAtOnce)
{
    document.loaded();
    EXPECT_EQ(found.size(), 1);
}

TEST_F(ComingDocumentTest, WhoeverHasLeftItIsNotLedBack)
{
    document.replaced();
    document.loaded();
    hasKeyboard = false;
    findInAnother();
    EXPECT_TRUE(found.isEmpty());
}

TEST_F(ComingDocumentTest, ThatOfAnotherTabIsNotWaitedFor)
{
    document.replaced();
    document.loaded();
    document.forget();
    findInAnother();
    EXPECT_TRUE(found.isEmpty());
}

TEST_F(ComingDocumentTest, WhoeverGoesOnInTheOldDocumentIsStillInIt)
{
    auto *const whole = new QWidget(&window);
    setAccessibleRole(whole, QAccessible::WebDocument);
    auto *const one = new QLineEdit(whole);
    auto *const other = new QLineEdit(whole);
    whole->show();
    one->setFocus();
    document.replaced();
    other->setFocus();
    document.loaded();
    EXPECT_TRUE(found.isEmpty());
}

TEST_F(ComingDocumentTest, OneThatWasThereBeforeThatWasKnownIsFoundAtOnce)
{
    document.begun();
    next->setFocus();
    document.replaced();
    document.loaded();
    EXPECT_EQ(found.size(), 1);
}

TEST_F(ComingDocumentTest, OfTwoInARowTheLastIsAwaited)
{
    auto *const last = new QLineEdit(&window);
    last->show();
    document.begun();
    document.replaced();
    document.begun();
    next->setFocus();
    document.replaced();
    document.loaded();
    EXPECT_TRUE(found.isEmpty());
    last->setFocus();
    EXPECT_TRUE(waitUntil([this] { return !found.isEmpty(); }));
}

TEST_F(ComingDocumentTest, OneThatIsNeverHandedOverIsNotAwaitedForEver)
{
    ComingDocument never([] { return true; }, std::chrono::milliseconds(0));
    const QSignalSpy given(&never, &ComingDocument::found);
    never.replaced();
    never.loaded();
    EXPECT_TRUE(given.isEmpty());
    EXPECT_TRUE(waitUntil([&] { return !given.isEmpty(); }));
    findInAnother();
    EXPECT_EQ(given.size(), 1);
}

} // namespace
} // namespace morvane
