#include "support/WebExpressions.h"
#include "tools/SearchResults.h"

#include <cstdlib>

using namespace Qt::StringLiterals;

/// Any page gives the entries that the expressions give; those are given small pages only, since they
/// backtrack. Addresses that are resolved have a test of their own.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    const QString html =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QStringList entries = SearchResults::parseDDGResults(html);
    const bool resolves = html.contains("//"_L1) || html.contains("uddg="_L1);
    if (html.size() <= 2000 && !resolves && entries != entriesByExpressions(html))
        std::abort();
    return 0;
}
