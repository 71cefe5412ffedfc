#include "support/ScreenReader.h"

#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUuid>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

void copyFiles(const QString &from, const QString &to)
{
    for (const QString &name : QDir(from).entryList(QDir::Files))
        QFile::copy(from + u'/' + name, to + u'/' + name);
}

} // namespace

ScreenReader::ScreenReader(const PrivateDesktop &desktop, const QString &settings)
{
    const QString folder = desktop.newFolder(u"orca-"_s + QUuid::createUuid().toString(QUuid::Id128));
    copyFiles(settings, folder);
    m_spokenPath = folder + u"/spoken.txt"_s;
    m_logPath = folder + u"/orca.log"_s;
    QProcessEnvironment environment = desktop.environment();
    environment.insert(u"SILENT_SPEECH_FILE"_s, m_spokenPath);
    environment.insert(u"PYTHONPATH"_s, folder);
    environment.insert(u"PYTHONDONTWRITEBYTECODE"_s, u"1"_s);
    // The programs beside the settings stand for those of the system.
    environment.insert(u"PATH"_s, folder + u':' + environment.value(u"PATH"_s));
    m_process = std::make_unique<TestProgram>(
        u"/usr/bin/orca"_s, QStringList{u"--debug-file"_s, m_logPath, u"--user-prefs"_s, folder}, environment,
        folder + u"/output.txt"_s);
    if (!hears(u"Screen reader on."_s))
        throw std::runtime_error(("Orca does not start:\n"_L1 + m_process->log()).toStdString());
}

QStringList ScreenReader::spoken() const
{
    QFile file(m_spokenPath);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList pieces;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        if (line.endsWith('\n'))
            pieces.append(QJsonDocument::fromJson('[' + line + ']').array().first().toString());
    }
    return pieces;
}

QStringList ScreenReader::heard() const
{
    return spoken().mid(m_forgotten);
}

bool ScreenReader::hears(const QString &text) const
{
    return waitUntil([&] { return heard().contains(text); });
}

bool ScreenReader::hearsInOrder(const QStringList &texts) const
{
    return waitUntil([&] {
        qsizetype place = -1;
        const QStringList pieces = heard();
        for (const QString &text : texts) {
            place = pieces.indexOf(text, place + 1);
            if (place < 0)
                return false;
        }
        return true;
    });
}

void ScreenReader::forget()
{
    m_forgotten = spoken().size();
}

bool ScreenReader::takesIn(const QString &text, const std::function<void()> &write) const
{
    const qint64 logged = QFileInfo(m_logPath).size();
    write();
    const QByteArray written =
        "OBJECT EVENT: object:text-changed:insert (0, %1, %2)\n"_L1.arg(QString::number(text.size()), text)
            .toUtf8();
    const QByteArray dealtWith = "^^^^^ PROCESS OBJECT EVENT object:text-changed:insert ^^^^^\n"_ba;
    return waitUntil([&] {
        QFile log(m_logPath);
        if (!log.open(QIODevice::ReadOnly) || !log.seek(logged))
            return false;
        const QByteArray lines = log.readAll();
        const qsizetype begin = lines.indexOf(written);
        return begin >= 0 && lines.indexOf(dealtWith, begin) >= 0;
    });
}

void ScreenReader::keepEvidence(const QString &folder) const
{
    QDir().mkpath(folder);
    for (const QString &path : {m_spokenPath, m_logPath}) {
        const QString copy = folder + u'/' + path.section(u'/', -1);
        QFile::remove(copy);
        QFile::copy(path, copy);
    }
}

} // namespace morvane
