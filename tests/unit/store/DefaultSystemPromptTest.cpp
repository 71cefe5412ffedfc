#include "store/DefaultSystemPrompt.h"

#include <QCryptographicHash>
#include <QStringList>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(DefaultSystemPromptTest, HasElevenParagraphsAndNoLineEndBehindThem)
{
    const QString prompt = defaultSystemPrompt();
    EXPECT_EQ(prompt.split(u"\n\n"_s).size(), 11);
    EXPECT_FALSE(prompt.endsWith(u'\n'));
    EXPECT_FALSE(prompt.contains(u"\n\n\n"_s));
    EXPECT_EQ(prompt.count(u'\n'), 20);
}

TEST(DefaultSystemPromptTest, KeepsTheRunsOfBlanksOfItsFourthAndFifthParagraph)
{
    const QStringList paragraphs = defaultSystemPrompt().split(u"\n\n"_s);
    for (qsizetype i = 0; i < paragraphs.size(); ++i)
        EXPECT_EQ(paragraphs.at(i).count(u"     "_s), i == 3 ? 7 : i == 4 ? 4 : 0) << i;
}

/// A changed prompt needs a higher version, or only new users would get it.
TEST(DefaultSystemPromptTest, TextBelongsToItsVersion)
{
    EXPECT_EQ(defaultSystemPromptVersion, 7);
    EXPECT_EQ(QCryptographicHash::hash(defaultSystemPrompt().toUtf8(), QCryptographicHash::Sha256).toHex(),
              QByteArray("5aa0629dbc37a5b5a20fc968fd1a1a58149c544c706af8cbe1df15374a1f7b66"));
}

} // namespace
} // namespace morvane
