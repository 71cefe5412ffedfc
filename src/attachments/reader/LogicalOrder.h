#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

/// The lines of a page, whose characters stand as they are seen from left to right, in the order in which
/// they are read and stored: letters of Hebrew and Arabic, and of their words among others, the other way
/// round, numbers as they are. Shapes of Arabic letters become the letters. Lines without such letters stay.
QStringList inLogicalOrder(const QStringList &visualLines);

} // namespace morvane
