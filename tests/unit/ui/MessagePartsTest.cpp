#include "ui/conversation/MessageParts.h"

#include "support/SampleMessage.h"
#include "ui/conversation/SelectionReader.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// All that is shown of an answer, as it is copied.
QString shown(const QString &answer)
{
    return SelectionReader::wholeText({SelectedRow(sampleMessage(Role::assistant, answer))});
}

TEST(MessagePartsTest, AnAnswerOfMarksAloneIsShownAsItStands)
{
    for (const auto &answer : {u">"_s, u"> \n>"_s, u">>"_s, u"#"_s, u"###"_s, u"```"_s, u"```\n```"_s, u"~"_s,
                               u"[home]: https://example.com"_s, u">\n"_s.repeated(100'000).trimmed()})
        EXPECT_EQ(shown(answer), answer) << answer.first(qMin<qsizetype>(answer.size(), 30)).toStdString();
}

TEST(MessagePartsTest, MarksAroundWordsStayMarks)
{
    EXPECT_EQ(shown(u"> quoted"_s), u"quoted"_s);
    EXPECT_EQ(shown(u"# Title"_s), u"Title"_s);
    EXPECT_EQ(shown(u"See [home].\n\n[home]: https://example.com"_s), u"See home (example.com)."_s);
}

} // namespace
} // namespace morvane
