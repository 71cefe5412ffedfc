#pragma once

#include <QString>

namespace morvane {

/// What is left of a page for a model to read: scripts, styles and tags become blanks, the most common
/// entities their characters, every run of white space one blank, so that all stands on one line. Not
/// trimmed. Names of tags count in lower case only. Time grows with the size of the text, whatever it holds.
/// Any thread.
QString stripHTML(const QString &html);

} // namespace morvane
