#include "localmodel/ModelName.h"

#include <QRegularExpression>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

QString withoutLatest(QString name)
{
    return name.remove(u":latest"_s);
}

bool containsModel(const QStringList &names, const QString &name)
{
    const QString wanted = withoutLatest(name);
    return std::any_of(names.begin(), names.end(),
                       [&wanted](const QString &one) { return withoutLatest(one) == wanted; });
}

QStringList modelsInList(const QString &output)
{
    static const QRegularExpression blanks(u"[ \t]+"_s);
    QStringList names;
    const QStringList lines = QString(output).replace(u'\r', u'\n').split(u'\n', Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        const QString first = line.split(blanks, Qt::SkipEmptyParts).value(0);
        if (!first.isEmpty() && first != "NAME"_L1)
            names.append(withoutLatest(first));
    }
    return names;
}

} // namespace morvane
