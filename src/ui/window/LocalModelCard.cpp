#include "ui/window/LocalModelCard.h"

#include "app/AppModel.h"
#include "ui/controls/DownloadProgressBar.h"
#include "ui/controls/FlowLayout.h"
#include "ui/controls/NoteLabel.h"
#include "ui/controls/OutsideText.h"
#include "ui/controls/WrappingButton.h"
#include "ui/theme/CardPainting.h"

#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

LocalModelCard::LocalModelCard(AppModel &model, QWidget *parent)
    : QWidget(parent), m_model(model), m_text(new NoteLabel({}, NoteLabel::Tone::plain)),
      m_bar(new DownloadProgressBar), m_error(new NoteLabel({}, NoteLabel::Tone::error)),
      m_buttons(new QWidget)
{
    m_error->setSymbol(Symbol::octagonExclamation);

    auto *install = new WrappingButton(u"Install the built-in local model"_s);
    auto *connectProvider = new WrappingButton(u"Connect a free AI provider"_s);
    connect(install, &QPushButton::clicked, &model.localModel(), &LocalModelFlow::installLocalModelIfNeeded);
    connect(connectProvider, &QPushButton::clicked, this, &LocalModelCard::settingsRequested);
    constexpr int spacing = 8;
    auto *row = new FlowLayout(spacing); // in a narrow window one below the other
    m_buttons->setLayout(row);
    row->setContentsMargins({});
    row->addWidget(install);
    row->addWidget(connectProvider);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(16, 16, 16, 16);
    for (QWidget *part : std::initializer_list<QWidget *>{m_text, m_bar, m_error, m_buttons})
        column->addWidget(part);

    connect(&model.localModel(), &LocalModelFlow::changed, this, &LocalModelCard::updateState);
    updateState();
}

QString LocalModelCard::text() const
{
    const LocalModelInfo &info = m_model.localModel().info();
    const QString pulling = m_model.localModel().pullingModel();
    if (info.running)
        return u"Local model is ready — no limits, nothing leaves this Mac."_s;
    if (info.installing)
        return u"Installing the local model…\n"_s + outsideText(info.progress);
    if (!pulling.isEmpty())
        return u"Downloading %1\n%2"_s.arg(outsideText(pulling), outsideText(info.progress));
    return u"No setup needed. Install the free local model that runs inside this app — no rate limits, and "
           "your data stays on your Mac."_s;
}

void LocalModelCard::updateState()
{
    const LocalModelInfo &info = m_model.localModel().info();
    const bool isWorking =
        !info.running && (info.installing || !m_model.localModel().pullingModel().isEmpty());
    m_text->setText(text());
    if (isWorking && info.progressFraction)
        m_bar->showFraction(info.progressFraction);
    m_bar->setVisible(isWorking && info.progressFraction.has_value());
    showOutsideText(*m_error, u"Local model error: "_s + info.error);
    m_error->setVisible(!isWorking && !info.running && !info.error.isEmpty());
    m_buttons->setVisible(!info.running && !isWorking);
}

void LocalModelCard::paintEvent(QPaintEvent *)
{
    paintCard(*this);
}

} // namespace morvane
