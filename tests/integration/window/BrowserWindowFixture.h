#pragma once

#include "support/AppFixture.h"
#include "support/BrowserWorld.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTest>

namespace morvane {

/// The browser's window over pages without an engine.
class BrowserWindowFixture : public AppFixture {
protected:
    BrowserWindowFixture()
    {
        EXPECT_TRUE(waitUntil([this] { return !m_historyRead.isEmpty() && !m_bookmarksRead.isEmpty(); }));
        openWindow();
    }
    ~BrowserWindowFixture() override
    {
        scheduler.shutdown(std::chrono::seconds(1));
        browser.reset();
    }

    void openWindow()
    {
        window = &browser->openWindow();
        browser->manager.window()->activate();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
        settle();
        announcer.spoken.clear();
    }

    template <class Widget> Widget *part() const { return window->findChild<Widget *>(); }
    QAbstractButton *button(const QString &name) const
    {
        for (QWidget *top : QApplication::topLevelWidgets())
            for (auto *button : top->findChildren<QAbstractButton *>())
                if (button->isVisible() && button->accessibleName() == name)
                    return button;
        return nullptr;
    }
    QWidget *named(const QString &name) const
    {
        for (auto *widget : window->findChildren<QWidget *>())
            if (widget->accessibleName() == name)
                return widget;
        return nullptr;
    }
    void click(const QString &name)
    {
        QAbstractButton *found = button(name);
        ASSERT_NE(found, nullptr) << qPrintable(name);
        QTest::mouseClick(found, Qt::LeftButton);
        settle();
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QWidget *focus = QApplication::focusWidget();
        QTest::keyClick(focus ? focus : window, key, modifiers);
        settle();
    }
    /// The menu that is up.
    static QMenu *openMenu() { return qobject_cast<QMenu *>(QApplication::activePopupWidget()); }
    QMenu *menu(const QString &title) const
    {
        for (QAction *action : window->menuBar()->actions())
            if (QString(action->text()).remove(u'&') == title)
                return action->menu();
        return nullptr;
    }
    QAction *item(const QString &title, const QString &text) const
    {
        for (QAction *action : menu(title)->actions())
            if (action->text() == text)
                return action;
        return nullptr;
    }
    /// The names of the tabs as they stand.
    QStringList tabs() const;

    FakeSurroundings &surroundings = *this;
    std::unique_ptr<BrowserWorld> browser =
        std::make_unique<BrowserWorld>(scheduler, surroundings, *model, home.path(QStringLiteral("browser")));
    BrowserManager &manager = browser->manager;
    BrowserWindowView *window = nullptr;

private:
    QSignalSpy m_historyRead{&browser->history, &HistoryStore::changed};
    QSignalSpy m_bookmarksRead{&browser->bookmarks, &BookmarkStore::changed};
};

} // namespace morvane
