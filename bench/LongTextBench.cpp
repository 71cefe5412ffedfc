// How long a text from outside holds the main thread, wherever it is shown: a megabyte of each of some kinds
// of text that a model, a provider or a file may bring, in each place of the main window. Prints JSON: for
// each place and kind the longest hold in milliseconds of processor time. Arguments choose places by
// name, or a place and a kind, as "answer, emoji".

#include "MeasuredApplication.h"
#include "async/OffMain.h"
#include "support/AskForPermit.h"
#include "support/FakePasteSource.h"
#include "support/SampleMessage.h"
#include "tools/FixedColorScheme.h"
#include "tools/GalleryModel.h"

#include "ui/controls/FieldPasting.h"
#include "ui/markdown/LayoutCost.h"
#include "ui/theme/Theme.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/MainWindow.h"
#include "ui/window/WindowCommands.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QEventLoop>
#include <QKeyEvent>
#include <QMimeData>
#include <QTimer>
#include <algorithm>
#include <boost/json.hpp>
#include <cmath>
#include <cstdio>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace morvane;

namespace {

constexpr qsizetype megabyte = 1'000'000;
/// What the composer takes as a paragraph without folding it costs no more to lay out.
constexpr qsizetype longestOpen = 6'000;

struct Kind {
    const char *name;
    QString text;
};

enum class Size {
    megabyte,
    most, ///< What a stored message or an answer may bring at the worst.
    one,  ///< A word of 100 MB.
    some, ///< Two megabytes of words.
};

struct Place {
    const char *name;
    std::function<void(GalleryModel &, const QString &)> show;
    std::function<void(GalleryModel &)> clear;
    /// What is measured once the text is there; nothing where showing it is.
    std::function<void()> use = nullptr;
    Size size = Size::megabyte;
};

std::vector<Kind> kinds()
{
    return {
        {"word", QString(megabyte, u'x')},
        {"words", u"several words "_s.repeated(megabyte / 14)},
        {"lines", u"a line\n"_s.repeated(megabyte / 7)},
        {"line ends", QString(megabyte, u'\n')},
        {"blanks", u'a' + QString(megabyte, u' ') + u'b'},
        {"marks", u'e' + QString(megabyte / 2, QChar(0x301))},
        {"Chinese", QString(megabyte / 3, QChar(0x6F22))},
        {"Arabic", QString(megabyte / 2, QChar(0x0628))},
        {"both directions", u"ab \u05d0\u05d1 "_s.repeated(megabyte / 8)},
        {"emoji", u"👩‍👩‍👧‍👦"_s.repeated(megabyte / 25)},
        {"controls", u"\u202E\x1b\u2066"_s.repeated(megabyte / 7)},
        {"brackets", u"[*_`<"_s.repeated(megabyte / 5)},
        {"table", u"|a|b|\n|-|-|\n"_s + u"|x|y|\n"_s.repeated(megabyte / 6)},
    };
}

std::vector<Kind> longestKinds()
{
    return {
        {"10 MB of words", u"several words "_s.repeated(10 * megabyte / 14)},
        {"2 million letters of both directions", u"b\u05d0"_s.repeated(megabyte)},
        {"400,000 emoji", u"👩‍👩‍👧‍👦"_s.repeated(400'000)},
        {"5 million marks", u'e' + QString(5 * megabyte, QChar(0x301))},
    };
}

std::vector<Kind> kindsOf(Size size)
{
    switch (size) {
    case Size::megabyte:
        return kinds();
    case Size::most:
        return longestKinds();
    case Size::some:
        return {{"words", u"several words "_s.repeated(2 * megabyte / 14)}};
    case Size::one:
        return {{"word", QString(100 * megabyte, u'x')}};
    }
    std::unreachable();
}

AIToolCall command(const QString &text)
{
    AIToolCall call;
    call.name = u"run_shell_command"_s;
    call.arguments = SharedJsonObject(
        boost::json::object{{"command", ("rm -rf /tmp/" + text).toStdString()}, {"destructive", true}});
    return call;
}

void forget(GalleryModel &gallery)
{
    gallery.model.activity().clear();
    gallery.model.transcript().reset({});
}

/// Presses a key in the composer, as the user does right after what has been pasted.
void type(ComposerEdit &composer)
{
    QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, u"a"_s);
    QApplication::sendEvent(&composer, &key);
}

/// A command as a model sends it, made away from the thread that is measured.
Task<std::optional<ToolPermit>> askToRun(ApprovalGate *gate, QString text)
{
    AIToolCall call = co_await runOffMain([text] { return command(text); });
    co_return co_await askForPermit(gate, std::move(call));
}

std::vector<Place> places(ComposerEdit &composer, FakePasteSource &clipboard, WindowCommands &commands)
{
    const auto paste = [&composer, &clipboard](GalleryModel &, const QString &text) {
        clipboard.answerText(text, static_cast<int>(clipboard.asked.size()));
        composer.paste();
    };
    const auto pasteSome = [paste](GalleryModel &g, const QString &text) {
        paste(g, text.first(affordableLength(text, longestOpen)));
    };
    const auto empty = [&composer](GalleryModel &) { composer.setDraft({}); };
    const auto use = [&composer] { type(composer); };
    const auto keep = [](GalleryModel &) {};
    return {
        {"user message",
         [](GalleryModel &g, const QString &text) {
             g.model.transcript().reset({sampleMessage(Role::user, text)});
         },
         forget},
        {"answer",
         [](GalleryModel &g, const QString &text) {
             g.model.transcript().reset({sampleMessage(Role::assistant, text)});
         },
         forget},
        {"longest user message",
         [](GalleryModel &g, const QString &text) {
             g.model.transcript().reset({sampleMessage(Role::user, text)});
         },
         forget, nullptr, Size::most},
        {"longest answer",
         [](GalleryModel &g, const QString &text) {
             g.model.transcript().reset({sampleMessage(Role::assistant, text)});
         },
         forget, nullptr, Size::most},
        {"code",
         [](GalleryModel &g, const QString &text) {
             g.model.transcript().reset({sampleMessage(Role::assistant, u"```\n"_s + text)});
         },
         forget},
        {"streaming answer",
         [](GalleryModel &g, const QString &text) {
             ChatMessage answer = sampleMessage(Role::assistant, u"Well. "_s);
             answer.isStreaming = true;
             g.model.transcript().reset({answer});
             g.model.transcript().appendToken(text);
         },
         forget},
        {"error",
         [](GalleryModel &g, const QString &text) {
             ChatMessage answer = sampleMessage(Role::assistant, u"Well."_s);
             answer.errorMessage = text;
             g.model.transcript().reset({answer});
         },
         forget},
        {"file name",
         [](GalleryModel &g, const QString &text) {
             ChatMessage sent = sampleMessage(Role::user, u"Look."_s);
             ChatAttachment file;
             file.filename = text;
             sent.attachments = {file};
             g.model.transcript().reset({sent});
         },
         forget},
        {"activity",
         [](GalleryModel &g, const QString &text) {
             g.model.transcript().reset({sampleMessage(Role::user, u"Go"_s)});
             g.model.activity().log(u"Running: "_s + text, ActivityStep::Kind::tool);
         },
         forget},
        {"status", [](GalleryModel &g, const QString &text) { g.model.status().setStatusText(text); },
         [](GalleryModel &g) { g.model.status().setStatusText(u"Ready"_s); }},
        {"question",
         [](GalleryModel &g, const QString &text) {
             g.scheduler.spawn(g.model.questions().askUserQuestion(text, {u"Yes"_s}));
         },
         [](GalleryModel &g) { g.model.questions().resolveQuestion({}); }},
        {"options",
         [](GalleryModel &g, const QString &text) {
             g.scheduler.spawn(g.model.questions().askUserQuestion(u"Which?"_s, {text, text, text}));
         },
         [](GalleryModel &g) { g.model.questions().resolveQuestion({}); }},
        {"command",
         [](GalleryModel &g, const QString &text) { g.scheduler.spawn(askToRun(&g.model.gate(), text)); },
         [](GalleryModel &g) { g.model.gate().resolvePermission(false, false); }},
        {"longest command",
         [](GalleryModel &g, const QString &text) { g.scheduler.spawn(askToRun(&g.model.gate(), text)); },
         [](GalleryModel &g) { g.model.gate().resolvePermission(false, false); }, nullptr, Size::most},
        {"pasting", paste, empty},
        {"pasting the most", paste, empty, nullptr, Size::most},
        {"pasting 100 MB", paste, empty, nullptr, Size::one},
        {"copying 100 MB", paste, empty,
         [&composer] {
             const QClipboard *clipboard = QApplication::clipboard();
             QObject::connect(
                 clipboard, &QClipboard::dataChanged, &composer,
                 [clipboard] { clipboard->mimeData()->data(u"text/plain"_s); }, Qt::SingleShotConnection);
             composer.selectAll();
             composer.copy();
         },
         Size::one},
        {"written by a screen reader",
         [&composer, &commands](GalleryModel &, const QString &text) {
             commands.replaceText(*QAccessible::queryAccessibleInterface(&composer), 0, 0, text);
         },
         empty, nullptr, Size::some},
        {"typing after it", paste, empty, use},
        {"pasting a page", pasteSome, empty},
        {"typing after the page", pasteSome, empty, use},
        {"title",
         [](GalleryModel &g, const QString &text) {
             g.store.save(QUuid::createUuid(), text, {sampleMessage(Role::user, u"Hello"_s)});
             g.model.conversations();
         },
         keep},
    };
}

void settle(int time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    MeasuredApplication application(argc, argv);
    FixedColorScheme scheme(ColorScheme::Preference::none);
    Theme theme(scheme);
    GalleryModel gallery;
    FakePasteSource clipboard;
    FieldPasting pasting(gallery.scheduler, clipboard, gallery.announcer);
    QApplication::clipboard()->setText(u"another program's"_s);
    MainWindowServices services = gallery.windowServices;
    services.pasting = &pasting;
    MainWindow window(gallery.model, services);
    window.resize(760, 720);
    window.show();
    settle(500);

    auto *composer = window.findChild<ComposerEdit *>();
    WindowCommands commands(pasting);
    const QStringList wanted = QApplication::arguments().mid(1);
    boost::json::object result;
    for (const Place &place : places(*composer, clipboard, commands)) {
        const QString name = QString::fromLatin1(place.name);
        boost::json::object holds;
        for (const Kind &kind : kindsOf(place.size)) {
            const QString both = name + u", "_s + QString::fromLatin1(kind.name);
            if (!wanted.isEmpty() && !wanted.contains(name) && !wanted.contains(both))
                continue;
            if (place.use) {
                place.show(gallery, kind.text);
                settle(400);
            }
            application.longestProcessor = 0;
            const qint64 before = threadTime();
            if (place.use)
                place.use();
            else
                place.show(gallery, kind.text);
            const qint64 call = threadTime() - before;
            settle(400);
            const bool isCall = call > application.longestProcessor;
            const double hold = static_cast<double>(std::max(call, application.longestProcessor)) / 1e6;
            holds[kind.name] = std::round(hold * 10) / 10;
            std::fprintf(stderr, "%s, %s: %.1f ms in %s\n", place.name, kind.name, hold,
                         isCall ? "the call" : application.longestEvent.constData());
            place.clear(gallery);
            settle(50);
        }
        if (!holds.empty())
            result[place.name] = std::move(holds);
    }
    std::printf("%s\n", boost::json::serialize(result).c_str());
    return 0;
}
