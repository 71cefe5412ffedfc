#include "UpdateWorld.h"

#include "support/UnusedPort.h"
#include "support/WaitUntil.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const auto imageTarget = u"/downloads/Morvane.tar.zst"_s;
const auto buildFile = u"Contents/MacOS/Morvane.build"_s;

/// What a bundle is made of: each file with its place in it.
QList<std::pair<QString, QString>> parts()
{
    const QString build = QStringLiteral(MORVANE_BUILD_FOLDER);
    QList<std::pair<QString, QString>> found{
        {QStringLiteral(MORVANE_ON_LOOPBACK), u"Contents/MacOS/Morvane"_s}};
    for (const QString &folder : {u"/libexec/morvane"_s, u"/lib/morvane"_s, u"/share/morvane"_s}) {
        QDirIterator files(build + folder, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString file = files.next();
            found.append({file, u"Contents"_s + file.sliced(build.size())});
        }
    }
    return found;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

UpdateWorld::UpdateWorld(const QString &folder) : m_folder(folder)
{
    lay();
}

void UpdateWorld::lay() const
{
    for (const auto &[source, place] : parts()) {
        const QString target = app() + u'/' + place;
        QDir().mkpath(QFileInfo(target).path());
        QFile::copy(source, target);
    }
    QFile number(app() + u'/' + buildFile);
    if (number.open(QIODevice::WriteOnly))
        number.write("1");
    QDir().mkpath(m_folder + u"/temporary"_s);
}

QStringList UpdateWorld::beside() const
{
    QStringList names = QDir(parent()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    names.removeAll(u"Morvane.app"_s);
    return names + QDir(m_folder + u"/temporary"_s).entryList({u"Morvane-*"_s});
}

void UpdateWorld::prepare(MorvaneSession &morvane) const
{
    morvane.setVariable(u"TMPDIR"_s, m_folder + u"/temporary"_s);
    morvane.setVariable(u"MORVANE_TEST_UPDATE_ORIGIN"_s, host.origin());
    morvane.setVariable(u"MORVANE_TEST_RUNTIME_SERVER"_s, u"http://localhost:%1"_s.arg(unusedPort()));
}

SampleArchive UpdateWorld::image() const
{
    SampleArchive archive;
    for (const auto &[source, place] : parts())
        archive.file("Morvane.app/" + place.toUtf8(), contentOf(source),
                     QFileInfo(source).isExecutable() ? 0755 : 0644);
    return archive.file("Morvane.app/" + buildFile.toUtf8(), "2");
}

void UpdateWorld::publish(const QByteArray &sha256, const QByteArray &additions)
{
    host.setFile(u"/downloads/latest.json"_s,
                 {R"({"version": ")" MORVANE_VERSION R"(", "build": 2, "date": "2026-11-22", "dmg": ")" +
                  (host.origin() + imageTarget).toUtf8() + R"(", "sha256": ")" + sha256 +
                  R"(", "notes": ["Opens large conversations at once."])" + additions + '}'});
}

void UpdateWorld::offer(const QByteArray &additions)
{
    const QByteArray bytes = image().bytes();
    host.setFile(imageTarget + u"?v=" MORVANE_VERSION "-build2"_s, {bytes});
    publish(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().toUpper(), additions);
}

void UpdateWorld::offerWithWrongHash()
{
    offer();
    publish(QByteArray(64, '0'), {});
}

qint64 UpdateWorld::process() const
{
    qint64 found = 0;
    waitUntil([this, &found] {
        for (const QString &name : QDir(u"/proc"_s).entryList(QDir::Dirs))
            if (QFile::symLinkTarget(u"/proc/%1/exe"_s.arg(name)) == program())
                found = name.toLongLong();
        return found > 0;
    });
    return found;
}

} // namespace morvane
