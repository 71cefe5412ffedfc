#include "browser/window/AgentPanel.h"

#include "app/ActivityLog.h"
#include "app/ConversationPort.h"
#include "app/Status.h"
#include "base/LabelText.h"
#include "browser/window/ScrollStrip.h"
#include "browser/window/ToolButton.h"
#include "ui/controls/AccessibleRole.h"
#include "ui/controls/EnabledOnceLeft.h"
#include "ui/controls/HoverText.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/conversation/SentPictures.h"
#include "ui/theme/ThemeColors.h"
#include "ui/window/ComposerView.h"
#include "ui/window/FileDropFilter.h"
#include "ui/window/PictureView.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr qsizetype longestLine = 200;
/// Of the conversation, in lines of the font.
constexpr int shownLines = 10;
constexpr int fewestLines = 3;

ComposerTexts panelTexts()
{
    ComposerTexts texts;
    texts.placeholder = u"Tell Morvane what to do… (try: type hello in field 1 and submit)"_s;
    texts.field = u"Tell Morvane what to do in the browser"_s;
    texts.fieldHint =
        u"Your message goes to the same conversation as the main window. The agent can use browser "
        "tools to click and type for you."_s;
    texts.attach = u"Attach file"_s;
    texts.send = u"Send the message to Morvane"_s;
    texts.sendWithoutInput = texts.send;
    texts.stop = u"Stop the agent"_s;
    texts.note = {};
    texts.marker =
        u" [Browser window is open — you can use browser_open/read/click/type/scroll/back. The user "
        "watches live.]"_s;
    return texts;
}

/// A line that is cut at the edge rather than widening the window.
class CutLabel : public QLabel {
public:
    CutLabel() { setTextFormat(Qt::PlainText); }

    QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setPen(ThemeColors::fromPalette(palette()).secondaryText);
        painter.drawText(rect(), Qt::AlignVCenter | Qt::AlignLeft,
                         fontMetrics().elidedText(text(), Qt::ElideRight, width()));
    }
};

} // namespace

AgentPanel::AgentPanel(const BrowserWindowServices &services, QWidget *parent)
    : QWidget(parent), m_services(services), m_status(new CutLabel),
      m_chevron(toolButton(Symbol::chevronUp, u"Expand the agent panel"_s)),
      m_composer(new ComposerView(services.conversation, services.updates, services.pasting, panelTexts()))
{
    setAccessibleRole(this, QAccessible::Grouping);
    setAccessibleName(u"Agent panel at bottom of browser"_s);
    auto *row = new QHBoxLayout;
    row->setContentsMargins(12, 6, 8, 0);
    row->addWidget(m_status, 1);
    row->addWidget(m_chevron);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addLayout(row);
    column->addWidget(makeShortcuts());
    column->addWidget(m_composer);

    connect(m_chevron, &QToolButton::clicked, this, [this] { setExpanded(!isExpanded()); });
    connect(&services.conversation.status(), &Status::statusTextChanged, this, &AgentPanel::updateStatus);
    connect(&services.conversation, &ConversationPort::isBusyChanged, this, &AgentPanel::updateShortcuts);
    auto *drops = new FileDropFilter(this);
    connect(drops, &FileDropFilter::filesDropped, m_composer, &ComposerView::handleFiles);
    connect(drops, &FileDropFilter::hoveringChanged, m_composer, &ComposerView::setDropMark);
    updateStatus();
    updateShortcuts();
}

QPushButton *AgentPanel::makeShortcut(const QString &title)
{
    auto *button = new QPushButton(title);
    button->setAutoDefault(false);
    return button;
}

