// What the browser costs: the first open with module, engine and start page, opening a small static page,
// reading one of 5,000 elements, how long the main thread is held while the largest result is read, and the
// memory of the whole tree of processes with one static page. Prints JSON.

#include "MeasuredApplication.h"
#include "Median.h"

#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "base/InstalledFiles.h"
#include "browser/pages/BrowserEngine.h"
#include "browser/tabs/BrowserManager.h"
#include "support/FakeAnnouncer.h"
#include "support/FakeTabWindow.h"
#include "support/PageServer.h"
#include "support/PrivateDesktop.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <QElapsedTimer>
#include <QWidget>
#include <cstdio>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

constexpr int runs = 15;

/// The number behind a name in a file of /proc.
qint64 kilobytes(const QString &path, const QByteArray &name)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n'))
        if (line.startsWith(name))
            return line.mid(name.size()).simplified().split(' ').first().toLongLong();
    return 0;
}

/// What the process and all that it has started hold, each shared page counted once.
double treeMegabytes(qint64 process)
{
    double sum = double(kilobytes(u"/proc/%1/smaps_rollup"_s.arg(process), "Pss:")) / 1024;
    for (const QString &entry : QDir(u"/proc"_s).entryList(QDir::Dirs))
        if (entry.toLongLong() > 0 && kilobytes(u"/proc/%1/status"_s.arg(entry), "PPid:") == process)
            sum += treeMegabytes(entry.toLongLong());
    return sum;
}

QByteArray manyElements()
{
    QByteArray html = "<title>Many</title>";
    for (int i = 0; i < 5000; ++i)
        html += "<p>Some words beside <a href=/x>a link that is number " + QByteArray::number(i) + "</a></p>";
    return html;
}

/// As much as a reading holds: of text, and of elements with names of the greatest length.
QByteArray largestResult()
{
    QByteArray html = "<meta charset=utf-8><title>Largest</title>";
    const QByteArray name = QByteArray("ü").repeated(80);
    for (int i = 0; i < 80; ++i)
        html += "<button style='width:20px;height:20px' aria-label='" + name + "'></button>";
    return html + "<p>" + QByteArray("größte ").repeated(3000);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    const PrivateDesktop desktop;
    desktop.adopt();
    MeasuredApplication application(argc, argv);
    const TemporaryHome home;
    PageServer server;
    server.page(u"/small"_s, "<title>Small</title><p>a few words");
    server.page(u"/many"_s, manyElements());
    server.page(u"/largest"_s, largestResult());
    SystemClock clock;
    Scheduler scheduler(clock);
    FakeAnnouncer announcer;
    FakeTabWindow::Log window;

    const double before = treeMegabytes(QCoreApplication::applicationPid());
    QElapsedTimer timer;
    timer.start();
    const auto engine = loadBrowserEngine(InstalledFiles::aroundProgram().module(u"libmorvane-browser.so"_s),
                                          {.folder = home.path(u"Browser"_s)});
    if (!engine) {
        std::fputs(qPrintable(engine.error()), stderr);
        return 1;
    }
    BrowserManager manager(
        {.scheduler = scheduler,
         .announcer = announcer,
         .pages = **engine,
         .startPage = u"<title>Start Page</title><h1>Start"_s,
         .recordHistory = {},
         .fetchFavicon = {},
         .makeWindow = [&](BrowserManager &) { return std::make_unique<FakeTabWindow>(window); }});
    manager.makeWindowIfNeeded();
    WebPage &page = manager.activeTab()->webView();
    page.view()->resize(1150, 780);
    page.view()->show();
    if (!waitUntil([&] { return !page.isLoading(); }))
        return 1;
    const double firstOpen = double(timer.elapsed());
    PageOperations &operations = manager.operations();
    const auto carryOut = [&scheduler](Task<QString> operation, QLatin1String begin) {
        if (!runTask(scheduler, std::move(operation)).startsWith(begin))
            throw std::runtime_error("the page was not read");
    };
    const QString small = server.url(u"/small"_s).toString();
    const double open =
        medianMilliseconds(runs, [&] { carryOut(operations.browserOpen(small), "Page: Small"_L1); });
    const double memory = treeMegabytes(QCoreApplication::applicationPid());
    carryOut(operations.browserOpen(server.url(u"/many"_s).toString()), "Page: Many"_L1);
    const double read =
        medianMilliseconds(runs, [&] { carryOut(operations.browserRead(), "Page: Many"_L1); });
    carryOut(operations.browserOpen(server.url(u"/largest"_s).toString()), "Page: Largest"_L1);
    application.longestProcessor = 0;
    for (int run = 0; run < runs; ++run)
        carryOut(operations.browserRead(), "Page: Largest"_L1);
    const double hold = double(application.longestProcessor) / 1e6;
    std::printf("{\"first_open_ms\": %.0f, \"open_small_page_ms\": %.0f, \"read_5000_elements_ms\": %.1f, "
                "\"longest_hold_reading_the_largest_ms\": %.1f, "
                "\"tree_with_one_page_mb\": %.0f, \"before_mb\": %.0f}\n",
                firstOpen, open, read, hold, memory, before);
    scheduler.shutdown(std::chrono::seconds(1));
    return 0;
}
