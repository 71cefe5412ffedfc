#pragma once

#include "tools/BrowserPort.h"

#include <QStringList>

namespace morvane {

/// A browser that remembers what the tools ask of it, and answers each with `answer`.
class FakeBrowser final : public BrowserPort {
public:
    Task<ToolResult> browserOpen(QString urlString) override
    {
        return asked(QStringLiteral("open ") + urlString);
    }
    Task<ToolResult> browserRead() override { return asked(QStringLiteral("read")); }
    Task<ToolResult> browserClick(qint64 index) override
    {
        return asked(QStringLiteral("click %1").arg(index));
    }
    Task<ToolResult> browserType(qint64 index, QString text, bool submit) override
    {
        return asked(
            QStringLiteral("type %1 [%2]%3")
                .arg(QString::number(index), text, submit ? QStringLiteral(" and submit") : QString()));
    }
    Task<ToolResult> browserScroll(qint64 amount) override
    {
        return asked(QStringLiteral("scroll %1").arg(amount));
    }
    Task<ToolResult> browserBack() override { return asked(QStringLiteral("back")); }

    QStringList log;
    QString answer = QStringLiteral("the page");

private:
    Task<ToolResult> asked(QString what)
    {
        log.append(what);
        co_return answer;
    }
};

} // namespace morvane
