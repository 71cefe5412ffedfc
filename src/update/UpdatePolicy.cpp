#include "update/UpdatePolicy.h"

#include <QList>
#include <algorithm>

namespace morvane {

namespace {

/// The number that the digits of a text make; 0 where there are none, or more than fit.
qint64 numberIn(QStringView text)
{
    QString digits;
    for (const char32_t letter : text.toUcs4())
        if (QChar::isNumber(letter))
            digits += QString::fromUcs4(&letter, 1);
    const bool isDecimal =
        std::all_of(digits.begin(), digits.end(), [](QChar digit) { return digit >= u'0' && digit <= u'9'; });
    return isDecimal ? digits.toLongLong() : 0;
}

QList<qint64> numbersOf(const QString &version)
{
    QList<qint64> numbers;
    for (const QStringView piece : QStringView(version).split(u'.', Qt::SkipEmptyParts))
        numbers.append(numberIn(piece));
    return numbers;
}

} // namespace

bool isNewer(const QString &a, const QString &b)
{
    const QList<qint64> left = numbersOf(a);
    const QList<qint64> right = numbersOf(b);
    for (qsizetype i = 0; i < std::max(left.size(), right.size()); ++i)
        if (left.value(i) != right.value(i))
            return left.value(i) > right.value(i);
    return false;
}

bool isOnOffer(const UpdateInfo &update, const ProgramVersion &current)
{
    return isNewer(update.version, current.version) ||
           (update.version == current.version && current.build < update.build);
}

bool isUpdateRequired(const UpdateInfo &update, const ProgramVersion &current)
{
    const bool isMeant = update.requiredVersions.isEmpty()
                             ? update.required
                             : update.requiredVersions.contains(current.version);
    return isMeant && isOnOffer(update, current);
}

} // namespace morvane
