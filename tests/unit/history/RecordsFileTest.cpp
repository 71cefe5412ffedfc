#include "browser/history/RecordsFile.h"

#include "support/TemporaryHome.h"

#include <QFile>
#include <future>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A file whose disk is busy until the test says otherwise.
class RecordsFileTest : public testing::Test {
protected:
    RecordsFileTest()
    {
        file.read([busy = m_idle.get_future().share()](const std::optional<QByteArray> &) { busy.wait(); });
    }
    void write(const QByteArray &content)
    {
        file.write([content] { return content; });
    }
    /// What lies on the disk in the end.
    QByteArray content()
    {
        m_idle.set_value();
        file.finish();
        return home.read(u"records.json"_s);
    }

    TemporaryHome home;
    RecordsFile file{home.path(u"records.json"_s)};

private:
    std::promise<void> m_idle;
};

TEST_F(RecordsFileTest, TheLastOfThoseThatWaitIsWritten)
{
    write("one");
    write("two");
    EXPECT_EQ(content(), "two");
}

TEST_F(RecordsFileTest, WhatIsWrittenAfterTheFileWasRemovedStays)
{
    write("before");
    file.remove();
    write("after");
    EXPECT_EQ(content(), "after");
}

TEST_F(RecordsFileTest, WhatWaitsGoesWithTheFile)
{
    write("before");
    file.remove();
    EXPECT_EQ(content(), "");
    EXPECT_FALSE(QFile::exists(home.path(u"records.json"_s)));
}

TEST_F(RecordsFileTest, AFileThatOthersCouldReadIsMadePrivate)
{
    const QString path = home.write(u"open.json"_s, "[]");
    ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
    QByteArray found;
    {
        RecordsFile open(path);
        open.read([&found](const std::optional<QByteArray> &content) { found = content.value_or("none"); });
    }
    EXPECT_EQ(found, "[]");
    EXPECT_FALSE(QFile::permissions(path) & QFile::ReadOther);
}

} // namespace
} // namespace morvane
