#include "browser/pages/PageReading.h"

#include "base/Json.h"
#include "base/Text.h"
#include "browser/pages/ScriptAnswer.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr qsizetype longestHeading = 2000;
/// A page may call its elements what it likes; their names are cut where they are read.
constexpr qsizetype longestRole = 80;

QString listed(const boost::json::array &elements, QStringList &refs)
{
    QString lines;
    for (const boost::json::value &value : elements) {
        const boost::json::object *const element = value.if_object();
        const boost::json::object &fields = element ? *element : boost::json::object();
        refs.append(stringMember(fields, "ref").value_or(QString()));
        lines += u"[%1] "_s.arg(refs.size()) +
                 firstCharacters(stringMember(fields, "role").value_or(u"element"_s), longestRole);
        const QString name = stringMember(fields, "name").value_or(QString());
        if (!name.isEmpty())
            lines += u" '"_s + name + u'\'';
        lines += u'\n';
    }
    return lines;
}

} // namespace

std::optional<PageReading> readPageAnswer(const QVariant &answer)
{
    const auto page = readScriptAnswer(answer);
    if (!page)
        return std::nullopt;
    const auto heading = [&page](const char *key) {
        return firstCharacters(stringMember(*page, key).value_or(QString()), longestHeading);
    };
    PageReading reading;
    reading.text = u"Page: "_s + heading("title") + u"\nURL: "_s + heading("url") + u"\n\nPage text:\n"_s +
                   stringMember(*page, "text").value_or(QString()) + u'\n';
    const boost::json::array *const elements = arrayMember(*page, "elements");
    if (elements && !elements->empty())
        reading.text +=
            u"\nClickable elements (use browser_click with the number; browser_type to fill a field):\n"_s +
            listed(*elements, reading.refs);
    else
        reading.text += u"\n(No clickable elements were found on this page.)"_s;
    return reading;
}

} // namespace morvane
