#pragma once

#include "providers/Endpoints.h"
#include "providers/ModelCatalog.h"

#include <QByteArray>
#include <QUrl>
#include <optional>

namespace morvane {

class HttpClient;
struct HttpRequest;

/// Asks the providers over HTTP, without retries: 10 seconds of silence or half a minute altogether end a
/// request, and so do 16 MB. Only status 200 counts. Replies are read off the main thread. Main thread.
class HttpModelCatalog final : public ModelCatalog {
public:
    /// `client` must outlive the catalog.
    explicit HttpModelCatalog(HttpClient &client, Endpoints endpoints = {});

    Task<CatalogModels> load(ProviderID provider, QString apiKey, QString baseURL) override;

    Task<CatalogModels> openRouter();
    Task<CatalogModels> groq(QString apiKey);
    Task<CatalogModels> gemini(QString apiKey);
    Task<CatalogModels> openAI(QString apiKey);
    Task<CatalogModels> ollama();
    Task<CatalogModels> zen();
    /// No list for a base URL from which modelsListURL makes none.
    Task<CatalogModels> custom(QString baseURL, QString apiKey);

private:
    /// The body of a GET, with `bearer` as its key unless that is empty; nothing for any failure and any
    /// status but 200.
    Task<std::optional<QByteArray>> get(QUrl url, QString bearer);
    Task<std::optional<QByteArray>> fetch(HttpRequest request);
    Task<CatalogModels> list(ProviderID provider, QUrl url, QString bearer);

    HttpClient &m_client;
    Endpoints m_endpoints;
};

} // namespace morvane
