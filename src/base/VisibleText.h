#pragma once

#include <QList>
#include <QString>
#include <QStringView>

namespace morvane {

/// A text that shows everything it holds.
struct VisibleText {
    struct Range {
        qsizetype start = 0;
        qsizetype length = 0;

        bool operator==(const Range &) const = default;
    };

    QString text;
    QList<Range> escapes; ///< Where a character of the original was replaced, in order.
};

/// Replaces every character that is not seen, that can pass for a blank or a line end, or that reorders the
/// characters around it by its escape: "\t", "\r", "\u202E", "\U000E0041". Line feeds and blanks stay, but
/// for a run of blanks too long to be seen, which is told as "[200 blanks]". Linear in the size of the text.
/// Any thread.
VisibleText visibleText(QStringView text);

} // namespace morvane
