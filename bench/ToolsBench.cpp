// What reading a web page costs: an ordinary page, a page of search results, and pages made to be slow.
// Prints JSON.

#include "tools/SearchResults.h"
#include "tools/StripHTML.h"

#include <QElapsedTimer>
#include <QString>
#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

constexpr qsizetype pageSize = 10'000'000; // as large as a page may be

QString repeatedToSize(const QString &part)
{
    return part.repeated(pageSize / part.size());
}

/// The fastest of some runs, in milliseconds.
template <class Work> double milliseconds(Work work)
{
    constexpr int runs = 5;
    double best = 1e9;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        work();
        best = std::min(best, double(timer.nsecsElapsed()) / 1e6);
    }
    return best;
}

} // namespace

int main()
{
    const QString page = repeatedToSize(
        u"<div class=\"a\"><script>f(1 > 0);</script><p>Some words &amp; <b>more</b> of them,\n as they "
        "stand in an ordinary page of text.</p></div>\n"_s);
    const QString results = repeatedToSize(
        u"<a class=\"result__a\" href=\"//a.example/?uddg=https%3A%2F%2Fb.example\">A <b>title</b></a>"
        "<a class=\"result__snippet\" href=\"x\">A snippet of some length</a>\n"_s);
    const QString scripts = repeatedToSize(u"<script"_s);
    const QString brackets = repeatedToSize(u"<"_s);
    const QString entities = repeatedToSize(u"&lt;"_s);
    const QString links = repeatedToSize(u"class=\"result__a\" href=\"x\""_s);

    std::printf("{\"page_ms\": %.1f, \"results_ms\": %.1f,\n", milliseconds([&] { stripHTML(page); }),
                milliseconds([&] { SearchResults::parseDDGResults(results); }));
    std::printf(" \"unended_scripts_ms\": %.1f, \"brackets_ms\": %.1f, \"entities_ms\": %.1f, "
                "\"unended_links_ms\": %.1f,\n \"bytes\": %lld}\n",
                milliseconds([&] { stripHTML(scripts); }), milliseconds([&] { stripHTML(brackets); }),
                milliseconds([&] { stripHTML(entities); }),
                milliseconds([&] { SearchResults::parseDDGResults(links + u'>'); }),
                static_cast<long long>(pageSize));
    return 0;
}
