#pragma once

#include <QStringList>

namespace morvane {

/// How the data of the text recognition names the languages of these locales ("de_DE", "zh-TW"), in their
/// order and each once: "deu", "chi_tra". English is always among them. Data of such a name need not exist.
QStringList recognitionLanguages(const QStringList &locales);

} // namespace morvane
