#include "EngineFixture.h"

#include "browser/window/ComingDocument.h"
#include "browser/window/PageArea.h"
#include "ui/controls/AccessibleEvents.h"

#include <QAccessible>
#include <QSignalSpy>
#include <QTest>

namespace morvane {
namespace {

/// What a reader's user, who is in the page, finds of the documents that come.
class PageAreaTest : public EngineFixture {
protected:
    PageAreaTest()
    {
        QAccessible::setActive(true); // the engine then tells what stands in pages
        for (const QByteArray name : {"One", "Two", "Three"})
            server.page("/" + name.toLower(), "<title>" + name + "</title><a href=/>link</a>");
        area.resize(900, 700);
        area.show();
        area.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&area));
        area.focusPage();
    }

    ~PageAreaTest() override { QAccessible::setActive(false); }

    static QString shownTitle()
    {
        const QAccessibleInterface *document = QAccessible::accessibleInterface(foundDocument());
        return document ? document->text(QAccessible::Name) : QString();
    }

    PageArea area{*manager, [] { return true; }};
    QSignalSpy found{area.findChild<ComingDocument *>(), &ComingDocument::found};
};

TEST_F(PageAreaTest, EachDocumentOfASiteIsFoundWhenItIsHandedOver)
{
    open("/one");
    ASSERT_TRUE(waitUntil([] { return shownTitle() == "One"; }));
    found.clear();
    for (const QString &name : {QString("Two"), QString("Three"), QString("Three")}) {
        const QAccessible::Id before = foundDocument();
        page().load(server.url("/" + name.toLower()));
        ASSERT_TRUE(waitUntil([this] { return found.size() == 1; }));
        EXPECT_NE(foundDocument(), before) << name.toStdString();
        EXPECT_TRUE(waitUntil([&] { return shownTitle() == name && !page().isLoading(); }));
        found.clear();
    }
}

TEST_F(PageAreaTest, ADocumentOfAnotherProcessIsFoundWhenItHasLoaded)
{
    const QAccessible::Id before = foundDocument();
    qsizetype foundByThen = 0;
    QObject::connect(&page(), &WebPage::finished, &area, [&] { foundByThen = found.size(); });
    open("/one");
    EXPECT_EQ(foundByThen, 1);
    EXPECT_NE(foundDocument(), before);
}

TEST_F(PageAreaTest, TheDocumentOfATabThatWasLeftIsNotAwaitedInTheNext)
{
    open("/two");
    manager->newTab();
    open("/one");
    ASSERT_TRUE(waitUntil([] { return shownTitle() == "One"; }));
    found.clear();
    QObject::connect(&page(), &WebPage::finished, &area,
                     [this] { manager->switchTab(manager->tabs().front()->id()); });
    manager->tabs().back()->webView().load(server.url("/three"));
    ASSERT_TRUE(waitUntil([this] { return manager->activeTabID() == manager->tabs().front()->id(); }));
    // This one looks less often and later.
    int looks = 0;
    ComingDocument other(
        [&looks] {
            ++looks;
            return true;
        },
        3 * ComingDocument::usualPause);
    other.replaced();
    other.loaded();
    EXPECT_TRUE(waitUntil([&] { return looks == 5; }));
    EXPECT_TRUE(found.isEmpty());
}

} // namespace
} // namespace morvane
