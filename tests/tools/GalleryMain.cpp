// Shows the views with sample content, for a look at them by eye, and writes pictures of them.
#include "GalleryContent.h"

#include "platform/Announcer.h"
#include "platform/ColorScheme.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/theme/Theme.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QScrollBar>
#include <QTimer>

using namespace morvane;

namespace {

class SilentAnnouncer : public Announcer {
public:
    void announce(const QString &) override {}
};

class FixedColorScheme : public ColorScheme {
public:
    explicit FixedColorScheme(Preference preference) : m_preference(preference) {}
    Preference preference() const override { return m_preference; }

private:
    Preference m_preference;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({QStringLiteral("dark"), QStringLiteral("Dark colours.")});
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
    SilentAnnouncer announcer;
    Transcript transcript;
    ActivityLog activity;
    fillShowcase(transcript, activity);
    ChatScrollView view(transcript, activity, announcer);
    view.resize(parser.value(QStringLiteral("width")).toInt(),
                parser.value(QStringLiteral("height")).toInt());
    view.show();
    if (parser.isSet(QStringLiteral("picture"))) {
        QTimer::singleShot(400, &view, [&] {
            if (parser.isSet(QStringLiteral("scroll"))) {
                auto *bar = view.verticalScrollBar();
                bar->setValue(bar->maximum() * parser.value(QStringLiteral("scroll")).toInt() / 100);
            }
            view.grab().save(parser.value(QStringLiteral("picture")));
            QApplication::quit();
        });
    }
    return QApplication::exec();
}
