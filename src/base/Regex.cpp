#include "base/Regex.h"

#include <algorithm>
#include <ctime>
#include <limits>
#include <unicode/regex.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// How long this thread has worked. Its waits for a processor do not count, so that a busy machine finds what
/// an idle one does.
std::chrono::nanoseconds timeWorked()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// An alias of the text, which must outlive it.
icu::UnicodeString icuText(QStringView text)
{
    static constexpr char16_t nothing = 0;
    return {false, text.isEmpty() ? &nothing : text.utf16(), static_cast<int32_t>(text.size())};
}

QString reason(UErrorCode status)
{
    switch (status) {
    case U_REGEX_RULE_SYNTAX:
        return u"syntax error"_s;
    case U_REGEX_BAD_ESCAPE_SEQUENCE:
        return u"unknown escape sequence"_s;
    case U_REGEX_PROPERTY_SYNTAX:
        return u"unknown character property"_s;
    case U_REGEX_MISMATCHED_PAREN:
        return u"unbalanced parenthesis"_s;
    case U_REGEX_MISSING_CLOSE_BRACKET:
        return u"missing closing bracket"_s;
    case U_REGEX_NUMBER_TOO_BIG:
        return u"number too large"_s;
    case U_REGEX_BAD_INTERVAL:
        return u"malformed repetition"_s;
    case U_REGEX_MAX_LT_MIN:
        return u"repetition with a maximum below its minimum"_s;
    case U_REGEX_INVALID_BACK_REF:
        return u"reference to a group that does not exist"_s;
    case U_REGEX_INVALID_FLAG:
        return u"unknown flag"_s;
    case U_REGEX_LOOK_BEHIND_LIMIT:
        return u"look-behind without a bounded length"_s;
    case U_REGEX_INVALID_RANGE:
        return u"character range in the wrong order"_s;
    case U_REGEX_INVALID_CAPTURE_GROUP_NAME:
        return u"malformed group name"_s;
    case U_REGEX_INTERNAL_ERROR: // What ICU answers to more than some 100 open brackets.
        return u"too deeply nested"_s;
    case U_REGEX_PATTERN_TOO_BIG:
        return u"pattern too large"_s;
    default:
        return QString::fromLatin1(u_errorName(status));
    }
}

/// One run over a text: ICU's matcher with a limit to this thread's work. ICU's own limit counts the steps of
/// one starting position only, so that a slow pattern on a long text would never reach it.
class Search {
public:
    Search(const icu::RegexPattern &pattern, QStringView text, Regex::Duration timeLimit)
        : m_text(icuText(text)), m_end(timeWorked() + timeLimit)
    {
        if (text.size() > std::numeric_limits<int32_t>::max()) {
            m_status = U_INDEX_OUTOFBOUNDS_ERROR;
            return;
        }
        m_matcher.reset(pattern.matcher(m_text, m_status));
        if (U_FAILURE(m_status))
            return;
        m_matcher->setMatchCallback(&Search::goOnMatching, this, m_status);
        m_matcher->setFindProgressCallback(&Search::goOnFinding, this, m_status);
    }

    bool next() { return U_SUCCESS(m_status) && m_matcher->find(m_status) && U_SUCCESS(m_status); }

    bool nextFrom(qsizetype from)
    {
        return U_SUCCESS(m_status) && m_matcher->find(from, m_status) && U_SUCCESS(m_status);
    }

    std::optional<RegexFailure> failure() const
    {
        if (U_SUCCESS(m_status))
            return std::nullopt;
        if (m_status == U_INDEX_OUTOFBOUNDS_ERROR)
            return RegexFailure::tooLong;
        return m_status == U_REGEX_STOPPED_BY_CALLER ? RegexFailure::timeout : RegexFailure::tooComplex;
    }

    RegexMatch match()
    {
        QList<RegexMatch::Range> groups;
        const int32_t count = m_matcher->groupCount();
        groups.reserve(count + 1);
        for (int32_t group = 0; group <= count; ++group)
            groups.append({m_matcher->start64(group, m_status), m_matcher->end64(group, m_status)});
        return RegexMatch(std::move(groups));
    }

private:
    static UBool goOnMatching(const void *context, int32_t)
    {
        return timeWorked() < static_cast<const Search *>(context)->m_end;
    }

    static UBool goOnFinding(const void *context, int64_t)
    {
        // Asked at every starting position: looking at the clock each time would double the work.
        constexpr unsigned positionsPerLook = 256;
        const auto *const search = static_cast<const Search *>(context);
        return ++search->m_positions % positionsPerLook != 0 || timeWorked() < search->m_end;
    }

    icu::UnicodeString m_text;
    std::chrono::nanoseconds m_end; ///< In time worked.
    mutable unsigned m_positions = 0;
    UErrorCode m_status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> m_matcher;
};

} // namespace

std::expected<Regex, QString> Regex::compile(QStringView pattern, Options options)
{
    if (pattern.size() > maximumPatternLength)
        return std::unexpected(reason(U_REGEX_PATTERN_TOO_BIG) + u" at character 0"_s);
    uint32_t flags = 0;
    if (options.testFlag(Option::dotMatchesLineEnds))
        flags |= UREGEX_DOTALL;
    if (options.testFlag(Option::anchorsMatchLines))
        flags |= UREGEX_MULTILINE;
    if (options.testFlag(Option::caseInsensitive))
        flags |= UREGEX_CASE_INSENSITIVE;

    UErrorCode status = U_ZERO_ERROR;
    UParseError where{};
    std::shared_ptr<const icu::RegexPattern> compiled(
        icu::RegexPattern::compile(icuText(pattern), flags, where, status));
    if (U_FAILURE(status))
        return std::unexpected(u"%1 at character %2"_s.arg(reason(status)).arg(std::max(where.offset, 0)));
    return Regex(std::move(compiled));
}

std::expected<bool, RegexFailure> Regex::contains(QStringView text, Duration timeLimit) const
{
    Search search(*m_pattern, text, timeLimit);
    const bool found = search.next();
    if (const auto failure = search.failure())
        return std::unexpected(*failure);
    return found;
}

std::expected<std::optional<RegexMatch>, RegexFailure> Regex::find(QStringView text, qsizetype from,
                                                                   Duration timeLimit) const
{
    if (from > text.size())
        return std::nullopt;
    Search search(*m_pattern, text, timeLimit);
    const bool found = search.nextFrom(from);
    if (const auto failure = search.failure())
        return std::unexpected(*failure);
    return found ? std::optional(search.match()) : std::nullopt;
}

std::expected<QList<RegexMatch>, RegexFailure> Regex::findAll(QStringView text, qsizetype maximum,
                                                              Duration timeLimit) const
{
    QList<RegexMatch> matches;
    Search search(*m_pattern, text, timeLimit);
    while (matches.size() < maximum && search.next())
        matches.append(search.match());
    if (const auto failure = search.failure())
        return std::unexpected(*failure);
    return matches;
}

std::expected<QString, RegexFailure> Regex::replaced(QStringView text, QStringView replacement,
                                                     Duration timeLimit) const
{
    QString result;
    qsizetype copied = 0;
    Search search(*m_pattern, text, timeLimit);
    while (search.next()) {
        const RegexMatch match = search.match();
        result += text.sliced(copied, match.start() - copied);
        result += replacement;
        copied = match.end();
    }
    if (const auto failure = search.failure())
        return std::unexpected(*failure);
    result += text.sliced(copied);
    return result;
}

} // namespace morvane
