#pragma once

#include "base/Regex.h"

#include <QString>
#include <QStringList>
#include <chrono>
#include <utility>

namespace morvane {

// What the web tools' scanners must find, said in regular expressions. Only for small texts: these backtrack,
// and give up on texts that the scanners read in milliseconds.

inline QString replacedByExpression(const QString &text, const Regex &expression)
{
    return expression.replaced(text, u" ", std::chrono::minutes(1)).value();
}

inline QString strippedByExpressions(QString text)
{
    static const Regex script = Regex::compile(u"<script[\\s\\S]*?</script>").value();
    static const Regex style = Regex::compile(u"<style[\\s\\S]*?</style>").value();
    static const Regex tag = Regex::compile(u"<[^>]+>").value();
    static const Regex blanks = Regex::compile(u"\\s+").value();
    text = replacedByExpression(replacedByExpression(replacedByExpression(text, script), style), tag);
    static constexpr std::pair<const char *, const char *> entities[] = {
        {"&nbsp;", " "}, {"&amp;", "&"},  {"&lt;", "<"},   {"&gt;", ">"},  {"&quot;", "\""},
        {"&#39;", "'"},  {"&#x27;", "'"}, {"&#34;", "\""}, {"&#38;", "&"},
    };
    for (const auto &[name, character] : entities)
        text.replace(QLatin1String(name), QLatin1String(character));
    return replacedByExpression(text, blanks);
}

/// What the groups of an expression hold, match by match.
inline QStringList groupsOfMatches(const QString &text, const Regex &expression)
{
    QStringList groups;
    const auto matches = expression.findAll(text, text.size(), std::chrono::minutes(1));
    for (const RegexMatch &match : matches.value())
        for (qsizetype group = 1; group <= match.groupCount(); ++group)
            groups << match.captured(text, group).toString();
    return groups;
}

/// Address and title of each result, raw.
inline QStringList linksByExpression(const QString &html)
{
    static const auto expression = Regex::compile(
        uR"re(class="result__a"[^>]*href="([^"]+)"[^>]*>(.*?)</a>)re", Regex::Option::dotMatchesLineEnds);
    return groupsOfMatches(html, expression.value());
}

inline QStringList snippetsByExpression(const QString &html)
{
    static const auto expression =
        Regex::compile(uR"re(class="result__snippet"[^>]*>(.*?)</a>)re", Regex::Option::dotMatchesLineEnds);
    return groupsOfMatches(html, expression.value());
}

/// The entries for addresses that need no resolving.
inline QStringList entriesByExpressions(const QString &html)
{
    const QStringList links = linksByExpression(html);
    const QStringList snippets = snippetsByExpression(html);
    QStringList entries;
    for (qsizetype i = 0; i < links.size() / 2; ++i) {
        const QString snippet = strippedByExpressions(snippets.value(i));
        entries << QString::number(i + 1) + QStringLiteral(". ") +
                       strippedByExpressions(links.at(2 * i + 1)) +
                       (snippet.isEmpty() ? QString() : QStringLiteral("\n   ") + snippet) +
                       QStringLiteral("\n   ") + links.at(2 * i);
    }
    return entries;
}

} // namespace morvane
