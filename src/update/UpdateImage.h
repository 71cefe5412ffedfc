#pragma once

#include <QByteArray>
#include <QString>

namespace morvane {

/// A disk image that was downloaded.
struct UpdateImage {
    QString path;
    QByteArray sha256; ///< Of what came, in lower-case hexadecimal digits.
};

} // namespace morvane
