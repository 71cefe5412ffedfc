#pragma once

#include "ui/controls/LabelText.h"
#include "ui/sheets/VisibleText.h"

#include <QString>

namespace morvane {

/// Characters of what a page says that go into a label.
inline constexpr qsizetype longestPageText = 200;

/// What a page says, such as its title, as a line of ours: what cannot be seen in it, or turns other text
/// around, is told.
inline QString pageText(const QString &text, qsizetype limit = longestPageText)
{
    return visibleText(labelText(text, limit).simplified()).text;
}

/// What a page is called: its title, or `otherwise` where that is empty.
inline QString pageName(const QString &title, const QString &otherwise)
{
    const QString name = pageText(title);
    return name.isEmpty() ? pageText(otherwise) : name;
}

/// A text of a page for a menu or a button, in which an ampersand would be taken for a mnemonic.
inline QString pageCaption(const QString &text, qsizetype limit = longestPageText)
{
    return pageText(text, limit).replace(u'&', QStringLiteral("&&"));
}

} // namespace morvane
