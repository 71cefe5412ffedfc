#pragma once

#include "browser/tabs/BrowserWindow.h"

#include <QList>
#include <QStringList>
#include <utility>

namespace morvane {

/// The browser's window as its manager sees it: remembers what it was asked, in a log that outlives it.
class FakeTabWindow final : public BrowserWindow {
public:
    struct Log {
        QStringList asked;
        QList<std::function<void(const QString &)>> destinations;
        QList<std::shared_ptr<PagePermission>> permissions;
        QList<std::function<void(bool)>> permissionAnswers; ///< In the same order.
        bool visible = true;
        int windows = 0; ///< That exist.
    };

    explicit FakeTabWindow(Log &log) : m_log(log) { ++m_log.windows; }
    ~FakeTabWindow() override { --m_log.windows; }
    FakeTabWindow(const FakeTabWindow &) = delete;
    FakeTabWindow &operator=(const FakeTabWindow &) = delete;

    bool isVisible() const override { return m_log.visible; }
    void orderFront() override { m_log.asked.append(QStringLiteral("front")); }
    void activate() override { m_log.asked.append(QStringLiteral("activate")); }
    void askForDestination(const QString &suggestedFileName, const QString &site,
                           std::function<void(const QString &)> answer) override
    {
        m_log.asked.append(QStringLiteral("where to write %1 of %2").arg(suggestedFileName, site));
        m_log.destinations.append(std::move(answer));
    }
    void askForPermission(const std::shared_ptr<PagePermission> &permission,
                          std::function<void(bool)> answer) override
    {
        m_log.permissions.append(permission);
        m_log.permissionAnswers.append(std::move(answer));
    }
    void showSharePicker(const QUrl &address) override
    {
        m_log.asked.append(QStringLiteral("share ") + address.toString());
    }

private:
    Log &m_log;
};

} // namespace morvane
