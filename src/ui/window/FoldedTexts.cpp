#include "ui/window/FoldedTexts.h"

#include "base/Text.h"
#include "ui/markdown/LayoutCost.h"

#include <QLocale>
#include <QSet>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFragment>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int foldProperty = QTextFormat::UserProperty + 1;
/// The longest text, in UTF-16 units, whose characters are counted; that takes a millisecond.
constexpr qsizetype longestCounted = 80'000;
/// What a paragraph and the whole document may cost to lay out, so that a key takes no longer than a few
/// milliseconds.
constexpr qsizetype costliestParagraph = 6'000;
constexpr qsizetype costliestDocument = 20'000;
/// Of a line, besides its letters.
constexpr qsizetype lineCost = 4;
/// A text that costs less is let in as if it were typed, which goes on behind those limits.
constexpr qsizetype leastFolded = 500;
constexpr int typedFactor = 2;

bool hasContentIn(QStringView text)
{
    constexpr qsizetype step = 64;
    for (qsizetype at = 0; at < text.size(); at += step)
        if (!trimmed(text.sliced(at, std::min(step, text.size() - at))).isEmpty())
            return true;
    return false;
}

QString withLineFeeds(const QString &text)
{
    if (!text.contains(u'\r'))
        return text;
    QString result;
    result.reserve(text.size());
    for (qsizetype at = 0; at < text.size();) {
        qsizetype end = text.indexOf(u'\r', at);
        end = end < 0 ? text.size() : end;
        result += QStringView(text).sliced(at, end - at);
        at = end + 1;
        if (end < text.size()) {
            result += u'\n';
            at += at < text.size() && text[at] == u'\n' ? 1 : 0;
        }
    }
    return result;
}

qint64 bytesOf(QStringView text)
{
    qint64 bytes = 0;
    for (const QChar unit : text)
        bytes += unit.unicode() < 0x80 ? 1 : unit.unicode() < 0x800 || unit.isSurrogate() ? 2 : 3;
    return bytes;
}

/// Whether `run` is what is left of `label` when some of its characters are gone.
bool isRemnant(QStringView run, QStringView label)
{
    qsizetype at = 0;
    for (const QChar unit : run) {
        at = label.indexOf(unit, at) + 1;
        if (at == 0)
            return false;
    }
    return true;
}

QString labelFor(const QString &text)
{
    const QLocale locale(QLocale::English);
    const QString size = text.size() <= longestCounted
                             ? locale.toString(characterCount(text)) + u" characters"_s
                             : locale.formattedDataSize(bytesOf(text), 1, QLocale::DataSizeSIFormat);
    return u"[Pasted text, "_s + size + u']';
}

} // namespace

FoldedTexts::Fold FoldedTexts::fold(const QString &text)
{
    Fold fold;
    fold.text = withLineFeeds(text);
    fold.label = labelFor(fold.text);
    fold.hasContent = hasContentIn(fold.text);
    return fold;
}

bool FoldedTexts::isTooLong(qsizetype size)
{
    return size > typedFactor * costliestDocument;
}

bool FoldedTexts::isTooLong(const QTextCursor &cursor, const QString &text, Origin origin) const
{
    if (isTooLong(text.size()))
        return true;
    QString whole = m_document.toPlainText();
    whole.replace(cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart(), text);
    qsizetype wholeCost = 0;
    qsizetype paragraphCost = 0;
    for (const QStringView line : QStringView(whole).split(u'\n')) {
        const qsizetype cost = layoutCost(line);
        wholeCost += cost + lineCost;
        paragraphCost = std::max(paragraphCost, cost);
    }
    const bool isTyped = origin == Origin::written || layoutCost(text) < leastFolded;
    const int factor = isTyped ? typedFactor : 1;
    return wholeCost > factor * costliestDocument || paragraphCost > factor * costliestParagraph;
}

