#pragma once

#include <QByteArrayView>
#include <QVariant>
#include <optional>

namespace morvane {

/// What stands behind the "=" of a line: a text, a list of texts where commas divide it, bytes
/// ("@ByteArray(…)") or an invalid value ("@Invalid()"); nothing for a list of more than `mostElements`
/// texts, which is at least one. See IniReader.
std::optional<QVariant> iniValue(QByteArrayView escaped, qsizetype mostElements);

} // namespace morvane
