#pragma once

#include <QStringView>
#include <string>

namespace morvane {

/// A text in lower case (capitals of ASCII may be left), put into letters that an engine without Unicode
/// reads as ICU reads the text: for each of its characters one byte of ASCII that stands for all characters
/// to which the expressions of DestructiveCommands make no difference. What they name is itself; the rest
/// becomes one of these stand-ins, none of which they name. A word boundary of ICU, which looks through
/// combining and formatting characters, is one between the stand-ins. Any thread.
std::string commandLetters(QStringView text);

/// The members of the stand-ins for `\w`, `\s`, `\d` and `.`, as the inside of a set.
inline constexpr const char *wordLetters = R"(0-9a-z_W\x01)";
inline constexpr const char *spaceLetters = R"(\t\n\r )";
inline constexpr const char *digitLetters = R"(0-9)";
inline constexpr const char *lineEndLetters = R"(\n\r)";

} // namespace morvane
