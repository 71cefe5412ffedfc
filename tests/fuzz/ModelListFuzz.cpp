#include "providers/ModelList.h"

#include <cstdlib>

/// Whatever a provider replies, the list is bounded, in order and free of names that cannot be shown.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    const QByteArrayView reply(data, static_cast<qsizetype>(size));
    for (const ProviderID provider : allProviders) {
        const CatalogModels models = modelListFromReply(provider, reply);
        if (!models)
            continue;
        if (models->isEmpty() || models->size() > mostListedModels || finished(*models) != models)
            std::abort();
        for (const CatalogModel &model : *models)
            if (model.name.isEmpty() || model.name.size() > longestModelName || model.name.contains(u'\n'))
                std::abort();
    }
    return 0;
}
