#include "ui/sheets/QuestionView.h"

#include "app/Questions.h"
#include "base/LabelText.h"
#include "base/Text.h"
#include "ui/controls/HeadingLabel.h"
#include "ui/controls/WrappingButton.h"
#include "ui/markdown/LayoutCost.h"
#include "ui/sheets/ScrollingText.h"
#include "ui/sheets/SheetCard.h"
#include "ui/sheets/SheetHeader.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Options that get their buttons in one turn, by what it costs to lay them out, in usual letters.
constexpr qsizetype sliceCost = 2'000;
/// What a button costs besides its text.
constexpr qsizetype buttonCost = 100;
/// A button lays out no more of its text.
constexpr qsizetype mostShown = 1'000;

} // namespace

QuestionView::QuestionView(Questions &questions, QWidget *window, SteadyNow now)
    : Sheet(window, std::move(now)), m_questions(questions), m_header(new SheetHeader),
      m_question(new ScrollingText(u"Question"_s)),
      m_optionsHeading(new HeadingLabel(u"Choose an answer:"_s, HeadingLabel::Level::section)),
      m_options(new QWidget),
      m_customHeading(new HeadingLabel(u"Or type your own answer:"_s, HeadingLabel::Level::section)),
      m_custom(new QLineEdit)
{
    m_header->setContent(Symbol::question, SheetHeader::Tone::neutral, u"Morvane has a question"_s);
    m_custom->setAccessibleName(u"Your answer"_s);
    m_custom->setPlaceholderText(u"Custom answer"_s);
    auto *send = new WrappingButton(u"Send Answer"_s);
    send->setAccessibleName(u"Send your custom answer"_s);
    send->setDefault(true);

    auto *optionsLayout = new QVBoxLayout(m_options);
    optionsLayout->setContentsMargins(0, 0, 0, 0);
    optionsLayout->setSpacing(8);
    for (QWidget *part : std::initializer_list<QWidget *>{m_header, m_question, m_optionsHeading, m_options,
                                                          m_customHeading, m_custom})
        card()->content()->addWidget(part);
    card()->setYieldingText(m_question);
    card()->buttons()->addStretch();
    card()->buttons()->addWidget(send);

    m_nextSlice.setSingleShot(true);
    connect(&m_nextSlice, &QTimer::timeout, this, &QuestionView::addOptions);
    connect(send, &QPushButton::clicked, this, &QuestionView::sendCustom);
    connect(&m_questions, &Questions::pendingQuestionChanged, this, &QuestionView::showPending);
    showPending();
}

void QuestionView::showPending()
{
    const auto &question = m_questions.pendingQuestion();
    if (!question) {
        m_shown = QUuid();
        m_optionsLeft.clear();
        closeSheet();
        m_question->field()->letGo();
        return;
    }
    if (question->id == m_shown)
        return;
    m_shown = question->id;

    card()->setAccessibleName(u"Morvane asks: "_s + labelText(question->question));
    m_question->setContent(question->question, ScrollingText::Style::prose,
                           ScrollingText::Hidden::asTheyStand);
    m_custom->clear();
    showOptions(question->options);
    const auto buttons = m_options->findChildren<WrappingButton *>(Qt::FindDirectChildrenOnly);
    openSheet(buttons.isEmpty() ? static_cast<QWidget *>(m_custom) : buttons.first());
}

void QuestionView::showOptions(const QStringList &options)
{
    qDeleteAll(m_options->findChildren<WrappingButton *>(Qt::FindDirectChildrenOnly));
    m_lastInOrder = m_question->field();
    m_optionsLeft = options;
    addOptions();
    m_optionsHeading->setVisible(!options.isEmpty());
    m_options->setVisible(!options.isEmpty());
    m_customHeading->setVisible(!options.isEmpty());
}

void QuestionView::addOptions()
{
    qsizetype cost = 0;
    while (!m_optionsLeft.isEmpty()) {
        const QString &next = m_optionsLeft.constFirst();
        const qsizetype nextCost = buttonCost + layoutCost(next.first(std::min(next.size(), mostShown)));
        if (cost > 0 && cost + nextCost > sliceCost)
            break;
        cost += nextCost;
        addOption(m_optionsLeft.takeFirst());
    }
    if (!m_optionsLeft.isEmpty())
        m_nextSlice.start();
}

void QuestionView::addOption(const QString &option)
{
    auto *button = new WrappingButton(option, WrappingButton::Alignment::leading, m_options);
    button->setAccessibleName(u"Answer: "_s + labelText(option));
    connect(button, &QPushButton::clicked, this, [this, option] { m_questions.resolveQuestion(option); });
    m_options->layout()->addWidget(button);
    // New widgets come last in the order of the Tab key otherwise.
    setTabOrder(m_lastInOrder, button);
    m_lastInOrder = button;
}

void QuestionView::sendCustom()
{
    const QString answer = trimmed(m_custom->text());
    if (!answer.isEmpty())
        m_questions.resolveQuestion(answer);
}

void QuestionView::returnPressed()
{
    if (m_custom->hasFocus())
        sendCustom();
}

} // namespace morvane
