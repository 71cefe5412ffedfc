#pragma once

class QString;

namespace morvane {

class NoteLabel;

/// Shows a text from outside on a label, or its beginning. Words that are too long for a line are broken
/// anywhere, or they would widen the window; assistive technology reads them whole.
void showOutsideText(NoteLabel &label, const QString &text);

} // namespace morvane
