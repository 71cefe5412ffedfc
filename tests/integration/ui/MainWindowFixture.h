#pragma once

#include "support/AppFixture.h"

#include "ui/window/MainWindow.h"

#include <QAbstractButton>
#include <QAction>
#include <QLabel>
#include <QTest>

namespace morvane {

/// The main window on a temporary home.
class MainWindowFixture : public AppFixture {
protected:
    MainWindowFixture() { restart(); }
    ~MainWindowFixture() override { window.reset(); }

    /// The window as a new start of the program shows it.
    void restart()
    {
        window.reset();
        start();
        window = std::make_unique<MainWindow>(*model, MainWindowServices{announcer, browserWindow,
                                                                         toolServerList.manager,
                                                                         *settingsServices, attachments});
    }

    void show()
    {
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        settle();
    }

    /// Shows the window of a new start with the conversation that was saved last.
    void showNewest()
    {
        restart();
        show();
        model->openConversation(model->conversations().list().first().id);
        settle();
        announcer.spoken.clear();
    }

    void save(const QString &title, const QList<ChatMessage> &messages)
    {
        store->save(QUuid::createUuid(), title, messages);
    }
    static ChatMessage message(Role role, const QString &text)
    {
        ChatMessage result;
        result.id = QUuid::createUuid();
        result.role = role;
        result.text = text;
        return result;
    }

    template <class View> static QAbstractButton *button(const View *view, const QString &name)
    {
        for (auto *button : view->template findChildren<QAbstractButton *>())
            if (button->isVisible() && button->accessibleName() == name)
                return button;
        return nullptr;
    }
    /// A command of the menus or of a part of the window.
    QAction *action(const QString &text) const
    {
        for (QAction *action : window->findChildren<QAction *>())
            if (action->text() == text)
                return action;
        return nullptr;
    }
    /// The visible labels of a view, in the order in which they were made.
    template <class View> static QStringList texts(const View *view)
    {
        QStringList found;
        for (const auto *label : view->template findChildren<QLabel *>())
            if (label->isVisible() && !label->text().isEmpty())
                found.append(label->text());
        return found;
    }
    template <class Widget> Widget *part() const { return window->findChild<Widget *>(); }

    std::unique_ptr<MainWindow> window;
};

} // namespace morvane
