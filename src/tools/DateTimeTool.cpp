#include "tools/DateTimeTool.h"

#include <QLocale>
#include <QTimeZone>

using namespace Qt::StringLiterals;

namespace morvane {

QString DateTimeTool::currentDateTime()
{
    const QTimeZone zone = QTimeZone::systemTimeZone();
    return describeDateTime(
        QDateTime::currentDateTimeUtc().toTimeZone(zone.isValid() ? zone : QTimeZone::utc()));
}

QString DateTimeTool::describeDateTime(const QDateTime &moment)
{
    // The C locale's names are English everywhere; a user's locale would translate them.
    const QString text = QLocale::c().toString(moment, u"dddd, MMMM d, yyyy 'at' h:mm AP"_s);
    return u"The current date and time is "_s + text + u" in "_s + QString::fromUtf8(moment.timeZone().id()) +
           u'.';
}

} // namespace morvane
