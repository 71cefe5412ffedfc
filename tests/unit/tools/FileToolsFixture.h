#pragma once

#include "support/TemporaryHome.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {

/// Takes root's rights from the thread's process, which the tests run with in containers, as long as it
/// lives.
class WithoutRootRights {
public:
    explicit WithoutRootRights(const QString &home)
    {
        constexpr uid_t nobody = 65534;
        if (::geteuid() == 0 &&
            (::chown(QFile::encodeName(home).constData(), nobody, gid_t(-1)) != 0 || ::seteuid(nobody) != 0))
            ADD_FAILURE() << "cannot give up the rights of root";
    }
    ~WithoutRootRights() { EXPECT_EQ(::seteuid(::getuid()), 0); }
};

class FileToolsTest : public testing::Test {
protected:
    QString path(const QString &relative = {}) const { return home.path(relative); }
    QString write(const QString &relative, const QByteArray &content) const
    {
        return home.write(relative, content);
    }
    void makeFolder(const QString &relative) const { ASSERT_TRUE(QDir().mkpath(path(relative))); }
    void makePipe(const QString &relative) const
    {
        ASSERT_EQ(::mkfifo(QFile::encodeName(path(relative)).constData(), 0600), 0);
    }
    void makeLink(const QString &target, const QString &relative) const
    {
        ASSERT_TRUE(QFile::link(target, path(relative)));
    }

    TemporaryHome home;
};

} // namespace morvane
