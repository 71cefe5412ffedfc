#include "ui/markdown/MarkdownParser.h"
#include "ui/markdown/MarkdownSegmenter.h"
#include "ui/markdown/SegmentText.h"

#include <QFile>
#include <QRegularExpression>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

struct Example {
    int number = 0;
    QString section;
    QString markdown;
    QString html;
};

/// CommonMark's own examples, which scripts/install-peers.sh installs from npm.
QList<Example> examples()
{
    QFile file(QStringLiteral(MORVANE_SOURCE_DIR "/tests/peers/node_modules/commonmark-spec/spec.txt"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString text = QString::fromUtf8(file.readAll());
    static const QRegularExpression part(u"^`{32} example\\n(.*?)^\\.\\n(.*?)^`{32}$|^#{1,6} *([^\\n]*)$"_s,
                                         QRegularExpression::MultilineOption |
                                             QRegularExpression::DotMatchesEverythingOption);
    QList<Example> found;
    QString section;
    const QString body = text.section(u"<!-- END TESTS -->"_s, 0, 0);
    for (auto match = part.globalMatch(body); match.hasNext();) {
        const auto current = match.next();
        if (!current.captured(3).isEmpty())
            section = current.captured(3);
        else
            found.append({int(found.size()) + 1, section, current.captured(1).replace(u'→', u'\t'),
                          current.captured(2).replace(u'→', u'\t')});
    }
    return found;
}

/// Every letter that is shown, with how it looks: "b" bold, "i" italic, "c" code, "l" link. Blanks are left
/// out.
QString seen(const QString &text, const QString &look)
{
    QString result;
    for (const QChar letter : text)
        if (!letter.isSpace())
            result += letter + look;
    return result;
}

QString lookOf(bool bold, bool italic, bool code, bool link)
{
    return (bold ? u"b"_s : QString()) + (italic ? u"i"_s : QString()) + (code ? u"c"_s : QString()) +
           (link ? u"l"_s : QString());
}

QString ours(const QString &markdown)
{
    QString result;
    const auto addRuns = [&result](const QList<MarkdownRun> &runs, bool isCode) {
        for (const MarkdownRun &run : runs)
            if (!run.style.testFlag(MarkdownRun::aside))
                result += seen(run.text,
                               lookOf(run.style.testFlag(MarkdownRun::bold),
                                      run.style.testFlag(MarkdownRun::italic),
                                      isCode || run.style.testFlag(MarkdownRun::code), !run.link.isEmpty()));
    };
    const MarkdownSegments segments = MarkdownSegmenter::segments(markdown);
    for (const TextSegment &segment : segments.segments) {
        if (segment.kind == TextSegment::Kind::code) {
            result += seen(codeText(markdown, segment), u"c"_s);
            continue;
        }
        for (const MarkdownBlock &block :
             parseMarkdown(markdownSource(markdown, segment, segments.references))) {
            addRuns(block.runs, block.kind == MarkdownBlock::Kind::code);
            for (const auto &row : block.rows)
                for (const MarkdownCell &cell : row)
                    addRuns(cell.runs, false);
        }
    }
    return result;
}

/// What a page shows. An address that is no safe link is text, as with us, and a picture its description.
QString theirs(const QString &html)
{
    static const QRegularExpression tag(u"<(/?)([a-zA-Z][a-zA-Z0-9]*)((?:\\s[^<>]*)?)/?>"_s);
    static const QRegularExpression address(u"href=\"([^\"]*)\""_s);
    static const QRegularExpression description(u"alt=\"([^\"]*)\""_s);
    int bold = 0;
    int italic = 0;
    int code = 0;
    bool isLink = false;
    QString result;
    const auto add = [&](QString text) {
        text.replace(u"&lt;"_s, u"<"_s).replace(u"&gt;"_s, u">"_s).replace(u"&quot;"_s, u"\""_s);
        result += seen(text.replace(u"&amp;"_s, u"&"_s), lookOf(bold > 0, italic > 0, code > 0, isLink));
    };
    qsizetype at = 0;
    for (auto match = tag.globalMatch(html); match.hasNext();) {
        const auto current = match.next();
        add(html.sliced(at, current.capturedStart() - at));
        at = current.capturedEnd();
        const int step = current.captured(1).isEmpty() ? 1 : -1;
        const QString name = current.captured(2);
        if (name == "strong"_L1)
            bold += step;
        else if (name == "em"_L1)
            italic += step;
        else if (name == "code"_L1)
            code += step;
        else if (name == "a"_L1)
            isLink = step > 0 &&
                     isSafeLink(address.match(current.captured(3)).captured(1).replace(u"&amp;"_s, u"&"_s));
        else if (name == "img"_L1)
            add(description.match(current.captured(3)).captured(1));
    }
    add(html.sliced(at));
    return result;
}

TEST(CommonMarkTest, ExamplesAreShownAsTheyShouldBeButForThoseThatAreListed)
{
    const QList<Example> all = examples();
    ASSERT_EQ(all.size(), 652) << "scripts/install-peers.sh has not installed the examples";
    QFile list(QStringLiteral(MORVANE_SOURCE_DIR "/docs/markdown.md"));
    ASSERT_TRUE(list.open(QIODevice::ReadOnly));
    QSet<int> listed;
    // Numbers stand in the last column of the table.
    for (const QString &line : QString::fromUtf8(list.readAll()).split(u'\n')) {
        if (!line.startsWith(u'|'))
            continue;
        for (const QString &number : line.section(u'|', -2, -2).split(u','))
            if (const int value = number.trimmed().toInt(); value > 0)
                listed.insert(value);
    }
    QStringList wrong;
    for (const Example &example : all) {
        const bool isSame = ours(example.markdown) == theirs(example.html);
        if (isSame == listed.contains(example.number))
            wrong += u"%1 (%2) %3"_s.arg(example.number)
                         .arg(example.section, isSame ? u"no longer departs"_s : u"departs"_s);
    }
    EXPECT_TRUE(wrong.isEmpty()) << wrong.join(u'\n').toStdString();
}

} // namespace
} // namespace morvane
