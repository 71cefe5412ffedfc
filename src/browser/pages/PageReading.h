#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <optional>

namespace morvane {

/// What a page was found to hold.
struct PageReading {
    QString text;     ///< For the model: title, address, the page's text and its elements by their numbers.
    QStringList refs; ///< The marks of the elements, in the order of their numbers.
};

/// Reads the answer of the element script; nothing where readScriptAnswer finds nothing.
/// Any thread.
std::optional<PageReading> readPageAnswer(const QVariant &answer);

} // namespace morvane
