#pragma once

#include "async/TaskHandle.h"
#include "model/ProviderID.h"
#include "providers/CatalogModel.h"
#include "providers/ProviderCatalog.h"

#include <QObject>
#include <QPointer>
#include <chrono>
#include <functional>
#include <optional>

namespace morvane {

class LocalModelFlow;
class ModelCatalog;
class PermissionsModel;
class Scheduler;
class SettingsStore;
class UrlOpener;

/// What the settings window is built on; all of it outlives the window.
struct SettingsServices {
    Scheduler &scheduler;
    SettingsStore &settings;
    ModelCatalog &modelCatalog;
    UrlOpener &urls;
    /// One sentence on the machine.
    std::function<QString()> machineSummary;
    /// The machine's memory in GiB.
    std::function<int()> machineMemory;
    PermissionsModel &permissions;
};

/// What the settings window knows beyond the settings: the provider's own list of models and how its loading
/// goes, the chosen preset. It also does what a choice in the window brings with it. Lasts as long as the
/// window. Main thread.
class SettingsModel : public QObject {
    Q_OBJECT
public:
    /// How long the user has to pause in typing before a custom server is asked for its models.
    static constexpr std::chrono::milliseconds typingPause{800};
    /// The choice that stands for a model by a name of the user's own.
    static constexpr auto customTag = "__custom__";

    /// Both must outlive the model. Nothing is loaded yet.
    SettingsModel(const SettingsServices &services, LocalModelFlow &localModel, QObject *parent = nullptr);
    ~SettingsModel() override;

    const CatalogModels &fetchedModels() const { return m_fetchedModels; }
    bool loadingModels() const { return m_loadingModels; }
    const QString &selectedPreset() const { return m_selectedPreset; }

    /// The models to choose from: the fetched list, or the few that are known beforehand.
    const QList<ProviderModel> &displayedModels() const { return m_displayedModels; }
    /// The name of the chosen model, or `customTag` for one that is not listed or is being typed.
    QString modelSelection() const;
    bool isCustomSelected() const { return modelSelection() == QLatin1String(customTag); }
    /// How the list came about, or why there is none.
    QString listStatus() const;
    /// Whether the base URL of the custom server is none yet.
    bool hasBaseURLWarning() const;

    void chooseProvider(ProviderID provider);
    /// `customTag` changes no setting.
    void selectModel(const QString &nameOrTag);
    /// The user types a name of a model.
    void typeModel(const QString &name);
    void resetModel();
    /// Fills in the preset's base URL; the empty name writes nothing.
    void selectPreset(const QString &name);

    /// Shows the page where the user gets a key for the current provider.
    void openSignupPage();

    /// Asks the current provider for its models. An earlier question that is still open is dropped.
    void loadModelCatalog();
    /// Does so after a pause in typing, for the custom provider only.
    void reloadCustomCatalogAfterPause();

Q_SIGNALS:
    /// `displayedModels` is another list.
    void displayedModelsChanged();
    /// Anything else changed that this object tells, a setting included.
    void changed();

private:
    /// What a custom server is asked with; a change of either asks again.
    struct Server {
        QString baseURL;
        QString apiKey;
        bool operator==(const Server &) const = default;
    };

    static Task<void> load(QPointer<SettingsModel> self, ModelCatalog *catalog, ProviderID provider,
                           Server server);
    static Task<void> reloadLater(QPointer<SettingsModel> self, Server server);
    void setFetchedModels(const CatalogModels &models);
    void settingsChanged();
    void providerChanged();
    Server currentServer() const;
    bool isListed(const QString &name) const;

    const SettingsServices &m_services;
    LocalModelFlow &m_localModel;
    CatalogModels m_fetchedModels;
    QList<ProviderModel> m_displayedModels;
    bool m_loadingModels = false;
    QString m_selectedPreset;
    /// The user wants a name of their own, though it may be one of the list's at the moment.
    bool m_customWanted = false;
    Server m_server; ///< As of the last change that was seen.
    std::optional<TaskHandle<void>> m_loading;
    std::optional<TaskHandle<void>> m_pause;
};

} // namespace morvane