void FoldedTexts::insert(QTextCursor &cursor, const Fold &fold)
{
    QTextCharFormat format;
    format.setProperty(foldProperty, ++m_lastID);
    const QString label = fold.label;
    m_folds.insert(m_lastID, fold);
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    cursor.insertText(label, format);
    cursor.endEditBlock();
}

QList<FoldedTexts::Place> FoldedTexts::places() const
{
    QList<Place> places;
    if (m_folds.isEmpty())
        return places;
    for (QTextBlock block = m_document.begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const QTextFragment run = part.fragment();
            if (const int id = run.charFormat().intProperty(foldProperty))
                places.append({run.position(), run.position() + run.length(), id});
        }
    }
    return places;
}

std::optional<FoldedTexts::Place> FoldedTexts::placeAt(int position) const
{
    for (const Place &place : places())
        if (place.start <= position && position <= place.end)
            return place;
    return std::nullopt;
}

QString FoldedTexts::ownText(int from, int to) const
{
    QString text = cursorOver(from, to).selectedText();
    std::replace_if(
        text.begin(), text.end(),
        [](QChar unit) { return unit == QChar::ParagraphSeparator || unit == QChar::LineSeparator; }, u'\n');
    return text;
}

QString FoldedTexts::textBetween(int from, int to) const
{
    const QStringList pieces = piecesBetween(from, to);
    return pieces.size() == 1 ? pieces.constFirst() : pieces.join(QString()); // one alone is shared
}

QStringList FoldedTexts::piecesBetween(int from, int to) const
{
    QStringList pieces;
    const auto add = [&pieces](const QString &piece) {
        if (!piece.isEmpty())
            pieces.append(piece);
    };
    int at = from;
    for (const Place &place : places()) {
        if (place.end <= from || place.start >= to)
            continue;
        add(ownText(at, std::max(at, place.start)));
        add(m_folds.value(place.id).text);
        at = std::min(place.end, to);
    }
    add(ownText(at, to));
    return pieces;
}

bool FoldedTexts::hasContent() const
{
    for (QTextBlock block = m_document.begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const int id = part.fragment().charFormat().intProperty(foldProperty);
            if (id ? m_folds.value(id).hasContent : hasContentIn(part.fragment().text()))
                return true;
        }
    }
    return false;
}

void FoldedTexts::mend()
{
    // What undoing brings back may need another step to be whole.
    if (m_document.isRedoAvailable())
        return;
    const QList<Place> found = places();
    QSet<int> whole;
    bool isSound = true;
    for (const Place &place : found) {
        const QString run = ownText(place.start, place.end);
        const QString label = m_folds.value(place.id).label;
        isSound &= run == label;
        if (run.contains(label))
            whole.insert(place.id);
    }
    if (isSound)
        return;
    // Undoing takes both steps back at once: half a label that the user goes on beside would be mended away.
    QTextCursor step(&m_document);
    step.joinPreviousEditBlock();
    for (auto place = found.crbegin(); place != found.crend(); ++place) {
        const QString run = ownText(place->start, place->end);
        const QString label = m_folds.value(place->id).label;
        if (run == label)
            continue;
        const auto before = static_cast<int>(run.indexOf(label));
        if (before >= 0) {
            release(place->start, place->start + before);
            release(place->start + before + static_cast<int>(label.size()), place->end);
        } else if (whole.contains(place->id) || !isRemnant(run, label)) {
            release(place->start, place->end);
        } else {
            cursorOver(place->start, place->end).removeSelectedText();
        }
    }
    step.endEditBlock();
}

QTextCursor FoldedTexts::cursorOver(int from, int to) const
{
    QTextCursor cursor(&m_document);
    cursor.setPosition(from);
    cursor.setPosition(to, QTextCursor::KeepAnchor);
    return cursor;
}

void FoldedTexts::release(int from, int to)
{
    if (from < to)
        cursorOver(from, to).setCharFormat(QTextCharFormat());
}

} // namespace morvane
