#include "ui/window/LocalModelBanner.h"

#include "app/AppModel.h"
#include "ui/controls/DownloadProgressBar.h"
#include "ui/controls/HoverText.h"
#include "ui/controls/OutsideText.h"
#include "ui/theme/Icons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {

LocalModelBanner::LocalModelBanner(AppModel &model, QWidget *parent)
    : QFrame(parent), m_model(model), m_text(new QLabel), m_bar(new DownloadProgressBar)
{
    setFrameShape(QFrame::StyledPanel);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_bar->setMaximumWidth(160);
    auto *cancel = new QToolButton;
    cancel->setIcon(symbolIcon(Symbol::cross));
    cancel->setAutoRaise(true);
    cancel->setFocusPolicy(Qt::TabFocus);
    cancel->setAccessibleName(u"Cancel the local model setup"_s);
    setHoverText(cancel, cancel->accessibleName());
    connect(cancel, &QToolButton::clicked, &model, &AppModel::cancelLocalModelWork);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(12, 6, 8, 6);
    row->addWidget(m_text, 1);
    row->addWidget(m_bar);
    row->addWidget(cancel);
    connect(&model.localModel(), &LocalModelFlow::changed, this, &LocalModelBanner::updateState);
    updateState();
}

void LocalModelBanner::updateState()
{
    const LocalModelInfo &info = m_model.localModel().info();
    const bool isWorking = info.installing || !m_model.localModel().pullingModel().isEmpty();
    if (isWorking) {
        m_text->setText(u"Setting up the local model…\n"_s + outsideText(info.progress));
        m_bar->showFraction(info.progressFraction);
    }
    setVisible(isWorking);
}

} // namespace morvane
