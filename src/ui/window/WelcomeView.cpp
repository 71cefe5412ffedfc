#include "ui/window/WelcomeView.h"

#include "app/AppModel.h"
#include "app/SelectedModel.h"
#include "store/SettingsStore.h"
#include "ui/controls/WrappingButton.h"
#include "ui/theme/Icons.h"
#include "ui/window/LocalModelCard.h"
#include "ui/window/MarkedHeading.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <array>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int columnWidth = 480;
/// However little room a long message leaves.
constexpr int linesInSight = 2;
constexpr std::array suggestions{"What can you do?", "Check my Mac's storage",
                                 "Find my Downloads folder and summarize it",
                                 "Search the web for the latest macOS version"};

} // namespace

WelcomeView::WelcomeView(AppModel &model, QWidget *parent)
    : QScrollArea(parent), m_model(model), m_localModel(new LocalModelCard(model))
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setMinimumHeight(linesInSight * fontMetrics().lineSpacing());

    auto *settings = new QPushButton(symbolIcon(Symbol::gear), u"Morvane Settings"_s);
    connect(settings, &QPushButton::clicked, this, &WelcomeView::settingsRequested);
    connect(static_cast<LocalModelCard *>(m_localModel), &LocalModelCard::settingsRequested, this,
            &WelcomeView::settingsRequested);
    m_settings = settings;

    auto *content = new QWidget;
    auto *column = new QVBoxLayout;
    column->setSpacing(10);
    column->addWidget(new MarkedHeading(u"Morvane"_s));
    column->addSpacing(8);
    column->addWidget(m_settings, 0, Qt::AlignHCenter);
    column->addWidget(m_localModel);
    column->addSpacing(8);
    auto *heading = new QLabel(u"Try asking:"_s);
    heading->setAlignment(Qt::AlignHCenter);
    column->addWidget(heading);
    for (const char *suggestion : suggestions) {
        const QString prompt = QString::fromLatin1(suggestion);
        auto *button = new WrappingButton(prompt);
        button->setAccessibleName(u"Try asking: "_s + prompt);
        connect(button, &QPushButton::clicked, &model, [&model, prompt] { model.suggestPrompt(prompt); });
        column->addWidget(button);
    }
    auto *page = new QVBoxLayout(content);
    page->addStretch();
    auto *row = new QHBoxLayout;
    row->addStretch(1);
    auto *center = new QWidget;
    center->setMaximumWidth(columnWidth);
    center->setLayout(column);
    row->addWidget(center, 100);
    row->addStretch(1);
    page->addLayout(row);
    page->addStretch();
    setWidget(content);

    connect(&model.settings(), &SettingsStore::changed, this, &WelcomeView::updateState);
    updateState();
}

void WelcomeView::updateState()
{
    const bool hasKey = hasAPIKey(m_model.settings());
    m_settings->setVisible(!hasKey);
    m_localModel->setVisible(hasKey && m_model.settings().providerID() == ProviderID::ollama);
}

} // namespace morvane
