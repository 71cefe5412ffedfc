// Shows the views with sample content, for a look at them by eye, and writes pictures of them.
#include "GalleryContent.h"
#include "GalleryModel.h"

#include "platform/Announcer.h"
#include "platform/ColorScheme.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/theme/Theme.h"
#include "ui/window/ComposerView.h"
#include "ui/window/MainWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QScrollBar>
#include <QTimer>

using namespace morvane;

namespace {

class FixedColorScheme : public ColorScheme {
public:
    explicit FixedColorScheme(Preference preference) : m_preference(preference) {}
    Preference preference() const override { return m_preference; }

private:
    Preference m_preference;
};

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
    auto window = std::make_unique<MainWindow>(gallery.model);
    auto *composer = window->findChild<ComposerView *>();
    for (const char *name : {"holiday.jpg", "report.pdf", "notes.txt", "minutes.md",
                             "A rather long name of a document that nobody could ever want to read.pdf"})
        composer->handleFiles({QUrl::fromLocalFile(QLatin1Char('/') + QString::fromLatin1(name))});
    QTimer::singleShot(200, composer, [&gallery, composer] {
        gallery.attachments.holds = true;
        composer->handleFiles({QUrl::fromLocalFile(QStringLiteral("/scan.pdf"))});
    });
    return window;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({QStringLiteral("dark"), QStringLiteral("Dark colours.")});
    parser.addOption({QStringLiteral("composer"), QStringLiteral("The window with files to be sent.")});
    parser.addOption({QStringLiteral("width"), QStringLiteral("Width of the window."),
                      QStringLiteral("pixels"), QStringLiteral("760")});
    parser.addOption({QStringLiteral("height"), QStringLiteral("Height of the window."),
                      QStringLiteral("pixels"), QStringLiteral("720")});
    parser.addOption({QStringLiteral("font"), QStringLiteral("Size of the font."), QStringLiteral("points"),
                      QStringLiteral("10")});
    parser.addOption(
        {QStringLiteral("picture"), QStringLiteral("Write a picture and end."), QStringLiteral("file")});
    parser.addOption(
        {QStringLiteral("scroll"), QStringLiteral("Scroll to this share."), QStringLiteral("percent")});
    parser.process(application);

    QFont font = QApplication::font();
    font.setPointSizeF(parser.value(QStringLiteral("font")).toDouble());
    QApplication::setFont(font);
    FixedColorScheme scheme(parser.isSet(QStringLiteral("dark")) ? ColorScheme::Preference::dark
                                                                 : ColorScheme::Preference::light);
    Theme theme(scheme);
    GalleryModel gallery;
    const std::unique_ptr<QWidget> view =
        parser.isSet(QStringLiteral("composer")) ? windowWithAttachments(gallery) : conversation(gallery);
    view->resize(parser.value(QStringLiteral("width")).toInt(),
                 parser.value(QStringLiteral("height")).toInt());
    view->show();
    if (parser.isSet(QStringLiteral("picture"))) {
        QTimer::singleShot(400, view.get(), [&] {
            auto *scrolled = view->findChild<ChatScrollView *>();
            if (auto *shown = qobject_cast<ChatScrollView *>(view.get()))
                scrolled = shown;
            if (parser.isSet(QStringLiteral("scroll"))) {
                auto *bar = scrolled->verticalScrollBar();
                bar->setValue(bar->maximum() * parser.value(QStringLiteral("scroll")).toInt() / 100);
            }
            view->grab().save(parser.value(QStringLiteral("picture")));
            QApplication::quit();
        });
    }
    return QApplication::exec();
}
