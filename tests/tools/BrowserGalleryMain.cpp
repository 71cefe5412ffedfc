// Shows the browser's window over pages without an engine, for a look at it by eye, and writes pictures of
// it.
#include "GalleryContent.h"
#include "GalleryLook.h"
#include "GalleryModel.h"
#include "GalleryOptions.h"

#include "base/ReferenceDate.h"
#include "browser/window/AgentPanel.h"
#include "browser/window/BrowserMenuActions.h"
#include "support/BrowserWorld.h"
#include "support/FakePageDownload.h"
#include "support/FakePagePermission.h"
#include "support/RunTask.h"
#include "ui/theme/AppMark.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

void load(BrowserWorld &browser, const QString &address, const QString &title)
{
    if (!browser.manager.currentURLString().isEmpty())
        browser.manager.newTab();
    browser.load(address, title);
    browser.records.addBookmarkForActiveTab(browser.manager);
    settle();
}

void browse(BrowserWorld &browser, int tabs)
{
    browser.pages.prepare = [](FakeWebPage &page) {
        page.answers = [](const QString &) { return QVariant(7); };
    };
    browser.icons = {{u"news.test"_s, QColor(u"tomato"_s)}, {u"wiki.test"_s, QColor(u"steelblue"_s)}};
    browser.manager.newTab();
    browser.now -= 3 * 86'400;
    load(browser, u"https://wiki.test/Kingfisher"_s, u"Kingfisher - an encyclopedia of birds"_s);
    browser.now += 2 * 86'400;
    load(browser, u"https://shop.test/"_s,
         u"A shop whose title is a good deal longer than any tab is wide"_s);
    browser.now += 86'400;
    load(browser, u"https://news.test/today"_s, u"News of today"_s);
    for (int number = 4; number <= tabs; ++number)
        load(browser, u"https://site%1.test/"_s.arg(number), u"Site %1"_s.arg(number));
    browser.page().back = true;
    browser.load(u"https://news.test/today/the-kingfisher-is-back?utm_source=start&id=4711"_s,
                 u"The kingfisher is back"_s);
}

void download(BrowserWorld &browser)
{
    const auto file = std::make_shared<FakePageDownload>(u"report-of-the-year-2026.pdf"_s, u"files.test"_s);
    browser.manager.downloads().add(file);
    settle();
    for (QDialog *dialog : browser.openWindow().findChildren<QDialog *>())
        dialog->accept();
    settle();
    file->progress(4'200'000, 10'000'000);
}

void show(BrowserWorld &browser, GalleryModel &gallery, BrowserWindowView &window, const QString &state)
{
    auto *actions = window.findChild<BrowserMenuActions *>();
    if (state == u"panel"_s) {
        fillShowcase(gallery.model.transcript(), gallery.model.activity());
        window.findChild<AgentPanel *>()->setExpanded(true);
    }
    if (state == u"find"_s) {
        actions->find();
        window.findChild<QLineEdit *>(u"findQuery"_s)->setText(u"kingfisher"_s);
    }
    if (state == u"history"_s)
        actions->showHistory();
    if (state == u"clear"_s)
        actions->confirmClearBrowsingData();
    if (state == u"download"_s)
        download(browser);
    if (state == u"permission"_s)
        browser.manager.window()->askForPermission(
            std::make_shared<FakePagePermission>(PagePermission::Kind::location, u"maps.test"_s),
            [](bool) {});
    settle();
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QCommandLineParser parser;
    addGalleryOptions(parser, {1150, 780});
    parser.addOptions({{u"window"_s, u"browser, panel, find, history, clear, download, permission."_s,
                        u"name"_s, u"browser"_s},
                       {u"tabs"_s, u"How many tabs."_s, u"number"_s, u"3"_s},
                       {u"picture"_s, u"Write a picture and end."_s, u"file"_s}});
    parser.process(application);
    const GalleryLook look(parser);
    QApplication::setWindowIcon(appIcon());
    GalleryModel gallery;
    waitUntil([&gallery] { return gallery.model.isReady(); });
    BrowserWorld browser(gallery.scheduler, gallery, gallery.model, gallery.home.path(u"browser"_s));
    browser.now = referenceDateNow();
    browse(browser, parser.value(u"tabs"_s).toInt());
    BrowserWindowView &window = browser.openWindow();
    window.resize(gallerySize(parser));
    browser.manager.window()->activate();
    settle();
    show(browser, gallery, window, parser.value(u"window"_s));
    const QString picture = parser.value(u"picture"_s);
    if (picture.isEmpty())
        return QApplication::exec();
    QWidget *shown = &window;
    for (QDialog *dialog : window.findChildren<QDialog *>())
        if (dialog->isVisible())
            shown = dialog;
    shown->grab().save(picture);
    gallery.scheduler.shutdown(std::chrono::seconds(1));
    return 0;
}
