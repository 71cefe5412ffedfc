#include "UpdateWorld.h"

#include "BuildTree.h"
#include "support/SampleArchive.h"
#include "support/UnusedPort.h"
#include "support/WaitUntil.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <filesystem>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const auto buildFile = u"Contents/MacOS/Morvane.build"_s;

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The folder with what try-update.sh has made; empty in the usual run.
QString trialFolder()
{
    return qEnvironmentVariable("MORVANE_UPDATE_TRIAL");
}

/// Where the newer build of a trial looks for its image, and the older one for both.
QUrl trialImage()
{
    const auto manifest = QJsonDocument::fromJson(contentOf(trialFolder() + u"/new/latest.json"_s));
    return QUrl(manifest["dmg"_L1].toString());
}

QString imageTarget()
{
    return UpdateWorld::isTrial() ? trialImage().path() : u"/downloads/Morvane.tar.zst"_s;
}

/// As the manifest's build asks for it.
QString imageFile()
{
    return imageTarget() + u"?v=" MORVANE_VERSION "-build2"_s;
}

/// All files below a folder, in order.
QStringList filesBelow(const QString &folder)
{
    QStringList found;
    QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext())
        found.append(files.next());
    std::sort(found.begin(), found.end());
    return found;
}

/// What a bundle is made of: each file with its place in it.
QList<std::pair<QString, QString>> parts()
{
    const QString build = build_tree::root();
    QList<std::pair<QString, QString>> found{{build_tree::morvaneOnLoopback(), u"Contents/MacOS/Morvane"_s}};
    for (const QString &folder : {u"/libexec/morvane"_s, u"/lib/morvane"_s, u"/share/morvane"_s})
        for (const QString &file : filesBelow(build + folder))
            found.append({file, u"Contents"_s + file.sliced(build.size())});
    return found;
}

QByteArray imageOfBuild2()
{
    if (UpdateWorld::isTrial())
        return contentOf(trialFolder() + u"/new/"_s + trialImage().fileName());
    SampleArchive archive;
    for (const auto &[source, place] : parts())
        archive.file("Morvane.app/" + place.toUtf8(), contentOf(source),
                     QFileInfo(source).isExecutable() ? 0755 : 0644);
    return archive.file("Morvane.app/" + buildFile.toUtf8(), "2").bytes();
}

QByteArray sha256Of(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().toUpper();
}

} // namespace

bool UpdateWorld::isTrial()
{
    return !trialFolder().isEmpty();
}

UpdateWorld::UpdateWorld(const QString &folder)
    : host(static_cast<quint16>(isTrial() ? trialImage().port() : 0)), m_folder(folder)
{
    QDir().mkpath(downloads());
    lay();
}

void UpdateWorld::lay() const
{
    QDir().mkpath(parent());
    if (isTrial()) {
        namespace fs = std::filesystem;
        fs::copy((trialFolder() + u"/old/Morvane.app"_s).toStdString(), app().toStdString(),
                 fs::copy_options::recursive);
        return;
    }
    for (const auto &[source, place] : parts()) {
        const QString target = app() + u'/' + place;
        QDir().mkpath(QFileInfo(target).path());
        QFile::copy(source, target);
    }
    QFile number(app() + u'/' + buildFile);
    if (number.open(QIODevice::WriteOnly))
        number.write("1");
}

qint64 UpdateWorld::size() const
{
    qint64 sum = 0;
    for (const QString &file : filesBelow(app()))
        sum += QFileInfo(file).size();
    return sum;
}

QByteArray UpdateWorld::fingerprint() const
{
    QCryptographicHash hash(QCryptographicHash::Blake2b_256);
    for (const QString &file : filesBelow(app())) {
        hash.addData(file.toUtf8());
        hash.addData(contentOf(file));
    }
    return hash.result().toHex();
}

QStringList UpdateWorld::beside() const
{
    QStringList names = QDir(parent()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    names.removeAll(u"Morvane.app"_s);
    return names + QDir(downloads()).entryList({u"Morvane-*"_s});
}

void UpdateWorld::prepare(MorvaneSession &morvane) const
{
    morvane.setVariable(u"TMPDIR"_s, downloads());
    morvane.setVariable(u"MORVANE_TEST_UPDATE_ORIGIN"_s, host.origin());
    morvane.setVariable(u"MORVANE_TEST_RUNTIME_SERVER"_s, u"http://localhost:%1"_s.arg(unusedPort()));
}

void UpdateWorld::publish(const QByteArray &sha256, const QByteArray &additions)
{
    host.setFile(u"/downloads/latest.json"_s,
                 {R"({"version": ")" MORVANE_VERSION R"(", "build": 2, "date": "2026-11-22", "dmg": ")" +
                  (host.origin() + imageTarget()).toUtf8() + R"(", "sha256": ")" + sha256 +
                  R"(", "notes": ["Opens large conversations at once."])" + additions + '}'});
}

void UpdateWorld::offer(const QByteArray &additions)
{
    // The same for every test, and under the sanitizers it takes seconds.
    static const QByteArray image = imageOfBuild2();
    static const QByteArray sha256 = sha256Of(image);
    host.setFile(imageFile(), {image});
    publish(sha256, additions);
}

void UpdateWorld::offerImage(const QByteArray &image)
{
    host.setFile(imageFile(), {image});
    publish(sha256Of(image), {});
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
