#include "McpFixture.h"

#include <QProcess>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

namespace json = boost::json;

const QString peersFolder = QStringLiteral(MORVANE_SOURCE_DIR "/tests/peers");

/// Servers of others, which scripts/install-peers.sh installs from npm.
class RealPeersTest : public McpTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QFile::exists(node())) << "scripts/install-peers.sh has not installed the peers";
    }

    static QString node() { return peersFolder + u"/node_modules/.bin/node"_s; }
    static QString script(const QString &server)
    {
        return peersFolder + u"/node_modules/@modelcontextprotocol/server-"_s + server + u"/dist/index.js"_s;
    }
    std::shared_ptr<MCPConnection> peer(const QString &server, QStringList args = {})
    {
        args.prepend(script(server));
        return stdio(node(), args);
    }
    QStringList toolsOf(const std::shared_ptr<MCPConnection> &connection)
    {
        QStringList names;
        for (const MCPTool &tool : runTask(scheduler, connection->listTools()))
            names.append(tool.name);
        return names;
    }

    /// Starts the everything server over HTTP, and gives its address.
    QUrl serveEverything()
    {
        remote.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        remote.start(node(), {u"--require"_s, peersFolder + u"/loopback.cjs"_s, script(u"everything"_s),
                              u"streamableHttp"_s});
        QString output;
        QRegularExpressionMatch port;
        EXPECT_TRUE(waitUntil([&] {
            output += QString::fromUtf8(remote.readAllStandardOutput());
            port = QRegularExpression(u"port (\\d+)\n"_s).match(output);
            return port.hasMatch();
        }));
        return QUrl(u"http://127.0.0.1:%1/mcp"_s.arg(port.captured(1)));
    }

    ~RealPeersTest() override
    {
        remote.kill();
        remote.waitForFinished();
    }

    QProcess remote;
};

TEST_F(RealPeersTest, TheEverythingServerOverStandardStreams)
{
    const auto connection = peer(u"everything"_s);
    connect(connection);
    EXPECT_TRUE(toolsOf(connection).contains(u"echo"_s));
    EXPECT_EQ(call(connection, u"echo"_s, {{"message", "Grüße"}}), ToolResult(u"Echo: Grüße"_s));
    EXPECT_TRUE(call(connection, u"echo"_s, {{"message", 7}}).failed);
}

TEST_F(RealPeersTest, TheEverythingServerOverHttp)
{
    const auto connection = http(serveEverything());
    connect(connection);
    EXPECT_TRUE(toolsOf(connection).contains(u"echo"_s));
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(call(connection, u"echo"_s, {{"message", "Grüße"}}), ToolResult(u"Echo: Grüße"_s));
}

TEST_F(RealPeersTest, ASecondHandshakeOverHttpFindsTheServerAgain)
{
    const auto connection = http(serveEverything());
    connect(connection);
    connect(connection);
    EXPECT_EQ(call(connection, u"echo"_s, {{"message", "x"}}), ToolResult(u"Echo: x"_s));
}

TEST_F(RealPeersTest, AnswersBeyondAsciiOfAnySizeThatFitsThePipe)
{
    const auto connection = peer(u"everything"_s);
    connect(connection);
    for (const int size : {60'000, 100'000, 300'000}) {
        const QString text(size / 3, u'日');
        EXPECT_EQ(call(connection, u"echo"_s, {{"message", text.toStdString()}}).text, u"Echo: "_s + text);
    }
}

TEST_F(RealPeersTest, TheFilesystemServerWritesAndReads)
{
    const auto connection = peer(u"filesystem"_s, {folder.path()});
    connect(connection);
    const std::string file = folder.filePath(u"it's a file.txt"_s).toStdString();
    EXPECT_FALSE(call(connection, u"write_file"_s, {{"path", file}, {"content", "line one\n"}}).failed);
    EXPECT_EQ(call(connection, u"read_text_file"_s, {{"path", file}}).text, "line one\n");
    EXPECT_TRUE(call(connection, u"read_text_file"_s, {{"path", "/etc/passwd"}}).failed);
}

TEST_F(RealPeersTest, TheMemoryServerRemembers)
{
    qputenv("MEMORY_FILE_PATH", folder.filePath(u"memory.jsonl"_s).toUtf8());
    const auto connection = peer(u"memory"_s);
    connect(connection);
    qunsetenv("MEMORY_FILE_PATH");
    const json::object entity{
        {"name", "Morvane"}, {"entityType", "program"}, {"observations", json::array{"speaks"}}};
    EXPECT_FALSE(call(connection, u"create_entities"_s, {{"entities", json::array{entity}}}).failed);
    EXPECT_TRUE(call(connection, u"read_graph"_s).text.contains(u"speaks"_s));
}

} // namespace
} // namespace morvane
