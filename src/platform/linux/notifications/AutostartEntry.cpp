#include "platform/linux/notifications/AutostartEntry.h"

#include "base/AtomicFile.h"
#include "platform/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <tuple>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// A text as the value of a key.
QString entryValue(QString text)
{
    return text.replace(u'\\', u"\\\\"_s).replace(u'\n', u"\\n"_s);
}

/// An argument of an `Exec` line: quoted for the reader of the line, then once more for the reader of values.
QString execArgument(const QString &text)
{
    QString quoted;
    for (const QChar character : text) {
        if (character == u'%') {
            quoted += u"%%"_s;
            continue;
        }
        if (character == u'"' || character == u'`' || character == u'$' || character == u'\\')
            quoted += u'\\';
        quoted += character;
    }
    return entryValue(u'"' + quoted + u'"');
}

} // namespace

AutostartEntry::AutostartEntry(const QString &configFolder, QString helper)
    : m_path(configFolder + u"/autostart/morvane-reminder.desktop"_s), m_helper(std::move(helper))
{
}

void AutostartEntry::ensure() const
{
    // A desktop passes over what it cannot try: the entry outlives a program that was removed by hand.
    const QByteArray entry = (u"[Desktop Entry]\nType=Application\nName=Morvane reminders\n"
                              "Comment=Sets the alarms of your pending reminders\nTryExec="_s +
                              entryValue(m_helper) + u"\nExec="_s + execArgument(m_helper) +
                              u" rearm\nNoDisplay=true\nTerminal=false\n"_s)
                                 .toUtf8();
    QFile file(m_path);
    if (file.open(QIODevice::ReadOnly) && file.read(entry.size() + 1) == entry)
        return;
    // The folder belongs to the whole desktop: one that exists keeps its permissions.
    const QString folder = QFileInfo(m_path).path();
    if (!QFileInfo::exists(folder)) {
        QDir().mkpath(QFileInfo(folder).path());
        QDir().mkdir(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    if (const auto written = writeFileAtomically(m_path, entry); !written)
        qCWarning(platformLog) << "no autostart entry:" << written.error();
}

void AutostartEntry::remove() const
{
    QFile::remove(m_path);
}

} // namespace morvane
