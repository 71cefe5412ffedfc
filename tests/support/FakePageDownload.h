#pragma once

#include "browser/pages/PageDownload.h"

#include <QStringList>
#include <utility>

namespace morvane {

/// A file that a page hands over as far as a test says.
class FakePageDownload final : public PageDownload {
    Q_OBJECT
public:
    FakePageDownload(QString name, QString from) : m_name(std::move(name)), m_site(std::move(from)) {}

    QString suggestedFileName() const override { return m_name; }
    QString site() const override { return m_site; }
    void accept(const QString &path) override { log.append(QStringLiteral("to ") + path); }
    void cancel() override
    {
        log.append(QStringLiteral("cancel"));
        Q_EMIT cancelled();
    }
    qint64 receivedBytes() const override { return m_received; }
    qint64 totalBytes() const override { return m_total; }

    void progress(qint64 received, qint64 total)
    {
        m_received = received;
        m_total = total;
        Q_EMIT progressed();
    }

    QStringList log;

private:
    QString m_name;
    QString m_site;
    qint64 m_received = 0;
    qint64 m_total = -1;
};

} // namespace morvane
