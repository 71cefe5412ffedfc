#include "browser/engine/FileNames.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// In UTF-8, with room for what is added to a name that is there already.
constexpr qsizetype longestName = 200;

bool isShown(QChar character)
{
    const QChar::Category category = character.category();
    return category != QChar::Other_Control && category != QChar::Other_Format &&
           category != QChar::Separator_Line && category != QChar::Separator_Paragraph;
}

/// At the beginning, where a dot would hide the file.
bool isLeft(QChar character)
{
    return character == u'.' || character == u'~' || character == u' ';
}

} // namespace

QString offeredFileName(const QString &suggested)
{
    const qsizetype folder = std::max(suggested.lastIndexOf(u'/'), suggested.lastIndexOf(u'\\'));
    QString name;
    for (const QChar character : QStringView(suggested).mid(folder + 1))
        if (isShown(character))
            name.append(character);
    // To save panels the name is what stands between quotation marks, and a tilde stands for a home folder.
    name = name.replace(u'"', u'\'').simplified();
    name.remove(0, std::ranges::find_if_not(name, isLeft) - name.begin());
    if (name.toUtf8().size() > longestName) {
        const qsizetype dot = name.lastIndexOf(u'.');
        constexpr qsizetype longestSuffix = 20;
        const QString suffix = dot > 0 && name.size() - dot <= longestSuffix ? name.mid(dot) : QString();
        name.truncate(longestName);
        while (!name.isEmpty() && (name + suffix).toUtf8().size() > longestName)
            name.chop(name.back().isLowSurrogate() ? 2 : 1);
        name += suffix;
    }
    return name.isEmpty() ? u"download"_s : name;
}

} // namespace morvane
