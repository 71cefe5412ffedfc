#pragma once

#include "async/Task.h"
#include "net/HttpRequest.h"
#include "tools/WebEndpoints.h"
#include "tools/WebLimits.h"

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <chrono>
#include <expected>

namespace morvane {

class HttpClient;

/// The tools that search and read the web with plain requests, without a search key and without a browser.
/// They answer texts and never throw; what a page holds is read on a background thread. Cancelling the task
/// ends the request at once. `http` outlives it, and it outlives its tasks. Main thread.
class WebTools {
public:
    WebTools(HttpClient &http, WebEndpoints endpoints, WebLimits limits = {});

    /// The first 6 results, or what duckDuckGoInstantAnswer has if the results page shows none.
    Task<QString> webSearch(QString query);

    /// What the search service itself knows about the query: a summary and related topics.
    Task<QString> duckDuckGoInstantAnswer(QString query);

    /// The first 6,000 characters of the text of a page in UTF-8, on one line.
    Task<QString> webFetch(QString url);

private:
    /// A body, or nothing of it but that it is too large.
    struct Page {
        int status = 0;
        QByteArray body;
        bool tooLarge = false;

        /// 200 to 299.
        bool isSuccess() const { return status >= 200 && status <= 299; }
    };

    HttpRequest request(const QUrl &url) const;
    /// The page, or why there is none.
    Task<std::expected<Page, QString>> load(HttpRequest request);
    static Task<Page> receive(HttpClient *http, HttpRequest request, qint64 maximumBytes);
    static Task<Page> failWhenLate(std::chrono::milliseconds limit);

    HttpClient &m_http;
    const WebEndpoints m_endpoints;
    const WebLimits m_limits;
};

} // namespace morvane
