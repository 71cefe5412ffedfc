#pragma once

#include <QByteArrayView>
#include <QVariant>

namespace morvane {

/// What stands behind the "=" of a line: a text, a list of texts where commas divide it, bytes
/// ("@ByteArray(…)") or an invalid value ("@Invalid()"). See IniReader.
QVariant iniValue(QByteArrayView escaped);

} // namespace morvane
