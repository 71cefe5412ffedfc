#pragma once

#include "update/UpdateInfo.h"

#include <QByteArray>

namespace morvane {

/// What the author of an update signs: the image's hash, its build and its version, so that a signed manifest
/// can bring back no other image and no older one under another number.
QByteArray signedText(const UpdateInfo &update);

/// Whether the manifest's signature is that of the owner of `publicKey`, the 32 bytes of an Ed25519 key.
bool isSignedBy(const QByteArray &publicKey, const UpdateInfo &update);

} // namespace morvane
