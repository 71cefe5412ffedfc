#pragma once

#include <QString>

namespace morvane {

class NoteLabel;

/// A text from outside, or its beginning, with places to break its lines within words that no line may have
/// room for.
QString outsideText(const QString &text);

/// Shows a text from outside on a label, or its beginning. Words that are too long for a line are broken
/// anywhere, or they would widen the window; assistive technology reads them whole.
void showOutsideText(NoteLabel &label, const QString &text);

} // namespace morvane
