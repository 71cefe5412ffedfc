#include "ui/controls/OutsideText.h"

#include "base/LabelText.h"
#include "ui/controls/NoteLabel.h"

namespace morvane {

namespace {

constexpr QChar breakingPlace(0x200B); // of no width
constexpr qsizetype longestWord = 24;
constexpr qsizetype longestPiece = 8;

void appendWord(QString &text, QStringView word)
{
    if (word.size() <= longestWord) {
        text.append(word);
        return;
    }
    qsizetype piece = 0;
    for (const QChar unit : word) {
        const bool belongsToLast = unit.isLowSurrogate() || unit.isMark();
        if (piece >= longestPiece && !belongsToLast) {
            text.append(breakingPlace);
            piece = 0;
        }
        text.append(unit);
        ++piece;
    }
}

QString breakable(const QString &text)
{
    QString result;
    qsizetype wordStart = 0;
    for (qsizetype place = 0; place < text.size(); ++place) {
        if (!text[place].isSpace())
            continue;
        appendWord(result, QStringView(text).sliced(wordStart, place - wordStart));
        result.append(text[place]);
        wordStart = place + 1;
    }
    appendWord(result, QStringView(text).sliced(wordStart));
    return result;
}

} // namespace

QString outsideText(const QString &text)
{
    return breakable(labelText(text));
}

void showOutsideText(NoteLabel &label, const QString &text)
{
    const QString beginning = labelText(text);
    const QString shown = breakable(beginning);
    label.setText(shown);
    const QString name = shown == beginning ? QString() : beginning;
    // Readers are told of each name that is set.
    if (label.accessibleName() != name)
        label.setAccessibleName(name);
}

} // namespace morvane
