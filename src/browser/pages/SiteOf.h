#pragma once

#include <QString>
#include <QUrl>

namespace morvane {

/// The host of an address as it is sent, or empty. In letters of another script it could be taken for
/// another's: one and the same word may be written in Latin and in Cyrillic ones.
inline QString siteOf(const QUrl &address)
{
    return address.host(QUrl::FullyEncoded);
}

} // namespace morvane
