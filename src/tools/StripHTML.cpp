#include "tools/StripHTML.h"

#include <QStringMatcher>
#include <QStringView>

namespace morvane {
namespace {

// Each function here gives what a regular expression with a lazy or negated middle would, but remembers what
// a backtracking engine forgets: where an end is missing once, it is missing for every later beginning too.

/// `begin[\s\S]*?end` becomes a blank.
QString withoutElements(const QString &text, QStringView begin, QStringView end)
{
    const QStringMatcher beginnings(begin);
    const QStringMatcher ends(end);
    QString result;
    qsizetype copied = 0;
    for (qsizetype start = beginnings.indexIn(text); start >= 0; start = beginnings.indexIn(text, copied)) {
        const qsizetype close = ends.indexIn(text, start + begin.size());
        if (close < 0)
            break;
        result += QStringView(text).sliced(copied, start - copied);
        result += u' ';
        copied = close + end.size();
    }
    result += QStringView(text).sliced(copied);
    return result;
}

/// `<[^>]+>` becomes a blank.
QString withoutTags(const QString &text)
{
    QString result;
    qsizetype copied = 0;
    qsizetype start = text.indexOf(u'<');
    while (start >= 0) {
        const qsizetype close = text.indexOf(u'>', start + 1);
        if (close < 0)
            break;
        if (close > start + 1) {
            result += QStringView(text).sliced(copied, start - copied);
            result += u' ';
            copied = close + 1;
        }
        start = text.indexOf(u'<', close + 1);
    }
    result += QStringView(text).sliced(copied);
    return result;
}

/// QString's own replacement moves the rest of the text once for every few hundred finds.
QString replaced(const QString &text, QStringView find, QChar replacement)
{
    const QStringMatcher finds(find);
    QString result;
    qsizetype copied = 0;
    for (qsizetype at = finds.indexIn(text); at >= 0; at = finds.indexIn(text, copied)) {
        result += QStringView(text).sliced(copied, at - copied);
        result += replacement;
        copied = at + find.size();
    }
    result += QStringView(text).sliced(copied);
    return result;
}

/// One after the other over the whole text, so that "&amp;lt;" comes out as "<".
QString withoutEntities(QString text)
{
    struct Entity {
        QStringView name;
        char16_t character;
    };
    static constexpr Entity entities[] = {
        {u"&nbsp;", u' '}, {u"&amp;", u'&'},   {u"&lt;", u'<'},  {u"&gt;", u'>'},  {u"&quot;", u'"'},
        {u"&#39;", u'\''}, {u"&#x27;", u'\''}, {u"&#34;", u'"'}, {u"&#38;", u'&'},
    };
    for (const Entity &entity : entities)
        text = replaced(text, entity.name, entity.character);
    return text;
}

/// `\s+` becomes a blank.
QString withSingleBlanks(const QString &text)
{
    QString result(text.size(), Qt::Uninitialized);
    QChar *end = result.data();
    bool behindBlank = false;
    for (const QChar character : text) {
        const bool blank = character.isSpace();
        if (!blank || !behindBlank)
            *end++ = blank ? QChar(u' ') : character;
        behindBlank = blank;
    }
    result.truncate(end - result.data());
    return result;
}

} // namespace

QString stripHTML(const QString &html)
{
    const QString withoutScripts = withoutElements(html, u"<script", u"</script>");
    const QString text = withoutTags(withoutElements(withoutScripts, u"<style", u"</style>"));
    return withSingleBlanks(withoutEntities(text));
}

} // namespace morvane
