#pragma once

#include "model/ProviderID.h"

#include <QObject>
#include <QSet>
#include <QSettings>
#include <QString>
#include <memory>

namespace morvane {

class KeychainStore;

/// What the user has chosen. Every change is written through at once and announced by `changed`. Main thread.
class SettingsStore : public QObject {
    Q_OBJECT
public:
    /// Opens the user defaults at `path` (INI, 0600), reads them and carries older versions forward.
    /// `keychain` must outlive the store; it is asked once, off the main thread, for keys of old versions.
    SettingsStore(const QString &path, KeychainStore &keychain, QObject *parent = nullptr);
    ~SettingsStore() override;

    ProviderID providerID() const { return m_providerID; }
    QString model() const { return m_model; }
    QString customBaseURL() const { return m_customBaseURL; }
    QString systemPrompt() const { return m_systemPrompt; }
    double temperature() const { return m_temperature; }
    int maxSteps() const { return m_maxSteps; }
    bool unlimitedSteps() const { return m_unlimitedSteps; }
    bool announceResponses() const { return m_announceResponses; }
    bool useTools() const { return m_useTools; }
    QSet<QString> alwaysAllowedTools() const { return m_alwaysAllowedTools; }

    void setProviderID(ProviderID provider);
    void setModel(const QString &model);
    void setCustomBaseURL(const QString &url); ///< Trimmed of white space and line ends.
    void setSystemPrompt(const QString &prompt);
    void setTemperature(double temperature);
    void setMaxSteps(int steps);
    void setUnlimitedSteps(bool unlimited);
    void setAnnounceResponses(bool announce);
    void setUseTools(bool use);
    void setAlwaysAllowedTools(const QSet<QString> &names);

    /// The key of the current provider, in the clear; empty if none is stored.
    QString apiKey() const;
    /// Stores the trimmed key for the current provider at once.
    void setApiKey(const QString &key);

    /// Raw access for the few keys that belong to other parts of the program ("currentConversationID", …).
    QVariant value(const QString &key) const;
    void setValue(const QString &key, const QVariant &value);
    void removeValue(const QString &key);

Q_SIGNALS:
    /// Any property changed.
    void changed();
    void providerIDChanged(morvane::ProviderID provider);

private:
    void persist();

    std::unique_ptr<QSettings> m_defaults;
    ProviderID m_providerID = ProviderID::ollama;
    QString m_model;
    QString m_customBaseURL;
    QString m_systemPrompt;
    double m_temperature = 0.7;
    int m_maxSteps = 25;
    bool m_unlimitedSteps = false;
    bool m_announceResponses = true;
    bool m_useTools = true;
    QSet<QString> m_alwaysAllowedTools;
};

} // namespace morvane
