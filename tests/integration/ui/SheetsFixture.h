#pragma once

#include "support/AppFixture.h"

#include <QAccessible>
#include <QApplication>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <memory>

namespace morvane {

class PermissionView;
class QuestionView;
class Sheet;

/// A window with a draft field, a button and both sheets over it, on an application model without a network.
class SheetsFixture : public AppFixture {
protected:
    SheetsFixture();
    ~SheetsFixture() override;

    /// Asks for a permission as the agent does; the sheet then stands.
    TaskHandle<std::optional<ToolPermit>> request(const AIToolCall &call);
    TaskHandle<std::optional<ToolPermit>> requestCommand(const QString &command);
    TaskHandle<std::optional<ToolPermit>> requestWrite();
    TaskHandle<QString> ask(const QString &question, const QStringList &options = {});

    /// Lets as much time go by as a user needs to see a sheet.
    void notice();
    /// Presses and releases a key as the window system would, so that shortcuts and focus take part.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void type(const QString &text);
    void click(QWidget *widget);

    /// The visible widget of that type with this accessible name, or null.
    template <class Widget> Widget *named(const QString &accessibleName) const
    {
        for (Widget *widget : window->findChildren<Widget *>())
            if (widget->isVisible() && widget->accessibleName() == accessibleName)
                return widget;
        return nullptr;
    }
    /// All texts of visible labels, in reading order.
    QStringList labels(const QWidget &within) const;
    /// Every widget that the Tab key reaches from where the focus is, until it comes back.
    QList<QWidget *> tabStops();

    QAccessibleInterface *accessible(QWidget *widget) const
    {
        return QAccessible::queryAccessibleInterface(widget);
    }
    QWidget *focus() const { return QApplication::focusWidget(); }

    std::chrono::steady_clock::time_point now{std::chrono::hours(1)};
    std::unique_ptr<QMainWindow> window;
    QPlainTextEdit *draft = nullptr;
    QPushButton *behind = nullptr;
    PermissionView *permission = nullptr;
    QuestionView *question = nullptr;
    int pressedBehind = 0;
};

} // namespace morvane
