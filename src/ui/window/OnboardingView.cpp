#include "ui/window/OnboardingView.h"

#include "app/AppModel.h"
#include "ui/controls/NoteLabel.h"
#include "ui/controls/WrappingButton.h"
#include "ui/sheets/SheetCard.h"
#include "ui/window/MarkedHeading.h"
#include "ui/window/OnboardingModelCard.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

OnboardingView::OnboardingView(AppModel &model, QWidget *window, SteadyNow now)
    : Sheet(window, std::move(now)), m_model(model), m_modelCard(new OnboardingModelCard(model)),
      m_start(new WrappingButton(u"Get started"_s)), m_skip(new WrappingButton(u"Skip for now"_s))
{
    auto *title = new MarkedHeading(u"Welcome to Morvane"_s);
    auto *text = new NoteLabel(
        u"A free AI agent for your Mac. Ask it to run commands, edit files, search the web, and more. The "
        "built-in model runs entirely on your computer — no account, no limits, and your data never leaves "
        "this Mac."_s,
        NoteLabel::Tone::plain);
    text->setAlignment(Qt::AlignHCenter);
    card()->setAccessibleName(title->text());
    card()->setAccessibleDescription(text->text());
    card()->content()->addWidget(title);
    card()->content()->addWidget(text);
    card()->content()->addWidget(m_modelCard);
    card()->setHeldButtons(m_modelCard->buttons()); // the way to stop the download is always in sight

    m_start->setSymbol(Symbol::arrowRightCircle);
    m_start->setDefault(true);
    m_skip->setAccessibleName(u"Skip local model setup. You can choose a provider in Settings later."_s);
    card()->buttons()->addStretch();
    card()->buttons()->addWidget(m_start);
    card()->buttons()->addWidget(m_skip);
    card()->buttons()->addStretch();

    connect(m_start, &QPushButton::clicked, &model, &AppModel::completeOnboarding);
    connect(m_skip, &QPushButton::clicked, &model, &AppModel::skipOnboarding);
    connect(&model, &AppModel::showOnboardingChanged, this, &OnboardingView::showOrClose);
    connect(&model.localModel(), &LocalModelFlow::changed, this, &OnboardingView::updateState);
    updateState();
    showOrClose();
}

void OnboardingView::showOrClose()
{
    if (!m_model.showOnboarding()) {
        closeSheet();
        return;
    }
    // What stops the download is not what a key that is pressed too early meets.
    openSheet(m_start->isEnabled() ? m_start : m_skip);
    m_model.localModel().refreshThenInstall(LocalModelFlow::Occasion::onboarding);
}

void OnboardingView::updateState()
{
    const bool wasReady = m_start->isEnabled();
    const bool isReady = m_model.localModel().info().running;
    m_start->setEnabled(isReady);
    const QString name = isReady ? u"Get started with the local model"_s
                                 : u"Get started. Wait until the local model is ready."_s;
    if (m_start->accessibleName() != name)
        m_start->setAccessibleName(name);
    // Before the card hides a button that has the keyboard.
    if (isOpen() && isReady && !wasReady)
        m_start->setFocus(Qt::OtherFocusReason);
    m_modelCard->updateState();
}

} // namespace morvane
