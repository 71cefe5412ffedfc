#pragma once

#include "model/ProviderID.h"
#include "store/UserDefaults.h"

#include <QObject>
#include <QSet>
#include <QString>
#include <QThreadPool>
#include <QVariant>

namespace morvane {

class KeychainStore;

/// What the user has chosen. Every change is written through before its setter returns (see UserDefaults) and
/// announced by `changed`; setting what is already set does neither. Main thread.
class SettingsStore : public QObject {
    Q_OBJECT
public:
    /// Opens the user defaults at `path`, reads them and carries older versions forward. `keychain` must
    /// outlive the store; it is asked once, on another thread, for the keys that old versions kept there.
    SettingsStore(const QString &path, KeychainStore &keychain, QObject *parent = nullptr);

    /// Waits for the keychain's answer and until everything is on the disk.
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

    /// Stores the key of the current provider at once, trimmed of white space and line ends.
    void setApiKey(const QString &key);

    /// The few keys that belong to other parts of the program ("currentConversationID", …): texts, lists of
    /// texts, bytes, numbers and booleans. What UserDefaults::value says of types holds here.
    QVariant value(const QString &key) const { return m_defaults.value(key); }
    void setValue(const QString &key, const QVariant &value);
    void removeValue(const QString &key);

Q_SIGNALS:
    /// Any property or the current provider's API key changed, or keys of an old version were found.
    void changed();
    void providerIDChanged(morvane::ProviderID provider);

private:
    template <class Value> void change(Value &property, const Value &value);
    void persist();
    void read();
    void migrateModelDefaults();
    void askKeychain();
    void adoptKeychainKeys(const QMap<ProviderID, QString> &keys);

    UserDefaults m_defaults;
    QString m_path;
    KeychainStore &m_keychain;
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
    QThreadPool m_keychainThread;
};

} // namespace morvane
