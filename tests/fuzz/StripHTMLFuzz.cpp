#include "support/WebExpressions.h"
#include "tools/StripHTML.h"

#include <cstdlib>

/// Any page gives what the expressions give; those are given small pages only, since they backtrack.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    const QString html =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QString text = stripHTML(html);
    if (html.size() <= 2000 && text != strippedByExpressions(html))
        std::abort();
    return 0;
}
