#include "ui/conversation/SelectedText.h"

#include "ui/conversation/DocumentBuilder.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextTable>

namespace morvane {

namespace {

/// The toolkit's marks in the text of a table: before each of its cells, and behind its last.
constexpr char16_t cellMark = 0xfdd0;
constexpr char16_t tableEnd = 0xfdd1;

bool startsRow(const QTextDocument &document, int cell)
{
    QTextCursor cursor(document.findBlock(cell));
    cursor.setPosition(cell);
    const QTextTable *table = cursor.currentTable();
    return table != nullptr && table->cellAt(cell).column() == 0;
}

} // namespace

QString selectedText(const QTextDocument &document, const SelectedRange &range)
{
    const int last = document.characterCount() - 1;
    const int from = qMin(range.from, last);
    const int to = range.to < 0 ? last : qMin(range.to, last);
    QString text;
    for (int at = from; at < to; ++at) {
        const QChar character = document.characterAt(at);
        switch (character.unicode()) {
        case QChar::ParagraphSeparator:
            text += u'\n';
            if (standsApart(document.findBlock(at + 1)))
                text += u'\n';
            break;
        case QChar::LineSeparator:
        case tableEnd:
            text += u'\n';
            break;
        case cellMark:
            if (startsRow(document, at + 1))
                text += text.isEmpty() || text.endsWith(u'\n') ? QString() : QString(u'\n');
            else
                text += u'\t';
            break;
        default:
            text += character;
            break;
        }
    }
    return text;
}

} // namespace morvane
