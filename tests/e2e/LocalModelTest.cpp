#include "LocalModelTest.h"

#include "localmodel/RuntimeInstaller.h"
#include "support/SampleArchive.h"
#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QSysInfo>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr qint64 heldBytes = 2'000'000;

constexpr auto answers = R"json({
  "rules": [{"last_message_contains": "Say OK.", "turn": {"text": "OK"}}],
  "turns": [{"text": "Good morning to you."}, {"text": "And again."}],
  "title": "Good morning"
})json";

QString archivePath()
{
    return u"/download/"_s + runtimeArchives(QSysInfo::currentCpuArchitecture()).constFirst();
}

QString runtimeProgram()
{
    return QCoreApplication::applicationDirPath() + u"/scripted-runtime"_s;
}

/// Bytes that do not shrink when they are compressed.
QByteArray noise(qsizetype size)
{
    QByteArray bytes(size, 0);
    quint32 state = 5;
    for (char &byte : bytes)
        byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
    return bytes;
}

} // namespace

MorvaneSession &LocalModelTest::prepareHome()
{
    MorvaneSession &morvane =
        prepareProgram(QStringLiteral(MORVANE_ON_LOOPBACK), {}, Hearing::announcements, u"it's a home"_s);
    runtime = std::make_unique<RuntimeState>(morvane.home() + u"/runtime state"_s);
    runtime->tell(u"script.json"_s, answers);
    morvane.setVariable(u"SCRIPTED_RUNTIME"_s, runtime->folder());
    morvane.setVariable(u"MORVANE_TEST_RUNTIME_SITE"_s, site.origin());
    morvane.setVariable(u"MORVANE_TEST_RUNTIME_SERVER"_s, u"http://localhost:%1"_s.arg(unusedPort()));
    return morvane;
}

MorvaneSession &LocalModelTest::newcomer()
{
    MorvaneSession &morvane = prepareHome();
    morvane.forgetSettings();
    return morvane;
}

MorvaneSession &LocalModelTest::user()
{
    MorvaneSession &morvane = prepareHome();
    morvane.setSetting(u"provider"_s, u"ollama"_s);
    morvane.setSetting(u"model"_s, u"qwen2.5"_s);
    return morvane;
}

void LocalModelTest::haveProgram(MorvaneSession &morvane, const QByteArray &models)
{
    const QString folder = morvane.home() + u"/.local/bin"_s;
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(QFile::link(runtimeProgram(), folder + u"/ollama"_s));
    runtime->tell(u"models"_s, models);
}

void LocalModelTest::offerRuntime()
{
    QFile program(runtimeProgram());
    ASSERT_TRUE(program.open(QIODevice::ReadOnly));
    SampleArchive archive = sampleRuntime(program.readAll());
    site.setFile(archivePath(), {archive.file("./lib/ollama/noise", noise(3 * heldBytes)).bytes()});
}

void LocalModelTest::cutTheNetwork(MorvaneSession &morvane)
{
    morvane.setVariable(u"MORVANE_TEST_RUNTIME_SITE"_s, u"http://127.0.0.1:%1"_s.arg(unusedPort()));
}

void LocalModelTest::holdDownload()
{
    using Fault = DownloadServer::Fault;
    site.setFaults({{Fault::Kind::stall, heldBytes}});
}

bool LocalModelTest::downloads(MorvaneSession &morvane)
{
    return morvane.program().shows([](const AccessibleNode &node) {
        return node.name.contains(u"Downloading Ollama… 2 MB of "_s) && node.has(AccessibleState::visible);
    });
}

qint64 LocalModelTest::lastRangeStart() const
{
    const QList<RawHttpRequest> requests = site.requests();
    const QByteArray range =
        requests.isEmpty() ? QByteArray() : requests.constLast().headers.value("Range").value_or("");
    return range.startsWith("bytes=") ? range.sliced(6).chopped(1).toLongLong() : 0;
}

bool LocalModelTest::becomesReady(MorvaneSession &morvane)
{
    return morvane.ear().hears(text(ready)) && morvane.hasStatus(u"Ready"_s);
}

void LocalModelTest::TearDown()
{
    MorvaneTest::TearDown();
    runtime.reset();
}

} // namespace morvane
