#pragma once

#include "model/ProviderID.h"

#include <QList>
#include <QString>
#include <optional>

namespace morvane {

/// A model that is offered before the provider's own list is there.
struct ProviderModel {
    QString name;
    std::optional<bool> isFree; ///< Absent means not known.

    bool operator==(const ProviderModel &) const = default;
};

/// A well-known server for the custom provider.
struct CustomPreset {
    QString name; ///< Also its identity.
    QString baseURL;
    bool needsKey = false;
    QString note;

    bool operator==(const CustomPreset &) const = default;
};

/// The models shown at once, and whenever the full list cannot be had; empty for `custom`.
QList<ProviderModel> curatedModels(ProviderID provider);

/// What the settings say about a provider: cost, limits, privacy.
QString providerNote(ProviderID provider);

/// The presets of the custom provider, in the order in which they are offered.
QList<CustomPreset> customPresets();

} // namespace morvane
