#include "store/SettingsStore.h"

#include "base/AtomicFile.h"
#include "base/Text.h"
#include "platform/KeychainStore.h"
#include "store/DefaultSystemPrompt.h"

#include <QMap>
#include <QStringDecoder>
#include <algorithm>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const auto providerKey = u"provider"_s;
const auto modelKey = u"model"_s;
const auto customBaseURLKey = u"customBaseURL"_s;
const auto systemPromptKey = u"systemPrompt"_s;
const auto temperatureKey = u"temperature"_s;
const auto maxStepsKey = u"maxSteps"_s;
const auto unlimitedStepsKey = u"unlimitedSteps"_s;
const auto announceKey = u"announce"_s;
const auto useToolsKey = u"useTools"_s;
const auto alwaysAllowedToolsKey = u"alwaysAllowedTools"_s;
const auto systemPromptVersionKey = u"systemPromptVersion"_s;
const auto modelDefaultsVersionKey = u"modelDefaultsVersion"_s;

constexpr int modelDefaultsVersion = 1;
constexpr int lowestMaxSteps = 8;

/// The service under which old versions kept their keys.
const auto keychainService = u"com.morvaneapp.mac"_s;

QString apiKeyKey(ProviderID provider)
{
    return u"apiKey_"_s + rawValue(provider);
}

/// A text that was edited by hand without quotes is read as a list where it has a comma.
QString textValue(const UserDefaults &defaults, const QString &key, const QString &absent)
{
    if (!defaults.contains(key))
        return absent;
    const QVariant value = defaults.value(key);
    return value.typeId() == QMetaType::QStringList ? value.toStringList().join(u", "_s) : value.toString();
}

bool booleanValue(const UserDefaults &defaults, const QString &key, bool absent)
{
    return defaults.contains(key) ? defaults.value(key).toBool() : absent;
}

double doubleValue(const UserDefaults &defaults, const QString &key, double absent)
{
    bool isNumber = false;
    const double number = defaults.value(key).toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? number : absent;
}

int integerValue(const UserDefaults &defaults, const QString &key, int absent)
{
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(doubleValue(defaults, key, absent), lowest, highest));
}

std::optional<QString> textFromUtf8(const QByteArray &bytes)
{
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decode(bytes);
    return decode.hasError() ? std::nullopt : std::optional(text);
}

} // namespace

SettingsStore::SettingsStore(const QString &path, KeychainStore &keychain, QObject *parent)
    : QObject(parent), m_defaults(path), m_path(path), m_keychain(keychain)
{
    m_keychainThread.setMaxThreadCount(1);
    if (integerValue(m_defaults, systemPromptVersionKey, 0) < defaultSystemPromptVersion) {
        m_defaults.set(systemPromptKey, defaultSystemPrompt());
        m_defaults.set(systemPromptVersionKey, defaultSystemPromptVersion);
    }
    read();
    migrateModelDefaults();
    m_defaults.write();
    askKeychain();
}

SettingsStore::~SettingsStore()
{
    m_keychainThread.waitForDone();
}

void SettingsStore::read()
{
    m_providerID =
        providerFromRawValue(textValue(m_defaults, providerKey, QString())).value_or(ProviderID::ollama);
    m_model = textValue(m_defaults, modelKey, defaultModel(m_providerID));
    m_customBaseURL = textValue(m_defaults, customBaseURLKey, QString());
    m_systemPrompt = textValue(m_defaults, systemPromptKey, defaultSystemPrompt());
    m_temperature = doubleValue(m_defaults, temperatureKey, 0.7);
    m_maxSteps = std::max(integerValue(m_defaults, maxStepsKey, 25), lowestMaxSteps);
    m_unlimitedSteps = booleanValue(m_defaults, unlimitedStepsKey, false);
    m_announceResponses = booleanValue(m_defaults, announceKey, true);
    m_useTools = booleanValue(m_defaults, useToolsKey, true);
    const QStringList tools = m_defaults.value(alwaysAllowedToolsKey).toStringList();
    m_alwaysAllowedTools = QSet<QString>(tools.begin(), tools.end());
}

void SettingsStore::persist()
{
    QStringList tools(m_alwaysAllowedTools.cbegin(), m_alwaysAllowedTools.cend());
    tools.sort(); // so that the file does not change without reason
    m_defaults.set(providerKey, rawValue(m_providerID));
    m_defaults.set(modelKey, m_model);
    m_defaults.set(customBaseURLKey, m_customBaseURL);
    m_defaults.set(systemPromptKey, m_systemPrompt);
    m_defaults.set(temperatureKey, m_temperature);
    m_defaults.set(maxStepsKey, m_maxSteps);
    m_defaults.set(unlimitedStepsKey, m_unlimitedSteps);
    m_defaults.set(announceKey, m_announceResponses);
    m_defaults.set(useToolsKey, m_useTools);
    m_defaults.set(alwaysAllowedToolsKey, tools);
    m_defaults.write();
}

