#pragma once

#include <QList>
#include <QString>
#include <optional>

namespace morvane {

/// One entry of a provider's own list of models.
struct CatalogModel {
    QString name;               ///< Also its identity.
    std::optional<bool> isFree; ///< Absent means not known.

    bool operator==(const CatalogModel &) const = default;
};

/// A provider's list; absent when it could not be had. Never empty.
using CatalogModels = std::optional<QList<CatalogModel>>;

} // namespace morvane
