#include "tools/SearchResults.h"

#include "tools/StripHTML.h"

#include <QStringMatcher>
#include <QStringView>
#include <optional>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr QStringView linkClass = u"class=\"result__a\"";
constexpr QStringView snippetClass = u"class=\"result__snippet\"";
constexpr QStringView reference = u"href=\"";
constexpr QStringView anchorEnd = u"</a>";

struct Link {
    QString address;
    QString title;
};

/// Finds what `class="result__a"[^>]*href="([^"]+)"[^>]*>(.*?)</a>` finds, the dot matching line ends too.
///
/// Whether a reference leads to a match does not depend on where the expression began, and an expression that
/// begins before a ">" can use just the references before that ">". So each stretch between two ">" is looked
/// at once, from its last reference to its first, as a greedy `[^>]*` does.
class LinkScanner {
public:
    explicit LinkScanner(const QString &html)
        : m_html(html), m_lastBracket(m_html.lastIndexOf(u'>')), m_lastEnd(m_html.lastIndexOf(anchorEnd))
    {
    }

    std::optional<Link> next()
    {
        qsizetype start = 0;
        while ((start = m_classes.indexIn(m_html, m_from)) >= 0) {
            const qsizetype begin = start + linkClass.size();
            const qsizetype bracket = m_html.indexOf(u'>', begin);
            if (bracket < 0)
                break;
            m_from = bracket;
            for (qsizetype end = bracket; end >= begin;) {
                const qsizetype at = m_html.sliced(begin, end - begin).lastIndexOf(reference);
                if (at < 0)
                    break;
                if (auto link = linkAt(begin + at + reference.size(), bracket))
                    return link;
                end = begin + at;
            }
        }
        return std::nullopt;
    }

private:
    /// The match whose reference has its value at `begin`, before this bracket.
    std::optional<Link> linkAt(qsizetype begin, qsizetype bracket)
    {
        const qsizetype quote = m_html.indexOf(u'"', begin);
        if (quote <= begin || quote > m_lastBracket)
            return std::nullopt;
        const qsizetype title = (quote < bracket ? bracket : m_html.indexOf(u'>', quote + 1)) + 1;
        if (title > m_lastEnd)
            return std::nullopt;
        const qsizetype end = m_html.indexOf(anchorEnd, title);
        m_from = end + anchorEnd.size();
        return Link{m_html.sliced(begin, quote - begin).toString(),
                    stripHTML(m_html.sliced(title, end - title).toString())};
    }

    const QStringMatcher m_classes{linkClass};
    QStringView m_html;
    qsizetype m_lastBracket;
    qsizetype m_lastEnd;
    qsizetype m_from = 0;
};

/// What group 1 of `class="result__snippet"[^>]*>(.*?)</a>` holds, match by match, the dot matching line ends
/// too. A missing end is missing for every later beginning.
QStringList snippetsOf(const QString &html)
{
    const QStringMatcher classes(snippetClass);
    const QStringMatcher ends(anchorEnd);
    QStringList snippets;
    qsizetype from = 0;
    qsizetype start = 0;
    while ((start = classes.indexIn(html, from)) >= 0) {
        const qsizetype bracket = html.indexOf(u'>', start + snippetClass.size());
        const qsizetype end = bracket < 0 ? -1 : ends.indexIn(html, bracket + 1);
        if (end < 0)
            break;
        snippets.append(stripHTML(html.sliced(bracket + 1, end - bracket - 1)));
        from = end + anchorEnd.size();
    }
    return snippets;
}

bool isHexDigit(char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
}

/// Nothing for a "%" without two digits behind it, and for what does not decode to UTF-8.
std::optional<QString> withoutPercentEncoding(QStringView text)
{
    const QByteArray encoded = text.toUtf8();
    for (qsizetype at = encoded.indexOf('%'); at >= 0; at = encoded.indexOf('%', at + 1))
        if (at + 2 >= encoded.size() || !isHexDigit(encoded[at + 1]) || !isHexDigit(encoded[at + 2]))
            return std::nullopt;
    const QByteArray decoded = QByteArray::fromPercentEncoding(encoded);
    if (!decoded.isValidUtf8())
        return std::nullopt;
    return QString::fromUtf8(decoded);
}

} // namespace

QStringList SearchResults::parseDDGResults(const QString &html)
{
    const QStringList snippets = snippetsOf(html);
    LinkScanner links(html);
    QStringList entries;
    while (const auto link = links.next()) {
        const qsizetype position = entries.size();
        QString entry = QString::number(position + 1) + u". "_s + link->title;
        if (const QString snippet = snippets.value(position); !snippet.isEmpty())
            entry += u"\n   "_s + snippet;
        entries.append(entry + u"\n   "_s + resolvedAddress(link->address));
    }
    return entries;
}

QString SearchResults::resolvedAddress(const QString &link)
{
    static constexpr QStringView wrapped = u"uddg=";
    if (const qsizetype at = link.indexOf(wrapped); at >= 0) {
        QStringView target = QStringView(link).sliced(at + wrapped.size());
        if (const qsizetype end = target.indexOf(u'&'); end >= 0)
            target.truncate(end);
        if (auto address = withoutPercentEncoding(target))
            return *address;
    }
    return link.startsWith("//"_L1) ? u"https:"_s + link : link;
}

} // namespace morvane
