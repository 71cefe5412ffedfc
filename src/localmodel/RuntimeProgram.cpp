#include "localmodel/RuntimeProgram.h"

#include "base/ChildProcess.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr auto contextLength = "16384"; // tokens
constexpr int standardPort = 11434;

void set(QList<QByteArray> &environment, const QByteArray &name, const QByteArray &value)
{
    environment.removeIf([&name](const QByteArray &variable) { return variable.startsWith(name + '='); });
    environment.append(name + '=' + value);
}

} // namespace

QStringList binaryCandidates(const QString &dataFolder)
{
    return {u"/Applications/Ollama.app/Contents/Resources/ollama"_s, dataFolder + u"/ollama"_s,
            u"/opt/homebrew/bin/ollama"_s, u"/usr/local/bin/ollama"_s,
            QDir::homePath() + u"/.local/bin/ollama"_s};
}

bool isExecutableFile(const QString &path)
{
    const QFileInfo file(path);
    return file.isFile() && file.isExecutable();
}

QString binaryPath(const QStringList &candidates)
{
    const auto found = std::find_if(candidates.begin(), candidates.end(), isExecutableFile);
    return found != candidates.end() ? *found : candidates.value(0);
}

QList<QByteArray> runtimeEnvironment(const QString &serverBase)
{
    const QUrl server(serverBase);
    const QString host = server.host() == "localhost"_L1 ? u"127.0.0.1"_s : server.host();
    QList<QByteArray> environment = currentEnvironment();
    set(environment, "OLLAMA_HOST", host.toUtf8() + ':' + QByteArray::number(server.port(standardPort)));
    return environment;
}

QList<QByteArray> serverEnvironment(const QString &serverBase)
{
    QList<QByteArray> environment = runtimeEnvironment(serverBase);
    set(environment, "OLLAMA_CONTEXT_LENGTH", contextLength);
    return environment;
}

} // namespace morvane
