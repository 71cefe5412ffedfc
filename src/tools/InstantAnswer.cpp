#include "tools/InstantAnswer.h"

#include "base/Json.h"

#include <QStringList>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr qsizetype mostLines = 12;

void addSummary(QStringList &lines, const boost::json::object &answer)
{
    const QString summary = stringMember(answer, "AbstractText").value_or(QString());
    if (summary.isEmpty())
        return;
    lines.append(u"Summary: "_s + summary);
    if (const auto source = stringMember(answer, "AbstractURL"))
        lines.append(u"Source: "_s + *source);
}

void addTopics(QStringList &lines, const boost::json::object &answer)
{
    const boost::json::array *const topics = arrayMember(answer, "RelatedTopics");
    if (!topics || !std::ranges::all_of(*topics, &boost::json::value::is_object))
        return;
    for (const boost::json::value &topic : *topics) {
        const QString text = stringMember(topic.get_object(), "Text").value_or(QString());
        if (text.isEmpty())
            continue;
        lines.append(u"- "_s + text);
        if (const auto address = stringMember(topic.get_object(), "FirstURL"))
            lines.append(u"  "_s + *address);
        if (lines.size() >= mostLines)
            return;
    }
}

} // namespace

QString InstantAnswer::text(QByteArrayView json)
{
    const auto answer = parseJsonObject(json);
    if (!answer)
        return {};
    QStringList lines;
    addSummary(lines, *answer);
    addTopics(lines, *answer);
    return lines.first(std::min(lines.size(), mostLines)).join(u'\n');
}

} // namespace morvane
