#include "update/UpdateSignature.h"

#include <sodium/core.h>
#include <sodium/crypto_sign_ed25519.h>

namespace morvane {

QByteArray signedText(const UpdateInfo &update)
{
    return "Morvane update\n" + update.sha256.toLower().toUtf8() + '\n' + QByteArray::number(update.build) +
           '\n' + update.version.toUtf8();
}

bool isSignedBy(const QByteArray &publicKey, const UpdateInfo &update)
{
    const QByteArray digits = update.signature.toLatin1().toLower();
    const QByteArray signature = QByteArray::fromHex(digits);
    // What is read leniently must be what was written, digit for digit.
    if (publicKey.size() != crypto_sign_ed25519_PUBLICKEYBYTES ||
        signature.size() != crypto_sign_ed25519_BYTES || signature.toHex() != digits || ::sodium_init() < 0)
        return false;
    const QByteArray text = signedText(update);
    const auto bytes = [](const QByteArray &array) {
        return reinterpret_cast<const unsigned char *>(array.data());
    };
    return ::crypto_sign_ed25519_verify_detached(bytes(signature), bytes(text),
                                                 static_cast<unsigned long long>(text.size()),
                                                 bytes(publicKey)) == 0;
}

} // namespace morvane
