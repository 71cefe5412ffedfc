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

ChatAttachment picture(const QByteArray &data = "png")
{
    ChatAttachment attachment;
    attachment.kind = AttachmentKind::image;
    attachment.filename = u"holiday.png"_s;
    attachment.data = data;
    return attachment;
}

ChatMessage withFiles(Role role, const QString &text, const QList<ChatAttachment> &attachments)
{
    ChatMessage message = sampleMessage(role, text);
    message.attachments = attachments;
    return message;
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

TEST(MessagePartsTest, FilesAreNamedOnceWhateverElseThereIs)
{
    const ChatMessage alone = withFiles(Role::user, {}, {picture()});
    EXPECT_EQ(messageParts(alone), QList{RowPart::body});
    EXPECT_EQ(partText(alone, RowPart::body), u"holiday.png"_s);
    const ChatMessage both = withFiles(Role::user, u"Look"_s, {picture()});
    EXPECT_EQ(messageParts(both), QList({RowPart::body, RowPart::attachments}));
    EXPECT_EQ(partText(both, RowPart::attachments), u"holiday.png"_s);
}

TEST(MessagePartsTest, AnAnswerOnItsWayAndAnErrorAreTold)
{
    ChatMessage answer = sampleMessage(Role::assistant, u"Well"_s);
    answer.isStreaming = true;
    EXPECT_EQ(messageParts(answer), QList({RowPart::body, RowPart::responding}));
    answer.isStreaming = false;
    answer.errorMessage = u"No network."_s;
    EXPECT_EQ(messageParts(answer), QList({RowPart::body, RowPart::error}));
    EXPECT_EQ(partText(answer, RowPart::error), u"Error: No network."_s);
}

TEST(MessagePartsTest, TheUsersPicturesAreShownAndNotWithoutEnd)
{
    QList<ChatAttachment> many(30, picture());
    many.prepend(picture({}));
    const ChatMessage sent = withFiles(Role::user, {}, many);
    EXPECT_EQ(shownPictures(sent).size(), 20);
    EXPECT_EQ(shownPictureCount(sent), 20);
    const ChatMessage answer = withFiles(Role::assistant, {}, many);
    EXPECT_TRUE(shownPictures(answer).isEmpty());
    EXPECT_EQ(shownPictureCount(answer), 0);
}

} // namespace
} // namespace morvane
