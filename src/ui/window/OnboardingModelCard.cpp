#include "ui/window/OnboardingModelCard.h"

#include "app/AppModel.h"
#include "ui/controls/AccessibleRole.h"
#include "ui/controls/DownloadProgressBar.h"
#include "ui/controls/HeadingLabel.h"
#include "ui/controls/NoteLabel.h"
#include "ui/controls/OutsideText.h"
#include "ui/controls/SymbolLabel.h"
#include "ui/controls/WrappingButton.h"
#include "ui/theme/CardPainting.h"
#include "ui/theme/ThemeColors.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

OnboardingModelCard::OnboardingModelCard(AppModel &model, QWidget *parent)
    : QWidget(parent), m_model(model), m_head(new QWidget),
      m_symbol(new SymbolLabel(Symbol::arrowDownCircle, &ThemeColors::accent)),
      m_heading(new HeadingLabel({}, HeadingLabel::Level::section)),
      m_text(new NoteLabel({}, NoteLabel::Tone::plain)),
      m_promise(new NoteLabel(u"No account, no limits, and your data never leaves this Mac."_s,
                              NoteLabel::Tone::plain)),
      m_bar(new DownloadProgressBar), m_percent(new QLabel), m_progress(new NoteLabel({})),
      m_error(new NoteLabel({}, NoteLabel::Tone::error)), m_buttons(new QWidget),
      m_cancel(new WrappingButton(u"Cancel"_s)),
      m_install(new WrappingButton(u"Install the built-in local model"_s))
{
    setAccessibleRole(this, QAccessible::Grouping);
    setAccessibleName(u"Local model"_s);
    m_percent->setTextFormat(Qt::PlainText);
    m_error->setSymbol(Symbol::octagonExclamation);
    m_cancel->setAccessibleName(u"Cancel the local model setup"_s);
    connect(m_cancel, &QPushButton::clicked, &model, &AppModel::cancelLocalModelWork);
    connect(m_install, &QPushButton::clicked, &model.localModel(),
            &LocalModelFlow::installLocalModelIfNeeded);

    auto *head = new QHBoxLayout(m_head);
    head->setContentsMargins({});
    head->addWidget(m_symbol, 0, Qt::AlignTop);
    head->addWidget(m_heading, 1);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(16, 16, 16, 16);
    column->setSpacing(8);
    auto *buttons = new QHBoxLayout(m_buttons);
    buttons->setContentsMargins({});
    buttons->addWidget(m_cancel);
    buttons->addWidget(m_install);
    buttons->addStretch();
    for (QWidget *part : std::initializer_list<QWidget *>{m_head, m_text, m_promise, m_bar, m_percent,
                                                          m_progress, m_error, m_buttons})
        column->addWidget(part);
    updateState();
}

void OnboardingModelCard::paintEvent(QPaintEvent *)
{
    paintCard(*this);
}

OnboardingModelCard::State OnboardingModelCard::state() const
{
    const LocalModelFlow &flow = m_model.localModel();
    if (flow.info().running)
        return State::ready;
    return flow.info().installing || !flow.pullingModel().isEmpty() ? State::settingUp : State::missing;
}

WrappingButton *OnboardingModelCard::button() const
{
    switch (state()) {
    case State::settingUp:
        return m_cancel;
    case State::missing:
        return m_install;
    case State::ready:
        return nullptr;
    }
    Q_UNREACHABLE();
}

void OnboardingModelCard::updateState()
{
    const State now = state();
    switch (now) {
    case State::settingUp:
        m_symbol->setSymbol(Symbol::arrowDownCircle);
        m_heading->setHeading(u"Setting up the built-in local model"_s);
        m_text->setText(u"Morvane is setting up the built-in local model. This one-time download happens "
                        "automatically and only once."_s);
        break;
    case State::ready:
        m_symbol->setSymbol(Symbol::checkCircle);
        m_heading->setHeading(u"Local model ready"_s);
        m_text->setText(u"The local model is ready. You can start chatting right away."_s);
        break;
    case State::missing:
        m_text->setText(u"This downloads a small model (about 5 GB) that runs fully on your Mac."_s);
        break;
    }
    // The button that comes has the keyboard before the one goes that had it.
    const QWidget *focused = window()->focusWidget();
    if (WrappingButton *coming = button(); coming && focused && m_buttons->isAncestorOf(focused)) {
        coming->show();
        coming->setFocus(Qt::OtherFocusReason);
    }
    m_head->setVisible(now != State::missing);
    m_promise->setVisible(now == State::missing);
    for (QWidget *part : std::initializer_list<QWidget *>{m_bar, m_percent, m_progress, m_cancel})
        part->setVisible(now == State::settingUp);
    m_install->setVisible(now == State::missing);
    m_buttons->setVisible(now != State::ready);
    const QString &error = m_model.localModel().info().error;
    showOutsideText(*m_error, u"Local model error: "_s + error);
    m_error->setVisible(now == State::missing && !error.isEmpty());
    if (now == State::settingUp)
        updateProgress();
}

void OnboardingModelCard::updateProgress()
{
    const LocalModelInfo &info = m_model.localModel().info();
    m_bar->showFraction(info.progressFraction);
    const auto percent = m_bar->percent();
    m_percent->setText(percent ? QString::number(*percent) + u'%' : u"Starting"_s);
    m_progress->setText(outsideText(info.progress));
}

} // namespace morvane
