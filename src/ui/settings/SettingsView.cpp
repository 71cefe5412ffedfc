#include "ui/settings/SettingsView.h"

#include "app/LocalModelFlow.h"
#include "app/SettingsModel.h"
#include "mcp/MCPManager.h"
#include "ui/controls/AccessibleRole.h"
#include "ui/controls/ScreenRoom.h"
#include "ui/settings/AboutSection.h"
#include "ui/settings/AlwaysAllowSection.h"
#include "ui/settings/BehaviourSection.h"
#include "ui/settings/CenteredColumn.h"
#include "ui/settings/KeySection.h"
#include "ui/settings/LocalModelSection.h"
#include "ui/settings/MCPServersView.h"
#include "ui/settings/PermissionsView.h"
#include "ui/settings/PrivacySection.h"
#include "ui/settings/ProviderSection.h"
#include "ui/settings/SettingsHeader.h"
#include "ui/settings/SpeechSection.h"
#include "ui/theme/Icons.h"

#include <QKeyEvent>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QStackedWidget>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr QSize standardSize{700, 760};
constexpr int margin = 20;
constexpr int spacing = 14;
/// Longer lines are hard to read.
constexpr int widestColumn = 720;

} // namespace

SettingsView::SettingsView(const SettingsServices &services, LocalModelFlow &localModel,
                           MCPManager &toolServers, Announcer &announcer, QWidget *parent)
    : QWidget(parent, Qt::Window), m_settingsModel(new SettingsModel(services, localModel, this))
{
    setAccessibleRole(this, QAccessible::Window);
    setWindowTitle(u"Morvane Settings"_s);
    resize(standardSize.boundedTo(screenRoom(parent ? *parent : *this)));
    auto *tabs = new QTabWidget;
    tabs->setDocumentMode(true);
    setAccessibleRole(tabs->findChild<QStackedWidget *>(), QAccessible::Client);
    // Its bar takes the keys; a second stop without a name would say nothing.
    tabs->setFocusPolicy(Qt::NoFocus);
    tabs->addTab(makeGeneralTab(services, localModel), symbolIcon(Symbol::gear), u"General"_s);
    tabs->addTab(new PermissionsView(services.permissions), symbolIcon(Symbol::shieldLock), u"Permissions"_s);
    addToolServersTab(*tabs, toolServers, announcer);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(tabs);
    for (const QKeySequence &keys : {QKeySequence(Qt::Key_Escape), QKeySequence(QKeySequence::Close)})
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
    m_settingsModel->loadModelCatalog();
}

QWidget *SettingsView::makeGeneralTab(const SettingsServices &services, LocalModelFlow &localModel)
{
    SettingsStore &settings = services.settings;
    auto *center = new QWidget;
    center->setMaximumWidth(widestColumn);
    auto *whole = new QVBoxLayout(center);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(0);
    whole->addWidget(new SettingsHeader);
    auto *column = new QVBoxLayout;
    column->setContentsMargins(margin, 0, margin, margin);
    column->setSpacing(spacing);
    whole->addLayout(column, 1);
    column->addWidget(new ProviderSection(settings, *m_settingsModel));
    column->addWidget(new KeySection(settings, *m_settingsModel));
    column->addWidget(new LocalModelSection(services, localModel));
    column->addWidget(new BehaviourSection(settings));
    column->addWidget(new AlwaysAllowSection(settings));
    column->addWidget(new SpeechSection(settings));
    column->addWidget(new PrivacySection(settings));
    column->addWidget(new AboutSection);
    column->addStretch();
    return scrollCentered(center);
}

void SettingsView::addToolServersTab(QTabWidget &tabs, MCPManager &toolServers, Announcer &announcer)
{
    const int tab = tabs.addTab(new MCPServersView(toolServers, announcer, this), u"Tool Servers"_s);
    const auto showTrouble = [&tabs, &toolServers, tab] {
        const bool trouble = toolServers.hasTrouble();
        tabs.setTabIcon(tab, symbolIcon(trouble ? Symbol::triangleExclamation : Symbol::server));
        tabs.tabBar()->setAccessibleTabName(tab, trouble ? u"Tool Servers, a server could not be connected"_s
                                                         : QString());
    };
    connect(&toolServers, &MCPManager::statusTextChanged, &tabs, showTrouble);
    connect(&toolServers, &MCPManager::serversChanged, &tabs, showTrouble);
    showTrouble();
}

void SettingsView::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    auto *const button = qobject_cast<QPushButton *>(focusWidget());
    // A key that is held down was pressed for something else.
    if (isReturn && isPlain && button && !event->isAutoRepeat())
        button->click();
    else
        QWidget::keyPressEvent(event);
}

} // namespace morvane
