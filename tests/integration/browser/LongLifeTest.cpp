#include "EngineFixture.h"
#include "EngineProcesses.h"

#include <QApplication>
#include <QDir>
#include <QWidget>

namespace morvane {
namespace {

/// What stays of pages that are gone: nothing.
class LongLifeTest : public EngineFixture {
protected:
    static qsizetype handles() { return QDir("/proc/self/fd").entryList(QDir::Files | QDir::System).size(); }
    static qsizetype windows() { return QApplication::allWidgets().size(); }
};

TEST_F(LongLifeTest, TwoHundredLoadsAndAHundredTabsLeaveNothing)
{
    server.page("/one", "<title>One</title>");
    const auto visit = [this] {
        const qsizetype before = visits.size();
        page().load(server.url("/one"));
        return waitUntil([&] { return visits.size() > before; });
    };
    const auto openAndClose = [this](bool waits) {
        manager->newTab();
        const bool isThere = !waits || waitUntil([this] { return !page().isLoading(); });
        manager->closeTab(manager->activeTabID());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return isThere;
    };
    // What is kept for later is there after a few of each.
    for (int i = 0; i < 5; ++i)
        ASSERT_TRUE(visit() && openAndClose(true));
    ASSERT_TRUE(waitUntil([] { return pageProcesses().size() <= 2; }));
    const qsizetype handlesBefore = handles();
    const qsizetype windowsBefore = windows();
    for (int i = 0; i < 200; ++i)
        ASSERT_TRUE(visit());
    for (int i = 0; i < 100; ++i)
        ASSERT_TRUE(openAndClose(i % 4 == 0)); // the others go while they load
    EXPECT_TRUE(waitUntil([] { return pageProcesses().size() <= 2; })) << pageProcesses().size();
    EXPECT_TRUE(waitUntil([=] { return handles() <= handlesBefore + 5; }))
        << handlesBefore << ' ' << handles();
    EXPECT_LE(windows(), windowsBefore);
    EXPECT_EQ(manager->tabs().size(), 1U);
}

} // namespace
} // namespace morvane
