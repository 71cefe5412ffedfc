#pragma once

#include "async/SystemClock.h"
#include "net/HttpClient.h"
#include "support/RawHttpServer.h"
#include "support/RunTask.h"
#include "tools/WebTools.h"

#include <gtest/gtest.h>
#include <memory>

namespace morvane {

/// The web tools against a server of the test's own, which also plays the search service.
class WebTest : public testing::Test {
protected:
    void serve(RawHttpServer::Script script, WebLimits limits = {})
    {
        server = std::make_unique<RawHttpServer>(std::move(script));
        const QString origin = QStringLiteral("http://127.0.0.1:%1").arg(server->port());
        tools = std::make_unique<WebTools>(client, WebEndpoints{origin, origin}, limits);
    }
    /// Answers every request with these bytes and ends the connection.
    void serveBytes(const QByteArray &bytes)
    {
        serve([bytes](RawHttpConnection &connection) {
            connection.readRequest();
            connection.send(bytes);
        });
    }
    void serveBody(const QByteArray &body) { serveBytes(rawHttpResponse(200, body)); }

    QString url(const QString &path = QStringLiteral("/page")) const { return server->url(path).toString(); }
    QString fetch() { return runTask(scheduler, tools->webFetch(url())); }
    QString search(const QString &query) { return runTask(scheduler, tools->webSearch(query)); }

    SystemClock clock;
    Scheduler scheduler{clock};
    HttpClient client;
    std::unique_ptr<RawHttpServer> server;
    std::unique_ptr<WebTools> tools;
};

/// Only the fields of this name.
inline QByteArray header(const RawHttpRequest &request, QByteArrayView name)
{
    return request.headers.value(name).value_or(QByteArray());
}

} // namespace morvane
