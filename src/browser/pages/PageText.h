#pragma once

#include "base/LabelText.h"
#include "base/VisibleText.h"

#include <QString>

namespace morvane {

// What a page says, or the site that it comes from, as it may be shown and spoken: bounded, and with
// everything told that could not be seen or would turn other text around.

/// Characters of what a page says that go into a line of ours.
inline constexpr qsizetype longestPageText = 200;

/// In one line, such as a title, a site or a file's name.
inline QString pageText(const QString &text, qsizetype limit = longestPageText)
{
    return visibleText(labelText(text, limit).simplified()).text;
}

/// With its own lines, such as a question.
inline QString pageLines(const QString &text)
{
    return visibleText(labelText(text)).text;
}

/// What a page is called: its title, or `otherwise` where that is empty.
inline QString pageName(const QString &title, const QString &otherwise)
{
    const QString name = pageText(title);
    return name.isEmpty() ? pageText(otherwise) : name;
}

} // namespace morvane
