#include "ui/window/HeaderView.h"

#include "app/AppModel.h"
#include "app/BrowserWindowPort.h"
#include "store/SettingsStore.h"
#include "ui/theme/AppMark.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ThemeColors.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QToolButton>

namespace morvane {

namespace {

constexpr int markSize = 32;
constexpr int margin = 12;

} // namespace

HeaderView::HeaderView(AppModel &model, QWidget *parent)
    : QWidget(parent), m_model(model), m_title(new QLabel), m_subagent(new QLabel)
{
    m_title->setTextFormat(Qt::RichText);
    m_subagent->setTextFormat(Qt::PlainText);
    m_subagent->setFrameShape(QFrame::StyledPanel);
    m_subagent->setContentsMargins(8, 2, 8, 2);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(margin + markSize + margin, 8, margin, 8);
    row->setSpacing(8);
    row->addWidget(m_title);
    row->addWidget(m_subagent);
    row->addStretch();

    auto *browser = addButton(symbolIcon(Symbol::globe), QStringLiteral("Morvane Browser"));
    browser->setEnabled(model.browserWindow().isAvailable());
    if (!browser->isEnabled()) {
        browser->setToolTip(QStringLiteral("The built-in browser is not part of this version."));
        browser->setAccessibleDescription(browser->toolTip());
    }
    connect(browser, &QToolButton::clicked, &model, [&model] { model.browserWindow().show(); });

    auto *compose = addButton(symbolIcon(Symbol::compose), QStringLiteral("New Conversation"));
    compose->setAccessibleName(QStringLiteral("New conversation"));
    compose->setToolTip(QStringLiteral("New conversation (⌘N)"));
    compose->setAccessibleDescription(compose->toolTip());
    connect(compose, &QToolButton::clicked, &model, &AppModel::newConversation);

    auto *settings = addButton(symbolIcon(Symbol::gear), QStringLiteral("Settings"));
    settings->setToolTip(QStringLiteral("Settings (Ctrl+,)"));
    connect(settings, &QToolButton::clicked, this, &HeaderView::settingsRequested);

    connect(&model.settings(), &SettingsStore::changed, this, &HeaderView::updateProvider);
    connect(&model.subagents(), &SubagentRunner::labelChanged, this, &HeaderView::updateSubagent);
    updateProvider();
    updateSubagent();
}

QToolButton *HeaderView::addButton(const QIcon &icon, const QString &text)
{
    auto *button = new QToolButton;
    button->setIcon(icon);
    button->setText(text);
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    layout()->addWidget(button);
    return button;
}

void HeaderView::updateProvider()
{
    const QString provider = displayName(m_model.settings().providerID());
    const QString label = QStringLiteral("AI provider: ") + provider;
    m_title->setText(QStringLiteral("<b>Morvane</b><br><small>%1</small>").arg(label.toHtmlEscaped()));
    m_title->setAccessibleName(QStringLiteral("Morvane. ") + label);
}

void HeaderView::updateSubagent()
{
    const QString label = m_model.subagents().label();
    m_subagent->setText(label);
    m_subagent->setVisible(!label.isEmpty());
}

void HeaderView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintAppMark(painter, QRectF(margin, (height() - markSize) / 2.0, markSize, markSize));
    painter.setPen(ThemeColors::fromPalette(palette()).border);
    painter.drawLine(0, height() - 1, width(), height() - 1);
}

} // namespace morvane
