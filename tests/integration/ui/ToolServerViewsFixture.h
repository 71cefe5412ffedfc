#pragma once

#include "SettingsViewFixture.h"

#include "ui/controls/WrappingCheckBox.h"
#include "ui/settings/MCPServerRow.h"

#include <QApplication>
#include <QPushButton>
#include <QTabWidget>
#include <memory>

namespace morvane {

/// The tab of tool servers; what they answer is the test's to say.
class ToolServerViewsFixture : public SettingsViewFixture {
protected:
    ~ToolServerViewsFixture() override { QApplication::setFont(m_usualFont); }

    static void setTextSize(qreal points)
    {
        QFont font = QApplication::font();
        font.setPointSizeF(points);
        QApplication::setFont(font);
    }
    void showServers()
    {
        tabs()->setCurrentIndex(2);
        view->activateWindow();
        settle();
    }
    QTabWidget *tabs() const { return view->findChild<QTabWidget *>(); }
    MCPManager &manager() { return toolServerList.manager; }
    QList<MCPServerRow *> rows() const
    {
        QList<MCPServerRow *> visible;
        for (auto *row : view->findChildren<MCPServerRow *>())
            if (row->isVisible())
                visible.append(row);
        return visible;
    }
    static WrappingCheckBox *switchOf(const MCPServerRow *row)
    {
        return row->findChild<WrappingCheckBox *>();
    }
    bool reads(const MCPServerRow *row, const QString &name) const
    {
        return waitUntil([&] { return switchOf(row)->accessibleName() == name; });
    }

private:
    const QFont m_usualFont = QApplication::font();
};

} // namespace morvane
