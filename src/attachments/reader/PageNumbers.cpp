#include "attachments/reader/PageNumbers.h"

#include <QStringList>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

QString pageNumbers(QList<int> numbers)
{
    std::sort(numbers.begin(), numbers.end());
    QStringList parts;
    for (qsizetype first = 0, last = 0; first < numbers.size(); first = last + 1) {
        last = first;
        while (last + 1 < numbers.size() && numbers.at(last + 1) == numbers.at(last) + 1)
            ++last;
        parts.append(first == last ? QString::number(numbers.at(first))
                                   : u"%1–%2"_s.arg(numbers.at(first)).arg(numbers.at(last)));
    }
    return parts.join(u", "_s);
}

} // namespace morvane
