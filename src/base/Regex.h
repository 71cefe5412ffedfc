#pragma once

#include "base/RegexMatch.h"

#include <QFlags>
#include <QList>
#include <QString>
#include <QStringView>
#include <chrono>
#include <expected>
#include <memory>
#include <optional>
#include <unicode/uversion.h>

U_NAMESPACE_BEGIN
class RegexPattern;
U_NAMESPACE_END

namespace morvane {

/// Where a search stood when it gave up.
enum class RegexFailure {
    timeout,    ///< The limit to the work was reached.
    tooComplex, ///< Backtracking needed more memory than ICU's limit of 8 MB.
    tooLong,    ///< The text has more than 2^31 - 1 UTF-16 units.
};

/// A compiled regular expression with ICU's syntax and meaning. Immutable; copies share the compiled form;
/// any number of threads may search with one. No search works longer than its time limit, whatever the
/// expression and the text; only the time that its thread has a processor counts.
class Regex {
public:
    enum class Option {
        dotMatchesLineEnds = 1,
        anchorsMatchLines = 2,
        caseInsensitive = 4,
    };
    Q_DECLARE_FLAGS(Options, Option)

    using Duration = std::chrono::milliseconds;
    static constexpr Duration defaultTimeLimit{1000};

    /// UTF-16 units of the longest pattern; ICU's time to compile grows with the square of the length and is
    /// some 70 ms here.
    static constexpr qsizetype maximumPatternLength = 20'000;

    /// Compiles a pattern; fails with a short reason and the offset, such as
    /// "unbalanced parenthesis at character 3".
    static std::expected<Regex, QString> compile(QStringView pattern, Options options = {});

    /// Whether the expression matches anywhere in the text.
    std::expected<bool, RegexFailure> contains(QStringView text, Duration timeLimit = defaultTimeLimit) const;

    /// The first match that begins at `from` or later; look-behind and anchors see the whole text.
    std::expected<std::optional<RegexMatch>, RegexFailure> find(QStringView text, qsizetype from = 0,
                                                                Duration timeLimit = defaultTimeLimit) const;

    /// The matches in order, none overlapping another, at most `maximum` of them.
    std::expected<QList<RegexMatch>, RegexFailure> findAll(QStringView text, qsizetype maximum,
                                                           Duration timeLimit = defaultTimeLimit) const;

    /// The text with every match replaced by a plain text; "$" and "\" in it have no meaning.
    std::expected<QString, RegexFailure> replaced(QStringView text, QStringView replacement,
                                                  Duration timeLimit = defaultTimeLimit) const;

private:
    explicit Regex(std::shared_ptr<const icu::RegexPattern> pattern) : m_pattern(std::move(pattern)) {}

    std::shared_ptr<const icu::RegexPattern> m_pattern;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(Regex::Options)

} // namespace morvane
