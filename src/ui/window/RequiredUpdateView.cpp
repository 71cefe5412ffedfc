#include "ui/window/RequiredUpdateView.h"

#include "app/UpdateModel.h"
#include "ui/controls/NoteLabel.h"
#include "ui/controls/WrappingButton.h"
#include "ui/sheets/SheetCard.h"
#include "ui/sheets/SheetHeader.h"
#include "ui/window/UpdateProgress.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const QString pausedNote = u"The app is paused until you update — connect to the internet if offline."_s;

} // namespace

RequiredUpdateView::RequiredUpdateView(UpdateModel &updates, QWidget *window, SteadyNow now)
    : Sheet(window, std::move(now)), m_updates(updates),
      m_sentence(new NoteLabel({}, NoteLabel::Tone::plain)), m_progress(new UpdateProgress),
      m_install(new WrappingButton(u"Update Now"_s))
{
    auto *header = new SheetHeader;
    header->setContent(Symbol::arrowDownCircle, SheetHeader::Tone::danger, u"Update required"_s);
    auto *note = new NoteLabel(pausedNote);
    auto *download = new WrappingButton(u"Download"_s);
    download->setAccessibleName(u"Download the update from the website"_s);
    m_install->setDefault(true);

    card()->setAccessibleName(u"Required update sheet"_s);
    for (QWidget *part : std::initializer_list<QWidget *>{header, m_sentence, note, m_progress})
        card()->content()->addWidget(part);
    card()->buttons()->addStretch();
    card()->buttons()->addWidget(download);
    card()->buttons()->addWidget(m_install);

    connect(m_install, &QPushButton::clicked, &updates, &UpdateModel::installUpdateNow);
    connect(download, &QPushButton::clicked, &updates, &UpdateModel::downloadUpdate);
    connect(&updates, &UpdateModel::changed, this, &RequiredUpdateView::showOrClose);
    connect(&updates, &UpdateModel::updateInstallPhaseChanged, this, &RequiredUpdateView::updatePhase);
    updatePhase();
    showOrClose();
}

void RequiredUpdateView::showOrClose()
{
    if (!m_updates.isUpdateRequired()) {
        closeSheet();
        return;
    }
    const UpdateInfo &update = *m_updates.availableUpdate();
    const QString numbers = u"%1 build %2"_s.arg(update.version, QString::number(update.build));
    m_sentence->setText(u"Required update: Morvane %1."_s.arg(numbers));
    m_install->setAccessibleName(u"Update Morvane to %1 now."_s.arg(numbers));
    card()->setAccessibleDescription(m_sentence->text() + u' ' + pausedNote);
    if (!isOpen())
        openSheet(m_install);
}

void RequiredUpdateView::updatePhase()
{
    m_progress->showPhase(m_updates.updateInstallPhase(), {});
}

void RequiredUpdateView::returnPressed()
{
    m_updates.installUpdateNow();
}

} // namespace morvane
