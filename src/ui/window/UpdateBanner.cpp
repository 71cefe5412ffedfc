#include "ui/window/UpdateBanner.h"

#include "app/UpdateModel.h"
#include "ui/controls/FlowLayout.h"
#include "ui/controls/HoverText.h"
#include "ui/controls/WrappingButton.h"
#include "ui/theme/Icons.h"
#include "ui/window/UpdateProgress.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

UpdateBanner::UpdateBanner(UpdateModel &updates, QWidget *parent)
    : QFrame(parent), m_updates(updates), m_progress(new UpdateProgress),
      m_install(new WrappingButton(u"Update Now"_s)), m_retry(new WrappingButton(u"Retry"_s)),
      m_website(new WrappingButton(u"Download from the website instead"_s)), m_dismiss(new QToolButton),
      m_waysOut(new QWidget)
{
    setFrameShape(QFrame::StyledPanel);
    m_retry->setAccessibleDescription(u"Retry the update"_s);
    m_dismiss->setIcon(symbolIcon(Symbol::cross));
    m_dismiss->setAutoRaise(true);
    m_dismiss->setFocusPolicy(Qt::TabFocus);
    m_dismiss->setAccessibleDescription(u"Dismiss this reminder"_s);
    setHoverText(m_dismiss, m_dismiss->accessibleDescription());

    auto *row = new QHBoxLayout;
    row->addWidget(m_progress, 1);
    row->addWidget(m_install, 0, Qt::AlignVCenter);
    row->addWidget(m_dismiss, 0, Qt::AlignVCenter);
    auto *ways = new FlowLayout(6, m_waysOut);
    ways->addWidget(m_retry);
    ways->addWidget(m_website);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(12, 6, 8, 6);
    column->addLayout(row);
    column->addWidget(m_waysOut);

    connect(m_install, &QPushButton::clicked, &updates, &UpdateModel::installUpdateNow);
    connect(m_retry, &QPushButton::clicked, &updates, &UpdateModel::installUpdateNow);
    connect(m_website, &QPushButton::clicked, &updates, &UpdateModel::downloadUpdate);
    connect(m_dismiss, &QToolButton::clicked, &updates, &UpdateModel::dismissUpdateBanner);
    connect(&updates, &UpdateModel::changed, this, &UpdateBanner::updateState);
    connect(&updates, &UpdateModel::updateInstallPhaseChanged, this, &UpdateBanner::updateState);
    updateState();
}

QString UpdateBanner::idleText() const
{
    const UpdateInfo &update = *m_updates.availableUpdate();
    const QString build = QString::number(update.build);
    if (m_updates.isUpdateRequired()) {
        return u"Required update: Morvane %1 build %2. This update is required to continue."_s.arg(
            update.version, build);
    }
    return u"Update available: Morvane %1 build %2"_s.arg(update.version, build);
}

void UpdateBanner::updateState()
{
    const bool isShown = m_updates.showsUpdateBanner();
    if (isShown) {
        m_progress->showPhase(m_updates.updateInstallPhase(), idleText());
        showButtons();
        m_dismiss->setAccessibleName(
            u"Dismiss the update banner for Morvane %1"_s.arg(m_updates.availableUpdate()->version));
    } else {
        leave(this);
    }
    setVisible(isShown);
}

void UpdateBanner::leave(const QWidget *going)
{
    const QWidget *focused = QApplication::focusWidget();
    if (focused && going->isAncestorOf(focused))
        Q_EMIT focusLost();
}

void UpdateBanner::showButtons()
{
    using Phase = UpdateInstallPhase;
    const auto &state = m_updates.updateInstallPhase().state;
    const bool isIdle = std::holds_alternative<Phase::Idle>(state);
    const bool hasFailed = std::holds_alternative<Phase::Failed>(state);
    const std::initializer_list<std::pair<QWidget *, bool>> parts{
        {m_install, isIdle}, {m_dismiss, isIdle && !m_updates.isUpdateRequired()}, {m_waysOut, hasFailed}};
    for (const auto &[part, isShown] : parts) {
        if (!isShown)
            leave(part);
        part->setVisible(isShown);
    }
}

} // namespace morvane
