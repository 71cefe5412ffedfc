#pragma once

#include <QList>
#include <QString>

namespace morvane {

/// The addresses that the browser knows by itself.
struct BrowserSites {
    struct Link {
        QString name;
        QString address;
    };

    /// Takes the text of the start page's field as the query item `q`.
    QString startPageSearch = QStringLiteral("https://duckduckgo.com/");
    /// The row of links on the start page.
    QList<Link> startPageLinks{
        {QStringLiteral("Wikipedia"), QStringLiteral("https://www.wikipedia.org/")},
        {QStringLiteral("YouTube"), QStringLiteral("https://www.youtube.com/")},
        {QStringLiteral("GitHub"), QStringLiteral("https://github.com/")},
        {QStringLiteral("DuckDuckGo"), QStringLiteral("https://duckduckgo.com/")},
        {QStringLiteral("Hacker News"), QStringLiteral("https://news.ycombinator.com/")}};
};

} // namespace morvane
