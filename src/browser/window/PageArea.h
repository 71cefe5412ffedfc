#pragma once

#include "browser/window/ComingDocument.h"

#include <QPointer>
#include <QStackedWidget>

namespace morvane {

class BrowserManager;
class BrowserTab;

/// Shows the page of the active tab. The pages are not its own: it gives them back when it goes.
class PageArea : public QStackedWidget {
    Q_OBJECT
public:
    /// `manager` outlives the area. `isHeard` says whether there may be a screen reader.
    explicit PageArea(BrowserManager &manager, const std::function<bool()> &isHeard = &QAccessible::isActive,
                      QWidget *parent = nullptr);
    ~PageArea() override;

    /// The keyboard goes to the page.
    void focusPage();
    /// The same for a page that is still to come: what is told is not the one that gives way to it.
    void focusComingPage();
    /// Does an editing command, by the name of the toolkit's slot, in the page.
    void edit(const QByteArray &slot);
    /// Whether the keyboard is in the page.
    bool hasPageFocus() const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void keepFocus();
    void showActiveTab();
    void updateName();

    BrowserManager &m_manager;
    QPointer<BrowserTab> m_tab;
    ComingDocument m_coming;
};

} // namespace morvane
