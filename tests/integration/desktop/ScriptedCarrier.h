#pragma once

#include <QFile>
#include <QString>
#include <gtest/gtest.h>

namespace morvane {

/// Writes a program of shell commands that takes the place of what carries actions, and returns its path. Its
/// commands may `take` a request, and `tell KIND NUMBER`, the kind being a number of ActionSign::Kind.
inline QString scriptedCarrier(const QString &path, const QString &commands)
{
    QFile script(path);
    EXPECT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\n"
                 "take() { head -c $(od -An -tu4 -N4 <&3) <&3 >/dev/null; }\n"
                 "tell() { printf \"\\\\00$1\\\\000\\\\000\\\\000\\\\00$2\\\\000\\\\000\\\\000\" >&3; }\n");
    script.write(commands.toUtf8());
    script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return script.fileName();
}

} // namespace morvane
