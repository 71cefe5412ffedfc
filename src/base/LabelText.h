#pragma once

#include "base/Text.h"

#include <QString>

namespace morvane {

/// Characters of a text from outside that go into a name, a tool tip or a line of a window. The whole text
/// stands where it can be read piece by piece.
inline constexpr qsizetype labelLimit = 2000;

/// `text` as it stands, or its first `limit` characters and "…"; fewer of characters that are long, since a
/// label is laid out in one go.
inline QString labelText(const QString &text, qsizetype limit = labelLimit)
{
    const QString beginning = firstCharacters(text.first(qMin(text.size(), 2 * limit)), limit);
    return beginning.size() == text.size() ? text : beginning + u'…';
}

} // namespace morvane
