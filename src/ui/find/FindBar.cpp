#include "ui/find/FindBar.h"

#include "ui/controls/EnabledOnceLeft.h"
#include "ui/controls/HoverText.h"
#include "ui/find/FindSession.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ThemeColors.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Characters; what is longer than this is not found by looking for it.
constexpr int longestWords = 500;

} // namespace

FindBar::FindBar(FindSession &session, QWidget *parent)
    : QWidget(parent), m_session(session), m_words(new QLineEdit), m_summary(new QLabel)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(12, 6, 12, 6);
    row->setSpacing(6);
    m_words->setPlaceholderText(u"Find in conversation"_s);
    m_words->setAccessibleName(u"Find in conversation"_s);
    m_words->setAccessibleDescription(
        u"Return goes to the next match, Shift and Return to the previous one."_s);
    m_words->setMaxLength(longestWords);
    m_words->setClearButtonEnabled(false);
    m_words->installEventFilter(this);
    m_summary->setTextFormat(Qt::PlainText);
    m_summary->setForegroundRole(QPalette::PlaceholderText);
    row->addWidget(m_words, 1);
    row->addWidget(m_summary);
    m_previous = addButton(symbolIcon(Symbol::chevronUp), u"Previous match"_s);
    m_next = addButton(symbolIcon(Symbol::chevronDown), u"Next match"_s);
    QToolButton *close = addButton(symbolIcon(Symbol::cross), u"Close find"_s);

    connect(m_words, &QLineEdit::textChanged, this, &FindBar::wordsChanged);
    connect(m_previous, &QToolButton::clicked, &session, &FindSession::previous);
    connect(m_next, &QToolButton::clicked, &session, &FindSession::next);
    connect(close, &QToolButton::clicked, this, &FindBar::closed);
    connect(&session, &FindSession::changed, this, &FindBar::update);
    update();
    hide();
}

QToolButton *FindBar::addButton(const QIcon &icon, const QString &label)
{
    auto *button = new QToolButton;
    button->setIcon(icon);
    setHoverText(button, label);
    button->setAccessibleName(label);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    button->installEventFilter(this);
    layout()->addWidget(button);
    return button;
}

QString FindBar::words() const
{
    return m_words->text();
}

void FindBar::open()
{
    show();
    m_words->setFocus(Qt::ShortcutFocusReason);
    m_words->selectAll();
}

void FindBar::update()
{
    const bool canStep = m_session.count().value_or(0) > 0;
    m_summary->setText(m_session.summary());
    m_summary->setVisible(!m_session.summary().isEmpty());
    setEnabledOnceLeft(m_previous, canStep);
    setEnabledOnceLeft(m_next, canStep);
}

bool FindBar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride)
        return QWidget::eventFilter(watched, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    const bool isReturn = watched == m_words && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter);
    if (key->key() != Qt::Key_Escape && !isReturn)
        return QWidget::eventFilter(watched, event);
    event->accept(); // so that Escape does not stop an answer
    if (event->type() == QEvent::ShortcutOverride)
        return true;
    if (!isReturn)
        Q_EMIT closed();
    else if (key->modifiers().testFlag(Qt::ShiftModifier))
        m_session.previous();
    else
        m_session.next();
    return true;
}

void FindBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(ThemeColors::fromPalette(palette()).border);
    painter.drawLine(0, height() - 1, width(), height() - 1);
}

} // namespace morvane
