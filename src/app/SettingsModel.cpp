#include "app/SettingsModel.h"

#include "app/LocalModelFlow.h"
#include "async/CheckCancelled.h"
#include "async/Scheduler.h"
#include "async/Sleep.h"
#include "platform/UrlOpener.h"
#include "providers/CustomServerURL.h"
#include "providers/Endpoints.h"
#include "providers/ModelCatalog.h"
#include "store/SettingsStore.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

std::optional<QString> baseURLOfPreset(const QString &name)
{
    for (const CustomPreset &preset : customPresets())
        if (preset.name == name)
            return preset.baseURL;
    return std::nullopt;
}

} // namespace

SettingsModel::SettingsModel(const SettingsServices &services, LocalModelFlow &localModel, QObject *parent)
    : QObject(parent), m_services(services), m_localModel(localModel),
      m_displayedModels(curatedModels(services.settings.providerID())), m_server(currentServer())
{
    connect(&services.settings, &SettingsStore::changed, this, &SettingsModel::settingsChanged);
    connect(&services.settings, &SettingsStore::providerIDChanged, this, &SettingsModel::providerChanged);
}

SettingsModel::~SettingsModel()
{
    for (auto *task : {&m_loading, &m_pause})
        if (*task)
            (*task)->cancel();
}

SettingsModel::Server SettingsModel::currentServer() const
{
    return {m_services.settings.customBaseURL(), m_services.settings.apiKey()};
}

bool SettingsModel::isListed(const QString &name) const
{
    return std::any_of(m_displayedModels.begin(), m_displayedModels.end(),
                       [&name](const ProviderModel &model) { return model.name == name; });
}

QString SettingsModel::modelSelection() const
{
    const QString model = m_services.settings.model();
    return !m_customWanted && isListed(model) ? model : QString::fromLatin1(customTag);
}

QString SettingsModel::listStatus() const
{
    const SettingsStore &settings = m_services.settings;
    const bool custom = settings.providerID() == ProviderID::custom;
    if (m_loadingModels)
        return u"Loading the full model list…"_s;
    if (custom && settings.customBaseURL().isEmpty())
        return u"Choose a preset or enter a base URL below to load its models."_s;
    if (m_fetchedModels)
        return u"%1 models from %2, free ones first."_s.arg(QString::number(m_fetchedModels->size()),
                                                            custom ? u"your server"_s
                                                                   : displayName(settings.providerID()));
    return u"Showing popular picks — the full list could not be loaded right now."_s;
}

bool SettingsModel::hasBaseURLWarning() const
{
    const QString url = m_services.settings.customBaseURL();
    return !url.isEmpty() && !chatCompletionsURL(url);
}

void SettingsModel::openSignupPage()
{
    m_services.urls.open(QUrl(Endpoints().signupURL(m_services.settings.providerID())));
}

void SettingsModel::chooseProvider(ProviderID provider)
{
    if (m_services.settings.providerID() == provider)
        return;
    m_services.settings.setProviderID(provider);
    m_services.settings.setModel(defaultModel(provider));
    if (provider == ProviderID::ollama)
        m_localModel.refreshThenInstall(LocalModelFlow::Occasion::providerChosen);
}

void SettingsModel::selectModel(const QString &nameOrTag)
{
    m_customWanted = nameOrTag == QLatin1String(customTag);
    if (!m_customWanted)
        m_services.settings.setModel(nameOrTag);
    Q_EMIT changed();
}

void SettingsModel::typeModel(const QString &name)
{
    m_customWanted = true;
    m_services.settings.setModel(name);
}

void SettingsModel::resetModel()
{
    m_customWanted = false;
    m_services.settings.setModel(defaultModel(m_services.settings.providerID()));
    Q_EMIT changed();
}

void SettingsModel::selectPreset(const QString &name)
{
    m_selectedPreset = name;
    if (const auto url = baseURLOfPreset(name))
        m_services.settings.setCustomBaseURL(*url);
    Q_EMIT changed();
}

void SettingsModel::loadModelCatalog()
{
    for (auto *task : {&m_loading, &m_pause}) {
        if (*task)
            (*task)->cancel();
        task->reset();
    }
    m_loadingModels = true;
    setFetchedModels(std::nullopt);
    m_loading = m_services.scheduler.spawn(
        load(this, &m_services.modelCatalog, m_services.settings.providerID(), currentServer()));
}

Task<void> SettingsModel::load(QPointer<SettingsModel> self, ModelCatalog *catalog, ProviderID provider,
                               Server server)
{
    const CatalogModels models = co_await catalog->load(provider, server.apiKey, server.baseURL);
    // Reading a reply off the main thread goes on when the question was dropped meanwhile.
    co_await checkCancelled();
    if (!self)
        co_return;
    self->m_loadingModels = false;
    self->setFetchedModels(models);
}

void SettingsModel::setFetchedModels(const CatalogModels &models)
{
    m_fetchedModels = models;
    QList<ProviderModel> displayed;
    if (models && !models->isEmpty()) {
        displayed.reserve(models->size());
        for (const CatalogModel &model : *models)
            displayed.append({model.name, model.isFree});
    } else {
        displayed = curatedModels(m_services.settings.providerID());
    }
    if (std::exchange(m_displayedModels, displayed) != displayed)
        Q_EMIT displayedModelsChanged();
    Q_EMIT changed();
}

void SettingsModel::reloadCustomCatalogAfterPause()
{
    if (m_pause)
        m_pause->cancel();
    m_pause.reset();
    if (m_services.settings.providerID() == ProviderID::custom)
        m_pause = m_services.scheduler.spawn(reloadLater(this, currentServer()));
}

Task<void> SettingsModel::reloadLater(QPointer<SettingsModel> self, Server server)
{
    co_await sleepFor(typingPause);
    if (self && self->m_services.settings.providerID() == ProviderID::custom &&
        self->currentServer() == server)
        self->loadModelCatalog();
}

void SettingsModel::settingsChanged()
{
    const Server server = currentServer();
    if (std::exchange(m_server, server) != server)
        reloadCustomCatalogAfterPause();
    // A preset with another address than its own would be a false statement.
    if (baseURLOfPreset(m_selectedPreset).value_or(server.baseURL) != server.baseURL)
        m_selectedPreset.clear();
    Q_EMIT changed();
}

void SettingsModel::providerChanged()
{
    m_customWanted = false;
    loadModelCatalog();
}

} // namespace morvane
