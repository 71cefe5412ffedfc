#pragma once

#include <QObject>
#include <QString>

namespace morvane {

class Announcer;
class SettingsStore;

/// The one-line status and the spoken side of every state change. Main thread.
class Status : public QObject {
    Q_OBJECT
public:
    Status(Announcer &announcer, const SettingsStore &settings, QObject *parent = nullptr);

    const QString &statusText() const { return m_statusText; }
    void setStatusText(const QString &text);

    /// Speaks always: what the user must act on, or what ends a request badly.
    void announce(const QString &text);
    /// Speaks only if the user wants progress spoken (`announceResponses`).
    void announceProgress(const QString &text);

Q_SIGNALS:
    void statusTextChanged();

private:
    Announcer &m_announcer;
    const SettingsStore &m_settings;
    QString m_statusText = QStringLiteral("Ready");
};

} // namespace morvane
