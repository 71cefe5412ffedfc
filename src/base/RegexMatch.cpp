#include "base/RegexMatch.h"

namespace morvane {

QStringView RegexMatch::captured(QStringView text, qsizetype group) const
{
    const Range found = range(group);
    return found.start < 0 ? QStringView() : text.sliced(found.start, found.end - found.start);
}

} // namespace morvane
