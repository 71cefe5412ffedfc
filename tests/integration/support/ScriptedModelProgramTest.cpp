#include "async/SystemClock.h"
#include "base/Json.h"
#include "net/HttpClient.h"
#include "support/RunTask.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace morvane {
namespace {

/// The program scripted-model, as rehearsals and end-to-end tests use it.
class ScriptedModelProgramTest : public testing::Test {
protected:
    SystemClock clock;
    Scheduler scheduler{clock};
    HttpClient client;
    QTemporaryDir folder;
    QProcess program;
    QByteArray origin;

    void start(const QByteArray &script)
    {
        QFile file(folder.filePath("script.json"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(script);
        file.close();
        program.start(QCoreApplication::applicationDirPath() + "/scripted-model",
                      {file.fileName(), "--requests", folder.filePath("requests.jsonl")});
        ASSERT_TRUE(program.waitForReadyRead(10'000)) << program.readAllStandardError().constData();
        origin = "http://127.0.0.1:" + program.readLine().trimmed();
    }
    void TearDown() override
    {
        program.terminate();
        EXPECT_TRUE(program.waitForFinished(10'000));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    }

    FetchResult ask(const char *method, const QByteArray &path, const QByteArray &body = {})
    {
        HttpRequest request;
        request.method = method;
        request.url = QUrl(QString::fromUtf8(origin + path));
        request.body = body;
        return runTask(scheduler, client.fetch(request, 1024 * 1024));
    }
    QByteArray chat(const QByteArray &body = "{}") { return ask("POST", "/v1/chat/completions", body).body; }

    QList<boost::json::object> recordedRequests()
    {
        QFile file(folder.filePath("requests.jsonl"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QList<boost::json::object> result;
        for (const QByteArray &line : file.readAll().trimmed().split('\n'))
            result.append(parseJsonObject(line).value());
        return result;
    }
};

TEST_F(ScriptedModelProgramTest, AnswersTurnsInOrderAndTitlesApart)
{
    start(R"({"turns":[{"text":"one"},{"text":"two"}],"afterwards":{"text":"rest"},"title":"A title",
              "rules":[{"last_message_contains":"special","turn":{"text":"ruled"}}]})");
    EXPECT_TRUE(chat().contains("\"one\""));
    EXPECT_TRUE(chat(R"({"messages":[{"role":"system","content":"Generate a very short title of it"}]})")
                    .contains("\"A title\""));
    EXPECT_TRUE(chat(R"({"messages":[{"role":"user","content":[{"type":"text","text":"special"}]}]})")
                    .contains("\"ruled\""));
    EXPECT_TRUE(chat().contains("\"two\""));
    EXPECT_TRUE(chat().contains("\"rest\""));
    const auto requests = recordedRequests();
    ASSERT_EQ(requests.size(), 5);
    EXPECT_EQ(requests[0].at("turn"), 0);
    EXPECT_EQ(requests[1].at("turn"), -1);
    EXPECT_EQ(requests[3].at("turn"), 1);
    EXPECT_EQ(requests[0].at("target"), "/v1/chat/completions");
}

TEST_F(ScriptedModelProgramTest, SequenceThatIsUsedUpIsAnError)
{
    start("{}");
    const FetchResult result = ask("POST", "/v1/chat/completions", "{}");
    EXPECT_EQ(result.status, 400);
    EXPECT_TRUE(result.body.contains("no more turns"));
}

TEST_F(ScriptedModelProgramTest, AnswersProbesAndRoutes)
{
    start(R"({"models":["m:latest"],"routes":{"GET /v1/models":{"body":{"data":[]}}}})");
    EXPECT_EQ(ask("GET", "/api/version").body, R"({"version":"0.5.0"})");
    EXPECT_EQ(ask("GET", "/api/tags").body, R"({"models":[{"name":"m:latest","model":"m:latest"}]})");
    EXPECT_EQ(ask("GET", "/v1/models?limit=1").body, R"({"data":[]})");
    EXPECT_EQ(ask("GET", "/elsewhere").status, 404);
}

TEST_F(ScriptedModelProgramTest, StalledAnswerWaitsForItsRelease)
{
    start(R"({"turns":[{"steps":[{"text":"a"},{"stall":true},{"text":"b"}]}]})");
    HttpRequest request;
    request.method = "POST";
    request.url = QUrl(QString::fromUtf8(origin + "/v1/chat/completions"));
    request.body = "{}";
    auto stalled = scheduler.spawn(client.fetch(request, 1024 * 1024));
    ASSERT_TRUE(waitUntil([&] { return QFile(folder.filePath("requests.jsonl")).size() > 0; }));
    settle();
    EXPECT_FALSE(stalled.done());
    ask("POST", "/control/release");
    ASSERT_TRUE(waitUntil([&] { return stalled.done(); }));
    EXPECT_TRUE(stalled.result().body.contains("\"b\""));
}

} // namespace
} // namespace morvane
