#include "ui/sheets/LongTextField.h"

#include "base/Text.h"
#include "ui/markdown/LayoutCost.h"
#include "ui/markdown/PlainTextSegmenter.h"
#include "ui/theme/ThemeColors.h"

#include <QMimeData>
#include <QPainter>
#include <QTextBlock>
#include <QTextLayout>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// The most that a slice costs to lay out, and so its length. The first is laid out several times before it
/// is seen.
constexpr qsizetype sliceLimit = 4'000;
constexpr qsizetype firstSliceLimit = 2'000;
/// Of what costs as much again with each drawing, it may cost so many times less.
constexpr qsizetype dearFactor = 4;
constexpr qsizetype sliceLines = 200;
constexpr int droppedLines = 2'000;
/// The state of a block whose line goes on in the next block.
constexpr int goesOn = 1;
/// Marking is paid for with each painting; a text with more escapes than that shows what it is anyway.
constexpr qsizetype mostMarked = 100;

constexpr QChar leftToRightOverride(0x202d);

bool readsRightToLeft(QStringView text)
{
    constexpr char16_t firstHebrew = 0x590;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].unicode() < firstHebrew)
            continue;
        const bool isPair = text[i].isHighSurrogate() && i + 1 < text.size();
        const char32_t character = isPair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : text[i].unicode();
        const QChar::Direction direction = QChar::direction(character);
        if (direction == QChar::DirR || direction == QChar::DirAL || direction == QChar::DirAN)
            return true;
    }
    return false;
}

/// A block of the field: a line of the text or a piece of one.
struct Piece {
    qsizetype from = 0;
    qsizetype length = 0;
    bool endsLine = true;
    bool isTurned = false; ///< Its line would not read from left to right by itself.
};

/// The pieces of `text`; behind a line end that closes it stands an empty one.
QList<Piece> piecesOf(QStringView text)
{
    QList<Piece> pieces;
    for (qsizetype at = 0; at <= text.size();) {
        const qsizetype lineEnd = text.indexOf(u'\n', at);
        const qsizetype end = lineEnd < 0 ? text.size() : lineEnd;
        const bool isTurned = readsRightToLeft(text.sliced(at, end - at));
        do {
            const QStringView rest = text.sliced(at, end - at);
            const qsizetype most = affordableLength(rest, segmentLimit);
            const qsizetype length = most == rest.size() ? most : cutPosition(rest, most);
            at += length;
            pieces.append({at - length, length, at == end, isTurned});
        } while (at < end);
        ++at;
    }
    return pieces;
}

} // namespace

LongTextField::LongTextField(QWidget *parent) : QPlainTextEdit(parent)
{
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &LongTextField::takeSlice);
    m_dropTimer.setSingleShot(true);
    connect(&m_dropTimer, &QTimer::timeout, this, &LongTextField::dropSlice);
}

void LongTextField::setContent(const QString &text, Style style, Hidden hidden)
{
    m_timer.stop();
    m_dropTimer.stop();
    m_source = text;
    m_style = style;
    m_hidden = hidden;
    m_taken = m_characters = 0;
    m_lines = 1;
    m_isWithinLine = false;
    m_escapes.clear();
    clear();
    QTextOption option = document()->defaultTextOption();
    // The words around a command are English, whichever script its first letter belongs to.
    option.setTextDirection(style == Style::command ? Qt::LeftToRight : Qt::LayoutDirectionAuto);
    document()->setDefaultTextOption(option);
    takeSlice();
    moveCursor(QTextCursor::Start);
}

void LongTextField::letGo()
{
    m_timer.stop();
    m_source.clear();
    m_taken = m_characters = m_lines = 0;
    m_escapes.clear();
    setExtraSelections({});
    dropSlice();
}

