#pragma once

#include "model/ChatAttachment.h"

#include <QMimeType>
#include <QStringList>

namespace morvane {

/// The kind of a file with this content type; nothing for a type that says neither picture, PDF nor text.
std::optional<AttachmentKind> kindOfContentType(const QMimeType &type);

/// The kind that an extension in lower case, without its dot, stands for; nothing for an unknown one.
std::optional<AttachmentKind> kindOfExtension(const QString &extension);

/// Extensions of a kind, for the file dialog.
QStringList extensionsOf(AttachmentKind kind);

} // namespace morvane
