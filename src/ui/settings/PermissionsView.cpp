#include "ui/settings/PermissionsView.h"

#include "app/PermissionsModel.h"
#include "ui/controls/HeadingLabel.h"
#include "ui/controls/NoteLabel.h"
#include "ui/controls/SymbolLabel.h"
#include "ui/settings/PermissionRow.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int margin = 20;
constexpr int spacing = 14;
/// Longer lines are hard to read.
constexpr int widestColumn = 720;

QList<PermissionRow::Content> rows()
{
    using Permission = PermissionsModel::Permission;
    const QString settings = u"Settings"_s;
    return {
        {u"Screen Recording"_s, Symbol::display,
         u"Lets the assistant see what is on your screen and read it, using the capture_screen tool."_s,
         Permission::screenRecording, settings},
        {u"Accessibility"_s, Symbol::handTap,
         u"Lets the assistant click, type, and press keys for you, using the click_at, type_text, and "
         u"press_key "
         "tools."_s,
         Permission::accessibility, settings},
        {u"Notifications"_s, Symbol::bell,
         u"Lets the app play its custom sound and show a banner when a response is ready or a reminder "
         u"fires. "
         "If it stays off, the sound alone still plays."_s,
         Permission::notifications, settings},
        {u"Files and Folders"_s,
         Symbol::folder,
         u"macOS grants access automatically the first time the assistant reads or writes in Desktop, "
         "Documents, or Downloads. No setup needed."_s,
         {},
         {}},
        {u"Full Disk Access"_s,
         Symbol::documentLocked,
         u"Only needed to read protected locations, like other apps' data or some system files. This can "
         u"only "
         "be enabled in System Settings."_s,
         {},
         u"Open System Settings"_s},
    };
}

} // namespace

PermissionsView::PermissionsView(PermissionsModel &model, QWidget *parent)
    : QScrollArea(parent), m_model(model)
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    auto *center = new QWidget;
    center->setMaximumWidth(widestColumn);
    auto *column = new QVBoxLayout(center);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(spacing);

    auto *header = new QHBoxLayout;
    header->addWidget(new SymbolLabel(Symbol::shieldLock, &ThemeColors::accent));
    header->addWidget(new HeadingLabel(u"Permissions"_s, HeadingLabel::Level::title), 1);
    auto *again = new QPushButton(symbolIcon(Symbol::arrowClockwise), u"Check again"_s);
    again->setAccessibleName(u"Check permission status again"_s);
    connect(again, &QPushButton::clicked, &model, &PermissionsModel::refresh);
    header->addWidget(again);
    column->addLayout(header);
    column->addWidget(new NoteLabel(u"Give Morvane the permissions it needs here, once, so it can use your "
                                    u"Mac without asking mid-task. You "
                                    "can also request each one from the button next to it."_s));
    auto *unknown = new NoteLabel(u"This desktop has no settings for this that Morvane knows."_s,
                                  NoteLabel::Tone::warning);
    unknown->hide();
    connect(&model, &PermissionsModel::settingsUnknown, unknown, &QWidget::show);
    column->addWidget(unknown);
    for (const PermissionRow::Content &content : rows())
        column->addWidget(new PermissionRow(model, content));
    column->addStretch();

    auto *content = new QWidget;
    auto *place = new QHBoxLayout(content);
    place->setContentsMargins(0, 0, 0, 0);
    place->addStretch(1);
    place->addWidget(center, 100);
    place->addStretch(1);
    setWidget(content);
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive && isVisible())
            m_model.refresh();
    });
}

void PermissionsView::showEvent(QShowEvent *event)
{
    QScrollArea::showEvent(event);
    m_model.refresh();
}

} // namespace morvane
