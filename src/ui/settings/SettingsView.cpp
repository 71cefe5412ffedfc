#include "ui/settings/SettingsView.h"

#include "ui/controls/NoteLabel.h"
#include "ui/settings/AlwaysAllowSection.h"
#include "ui/settings/BehaviourSection.h"
#include "ui/settings/KeySection.h"
#include "ui/settings/LocalModelSection.h"
#include "ui/settings/PrivacySection.h"
#include "ui/settings/ProviderSection.h"
#include "ui/settings/SpeechSection.h"

#include <QApplication>
#include <QScrollArea>
#include <QShortcut>
#include <QTabWidget>
#include <QVBoxLayout>

namespace morvane {

namespace {

constexpr QSize standardSize{620, 700};
constexpr int margin = 20;

/// The last section, without state of its own.
class AboutSection : public SettingsSection {
public:
    AboutSection() : SettingsSection(QStringLiteral("About"))
    {
        const QString version = QApplication::applicationVersion();
        const QString build = QApplication::instance()->property("buildNumber").toString();
        NoteLabel *line = addNote(QStringLiteral("Morvane %1 (build %2)").arg(version, build));
        line->setAccessibleName(QStringLiteral("Morvane version %1, build %2").arg(version, build));
        addNote(QStringLiteral("Check for updates anytime from the Morvane menu, or press Command-U."));
    }
};

} // namespace

SettingsView::SettingsView(AppModel &model, QWidget *parent) : QWidget(parent, Qt::Window)
{
    setWindowTitle(QStringLiteral("Morvane Settings"));
    resize(standardSize);
    auto *tabs = new QTabWidget;
    tabs->setDocumentMode(true);
    tabs->addTab(makeGeneralTab(model), QStringLiteral("General"));
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(tabs);
    for (const QKeySequence &keys : {QKeySequence(Qt::Key_Escape), QKeySequence(QKeySequence::Close)})
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
}

QWidget *SettingsView::makeGeneralTab(AppModel &model)
{
    auto *content = new QWidget;
    auto *column = new QVBoxLayout(content);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(margin);
    column->addWidget(new HeadingLabel(QStringLiteral("Morvane Settings"), HeadingLabel::Level::title));
    column->addWidget(new ProviderSection(model));
    column->addWidget(new KeySection(model));
    column->addWidget(new LocalModelSection(model));
    column->addWidget(new BehaviourSection(model));
    column->addWidget(new AlwaysAllowSection(model));
    column->addWidget(new SpeechSection(model));
    column->addWidget(new PrivacySection(model));
    column->addWidget(new AboutSection);
    column->addStretch();
    auto *scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(content);
    return scroll;
}

} // namespace morvane