QWidget *AgentPanel::makeShortcuts()
{
    // In one row however little room there is, which is the page's and the message's.
    auto *strip = new ScrollStrip;
    setAccessibleRole(strip->widget(), QAccessible::Grouping);
    strip->widget()->setAccessibleName(u"Conversation shortcuts"_s);
    strip->row()->setContentsMargins(12, 4, 12, 0);
    const auto addPrompt = [&](const QString &title, const QString &prompt) {
        m_prompts.append(makeShortcut(title));
        connect(m_prompts.last(), &QPushButton::clicked, this,
                [this, prompt] { m_services.conversation.send(prompt, {}, u" [Browser window is open]"_s); });
        strip->row()->addWidget(m_prompts.last());
    };
    addPrompt(u"Summarize this page"_s,
              u"Summarize the page currently open in the Morvane browser. Use browser_read if needed."_s);
    addPrompt(u"List the main links"_s,
              u"List the main links on the page currently open in the Morvane browser via browser_read."_s);
    QPushButton *open = makeShortcut(u"Open conversation"_s);
    open->setAccessibleDescription(u"Open the full conversation in the main window"_s);
    connect(open, &QPushButton::clicked, this, [this] { m_services.showMainWindow(); });
    strip->row()->addWidget(open);
    strip->row()->addStretch(1);
    return strip;
}

QWidget *AgentPanel::makeDetails()
{
    ConversationPort &conversation = m_services.conversation;
    auto *details = new QWidget;
    m_activity = new CutLabel;
    m_activity->setContentsMargins(12, 0, 12, 0);
    auto *messages =
        new ChatScrollView(conversation.transcript(), conversation.activity(), m_services.announcer);
    messages->setMinimumHeight(fontMetrics().lineSpacing() * fewestLines);
    messages->setMaximumHeight(fontMetrics().lineSpacing() * shownLines);
    auto *pictures = new SentPictures(m_services.scheduler, m_services.attachments, details);
    messages->pictures().setPictures(*pictures);
    connect(&messages->pictures(), &PictureButtons::opened, this, [this](const ChatAttachment &picture) {
        auto *view = new PictureView(picture, m_services.scheduler, m_services.attachments, window());
        view->open();
    });
    details->setFocusProxy(messages);
    auto *column = new QVBoxLayout(details);
    column->setContentsMargins(12, 4, 12, 4);
    column->addWidget(messages);
    column->addWidget(m_activity);
    connect(&conversation.activity(), &ActivityLog::stepAppended, this, &AgentPanel::updateActivity);
    connect(&conversation.activity(), &ActivityLog::cleared, this, &AgentPanel::updateActivity);
    updateActivity();
    return details;
}

void AgentPanel::setExpanded(bool expanded)
{
    if (expanded == isExpanded())
        return;
    if (!m_details) {
        m_details = makeDetails();
        static_cast<QVBoxLayout *>(layout())->insertWidget(1, m_details);
        setTabOrder(m_chevron, m_details->focusProxy()); // as they are seen
    }
    m_details->setVisible(expanded);
    const QString name = expanded ? u"Collapse the agent panel"_s : u"Expand the agent panel"_s;
    m_chevron->setIcon(symbolIcon(expanded ? Symbol::chevronDown : Symbol::chevronUp));
    m_chevron->setAccessibleName(name);
    m_chevron->setText(name);
    setHoverText(m_chevron, name);
}

void AgentPanel::takeFocus()
{
    m_composer->focusDraft();
}

void AgentPanel::updateStatus()
{
    const QString status = labelText(m_services.conversation.status().statusText(), longestLine).simplified();
    m_status->setText(status);
    m_status->setAccessibleName(u"Agent status: "_s + status);
}

void AgentPanel::updateActivity()
{
    const QList<ActivityStep> &steps = m_services.conversation.activity().steps();
    m_activity->setVisible(!steps.isEmpty());
    if (steps.isEmpty())
        return;
    const QString latest = labelText(steps.last().text, longestLine).simplified();
    m_activity->setText(u"Activity, %1 steps, latest "_s.arg(steps.size()) + latest);
    m_activity->setAccessibleName(m_activity->text());
}

void AgentPanel::updateShortcuts()
{
    for (QPushButton *prompt : m_prompts)
        setEnabledOnceLeft(prompt, !m_services.conversation.canCancel());
}

void AgentPanel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(ThemeColors::fromPalette(palette()).border);
    painter.drawLine(0, 0, width(), 0);
}

} // namespace morvane
