#include "support/TemporaryHome.h"
#include "update/UpdateSignature.h"

#include <QProcess>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}

TEST(SignUpdateTest, WhatTheScriptSignsIsTakenByTheProgram)
{
    const TemporaryHome home;
    const QString key = home.path(u"key.pem"_s);
    outputOf(u"openssl"_s, {u"genpkey"_s, u"-algorithm"_s, u"ed25519"_s, u"-out"_s, key});
    const QByteArray publicKey =
        outputOf(u"openssl"_s, {u"pkey"_s, u"-in"_s, key, u"-pubout"_s, u"-outform"_s, u"DER"_s}).last(32);
    const QString manifest =
        home.write(u"a folder/latest.json"_s, R"({"version": "1.3 ü", "build": 7, "date": "today",
        "dmg": "https://updates.example/image", "sha256": "ABCDEF", "notes": ["Größer."]})");
    outputOf(QStringLiteral(MORVANE_SOURCE_DIR "/packaging/sign-update.sh"), {key, manifest});

    auto update = UpdateInfo::fromJson(home.read(u"a folder/latest.json"_s));
    ASSERT_TRUE(update);
    EXPECT_EQ(update->notes, QStringList{u"Größer."_s});
    EXPECT_TRUE(isSignedBy(publicKey, *update));
    update->build = 8;
    EXPECT_FALSE(isSignedBy(publicKey, *update));
}

} // namespace
} // namespace morvane
