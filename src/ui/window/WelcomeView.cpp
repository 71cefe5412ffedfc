#include "ui/window/WelcomeView.h"

#include "app/AppModel.h"
#include "app/SelectedModel.h"
#include "store/SettingsStore.h"
#include "ui/controls/WrappingButton.h"
#include "ui/theme/AppMark.h"
#include "ui/theme/Icons.h"
#include "ui/window/LocalModelCard.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <array>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int markSize = 64;
constexpr int columnWidth = 480;
constexpr std::array suggestions{"What can you do?", "Check my Mac's storage",
                                 "Find my Downloads folder and summarize it",
                                 "Search the web for the latest macOS version"};

QPixmap markPixmap(qreal ratio)
{
    QPixmap pixmap(QSize(markSize, markSize) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    paintAppMark(painter, QRectF(0, 0, markSize, markSize));
    return pixmap;
}

/// Decoration: drawn by the label of the name below it, so that assistive technology finds one element only.
class NameLabel : public QLabel {
public:
    NameLabel() : QLabel(u"Morvane"_s)
    {
        QFont large = font();
        large.setPointSizeF(large.pointSizeF() * 1.8);
        large.setBold(true);
        setFont(large);
        setAlignment(Qt::AlignHCenter | Qt::AlignBottom);
        setContentsMargins(0, markSize + 8, 0, 0);
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QLabel::paintEvent(event);
        QPainter painter(this);
        painter.drawPixmap((width() - markSize) / 2, 0, markPixmap(devicePixelRatioF()));
    }
};

} // namespace

WelcomeView::WelcomeView(AppModel &model, QWidget *parent)
    : QScrollArea(parent), m_model(model), m_localModel(new LocalModelCard(model))
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);

    auto *settings = new QPushButton(symbolIcon(Symbol::gear), u"Morvane Settings"_s);
    connect(settings, &QPushButton::clicked, this, &WelcomeView::settingsRequested);
    connect(static_cast<LocalModelCard *>(m_localModel), &LocalModelCard::settingsRequested, this,
            &WelcomeView::settingsRequested);
    m_settings = settings;

    auto *content = new QWidget;
    auto *column = new QVBoxLayout;
    column->setSpacing(10);
    column->addWidget(new NameLabel);
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
