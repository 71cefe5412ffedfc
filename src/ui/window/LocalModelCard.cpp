#include "ui/window/LocalModelCard.h"

#include "app/AppModel.h"
#include "ui/controls/WrappingButton.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

LocalModelCard::LocalModelCard(AppModel &model, QWidget *parent)
    : QFrame(parent), m_model(model), m_text(new QLabel), m_progress(new QProgressBar), m_buttons(new QWidget)
{
    setFrameShape(QFrame::StyledPanel);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_progress->setTextVisible(false);
    m_progress->setAccessibleName(u"Download progress"_s);

    auto *install = new WrappingButton(u"Install the built-in local model"_s);
    auto *connectProvider = new WrappingButton(u"Connect a free AI provider"_s);
    connect(install, &QPushButton::clicked, &model.localModel(), &LocalModelFlow::installLocalModelIfNeeded);
    connect(connectProvider, &QPushButton::clicked, this, &LocalModelCard::settingsRequested);
    auto *row = new QVBoxLayout(m_buttons);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(install);
    row->addWidget(connectProvider);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(14, 12, 14, 12);
    column->addWidget(m_text);
    column->addWidget(m_progress);
    column->addWidget(m_buttons);

    connect(&model.localModel(), &LocalModelFlow::changed, this, &LocalModelCard::updateState);
    updateState();
}

void LocalModelCard::updateState()
{
    const LocalModelInfo &info = m_model.localModel().info();
    const QString pulling = m_model.localModel().pullingModel();
    const bool working = info.installing || !pulling.isEmpty();
    if (info.running)
        m_text->setText(u"Local model is ready — no limits, nothing leaves this Mac."_s);
    else if (info.installing)
        m_text->setText(u"Installing the local model…\n"_s + info.progress);
    else if (working)
        m_text->setText(u"Downloading "_s + pulling);
    else {
        QString text = u"No setup needed. Install the free local model that runs inside this app — "
                       "no rate limits, and your data stays on your Mac."_s;
        if (!info.error.isEmpty())
            text += u"\n\nLocal model error: "_s + info.error;
        m_text->setText(text);
    }
    m_progress->setVisible(working && info.progressFraction.has_value());
    m_progress->setRange(0, 100);
    m_progress->setValue(static_cast<int>(info.progressFraction.value_or(0) * 100));
    m_buttons->setVisible(!info.running && !working);
}

} // namespace morvane
