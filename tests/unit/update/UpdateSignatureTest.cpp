#include "update/UpdateSignature.h"

#include "net/HttpClient.h"
#include "support/FakeUpdateService.h"
#include "update/HostedUpdates.h"

#include <gtest/gtest.h>
#include <sodium/core.h>
#include <sodium/crypto_sign_ed25519.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class UpdateSignatureTest : public testing::Test {
protected:
    UpdateSignatureTest()
    {
        EXPECT_GE(::sodium_init(), 0);
        ::crypto_sign_ed25519_keypair(reinterpret_cast<unsigned char *>(publicKey.data()),
                                      reinterpret_cast<unsigned char *>(secretKey.data()));
        update.signature = signatureOf(update);
    }

    QString signatureOf(const UpdateInfo &signedUpdate) const
    {
        const QByteArray text = signedText(signedUpdate);
        QByteArray signature(crypto_sign_ed25519_BYTES, 0);
        ::crypto_sign_ed25519_detached(reinterpret_cast<unsigned char *>(signature.data()), nullptr,
                                       reinterpret_cast<const unsigned char *>(text.data()),
                                       static_cast<unsigned long long>(text.size()),
                                       reinterpret_cast<const unsigned char *>(secretKey.data()));
        return QString::fromLatin1(signature.toHex());
    }

    QByteArray publicKey = QByteArray(crypto_sign_ed25519_PUBLICKEYBYTES, 0);
    QByteArray secretKey = QByteArray(crypto_sign_ed25519_SECRETKEYBYTES, 0);
    UpdateInfo update = sampleUpdate();
};

TEST_F(UpdateSignatureTest, TheSignedTextIsHashBuildAndVersion)
{
    update.sha256 = u"ABC"_s;
    EXPECT_EQ(signedText(update), "Morvane update\nabc\n7\n1.3");
}

TEST_F(UpdateSignatureTest, TheOwnersSignatureIsTaken)
{
    EXPECT_TRUE(isSignedBy(publicKey, update));
    update.signature = update.signature.toUpper();
    update.sha256 = update.sha256.toUpper();
    EXPECT_TRUE(isSignedBy(publicKey, update));
}

TEST_F(UpdateSignatureTest, AnotherHashVersionOrBuildHasAnotherSignature)
{
    UpdateInfo other = update;
    other.sha256 = QString(64, u'b');
    EXPECT_FALSE(isSignedBy(publicKey, other));
    other = update;
    other.version = u"1.4"_s;
    EXPECT_FALSE(isSignedBy(publicKey, other));
    other = update;
    other.build = 8;
    EXPECT_FALSE(isSignedBy(publicKey, other));
}

TEST_F(UpdateSignatureTest, AnotherKeyIsNotTheOwners)
{
    publicKey[0] = static_cast<char>(publicKey[0] ^ 1);
    EXPECT_FALSE(isSignedBy(publicKey, update));
}

TEST_F(UpdateSignatureTest, WhatIsNoSignatureIsNotTaken)
{
    const QString right = update.signature;
    for (const QString &wrong :
         {QString(), right.chopped(2), right + u"00"_s, right.first(127) + u'g', u' ' + right,
          QString(128, u'0'), right.first(64) + u"\n"_s + right.last(64)}) {
        update.signature = wrong;
        EXPECT_FALSE(isSignedBy(publicKey, update)) << wrong.toStdString();
    }
}

TEST_F(UpdateSignatureTest, OnlyABuildWithAKeyWantsASignature)
{
    HttpClient http;
    const UpdateImage image{{}, QByteArray(64, 'a')};
    UpdateInfo unsignedUpdate = update;
    unsignedUpdate.signature.clear();
    const HostedUpdates open(http, {u"https://updates.example"_s, {}, {}}, {}, {}, {}, {});
    EXPECT_TRUE(open.isGenuine(image, unsignedUpdate));
    const HostedUpdates strict(http, {u"https://updates.example"_s, {}, publicKey}, {}, {}, {}, {});
    EXPECT_TRUE(strict.isGenuine(image, update));
    EXPECT_FALSE(strict.isGenuine(image, unsignedUpdate));
    EXPECT_FALSE(strict.isGenuine({{}, QByteArray(64, 'b')}, update));
}

TEST_F(UpdateSignatureTest, AHashInCapitalsMatches)
{
    HttpClient http;
    const HostedUpdates updates(http, {u"https://updates.example"_s, {}, {}}, {}, {}, {}, {});
    update.sha256 = QString(64, u'A');
    EXPECT_TRUE(updates.isGenuine({{}, QByteArray(64, 'a')}, update));
}

} // namespace
} // namespace morvane
