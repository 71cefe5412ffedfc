#include "support/RuntimeState.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QSaveFile>
#include <csignal>

using namespace Qt::StringLiterals;

namespace morvane {

RuntimeState::RuntimeState(QString folder) : m_folder(std::move(folder))
{
    QDir().mkpath(m_folder);
}

RuntimeState::~RuntimeState()
{
    const qint64 server = known(u"server"_s).split('\n').constFirst().toLongLong();
    if (server > 1)
        ::kill(static_cast<pid_t>(server), SIGKILL);
}

void RuntimeState::tell(const QString &file, const QByteArray &content) const
{
    QSaveFile saved(m_folder + u'/' + file);
    if (!saved.open(QIODevice::WriteOnly) || saved.write(content) != content.size() || !saved.commit())
        qFatal("the scripted runtime cannot be told anything");
}

void RuntimeState::forget(const QString &file) const
{
    QFile::remove(m_folder + u'/' + file);
}

QByteArray RuntimeState::known(const QString &file) const
{
    QFile stored(m_folder + u'/' + file);
    return stored.open(QIODevice::ReadOnly) ? stored.readAll() : QByteArray();
}

QStringList RuntimeState::calls() const
{
    QStringList calls;
    for (const QByteArray &line : known(u"calls"_s).split('\n'))
        if (!line.isEmpty())
            calls.append(QString::fromUtf8(line.left(line.lastIndexOf(' '))));
    return calls;
}

QList<QJsonObject> RuntimeState::chats() const
{
    QList<QJsonObject> chats;
    for (const QByteArray &line : known(u"requests"_s).split('\n')) {
        const QJsonObject request = QJsonDocument::fromJson(line).object().value("json"_L1).toObject();
        if (!request.isEmpty() && !QJsonDocument(request).toJson().contains("Say OK."))
            chats.append(request);
    }
    return chats;
}

} // namespace morvane
