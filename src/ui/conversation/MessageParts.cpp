#include "ui/conversation/MessageParts.h"

#include "base/Text.h"
#include "ui/markdown/MarkdownSegmenter.h"
#include "ui/markdown/PlainTextSegmenter.h"
#include "ui/markdown/SegmentText.h"

#include <QStringList>
#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// A name of a file is short everywhere but in files that were made to do harm.
constexpr qsizetype fileNameLimit = 255;

constexpr qsizetype mostPictures = 20;

bool standsApart(const TextSegment &segment)
{
    using Joint = TextSegment::Joint;
    if (segment.kind == TextSegment::Kind::code)
        return segment.startsBlock;
    return segment.joint == Joint::block || segment.joint == Joint::heading;
}

bool isPicture(const ChatAttachment &attachment)
{
    return attachment.kind == AttachmentKind::image && attachment.data && !attachment.data->isEmpty();
}

/// Whether an answer consists of nothing but marks, such as ">" or a link's definition, of which formatting
/// would leave a blank.
bool isMarksOnly(QStringView text)
{
    return std::all_of(text.begin(), text.end(),
                       [](QChar unit) { return unit.isSpace() || u">#`~"_s.contains(unit); });
}

bool definesOnly(QStringView text, const MarkdownSegments &markdown)
{
    return markdown.segments.size() == 1 && !markdown.references.isEmpty() &&
           trimmed(shownText(text, markdown.segments.constFirst(), markdown.references)).isEmpty();
}

QString shownFileNames(const ChatMessage &message)
{
    QStringList names;
    for (const ChatAttachment &attachment : message.attachments)
        names += flattened(attachment.filename, fileNameLimit);
    return names.join(u", "_s);
}

} // namespace

QList<RowPart> messageParts(const ChatMessage &message)
{
    QList<RowPart> parts{RowPart::body};
    if (!message.text.isEmpty() && !message.attachments.isEmpty())
        parts += RowPart::attachments;
    if (message.isStreaming)
        parts += RowPart::responding;
    if (message.errorMessage)
        parts += RowPart::error;
    return parts;
}

QString partText(const ChatMessage &message, RowPart part)
{
    switch (part) {
    case RowPart::body:
        return message.displayText();
    case RowPart::attachments:
        return shownFileNames(message);
    case RowPart::responding:
        return u"Morvane is responding…"_s;
    case RowPart::error:
        return u"Error: "_s + message.errorMessage.value_or(QString());
    }
    Q_UNREACHABLE();
}

bool isFormatted(const ChatMessage &message)
{
    return message.role == Role::assistant && !message.isStreaming && !message.text.isEmpty();
}

QList<ChatAttachment> shownPictures(const ChatMessage &message)
{
    QList<ChatAttachment> pictures;
    if (message.role != Role::user)
        return pictures;
    for (const ChatAttachment &attachment : message.attachments)
        if (isPicture(attachment) && pictures.size() < mostPictures)
            pictures.append(attachment);
    return pictures;
}

qsizetype shownPictureCount(const ChatMessage &message)
{
    if (message.role != Role::user)
        return 0;
    return qMin<qsizetype>(std::count_if(message.attachments.begin(), message.attachments.end(), isPicture),
                           mostPictures);
}

QList<TextSegment> partSegments(const ChatMessage &message, RowPart part, QString &references)
{
    const QString text = partText(message, part);
    QList<TextSegment> segments;
    if (part == RowPart::body && isFormatted(message) && !isMarksOnly(text)) {
        MarkdownSegments markdown = MarkdownSegmenter::segments(text);
        if (!definesOnly(text, markdown)) {
            references = std::move(markdown.references);
            return std::move(markdown.segments);
        }
    }
    extendPlainSegments(segments, text);
    return segments;
}

QString separatorBetween(QStringView text, const SegmentLayout &above, const SegmentLayout &below)
{
    const TextSegment &segment = below.segment;
    if (below.part != above.part)
        return u"\n"_s;
    if (segment.kind != TextSegment::Kind::plain &&
        (above.segment.kind != segment.kind || standsApart(segment)))
        return u"\n\n"_s;
    if (segment.kind == TextSegment::Kind::markdown && segment.joint == TextSegment::Joint::item)
        return u"\n"_s;
    // Lines that are too long are cut between words or within one; then nothing stands there but a blank.
    const qsizetype end = qMax<qsizetype>(0, above.segment.end() - 1);
    const QStringView between = text.sliced(end, segment.from - end);
    return between.contains(u'\n') ? u"\n"_s : between.mid(1).toString();
}

RowLayout rowOf(const ChatMessage &message)
{
    RowLayout row;
    for (const RowPart part : messageParts(message)) {
        const QList<TextSegment> segments = partSegments(message, part, row.references);
        addSegments(row, part, segments, partText(message, part));
    }
    return row;
}

RowLayout rowOf(const QString &text)
{
    RowLayout row;
    QList<TextSegment> segments;
    extendPlainSegments(segments, text);
    addSegments(row, RowPart::body, segments, text);
    return row;
}

void addSegments(RowLayout &row, RowPart part, const QList<TextSegment> &segments, QStringView text)
{
    row.segments.reserve(row.segments.size() + segments.size());
    for (const TextSegment &segment : segments) {
        QStringView shown = text.sliced(segment.from, segment.length);
        if (segment.kind == TextSegment::Kind::plain && shown.endsWith(u'\n'))
            shown.chop(1);
        const auto lineEnds = static_cast<int>(std::count(shown.begin(), shown.end(), u'\n'));
        row.segments.append({.segment = segment, .part = part, .lineEnds = lineEnds});
    }
}

} // namespace morvane