void SettingsStore::migrateModelDefaults()
{
    if (integerValue(m_defaults, modelDefaultsVersionKey, 0) >= modelDefaultsVersion)
        return;
    const auto oldFreeModel = u"deepseek/deepseek-chat-v3-0324:free"_s;
    if (m_providerID == ProviderID::openrouter &&
        textValue(m_defaults, modelKey, QString()) == oldFreeModel) {
        m_model = u"deepseek/deepseek-chat-v3-0324"_s;
        persist();
    }
    m_defaults.set(modelDefaultsVersionKey, modelDefaultsVersion);
}

void SettingsStore::askKeychain()
{
    QList<ProviderID> withoutKey;
    for (const ProviderID provider : allProviders)
        if (!m_defaults.contains(apiKeyKey(provider)))
            withoutKey.append(provider);
    if (withoutKey.isEmpty())
        return;
    m_keychainThread.start([this, withoutKey] {
        QMap<ProviderID, QString> keys;
        for (const ProviderID provider : withoutKey) {
            const auto data = m_keychain.read(rawValue(provider), keychainService);
            const auto text = data ? textFromUtf8(*data) : std::nullopt;
            if (text && !text->isEmpty())
                keys.insert(provider, *text);
        }
        if (!keys.isEmpty())
            QMetaObject::invokeMethod(this, [this, keys] { adoptKeychainKeys(keys); }, Qt::QueuedConnection);
    });
}

void SettingsStore::adoptKeychainKeys(const QMap<ProviderID, QString> &keys)
{
    QStringList adopted;
    for (auto key = keys.cbegin(); key != keys.cend(); ++key) {
        // The user may have typed one while the keychain was asked.
        if (m_defaults.contains(apiKeyKey(key.key())))
            continue;
        m_defaults.set(apiKeyKey(key.key()), *key);
        adopted.append(rawValue(key.key()));
    }
    if (adopted.isEmpty() || !m_defaults.write())
        return;
    m_keychainThread.start([this, adopted, path = m_path] {
        if (!syncFile(path)) // The only copy of a key is not given up before the other is on the disk.
            return;
        for (const QString &key : adopted)
            m_keychain.remove(key, keychainService);
    });
    Q_EMIT changed();
}

template <class Value> void SettingsStore::change(Value &property, const Value &value)
{
    if (property == value)
        return;
    property = value;
    persist();
    Q_EMIT changed();
}

void SettingsStore::setProviderID(ProviderID provider)
{
    if (provider == m_providerID)
        return;
    change(m_providerID, provider);
    Q_EMIT providerIDChanged(provider);
}

void SettingsStore::setModel(const QString &model)
{
    change(m_model, model);
}

void SettingsStore::setCustomBaseURL(const QString &url)
{
    change(m_customBaseURL, trimmed(url));
}

void SettingsStore::setSystemPrompt(const QString &prompt)
{
    change(m_systemPrompt, prompt);
}

void SettingsStore::setTemperature(double temperature)
{
    change(m_temperature, temperature);
}

void SettingsStore::setMaxSteps(int steps)
{
    change(m_maxSteps, steps);
}

void SettingsStore::setUnlimitedSteps(bool unlimited)
{
    change(m_unlimitedSteps, unlimited);
}

void SettingsStore::setAnnounceResponses(bool announce)
{
    change(m_announceResponses, announce);
}

void SettingsStore::setUseTools(bool use)
{
    change(m_useTools, use);
}

void SettingsStore::setAlwaysAllowedTools(const QSet<QString> &names)
{
    change(m_alwaysAllowedTools, names);
}

QString SettingsStore::apiKey() const
{
    return textValue(m_defaults, apiKeyKey(m_providerID), QString());
}

void SettingsStore::setApiKey(const QString &key)
{
    const QString name = apiKeyKey(m_providerID);
    const QString trimmedKey = trimmed(key);
    if (m_defaults.contains(name) && apiKey() == trimmedKey)
        return;
    setValue(name, trimmedKey);
    Q_EMIT changed();
}

void SettingsStore::setValue(const QString &key, const QVariant &value)
{
    m_defaults.set(key, value);
    m_defaults.write();
}

void SettingsStore::removeValue(const QString &key)
{
    m_defaults.remove(key);
    m_defaults.write();
}

} // namespace morvane
