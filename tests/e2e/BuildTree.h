#pragma once

#include <QCoreApplication>
#include <QFileInfo>
#include <QString>

/// What was built together with the tests that run: their objects are linked in more than one build, so that
/// they know these places from where their own program lies.
namespace morvane::build_tree {

/// The build folder.
inline QString root()
{
    return QFileInfo(QCoreApplication::applicationDirPath()).path();
}

inline QString program(const QString &name)
{
    return root() + QStringLiteral("/bin/") + name;
}

/// The program as users get it.
inline QString morvane()
{
    return program(QStringLiteral("morvane"));
}

/// The program that looks for the runtime of local models, and for updates, on this computer only.
inline QString morvaneOnLoopback()
{
    return program(QStringLiteral("morvane-on-loopback"));
}

/// The library that ends a program in the middle of its update (tests/tools/CrashPoint.cpp).
inline QString crashPoint()
{
    return root() + QStringLiteral("/lib/libcrash-point.so");
}

/// Where a test that fails leaves what it saw.
inline QString evidence(const char *suite, const char *test)
{
    return root() + QStringLiteral("/evidence/%1.%2").arg(QString::fromUtf8(suite), QString::fromUtf8(test));
}

} // namespace morvane::build_tree
