#pragma once

#include "async/SystemClock.h"
#include "net/HttpClient.h"
#include "support/RawHttpServer.h"
#include "support/RunTask.h"

#include <QList>
#include <gtest/gtest.h>
#include <optional>

namespace morvane {

/// A client on real time, and the tasks that most tests run.
class NetTest : public testing::Test {
protected:
    SystemClock clock;
    Scheduler scheduler{clock};
    HttpClient client;

    /// Large enough for every body that a test does not mean to be too large.
    static constexpr qint64 ampleBytes = 128 * 1024 * 1024;

    static HttpRequest get(const QUrl &url)
    {
        HttpRequest request;
        request.url = url;
        return request;
    }
    static HttpRequest post(const QUrl &url, const QByteArray &body)
    {
        HttpRequest request = get(url);
        request.method = "POST";
        request.body = body;
        return request;
    }

    FetchResult fetch(HttpRequest request, qint64 maximumBytes = ampleBytes)
    {
        return runTask(scheduler, client.fetch(std::move(request), maximumBytes));
    }

    /// What a body that was read line by line gave, and how it ended.
    struct Lines {
        QList<QByteArray> lines;
        std::optional<TransportError::Kind> error;
    };
    static Task<Lines> readLines(Task<HttpResponse> opening)
    {
        HttpResponse response = co_await std::move(opening);
        LineReader reader = response.lines();
        Lines result;
        try {
            while (auto line = co_await reader.next())
                result.lines.append(*line);
        } catch (const TransportError &error) {
            result.error = error.kind();
        }
        co_return result;
    }
    Lines linesOf(HttpRequest request)
    {
        return runTask(scheduler, readLines(client.open(std::move(request))));
    }

    static Task<std::optional<QByteArray>> nextOf(LineReader *reader) { co_return co_await reader->next(); }

    /// How a request fails; nothing if it does not.
    template <class T> std::optional<TransportError::Kind> failureOf(Task<T> task)
    {
        try {
            runTask(scheduler, std::move(task));
        } catch (const TransportError &error) {
            return error.kind();
        }
        return std::nullopt;
    }
    std::optional<TransportError::Kind> fetchFailure(HttpRequest request, qint64 maximumBytes = ampleBytes)
    {
        return failureOf(client.fetch(std::move(request), maximumBytes));
    }
};

/// A condition that a test opens for a server's script, or the other way round.
using Gate = std::atomic<bool>;

} // namespace morvane
