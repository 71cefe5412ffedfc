#include "base/Uuid.h"
#include "store/ConversationFiles.h"
#include "support/SampleConversation.h"
#include "support/Sanitizer.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

namespace morvane {
namespace {

/// A line of the kernel's account of this process, in bytes.
qint64 memoryOf(const char *name)
{
    QFile status("/proc/self/status");
    EXPECT_TRUE(status.open(QIODevice::ReadOnly));
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith(name))
            return line.simplified().split(' ').value(1).toLongLong() * 1024;
    return 0;
}

/// Lets the highest use of memory be counted from now on.
bool forgetHighest()
{
    QFile file("/proc/self/clear_refs");
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write("5") == 1;
}

TEST(ConversationMemoryTest, OpeningALargeFileTakesLittleMoreThanItsMessages)
{
    const TemporaryHome home;
    const QUuid id = newUuid();
    ConversationFiles files(home.path("Conversations"));
    files.save(id, "Large", sampleConversation(4, 500'000, 40'000'000).messages, 1);
    const qint64 size = QFileInfo(home.path("Conversations/" + uuidText(id) + ".json")).size();
    ASSERT_GT(size, 50'000'000);
    ASSERT_TRUE(forgetHighest());
    const qint64 before = memoryOf("VmRSS");
    const auto file = files.load(id);
    const qint64 taken = memoryOf("VmHWM") - before;
    ASSERT_TRUE(file.has_value());
    if (!isSanitized()) // what was given back is kept then
        EXPECT_LT(taken, size + 20'000'000);
    EXPECT_GT(taken, 0);
}

} // namespace
} // namespace morvane
