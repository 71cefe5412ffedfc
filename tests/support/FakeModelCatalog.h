#pragma once

#include "async/OneShot.h"
#include "providers/ModelCatalog.h"

#include <QList>
#include <QMap>

namespace morvane {

/// Lists of models that a test writes down, and who asked for them. While `held` is set, questions wait until
/// the test answers them.
class FakeModelCatalog final : public ModelCatalog {
public:
    struct Question {
        ProviderID provider = ProviderID::ollama;
        QString apiKey;
        QString baseURL;
        bool operator==(const Question &) const = default;
    };

    Task<CatalogModels> load(ProviderID provider, QString apiKey, QString baseURL) override
    {
        questions.append({provider, apiKey, baseURL});
        if (!held)
            co_return lists.value(provider);
        OneShot<CatalogModels> answer;
        m_waiting.append(answer);
        co_return co_await answer.wait();
    }

    /// Answers the question of this number, in the order in which they were asked while held.
    void answer(qsizetype number, const CatalogModels &models) { m_waiting[number].resume(models); }

    QMap<ProviderID, CatalogModels> lists;
    bool held = false;
    QList<Question> questions;

private:
    QList<OneShot<CatalogModels>> m_waiting;
};

} // namespace morvane
