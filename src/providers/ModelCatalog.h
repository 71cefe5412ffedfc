#pragma once

#include "async/Task.h"
#include "model/ProviderID.h"
#include "providers/CatalogModel.h"

#include <QString>

namespace morvane {

/// Where the full lists of the providers' models come from. Nothing is kept here. Main thread.
class ModelCatalog {
public:
    virtual ~ModelCatalog() = default;

    /// The list of `provider`, in the order in which it is offered: free models first, then those of which
    /// that is not known, each group by name. `baseURL` is for `custom` only. A failure of any kind gives no
    /// list; throws Cancelled only.
    virtual Task<CatalogModels> load(ProviderID provider, QString apiKey, QString baseURL) = 0;
};

} // namespace morvane
