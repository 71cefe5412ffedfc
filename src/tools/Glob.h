#pragma once

#include "base/Regex.h"

#include <QByteArray>
#include <QString>
#include <optional>
#include <string_view>

namespace morvane {

/// A file-name pattern: "**" stands for anything, "*" and "?" for anything but "/", everything else for
/// itself. There is no special form for "**/", so "**/a" needs a slash. Immutable; any thread.
class Glob {
public:
    /// The regular expression for a whole name or path.
    static QString globToRegex(const QString &glob);

    /// Nothing if the expression cannot be compiled.
    static std::optional<Glob> compile(const QString &pattern);

    enum class Answer { no, yes, tooSlow };

    /// Whether the pattern matches the whole of a name or path; too slow if that is not found out in 100 ms.
    Answer matches(std::string_view name) const;

private:
    Glob(Regex regex, QByteArray literal) : m_regex(std::move(regex)), m_literal(std::move(literal)) {}

    Regex m_regex;
    QByteArray m_literal; ///< The longest piece without wildcards: every match holds it.
};

} // namespace morvane
