#include "app/SubagentRole.h"

#include <QFile>
#include <QStringList>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(SubagentRoleTest, EveryWordOfThePromptsStandsAsItIsToBe)
{
    QFile file(QString::fromUtf8(MORVANE_SOURCE_DIR "/tests/unit/app/SubagentPrompts.txt"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 8);
    for (qsizetype i = 0; i < lines.size(); i += 2) {
        const QString name = lines.at(i).section(u' ', 0, 0);
        const SubagentRole role = subagentRole(name);
        EXPECT_EQ(name + u" ("_s + displayName(role) + u')', lines.at(i));
        EXPECT_EQ(u"  "_s + systemPrompt(role), lines.at(i + 1));
    }
}

TEST(SubagentRoleTest, ANameInAnyCaseSelectsItsRoleAndAnyOtherTextTheGeneralOne)
{
    EXPECT_EQ(subagentRole(u"RESEARCHER"_s), SubagentRole::researcher);
    EXPECT_EQ(subagentRole(u"Implementer"_s), SubagentRole::implementer);
    EXPECT_EQ(subagentRole(u"verifieR"_s), SubagentRole::verifier);
    EXPECT_EQ(subagentRole(u"general"_s), SubagentRole::general);
    EXPECT_EQ(subagentRole(u"Assistant"_s), SubagentRole::general);
    EXPECT_EQ(subagentRole({}), SubagentRole::general);
}

} // namespace
} // namespace morvane
