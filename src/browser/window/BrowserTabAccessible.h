#pragma once

#include <QAccessibleWidget>

namespace morvane {

class BrowserTabButton;

/// A tab of the tab bar as assistive technology knows it: selected or not, with its close button in it.
class BrowserTabAccessible : public QAccessibleWidget {
public:
    explicit BrowserTabAccessible(BrowserTabButton *button);

    /// Lets all tab buttons be known by it from now on.
    static void install();

    QAccessible::State state() const override;
    QStringList actionNames() const override;
    void doAction(const QString &name) override;

private:
    BrowserTabButton &button() const;
};

} // namespace morvane
