// Shows the views with sample content, for a look at them by eye, and writes pictures of them.
#include "GalleryContent.h"
#include "GalleryLook.h"
#include "GalleryModel.h"
#include "GalleryOptions.h"

#include "platform/Announcer.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/ComposerView.h"
#include "ui/window/MainWindow.h"

#include <QApplication>
#include <QClipboard>
#include <QScrollBar>
#include <QTimer>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

std::unique_ptr<QWidget> conversation(GalleryModel &gallery)
{
    fillShowcase(gallery.model.transcript(), gallery.model.activity());
    return std::make_unique<ChatScrollView>(gallery.model.transcript(), gallery.model.activity(),
                                            gallery.announcer);
}

/// The main window with files of every kind waiting, one still being read, and a model that sees no pictures.
std::unique_ptr<QWidget> windowWithAttachments(GalleryModel &gallery)
{
    gallery.settings.setProviderID(ProviderID::custom);
    fillShowcase(gallery.model.transcript(), gallery.model.activity());
    auto window = std::make_unique<MainWindow>(gallery.model, gallery.windowServices);
    auto *composer = window->findChild<ComposerView *>();
    for (const char *name : {"holiday.jpg", "report.pdf", "notes.txt", "minutes.md",
                             "A rather long name of a document that nobody could ever want to read.pdf"})
        composer->handleFiles({QUrl::fromLocalFile(u'/' + QString::fromLatin1(name))});
    QTimer::singleShot(200, composer, [&gallery, composer] {
        gallery.attachments.holds = true;
        composer->handleFiles({QUrl::fromLocalFile(u"/scan.pdf"_s)});
    });
    return window;
}

/// The main window with a draft of which a part is folded.
std::unique_ptr<QWidget> windowWithPaste(GalleryModel &gallery)
{
    fillShowcase(gallery.model.transcript(), gallery.model.activity());
    auto window = std::make_unique<MainWindow>(gallery.model, gallery.windowServices);
    auto *edit = window->findChild<ComposerEdit *>();
    edit->insertPlainText(u"What went wrong in this log? "_s);
    QApplication::clipboard()->setText(u"21:03:11 disk: slow write, 120 ms\n"_s.repeated(2'000));
    edit->paste();
    edit->insertPlainText(u"\nAnd is it the same as in this one? "_s);
    QApplication::clipboard()->setText(u"21:03:12 disk: slow write, 140 ms\n"_s.repeated(40'000));
    edit->paste();
    return window;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QCommandLineParser parser;
    addGalleryOptions(parser, {760, 720});
    parser.addOptions({{u"composer"_s, u"The window with files to be sent."_s},
                       {u"paste"_s, u"The window with long texts in the message field."_s},
                       {u"picture"_s, u"Write a picture and end."_s, u"file"_s},
                       {u"scroll"_s, u"Scroll to this share."_s, u"percent"_s}});
    parser.process(application);

    const GalleryLook look(parser);
    GalleryModel gallery;
    const std::unique_ptr<QWidget> view = parser.isSet(u"paste"_s)      ? windowWithPaste(gallery)
                                          : parser.isSet(u"composer"_s) ? windowWithAttachments(gallery)
                                                                        : conversation(gallery);
    view->resize(gallerySize(parser));
    view->show();
    if (parser.isSet(u"picture"_s)) {
        QTimer::singleShot(400, view.get(), [&] {
            auto *scrolled = view->findChild<ChatScrollView *>();
            if (auto *shown = qobject_cast<ChatScrollView *>(view.get()))
                scrolled = shown;
            if (parser.isSet(u"scroll"_s)) {
                auto *bar = scrolled->verticalScrollBar();
                bar->setValue(bar->maximum() * parser.value(u"scroll"_s).toInt() / 100);
            }
            view->grab().save(parser.value(u"picture"_s));
            QApplication::quit();
        });
    }
    return QApplication::exec();
}
