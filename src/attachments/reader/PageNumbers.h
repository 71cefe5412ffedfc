#pragma once

#include <QList>
#include <QString>

namespace morvane {

/// "3, 7–12" for the numbers 3 and 7 to 12, in any order.
QString pageNumbers(QList<int> numbers);

} // namespace morvane
