#include "mcp/NewServerForm.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(NewServerFormTest, ANameOfBlanksOrNoCommandIsNotEnough)
{
    EXPECT_FALSE((NewServerForm{u"   "_s, u"stdio"_s, u"run"_s, {}, {}}.isValid()));
    EXPECT_FALSE((NewServerForm{u"S"_s, u"stdio"_s, u"  "_s, u"a"_s, u"https://x"_s}.isValid()));
    EXPECT_TRUE((NewServerForm{u" S "_s, u"stdio"_s, u" run "_s, {}, {}}.isValid()));
}

TEST(NewServerFormTest, AnAddressBeginsInLowerCaseExactly)
{
    const auto isValid = [](const QString &url) {
        return NewServerForm{u"S"_s, u"http"_s, u"run"_s, {}, url}.isValid();
    };
    EXPECT_TRUE(isValid(u" https://x/mcp "_s));
    EXPECT_TRUE(isValid(u"http://127.0.0.1:1/mcp"_s));
    EXPECT_FALSE(isValid(u"HTTP://x"_s));
    EXPECT_FALSE(isValid(u"ftp://x"_s));
    EXPECT_FALSE(isValid({}));
}

TEST(NewServerFormTest, ArgumentsAreSplitAtBlanksWithoutRegardToQuotes)
{
    const NewServerForm form{u" My Files "_s, u"stdio"_s, u" npx -y x "_s, u"a  'b c' "_s, u" u "_s};
    const MCPServerConfig server = form.server();
    EXPECT_EQ(server.args, (QStringList{u"a"_s, u"'b"_s, u"c'"_s}));
    EXPECT_EQ((NewServerForm{u"S"_s, u"stdio"_s, u"x"_s, u"a  b"_s, {}}.server().args.size()), 2);
    EXPECT_EQ(server.name, u"My Files");
    EXPECT_EQ(server.command, u"npx -y x");
    EXPECT_EQ(server.url, u"u") << "what the form held";
    EXPECT_TRUE(server.enabled);
    EXPECT_NE(server.id, form.server().id);
}

TEST(NewServerFormTest, ARemoteServerHasNoArguments)
{
    EXPECT_TRUE((NewServerForm{u"S"_s, u"http"_s, {}, u"a b"_s, u"http://x"_s}.server().args.isEmpty()));
}

} // namespace
} // namespace morvane
