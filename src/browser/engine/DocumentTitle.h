#pragma once

#include <QString>
#include <QUrl>

namespace morvane {

/// The title of the document at `address`, bounded, as the engine gives it; empty where it gives the address
/// in place of one.
QString documentTitle(const QString &title, const QUrl &address);

} // namespace morvane
