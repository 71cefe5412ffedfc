#pragma once

#include "ui/conversation/TextSelection.h"

#include <QString>
#include <QTextDocument>

namespace morvane {

/// What is selected of a segment's document, as it is copied: tabs between the cells of a table, and an empty
/// line between blocks that stand apart.
QString selectedText(const QTextDocument &document, const SelectedRange &range);

} // namespace morvane
