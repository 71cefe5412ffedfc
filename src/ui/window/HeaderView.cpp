#include "ui/window/HeaderView.h"

#include "app/AppModel.h"
#include "app/BrowserWindowPort.h"
#include "store/SettingsStore.h"
#include "ui/controls/BadgeLabel.h"
#include "ui/controls/FlowLayout.h"
#include "ui/controls/HoverText.h"
#include "ui/controls/LineLabel.h"
#include "ui/theme/AppMark.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ThemeColors.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int markSize = 32;
constexpr int margin = 12;
constexpr int markRoom = markSize + margin;
constexpr int gap = 8;

} // namespace

HeaderView::HeaderView(AppModel &model, BrowserWindowPort &browserWindow, QWidget *parent)
    : QWidget(parent), m_model(model), m_title(new LineLabel(Qt::RichText)), m_subagent(new BadgeLabel({}))
{

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(margin + markRoom, 8, margin, 8);
    row->setSpacing(gap);
    auto *texts = new FlowLayout(gap); // in a narrow window one below the other
    texts->addWidget(m_title);
    texts->addWidget(m_subagent);
    row->addLayout(texts, 1);

    auto *browser = addButton(symbolIcon(Symbol::globe), u"Morvane Browser"_s);
    browser->setEnabled(browserWindow.isAvailable());
    if (!browser->isEnabled()) {
        setHoverText(browser, u"Morvane Browser: "_s + browserWindow.problem());
        browser->setAccessibleDescription(browserWindow.problem());
    }
    connect(browser, &QToolButton::clicked, this, [&browserWindow] { browserWindow.show(); });

    auto *compose = addButton(symbolIcon(Symbol::compose), u"New Conversation"_s);
    compose->setAccessibleName(u"New conversation"_s);
    setHoverText(compose, u"New conversation (⌘N)"_s);
    connect(compose, &QToolButton::clicked, &model, &AppModel::newConversation);

    auto *settings = addButton(symbolIcon(Symbol::gear), u"Settings"_s);
    setHoverText(settings, u"Settings (Ctrl+,)"_s);
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
    setHoverText(button, text);
    button->setAccessibleName(text);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    layout()->addWidget(button);
    return button;
}

void HeaderView::updateProvider()
{
    const QString provider = displayName(m_model.settings().providerID());
    const QString label = u"AI provider: "_s + provider;
    m_title->setText(u"<b>Morvane</b><br><small>%1</small>"_s.arg(label.toHtmlEscaped()));
    m_title->setAccessibleName(u"Morvane. "_s + label);
}

void HeaderView::updateSubagent()
{
    const QString label = m_model.subagents().label();
    m_subagent->setText(label);
    m_subagent->setVisible(!label.isEmpty());
}

void HeaderView::resizeEvent(QResizeEvent *)
{
    // Where room is short the buttons need it, and the mark says nothing that the name does not say.
    const int words = layout()->minimumSize().width() - (m_hasMark ? markRoom : 0);
    m_hasMark = words + markRoom <= width();
    layout()->setContentsMargins(margin + (m_hasMark ? markRoom : 0), 8, margin, 8);
}

void HeaderView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_hasMark)
        paintAppMark(painter, QRectF(margin, (height() - markSize) / 2.0, markSize, markSize));
    painter.setPen(ThemeColors::fromPalette(palette()).border);
    painter.drawLine(0, height() - 1, width(), height() - 1);
}

} // namespace morvane
