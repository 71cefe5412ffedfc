#include "tools/Glob.h"

#include <chrono>

namespace morvane {
namespace {

constexpr std::chrono::milliseconds timeLimit{100};

/// The longest part of a pattern that stands for itself.
QByteArray longestLiteral(const QString &glob)
{
    QStringView longest;
    qsizetype start = 0;
    for (qsizetype i = 0; i <= glob.size(); ++i) {
        if (i < glob.size() && glob[i] != u'*' && glob[i] != u'?')
            continue;
        if (i - start > longest.size())
            longest = QStringView(glob).sliced(start, i - start);
        start = i + 1;
    }
    // Names that are no UTF-8 are searched with this character in their place; their bytes do not hold it.
    return longest.contains(QChar(QChar::ReplacementCharacter)) ? QByteArray() : longest.toUtf8();
}

} // namespace

QString Glob::globToRegex(const QString &glob)
{
    QString regex(u'^');
    for (qsizetype i = 0; i < glob.size(); ++i) {
        const QChar unit = glob[i];
        if (unit == u'*' && i + 1 < glob.size() && glob[i + 1] == u'*') {
            regex += u".*";
            ++i;
        } else if (unit == u'*') {
            regex += u"[^/]*";
        } else if (unit == u'?') {
            regex += u"[^/]";
        } else {
            if (QStringView(u"\\^$.|+()[]{}").contains(unit))
                regex += u'\\';
            regex += unit;
        }
    }
    return regex + u'$';
}

std::optional<Glob> Glob::compile(const QString &pattern)
{
    auto regex = Regex::compile(globToRegex(pattern));
    if (!regex)
        return std::nullopt;
    return Glob(std::move(*regex), longestLiteral(pattern));
}

Glob::Answer Glob::matches(std::string_view name) const
{
    if (name.find(std::string_view(m_literal.constData(), static_cast<std::size_t>(m_literal.size()))) ==
        std::string_view::npos)
        return Answer::no;
    const auto found =
        m_regex.contains(QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())), timeLimit);
    if (!found)
        return Answer::tooSlow;
    return *found ? Answer::yes : Answer::no;
}

} // namespace morvane