void LongTextField::dropSlice()
{
    if (document()->blockCount() <= droppedLines) {
        clear();
        return;
    }
    QTextCursor cursor(document());
    cursor.setPosition(document()->findBlockByNumber(droppedLines).position(), QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    m_dropTimer.start(0);
}

qsizetype LongTextField::nextSlice() const
{
    const QStringView rest = QStringView(m_source).sliced(m_taken);
    const qsizetype limit = m_taken == 0 ? firstSliceLimit : sliceLimit;
    qsizetype length = affordableLength(rest, limit);
    if (isDear(layoutCost(rest.first(length)), length))
        length = affordableLength(rest, limit / dearFactor);
    // Of hidden characters an escape is shown that is many times as long.
    while (m_hidden == Hidden::escaped && length > 1 &&
           layoutCost(visibleText(rest.first(length)).text) > limit)
        length /= 2;
    qsizetype lineEnd = -1;
    for (qsizetype line = 0; line < sliceLines; ++line) {
        lineEnd = rest.first(length).indexOf(u'\n', lineEnd + 1);
        if (lineEnd < 0)
            break;
    }
    if (lineEnd >= 0)
        return lineEnd + 1;
    if (length == rest.size())
        return length;
    length = cutPosition(rest, length);
    // Runs of blanks are told as one, and a carriage return belongs to its line feed.
    const auto belongsToNext = [next = rest[length]](QChar unit) {
        return (unit == u' ' && next == u' ') || unit == u'\r';
    };
    while (length > 1 && belongsToNext(rest[length - 1]))
        --length;
    return length > 1 ? length : std::min(rest.size(), sliceLimit);
}

void LongTextField::takeSlice()
{
    const QString slice = m_source.sliced(m_taken, nextSlice());
    m_taken += slice.size();
    const VisibleText visible = m_hidden == Hidden::escaped ? visibleText(slice) : VisibleText{slice, {}};
    m_lines += visible.text.count(u'\n');
    m_characters += characterCount(visible.text);
    insert(visible);
    m_isWithinLine = !visible.text.endsWith(u'\n');
    if (isComplete())
        Q_EMIT completed();
    else
        m_timer.start(0);
}

void LongTextField::insert(const VisibleText &visible)
{
    const QList<Piece> pieces = piecesOf(visible.text);
    QTextBlock block = document()->lastBlock();
    if (m_isWithinLine)
        block.setUserState(goesOn);
    const int begin = block.position() + block.length() - 1;
    const int firstNumber = block.blockNumber() + (m_isWithinLine ? 1 : 0);

    QString inserted;
    QList<int> starts; // of the pieces in the document
    for (const Piece &piece : pieces) {
        if (m_isWithinLine || !starts.isEmpty())
            inserted += u'\n';
        if (piece.isTurned && m_style == Style::command)
            inserted += leftToRightOverride;
        starts.append(begin + static_cast<int>(inserted.size()));
        inserted += QStringView(visible.text).sliced(piece.from, piece.length);
    }
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(inserted);

    block = document()->findBlockByNumber(firstNumber);
    for (const Piece &piece : pieces) {
        if (!piece.endsLine)
            block.setUserState(goesOn);
        // The toolkit shapes the letters anew for each drawing otherwise.
        block.layout()->setCacheEnabled(true);
        block = block.next();
    }
    qsizetype index = 0;
    for (const VisibleText::Range &escape : visible.escapes) {
        if (m_escapes.size() == mostMarked)
            break;
        while (index + 1 < pieces.size() && pieces.at(index + 1).from <= escape.start)
            ++index;
        const Piece &piece = pieces.at(index);
        const qsizetype end = std::min(escape.start + escape.length, piece.from + piece.length);
        cursor.setPosition(starts.at(index) + static_cast<int>(escape.start - piece.from));
        cursor.setPosition(starts.at(index) + static_cast<int>(end - piece.from), QTextCursor::KeepAnchor);
        m_escapes.append(cursor);
    }
    markEscapes();
}

void LongTextField::markEscapes()
{
    const ThemeColors colors = ThemeColors::fromPalette(palette());
    QTextCharFormat format;
    format.setForeground(colors.surface);
    format.setBackground(colors.error);
    QList<QTextEdit::ExtraSelection> marks;
    for (const QTextCursor &escape : std::as_const(m_escapes))
        marks.append({escape, format});
    setExtraSelections(marks);
}

QString LongTextField::textBetween(int from, int to) const
{
    QString text;
    for (QTextBlock block = document()->findBlock(from); block.isValid() && block.position() <= to;
         block = block.next()) {
        const int start = std::max(0, from - block.position());
        const int end = std::min(block.length() - 1, to - block.position());
        text += QStringView(block.text()).sliced(start, end - start);
        const bool reachesBeyond = to > block.position() + block.length() - 1;
        if (reachesBeyond && block.userState() != goesOn)
            text += u'\n';
    }
    return text.remove(leftToRightOverride);
}

QMimeData *LongTextField::createMimeDataFromSelection() const
{
    const QTextCursor cursor = textCursor();
    auto *data = new QMimeData;
    data->setText(textBetween(cursor.selectionStart(), cursor.selectionEnd()));
    return data;
}

void LongTextField::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        markEscapes();
}

void LongTextField::paintEvent(QPaintEvent *event)
{
    QPlainTextEdit::paintEvent(event);
    if (m_style == Style::command)
        paintLineEnds();
}

void LongTextField::paintLineEnds()
{
    QPainter painter(viewport());
    painter.setPen(ThemeColors::fromPalette(palette()).secondaryText);
    painter.setFont(font());
    for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
        const QRectF place = blockBoundingGeometry(block).translated(contentOffset());
        if (place.top() > viewport()->height())
            break;
        const int rows = block.layout()->lineCount();
        if (rows == 0 || block.userState() == goesOn || !block.next().isValid())
            continue;
        const QTextLine last = block.layout()->lineAt(rows - 1);
        const QPointF end = place.topLeft() + last.naturalTextRect().topRight();
        painter.drawText(end + QPointF(0, last.ascent()), u"¶"_s);
    }
}

} // namespace morvane
