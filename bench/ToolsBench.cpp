// What reading a web page costs: an ordinary page, a page of search results, and pages made to be slow. And
// what deciding on a call costs: an ordinary command, one that writes a source file, and megabytes made to be
// slow. Prints JSON.

#include "base/Json.h"
#include "tools/SearchResults.h"
#include "tools/StripHTML.h"
#include "tools/ToolDescription.h"

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

/// Milliseconds from a call as it came to what the gate needs of it.
double deciding(const QString &command)
{
    const AIToolCall call{
        u"run_shell_command"_s, boost::json::object{{"command", jsonFromText(command)}}, {}, {}};
    return milliseconds([&call] { describe(call); });
}

void printDecisions()
{
    const auto megabyteOf = [](const QString &part) {
        return part.repeated(1'000'000 / part.toUtf8().size());
    };
    const QString source = u"for (int i = 0; i < n; ++i) rms += x[i] * x[i]; // the rm value\n"_s;
    describe({}); // compiles the patterns
    std::printf(
        "{\"decide_short_us\": %.1f, \"decide_2kB_us\": %.1f, \"decide_50kB_us\": %.1f,\n"
        " \"decide_1MB_text_ms\": %.2f, \"decide_1MB_rm_ms\": %.2f, \"decide_1MB_push_ms\": %.2f,\n"
        " \"decide_1MB_marks_ms\": %.2f, \"decide_1MB_blanks_ms\": %.2f, \"decide_1MB_emoji_ms\": %.2f}\n",
        deciding(u"ls -la"_s) * 1000, deciding(source.repeated(2'000 / source.size())) * 1000,
        deciding(source.repeated(50'000 / source.size())) * 1000, deciding(megabyteOf(source)),
        deciding(megabyteOf(u"rm x "_s)), deciding(megabyteOf(u"git push find - "_s)),
        deciding(megabyteOf(u"rm\u0301"_s)), deciding(megabyteOf(u"\u2003"_s)),
        deciding(megabyteOf(u"\U0001f600"_s)));
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
    printDecisions();
    return 0;
}
