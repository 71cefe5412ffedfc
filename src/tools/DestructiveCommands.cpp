#include "tools/DestructiveCommands.h"

#include "tools/CommandLetters.h"

#include <iterator>
#include <re2/re2.h>
#include <string>
#include <string_view>

namespace morvane {
namespace {

/// Searched in a lower-cased command, so "secureErase" and "zeroDisk" never match; they stay for the reader.
constexpr QStringView expressions[] = {
    uR"(\brm\s+[^\n]*-\w*[rf]\w*)",
    uR"(\brmdir\b)",
    uR"(\bmkfs\w*\b)",
    uR"(\bdd\b)",
    uR"(\bdiskutil\s+(erase|secureErase|zeroDisk|reformat)\b)",
    uR"(\bfdisk\b|\bgdisk\b|\bparted\b)",
    uR"(\bshutdown\b|\breboot\b|\bhalt\b|\bpoweroff\b)",
    uR"(\bkill\s+-s\s+9\b|\bkill\s+-\w*[Kk]\w*\b|\bkill\s+-\d+\b)",
    uR"(\bkillall\b|\bpkill\b)",
    uR"(\bsystemctl\b)",
    uR"(\bsudo\b)",
    uR"(\bgit\s+push\s+.*(--force|-f)\b)",
    uR"(\bchmod\s+-\w*[Rr]\w*|\bchown\s+-\w*[Rr]\w*|\bchmod\s+--recursive\b|\bchown\s+--recursive\b)",
    uR"((^|\s)>>?\s*/dev/(disk|rdisk))",
    uR"(\bfind\s+[^\n]*\s-delete\b)",
};

bool isAscii(QStringView text)
{
    char16_t seen = 0;
    for (const char16_t unit : std::u16string_view(text.utf16(), static_cast<std::size_t>(text.size())))
        seen |= unit;
    return seen < 0x80;
}

/// The expression over the letters of commandLetters().
std::string overLetters(QStringView expression)
{
    std::string result;
    for (qsizetype at = 0; at < expression.size(); ++at) {
        const QStringView rest = expression.sliced(at);
        const bool isClass = rest.startsWith(u"\\w") || rest.startsWith(u"\\s") || rest.startsWith(u"\\d");
        if (isClass) {
            const char16_t letter = rest[1].unicode();
            result += std::string("[") +
                      (letter == u'w'   ? wordLetters
                       : letter == u's' ? spaceLetters
                                        : digitLetters) +
                      ']';
            ++at;
        } else if (rest.front() == u'.') {
            result += std::string("[^") + lineEndLetters + ']';
        } else {
            result += static_cast<char>(rest.front().unicode());
        }
    }
    return result;
}

/// One automaton for all of them, which reads each letter once.
const re2::RE2 &automaton()
{
    static const re2::RE2 compiled(
        [] {
            std::string all;
            for (const QStringView expression : expressions)
                all += (all.empty() ? "(?:" : "|(?:") + overLetters(expression) + ')';
            return all;
        }(),
        [] {
            re2::RE2::Options options(re2::RE2::Latin1);
            options.set_never_capture(true);
            return options;
        }());
    return compiled;
}

} // namespace

bool isDestructiveCommand(const QString &command)
{
    return re2::RE2::PartialMatch(
        isAscii(command) ? commandLetters(command) : commandLetters(command.toLower()), automaton());
}

QList<QStringView> destructivePatterns()
{
    return {std::begin(expressions), std::end(expressions)};
}

} // namespace morvane
