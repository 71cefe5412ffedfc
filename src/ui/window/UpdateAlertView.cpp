#include "ui/window/UpdateAlertView.h"

#include "app/UpdateModel.h"
#include "base/Overloaded.h"
#include "ui/controls/WrappingButton.h"
#include "ui/sheets/ScrollingText.h"
#include "ui/sheets/SheetCard.h"
#include "ui/sheets/SheetHeader.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// An alert as it is shown.
struct Shown {
    Symbol symbol;
    SheetHeader::Tone tone;
    QString message;
    QString text;
    bool offersUpdate;
    bool canWait;          ///< Whether it can be closed without doing anything about it.
    QString downloadLabel; ///< Empty where there is nothing to download.
};

QString numbersOf(const UpdateInfo &update)
{
    return u"Morvane %1 (build %2)"_s.arg(update.version, QString::number(update.build));
}

Shown shown(const UpdateAlert &alert)
{
    using Tone = SheetHeader::Tone;
    return std::visit(
        Overloaded{
            [](const UpdateAlert::UpToDate &content) {
                return Shown{Symbol::checkCircle,
                             Tone::neutral,
                             u"You're up to date"_s,
                             u"Morvane %1 (build %2) is the latest version."_s.arg(
                                 content.version.version, QString::number(content.version.build)),
                             false,
                             true,
                             {}};
            },
            [](const UpdateAlert::CheckFailed &content) {
                return Shown{Symbol::triangleExclamation,
                             Tone::caution,
                             u"Couldn't check for updates"_s,
                             content.reason,
                             false,
                             true,
                             u"Download from Website"_s};
            },
            [](const UpdateAlert::Available &content) {
                return Shown{Symbol::arrowDownCircle,
                             Tone::neutral,
                             numbersOf(content.update) + u" is available"_s,
                             content.update.notes.join(u'\n'),
                             true,
                             true,
                             u"Download in Browser"_s};
            },
            [](const UpdateAlert::Required &content) {
                const UpdateInfo &update = content.update;
                return Shown{
                    Symbol::arrowDownCircle,
                    Tone::danger,
                    u"Update required: "_s + numbersOf(update),
                    u"This update is required to continue. Please update Morvane to %1 build %2 now."_s.arg(
                        update.version, QString::number(update.build)) +
                        u"\n\n"_s + update.notes.join(u'\n'),
                    true,
                    false,
                    u"Download in Browser"_s};
            },
        },
        alert.content);
}

} // namespace

UpdateAlertView::UpdateAlertView(UpdateModel &updates, QWidget *window, SteadyNow now)
    : Sheet(window, std::move(now)), m_updates(updates), m_header(new SheetHeader),
      m_text(new ScrollingText(u"Details"_s))
{
    card()->content()->addWidget(m_header);
    card()->content()->addWidget(m_text);
    card()->setYieldingText(m_text);
    card()->buttons()->addStretch();
    m_later = addButton(u"Later"_s, &UpdateModel::closeAlert);
    m_download = addButton(u"Download in Browser"_s, &UpdateModel::downloadFromAlert);
    m_install = addButton(u"Update Now"_s, &UpdateModel::installFromAlert);
    m_ok = addButton(u"OK"_s, &UpdateModel::closeAlert);
    connect(&updates, &UpdateModel::alertChanged, this, &UpdateAlertView::showAlert);
    showAlert();
}

WrappingButton *UpdateAlertView::addButton(const QString &label, void (UpdateModel::*answer)())
{
    auto *button = new WrappingButton(label);
    connect(button, &QPushButton::clicked, &m_updates, answer);
    card()->buttons()->addWidget(button);
    return button;
}

void UpdateAlertView::showAlert()
{
    if (!m_updates.alert()) {
        closeSheet();
        m_text->field()->letGo();
        return;
    }
    const Shown alert = shown(*m_updates.alert());
    m_header->setContent(alert.symbol, alert.tone, alert.message);
    card()->setAccessibleName(alert.message);
    m_text->setContent(alert.text, ScrollingText::Style::prose, ScrollingText::Hidden::asTheyStand);
    m_text->setVisible(!alert.text.isEmpty());
    m_install->setVisible(alert.offersUpdate);
    m_later->setVisible(alert.offersUpdate && alert.canWait);
    m_ok->setVisible(!alert.offersUpdate);
    m_download->setVisible(!alert.downloadLabel.isEmpty());
    if (!alert.downloadLabel.isEmpty())
        m_download->setLabel(alert.downloadLabel);
    m_install->setDefault(alert.offersUpdate);
    m_ok->setDefault(!alert.offersUpdate);
    if (alert.text.isEmpty())
        openSheet(m_install);
    else
        openSheet(m_text->field());
}

void UpdateAlertView::returnPressed()
{
    if (m_install->isDefault())
        m_updates.installFromAlert();
    else
        m_updates.closeAlert();
}

void UpdateAlertView::escapePressed()
{
    if (!m_later->isHidden() || !m_ok->isHidden())
        m_updates.closeAlert();
}

} // namespace morvane
