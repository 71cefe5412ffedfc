#include "ui/window/ConversationPane.h"

#include "app/Transcript.h"
#include "platform/Announcer.h"
#include "ui/controls/HoverText.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/find/FindBar.h"
#include "ui/find/FindSession.h"
#include "ui/theme/Icons.h"

#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int buttonMargin = 12;
/// However little room a long message leaves.
constexpr int leastLines = 2;

} // namespace

ConversationPane::ConversationPane(ChatScrollView *view, const Transcript &transcript, Scheduler &scheduler,
                                   Announcer &announcer, QWidget *parent)
    : QWidget(parent), m_view(view), m_transcript(transcript), m_announcer(announcer),
      m_session(new FindSession(scheduler, transcript, this)), m_bar(new FindBar(*m_session)),
      m_latest(new QPushButton(symbolIcon(Symbol::chevronDown), u"Latest"_s, this))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addWidget(m_bar);
    column->addWidget(m_view, 1);
    m_view->setMinimumHeight(leastLines * fontMetrics().lineSpacing());

    m_latest->setAccessibleName(u"Jump to the latest message"_s);
    setHoverText(m_latest, u"Jump to the latest message (Ctrl+J)"_s);
    m_latest->setFocusPolicy(Qt::TabFocus);
    m_latest->setAutoDefault(false);
    m_latest->hide();
    setTabOrder(m_view, m_latest);

    connect(m_bar, &FindBar::wordsChanged, this, &ConversationPane::search);
    connect(m_bar, &FindBar::closed, this, &ConversationPane::closeFind);
    connect(m_session, &FindSession::reached, this, &ConversationPane::showMatch);
    connect(m_session, &FindSession::nothingFound, this, [this] { m_announcer.announce(u"No matches."_s); });
    connect(m_latest, &QPushButton::clicked, this, &ConversationPane::jumpToLatest);
    connect(m_view, &ChatScrollView::nearBottomChanged, this, [this](bool isNear) {
        if (isNear && m_latest->hasFocus())
            m_view->setFocus();
        m_latest->setVisible(!isNear);
        placeButton();
    });
}

bool ConversationPane::isFinding() const
{
    return !m_bar->isHidden();
}

void ConversationPane::find()
{
    const bool isNew = !isFinding();
    m_bar->open();
    if (isNew)
        search();
}

void ConversationPane::findNext()
{
    if (isFinding())
        m_session->next();
    else
        find();
}

void ConversationPane::findPrevious()
{
    if (isFinding())
        m_session->previous();
    else
        find();
}

void ConversationPane::search()
{
    m_session->search(m_bar->words(), qMax<qsizetype>(0, m_view->firstVisibleMessage()));
}

void ConversationPane::closeFind()
{
    m_session->search({}, 0);
    Q_EMIT findClosed();
    m_bar->hide();
}

void ConversationPane::showMatch(const FoundText &found)
{
    const QString line = m_view->showMatch(found, m_session->words());
    const bool isUser = m_transcript.messages().at(found.message).role == Role::user;
    m_announcer.announce(u"%1. %2: %3"_s.arg(m_session->summary(), isUser ? u"You"_s : u"Morvane"_s, line));
}

void ConversationPane::jumpToLatest()
{
    m_view->jumpToLatest();
}

void ConversationPane::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeButton();
}

void ConversationPane::placeButton()
{
    m_latest->adjustSize();
    m_latest->move((width() - m_latest->width()) / 2, height() - m_latest->height() - buttonMargin);
    m_latest->raise();
}

} // namespace morvane
