#include "RuntimeWorld.h"

#include "BuildTree.h"
#include "localmodel/RuntimeInstaller.h"
#include "support/SampleArchive.h"
#include "support/UnusedPort.h"

#include <QDir>
#include <QFile>
#include <QSysInfo>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

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
    return build_tree::program(u"scripted-runtime"_s);
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

RuntimeWorld::RuntimeWorld(MorvaneSession &morvane)
    : runtime(morvane.home() + u"/runtime state"_s), m_morvane(morvane)
{
    runtime.tell(u"script.json"_s, answers);
    morvane.setVariable(u"SCRIPTED_RUNTIME"_s, runtime.folder());
    morvane.setVariable(u"MORVANE_TEST_RUNTIME_SITE"_s, site.origin());
    morvane.setVariable(u"MORVANE_TEST_RUNTIME_SERVER"_s, u"http://localhost:%1"_s.arg(unusedPort()));
}

void RuntimeWorld::haveProgram(const QByteArray &models)
{
    const QString folder = m_morvane.home() + u"/.local/bin"_s;
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(QFile::link(runtimeProgram(), folder + u"/ollama"_s));
    runtime.tell(u"models"_s, models);
}

void RuntimeWorld::offerRuntime()
{
    QFile program(runtimeProgram());
    ASSERT_TRUE(program.open(QIODevice::ReadOnly));
    SampleArchive archive = sampleRuntime(program.readAll());
    site.setFile(archivePath(), {archive.file("./lib/ollama/noise", noise(3 * heldBytes)).bytes()});
}

void RuntimeWorld::cutTheNetwork()
{
    m_morvane.setVariable(u"MORVANE_TEST_RUNTIME_SITE"_s, u"http://127.0.0.1:%1"_s.arg(unusedPort()));
}

void RuntimeWorld::holdDownload()
{
    site.setFaults({{DownloadServer::Fault::Kind::stall, heldBytes}});
}

qint64 RuntimeWorld::lastRangeStart() const
{
    const QList<RawHttpRequest> requests = site.requests();
    const QByteArray range =
        requests.isEmpty() ? QByteArray() : requests.constLast().headers.value("Range").value_or("");
    return range.startsWith("bytes=") ? range.sliced(6).chopped(1).toLongLong() : 0;
}

} // namespace morvane
