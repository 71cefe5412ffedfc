#pragma once

#include "base/InstalledFiles.h"
#include "support/SampleBundle.h"
#include "support/TemporaryHome.h"
#include "update/BundleInstallation.h"
#include "update/UpdateRemains.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gmock/gmock.h>

namespace morvane {

/// A bundle of the old version in a folder with blanks and a quote in its path, and images of the new one.
class BundleTest : public testing::Test {
protected:
    using Result = BundleInstallation::Result;

    BundleTest() { layOldBundle(); }

    QString parent() const { return home.path(QStringLiteral("it's my programs")); }
    QString app() const { return parent() + QStringLiteral("/Morvane.app"); }
    QString relauncher() const
    {
        return InstalledFiles(app() + QStringLiteral("/Contents"))
            .helper(QStringLiteral("morvane-relauncher"));
    }
    QString marker() const { return home.path(QStringLiteral("relaunched")); }
    RunningBundle bundle() const { return {app(), parent()}; }

    /// Its relauncher only writes down what it is told.
    void layOldBundle()
    {
        const QString programs = app() + QStringLiteral("/Contents/MacOS/");
        ASSERT_TRUE(QDir().mkpath(programs));
        writeProgram(programs + QStringLiteral("Morvane"), "old");
        writeProgram(programs + QStringLiteral("library"), "old library");
        ASSERT_TRUE(QDir().mkpath(QFileInfo(relauncher()).path()));
        writeProgram(relauncher(), "#!/bin/sh\nprintf '%s\\n' \"$@\" > '" + marker().toUtf8() + "'\n");
    }

    QString write(const SampleArchive &image) const { return write(image.bytes()); }
    QString write(const QByteArray &image) const { return home.write(QStringLiteral("image"), image); }

    /// All steps of an installation up to the relaunch.
    Result install(const QString &image) const { return BundleInstallation(bundle()).replace(image); }

    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// "old" or "new", by what a start of the bundle would start; anything else is no whole program.
    QByteArray version() const
    {
        const QByteArray program = contentOf(app() + QStringLiteral("/Contents/MacOS/Morvane"));
        const QByteArray library = contentOf(app() + QStringLiteral("/Contents/MacOS/library"));
        return library == program + " library" ? program : "half of one";
    }
    /// What lies beside the bundle.
    QStringList beside() const
    {
        QStringList names =
            QDir(parent()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        names.removeAll(QStringLiteral("Morvane.app"));
        return names;
    }

    TemporaryHome home;

private:
    static void writeProgram(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
        ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
};

} // namespace morvane
