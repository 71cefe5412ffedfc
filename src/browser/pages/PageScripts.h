#pragma once

#include <QString>

namespace morvane {

/// Takes the marks of earlier readings off the page's elements: an element of the list would otherwise be
/// found by the old mark of another one that stands in front of it.
QString removeMarksScript();

/// Reads the page, and leaves a mark on each element that it lists. Its value is what PageReading reads.
QString elementScript();

/// Presses the element with this mark. The value is a JSON object with `ok`, and `name` or `reason`.
QString clickScript(const QString &ref);

/// Sets the value of the field with this mark, and sends its form if `submit`. The value is as for a click.
QString typeScript(const QString &ref, const QString &text, bool submit);

/// Scrolls by units of 600 pixels, downwards when negative.
QString scrollScript(qint64 amount);

} // namespace morvane
