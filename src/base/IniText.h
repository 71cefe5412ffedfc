#pragma once

#include <QByteArray>
#include <QVariantMap>

namespace morvane {

/// Values in an INI form, UTF-8, keys in order; a key "group/name" stands in the section of its group.
/// IniReader reads it back unchanged, and so does QSettings, whose form it is. Texts, lists of texts and
/// bytes keep their type; numbers and booleans become text. Other types are left out.
///
/// QSettings itself can only write with a flush to the disk on the calling thread, tens of milliseconds at
/// times, and keeps what it has read by the file's name, size and time for all that ask later.
QByteArray iniText(const QVariantMap &values);

/// What iniText() makes of these values, counted as IniReader::maximumItems counts.
qsizetype iniItems(const QVariantMap &values);

} // namespace morvane
