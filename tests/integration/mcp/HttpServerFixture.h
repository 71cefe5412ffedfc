#pragma once

#include "McpFixture.h"

#include "base/Json.h"
#include "mcp/JsonRpc.h"

#include <functional>

namespace morvane {

/// Remote servers, honest and hostile. They shake hands properly; what they do with calls a test says.
class HttpServerFixture : public McpTest {
protected:
    /// What a server answers to a request with this method and id; nothing for no body at all.
    using Reply =
        std::function<QByteArray(const RawHttpRequest &request, const boost::json::object &message)>;

    static boost::json::object textResult(const std::string &text)
    {
        const boost::json::object item{{"type", "text"}, {"text", text}};
        return {{"content", boost::json::array{item}}};
    }
    static QByteArray result(const boost::json::object &message, boost::json::object value)
    {
        const boost::json::object answer{
            {"jsonrpc", "2.0"}, {"id", message.at("id")}, {"result", std::move(value)}};
        return serializeJson(answer);
    }
    void serve(Reply onCall)
    {
        server.emplace(RawHttpServer::answering([onCall](const RawHttpRequest &request) {
            const boost::json::object message = parseJsonObject(request.body).value();
            if (!message.contains("id"))
                return rawHttpResponse(202, {});
            if (message.at("method") == "tools/call")
                return onCall(request, message);
            return rawHttpResponse(200, result(message, {{"tools", boost::json::array()}}),
                                   {{"Content-Type", "application/json"}, {"Mcp-Session-Id", "session-1"}});
        }));
        connection = http(server->url(QStringLiteral("/mcp")));
    }
    /// Every call is answered with this body, "ID" in it standing for the call's id.
    void serveBody(int status, const QByteArray &body)
    {
        serve([status, body](const RawHttpRequest &, const boost::json::object &message) {
            return rawHttpResponse(status, QByteArray(body).replace("ID", serializeJson(message.at("id"))));
        });
    }
    /// The same with a stream of events.
    void serveEvents(const QByteArray &stream)
    {
        serve([stream](const RawHttpRequest &, const boost::json::object &message) {
            return events(QByteArray(stream).replace("ID", serializeJson(message.at("id"))));
        });
    }
    static QByteArray events(const QByteArray &body)
    {
        return rawHttpHead(200, {{"Content-Type", "text/event-stream"}, {"Connection", "close"}}) + body;
    }
    QString echo() { return call(connection, QStringLiteral("echo")).text; }

    static inline const HttpHeaders jsonType{{"Content-Type", "application/json"}};
    static inline const HttpHeaders eventType{{"Content-Type", "text/event-stream"}};
    std::optional<RawHttpServer> server;
    std::shared_ptr<MCPConnection> connection;
};

} // namespace morvane
