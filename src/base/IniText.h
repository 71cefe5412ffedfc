#pragma once

#include <QByteArray>
#include <QVariantMap>

namespace morvane {

/// Values in the INI form that QSettings reads back unchanged, UTF-8, keys in order; a key "group/name"
/// stands in the section of its group. Texts, lists of texts and bytes keep their type; numbers and booleans
/// become text, as QSettings itself writes them. Other types are left out.
///
/// QSettings can only write with a flush to the disk on the calling thread, tens of milliseconds at times.
QByteArray iniText(const QVariantMap &values);

} // namespace morvane
